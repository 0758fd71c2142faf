#include "app/allviews.h"

#include "comm/frmcomm.h"
#include "comm/frmether.h"
#include "comm/frmhlink.h"
#include "comm/gatewaymonitor.h"
#include "comm/frmzb.h"
#include "comm/frmzkfd.h"
#include "comm/wireless.h"
#include "rack/overview.h"
#include "ui/viewregistry.h"
#include "views/analog/current.h"
#include "views/analog/millivolt.h"
#include "views/analog/qjs8.h"
#include "views/analog/universal.h"
#include "views/analog/alarm.h"
#include "views/analog/temperature.h"
#include "views/analog/voltage.h"
#include "views/common/frmnone.h"
#include "views/discrete/discrete.h"
#include "views/discrete/frmqv32.h"
#include "views/discrete/frmxf2.h"
#include "views/power/qy2.h"
#include "views/power/xd.h"
#include "views/power/pulse.h"
#include "views/power/qz2.h"
#include "views/power/xdu.h"
#include "views/field/xg4.h"
#include "views/field/xghart.h"
#include "views/field/xhk2.h"

// One line per form, kept in one place: registrations spread over a static library would be
// dropped by the linker wherever nothing else refers to their file.
void RegisterAllViews() {
    RegisterView("frmOverview", [] { return new FrmOverview; });
    RegisterView("frmNONE", [] { return new FrmNONE; });
    RegisterView("frmQF4", [] { return MakeFrmQF4(); });
    RegisterView("frmQF8", [] { return MakeFrmQF8(); });
    RegisterView("frmQF16", [] { return new FrmQF16; });
    RegisterView("frmXE4", [] { return new FrmXE4; });
    RegisterView("frmQL4", [] { return new FrmQL4; });
    RegisterView("frmQL8", [] { return MakeFrmQL8(); });
    RegisterView("frmQS4", [] { return MakeFrmQS4(); });
    RegisterView("frmQS8", [] { return MakeFrmQS8(); });
    RegisterView("frmQX2", [] { return MakeFrmQX2(); });
    RegisterView("frmQJS8", [] { return new FrmQJS8; });
    for (const TemperatureSpec &row : TemperatureSpecs())
        RegisterView(row.formName, [form = row.formName] { return MakeTemperatureView(form); });
    RegisterView("frmQP8Azero", [] { return new FrmQP8Azero; });
    for (const AlarmSpec &row : AlarmSpecs())
        RegisterView(row.formName, [form = row.formName] { return MakeAlarmView(form); });
    for (const DiscreteSpec &plan : DiscreteSpecs())
        RegisterView(plan.formName, [form = plan.formName] { return MakeDiscreteView(form); });
    RegisterView("frmQV32", [] { return new FrmQV32; });
    RegisterView("frmXF2", [] { return new FrmXF2; });
    RegisterView("frmXD10", [] { return new FrmXD10; });
    RegisterView("frmXD40", [] { return new FrmXD40; });
    RegisterView("frmQY2", [] { return new FrmQY2; });
    RegisterView("frmQZ2", [] { return new FrmQZ2; });
    RegisterView("frmQZ4", [] { return MakeFrmQZ4(); });
    RegisterView("frmQZ4A", [] { return new FrmQZ4A; });
    RegisterView("frmQZ8", [] { return new FrmQZ8; });
    RegisterView("frmQZ16", [] { return MakeFrmQZ16(); });
    RegisterView("frmComm", [] { return new FrmComm; });
    RegisterView("frmEther", [] { return new FrmEther; });
    RegisterView("frmZB", [] { return new FrmZB; });
    RegisterView("frmZKFD", [] { return new FrmZKFD; });
    RegisterView("frmZRV", [] { return MakeFrmZRV(); });
    RegisterView("frmZRV1F", [] { return MakeFrmZRV1F(); });
    RegisterView("frmZQ", [] { return MakeFrmZQ(); });
    RegisterView("frmHLINK", [] { return new FrmHLINK; });
    RegisterView("frmHLINKdata", [] { return new FrmHLINKdata; });
    RegisterView("frmHx", [] { return new FrmHx; });
    RegisterView("frmXDU", [] { return new FrmXDU; });
    RegisterView("frmXHK2", [] { return new FrmXHK2; });
    RegisterView("frmXG4", [] { return new FrmXG4; });
    RegisterView("frmXG_HART", [] { return new FrmXG_HART; });
}
