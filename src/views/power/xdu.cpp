#include "views/power/xdu.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"
#include "views/power/xduwords.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStringListModel>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>
#include <optional>

namespace {

constexpr int kRetries = 3;
// The card needs a moment to take over what was written, and to clear what a reset clears.
constexpr int kTakeOverMs = 1000;
const QString kFreeBinding = QStringLiteral("0;0;0;0");

// The configuration fields, in the order the card takes them in a group.
enum Field { Wiring, VT1, VT2, Cur, Psna, VCut, ICut, InpSig, PF, Q, S, IIT, VLTIT, kFieldCount };

struct ConfigField {
    int item;
    // The record's cell of system #1 (or of both, for a field the systems share), of system #2.
    int cell1;
    int cell2;
    bool list; // the card takes the index of the entry
};

// Shared fields have one control, sent to group 03 and, on a two-system card, to group 04 too.
const ConfigField kFields[kFieldCount] = {
    {10, 17, 17, true},  // cbWiring
    {13, 18, 18, false}, // txtVT1
    {14, 19, 19, false}, // txtVT2
    {11, 20, 22, false}, // txtCur1, one a system
    {12, 21, 23, true},  // cbPsna, one a system
    {17, 24, 26, false}, // txtVCut, one a system
    {16, 25, 27, false}, // txtICut, one a system
    {15, 28, 29, true},  // cbInpSig, one a system
    {20, 30, 30, true},  // cbPF
    {21, 31, 31, true},  // cbQ
    {22, 32, 32, true},  // cbS
    {18, 33, 33, false}, // txtIIT
    {19, 34, 34, false}, // txtVLTIT
};

bool perSystem(int field) {
    return kFields[field].cell1 != kFields[field].cell2;
}

// An Upload reads the sensor before its rating, so that the card's own rating wins over the one
// the sensor's entry puts in the field.
const int kUploadFirstSystem[] = {Wiring, VT1, VT2, Psna, Cur, VCut, ICut, InpSig};
const int kUploadSecondSystem[] = {Psna, Cur, VCut, ICut, InpSig};
const int kUploadShared[] = {PF, Q, S, IIT, VLTIT};
// The cells of the second row, which a one-system card keeps at "-1".
const int kSecondRowCells[] = {22, 23, 26, 27, 29};

struct Sensor {
    const char *name;
    int rating; // amperes
};

QList<Sensor> sensorsOf(QChar series) {
    switch (series.unicode()) {
    case 'A':
        return {{"PSNA-08", 80}, {"PSNA-12", 120}, {"PSNA-30", 300}, {"PSNA-50", 500}};
    case 'B':
        return {{"PSNB-R5", 5},   {"PSNB-05", 50},  {"PSNB-10", 100},
                {"PSNB-20", 200}, {"PSNB-40", 400}, {"PSNB-60", 600}};
    case 'E':
        return {{"PSNE-R5", 5},   {"PSNE-05", 50},  {"PSNE-10", 100},
                {"PSNE-20", 200}, {"PSNE-40", 400}, {"PSNE-60", 600}};
    default:
        return {{"nodata", 0}};
    }
}

const QStringList kWiringEntries = {
    "Single-phase/2-wire(1CT)",          "Single-phase/3-wire(2CT)",
    "3-phase/3-wire,balanced load(1CT)", "3-phase/3-wire,unbalanced load(2CT)",
    "3-phase/4-wire,balanced load(1CT)", "3 phase/4-wire,unbalanced load(3CT)",
};
const QStringList kResetEntriesOne = {"", "#1Sum", "#1MaxMin(Current)", "#1MaxMin(ExceptCurrent)",
                                      "#1Average(Demand)"};
const QStringList kResetEntriesTwo = {"#2Sum", "#2MaxMin(Current)", "#2MaxMin(ExceptCurrent)",
                                      "#2Average(Demand)"};

// A number field keeps, from left to right, digits, the first "." and a "-" in front.
QString NumberText(const QString &text) {
    const qsizetype dot = text.indexOf(QLatin1Char('.'));
    QString kept;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if ((c >= QLatin1Char('0') && c <= QLatin1Char('9')) || i == dot ||
            (i == 0 && c == QLatin1Char('-')))
            kept += c;
    }
    return kept;
}

void InstallNumberFilter(QLineEdit *box) {
    InstallSelectAllOnFocus(box);
    QObject::connect(box, &QLineEdit::textChanged, box, [box](const QString &text) {
        const QString kept = NumberText(text);
        if (kept == text) return;
        const qsizetype cursor = NumberText(text.left(box->cursorPosition())).size();
        box->setText(kept);
        box->setCursorPosition(static_cast<int>(cursor));
    });
}

// The card may send a number with leading zeros ("0600"); the field shows the number.
QString NumberOfReply(const QString &value) {
    bool ok = false;
    const double number = value.trimmed().toDouble(&ok);
    if (!ok) return value;
    const QString text = QString::number(number, 'g', 15);
    return text.contains(QLatin1Char('e')) ? value : text;
}

// An entry of a list by its index text; anything that is no entry's index selects nothing.
void SetListIndex(QComboBox *box, const QString &text) {
    bool ok = false;
    const int index = text.trimmed().toInt(&ok);
    box->setCurrentIndex(ok && index >= 0 && index < box->count() ? index : -1);
}

QString ListIndexText(const QComboBox *box) {
    return box->currentIndex() < 0 ? QString() : QString::number(box->currentIndex());
}

// A live word: one to four hexadecimal digits.
std::optional<quint32> HexWord(const QString &text) {
    if (text.isEmpty() || text.size() > 4) return std::nullopt;
    quint32 value = 0;
    for (const QChar c : text) {
        const int digit = QStringLiteral("0123456789ABCDEF").indexOf(c.toUpper());
        if (digit < 0) return std::nullopt;
        value = value * 16 + static_cast<quint32>(digit);
    }
    return value;
}

// One word is a 16-bit signed value; two words a 32-bit one whose first word is the low one.
QString WordValue(const QString &word) {
    const auto value = HexWord(word);
    return value ? QString::number(static_cast<qint16>(*value)) : QString();
}

QString DoubleWordValue(const QString &low, const QString &high) {
    const auto lo = HexWord(low);
    const auto hi = HexWord(high);
    if (!lo || !hi) return QString();
    return QString::number(static_cast<qint32>((*hi << 16) | *lo));
}

// The word's list tells the view when it opens, so that the reading of the words stops while the
// user chooses.
class ItemList : public QComboBox {
public:
    using QComboBox::QComboBox;
    std::function<void()> onOpen;
    void showPopup() override {
        if (onOpen) onOpen();
        QComboBox::showPopup();
    }
};

// A list as wide as its longest entry, or as `chars` wide characters for lists filled later.
QComboBox *MakeList(QWidget *parent, const QString &name, const QStringList &entries, int chars) {
    auto *box = new QComboBox(parent);
    box->setObjectName(name);
    box->addItems(entries);
    const QFontMetrics metrics(box->font());
    int text = metrics.horizontalAdvance(QString(chars, QLatin1Char('M')));
    for (const QString &entry : entries)
        text = std::max(text, metrics.horizontalAdvance(entry));
    box->setFixedWidth(text + 36);
    return box;
}

QLineEdit *MakeNumberField(QWidget *parent, const QString &name, int chars) {
    QLineEdit *box = ViewBuilders::field(parent, name, chars);
    InstallNumberFilter(box);
    return box;
}

// Hidden fields keep their place, so that the columns do not move as rows come and go.
void KeepPlaceWhenHidden(QWidget *widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

void SetEditable(QWidget *widget, bool editable) {
    widget->setEnabled(editable);
    SetBackColor(widget,
                 QGuiApplication::palette().color(editable ? QPalette::Base : QPalette::Window));
}

QString TwoDigits(int item) {
    return QStringLiteral("%1").arg(item, 2, 10, QLatin1Char('0'));
}

} // namespace

FrmXDU::FrmXDU(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan;
              plan.formName = QStringLiteral("frmXDU");
              plan.tag = QStringLiteral("XDU");
              plan.channels = 0;
              plan.tickMs = 1000;
              plan.retries = kRetries;
              return plan;
          }(),
          parent) {
    // Model, slot and version are labels on this view.
    for (QLineEdit *box : {txtCardType, txtCardNo, txtVerNo})
        box->setFrame(false);
    for (int n = 0; n < kRows; ++n)
        m_bind << kFreeBinding;
    // A Download waits for the next regular tick here; only an Upload hurries it.
    disconnect(cmdDown, &QPushButton::clicked, this, &CardView::cmdDown_Click);
    connect(cmdDown, &QPushButton::clicked, this, [this] { DownloadPending = true; });
}

// The configuration frames stand in a band above the word rows and in a column beside them,
// so that the sixteen rows keep their full width.
void FrmXDU::buildBody(QVBoxLayout *layout) {
    layout->setSpacing(4);
    auto *top = new QHBoxLayout;
    top->setSpacing(6);
    auto *side = new QVBoxLayout;
    side->setSpacing(4);
    buildConfiguration(top, side);
    top->addStretch();
    side->addStretch();
    m_wordPanel = buildWordTable();
    m_wordPanel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *bottom = new QHBoxLayout;
    bottom->setSpacing(6);
    bottom->addWidget(m_wordPanel, 0, Qt::AlignTop);
    bottom->addLayout(side);
    bottom->addStretch();
    layout->addLayout(top);
    layout->addLayout(bottom);
    layout->addStretch();
}

QWidget *FrmXDU::buildWordTable() {
    auto *panel = new QGroupBox(this);
    panel->setObjectName("fraWords");
    auto *grid = new QGridLayout(panel);
    grid->setHorizontalSpacing(3);
    grid->setVerticalSpacing(2);
    grid->setContentsMargins(6, 4, 6, 4);
    const char *const captions[] = {"",      "Data", "Parameter", "Word",
                                    "Scale", "Ch.",  "Value",     "Unit"};
    for (int c = 0; c < 8; ++c)
        grid->addWidget(ViewBuilders::caption(panel, captions[c], true), 0, c);
    // One list of the names serves all sixteen rows.
    QStringList names;
    for (const WordRow &word : WordTable())
        names << word.name;
    auto *nameModel = new QStringListModel(names, panel);
    const QFontMetrics metrics(panel->font());
    int longest = 0;
    for (const QString &name : names)
        longest = std::max(longest, metrics.horizontalAdvance(name));
    for (int n = 0; n < kRows; ++n) {
        using ViewBuilders::arrayName;
        hexIdx[n] = MakeLabel(panel, arrayName("hexIdx", n), QStringLiteral("+%1").arg(n));
        txtParData[n] = ViewBuilders::valueField(panel, arrayName("txtParData", n), 4);
        auto *items = new ItemList(panel);
        items->setObjectName(arrayName("cbItem", n));
        items->setModel(nameModel);
        items->setMaxVisibleItems(24);
        items->setFixedWidth(longest + 36);
        items->view()->setMinimumWidth(longest + 48);
        items->onOpen = [this, n] { CycleReadOn = static_cast<qint16>(n); };
        cbItem[n] = items;
        cbWordNum[n] = MakeList(panel, arrayName("cbWordNum", n), {"1W", "2W"}, 1);
        cbScale[n] = MakeList(panel, arrayName("cbScale", n), {"0", "1", "2", "3"}, 1);
        cbCh[n] = MakeList(panel, arrayName("cbCh", n), {"#1", "#2"}, 1);
        txtValue[n] = ViewBuilders::valueField(panel, arrayName("txtValue", n), 11);
        txtUnit[n] = ViewBuilders::valueField(panel, arrayName("txtUnit", n), 8);
        txtUnit[n]->setAlignment(Qt::AlignLeft);
        const QList<QWidget *> cells = {hexIdx[n],  txtParData[n], cbItem[n],   cbWordNum[n],
                                        cbScale[n], cbCh[n],       txtValue[n], txtUnit[n]};
        for (int c = 0; c < cells.size(); ++c) {
            KeepPlaceWhenHidden(cells[c]);
            grid->addWidget(cells[c], n + 1, c);
        }
        connectRow(n);
    }
    return panel;
}

void FrmXDU::connectRow(int n) {
    connect(cbItem[n], &QComboBox::activated, this,
            [this, n](int index) { cbItem_Click(n, index); });
    connect(cbWordNum[n], &QComboBox::activated, this,
            [this, n](int index) { cbWordNum_Click(n, index); });
}

void FrmXDU::buildConfiguration(QHBoxLayout *top, QVBoxLayout *side) {
    using ViewBuilders::arrayName;
    using ViewBuilders::caption;
    auto frame = [this](const char *name, const QString &title) {
        QGroupBox *box = MakeFrame(this, name, title);
        auto *grid = new QGridLayout(box);
        grid->setHorizontalSpacing(4);
        grid->setVerticalSpacing(3);
        grid->setContentsMargins(6, 2, 6, 4);
        m_configFrames << box;
        return std::make_pair(box, grid);
    };

    auto [wiringFrame, wiringGrid] = frame("fraWiring", "System Confguration");
    cbWiring = MakeList(wiringFrame, "cbWiring", kWiringEntries, 1);
    wiringGrid->addWidget(cbWiring, 0, 0);
    auto [vtFrame, vtGrid] = frame("fraVT", "VT rating");
    txtVT1 = MakeNumberField(vtFrame, "txtVT1", 7);
    txtVT2 = MakeNumberField(vtFrame, "txtVT2", 7);
    vtGrid->addWidget(caption(vtFrame, "Pri."), 0, 0);
    vtGrid->addWidget(txtVT1, 0, 1);
    vtGrid->addWidget(caption(vtFrame, "Sec."), 0, 2);
    vtGrid->addWidget(txtVT2, 0, 3);
    vtGrid->setColumnStretch(4, 1);
    auto *first = new QVBoxLayout;
    first->setSpacing(4);
    first->addWidget(wiringFrame);
    first->addWidget(vtFrame);
    top->addLayout(first);

    auto [calcFrame, calcGrid] = frame("fraCalc", "Calculation Method");
    const QStringList signs = {"Standard(IEC)", "Special type 1"};
    cbPF = MakeList(calcFrame, "cbPF", signs, 1);
    cbQ = MakeList(calcFrame, "cbQ", signs, 1);
    cbS = MakeList(calcFrame, "cbS", signs, 1);
    cbS->clear();
    cbS->addItems({"Standard", "Sum"});
    calcGrid->addWidget(caption(calcFrame, "PowerFactor sign"), 0, 0);
    calcGrid->addWidget(cbPF, 0, 1);
    calcGrid->addWidget(caption(calcFrame, "Reactive Power sign"), 1, 0);
    calcGrid->addWidget(cbQ, 1, 1);
    calcGrid->addWidget(caption(calcFrame, "Apparent Power calculation"), 2, 0);
    calcGrid->addWidget(cbS, 2, 1);
    top->addWidget(calcFrame, 0, Qt::AlignTop);

    auto [avgFrame, avgGrid] = frame("fraAverage", "Average(demand)");
    txtIIT = MakeNumberField(avgFrame, "txtIIT", 3);
    txtVLTIT = MakeNumberField(avgFrame, "txtVLTIT", 3);
    txtIIT->setText("60");
    txtVLTIT->setText("60");
    avgGrid->addWidget(caption(avgFrame, "update interval"), 0, 0, 1, 3);
    avgGrid->addWidget(caption(avgFrame, "Current"), 1, 0);
    avgGrid->addWidget(txtIIT, 1, 1);
    avgGrid->addWidget(caption(avgFrame, "min."), 1, 2);
    avgGrid->addWidget(caption(avgFrame, "Power"), 2, 0);
    avgGrid->addWidget(txtVLTIT, 2, 1);
    avgGrid->addWidget(caption(avgFrame, "min."), 2, 2);
    top->addWidget(avgFrame, 0, Qt::AlignTop);

    auto [ctFrame, ctGrid] = frame("fraCT", "CT rating");
    ctGrid->addWidget(caption(ctFrame, "Pri.", true), 0, 1);
    ctGrid->addWidget(caption(ctFrame, "Clamp Sensor", true), 0, 5);
    auto [cutFrame, cutGrid] = frame("fraCutout", "LowEnd cutout");
    cutGrid->addWidget(caption(cutFrame, "Voltage", true), 0, 1);
    cutGrid->addWidget(caption(cutFrame, "Current", true), 0, 2);
    auto [sigFrame, sigGrid] = frame("fraInpSig", "Freq.  input");
    for (int s = 0; s < kSystems; ++s) {
        const QString system = QStringLiteral("#%1").arg(s + 1);
        lblPsna[s] = MakeLabel(ctFrame, arrayName("lblPsna", s), system);
        txtCur1[s] = MakeNumberField(ctFrame, arrayName("txtCur1", s), 5);
        lblCur1[s] = MakeLabel(ctFrame, arrayName("lblCur1", s), "A");
        txtCur2[s] = MakeNumberField(ctFrame, arrayName("txtCur2", s), 2);
        txtCur2[s]->setReadOnly(true);
        txtCur2[s]->setFocusPolicy(Qt::NoFocus);
        lblCur2[s] = MakeLabel(ctFrame, arrayName("lblCur2", s), "A");
        cbPsna[s] = MakeList(ctFrame, arrayName("cbPsna", s), {"PSNB-R5"}, 1);
        const QList<QWidget *> ct = {lblPsna[s], txtCur1[s], lblCur1[s],
                                     txtCur2[s], lblCur2[s], cbPsna[s]};
        for (int c = 0; c < ct.size(); ++c)
            ctGrid->addWidget(ct[c], s + 1, c);

        lblCutout[s] = MakeLabel(cutFrame, arrayName("lblCutout", s), system);
        txtVCut[s] = MakeNumberField(cutFrame, arrayName("txtVCut", s), 5);
        txtICut[s] = MakeNumberField(cutFrame, arrayName("txtICut", s), 5);
        cutGrid->addWidget(lblCutout[s], s + 1, 0);
        cutGrid->addWidget(txtVCut[s], s + 1, 1);
        cutGrid->addWidget(txtICut[s], s + 1, 2);

        lblInpSig[s] = MakeLabel(sigFrame, arrayName("lblInpSig", s), system);
        cbInpSig[s] = MakeList(sigFrame, arrayName("cbInpSig", s), {"Voltage", "Current"}, 1);
        sigGrid->addWidget(lblInpSig[s], s, 0);
        sigGrid->addWidget(cbInpSig[s], s, 1);
    }
    ctGrid->setColumnStretch(6, 1);
    cutGrid->setColumnStretch(3, 1);
    sigGrid->setColumnStretch(2, 1);
    m_secondRow = {lblPsna[1],   txtCur1[1], lblCur1[1], txtCur2[1],   lblCur2[1], cbPsna[1],
                   lblCutout[1], txtVCut[1], txtICut[1], lblInpSig[1], cbInpSig[1]};

    auto [resetFrame, resetGrid] = frame("fraReset", "Reset");
    cbResetVal = MakeList(resetFrame, "cbResetVal", kResetEntriesOne + kResetEntriesTwo, 1);
    CmdReset = MakeButton(resetFrame, "CmdReset", "Reset");
    resetGrid->addWidget(cbResetVal, 0, 0);
    resetGrid->addWidget(CmdReset, 1, 0, Qt::AlignLeft);
    for (QGroupBox *box : {ctFrame, cutFrame, sigFrame, resetFrame})
        side->addWidget(box);

    // In the order of the fields; a field the systems share has its control twice.
    m_fieldControls = {{cbWiring, cbWiring},
                       {txtVT1, txtVT1},
                       {txtVT2, txtVT2},
                       {txtCur1[0], txtCur1[1]},
                       {cbPsna[0], cbPsna[1]},
                       {txtVCut[0], txtVCut[1]},
                       {txtICut[0], txtICut[1]},
                       {cbInpSig[0], cbInpSig[1]},
                       {cbPF, cbPF},
                       {cbQ, cbQ},
                       {cbS, cbS},
                       {txtIIT, txtIIT},
                       {txtVLTIT, txtVLTIT}};
    for (int s = 0; s < kSystems; ++s)
        connect(cbPsna[s], &QComboBox::activated, this, [this, s] { cbPsna_Click(s + 1); });
    connect(CmdReset, &QPushButton::clicked, this, &FrmXDU::CmdReset_Click);
}

// ---- Entering the view -------------------------------------------------------------------------

void FrmXDU::OpenView(const QString &model) {
    WaitForTimer->stop();
    CardView::OpenView(model);
}

void FrmXDU::SetScaleMinMax(const QString &model) {
    m_model = Model();
    m_model.twoSystems = model.size() >= 5 && model.at(4) == QLatin1Char('2');
    m_model.series = model.size() >= 6 ? model.at(5) : QChar();
    m_model.page = MultiPowerPage(model);
    CycleReadOn = -1;
    ResetPending = false;
    CardView::SetScaleMinMax(model);
}

void FrmXDU::ViewRefresh() {
    for (QLineEdit *data : txtParData)
        data->clear();
    for (int s = 0; s < kSystems; ++s) {
        cbPsna[s]->clear();
        txtCur1[s]->clear();
        txtCur2[s]->clear();
        for (const Sensor &sensor : sensorsOf(m_model.series))
            cbPsna[s]->addItem(QLatin1String(sensor.name), QString::number(sensor.rating));
    }
    const int base = m_model.page >= 2 ? (m_model.page - 1) * kRows : 0;
    for (int n = 0; n < kRows; ++n) {
        hexIdx[n]->setText(QStringLiteral("+%1").arg(base + n));
        cbCh[n]->clear();
        cbCh[n]->addItem("#1");
        if (m_model.twoSystems) cbCh[n]->addItem("#2");
    }
    cbResetVal->clear();
    cbResetVal->addItems(kResetEntriesOne);
    if (m_model.twoSystems) cbResetVal->addItems(kResetEntriesTwo);

    for (int n = 0; n < kRows; ++n)
        m_bind[n] = record().Param(n + 1);
    rebuild();

    // Lists first: choosing a sensor puts its rating in the field, and the record's own value
    // must have the last word.
    for (int pass = 0; pass < 2; ++pass) {
        for (int f = 0; f < kFieldCount; ++f) {
            if (kFields[f].list != (pass == 0)) continue;
            for (int system = 1; system <= systems(); ++system)
                setControlText(f, system, cell(f, system));
        }
        if (pass == 0)
            for (int system = 1; system <= systems(); ++system)
                applySensor(system, true);
    }
    for (QWidget *widget : m_secondRow)
        widget->setVisible(m_model.twoSystems);
    applyEditState();
    if (!m_model.twoSystems) secondRowToOneSystem(false);
}

// ---- Configuration fields ----------------------------------------------------------------------

QWidget *FrmXDU::control(int field, int system) const {
    return m_fieldControls.at(field).at(perSystem(field) ? system - 1 : 0);
}

// What the field sends: a list's index, a box's text; the empty text when there is nothing.
QString FrmXDU::controlText(int field, int system) const {
    QWidget *widget = control(field, system);
    if (kFields[field].list) return ListIndexText(static_cast<QComboBox *>(widget));
    return static_cast<QLineEdit *>(widget)->text();
}

void FrmXDU::setControlText(int field, int system, const QString &text) {
    QWidget *widget = control(field, system);
    if (kFields[field].list)
        SetListIndex(static_cast<QComboBox *>(widget), text);
    else
        static_cast<QLineEdit *>(widget)->setText(text);
}

QString &FrmXDU::cell(int field, int system) const {
    return record().Param(system == 2 ? kFields[field].cell2 : kFields[field].cell1);
}

void FrmXDU::readField(int field, int system) {
    const QString group = system == 2 ? QStringLiteral("04") : QStringLiteral("03");
    const QString value =
        ValueAfterColon(ReadData(kRetries, group, TwoDigits(kFields[field].item)));
    if (kFields[field].list) {
        auto *list = static_cast<QComboBox *>(control(field, system));
        SetListIndex(list, value);
        if (field == Psna) applySensor(system, true);
        cell(field, system) = QString::number(list->currentIndex());
        return;
    }
    setControlText(field, system, field == VT1 || field == VT2 ? NumberOfReply(value) : value);
    cell(field, system) = controlText(field, system);
}

// An empty field sends nothing and shows its cell again; the cell keeps what was last sent.
void FrmXDU::sendField(int field, int system, bool alsoSecondGroup) {
    const QString text = controlText(field, system);
    QString &stored = cell(field, system);
    if (text.isEmpty()) {
        setControlText(field, system, stored);
        return;
    }
    const QString item = TwoDigits(kFields[field].item);
    WriteData(kRetries, system == 2 ? "04" : "03", item, text);
    if (alsoSecondGroup) WriteData(kRetries, "04", item, text);
    stored = text;
}

void FrmXDU::keepField(int field, int system) {
    cell(field, system) = controlText(field, system);
}

bool FrmXDU::seriesWithFreeRating() const {
    return m_model.series == QLatin1Char('B') || m_model.series == QLatin1Char('E');
}

// The first entry of the "B" and "E" series is a 5 A input behind a transformer of any ratio:
// its primary stays free and the 5 A show beside it. Every other sensor fixes the rating.
void FrmXDU::applySensor(int system, bool writeRating) {
    const int s = system - 1;
    const int index = cbPsna[s]->currentIndex();
    const bool free = seriesWithFreeRating() && index == 0;
    if (writeRating && index >= 0) {
        const QString rating = cbPsna[s]->itemData(index).toString();
        txtCur1[s]->setText(rating);
        if (free) txtCur2[s]->setText(rating);
    }
    SetEditable(txtCur1[s], free && configEditable());
    txtCur2[s]->setVisible(free);
    lblCur2[s]->setVisible(free);
}

void FrmXDU::cbPsna_Click(int system) {
    applySensor(system, true);
}

// Pages 2 and 3 of a card only map further words: the configuration is the first page's.
void FrmXDU::applyEditState() {
    const bool editable = configEditable();
    for (int f = 0; f < kFieldCount; ++f)
        for (int system = 1; system <= systems(); ++system)
            SetEditable(control(f, system), editable);
    for (int system = 1; system <= systems(); ++system)
        applySensor(system, false);
}

void FrmXDU::secondRowToOneSystem(bool toRecord) {
    for (QWidget *widget : m_secondRow)
        widget->setVisible(false);
    for (int f = 0; f < kFieldCount; ++f)
        if (perSystem(f)) setControlText(f, 2, QStringLiteral("-1"));
    if (toRecord)
        for (int k : kSecondRowCells)
            record().Param(k) = QStringLiteral("-1");
}

// While a worker runs, nothing the user could change may change.
void FrmXDU::setWorking(bool working) {
    QList<QWidget *> controls = {m_wordPanel, cmdUp, cmdDown};
    for (QGroupBox *box : m_configFrames)
        controls << box;
    for (QWidget *widget : controls)
        widget->setEnabled(!working);
    if (!working) applyEditState();
}

// ---- Word rows ---------------------------------------------------------------------------------

bool FrmXDU::hasMeasurement(int row) const {
    return cbItem[row]->currentIndex() >= 1;
}

void FrmXDU::showRowFields(int row, bool visible) {
    for (QWidget *widget :
         {static_cast<QWidget *>(txtValue[row]), static_cast<QWidget *>(txtUnit[row]),
          static_cast<QWidget *>(cbScale[row]), static_cast<QWidget *>(cbWordNum[row]),
          static_cast<QWidget *>(cbCh[row])})
        widget->setVisible(visible);
}

void FrmXDU::blankRow(int row) {
    cbItem[row]->setCurrentIndex(-1);
    cbWordNum[row]->setCurrentIndex(0);
    cbWordNum[row]->setEnabled(true);
    cbScale[row]->setCurrentIndex(0);
    cbCh[row]->setCurrentIndex(0);
    txtUnit[row]->clear();
    txtValue[row]->clear();
    showRowFields(row, false);
}

void FrmXDU::clearRow(int row) {
    blankRow(row);
    cbItem[row]->setVisible(false);
}

void FrmXDU::setChSetting(int row, const QString &text) {
    cbItem[row]->setVisible(true);
    const QStringList fields = text.split(QLatin1Char(';'));
    const int words = fields.size() == 4 ? fields.at(1).trimmed().toInt() : 0;
    if (words != 1 && words != 2) {
        blankRow(row);
        return;
    }
    const int address = fields.at(0).trimmed().toInt();
    const int found = FirstWordRowFrom(address);
    int wordCount = words;
    if (found > 0 && WordTable().at(found).address == address) {
        cbItem[row]->setCurrentIndex(found);
        txtUnit[row]->setText(WordTable().at(found).unit);
        showRowFields(row, true);
    } else {
        // An address the table does not have: the row shows nothing of it.
        cbItem[row]->setCurrentIndex(-1);
        txtUnit[row]->clear();
        txtValue[row]->clear();
        showRowFields(row, false);
        wordCount = 1;
    }
    cbWordNum[row]->setCurrentIndex(wordCount - 1);
    const bool oneWordOnly = hasMeasurement(row) && WordTable().at(found).words == 1;
    if (oneWordOnly) cbWordNum[row]->setCurrentIndex(0);
    cbWordNum[row]->setEnabled(!oneWordOnly);
    bool ok = false;
    const int scale = fields.at(3).trimmed().toInt(&ok);
    cbScale[row]->setCurrentIndex(ok && scale >= 0 && scale <= 3 ? scale : 0);
    const int system = fields.at(2).trimmed().toInt();
    // A system the card does not have selects nothing, so the user sees it.
    const int ch = system == 1 || system == 2 ? system - 1 : -1;
    cbCh[row]->setCurrentIndex(ch < cbCh[row]->count() ? ch : -1);
}

void FrmXDU::setBinding() {
    int r = 0;
    for (int n = 0; n < kRows && r < kRows; ++n) {
        setChSetting(r, m_bind[n]);
        if (cbWordNum[r]->currentIndex() == 1) {
            if (r == kRows - 1) {
                cbWordNum[r]->setCurrentIndex(0);
                r += 1;
            } else {
                clearRow(r + 1);
                r += 2;
            }
        } else if (hasMeasurement(r)) {
            r += 1;
        } else {
            r += 1; // the one free row, with its empty list
            break;
        }
    }
    for (; r < kRows; ++r)
        clearRow(r);
    for (int n = 0; n < kRows; ++n)
        m_shownWordIndex[n] = cbWordNum[n]->currentIndex();
}

void FrmXDU::setBindInfo() {
    int r = 0;
    int n = 0;
    while (r < kRows) {
        const int words = cbWordNum[r]->currentIndex();
        if (words < 0) {
            ++r;
            continue;
        }
        if (!hasMeasurement(r)) break;
        m_bind[n++] = QStringLiteral("%1;%2;%3;%4")
                          .arg(WordTable().at(cbItem[r]->currentIndex()).address)
                          .arg(words + 1)
                          .arg(cbCh[r]->currentIndex() + 1)
                          .arg(cbScale[r]->currentIndex());
        r += words == 1 ? 2 : 1;
    }
    for (; n < kRows; ++n)
        m_bind[n] = kFreeBinding;
}

// The rows from the binding texts; what the rebuild itself changes must not start another.
void FrmXDU::rebuild() {
    m_rebuilding = true;
    setBinding();
    m_rebuilding = false;
}

void FrmXDU::cbItem_Click(int row, int index) {
    if (index == 0) {
        cbItem[row]->setCurrentIndex(-1);
        showRowFields(row, false);
    } else if (index > 0) {
        showRowFields(row, true);
        txtUnit[row]->setText(WordTable().at(index).unit);
    }
    if (m_rebuilding) return;
    setBindInfo();
    rebuild();
}

// A word count that changes moves every word below it, so the rows below start again.
void FrmXDU::cbWordNum_Click(int row, int index) {
    if (index == m_shownWordIndex[row]) return;
    for (int r = row + 1; r < kRows; ++r)
        clearRow(r);
    m_shownWordIndex[row] = index;
    if (hasMeasurement(row)) {
        const int words = WordTable().at(cbItem[row]->currentIndex()).words;
        if (index + 1 > words) cbWordNum[row]->setCurrentIndex(words - 1);
    }
    if (m_rebuilding) return;
    setBindInfo();
    rebuild();
}

// ---- Workers -----------------------------------------------------------------------------------

void FrmXDU::ViewTick() {
    if (ResetPending && isVisible() && !CardSelFocus && !DownloadPending && !UploadPending) {
        ResetPending = false;
        setWorking(true);
        const int index = m_resetIndex;
        if (index >= 1 && index <= 8)
            WriteData(kRetries, index <= 4 ? "03" : "04", QString::number(24 + (index - 1) % 4 + 1),
                      "1");
        Clock::pause(kTakeOverMs);
        setWorking(false);
        return;
    }
    CardView::ViewTick();
}

void FrmXDU::CmdReset_Click() {
    const int index = cbResetVal->currentIndex();
    if (index >= 1) {
        const QString question = QStringLiteral("Reset %1 on the card in slot %2?")
                                     .arg(cbResetVal->currentText())
                                     .arg(CardNo);
        if (People::message(question, QStringLiteral("Reset"), People::Icon::Question,
                            People::Buttons::YesNo) != People::Answer::Yes)
            return;
    }
    m_resetIndex = index;
    ResetPending = true;
    WaitForTimer->setInterval(Clock::ms(10));
}

// Both workers address the card, take its full name and open the word map.
void FrmXDU::beginWorker(int steps, const QString &text) {
    setWorking(true);
    record().VerNo = txtVerNo->text();
    OpenProgress(steps, text);
    AddressCard();
    const QString name = ReadData(kRetries, "00", "04");
    // A card that keeps silent keeps the name the scan found.
    if (!name.isEmpty()) record().CardName = ValueAfterColon(name);
    WriteData(kRetries, "02", "01", "F");
}

void FrmXDU::endWorker() {
    CloseProgress();
    setWorking(false);
    CycleReadOn = -1;
}

void FrmXDU::ViewUpload() {
    beginWorker(15, "Uploading");
    for (int n = 0; n < kRows; ++n) {
        m_bind[n] = ValueAfterColon(ReadData(kRetries, "02", QString::number(10 + n)));
        record().Param(n + 1) = m_bind[n];
        SetProgress(n);
    }
    rebuild();
    WriteData(kRetries, "03", "01", "F");
    if (m_model.twoSystems) WriteData(kRetries, "04", "01", "F");
    for (int field : kUploadFirstSystem)
        readField(field, 1);
    if (m_model.twoSystems) {
        for (int field : kUploadSecondSystem)
            readField(field, 2);
    } else {
        secondRowToOneSystem(true);
    }
    for (int field : kUploadShared)
        readField(field, 1);
    endWorker();
}

void FrmXDU::ViewDownload() {
    beginWorker(16, "Downloading");
    setBindInfo();
    for (int n = 0; n < kRows; ++n) {
        record().Param(n + 1) = m_bind[n];
        WriteData(kRetries, "02", QString::number(10 + n), m_bind[n]);
        SetProgress(n + 1);
    }
    if (configEditable()) {
        WriteData(kRetries, "03", "01", "F");
        sendField(Wiring, 1, m_model.twoSystems);
        for (int f = VT1; f < kFieldCount; ++f)
            sendField(f, 1);
    } else {
        for (int f = 0; f < kFieldCount; ++f)
            keepField(f, 1);
    }
    if (!m_model.twoSystems) {
        for (int k : kSecondRowCells)
            record().Param(k) = QStringLiteral("-1");
    } else if (configEditable()) {
        WriteData(kRetries, "04", "01", "F");
        for (int f = 0; f < kFieldCount; ++f)
            sendField(f, 2);
    } else {
        for (int f = 0; f < kFieldCount; ++f)
            if (perSystem(f)) keepField(f, 2);
    }
    // The card takes over what was written.
    WriteData(kRetries, "02", "09", "1");
    Clock::pause(kTakeOverMs);
    endWorker();
}

// ---- Live words --------------------------------------------------------------------------------

void FrmXDU::markReading(int row, bool reading) {
    const QColor colour =
        QGuiApplication::palette().color(reading ? QPalette::Base : QPalette::Window);
    SetBackColor(txtParData[row], colour);
    if (hasMeasurement(row)) SetBackColor(txtValue[row], colour);
    if (!reading) {
        txtParData[row]->repaint();
        txtValue[row]->repaint();
    }
}

bool FrmXDU::readWord(int row, QString &word) {
    const QString reply = ReadData(kRetries, "01", QString::number(10 + row));
    if (reply.isEmpty()) {
        markReading(row, false);
        LinkLost();
        return false;
    }
    word = DeleteDot(ValueAfterColon(reply));
    // A card that timed out says so; the word shown before stands for it.
    if (word.startsWith(QLatin1String("TMO"))) word = txtParData[row]->text();
    return true;
}

void FrmXDU::LinkLost() {
    if (!IsConnected) return;
    WaitForTimer->stop();
    CycleActive = false;
    LinkLostDuringCycle();
}

QList<LiveChannel> FrmXDU::LiveChannels() const {
    QList<LiveChannel> channels;
    if (CycleReadOn != -1) return channels;
    for (int r = 0; r < kRows; ++r) {
        const QString item = hasMeasurement(r) ? cbItem[r]->currentText() : QString();
        channels.append({QStringLiteral("+%1 %2").arg(r).arg(item).trimmed(), txtValue[r]});
    }
    return channels;
}

QString FrmXDU::CellName(Cell kind, int index) const {
    if (kind != Cell::Param) return QString();
    if (index >= 1 && index <= kRows) return QStringLiteral("Word +%1").arg(index - 1);
    static const char *const names[kFieldCount] = {"Wiring",
                                                   "VT Pri.",
                                                   "VT Sec.",
                                                   "CT Pri.",
                                                   "Clamp Sensor",
                                                   "Cut-out Voltage",
                                                   "Cut-out Current",
                                                   "Input signal",
                                                   "PowerFactor sign",
                                                   "Reactive Power sign",
                                                   "Apparent Power calculation",
                                                   "Current update interval",
                                                   "Power update interval"};
    for (int f = 0; f < kFieldCount; ++f)
        for (int system = 1; system <= kSystems; ++system)
            if ((system == 1 ? kFields[f].cell1 : kFields[f].cell2) == index)
                return kFields[f].cell1 == kFields[f].cell2
                           ? QString::fromLatin1(names[f])
                           : QStringLiteral("%1 #%2").arg(QLatin1String(names[f])).arg(system);
    return QString();
}

void FrmXDU::procCycDataRead() {
    if (CycleReadOn != -1) return;
    AddressCard();
    int r = 0;
    while (r < kRows && CycleReadOn == -1) {
        const int words = cbWordNum[r]->currentIndex();
        if (words == 1 && r == kRows - 1) {
            txtParData[r]->clear();
            txtValue[r]->clear();
            ++r;
        } else if (words == 1) {
            QString low;
            QString high;
            markReading(r, true);
            if (!readWord(r, low)) return;
            txtParData[r]->setText(low);
            if (!readWord(r + 1, high)) return;
            txtParData[r + 1]->setText(high);
            txtValue[r]->setText(DoubleWordValue(low, high));
            markReading(r, false);
            r += 2;
        } else {
            QString word;
            markReading(r, true);
            if (!readWord(r, word)) return;
            txtParData[r]->setText(word);
            if (words == 0 && hasMeasurement(r)) {
                txtValue[r]->setText(WordValue(word));
            } else {
                txtValue[r]->clear();
                if (words == 0) txtUnit[r]->clear();
            }
            markReading(r, false);
            ++r;
        }
    }
}
