#include "views/power/qy2.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/viewbuilders.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

namespace {

using ViewBuilders::arrayName;

// One setting of a channel e: item = factor * e + offset in its group, Param(cell) on channel 1
// and Param(cell + 12) on channel 2.
struct Setting {
    const char *control;
    const char *groupCaption;
    const char *caption;
    const char *group;
    int factor;
    int offset;
    int cell;
    TypingRange range;
    bool sign;

    int item(int e) const { return factor * e + offset; }
    int cellOf(int e) const { return cell + 12 * (e - 1); }
};

// In the order of Upload and Download.
const Setting kSettings[] = {
    {"txtZScale", "", "Flow Zscale", "01", 2, 14, 1, {2, 0, 1000000}, false},
    {"txtFScale", "", "Flow Fscale", "01", 2, 15, 2, {2, 0, 1000000}, false},
    {"txtBias", "", "Flow Bias", "01", 2, 8, 3, {2, -1000, 1000}, true},
    {"txtGain", "", "Flow Gain", "01", 2, 9, 4, {4, 1000, 20000}, false},
    {"txtKCool", "Specific Heat", "Cooling", "02", 2, 8, 5, {4, 0, 29999}, false},
    {"txtKHeat", "Specific Heat", "Heating", "02", 2, 9, 6, {4, 0, 29999}, false},
    {"txtFlowCut", "", "Flow Low Cut", "02", 1, 13, 7, {2, 0, 1000}, false},
    {"txtTempCut", "", "Temp Low Cut", "02", 1, 15, 8, {2, 0, 500}, false},
    {"txtHys", "", "Hysteresis", "02", 1, 17, 9, {2, 0, 500}, false},
    {"txtSuppTempAdj", "", "Adj.Supply", "02", 2, 18, 10, {2, -500, 500}, true},
    {"txtAmbTempAdj", "", "Adj.Ambient", "02", 2, 19, 11, {2, -500, 500}, true},
};

// Channel 2's "CH2 Disable" flag and the coefficient, common to both channels.
const char *const kEnable = "txtEnable(2)";
constexpr int kEnableItem = 43;
constexpr int kEnableCell = 24;
const char *const kCoff = "txtCoff";
constexpr int kCoffItem = 56;
constexpr int kCoffCell = 25;
constexpr TypingRange kCoffRange{3, 0, 65535};

// The live fields of a channel in the order the pass reads them; the name ends in the channel.
struct LiveField {
    const char *control;
    const char *caption;
    int item1;
    int item2;
    bool dropDot;
    int presetItem; // of the total's preset field (channel 1; channel 2 is 2 higher), 0: none
};

const LiveField kLive[] = {
    {"txtFlowVal", "Flow Val", 12, 20, true, 0},
    {"txtFlowUnit", "Unit", 61, 62, false, 0},
    {"txtCalVal", "Cal. Val", 13, 21, true, 0},
    {"txtCalUnit", "Unit", 63, 64, false, 0},
    {"txtCalState", "Cal. State", 27, 29, false, 0},
    {"txtHCmode", "Conditioning State", 28, 30, false, 0},
    {"txtRTD", "RTD Type", 65, 66, false, 0},
    {"txtSuppTemp", "Supply Temp", 10, 18, false, 0},
    {"txtAmbTemp", "Ambient Temp", 11, 19, false, 0},
    {"txtTotalCFlow", "Total Cooling Flow", 14, 22, false, 26},
    {"txtTotalCCal", "Total Cooling Cal.", 15, 23, false, 30},
    {"txtTotalHFlow", "Total Heating Flow", 16, 24, false, 27},
    {"txtTotalHCal", "Total Heating Cal.", 17, 25, false, 31},
};

// The preset fields in the order Preset sends them: each total, channel 1 then 2.
const char *const kPresetOrder[] = {"txtTotalCFlow", "txtTotalCCal", "txtTotalHFlow",
                                    "txtTotalHCal"};
constexpr TypingRange kFlowPresetRange{2, 0, 99999999};
constexpr double kPresetMaximum = 2147483647.0;

QString liveName(const LiveField &field, int e) {
    return QString::fromLatin1(field.control) + QString::number(e);
}

QString presetName(const char *control, int e) {
    return QStringLiteral("%1%2p").arg(QLatin1String(control)).arg(e);
}

bool isCalorieTotal(const QString &control) {
    return control.endsWith(QLatin1String("Cal"));
}

const LiveField &liveField(const QString &control) {
    for (const LiveField &field : kLive)
        if (control == QLatin1String(field.control)) return field;
    return kLive[0];
}

// Backspace, or a character of the field's kind; everything else is swallowed.
void KeySigned(QLineEdit *, int &key) {
    if (key == kBackspaceKey) return;
    if (key != '-' && key != '.' && (key < '0' || key > '9')) key = 0;
}

void KeyUnsigned(QLineEdit *, int &key) {
    if (key == kBackspaceKey) return;
    if (key != '.' && (key < '0' || key > '9')) key = 0;
}

QLabel *captionAt(QGridLayout *grid, const QString &text, int row, int column, int span = 1) {
    QLabel *label = ViewBuilders::caption(grid->parentWidget(), text);
    grid->addWidget(label, row, column, 1, span);
    return label;
}

QGridLayout *frameGrid(QWidget *parent, QBoxLayout *into, const QString &title) {
    auto *frame = new QGroupBox(title, parent);
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(2);
    into->addWidget(frame);
    return grid;
}

} // namespace

QString CheckedFieldText(const QString &text, const QString &previous, const TypingRange &range) {
    if (text.isEmpty() || text == QLatin1String("-")) return text;
    if (text == QLatin1String("-.")) return QStringLiteral("-0.");
    if (text == QLatin1String("0.") || text == QLatin1String("0")) return text;
    if (text.indexOf(QLatin1Char('-'), 1) >= 0) return previous;
    const qsizetype dot = text.indexOf(QLatin1Char('.'));
    if (dot >= 0) {
        if (text.count(QLatin1Char('.')) > 1) return previous;
        if (text.size() - dot - 1 > range.decimals) return previous;
        if (text == QLatin1String(".")) return QStringLiteral("0.");
    }
    // Only what the keys could have typed has a value; a word from the card has none.
    for (const QChar c : text)
        if (c != QLatin1Char('-') && c != QLatin1Char('.') && !c.isDigit()) return previous;
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok) return previous;
    const double scaled = std::round(value * std::pow(10.0, range.decimals));
    if (scaled > static_cast<double>(range.maximum) || scaled < static_cast<double>(range.minimum))
        return previous;
    return text;
}

FrmQY2::FrmQY2(QWidget *parent)
    : CardView(
          [] {
              ViewSpec spec;
              spec.formName = QStringLiteral("frmQY2");
              spec.tag = QStringLiteral("QY2");
              spec.channels = 2;
              spec.acceptance = Acceptance::NotEmpty;
              spec.pauseMs = 100;
              return spec;
          }(),
          parent) {
    // Nothing to send until an Upload or a project file has filled the fields.
    cmdDown->setEnabled(false);
    cmdPreset = new QPushButton("Preset", fraSetModel);
    cmdPreset->setObjectName("cmdPreset");
    addHeaderTool(cmdPreset);
    connect(cmdPreset, &QPushButton::clicked, this, &FrmQY2::cmdPreset_Click);
}

QLineEdit *FrmQY2::named(const QString &objectName) const {
    return findChild<QLineEdit *>(objectName);
}

void FrmQY2::buildBody(QVBoxLayout *layout) {
    auto *columns = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    buildSettings(frameGrid(this, left, "Settings"));
    buildCommon(frameGrid(this, left, "Common"));
    left->addStretch();
    columns->addLayout(left);
    buildLive(frameGrid(this, columns, "Values"));
    columns->addStretch();
    layout->addLayout(columns);
    layout->addStretch();
}

void FrmQY2::buildSettings(QGridLayout *grid) {
    for (int e = 1; e <= 2; ++e)
        grid->addWidget(ViewBuilders::caption(this, QStringLiteral("CH %1").arg(e), true), 0,
                        e + 1);
    int row = 1;
    const char *lastGroup = "";
    for (const Setting &setting : kSettings) {
        if (!*setting.groupCaption) {
            captionAt(grid, setting.caption, row, 0, 2);
        } else {
            // A group caption stands once, beside all the rows it heads.
            if (qstrcmp(setting.groupCaption, lastGroup) != 0) {
                int span = 0;
                for (const Setting &other : kSettings)
                    span += qstrcmp(other.groupCaption, setting.groupCaption) == 0 ? 1 : 0;
                grid->addWidget(ViewBuilders::caption(this, setting.groupCaption), row, 0, span, 1);
            }
            captionAt(grid, setting.caption, row, 1);
        }
        lastGroup = setting.groupCaption;
        for (int e = 1; e <= 2; ++e)
            grid->addWidget(checkedField(arrayName(setting.control, e),
                                         setting.sign ? KeySigned : KeyUnsigned,
                                         [range = setting.range] { return range; }),
                            row, e + 1);
        ++row;
    }
    captionAt(grid, "CH2 Disable", row, 0, 2);
    grid->addWidget(checkedField(kEnable, KeyUnsigned, {}), row, 3);
}

void FrmQY2::buildCommon(QGridLayout *grid) {
    captionAt(grid, "Coefficient Cal.", 0, 0);
    grid->addWidget(checkedField(kCoff, KeyUnsigned, [] { return kCoffRange; }), 0, 1);
    const std::pair<const char *, const char *> readOnly[] = {
        {"Temp2", "txtTemp2"}, {"Burnout", "txtBurnout"}, {"Conv.Speed", "txtConvSpeed"}};
    int row = 1;
    for (const auto &[caption, name] : readOnly) {
        captionAt(grid, caption, row, 0);
        grid->addWidget(ViewBuilders::valueField(this, name, 8), row++, 1);
    }
    grid->setColumnStretch(2, 1);
}

void FrmQY2::buildLive(QGridLayout *grid) {
    for (int e = 1; e <= 2; ++e)
        grid->addWidget(ViewBuilders::caption(this, QStringLiteral("CH %1").arg(e), true), 0, e);
    int row = 1;
    for (const LiveField &field : kLive) {
        captionAt(grid, field.caption, row, 0);
        for (int e = 1; e <= 2; ++e)
            grid->addWidget(ViewBuilders::valueField(this, liveName(field, e), 10), row, e);
        ++row;
        if (!field.presetItem) continue;
        captionAt(grid, "Preset", row, 0);
        const bool calories = isCalorieTotal(field.control);
        for (int e = 1; e <= 2; ++e) {
            const QString name = presetName(field.control, e);
            // An unknown unit has no range: only what the keys cannot make passes.
            const auto byUnit = [this, e] {
                return calorieRange(e).value_or(TypingRange{2, 0, 0});
            };
            grid->addWidget(calories ? checkedField(name, &FrmQY2::KeyCaloriePreset, byUnit, 10)
                                     : checkedField(
                                           name, KeyUnsigned, [] { return kFlowPresetRange; }, 10),
                            row, e);
        }
        ++row;
    }
    grid->setRowStretch(row, 1);
}

QLineEdit *FrmQY2::checkedField(const QString &name, KeyFilter keys,
                                std::function<TypingRange()> range, int chars) {
    QLineEdit *box = ViewBuilders::field(this, name, chars);
    InstallSelectAllOnFocus(box);
    InstallKeyFilter(box, keys);
    if (range)
        watch(box, std::move(range));
    else
        watchEnable(box);
    return box;
}

void FrmQY2::watch(QLineEdit *box, std::function<TypingRange()> range) {
    connect(box, &QLineEdit::textChanged, this, [this, box, range](const QString &text) {
        keepOrRevert(box, CheckedFieldText(text, m_previous.value(box), range()));
    });
}

void FrmQY2::watchEnable(QLineEdit *box) {
    connect(box, &QLineEdit::textChanged, this, [this, box](const QString &text) {
        const bool flag =
            text.isEmpty() || text == QLatin1String("0") || text == QLatin1String("1");
        keepOrRevert(box, flag ? text : m_previous.value(box));
    });
}

// The checked text becomes the field's previous text; a refused change puts the cursor back
// where the refused key found it.
void FrmQY2::keepOrRevert(QLineEdit *box, const QString &checked) {
    const QString typed = box->text();
    m_previous.insert(box, checked);
    if (checked == typed) return;
    const bool completed = typed == QLatin1String("-.") || typed == QLatin1String(".");
    const int cursor = box->cursorPosition() - static_cast<int>(typed.size() - checked.size());
    box->setText(checked);
    if (!completed) box->setCursorPosition(qBound(0, cursor, static_cast<int>(checked.size())));
}

std::optional<TypingRange> FrmQY2::calorieRange(int channel) const {
    const QString unit = named(liveName(liveField("txtCalUnit"), channel))->text();
    if (unit == QLatin1String("MJ/h")) return TypingRange{2, 0, 99999999};
    if (unit == QLatin1String("GJ/h")) return TypingRange{2, 0, 999999};
    return std::nullopt;
}

// A calorie preset takes keys only while its channel shows a known unit; with any other unit
// each key empties the field.
void FrmQY2::KeyCaloriePreset(QLineEdit *box, int &key) {
    QWidget *w = box;
    while (w && !qobject_cast<FrmQY2 *>(w))
        w = w->parentWidget();
    auto *view = qobject_cast<FrmQY2 *>(w);
    const QString name = box->objectName();
    const int channel = name.size() >= 2 ? name.at(name.size() - 2).digitValue() : 0;
    if (!view || !view->calorieRange(channel)) {
        box->clear();
        key = 0;
        return;
    }
    KeyUnsigned(box, key);
}

void FrmQY2::ViewRefresh() {
    for (int e = 1; e <= 2; ++e)
        for (const Setting &setting : kSettings)
            named(arrayName(setting.control, e))->setText(record().Param(setting.cellOf(e)));
    named(kEnable)->setText(record().Param(kEnableCell));
    named(kCoff)->setText(record().Param(kCoffCell));
    if (FileLoaded) cmdDown->setEnabled(true);
}

void FrmQY2::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    OpenGroup("01");
    OpenGroup("02");
    for (int e = 1; e <= 2; ++e) {
        for (const Setting &setting : kSettings)
            named(arrayName(setting.control, e))
                ->setText(ReadValue(setting.group, setting.item(e)));
        if (e == 2) named(kEnable)->setText(ReadValue("02", kEnableItem));
        for (const Setting &setting : kSettings)
            record().Param(setting.cellOf(e)) = named(arrayName(setting.control, e))->text();
        if (e == 2) record().Param(kEnableCell) = named(kEnable)->text();
        SetProgress(5 * e);
    }
    named(kCoff)->setText(ReadValue("00", kCoffItem));
    record().Param(kCoffCell) = named(kCoff)->text();
    named("txtTemp2")->setText(ReadValue("00", 71));
    named("txtBurnout")->setText(ReadValue("00", 69));
    named("txtConvSpeed")->setText(ReadValue("00", 70));
    CloseProgress();
    cmdDown->setEnabled(true);
}

void FrmQY2::ViewDownload() {
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("00");
    OpenGroup("01");
    OpenGroup("02");
    OpenProgress(12, "Downloading");
    // A field with text goes to the card and the record; an empty one takes the record's text.
    const auto send = [this](const QString &control, const QString &group, int item, int cell) {
        QLineEdit *box = named(control);
        if (box->text().isEmpty()) {
            box->setText(record().Param(cell));
            return;
        }
        WriteValue(group, item, box->text());
        record().Param(cell) = box->text();
    };
    for (int e = 1; e <= 2; ++e) {
        for (const Setting &setting : kSettings)
            send(arrayName(setting.control, e), setting.group, setting.item(e), setting.cellOf(e));
        if (e == 2) send(kEnable, "02", kEnableItem, kEnableCell);
        SetProgress(5 * e);
    }
    send(kCoff, "00", kCoffItem, kCoffCell);
    OpenGroup("02");
    CloseProgress();
}

// Sends each preset that holds a number the card can take and shows what the card answers; a
// field with anything else is emptied. The record keeps no totals.
void FrmQY2::ViewPreset() {
    AddressCard();
    OpenGroup("02");
    OpenProgress(12, "Downloading");
    int done = 0;
    for (const char *control : kPresetOrder) {
        for (int e = 1; e <= 2; ++e) {
            QLineEdit *box = named(presetName(control, e));
            const QString text = box->text();
            if (!text.isEmpty()) {
                const double value = RealTextValue(text);
                if (IsRealText(text) && value >= 0.0 && value <= kPresetMaximum) {
                    const int item = liveField(control).presetItem + 2 * (e - 1);
                    box->setText(ValueAfterColon(WriteValue("02", item, text)));
                } else {
                    box->clear();
                }
            }
            SetProgress(++done);
        }
    }
    CloseProgress();
}

QList<LiveChannel> FrmQY2::LiveChannels() const {
    QList<LiveChannel> channels;
    for (int e = 1; e <= 2; ++e)
        for (const LiveField &field : kLive)
            if (field.dropDot || field.presetItem ||
                QLatin1String(field.caption).endsWith(QLatin1String("Temp")))
                channels.append({QStringLiteral("%1 %2").arg(QLatin1String(field.caption)).arg(e),
                                 named(liveName(field, e))});
    return channels;
}

QString FrmQY2::CellName(Cell kind, int index) const {
    if (kind != Cell::Param) return QString();
    if (index == kEnableCell) return QStringLiteral("CH2 Disable");
    if (index == kCoffCell) return QStringLiteral("Coefficient");
    for (int e = 1; e <= 2; ++e)
        for (const Setting &setting : kSettings)
            if (setting.cellOf(e) == index)
                return QStringLiteral("Ch %1 %2%3")
                    .arg(e)
                    .arg(*setting.groupCaption ? QLatin1String(setting.groupCaption) + " "
                                               : QString())
                    .arg(QLatin1String(setting.caption));
    return QString();
}

// All 26 values first, unchecked: a missing one shows as an empty field.
void FrmQY2::procCycDataRead() {
    AddressCard();
    QStringList values;
    for (int e = 1; e <= 2; ++e)
        for (const LiveField &field : kLive)
            values << ValueAfterColon(ReadData(
                m_spec.retries, "00", QString::number(e == 1 ? field.item1 : field.item2)));
    QList<QLineEdit *> boxes;
    for (int e = 1; e <= 2; ++e)
        for (const LiveField &field : kLive)
            boxes << named(liveName(field, e));
    for (QLineEdit *box : boxes) {
        box->clear();
        box->repaint();
    }
    Clock::pause(m_spec.pauseMs);
    for (qsizetype n = 0; n < boxes.size(); ++n) {
        const LiveField &field = kLive[n % static_cast<qsizetype>(std::size(kLive))];
        boxes.at(n)->setText(field.dropDot ? DeleteDot(values.at(n)) : values.at(n));
    }
}
