#include "views/power/pulse.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// txtParData01, txtParData02, ...: one live word a row, items 10 upward.
QList<LiveWord> numberedLiveWords(int count) {
    QList<LiveWord> words;
    for (int n = 1; n <= count; ++n)
        words.append({9 + n, QStringLiteral("txtParData") + PulseView::ItemText(n)});
    return words;
}

const QString kEdgeHint = QStringLiteral("0:UP/1:DOWN");

} // namespace

ParamSpec PulseField(const char *control, int itemStep, int itemOffset, int cellStep, int firstCell,
                     const char *caption) {
    return {control,
            "",
            caption,
            "01",
            [itemStep, itemOffset](int e) { return itemStep * e + itemOffset; },
            Cell::Param,
            [cellStep, firstCell](int e) { return cellStep * (e - 1) + firstCell; },
            FieldKind::Int,
            std::nullopt,
            QString()};
}

PulseSpec MakePulseSpec(const char *form, const char *tag, int channels, QList<ParamSpec> params) {
    PulseSpec plan;
    ViewSpec &view = plan.view;
    view.formName = QLatin1String(form);
    view.tag = QLatin1String(tag);
    view.channels = channels;
    view.params = std::move(params);
    view.acceptance = Acceptance::NotEmpty;
    view.keyFilters = false;
    return plan;
}

double LeadingNumber(const QString &text) {
    static const QRegularExpression number(QStringLiteral(R"(^\s*[-+]?(\d+\.?\d*|\.\d+))"));
    const QRegularExpressionMatch match = number.match(text);
    return match.hasMatch() ? match.captured(0).trimmed().toDouble() : 0.0;
}

// ---------------------------------------------------------------------------------------------
// The common ground

PulseView::PulseView(PulseSpec plan, QWidget *parent)
    : CardView(plan.view, parent), m_pulse(std::move(plan)) {}

QPushButton *PulseView::addCommand(const QString &name, const QString &caption,
                                   void (PulseView::*click)()) {
    QPushButton *button = MakeButton(fraSetModel, name, caption);
    addHeaderTool(button);
    connect(button, &QPushButton::clicked, this, click);
    return button;
}

QString PulseView::ItemText(int item) {
    return QStringLiteral("%1").arg(item, 2, 10, QLatin1Char('0'));
}

QString PulseView::ReadItem(const QString &group, int item) {
    return ReadData(m_spec.retries, group, ItemText(item));
}

QString PulseView::WriteItem(const QString &group, int item, const QString &data) {
    return WriteData(m_spec.retries, group, ItemText(item), data);
}

QLineEdit *PulseView::box(const ParamSpec &param, int ch) const {
    return ch == 0 ? findChild<QLineEdit *>(param.control) : field(param.control, ch);
}

QLineEdit *PulseView::liveBox(const QString &name) const {
    return findChild<QLineEdit *>(name);
}

void PulseView::uploadField(const ParamSpec &param, int ch) {
    QLineEdit *edit = box(param, ch);
    edit->setText(Exchanged(param) ? ValueAfterColon(ReadItem(param.group, param.item(ch)))
                                   : QStringLiteral("0"));
    cellOf(param, ch) = edit->text();
}

void PulseView::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    OpenGroup("01");
    for (const ParamSpec &param : m_pulse.common)
        uploadField(param, 0);
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        for (const ParamSpec &param : m_spec.params)
            uploadField(param, ch);
        setPassProgress(0, ch);
    }
    if (m_pulse.commitUpload) WriteItem("02", 1, "1");
    CloseProgress();
}

void PulseView::Refused(const ParamSpec &param, int ch) {
    box(param, ch)->setText(cellOf(param, ch));
}

void PulseView::downloadField(const ParamSpec &param, int ch) {
    QLineEdit *edit = box(param, ch);
    QString &cell = cellOf(param, ch);
    if (!Exchanged(param)) {
        cell.clear();
    } else if (m_pulse.storedOnly.contains(param.control)) {
        cell = edit->text();
    } else if (!Acceptable(param, edit->text())) {
        Refused(param, ch);
    } else {
        WriteItem(param.group, param.item(ch), edit->text());
        cell = edit->text();
    }
}

void PulseView::ViewDownload() {
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("01");
    OpenProgress(12, "Downloading");
    for (const ParamSpec &param : m_pulse.common)
        downloadField(param, 0);
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        for (const ParamSpec &param : m_spec.params)
            downloadField(param, ch);
        setPassProgress(0, ch);
    }
    if (m_pulse.commitDownload) WriteItem("02", 1, "1");
    CloseProgress();
}

void PulseView::ClearByItem9() {
    AddressCard();
    OpenGroup("01");
    WriteItem("01", 9, "1");
}

bool PulseView::ReadLiveWords() {
    AddressCard();
    QStringList replies;
    for (const LiveWord &word : m_pulse.live) {
        const QString reply = ReadItem("00", word.item);
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return false;
        }
        replies.append(reply);
    }
    for (const LiveWord &word : m_pulse.live) {
        QLineEdit *value = liveBox(word.box);
        value->clear();
        if (m_pulse.redraw) value->repaint();
    }
    Clock::pause(m_spec.pauseMs);
    for (qsizetype i = 0; i < replies.size(); ++i)
        liveBox(m_pulse.live.at(i).box)->setText(DeleteDot(ValueAfterColon(replies.at(i))));
    return true;
}

void PulseView::procCycDataRead() {
    ReadLiveWords();
}

void PulseView::ViewRefresh() {
    for (const ParamSpec &param : m_pulse.common)
        box(param, 0)->setText(cellOf(param, 0));
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        for (const ParamSpec &param : m_spec.params)
            box(param, ch)->setText(cellOf(param, ch));
}

namespace {

// The caption of the frame line that shows `control` for channel ch, if any.
QString frameCaption(const QList<FrameLine> &lines, const QString &control, int ch) {
    for (const FrameLine &line : lines)
        for (const QString &pattern : line.controls)
            if (pattern.arg(ch) == control) return line.caption;
    return QString();
}

std::optional<double> HexNumber(const QString &text) {
    bool ok = false;
    const uint value = text.trimmed().toUInt(&ok, 16);
    return ok ? std::optional<double>(value) : std::nullopt;
}

} // namespace

QList<LiveChannel> PulseView::LiveChannels() const {
    QList<LiveChannel> channels;
    for (qsizetype n = 0; n < m_pulse.live.size(); ++n) {
        const QString &name = m_pulse.live.at(n).box;
        // Rows of counters are numbered; a box in a frame goes by its line, or by its own name
        // where the line has no caption.
        LiveChannel channel{QStringLiteral("Ch %1").arg(n + 1), liveBox(name)};
        if (!m_pulse.frameLines.isEmpty()) channel.name = name.mid(3);
        for (int ch = 1; ch <= m_spec.channels; ++ch) {
            const QString caption = frameCaption(m_pulse.frameLines, name, ch);
            if (caption.isEmpty()) continue;
            channel.name = QStringLiteral("Ch %1 %2").arg(ch).arg(caption);
            if (caption.contains(QLatin1String("(Hex)"))) channel.number = HexNumber;
        }
        channels.append(channel);
    }
    return channels;
}

QString PulseView::CellName(Cell kind, int index) const {
    for (const ParamSpec &param : m_pulse.common)
        if (param.cellKind == kind && param.cell(0) == index) return param.control.mid(3);
    int ch = 0;
    if (const ParamSpec *param = ParamOfCell(kind, index, ch)) {
        const QString caption = frameCaption(m_pulse.frameLines, box(*param, ch)->objectName(), ch);
        if (!caption.isEmpty()) return QStringLiteral("Ch %1 %2").arg(ch).arg(caption);
    }
    return CardView::CellName(kind, index);
}

void PulseView::setUpFields() {
    const auto each = [this](const ParamSpec &param, int ch) {
        QLineEdit *edit = box(param, ch);
        if (m_pulse.selectAll) InstallSelectAllOnFocus(edit);
        if (m_pulse.locked.contains(param.control)) edit->setReadOnly(true);
    };
    for (const ParamSpec &param : m_pulse.common)
        each(param, 0);
    for (int ch = 1; ch <= m_spec.channels; ++ch)
        for (const ParamSpec &param : m_spec.params)
            each(param, ch);
}

QList<QGroupBox *> PulseView::buildChannelFrames(QVBoxLayout *layout) {
    QStringList liveNames;
    for (const LiveWord &word : m_pulse.live)
        liveNames.append(word.box);
    auto *frames = new QGridLayout;
    frames->setSpacing(10);
    QList<QGroupBox *> made;
    for (int ch = 1; ch <= m_spec.channels; ++ch) {
        QGroupBox *frame =
            MakeFrame(this, QStringLiteral("fraCh%1").arg(ch), QStringLiteral("Ch. %1").arg(ch));
        auto *inside = new QVBoxLayout(frame);
        auto *lines = new QGridLayout;
        lines->setHorizontalSpacing(8);
        lines->setVerticalSpacing(4);
        int row = 0;
        for (const FrameLine &line : m_pulse.frameLines) {
            lines->addWidget(ViewBuilders::caption(frame, line.caption), row, 0);
            int column = 1;
            for (const QString &pattern : line.controls) {
                const QString name = pattern.arg(ch);
                const bool shown = liveNames.contains(name) ||
                                   m_pulse.locked.contains(name.section(QLatin1Char('('), 0, 0));
                lines->addWidget(shown ? ViewBuilders::valueField(frame, name, line.chars)
                                       : ViewBuilders::field(frame, name, line.chars),
                                 row, column++);
            }
            // The note follows the boxes and may reach over the columns of longer lines.
            if (!line.hint.isEmpty())
                lines->addWidget(ViewBuilders::caption(frame, line.hint), row, column, 1,
                                 4 - column);
            ++row;
        }
        lines->setColumnStretch(4, 1);
        inside->addLayout(lines);
        frames->addWidget(frame, (ch - 1) / m_pulse.framesPerRow, (ch - 1) % m_pulse.framesPerRow);
        made.append(frame);
    }
    layout->addLayout(frames);
    return made;
}

void PulseView::buildBody(QVBoxLayout *layout) {
    buildChannelFrames(layout);
    layout->addStretch();
    setUpFields();
}

// ---------------------------------------------------------------------------------------------
// frmQZ4: four inputs with frequency

namespace {

PulseSpec qz4Spec() {
    // Item step and offset, record cell step and first cell.
    PulseSpec plan =
        MakePulseSpec("frmQZ4", "QZ4", 4,
                      {PulseField("txtDropout", 1, 9, 7, 1), PulseField("txtThresh", 1, 25, 7, 2),
                       PulseField("txtEdge", 1, 29, 7, 3), PulseField("txtGain", 1, 53, 7, 4),
                       PulseField("txtZScale", 2, 40, 7, 5), PulseField("txtFScale", 2, 41, 7, 6),
                       PulseField("txtInputType", 1, 49, 7, 7)});
    ViewSpec &view = plan.view;
    view.pauseMs = 10;
    view.progress = {[](int e) { return 3 * e; }};
    plan.storedOnly = {"txtGain", "txtInputType"};
    plan.locked = {"txtInputType"};
    plan.live = numberedLiveWords(4);
    plan.redraw = false;
    plan.commitUpload = true;
    plan.commitDownload = true;
    plan.selectAll = false;
    plan.frameLines = {
        {"Drop-Out", {"txtDropout(%1)"}},
        {"Th. Adjust", {"txtThresh(%1)"}},
        {"Edge", {"txtEdge(%1)"}, 7, kEdgeHint},
        {"Gain", {"txtGain(%1)"}},
        {"Zero/Full Scale", {"txtZScale(%1)", "txtFScale(%1)"}},
        {"Input(Hz)", {"txtInputType(%1)"}},
        {"Value", {"txtParData0%1"}, 9},
    };
    return plan;
}

} // namespace

CardView *MakeFrmQZ4() {
    return new PulseView(qz4Spec());
}

// ---------------------------------------------------------------------------------------------
// frmQZ4A: four 32-bit counters

namespace {

PulseSpec qz4aSpec() {
    PulseSpec plan =
        MakePulseSpec("frmQZ4A", "QZ4A", 4,
                      {PulseField("txtMin", 2, 12, 5, 1), PulseField("txtMax", 2, 13, 5, 2),
                       PulseField("txtEdge", 1, 29, 5, 3), PulseField("txtThresh", 1, 25, 5, 4),
                       PulseField("txtDivide", 1, 57, 5, 5)});
    ViewSpec &view = plan.view;
    view.pauseMs = 50;
    view.tickMs = 1000;
    view.progress = {[](int e) { return 3 * e; }};
    // The low and high words of each counter first, then each channel's third word.
    for (int item = 10; item <= 17; ++item)
        plan.live.append(
            {item,
             QStringLiteral("txtParData0%1(%2)").arg((item - 8) / 2).arg(item % 2 == 0 ? 1 : 2)});
    for (int e = 1; e <= 4; ++e)
        plan.live.append({56 + e, QStringLiteral("txtParData0%1(3)").arg(e)});
    plan.frameLines = {
        {"Min.", {"txtMin(%1)"}, 10},
        {"Max.", {"txtMax(%1)"}, 10},
        {"Edge", {"txtEdge(%1)"}, 10, kEdgeHint},
        {"Th. Adjust", {"txtThresh(%1)"}, 10},
        {"Dividing Ratio", {"txtDivide(%1)"}, 10},
        {"Value_L(Hex)", {"txtParData0%1(1)"}, 10},
        {"Value_H(Hex)", {"txtParData0%1(2)"}, 10},
        {"", {"txtParData0%1(3)"}, 10},
    };
    return plan;
}

const QColor kOfferedColour(255, 255, 255);

QColor withdrawnColour() {
    return QApplication::palette().color(QPalette::Window);
}

} // namespace

FrmQZ4A::FrmQZ4A(QWidget *parent) : PulseView(qz4aSpec(), parent) {
    CheckClear = new QCheckBox(QStringLiteral("Clear"), fraSetModel);
    CheckClear->setObjectName("CheckClear");
    addHeaderTool(CheckClear);
    CmdClear = addCommand("CmdClear", "Clear", &PulseView::CmdClear_Click);
}

// The version decides what the view offers, so it is read before the view starts its cycle.
void FrmQZ4A::OpenView(const QString &model) {
    build();
    WaitForTimer->stop();
    fraSetModel->setTitle(model);
    txtCardType->setText(model);
    txtCardNo->setText(QString::number(CardNo));
    SelFormName = m_spec.tag;
    ShowView(this);
    AddressCard();
    txtVerNo->setText(ValueAfterColon(ReadData(m_spec.retries, "00", "40")));
    SetScaleMinMax(model);
}

void FrmQZ4A::SetScaleMinMax(const QString &model) {
    CheckClear->setChecked(true);
    CardView::SetScaleMinMax(model);
}

double FrmQZ4A::versionNumber() const {
    return LeadingNumber(DeleteDot(txtVerNo->text()));
}

void FrmQZ4A::applyVersionRules() {
    const double version = versionNumber();
    const bool divide = version >= 5;
    for (int e = 1; e <= 4; ++e) {
        QLineEdit *edit = field("txtDivide", e);
        edit->setEnabled(divide);
        SetBackColor(edit, divide ? kOfferedColour : withdrawnColour());
        if (!divide) edit->setText(QStringLiteral("0"));
    }
    const bool offered = version >= 10;
    CheckClear->setEnabled(offered);
    SetBackColor(CheckClear, offered ? kOfferedColour : withdrawnColour());
}

void FrmQZ4A::ViewRefresh() {
    PulseView::ViewRefresh();
    applyVersionRules();
}

bool FrmQZ4A::Exchanged(const ParamSpec &param) const {
    return param.control != QLatin1String("txtDivide") || versionNumber() >= 5;
}

void FrmQZ4A::ViewDownload() {
    PulseView::ViewDownload();
    if (CheckClear->isChecked()) ViewClear();
}

void FrmQZ4A::ViewClear() {
    CopyHeaderToRecord();
    ClearByItem9();
}

// ---------------------------------------------------------------------------------------------
// Counters in rows: frmQZ8 and frmQZ16

CounterView::CounterView(PulseSpec plan, CounterSpec counter, QWidget *parent)
    : PulseView(std::move(plan), parent), m_counter(std::move(counter)) {
    CmdClear = addCommand("CmdClear", "Clear", &PulseView::CmdClear_Click);
    cmdPreset = addCommand("cmdPreset", "Preset", &PulseView::cmdPreset_Click);
}

QLineEdit *CounterView::presetBox(int n) const {
    return field("txtPresetVal", n);
}

// A preset is typed for the moment: it is not kept, and each entry starts without one.
void CounterView::SetScaleMinMax(const QString &model) {
    for (int n = 1; n <= m_spec.channels; ++n)
        if (QLineEdit *preset = presetBox(n)) preset->clear();
    CardView::SetScaleMinMax(model);
}

void CounterView::buildBody(QVBoxLayout *layout) {
    const int wide = m_counter.keyLimit > 0 ? m_counter.keyLimit : 6;
    QList<ViewBuilders::GridColumn> columns;
    for (const ParamSpec &param : m_spec.params)
        columns.append({param.control, param.caption, "",
                        param.control == QLatin1String("txtMin") ? 2 : wide, false, false});
    columns.append({"txtPresetVal", "Preset", "", wide, false, false});
    columns.append({"txtParData", "Value", "", 10, true, true});
    auto *area = new QWidget(this);
    QGridLayout *grid = ViewBuilders::channelGrid(area, columns, m_spec.channels);
    grid->setColumnStretch(columns.size() + 1, 1);
    // The rows are numbered plainly.
    for (int n = 1; n <= m_spec.channels; ++n)
        if (auto *label = qobject_cast<QLabel *>(grid->itemAtPosition(n + 1, 0)->widget()))
            label->setText(QString::number(n));
    area->setLayout(grid);
    layout->addWidget(area);
    layout->addStretch();
    setUpFields();
    for (int n = 1; n <= m_spec.channels; ++n) {
        InstallSelectAllOnFocus(presetBox(n));
        if (m_counter.keyLimit == 0) continue;
        for (QLineEdit *edit : {field("txtFScale", n), presetBox(n)}) {
            edit->setMaxLength(m_counter.keyLimit);
            InstallKeyFilter(edit, KeyInt);
        }
        if (QLineEdit *flag = field("txtMin", n)) {
            flag->setMaxLength(1);
            InstallKeyFilter(flag, KeyFlag);
        }
    }
}

bool CounterView::Acceptable(const ParamSpec &param, const QString &text) const {
    if (param.control != QLatin1String("txtFScale"))
        return text == QLatin1String("1") || text == QLatin1String("0");
    if (!IsDigitText(text)) return false;
    const double value = text.toDouble();
    return value >= m_counter.maxFloor && value <= m_counter.maxCeiling;
}

void CounterView::Refused(const ParamSpec &param, int ch) {
    if (m_counter.emptyRefused)
        box(param, ch)->clear();
    else
        PulseView::Refused(param, ch);
}

QString &CounterView::storedMax(int n) const {
    for (const ParamSpec &param : m_spec.params)
        if (param.control == QLatin1String("txtFScale")) return cellOf(param, n);
    return record().Param(n); // every counter view has a Max; not reached
}

bool CounterView::presetPasses(int n, const QString &text) const {
    if (!IsDigitText(text)) return false;
    const double value = text.toDouble();
    return value <= m_counter.maxCeiling && value <= LeadingNumber(storedMax(n));
}

// The card has room for sixteen counters whatever its size, and all sixteen are zeroed.
void CounterView::ViewClear() {
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("02");
    OpenProgress(12, "Downloading");
    for (int n = 1; n <= 16; ++n) {
        WriteItem("02", n + 9, "0");
        SetProgress((n + 1) / 2);
    }
    CloseProgress();
}

void CounterView::ViewPreset() {
    AddressCard();
    WriteItem("02", 1, m_counter.presetOpening);
    OpenProgress(12, "Downloading");
    for (int n = 1; n <= m_spec.channels; ++n) {
        bool known = true;
        for (const ParamSpec &param : m_spec.params)
            known = known && !cellOf(param, n).isEmpty();
        // Without the row's settings in the record the preset cannot be checked against Max.
        if (!known && m_counter.warnBeforeUpload) {
            CloseProgress();
            People::message("Please Upload before the Preset", "Preset", People::Icon::Stop);
            return;
        }
        QLineEdit *preset = presetBox(n);
        if (known && !preset->text().isEmpty()) {
            if (presetPasses(n, preset->text()))
                preset->setText(ValueAfterColon(WriteItem("02", n + 9, preset->text())));
            else
                preset->clear();
        }
        SetProgress((n + 1) / 2);
    }
    CloseProgress();
}

namespace {

PulseSpec counterSpec(const char *form, const char *tag, int rows, QList<ParamSpec> params) {
    PulseSpec plan = MakePulseSpec(form, tag, rows, std::move(params));
    ViewSpec &view = plan.view;
    view.pauseMs = 50;
    view.progress = {[](int n) { return (n + 1) / 2; }};
    plan.live = numberedLiveWords(rows);
    return plan;
}

} // namespace

FrmQZ8::FrmQZ8(QWidget *parent)
    : CounterView(counterSpec("frmQZ8", "QZ8", 8,
                              {PulseField("txtMin", 2, 24, 2, 2, "Min"),
                               PulseField("txtFScale", 2, 25, 2, 3, "Max")}),
                  {10000, 2147483647, "1", true, true, 10}, parent) {}

void FrmQZ8::ShowChDataIO(int slot) {
    for (int ch = 1; ch <= FrmOverview::kWideValues; ++ch)
        Overview()->lblInputDataLCh(slot, ch)->setVisible(true);
}

// The first four counters, in the wide fields; a word that does not come keeps the old one.
bool FrmQZ8::setOverViewDataIO(int slot) {
    for (int ch = 1; ch <= FrmOverview::kWideValues; ++ch) {
        const QString reply = ReadItem("00", 9 + ch);
        if (!reply.isEmpty())
            Overview()->lblInputDataLCh(slot, ch)->setText(DeleteDot(ValueAfterColon(reply)));
    }
    return true;
}

CardView *MakeFrmQZ16() {
    return new CounterView(
        counterSpec("frmQZ16", "QZ16", 16, {PulseField("txtFScale", 2, 25, 1, 1, "Max")}),
        {0, 65535, "F", false, false, 0});
}
