#include "views/analog/universal.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/connection.h"
#include "rack/monitor.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "views/analog/universaltypes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>
#include <cmath>
#include <limits>

using namespace UniversalTypes;

namespace {

constexpr int kRetries = 10;
constexpr int kCellsPerChannel = 14;

// The six number fields of a channel: the item, the cell within the channel's fourteen, and
// the limits of the scaled value. Upload and Download take them in this order: the scales and
// adjusts in one run, the bases in the next.
struct NumberField {
    const char *control;
    const char *groupCaption;
    const char *caption;
    const char *item;
    int cell;
    int scale; // 1: a whole number; 100, 10000: a real with two or four decimals
    int minimum;
    int maximum;
};

const NumberField kNumbers[] = {
    {"txtZScale", "Scale", "Zero", "55", 5, 1, -32000, 32000},
    {"txtFScale", "Scale", "Full", "56", 6, 1, -32000, 32000},
    {"txtBias", "Adjust", "", "53", 3, 100, -32000, 32000},
    {"txtGain", "Adjust", "", "54", 4, 10000, -32000, 32000},
    {"txtZBase", "Base", "Zero", "51", 1, 1, -999, 99999},
    {"txtFBase", "Base", "Full", "52", 2, 1, -999, 99999},
};
constexpr int kFirstBase = 4;

const NumberField *numberField(const QString &control) {
    for (const NumberField &f : kNumbers)
        if (control == QLatin1String(f.control)) return &f;
    return nullptr;
}

int cellIndex(int ch, int cell) {
    return (ch - 1) * kCellsPerChannel + cell;
}

// Cells of the lists and the CJC switch within a channel's fourteen.
constexpr int kInputTypeCell = 7;
constexpr int kBurnOutCell = 8;
constexpr int kCjcCell = 9;

QString prefix(int ch) {
    return QStringLiteral("0%1").arg(ch);
}

// A plain decimal number: a sign, digits, at most one point, at least one digit.
bool isNumberText(const QString &text) {
    static const QRegularExpression number(QStringLiteral("^-?(\\d+\\.?\\d*|\\.\\d+)$"));
    return number.match(text).hasMatch();
}

// Round half to even, as a 32-bit integer; nothing when it does not fit.
std::optional<qint32> roundToInt32(double value) {
    const double n = std::nearbyint(value);
    if (!std::isfinite(n) || n < std::numeric_limits<qint32>::min() ||
        n > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return static_cast<qint32>(n);
}

// A real written back with the precision of a single, so 1.23 stays 1.23.
QString singleText(qint32 n, int scale) {
    return QString::number(static_cast<double>(static_cast<float>(n) / static_cast<float>(scale)),
                           'g', 7);
}

bool isOne(const QString &value) {
    bool ok = false;
    return value.trimmed().toInt(&ok) == 1 && ok;
}

bool isZero(const QString &value) {
    bool ok = false;
    return value.trimmed().toInt(&ok) == 0 && ok;
}

void selectText(QComboBox *list, const QString &text) {
    const int row = list->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0) list->setCurrentIndex(row);
}

void fill(QComboBox *list, const QStringList &texts) {
    list->clear();
    list->addItems(texts);
    list->setCurrentIndex(-1);
}

// "1" is an unused channel, red; "0" a used one, green.
void colourChEnable(QComboBox *list) {
    QPalette palette = list->palette();
    const QColor colour =
        list->currentText() == QLatin1String("1") ? kFlagOnColour : kFlagOffColour;
    palette.setColor(QPalette::Button, colour);
    palette.setColor(QPalette::Base, colour);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    list->setPalette(palette);
}

// The list keeps its place in the grid while it is hidden, so the rows do not jump.
template <typename W> W *keepPlace(W *widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
    return widget;
}

QComboBox *makeList(QWidget *parent, const QString &name, int width) {
    auto *list = new QComboBox(parent);
    list->setObjectName(name);
    list->setFixedWidth(width);
    return keepPlace(list);
}

// Digits, ".", "-" and control keys; the change rule judges the rest.
void KeyUniversal(QLineEdit *, int &key) {
    const bool digit = key >= '0' && key <= '9';
    if (digit || key == '.' || key == '-' || key < ' ') return;
    key = 0;
}

} // namespace

UniversalEntry UniversalNumberRule(const QString &control, const QString &text,
                                   const QString &prevText) {
    const NumberField *f = numberField(control);
    if (!f) return {text, prevText};
    const bool whole = f->scale == 1;
    if (text.indexOf(QLatin1Char('-'), 1) >= 0 || text.count(QLatin1Char('.')) >= 2)
        return {prevText, prevText};
    if (text == QLatin1String(".")) {
        if (control == QLatin1String("txtZBase")) return {prevText, prevText};
        return {text, prevText};
    }
    // A sign alone waits for its digits.
    if (whole && (text == QLatin1String("-") || text == QLatin1String("-0"))) return {text, text};
    if (!whole && text == QLatin1String("-")) return {text, prevText};
    if (text.isEmpty()) return {text, QString()};
    if (!isNumberText(text)) return {prevText, prevText};

    const double scaled = text.toDouble() * f->scale;
    const std::optional<qint32> n = roundToInt32(scaled);
    if (!n || *n < f->minimum || *n > f->maximum) return {prevText, prevText};
    QString shown = text;
    if (whole)
        shown = QString::number(*n);
    else if (scaled != std::floor(scaled))
        shown = singleText(*n, f->scale);
    return {shown, shown};
}

FrmXE4::FrmXE4(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan;
              plan.formName = "frmXE4";
              plan.tag = "XE4";
              plan.channels = kChannels;
              plan.acceptance = Acceptance::Always;
              plan.valueControl = "txtParData01";
              plan.valueArray = true;
              plan.pauseMs = 50;
              plan.keepDecimalPoint = true;
              plan.tickMs = 1000;
              plan.retries = kRetries;
              return plan;
          }(),
          parent) {}

void FrmXE4::buildBody(QVBoxLayout *layout) {
    auto *card = new QGroupBox(this);
    card->setObjectName("fraCardSettings");
    auto *row = new QHBoxLayout(card);
    List_TempUnit = makeList(card, "List_TempUnit", 70);
    row->addWidget(ViewBuilders::caption(card, "Unit"));
    row->addWidget(List_TempUnit);
    row->addSpacing(24);
    m_adcSpeedBox = keepPlace(new QWidget(card));
    auto *adc = new QHBoxLayout(m_adcSpeedBox);
    adc->setContentsMargins(0, 0, 0, 0);
    List_ADCSpeed = makeList(m_adcSpeedBox, "List_ADCSpeed", 90);
    adc->addWidget(ViewBuilders::caption(m_adcSpeedBox, "ADC Speed"));
    adc->addWidget(List_ADCSpeed);
    row->addWidget(m_adcSpeedBox);
    row->addSpacing(24);
    chkLimit = new QCheckBox("Limit", card);
    chkLimit->setObjectName("chkLimit");
    row->addWidget(chkLimit);
    row->addStretch();
    layout->addWidget(card);

    // Channels stand in columns: a row a parameter, so the long input type names fit.
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(4);
    for (int ch = 1; ch <= kChannels; ++ch)
        grid->addWidget(ViewBuilders::caption(box, QStringLiteral("CH%1").arg(ch), true), 0,
                        ch + 1);
    const auto rowCaption = [&](int r, const QString &group, const QString &text) {
        grid->addWidget(ViewBuilders::caption(box, group), r, 0);
        grid->addWidget(ViewBuilders::caption(box, text), r, 1);
    };
    rowCaption(1, "InputType", "");
    rowCaption(2, "Unused", "");
    rowCaption(3, "Burnout", "");
    rowCaption(4, "CJC SW", "");
    for (int f = 0; f < kNumberFields; ++f) {
        const NumberField &number = kNumbers[f];
        const bool firstOfGroup =
            f == 0 || qstrcmp(kNumbers[f - 1].groupCaption, number.groupCaption) != 0;
        rowCaption(5 + f, firstOfGroup ? number.groupCaption : "", number.caption);
    }
    const int valueRow = 5 + kNumberFields;
    rowCaption(valueRow, "Value", "");

    for (int ch = 1; ch <= kChannels; ++ch) {
        const int col = ch + 1;
        List_InputType[ch] = makeList(box, ViewBuilders::arrayName("List_InputType", ch), 160);
        List_ChEnable[ch] = makeList(box, ViewBuilders::arrayName("List_ChEnable", ch), 50);
        List_BurnOut[ch] = makeList(box, ViewBuilders::arrayName("List_BurnOut", ch), 80);
        ChkCJC[ch] = keepPlace(new QCheckBox(box));
        ChkCJC[ch]->setObjectName(ViewBuilders::arrayName("ChkCJC", ch));
        grid->addWidget(List_InputType[ch], 1, col, Qt::AlignLeft);
        grid->addWidget(List_ChEnable[ch], 2, col, Qt::AlignLeft);
        grid->addWidget(List_BurnOut[ch], 3, col, Qt::AlignLeft);
        grid->addWidget(ChkCJC[ch], 4, col, Qt::AlignLeft);
        for (int f = 0; f < kNumberFields; ++f) {
            QLineEdit *field =
                ViewBuilders::field(box, ViewBuilders::arrayName(kNumbers[f].control, ch), 8);
            grid->addWidget(field, 5 + f, col, Qt::AlignLeft);
            InstallSelectAllOnFocus(field);
            InstallKeyFilter(field, KeyUniversal);
            connect(field, &QLineEdit::textChanged, this, [this, f, ch] { NumberChanged(f, ch); });
        }
        grid->addWidget(
            ViewBuilders::valueField(box, ViewBuilders::arrayName(m_spec.valueControl, ch), 10),
            valueRow, col, Qt::AlignLeft);
        connect(List_ChEnable[ch], &QComboBox::currentIndexChanged, this,
                [this, ch] { List_ChEnable_Click(ch); });
        connect(List_InputType[ch], &QComboBox::activated, this,
                [this, ch] { List_InputType_Click(ch); });
    }
    grid->setColumnStretch(kChannels + 2, 1);
    layout->addWidget(box);
    layout->addStretch();
}

void FrmXE4::OpenView(const QString &model) {
    build();
    fraSetModel->setTitle(model);
    txtCardType->setText(model);
    txtCardNo->setText(QString::number(CardNo));
    WaitForTimer->stop();
    SelFormName = m_spec.tag;
    ShowView(this);
    AddressCard();
    txtVerNo->setText(ValueAfterColon(ReadData(kRetries, "00", "40")));
    XE4_Init(model);
}

void FrmXE4::XE4_Init(const QString &model) {
    AddressCard();
    const QString build = WriteDataChk(kRetries, "01", "90", QString());
    IsBuildA = build == QLatin1String("VX_XE4/A");
    txtCardType->setText(IsBuildA ? build.right(5) : model.right(4));
    txtVerNo->setText(WriteDataChk(kRetries, "01", "92", QString()).right(6));
    BuildLists();
    SetScaleMinMax(model);
    for (int ch = 1; ch <= kChannels; ++ch)
        valueBox(ch)->setText(ValueAfterColon(ReadData(kRetries, "00", QString::number(9 + ch))));
}

// The input types and units follow the build, so they are filled anew on every entry; the
// other lists never change.
void FrmXE4::BuildLists() {
    for (int ch = 1; ch <= kChannels; ++ch)
        fill(List_InputType[ch], InputTypeTexts(IsBuildA));
    fill(List_TempUnit, UnitTexts(IsBuildA));
    if (m_listsBuilt) return;
    m_listsBuilt = true;
    for (int ch = 1; ch <= kChannels; ++ch) {
        fill(List_ChEnable[ch], {"0", "1"});
        fill(List_BurnOut[ch], BurnOutTexts());
        for (int f = 0; f < kNumberFields; ++f)
            m_prevText[f][ch] = field(kNumbers[f].control, ch)->text();
    }
    fill(List_ADCSpeed, AdcSpeedTexts());
}

void FrmXE4::List_ChEnable_Click(int ch) {
    colourChEnable(List_ChEnable[ch]);
}

void FrmXE4::List_InputType_Click(int ch) {
    ApplyVisibility(ch, false);
    if (!IsBuildA && List_InputType[ch]->currentIndex() == 13) {
        ChkCJC[ch]->setChecked(false);
        ChkCJC[ch]->hide();
    }
}

void FrmXE4::ApplyVisibility(int ch, bool afterUpload) {
    const int idx = List_InputType[ch]->currentIndex();
    const int lastBurnOut = IsBuildA ? 15 : 30;
    const int lastCjc = IsBuildA ? 11 : 20;
    List_BurnOut[ch]->setVisible(idx >= 8 && idx <= lastBurnOut);
    const bool bType = !IsBuildA && idx == 13;
    ChkCJC[ch]->setVisible(idx >= 8 && idx <= lastCjc && !(afterUpload && bType));
}

void FrmXE4::NumberChanged(int f, int ch) {
    if (m_applyingRule) return;
    QLineEdit *box = field(kNumbers[f].control, ch);
    const UniversalEntry entry =
        UniversalNumberRule(kNumbers[f].control, box->text(), m_prevText[f][ch]);
    m_prevText[f][ch] = entry.prevText;
    if (entry.text == box->text()) return;
    m_applyingRule = true;
    box->setText(entry.text);
    m_applyingRule = false;
}

QString FrmXE4::ReadItem(const QString &item, const QString &data) {
    return ValueAfterColon(WriteDataChk(kRetries, "01", item, data));
}

void FrmXE4::WriteItem(const QString &item, const QString &data) {
    WriteData(kRetries, "01", item, data);
}

void FrmXE4::ViewRefresh() {
    CardRecord &rec = record();
    selectText(List_TempUnit, rec.Param(57));
    if (IsBuildA && List_TempUnit->findText(rec.Param(57)) < 0) List_TempUnit->setCurrentIndex(0);
    selectText(List_ADCSpeed, rec.Param(58));
    if (IsBuildA) List_ADCSpeed->setCurrentText("Low");
    m_adcSpeedBox->setVisible(!IsBuildA);
    chkLimit->setChecked(rec.Param(59) == QLatin1String("1"));
    for (int ch = 1; ch <= kChannels; ++ch) {
        selectText(List_InputType[ch], rec.Param(cellIndex(ch, kInputTypeCell)));
        selectText(List_BurnOut[ch], rec.Param(cellIndex(ch, kBurnOutCell)));
        ChkCJC[ch]->setChecked(rec.Param(cellIndex(ch, kCjcCell)) == QLatin1String("1"));
        selectText(List_ChEnable[ch], rec.ChParam(ch));
        colourChEnable(List_ChEnable[ch]);
        for (const NumberField &f : kNumbers)
            field(f.control, ch)->setText(rec.Param(cellIndex(ch, f.cell)));
        ApplyVisibility(ch, false);
    }
}

void FrmXE4::ViewUpload() {
    CardRecord &rec = record();
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();

    const QString unit = UnitText(ReadItem("87"), IsBuildA);
    List_TempUnit->setCurrentIndex(unit.isEmpty() ? 0 : List_TempUnit->findText(unit));
    rec.Param(57) = List_TempUnit->currentText();

    QString speed = ReadItem("13");
    if (IsBuildA) speed = QStringLiteral("3");
    m_adcSpeedBox->setVisible(!IsBuildA);
    List_ADCSpeed->setCurrentIndex(List_ADCSpeed->findText(AdcSpeedText(speed)));
    rec.Param(58) = List_ADCSpeed->currentText();

    const bool limit = isOne(ReadItem("57"));
    chkLimit->setChecked(limit);
    rec.Param(59) = limit ? QStringLiteral("1") : QStringLiteral("0");

    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString type = InputTypeText(ReadItem("05", prefix(ch)), IsBuildA);
        List_InputType[ch]->setCurrentIndex(InputTypeIndex(type, IsBuildA));
        List_ChEnable[ch]->setCurrentIndex(isZero(ReadItem("50", prefix(ch))) ? 1 : 0);
        const QString burnOut = BurnOutText(ReadItem("20", prefix(ch)));
        List_BurnOut[ch]->setCurrentIndex(List_BurnOut[ch]->findText(burnOut));
        ChkCJC[ch]->setChecked(isOne(ReadItem("25", prefix(ch))));
        ListsToRecord(ch);
        SetProgress(ch);
    }
    NumberRuns([this](int f, int ch) {
        QLineEdit *box = field(kNumbers[f].control, ch);
        box->setText(ReadItem(kNumbers[f].item, prefix(ch)));
        return box->text();
    });
    for (int ch = 1; ch <= kChannels; ++ch)
        ApplyVisibility(ch, true);
    CloseProgress();
}

void FrmXE4::ViewDownload() {
    CardRecord &rec = record();
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("01");
    OpenProgress(12, "Downloading");

    QString unit = UnitCode(List_TempUnit->currentText(), IsBuildA);
    if (unit == kNoCode || (IsBuildA && unit == QLatin1String("2"))) {
        List_TempUnit->setCurrentIndex(0);
        unit = QStringLiteral("0");
    }
    WriteItem("87", unit);
    rec.Param(57) = List_TempUnit->currentText();

    QString speed = AdcSpeedCode(List_ADCSpeed->currentText());
    if (IsBuildA) {
        List_ADCSpeed->setCurrentText("Low");
        speed = QStringLiteral("3");
    } else if (speed == kNoCode) {
        List_ADCSpeed->setCurrentText("Middle");
        speed = QStringLiteral("2");
    }
    WriteItem("13", speed);
    rec.Param(58) = List_ADCSpeed->currentText();

    WriteItem("57", chkLimit->isChecked() ? "1" : "0");

    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString type = InputTypeCode(List_InputType[ch]->currentText(), IsBuildA);
        if (type != kNoCode) WriteItem("05", prefix(ch) + type);
        const QString unused = List_ChEnable[ch]->currentText();
        if (unused == QLatin1String("0")) WriteItem("50", prefix(ch) + "1");
        if (unused == QLatin1String("1")) WriteItem("50", prefix(ch) + "0");
        const QString burnOut = BurnOutCode(List_BurnOut[ch]->currentText());
        if (burnOut != kNoCode) WriteItem("20", prefix(ch) + burnOut);
        WriteItem("25", prefix(ch) + (ChkCJC[ch]->isChecked() ? "1" : "0"));
        ListsToRecord(ch);
        SetProgress(ch);
    }
    // Every field goes, an empty one too: the fields hold accepted text only.
    NumberRuns([this](int f, int ch) {
        const QString text = field(kNumbers[f].control, ch)->text();
        WriteItem(kNumbers[f].item, prefix(ch) + text);
        return text;
    });
    CloseProgress();
}

// The lists follow the build, and a number field judges a new text by the last one it took.
void FrmXE4::TakeEditsFrom(const CardView &source) {
    if (const auto *view = qobject_cast<const FrmXE4 *>(&source)) {
        IsBuildA = view->IsBuildA;
        BuildLists();
        m_prevText = view->m_prevText;
    }
    CardView::TakeEditsFrom(source);
}

QString FrmXE4::CellName(Cell kind, int index) const {
    if (kind == Cell::ChParam) return QStringLiteral("Ch %1 Unused").arg(index);
    static const QHash<int, QString> card = {
        {57, "Temperature unit"}, {58, "A/D speed"}, {59, "Limit"}};
    if (card.contains(index)) return card.value(index);
    const int ch = (index - 1) / kCellsPerChannel + 1;
    const int cell = (index - 1) % kCellsPerChannel + 1;
    static const QHash<int, QString> cells = {{5, "Zero scale"},
                                              {6, "Full scale"},
                                              {3, "Zero adjust"},
                                              {4, "Full adjust"},
                                              {1, "Zero base"},
                                              {2, "Full base"},
                                              {kInputTypeCell, "Input type"},
                                              {kBurnOutCell, "Burnout"},
                                              {kCjcCell, "CJC"}};
    const QString name = cells.value(cell);
    if (name.isEmpty() || ch > kChannels) return QString();
    return QStringLiteral("Ch %1 %2").arg(ch).arg(name);
}

void FrmXE4::ListsToRecord(int ch) {
    CardRecord &rec = record();
    rec.Param(cellIndex(ch, kInputTypeCell)) = List_InputType[ch]->currentText();
    rec.ChParam(ch) = List_ChEnable[ch]->currentText();
    rec.Param(cellIndex(ch, kBurnOutCell)) = List_BurnOut[ch]->currentText();
    rec.Param(cellIndex(ch, kCjcCell)) =
        ChkCJC[ch]->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
}

// Scales and adjusts of all channels, then the bases; `move` exchanges one field and gives the
// text its cell takes.
void FrmXE4::NumberRuns(const std::function<QString(int field, int ch)> &move) {
    for (int run = 0; run < 2; ++run) {
        const int first = run == 0 ? 0 : kFirstBase;
        const int last = run == 0 ? kFirstBase : kNumberFields;
        for (int ch = 1; ch <= kChannels; ++ch) {
            for (int f = first; f < last; ++f)
                record().Param(cellIndex(ch, kNumbers[f].cell)) = move(f, ch);
            SetProgress(ch + 4 * (run + 1));
        }
    }
}

void FrmXE4::EndRoundLost() {
    if (!IsConnected) return;
    People::message("Uploading incomplete", "Uploading", People::Icon::Stop);
    WaitForTimer->stop();
    CycleActive = false;
    DisconnectRack();
}

void FrmXE4::procCycDataRead() {
    AddressCard();
    QStringList values;
    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString item = QString::number(9 + ch);
        QString reply = ReadData(kRetries, "00", item);
        if (reply.isEmpty()) return EndRoundLost();
        valueBox(ch)->clear();
        valueBox(ch)->repaint();
        // A channel still measuring says "TMOUT"; ask again, but not for ever.
        for (int repeat = 0; ValueAfterColon(reply) == QLatin1String("TMOUT"); ++repeat) {
            if (repeat == kTimeoutRepeats) return EndRoundLost();
            reply = ReadData(kRetries, "00", item);
            if (reply.isEmpty()) return EndRoundLost();
        }
        values.append(ValueAfterColon(reply));
    }
    Clock::pause(m_spec.pauseMs);
    for (int ch = 1; ch <= kChannels; ++ch)
        valueBox(ch)->setText(values.at(ch - 1));
}
