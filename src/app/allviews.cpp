#include "app/allviews.h"

#include "rack/overview.h"
#include "ui/viewregistry.h"
#include "views/analog/voltage.h"
#include "views/common/frmnone.h"
#include "views/discrete/discrete.h"
#include "views/discrete/frmqv32.h"
#include "views/discrete/frmxf2.h"
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
    for (const DiscreteSpec &plan : DiscreteSpecs())
        RegisterView(plan.formName, [form = plan.formName] { return MakeDiscreteView(form); });
    RegisterView("frmQV32", [] { return new FrmQV32; });
    RegisterView("frmXF2", [] { return new FrmXF2; });
    RegisterView("frmXHK2", [] { return new FrmXHK2; });
    RegisterView("frmXG4", [] { return new FrmXG4; });
    RegisterView("frmXG_HART", [] { return new FrmXG_HART; });
}
