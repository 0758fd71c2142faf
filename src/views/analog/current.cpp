#include "views/analog/current.h"

#include "views/analog/analogparams.h"

#include <QGroupBox>
#include <QLineEdit>

using namespace AnalogParams;
using namespace StandardParams;

namespace {

constexpr int kQL4Channels = 4;
constexpr int kQL8Channels = 8;

// Base items of the QL4A and QL4B cards and of the QL8, above the adjusts' numbers.
int highZeroBase(int ch) {
    return 2 * ch + 24;
}
int highFullBase(int ch) {
    return 2 * ch + 25;
}
int baseZeroCell(int ch) {
    return (ch - 1) * 2 + 17;
}
int baseFullCell(int ch) {
    return (ch - 1) * 2 + 18;
}

} // namespace

FrmQL4::FrmQL4(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan = asTypedSpec("frmQL4", "QL4", kQL4Channels);
              plan.params = {zeroScale(),
                             fullScale(),
                             zeroAdjust(),
                             fullAdjust(),
                             zeroBase([](int ch) { return 2 * ch + 8; }, baseZeroCell),
                             fullBase([](int ch) { return 2 * ch + 9; }, baseFullCell),
                             noSelectOnFocus(unusedFlag())};
              return plan;
          }(),
          parent) {}

bool FrmQL4::hasNoBase() const {
    return fraSetModel->title().startsWith(QLatin1String("QM"));
}

QList<PassSpec> FrmQL4::workerPasses() const {
    const QList<ParamSpec> &p = m_spec.params;
    QList<PassSpec> runs = {{"01", p.mid(0, 4), true, [](int ch) { return ch; }}};
    const auto flags = [](int ch) { return ch + 8; };
    if (hasNoBase()) {
        runs.append({"02", {p.at(6)}, true, flags});
        return runs;
    }
    const QString model = fraSetModel->title();
    QList<ParamSpec> bases = p.mid(4, 2);
    if (model.startsWith(QLatin1String("QL4A")) || model.startsWith(QLatin1String("QL4B")))
        bases = {atItem(bases.at(0), highZeroBase), atItem(bases.at(1), highFullBase)};
    runs.append({"02", bases, true, [](int ch) { return ch + 4; }});
    runs.append({"02", {p.at(6)}, false, flags});
    return runs;
}

void FrmQL4::EmptyBases(bool cellsToo) {
    for (int ch = 1; ch <= kQL4Channels; ++ch) {
        field("txtZBase", ch)->clear();
        field("txtFBase", ch)->clear();
        if (!cellsToo) continue;
        record().Param(baseZeroCell(ch)).clear();
        record().Param(baseFullCell(ch)).clear();
    }
}

void FrmQL4::SetScaleMinMax(const QString &model) {
    const bool none = model.startsWith(QLatin1String("QM"));
    for (int ch = 1; ch <= kQL4Channels; ++ch) {
        for (const char *control : {"txtZBase", "txtFBase"}) {
            QLineEdit *box = field(control, ch);
            box->setEnabled(!none);
            QPalette palette;
            if (none) palette.setColor(QPalette::Base, palette.color(QPalette::Button));
            box->setPalette(palette);
        }
    }
    CardView::SetScaleMinMax(model);
}

void FrmQL4::ViewRefresh() {
    CardView::ViewRefresh();
    if (hasNoBase()) EmptyBases(false);
}

void FrmQL4::ViewUpload() {
    if (hasNoBase()) EmptyBases(true);
    CardView::ViewUpload();
}

void FrmQL4::ViewDownload() {
    if (hasNoBase()) EmptyBases(true);
    CardView::ViewDownload();
}

CardView *MakeFrmQL8() {
    ViewSpec plan = asTypedSpec("frmQL8", "QL8", kQL8Channels);
    const ParamSpec zs = atCell(zeroScale(), [](int ch) { return (ch - 1) * 2 + 1; });
    const ParamSpec fs = atCell(fullScale(), [](int ch) { return (ch - 1) * 2 + 2; });
    const ParamSpec za = atCell(zeroAdjust(), [](int ch) { return (ch - 1) * 2 + 33; });
    const ParamSpec fa = atCell(fullAdjust(), [](int ch) { return (ch - 1) * 2 + 34; });
    const ParamSpec zb = zeroBase(highZeroBase, baseZeroCell);
    const ParamSpec fb = fullBase(highFullBase, baseFullCell);
    plan.params = {zs, fs, za, fa, zb, fb, unusedFlag()};
    // Four runs of eight channels share the bar's twelve steps.
    const auto step = [](int run) { return [run](int ch) { return run * 3 + ch * 3 / 8; }; };
    plan.passPlan = {{"01", {zs, fs}, true, step(0)},
                     {"01", {za, fa}, true, step(1)},
                     {"02", {zb, fb}, true, step(2)},
                     {"02", {unusedFlag()}, false, step(3)}};
    plan.pauseMs = 50;
    plan.versionBeforeCycle = true;
    return new CardView(plan);
}
