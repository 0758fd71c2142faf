#include "app/allviews.h"

#include "rack/overview.h"
#include "ui/viewregistry.h"
#include "views/analog/alarm.h"
#include "views/analog/temperature.h"
#include "views/analog/voltage.h"
#include "views/common/frmnone.h"
#include "views/discrete/discrete.h"
#include "views/discrete/frmqv32.h"
#include "views/discrete/frmxf2.h"

// One line per form, kept in one place: registrations spread over a static library would be
// dropped by the linker wherever nothing else refers to their file.
void RegisterAllViews() {
    RegisterView("frmOverview", [] { return new FrmOverview; });
    RegisterView("frmNONE", [] { return new FrmNONE; });
    RegisterView("frmQF4", [] { return MakeFrmQF4(); });
    RegisterView("frmQF8", [] { return MakeFrmQF8(); });
    RegisterView("frmQF16", [] { return new FrmQF16; });
    for (const TemperatureSpec &row : TemperatureSpecs())
        RegisterView(row.formName, [form = row.formName] { return MakeTemperatureView(form); });
    RegisterView("frmQP8Azero", [] { return new FrmQP8Azero; });
    for (const AlarmSpec &row : AlarmSpecs())
        RegisterView(row.formName, [form = row.formName] { return MakeAlarmView(form); });
    for (const DiscreteSpec &plan : DiscreteSpecs())
        RegisterView(plan.formName, [form = plan.formName] { return MakeDiscreteView(form); });
    RegisterView("frmQV32", [] { return new FrmQV32; });
    RegisterView("frmXF2", [] { return new FrmXF2; });
}
