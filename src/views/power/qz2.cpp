#include "views/power/qz2.h"

#include "link/exchange.h"
#include "rack/overview.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

const QColor kLampGreen(0, 128, 0);
const QColor kLampRed(255, 0, 0);

// The alarm fields in the order Upload reads them; channel e has them at items 10e + 40 + offset.
struct AlarmField {
    const char *control;
    int itemOffset;
};
const AlarmField kAlarmFields[] = {
    {"txtAlarm1", 0},      {"txtAlarm2", 5},      {"txtAlarmLevel1", 1}, {"txtAlarmLevel2", 3},
    {"txtAlarmLevel3", 6}, {"txtAlarmLevel4", 8}, {"txtHyst1", 2},       {"txtHyst2", 4},
    {"txtHyst3", 7},       {"txtHyst4", 9},
};
// On screen: rows "1" and "2" of mode, two levels (speed and position), two hysteresis values.
const char *const kAlarmRows[2][5] = {
    {"txtAlarm1", "txtAlarmLevel1", "txtAlarmLevel2", "txtHyst1", "txtHyst2"},
    {"txtAlarm2", "txtAlarmLevel3", "txtAlarmLevel4", "txtHyst3", "txtHyst4"},
};

PulseSpec qz2Spec() {
    // Channel e keeps its sixteen fields in Param(20(e-1)+4) to Param(20(e-1)+19).
    QList<ParamSpec> fields;
    int cell = 4;
    for (const AlarmField &alarm : kAlarmFields)
        fields.append(PulseField(alarm.control, 10, 40 + alarm.itemOffset, 20, cell++));
    fields += {PulseField("txtDropout", 1, 9, 20, 14), PulseField("txtZScale", 2, 40, 20, 15),
               PulseField("txtFScale", 2, 41, 20, 16), PulseField("txtMinPos", 1, 13, 20, 17),
               PulseField("txtMaxPos", 1, 17, 20, 18), PulseField("txtInputType", 1, 29, 20, 19)};
    PulseSpec plan = MakePulseSpec("frmQZ2", "QZ2", 2, fields);
    ViewSpec &view = plan.view;
    view.pauseMs = 10;
    view.progress = {[](int e) { return 6 * e; }};
    plan.common = {PulseField("txtDelayTime", 0, 7, 0, 2), PulseField("txtHoldTime", 0, 8, 0, 3)};
    plan.storedOnly = {"txtInputType"};
    plan.locked = {"txtInputType"};
    // Value, Value(L) and Value(H) of each channel, then both positions.
    plan.live = {{10, "txtParData01(1)"}, {12, "txtParData01(2)"}, {13, "txtParData01(3)"},
                 {14, "txtParData02(1)"}, {16, "txtParData02(2)"}, {17, "txtParData02(3)"},
                 {57, "txtParData01(4)"}, {58, "txtParData02(4)"}};
    plan.commitDownload = true;
    plan.frameLines = {
        {"Drop-Out", {"txtDropout(%1)"}},      {"Zero Scale", {"txtZScale(%1)"}},
        {"Full Scale", {"txtFScale(%1)"}},     {"Reset Position", {"txtMinPos(%1)"}},
        {"Max.Position", {"txtMaxPos(%1)"}},   {"Input(Hz)", {"txtInputType(%1)"}},
        {"Value", {"txtParData0%1(1)"}, 9},    {"Value(L)", {"txtParData0%1(2)"}, 9},
        {"Value(H)", {"txtParData0%1(3)"}, 9}, {"Position", {"txtParData0%1(4)"}, 9},
    };
    return plan;
}

QString lampName(int e, int k) {
    return QStringLiteral("lblDIDataCh%1(%2)").arg(e).arg(k);
}

// The alarm rows of channel e: captions over the columns, rows "1" and "2".
QGridLayout *alarmGrid(QWidget *frame, int e) {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(3);
    grid->addWidget(ViewBuilders::caption(frame, "Mode", true), 0, 1);
    grid->addWidget(ViewBuilders::caption(frame, "Alarm Level", true), 0, 2, 1, 2);
    grid->addWidget(ViewBuilders::caption(frame, "Hyst.", true), 0, 4, 1, 2);
    // Over the first level, reaching over the second, so the two levels stay side by side.
    grid->addWidget(ViewBuilders::caption(frame, "Speed/Position"), 1, 2, 1, 2, Qt::AlignLeft);
    for (int row = 0; row < 2; ++row) {
        grid->addWidget(ViewBuilders::caption(frame, QString::number(row + 1)), row + 2, 0);
        for (int c = 0; c < 5; ++c) {
            const QString name = ViewBuilders::arrayName(kAlarmRows[row][c], e);
            grid->addWidget(ViewBuilders::field(frame, name,
                                                c == 0  ? 2
                                                : c < 3 ? 7
                                                        : 5),
                            row + 2, c + 1);
        }
    }
    grid->setColumnStretch(6, 1);
    return grid;
}

} // namespace

FrmQZ2::FrmQZ2(QWidget *parent) : PulseView(qz2Spec(), parent) {
    CmdClear = addCommand("CmdClear", "Clear", &PulseView::CmdClear_Click);
}

QWidget *FrmQZ2::lamp(int e, int k) const {
    return findChild<QWidget *>(lampName(e, k));
}

void FrmQZ2::buildBody(QVBoxLayout *layout) {
    auto *times = new QHBoxLayout;
    for (const ParamSpec &param : pulse().common) {
        const bool delay = param.control == QLatin1String("txtDelayTime");
        times->addWidget(ViewBuilders::caption(this, delay ? "Delay Time" : "Hold Time"));
        times->addWidget(ViewBuilders::field(this, param.control, 7));
        times->addSpacing(16);
    }
    times->addStretch();
    layout->addLayout(times);

    const QList<QGroupBox *> frames = buildChannelFrames(layout);
    for (int e = 1; e <= frames.size(); ++e) {
        QGroupBox *frame = frames.at(e - 1);
        auto *inside = static_cast<QVBoxLayout *>(frame->layout());
        inside->insertLayout(0, alarmGrid(frame, e));
        inside->insertSpacing(1, 8);
        auto *lamps = new QHBoxLayout;
        for (int k = 1; k <= 2; ++k) {
            lamps->addWidget(ViewBuilders::caption(frame, QString::number(k)));
            QWidget *light = MakeLamp(frame, lampName(e, k), 18);
            SetLampColor(light, NeutralLampColour());
            lamps->addWidget(light);
            lamps->addSpacing(12);
        }
        lamps->addStretch();
        inside->addSpacing(6);
        inside->addLayout(lamps);
    }
    layout->addStretch();
    setUpFields();
}

// Bits 2 and 3 of channel e's status word light its two lamps.
bool FrmQZ2::showStatus(int e) {
    const QString reply = ReadItem("00", e == 1 ? 11 : 15);
    if (reply.isEmpty()) {
        LinkLostDuringCycle();
        return false;
    }
    const QString bits = HexToBits(ValueAfterColon(reply));
    for (int k = 3; k <= 4; ++k)
        SetLampColor(lamp(e, k - 2),
                     bits.mid(16 - k, 1) == QLatin1String("0") ? kLampGreen : kLampRed);
    return true;
}

void FrmQZ2::procCycDataRead() {
    if (!ReadLiveWords()) return;
    // Grey until the status words have come: a lamp never shows a colour it no longer has.
    for (int e = 1; e <= 2; ++e)
        for (int k = 1; k <= 2; ++k)
            SetLampColor(lamp(e, k), NeutralLampColour());
    if (showStatus(1)) showStatus(2);
}
