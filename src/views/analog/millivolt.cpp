#include "views/analog/millivolt.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/textroutines.h"
#include "views/analog/analogparams.h"

#include <QLineEdit>

using namespace AnalogParams;
using namespace StandardParams;

namespace {

QList<ParamSpec> noneSelectOnFocus(QList<ParamSpec> params) {
    for (ParamSpec &param : params)
        param = noSelectOnFocus(param);
    return params;
}

// Percentages, group 02 item ch+59.
constexpr int kFirstPercentItem = 60;

ViewSpec millivoltSpec(const QString &form, const QString &tag, int channels, int firstBaseCell,
                       const QString &percentCaption) {
    ViewSpec plan = asTypedSpec(form, tag, channels);
    const QList<ParamSpec> params = noneSelectOnFocus({
        atCell(zeroScale(), [](int ch) { return (ch - 1) * 2 + 1; }),
        atCell(fullScale(), [](int ch) { return (ch - 1) * 2 + 2; }),
        zeroBase([](int ch) { return 2 * ch + 8; },
                 [firstBaseCell](int ch) { return (ch - 1) * 2 + firstBaseCell; }),
        fullBase([](int ch) { return 2 * ch + 9; },
                 [firstBaseCell](int ch) { return (ch - 1) * 2 + firstBaseCell + 1; }),
        unusedFlag(),
    });
    plan.params = params;
    // Three runs share the bar's twelve steps, four for each.
    const auto step = [channels](int run) {
        return [run, channels](int ch) { return run * 4 + ch * 4 / channels; };
    };
    plan.passPlan = {{"01", params.mid(0, 2), true, step(0)},
                     {"02", params.mid(2, 2), true, step(1)},
                     {"02", params.mid(4, 1), false, step(2)}};
    plan.valueArray = true;
    plan.extraColumns = {{"txtInputType", percentCaption, "", 9, true, false}};
    plan.pauseMs = 5;
    return plan;
}

} // namespace

FrmQS::FrmQS(const QString &form, const QString &tag, int channels, int firstBaseCell,
             const QString &percentCaption, QWidget *parent)
    : CardView(millivoltSpec(form, tag, channels, firstBaseCell, percentCaption), parent) {}

QLineEdit *FrmQS::percentBox(int ch) const {
    return field("txtInputType", ch);
}

QList<LiveChannel> FrmQS::LiveChannels() const {
    QList<LiveChannel> channels = CardView::LiveChannels();
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        channels.append({QStringLiteral("Ch %1 %").arg(ch), percentBox(ch)});
    return channels;
}

// Value and percentage channel by channel; a lost reply ends the round, and the boxes of the
// channels before it keep their new values.
void FrmQS::procCycDataRead() {
    AddressCard();
    const struct {
        const char *group;
        int firstItem;
        QString control;
    } columns[] = {{"00", m_spec.firstValueItem, m_spec.valueControl},
                   {"02", kFirstPercentItem, "txtInputType"}};
    for (const auto &column : columns) {
        for (int ch = 1; ch <= m_spec.channels; ++ch) {
            const QString reply =
                ReadData(m_spec.retries, column.group, QString::number(column.firstItem + ch - 1));
            if (reply.isEmpty()) return LinkLostDuringCycle();
            QLineEdit *box = field(column.control, ch);
            box->clear();
            Clock::pause(m_spec.pauseMs);
            box->setText(DeleteDot(ValueAfterColon(reply)));
        }
    }
}

CardView *MakeFrmQS4() {
    return new FrmQS("frmQS4", "QS4", 4, 9, "Percent");
}

CardView *MakeFrmQS8() {
    return new FrmQS("frmQS8", "QS8", 8, 17, "Value/Perc.");
}

CardView *MakeFrmQX2() {
    ViewSpec plan = asTypedSpec("frmQX2", "QX2", 2);
    const auto cell = [](int k) { return [k](int ch) { return (ch - 1) * 7 + k; }; };
    plan.params = noneSelectOnFocus({
        atCell(zeroScale(), cell(1)),
        atCell(fullScale(), cell(2)),
        atCell(zeroAdjust(), cell(3)),
        atCell(fullAdjust(), cell(4)),
        channelParam(
            "txtTare", "", "Tare ratio", "01", [](int ch) { return ch + 7; }, cell(5)),
        channelParam(
            "txtLoad", "", "Load ratio", "01", [](int ch) { return ch + 5; }, cell(6)),
        channelParam(
            "txtThresh", "", "Th.Adjust", "01", [](int ch) { return ch + 3; }, cell(7)),
        unusedFlag(),
    });
    plan.progress = {[](int ch) { return ch * 4; }, [](int ch) { return 8 + ch * 2; }};
    return new CardView(plan);
}
