#include "views/analog/alarm.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/overview.h"
#include "rack/textroutines.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The group of the parameters of most models; QC and QD models use group 12 instead.
const QString kParamGroup = QStringLiteral("04");
const QString kOtherParamGroup = QStringLiteral("12");
const QString kLevelControl = QStringLiteral("txtAlarmLevel");
constexpr int kAlarms = 4;
constexpr int kSetPointChars = 5;
constexpr int kLevelChars = 1;

ParamSpec timeParam(const char *control, int item, int cell) {
    ParamSpec param{control,
                    "",
                    "",
                    kParamGroup,
                    [item](int) { return item; },
                    Cell::Param,
                    [cell](int) { return cell; },
                    FieldKind::Real,
                    std::nullopt,
                    QString()};
    param.perCard = true;
    return param;
}

// Parameter n (0 to 8) of a channel: alarms 1 to 4, hysteresis, levels 1 to 4, on items
// ch*10+n and in cells (ch-1)*stride+4+n.
ParamSpec channelParam(const QString &control, int n, int stride) {
    return {control,
            "",
            "",
            kParamGroup,
            [n](int ch) { return ch * 10 + n; },
            Cell::Param,
            [n, stride](int ch) { return (ch - 1) * stride + 4 + n; },
            FieldKind::Real,
            std::nullopt,
            QString()};
}

ViewSpec alarmViewSpec(const AlarmSpec &row) {
    ViewSpec plan;
    plan.formName = row.formName;
    plan.tag = row.tag;
    plan.channels = row.channels;
    plan.params = {timeParam("txtPowerTime", 7, 1), timeParam("txtDelayTime", 8, 2),
                   timeParam("txtHoldTime", 9, 3)};
    for (int a = 1; a <= kAlarms; ++a)
        plan.params.append(
            channelParam(QStringLiteral("txtAlarm%1").arg(a), a - 1, row.cellsPerChannel));
    plan.params.append(channelParam("txtHyst", 4, row.cellsPerChannel));
    for (int a = 1; a <= kAlarms; ++a)
        plan.params.append(
            channelParam(kLevelControl + QString::number(a), 4 + a, row.cellsPerChannel));
    plan.params.append(StandardParams::unusedFlag());
    plan.acceptance = Acceptance::NotEmpty;
    plan.keyFilters = false;
    plan.firstValueItem = 14;
    plan.pauseMs = 50;
    plan.keepDecimalPoint = true;
    plan.stopOnLinkLoss = true;
    if (row.channels == 4)
        plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch + 4; }};
    else
        plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch / 2 + 8; }};
    return plan;
}

// The level a parameter stands for (1 to 4), or 0 for any other parameter.
int levelOf(const ParamSpec &param) {
    if (!param.control.startsWith(kLevelControl)) return 0;
    return param.control.mid(kLevelControl.size()).toInt();
}

QLineEdit *valueBoxOf(QWidget *parent, int ch, int chars) {
    return ViewBuilders::valueField(
        parent, QStringLiteral("txtParData%1").arg(ch, 2, 10, QLatin1Char('0')), chars);
}

QLabel *bitLabel(QWidget *parent, int bit) {
    QLabel *label = ViewBuilders::caption(parent, QString::number(bit), true);
    label->setMinimumWidth(18);
    return label;
}

} // namespace

const QList<AlarmSpec> &AlarmSpecs() {
    // Form, tag, channels, cells a channel, packed levels.
    static const QList<AlarmSpec> rows = {
        {"frmQA4", "QA4", 4, 9, false},
        {"frmQA8", "QA8", 8, 6, true},
    };
    return rows;
}

QString PackAlarmLevels(const AlarmLevels &levels) {
    return levels[3] + levels[2] + levels[1] + levels[0];
}

AlarmLevels UnpackAlarmLevels(const QString &cell) {
    if (cell.size() != kAlarms) return {};
    return {cell.mid(3, 1), cell.mid(2, 1), cell.mid(1, 1), cell.mid(0, 1)};
}

AlarmView::AlarmView(AlarmSpec row, QWidget *parent)
    : CardView(alarmViewSpec(row), parent), m_row(std::move(row)) {}

void AlarmView::OpenView(const QString &model) {
    WaitForTimer->stop();
    CardView::OpenView(model);
}

QLabel *AlarmView::lamp(int i) const {
    return findChild<QLabel *>(ViewBuilders::arrayName("lblDIDataCh", i));
}

QString AlarmView::wireGroup(const QString &group) const {
    if (group != kParamGroup) return group;
    const QString family = fraSetModel->title().left(2);
    return family == QLatin1String("QD") || family == QLatin1String("QC") ? kOtherParamGroup
                                                                          : kParamGroup;
}

QString &AlarmView::cellOf(const ParamSpec &param, int ch) const {
    const int level = levelOf(param);
    if (m_row.packedLevels && level > 0)
        return m_levels.at(static_cast<size_t>(ch)).at(static_cast<size_t>(level - 1));
    return CardView::cellOf(param, ch);
}

void AlarmView::SplitLevels() {
    if (!m_row.packedLevels) return;
    for (int ch = 1; ch <= m_row.channels; ++ch)
        m_levels.at(static_cast<size_t>(ch)) =
            UnpackAlarmLevels(record().Param((ch - 1) * m_row.cellsPerChannel + 9));
}

// A level left empty over a cell that held no levels makes the cell shorter than four, which
// the next refresh reads as no levels at all.
void AlarmView::JoinLevels() {
    if (!m_row.packedLevels) return;
    for (int ch = 1; ch <= m_row.channels; ++ch)
        record().Param((ch - 1) * m_row.cellsPerChannel + 9) =
            PackAlarmLevels(m_levels.at(static_cast<size_t>(ch)));
}

void AlarmView::ViewRefresh() {
    SplitLevels();
    CardView::ViewRefresh();
}

void AlarmView::UploadTail() {
    JoinLevels();
}

void AlarmView::ViewDownload() {
    SplitLevels();
    CardView::ViewDownload();
    JoinLevels();
}

void AlarmView::procCycDataRead() {
    AddressCard();
    QStringList values;
    if (!ReadLiveValues(values)) return;
    ClearValueBoxes();
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        valueBox(ch)->setText(ValueText(values.at(ch - 1)));
        valueBox(ch)->repaint();
    }
    Clock::pause(m_spec.pauseMs);

    const QColor neutral = NeutralLampColour();
    for (int i = 1; i <= lamps(); ++i)
        SetBackColor(lamp(i), neutral);
    // Item 10 holds bits 0 to 15, item 11 bits 16 to 31; the higher word goes in front.
    QString bits;
    for (int word = 0; word < lamps() / 16; ++word) {
        const QString reply = ReadData(m_spec.retries, "00", QString::number(10 + word));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return;
        }
        bits.prepend(HexToBits(ValueAfterColon(reply)));
    }
    for (int i = 1; i <= lamps(); ++i)
        SetBackColor(lamp(i), bits.at(bits.size() - i) == QLatin1Char('0') ? kAlarmOffColour
                                                                           : kAlarmOnColour);
}

void AlarmView::buildBody(QVBoxLayout *layout) {
    auto *box = new QWidget(this);
    QGridLayout *grid = m_row.packedLevels ? buildEightChannelGrid(box) : buildFourChannelGrid(box);
    grid->setColumnStretch(grid->columnCount(), 1);
    box->setLayout(grid);
    if (m_row.packedLevels) {
        layout->addWidget(box);
        auto *below = new QHBoxLayout;
        below->addWidget(buildTimes(), 0, Qt::AlignTop);
        below->addSpacing(24);
        auto *legend = new QVBoxLayout;
        legend->addWidget(ViewBuilders::caption(this, "Alarm Level"));
        legend->addWidget(ViewBuilders::caption(this, "H:1 L:0"));
        legend->addStretch();
        below->addLayout(legend);
        below->addSpacing(24);
        below->addWidget(buildLamps(), 0, Qt::AlignTop);
        below->addStretch();
        layout->addSpacing(8);
        layout->addLayout(below);
    } else {
        auto *row = new QHBoxLayout;
        row->addWidget(box, 0, Qt::AlignTop);
        auto *side = new QVBoxLayout;
        side->addWidget(buildTimes());
        side->addSpacing(16);
        side->addWidget(buildLamps());
        side->addStretch();
        row->addSpacing(16);
        row->addLayout(side);
        row->addStretch();
        layout->addLayout(row);
    }
    layout->addStretch();
    InstallFieldBehaviour();
}

// Channel blocks of four rows, one for each alarm with its bit: "A1(0)" to "A4(15)".
QGridLayout *AlarmView::buildFourChannelGrid(QWidget *box) {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(2);
    const QStringList headers = {"", "", "Alarm Level", "H/L", "Hyst.", "Unused", "Value"};
    for (int c = 0; c < headers.size(); ++c)
        grid->addWidget(ViewBuilders::caption(box, headers.at(c), true), 0, c);
    const auto field = [box](const QString &control, int ch, int chars) {
        return ViewBuilders::field(box, ViewBuilders::arrayName(control, ch), chars);
    };
    for (int ch = 1; ch <= m_row.channels; ++ch) {
        const int top = 1 + (ch - 1) * (kAlarms + 1);
        if (ch > 1) grid->setRowMinimumHeight(top - 1, 6);
        grid->addWidget(ViewBuilders::caption(box, QStringLiteral("CH%1").arg(ch)), top, 0);
        for (int a = 1; a <= kAlarms; ++a) {
            const int row = top + a - 1;
            const int bit = (ch - 1) * kAlarms + a - 1;
            grid->addWidget(ViewBuilders::caption(box, QStringLiteral("A%1(%2)").arg(a).arg(bit)),
                            row, 1);
            grid->addWidget(field(QStringLiteral("txtAlarm%1").arg(a), ch, kSetPointChars), row, 2);
            grid->addWidget(field(kLevelControl + QString::number(a), ch, kLevelChars), row, 3,
                            Qt::AlignHCenter);
        }
        grid->addWidget(field("txtHyst", ch, kSetPointChars), top, 4);
        grid->addWidget(field("txtEnable", ch, 2), top, 5, Qt::AlignHCenter);
        grid->addWidget(valueBoxOf(box, ch, 9), top, 6);
    }
    return grid;
}

// One row a channel: each alarm's level and direction with its bit beside them.
QGridLayout *AlarmView::buildEightChannelGrid(QWidget *box) {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(3);
    for (int a = 1; a <= kAlarms; ++a) {
        const int column = 1 + (a - 1) * 3;
        grid->addWidget(ViewBuilders::caption(box, QStringLiteral("Alarm%1 Cond.").arg(a), true), 0,
                        column, 1, 3);
        grid->addWidget(ViewBuilders::caption(box, "Level", true), 1, column);
        grid->addWidget(ViewBuilders::caption(box, "Dir", true), 1, column + 1);
        grid->addWidget(ViewBuilders::caption(box, "Bit Pos.", true), 1, column + 2);
    }
    const int tail = 1 + kAlarms * 3;
    grid->addWidget(ViewBuilders::caption(box, "Hyst.", true), 1, tail);
    grid->addWidget(ViewBuilders::caption(box, "Unused", true), 1, tail + 1);
    grid->addWidget(ViewBuilders::caption(box, "Value", true), 1, tail + 2);
    for (int ch = 1; ch <= m_row.channels; ++ch) {
        const int row = ch + 1;
        const auto add = [&](const QString &control, int chars, int column) {
            grid->addWidget(ViewBuilders::field(box, ViewBuilders::arrayName(control, ch), chars),
                            row, column, Qt::AlignHCenter);
        };
        grid->addWidget(ViewBuilders::caption(box, QStringLiteral("CH%1").arg(ch)), row, 0);
        for (int a = 1; a <= kAlarms; ++a) {
            const int column = 1 + (a - 1) * 3;
            add(QStringLiteral("txtAlarm%1").arg(a), kSetPointChars, column);
            add(kLevelControl + QString::number(a), kLevelChars, column + 1);
            grid->addWidget(bitLabel(box, (ch - 1) * kAlarms + a - 1), row, column + 2);
        }
        add("txtHyst", kSetPointChars, tail);
        add("txtEnable", 2, tail + 1);
        grid->addWidget(valueBoxOf(box, ch, 7), row, tail + 2);
    }
    return grid;
}

QWidget *AlarmView::buildTimes() {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(3);
    const QList<std::pair<const char *, const char *>> times = {
        {"Power ON", "txtPowerTime"}, {"Delay Time", "txtDelayTime"}, {"Hold Time", "txtHoldTime"}};
    for (int row = 0; row < times.size(); ++row) {
        grid->addWidget(ViewBuilders::caption(box, times.at(row).first), row, 0);
        grid->addWidget(ViewBuilders::field(box, times.at(row).second, kSetPointChars), row, 1);
    }
    grid->setColumnStretch(2, 1);
    return box;
}

// Rows of sixteen lamps, bit 0 at the left, with the bit numbers at the ends of each row.
QWidget *AlarmView::buildLamps() {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(2);
    grid->setVerticalSpacing(6);
    for (int first = 0; first < lamps(); first += 16) {
        const int row = first / 16;
        grid->addWidget(bitLabel(box, first), row, 0);
        for (int bit = first; bit < first + 16; ++bit) {
            QLabel *light = MakeLabel(box, ViewBuilders::arrayName("lblDIDataCh", bit + 1), "");
            light->setFrameShape(QFrame::Panel);
            light->setFrameShadow(QFrame::Sunken);
            light->setFixedSize(14, 18);
            SetBackColor(light, NeutralLampColour());
            grid->addWidget(light, row, 1 + bit - first + (bit - first) / 8);
        }
        grid->addWidget(bitLabel(box, first + 15), row, 18);
    }
    grid->setColumnMinimumWidth(9, 4); // a gap between the bytes
    return box;
}

CardView *MakeAlarmView(const QString &formName) {
    for (const AlarmSpec &row : AlarmSpecs())
        if (row.formName == formName) return new AlarmView(row);
    return nullptr;
}
