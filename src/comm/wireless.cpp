#include "comm/wireless.h"

#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using WirelessFile::Format;

namespace {

const QString kZero = QStringLiteral("00");
const QString kWireless = QStringLiteral("17");

// How a control's value travels: as text, as the list position (or the position plus 1), as the
// model's code of the write enable port, as the text of "Slave or Relay", as the key behind the
// mask, or not at all (the MAC address, which the card only reports).
enum class Kind { Text, Index, IndexPlus1, WritePort, ModeText, Key, ReadOnly };
// Which level of the card has the item: every one, the one with "Slave or Relay", or the one
// with the extra items "26" to "29".
enum class Tier { Always, Mode, Extra };
// The check of a text box before it is written, and when the user leaves it.
enum class Rule { None, Number, Hex, Length, Key };

const QStringList kOffOn = {"Disable", "Enable"};
const QStringList kExtras = {"movementMode", "NSAQuality", "NetworkJointMode", "NDTTSU"};
constexpr int kChannels = 10;
constexpr int kFourthScale = 3; // "Fixed + Low speed moving"
constexpr int kRelay = 1;

// The version from which a level holds: numbers from `from` up give `level` and `fileVersion`.
struct LevelRow {
    int from;
    int level;
    int fileVersion;
};

// What differs between the three dialogs.
struct Variant {
    QString formName;
    QString heading;
    QString modbusCaption;
    Format format;
    QString extension;
    bool modbusLists;          // the five Modbus lists beside the address
    bool dutyTime;             // item "44"
    int channelMax;            // the highest radio channel
    QList<int> writePortCodes; // the wire codes of "RS-485" and "Wireless"
    bool downloadTestsCard;    // the Download's preamble ends with the version read
    QList<LevelRow> levels;    // highest first; none: the version is not read
    int modeFrom;              // the level from which "Slave or Relay" is there; -1: never
    int extrasFrom;            // the level from which the extra items are there
    bool refusesNewerFile;
    QStringList uploadOrder; // "wirChNo" stands for the ten channels
    QStringList downloadOrder;
};

const QStringList kZrvUpload =
    QStringList{"modAdd",        "List_M_DataMode", "List_M_Baudrate", "List_M_Parity",
                "List_M_WEPort", "modTimer",        "wirTimer",        "wirPANID",
                "wirChNo",       "wirShortAddress", "wirNetWork",      "wirPassword",
                "wirTimer_Send", "List_W_Level",    "List_W_Scale",    "List_W_flag",
                "MAC_Address",   "FixNetworkFlag",  "ShortAddress2",   "SetDetour",
                "List_M_Mode"} +
    kExtras;
// "Slave or Relay" goes out with the Modbus side, though it is read last.
const QStringList kZrvDownload =
    QStringList{"modAdd",        "List_M_DataMode", "List_M_Baudrate", "List_M_Parity",
                "List_M_WEPort", "modTimer",        "wirTimer",        "List_M_Mode",
                "wirPANID",      "wirChNo",         "wirShortAddress", "wirNetWork",
                "wirPassword",   "wirTimer_Send",   "List_W_Level",    "List_W_Scale",
                "List_W_flag",   "FixNetworkFlag",  "ShortAddress2",   "SetDetour"} +
    kExtras;
const QStringList kZqUpload =
    QStringList{"modAdd",      "wirPANID",       "wirChNo",       "wirShortAddress",
                "wirNetWork",  "wirPassword",    "wirTimer_Send", "List_W_Level",
                "modTimer",    "wirTimer",       "List_W_Scale",  "List_W_flag",
                "MAC_Address", "FixNetworkFlag", "ShortAddress2", "SetDetour"} +
    kExtras;

const Variant &variantOf(WirelessModel model) {
    static const Variant zq{"frmZQ",
                            "ZQx Settings",
                            "Modbus",
                            Format::Zq,
                            "zq",
                            false,
                            true,
                            28,
                            {},
                            true,
                            {{300, 1, 2}, {207, 0, 1}, {0, 0, 0}},
                            -1,
                            1,
                            true,
                            kZqUpload,
                            kZqUpload};
    static const Variant zrv{"frmZRV",
                             "ZRVx Settings",
                             "Modbus ",
                             Format::Zrv,
                             "zrv",
                             true,
                             true,
                             28,
                             {1, 3},
                             true,
                             {{300, 2, 4}, {214, 1, 3}, {0, 0, 2}},
                             1,
                             2,
                             false,
                             kZrvUpload,
                             kZrvDownload};
    // The same orders as "ZRV": the dialog has no item "44" to walk.
    static const Variant zrv1f{"frmZRV1F", "ZRV1F Settings",
                               "Modbus ",  Format::Zrv1f,
                               "zrv1f",    true,
                               false,      43,
                               {5, 9},     false,
                               {},         0,
                               0,          false,
                               kZrvUpload, kZrvDownload};
    switch (model) {
    case WirelessModel::ZQ:
        return zq;
    case WirelessModel::ZRV1F:
        return zrv1f;
    case WirelessModel::ZRV:
        break;
    }
    return zrv;
}

// The leading digits of a text as a number, as the version is taken: "300" of "3.00" less its
// dot; none gives 0.
int leadingNumber(const QString &text) {
    int value = 0;
    for (const QChar c : text) {
        if (!c.isDigit() || c.unicode() > 0x7f) break;
        if (value > 100000) break; // far past any level; no overflow
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

// The network name's keys: letters, digits, "@", "_", "-", ".", the blank and the carriage return.
void KeyName(QLineEdit *, int &key) {
    constexpr int kCode16 = 16;
    constexpr int kCarriageReturn = 13;
    const bool allowed = (key >= '0' && key <= '9') || (key >= 'A' && key <= 'Z') ||
                         (key >= 'a' && key <= 'z') || key == '@' || key == '_' || key == '-' ||
                         key == '.' || key == ' ' || key == kCarriageReturn;
    if (!allowed && key != kBackspaceKey && key != kCode16) key = 0;
}

// A list's position of a number text (less `offset`), or -1 for a text that is none.
int positionOf(const QString &value, int offset) {
    bool ok = false;
    const int n = value.trimmed().toInt(&ok);
    return ok ? n + offset : -1;
}

void selectPosition(QComboBox *list, int position) {
    list->setCurrentIndex(position >= 0 && position < list->count() ? position : -1);
}

// The entry of a list whose text is `value`; "Slave or Relay" takes it in any case.
int entryOf(const QComboBox *list, const QString &value, bool anyCase) {
    for (int i = 0; i < list->count(); ++i)
        if (list->itemText(i).compare(value, anyCase ? Qt::CaseInsensitive : Qt::CaseSensitive) ==
            0)
            return i;
    return -1;
}

// Shows the key when the box gets the focus; the check on leaving puts the mask back.
class KeyFocus : public QObject {
public:
    KeyFocus(QObject *parent, std::function<void()> gained)
        : QObject(parent), m_gained(std::move(gained)) {}
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::FocusIn) m_gained();
        return false;
    }

private:
    std::function<void()> m_gained;
};

} // namespace

struct FrmWireless::Field {
    QString control;
    QString caption;
    QString group;
    int item = 0;
    Kind kind = Kind::Text;
    Tier tier = Tier::Always;
    QStringList entries;
    Rule rule = Rule::None;
    qint64 low = 0;
    qint64 high = 0;
    int chars = 0;
    QString message;
    bool trimmed = false; // goes out without its outer blanks
};

WirelessLevels LevelsOfVersion(WirelessModel model, const QString &version) {
    if (version.isEmpty()) return {};
    const int number = leadingNumber(DeleteDot(version.trimmed()));
    for (const LevelRow &row : variantOf(model).levels)
        if (number >= row.from) return {row.level, row.fileVersion};
    return {};
}

FrmWireless::FrmWireless(WirelessModel model, QWidget *parent)
    : CommDialog(variantOf(model).formName, variantOf(model).heading, parent), m_model(model) {
    const Variant &v = variantOf(model);
    const auto list = [](const QString &control, const QString &caption, const QString &group,
                         int item, Kind kind, const QStringList &entries,
                         Tier tier = Tier::Always) {
        Field f;
        f.control = control;
        f.caption = caption;
        f.group = group;
        f.item = item;
        f.kind = kind;
        f.entries = entries;
        f.tier = tier;
        return f;
    };
    const auto text = [](const QString &control, const QString &caption, const QString &group,
                         int item, Rule rule, qint64 low, qint64 high, int chars,
                         const QString &message, bool trimmed = false) {
        Field f;
        f.control = control;
        f.caption = caption;
        f.group = group;
        f.item = item;
        f.rule = rule;
        f.low = low;
        f.high = high;
        f.chars = chars;
        f.message = message;
        f.trimmed = trimmed;
        return f;
    };

    m_fields << text("modAdd", "Address", kZero, 56, Rule::Number, 1, 247, 3,
                     "Please enter number 1 - 247");
    if (v.modbusLists) {
        m_fields << list("List_M_DataMode", "Data Mode", kZero, 58, Kind::Index, {"RTU", "ASCII"})
                 << list("List_M_Baudrate", "Baud rate", kZero, 57, Kind::Index,
                         {"38.4kbps", "19.2kbps", "9600bps", "4800bps"})
                 << list("List_M_Parity", "Parity", kZero, 60, Kind::Index, {"None", "Odd", "Even"})
                 << list("List_M_WEPort", "Write enable port", kZero, 61, Kind::WritePort,
                         {"RS-485", "Wireless"})
                 << list("List_M_Mode", "Slave or Relay", kZero, 55, Kind::ModeText,
                         {"SLAVE", "RELAY"}, Tier::Mode);
    }
    m_fields << text("modTimer", "Filter timeout on polling (100msec)", kZero, 62, Rule::Number, 10,
                     600, 3, "Please enter number 10 - 600 (100msec)", true)
             << text("wirTimer", "Communication timeout (100msec)", kZero, 63, Rule::Number, 0,
                     32767, 5, "Please enter number 0 - 32767", true)
             << text("wirPANID", "PAN-ID", kWireless, 30, Rule::Hex, 0, 0xFFFE, 4,
                     "Please enter number 0000 - FFFE");
    const QString channelMessage = QStringLiteral("Please enter number 0 - %1").arg(v.channelMax);
    for (int i = 0; i < kChannels; ++i)
        m_fields << text(ViewBuilders::arrayName("wirChNo", i),
                         QStringLiteral("Ch. No. %1").arg(i + 1, 2, 10, QLatin1Char('0')),
                         kWireless, 31 + i, Rule::Number, 0, v.channelMax, 2, channelMessage, true);
    m_fields << text("wirShortAddress", "Short address", kWireless, 41, Rule::Hex, 0, 0xFFFD, 4,
                     "Please enter number 0000 - FFFD")
             << text("wirNetWork", "Network name", kWireless, 42, Rule::Length, 0, 0, 16,
                     "Please enter less than 16 characters");
    Field key = text("wirPassword", "Encryption key", kWireless, 43, Rule::Key, 0, 0,
                     WirelessFile::kKeyLength, "Please enter 32 characters(0-F)");
    key.kind = Kind::Key;
    m_fields << key;
    if (v.dutyTime)
        m_fields << text("wirTimer_Send", "Monitoring unit time of 10% Duty (sec)", kWireless, 44,
                         Rule::Number, 10, 3600, 4, "Please enter number 10 - 3600", true);
    Field mac = text("MAC_Address", "MAC Address", kWireless, 76, Rule::None, 0, 0, 0, {});
    mac.kind = Kind::ReadOnly;
    m_fields << list("List_W_Level", "Transmitter power output", kWireless, 45, Kind::IndexPlus1,
                     {"0.16mW", "   1mW", "  20mW"})
             << list("List_W_Scale", "Number of devices in a network", kWireless, 46, Kind::Index,
                     {"1 - 30", "31 - 60", "61 - 100", "Fixed + Low speed moving"})
             << list("List_W_flag", "Packet filtering", kWireless, 47, Kind::Index, kOffOn) << mac
             << list("FixNetworkFlag", "Fixed route", kWireless, 48, Kind::Index, kOffOn)
             << text("ShortAddress2", "Destination short address", kWireless, 49, Rule::Hex, 0,
                     0xFFFD, 4, "Please enter number 0000 - FFFD")
             << list("SetDetour", "Temporary detour", kWireless, 50, Kind::Index, kOffOn)
             << list("movementMode", "Low speed moving mode", kWireless, 26, Kind::Index, kOffOn,
                     Tier::Extra)
             << list("NSAQuality", "Set network quality", kWireless, 27, Kind::Index,
                     {"Standard", QStringLiteral("Changing frequency\uFF65delaytime middle"),
                      QStringLiteral("Changing frequency\uFF65delaytime large")},
                     Tier::Extra)
             << list("NetworkJointMode", "Network join mode", kWireless, 28, Kind::Index,
                     {"V3 compatible mode", "fast joint mode"}, Tier::Extra)
             << list("NDTTSU", "Retry times before route switching", kWireless, 29,
                     Kind::IndexPlus1, {"1", "2", "3"}, Tier::Extra);

    buildForm();
    connect(cmdUp, &QPushButton::clicked, this, &FrmWireless::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmWireless::cmdDown_Click);
    connect(CmdReadF, &QPushButton::clicked, this, &FrmWireless::CmdReadF_Click);
    connect(CmdSaveF, &QPushButton::clicked, this, &FrmWireless::CmdSaveF_Click);
}

FrmWireless::~FrmWireless() = default;

// --- The form ----------------------------------------------------------------------------------

void FrmWireless::buildForm() {
    auto *columns = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(buildModbus());
    left->addWidget(buildChannels());
    left->addStretch(1);
    columns->addLayout(left);
    columns->addWidget(buildWireless(), 0, Qt::AlignTop);
    body()->addLayout(columns);

    CmdReadF = addCommand(QStringLiteral("CmdReadF"), QStringLiteral("Read File"));
    CmdSaveF = addCommand(QStringLiteral("CmdSaveF"), QStringLiteral("Save File"));
    addTransferCommands();
    installBehaviour();
}

void FrmWireless::addRow(QGridLayout *grid, const QString &control) {
    const Field *f = field(control);
    if (!f) return;
    const int row = grid->rowCount();
    QWidget *parent = grid->parentWidget();
    // "Number of devices in a network" stands on two lines.
    const QString caption = control == QLatin1String("List_W_Scale")
                                ? QStringLiteral("Number of devices\nin a network")
                                : f->caption;
    grid->addWidget(MakeLabel(parent, QString(), caption), row, 0);
    QWidget *widget = nullptr;
    if (f->kind == Kind::Text || f->kind == Kind::Key) {
        const int chars = f->kind == Kind::Key ? 32 : qMax(f->chars, 5);
        QLineEdit *box = ViewBuilders::field(parent, control, chars);
        box->setAlignment(Qt::AlignLeft);
        widget = box;
    } else if (f->kind == Kind::ReadOnly) {
        QLineEdit *box = ViewBuilders::valueField(parent, control, 17);
        box->setAlignment(Qt::AlignLeft);
        widget = box;
    } else {
        auto *box = new QComboBox(parent);
        box->setObjectName(control);
        box->addItems(f->entries);
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        widget = box;
    }
    grid->addWidget(widget, row, 1, Qt::AlignLeft);
}

QWidget *FrmWireless::buildModbus() {
    const Variant &v = variantOf(m_model);
    QGroupBox *frame = MakeFrame(this, QStringLiteral("fraModbus"), v.modbusCaption);
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(10);
    for (const char *control : {"modAdd", "List_M_DataMode", "List_M_Baudrate", "List_M_Parity",
                                "List_M_WEPort", "List_M_Mode"})
        addRow(grid, control);
    grid->setColumnStretch(2, 1);
    return frame;
}

QWidget *FrmWireless::buildChannels() {
    QGroupBox *frame =
        MakeFrame(this, QStringLiteral("fraChannel"), QStringLiteral("Radio channel number"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(10);
    constexpr int kRows = kChannels / 2;
    for (int i = 0; i < kChannels; ++i) {
        const Field *f = field(ViewBuilders::arrayName("wirChNo", i));
        const int column = (i / kRows) * 2;
        grid->addWidget(MakeLabel(frame, QString(), f->caption), i % kRows, column);
        QLineEdit *box = ViewBuilders::field(frame, f->control, 3);
        grid->addWidget(box, i % kRows, column + 1, Qt::AlignLeft);
    }
    grid->setColumnMinimumWidth(2, 70);
    grid->setColumnStretch(4, 1);
    return frame;
}

QWidget *FrmWireless::buildWireless() {
    QGroupBox *frame = MakeFrame(this, QStringLiteral("fraWireless"), QStringLiteral("Wireless"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(5);
    for (const char *control :
         {"wirPANID", "wirShortAddress", "wirNetWork", "wirPassword", "MAC_Address", "List_W_Level",
          "List_W_Scale", "List_W_flag", "modTimer", "wirTimer", "wirTimer_Send", "FixNetworkFlag",
          "ShortAddress2", "SetDetour", "movementMode", "NSAQuality", "NetworkJointMode", "NDTTSU"})
        addRow(grid, control);
    grid->setColumnStretch(2, 1);
    return frame;
}

void FrmWireless::installBehaviour() {
    for (const Field &f : m_fields) {
        if (f.kind != Kind::Text) continue;
        QLineEdit *edit = box(f.control);
        InstallSelectAllOnFocus(edit);
        InstallKeyFilter(edit, f.rule == Rule::Number ? Comm::KeyDigits
                               : f.rule == Rule::Hex  ? Comm::KeyHex
                                                      : KeyName);
        const bool emptiesOnFailure = f.control == QLatin1String("modAdd");
        Comm::InstallLeaveCheck(edit, cmdExit, [this, control = f.control, emptiesOnFailure] {
            QLineEdit *edit = box(control);
            if (check(*field(control), edit->text())) return true;
            if (emptiesOnFailure) edit->clear();
            return false;
        });
    }

    // The key shows while it is edited, the mask otherwise; a key of 32 characters is taken
    // when the box is left.
    QLineEdit *key = box("wirPassword");
    InstallKeyFilter(key, Comm::KeyHex);
    key->installEventFilter(new KeyFocus(key, [this, key] {
        if (m_keyShown) return;
        key->setText(encryptionKey);
        key->selectAll();
        m_keyShown = true;
    }));
    Comm::InstallLeaveCheck(key, cmdExit, [this, key] {
        if (!check(*field("wirPassword"), key->text())) return false;
        encryptionKey = key->text();
        key->setText(kMask);
        m_keyShown = false;
        return true;
    });

    for (const char *control : {"List_W_flag", "FixNetworkFlag", "List_M_Mode", "List_W_Scale"})
        if (QComboBox *decider = list(control))
            connect(decider, &QComboBox::activated, this, &FrmWireless::ApplyDependencies);
}

QLineEdit *FrmWireless::box(const QString &control) const {
    return findChild<QLineEdit *>(control);
}

QComboBox *FrmWireless::list(const QString &control) const {
    return findChild<QComboBox *>(control);
}

const FrmWireless::Field *FrmWireless::field(const QString &control) const {
    for (const Field &f : m_fields)
        if (f.control == control) return &f;
    return nullptr;
}

QString FrmWireless::captionOf(const QString &control) const {
    if (control == WirelessFile::kKey) return QStringLiteral("Encryption key");
    const Field *f = field(control);
    return f ? f->caption : control;
}

// The controls of an order that this dialog has, the ten channels in place of "wirChNo".
QStringList FrmWireless::order(const QStringList &controls) const {
    QStringList out;
    for (const QString &control : controls) {
        if (control == QLatin1String("wirChNo")) {
            for (int i = 0; i < kChannels; ++i)
                out << ViewBuilders::arrayName(control, i);
        } else if (field(control)) {
            out << control;
        }
    }
    return out;
}

// --- Levels and the start ----------------------------------------------------------------------

bool FrmWireless::modeOffered() const {
    const int from = variantOf(m_model).modeFrom;
    return from >= 0 && firmwareFeatureLevel >= from;
}

bool FrmWireless::extrasOffered() const {
    return firmwareFeatureLevel >= variantOf(m_model).extrasFrom;
}

bool FrmWireless::offered(const Field &f) const {
    switch (f.tier) {
    case Tier::Mode:
        return modeOffered();
    case Tier::Extra:
        return extrasOffered();
    case Tier::Always:
        break;
    }
    return true;
}

void FrmWireless::OpenView(const QString &) {
    Upload_First_File();
}

void FrmWireless::Upload_First_File() {
    if (isBusy()) return;
    initialise();
    readLevels();
    cmdUp_Click();
}

// As the dialog first stands: nothing from an earlier visit stays.
void FrmWireless::initialise() {
    for (const Field &f : m_fields) {
        if (QComboBox *l = list(f.control)) {
            l->setCurrentIndex(-1);
            l->setEnabled(true);
        } else {
            box(f.control)->clear();
            box(f.control)->setEnabled(true);
        }
    }
    for (const char *control : {"movementMode", "NSAQuality", "NetworkJointMode"})
        list(control)->setCurrentIndex(0);
    list("NDTTSU")->setCurrentIndex(2);
    if (QComboBox *mode = list("List_M_Mode")) mode->setCurrentIndex(0);
    encryptionKey = QString(WirelessFile::kKeyLength, QLatin1Char('0'));
    showKey();
    firmwareFeatureLevel = 0;
    cardFileVersion = 0;
}

void FrmWireless::readLevels() {
    const Variant &v = variantOf(m_model);
    if (!v.levels.isEmpty()) {
        Run run(this);
        Comm::SelectCommCard(kWireless, QStringLiteral("1"));
        const WirelessLevels levels =
            LevelsOfVersion(m_model, ValueAfterColon(ReadData(3, kZero, QStringLiteral("40"))));
        firmwareFeatureLevel = levels.firmwareFeatureLevel;
        cardFileVersion = levels.cardFileVersion;
    }
    // What the level offers: "Slave or Relay", the fourth network size and the extra lists.
    if (QComboBox *mode = list("List_M_Mode")) mode->setEnabled(modeOffered());
    QComboBox *scale = list("List_W_Scale");
    const QStringList &sizes = field("List_W_Scale")->entries;
    scale->clear();
    scale->addItems(extrasOffered() ? sizes : sizes.mid(0, kFourthScale));
    scale->setCurrentIndex(-1);
    for (const QString &control : kExtras)
        list(control)->setEnabled(extrasOffered());
}

void FrmWireless::ApplyDependencies() {
    box("modTimer")->setEnabled(list("List_W_flag")->currentIndex() != 0);
    const bool fixedRoute = list("FixNetworkFlag")->currentIndex() != 0;
    box("ShortAddress2")->setEnabled(fixedRoute);
    list("SetDetour")->setEnabled(fixedRoute);
    if (QComboBox *mode = list("List_M_Mode")) {
        // A relay speaks RTU and takes its writes over the air.
        const bool relay = mode->currentIndex() == kRelay;
        if (relay) {
            list("List_M_DataMode")->setCurrentIndex(0);
            list("List_M_WEPort")->setCurrentIndex(1);
        }
        list("List_M_DataMode")->setEnabled(!relay);
        list("List_M_WEPort")->setEnabled(!relay);
    }
    if (extrasOffered()) {
        // Moving devices join the network the old way.
        const bool moving = list("List_W_Scale")->currentIndex() == kFourthScale;
        QComboBox *movement = list("movementMode");
        QComboBox *join = list("NetworkJointMode");
        if (moving)
            join->setCurrentIndex(0);
        else
            movement->setCurrentIndex(0);
        movement->setEnabled(moving);
        join->setEnabled(!moving);
    }
}

void FrmWireless::showKey() {
    QLineEdit *key = box("wirPassword");
    m_keyShown = key->hasFocus();
    key->setText(m_keyShown ? encryptionKey : kMask);
}

// --- Upload and Download -----------------------------------------------------------------------

void FrmWireless::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    const bool complete = uploadCard();
    ApplyDependencies();
    // What was read stays; the user may try again while the dialog is up.
    if (!complete) Comm::ShowIncomplete(Comm::Transfer::Upload, false);
}

bool FrmWireless::uploadCard() {
    if (!Comm::SelectCommCardAndTest(kWireless, QStringLiteral("1"))) return false;
    for (const QString &control : order(variantOf(m_model).uploadOrder)) {
        const Field &f = *field(control);
        if (!offered(f)) continue;
        QString value;
        if (!Comm::ReadRequired(f.group, QString::number(f.item), value)) return false;
        place(f, value);
    }
    return true;
}

void FrmWireless::place(const Field &f, const QString &value) {
    QComboBox *l = list(f.control);
    switch (f.kind) {
    case Kind::Text:
    case Kind::ReadOnly:
        box(f.control)->setText(value);
        break;
    case Kind::Key:
        encryptionKey = value;
        showKey();
        break;
    case Kind::Index:
        selectPosition(l, positionOf(value, 0));
        break;
    case Kind::IndexPlus1:
        selectPosition(l, positionOf(value, -1));
        break;
    case Kind::WritePort: {
        // Another code stands for the position itself.
        const int code = positionOf(value, 0);
        const int known = variantOf(m_model).writePortCodes.indexOf(code);
        selectPosition(l, known >= 0 ? known : code);
        break;
    }
    case Kind::ModeText: {
        // The card may tell the entry's text in any case, or its code.
        const int entry = entryOf(l, value.trimmed(), true);
        selectPosition(l, entry >= 0 ? entry : positionOf(value, -1));
        break;
    }
    }
}

QString FrmWireless::wireValue(const Field &f) const {
    const QComboBox *l = list(f.control);
    switch (f.kind) {
    case Kind::Text:
        return f.trimmed ? TrimBlanks(box(f.control)->text()) : box(f.control)->text();
    case Kind::Key:
        return encryptionKey;
    case Kind::Index:
        return QString::number(l->currentIndex());
    case Kind::IndexPlus1:
    case Kind::ModeText:
        return QString::number(l->currentIndex() + 1);
    case Kind::WritePort:
        return QString::number(variantOf(m_model).writePortCodes.value(l->currentIndex()));
    case Kind::ReadOnly:
        break;
    }
    return {};
}

bool FrmWireless::check(const Field &f, const QString &raw) const {
    const QString text = f.trimmed ? TrimBlanks(raw) : raw;
    bool passes = true;
    switch (f.rule) {
    case Rule::Number:
        passes = Comm::NumberInRange(text, f.low, f.high, f.chars);
        break;
    case Rule::Hex:
        passes =
            text.size() == f.chars && Comm::IsHexText(text) && text.toUInt(nullptr, 16) <= f.high;
        break;
    case Rule::Length:
        passes = text.size() <= f.chars;
        break;
    case Rule::Key:
        passes = text.size() == f.chars;
        break;
    case Rule::None:
        break;
    }
    if (!passes) People::message(f.message, QString(), People::Icon::Information);
    return passes;
}

bool FrmWireless::checkBeforeWrite(const Field &f) {
    switch (f.kind) {
    case Kind::Text:
        return check(f, box(f.control)->text());
    case Kind::Key:
        return check(f, encryptionKey);
    case Kind::ReadOnly:
        return true;
    default:
        break;
    }
    // A list without a selection has nothing the card could take.
    if (list(f.control)->currentIndex() >= 0) return true;
    People::message(QStringLiteral("Please select ") + f.caption, QString(),
                    People::Icon::Information);
    return false;
}

bool FrmWireless::channelGiven() const {
    for (int i = 0; i < kChannels; ++i)
        if (TrimBlanks(box(ViewBuilders::arrayName("wirChNo", i))->text()).toInt() != 0)
            return true;
    return false;
}

void FrmWireless::cmdDown_Click() {
    if (isBusy()) return;
    if (!channelGiven()) {
        People::message(QStringLiteral("Please enter channel No."), QString(),
                        People::Icon::Information);
        box("wirChNo(0)")->setFocus();
        Comm::ShowIncomplete(Comm::Transfer::Download, false);
        return;
    }
    Run run(this);
    if (!downloadCard()) Comm::ShowIncomplete(Comm::Transfer::Download, false);
}

// Each field is checked just before it goes out: a bad one stops the Download after what went
// before it.
bool FrmWireless::downloadCard() {
    const Variant &v = variantOf(m_model);
    if (v.downloadTestsCard) {
        if (!Comm::SelectCommCardAndTest(kWireless, QStringLiteral("1"))) return false;
    } else if (Comm::SelectCommCard(kWireless, QStringLiteral("1")).isEmpty()) {
        return false;
    }
    for (const QString &control : order(v.downloadOrder)) {
        const Field &f = *field(control);
        if (!offered(f) || f.kind == Kind::ReadOnly) continue;
        if (!checkBeforeWrite(f)) return false;
        if (!Comm::WriteSetting(f.group, QString::number(f.item), wireValue(f))) return false;
    }
    return true;
}

// --- Files -------------------------------------------------------------------------------------

WirelessFile::Settings FrmWireless::settingsOfControls() const {
    WirelessFile::Settings settings;
    settings.version = cardFileVersion;
    for (const WirelessFile::Line &line : WirelessFile::LayoutOf(variantOf(m_model).format)) {
        QString value;
        if (line.control == WirelessFile::kKey)
            value = encryptionKey;
        else if (const QComboBox *l = list(line.control))
            value = l->currentText();
        else
            value = box(line.control)->text();
        settings.values.insert(line.control, value);
    }
    return settings;
}

// Why a file's values cannot stand in this dialog's lists, or the empty text.
QString FrmWireless::refusal(const WirelessFile::Settings &settings) const {
    for (auto it = settings.values.cbegin(); it != settings.values.cend(); ++it) {
        const QComboBox *l = list(it.key());
        if (!l || it.value().isEmpty()) continue;
        if (entryOf(l, it.value(), it.key() == QLatin1String("List_M_Mode")) < 0)
            return QStringLiteral("Its \"%1\" is \"%2\", which this card does not offer.")
                .arg(captionOf(it.key()), it.value());
    }
    return {};
}

void FrmWireless::applySettings(const WirelessFile::Settings &settings) {
    for (auto it = settings.values.cbegin(); it != settings.values.cend(); ++it) {
        if (it.key() == WirelessFile::kKey) {
            encryptionKey = it.value();
            showKey();
        } else if (QComboBox *l = list(it.key())) {
            l->setCurrentIndex(entryOf(l, it.value(), it.key() == QLatin1String("List_M_Mode")));
        } else {
            box(it.key())->setText(it.value());
        }
    }
}

void FrmWireless::CmdSaveF_Click() {
    if (isBusy()) return;
    Run run(this);
    People::FileRequest request;
    request.save = true;
    request.filter = Comm::SettingsFileFilter(variantOf(m_model).extension);
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const QString error = WirelessFile::Write(
        path, variantOf(m_model).format, settingsOfControls(),
        [this](const QString &control) { return captionOf(control); },
        m_openedFiles.forSaving(path));
    if (!error.isEmpty())
        People::message(Comm::FileFault(path, error), QString(), People::Icon::Stop);
}

void FrmWireless::CmdReadF_Click() {
    if (isBusy()) return;
    Run run(this);
    const Variant &v = variantOf(m_model);
    People::FileRequest request;
    request.filter = Comm::SettingsFileFilter(v.extension);
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    WirelessFile::Settings settings;
    TextFile::Encoding encoding = TextFile::Encoding::System;
    QString error = WirelessFile::Read(
        path, v.format, settings, [this](const QString &control) { return captionOf(control); },
        &encoding);
    if (error.isEmpty() && v.refusesNewerFile && settings.version > cardFileVersion) {
        People::message(QStringLiteral("read file incomplete"), QStringLiteral("read file"),
                        People::Icon::Stop);
        return;
    }
    if (error.isEmpty()) error = refusal(settings);
    if (!error.isEmpty()) {
        People::message(Comm::FileFault(path, error), QString(), People::Icon::Stop);
        return;
    }
    m_openedFiles.opened(path, encoding);
    applySettings(settings);
    ApplyDependencies();
}

QWidget *MakeFrmZRV() {
    return new FrmWireless(WirelessModel::ZRV);
}

QWidget *MakeFrmZRV1F() {
    return new FrmWireless(WirelessModel::ZRV1F);
}

QWidget *MakeFrmZQ() {
    return new FrmWireless(WirelessModel::ZQ);
}
