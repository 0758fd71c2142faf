#include "comm/frmhlink.h"

#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using ViewBuilders::arrayName;

namespace {

const QString kZero = QStringLiteral("00");
const QString kGateway = QStringLiteral("17");
const QString kRadix10 = QStringLiteral("10");
const QString kRadix16 = QStringLiteral("16");
const QStringList kIoTypes = {"AI", "AO", "DI", "DO"};
const QStringList kServerTypes = {"16", "32"};
constexpr int kMaxChannels = 128; // of all entries together
constexpr int kRetries = 10;      // of every exchange of a Download

QList<FrmHLINK::Device> devices(std::initializer_list<const char *> triples) {
    QList<FrmHLINK::Device> table;
    const auto *it = triples.begin();
    for (size_t i = 0; i + 2 < triples.size(); i += 3, it += 3)
        table.append({QLatin1String(it[0]), QLatin1String(it[1]), QLatin1String(it[2])});
    return table;
}

void message(const QString &text) {
    People::message(text, QString(), People::Icon::Information);
}

bool number(const QLineEdit *box, qint64 low, qint64 high, int chars, const QString &text) {
    return Comm::CheckNumber(box->text(), low, high, text, chars);
}

QColor windowBackground() {
    return QApplication::palette().color(QPalette::Base);
}

QColor buttonFace() {
    return QApplication::palette().color(QPalette::Button);
}

void setOpen(QWidget *control, bool open) {
    control->setEnabled(open);
    SetBackColor(control, open ? windowBackground() : buttonFace());
}

// A hexadecimal box's text in its canonical form (upper case, no leading zeros), when it has at
// most `digits` digits; the empty text for anything else.
QString canonicalHex(const QString &text, int digits) {
    if (text.size() > digits || !Comm::IsHexText(text)) return {};
    return QString::number(text.toULongLong(nullptr, 16), 16).toUpper();
}

} // namespace

const QList<FrmHLINK::Device> &FrmHLINK::DeviceTable(int listKind) {
    static const QList<Device> words =
        devices({"SD", "A9",  "10", "D",  "A8", "10", "W",  "B4", "16", "TN", "C2",
                 "10", "STN", "C8", "10", "CN", "C5", "10", "SW", "B5", "16", "Z",
                 "CC", "10",  "R",  "AF", "10", "ZR", "B0", "16", "RD", "2C", "10"});
    // The 16-bit protocol has no "RD".
    static const QList<Device> shortWords = words.mid(0, words.size() - 1);
    static const QList<Device> bits = devices(
        {"SM",  "91", "10",  "X",    "9C",  "16",  "Y",    "9D",  "16", "M",  "90",  "10", "L",
         "92",  "10", "F",   "93",   "10",  "V",   "94",   "10",  "B",  "A0", "16",  "TS", "C1",
         "10",  "TC", "C0",  "10",   "LTS", "51",  "10",   "LTC", "50", "10", "STS", "C7", "10",
         "STC", "C6", "10",  "LSTS", "59",  "10",  "LSTC", "58",  "10", "CS", "C4",  "10", "CC",
         "C3",  "10", "LCS", "55",   "10",  "LCC", "54",   "10",  "SB", "A1", "16"});
    static const QList<Device> shortBits = devices(
        {"SM", "91", "10", "X",  "9C", "16",  "Y",   "9D", "16",  "M",   "90", "10", "L",  "92",
         "10", "F",  "93", "10", "V",  "94",  "10",  "B",  "A0",  "16",  "S",  "98", "10", "TS",
         "C1", "10", "TC", "C0", "10", "STS", "C7",  "10", "STC", "C6",  "10", "CS", "C4", "10",
         "CC", "C3", "10", "SB", "A1", "16",  "LCS", "55", "10",  "LCC", "54", "10"});
    static const QList<Device> none;
    switch (listKind) {
    case 1:
        return words;
    case 2:
        return shortWords;
    case 3:
        return bits;
    case 4:
        return shortBits;
    default:
        return none;
    }
}

int FrmHLINK::ListKindFor(const QString &ioType, const QString &serverType) {
    const bool word = ioType == QLatin1String("AI") || ioType == QLatin1String("AO");
    const bool bit = ioType == QLatin1String("DI") || ioType == QLatin1String("DO");
    if ((!word && !bit) || !kServerTypes.contains(serverType)) return 0;
    const bool wide = serverType == QLatin1String("32");
    return word ? (wide ? 1 : 2) : (wide ? 3 : 4);
}

FrmHLINK::FrmHLINK(QWidget *parent)
    : CommDialog(QStringLiteral("frmHLINK"), QStringLiteral("HLINK Settings"), parent) {
    buildForm();
    connect(cmdUp, &QPushButton::clicked, this, &FrmHLINK::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmHLINK::cmdDown_Click);
    connect(CmdOK, &QPushButton::clicked, this, &FrmHLINK::CmdOK_Click);
    connect(CmdReadF, &QPushButton::clicked, this, &FrmHLINK::CmdReadF_Click);
    connect(CmdSaveF, &QPushButton::clicked, this, &FrmHLINK::CmdSaveF_Click);
    initialise();
}

// --- The form ----------------------------------------------------------------------------------

void FrmHLINK::buildForm() {
    auto *columns = new QHBoxLayout;
    columns->addWidget(buildSettings(), 0, Qt::AlignTop);
    columns->addWidget(buildEntries(), 0, Qt::AlignTop);
    body()->addLayout(columns);

    CmdOK = addCommand(QStringLiteral("CmdOK"), QStringLiteral("Apply"));
    CmdReadF = addCommand(QStringLiteral("CmdReadF"), QStringLiteral("Read File"));
    CmdSaveF = addCommand(QStringLiteral("CmdSaveF"), QStringLiteral("Save File"));
    addTransferCommands();
    installChecks();
}

QWidget *FrmHLINK::buildSettings() {
    auto *panel = new QWidget(this);
    auto *layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto unit = [](QGridLayout *grid, int row, QWidget *parent, const QString &text) {
        grid->addWidget(MakeLabel(parent, QString(), text), row, 2);
    };
    const auto address = [](QGridLayout *grid, int row, QWidget *parent, const QString &caption,
                            const QString &control) {
        grid->addWidget(MakeLabel(parent, QString(), caption), row, 0);
        Comm::AddressFields fields = Comm::MakeAddressFields(parent, control);
        grid->addLayout(fields.layout, row, 1, 1, 2);
        return fields;
    };

    QGroupBox *ipFrame = MakeFrame(panel, QStringLiteral("fraIP"), QStringLiteral("IP settings"));
    auto *ip = new QGridLayout(ipFrame);
    ip->setHorizontalSpacing(8);
    txtIP = address(ip, 0, ipFrame, QStringLiteral("IP address"), QStringLiteral("txtIP"));
    txtSNM = address(ip, 1, ipFrame, QStringLiteral("Subnet mask"), QStringLiteral("txtSNM"));
    txtDGate =
        address(ip, 2, ipFrame, QStringLiteral("Default gateway"), QStringLiteral("txtDGate"));
    ip->addWidget(MakeLabel(ipFrame, QString(), QStringLiteral("MAC Address")), 3, 0);
    auto *mac = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        QLabel *label = MakeLabel(ipFrame, arrayName(QStringLiteral("lblMac"), i), QString());
        label->setFrameShape(QFrame::StyledPanel);
        label->setMinimumWidth(90);
        lblMac.at(size_t(i)) = label;
        mac->addWidget(label);
    }
    mac->addStretch(1);
    ip->addLayout(mac, 3, 1, 1, 2);
    ip->addWidget(MakeLabel(ipFrame, QString(), QStringLiteral("Pause period")), 4, 0);
    pausePeriod = ViewBuilders::field(ipFrame, QStringLiteral("pausePeriod"), 6);
    ip->addWidget(pausePeriod, 4, 1, Qt::AlignLeft);
    unit(ip, 4, ipFrame, QStringLiteral("m sec"));
    ip->setColumnStretch(3, 1);
    layout->addWidget(ipFrame);

    QGroupBox *slmp = MakeFrame(panel, QStringLiteral("fraSLMP"), QStringLiteral("SLMP settings"));
    auto *grid = new QGridLayout(slmp);
    grid->setHorizontalSpacing(8);
    grid->addWidget(MakeLabel(slmp, QString(), QStringLiteral("Protocol type")), 0, 0);
    List_ServerType = new QComboBox(slmp);
    List_ServerType->setObjectName(QStringLiteral("List_ServerType"));
    List_ServerType->addItems(kServerTypes);
    grid->addWidget(List_ServerType, 0, 1, Qt::AlignLeft);
    unit(grid, 0, slmp, QStringLiteral("16 or 32 bit"));
    const auto box = [&](int row, const QString &caption, const QString &control, int chars) {
        grid->addWidget(MakeLabel(slmp, QString(), caption), row, 0);
        QLineEdit *edit = ViewBuilders::field(slmp, control, chars);
        grid->addWidget(edit, row, 1, Qt::AlignLeft);
        return edit;
    };
    CPUNo = box(1, QStringLiteral("Processor No."), QStringLiteral("CPUNo"), 5);
    TimeOut = box(2, QStringLiteral("SLMP timeout"), QStringLiteral("TimeOut"), 5);
    unit(grid, 2, slmp, QStringLiteral("sec"));
    NWNo = box(3, QStringLiteral("Network No."), QStringLiteral("NWNo"), 5);
    StationNo = box(4, QStringLiteral("Station No."), QStringLiteral("StationNo"), 5);
    txtSLMPIP = address(grid, 5, slmp, QStringLiteral("SLMP server IP address"),
                        QStringLiteral("txtSLMPIP"));
    PortNo = box(6, QStringLiteral("SLMP server Port No."), QStringLiteral("PortNo"), 6);
    grid->setColumnStretch(3, 1);
    layout->addWidget(slmp);
    layout->addStretch(1);
    return panel;
}

QWidget *FrmHLINK::buildEntries() {
    auto *panel = new QWidget(this);
    auto *layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *count = new QHBoxLayout;
    count->addWidget(MakeLabel(panel, QString(), QStringLiteral("Entry No.")));
    DeviceNo = ViewBuilders::field(panel, QStringLiteral("DeviceNo"), 3);
    count->addWidget(DeviceNo);
    count->addStretch(1);
    layout->addLayout(count);

    QGroupBox *frame = MakeFrame(panel, QStringLiteral("fraCard"), QStringLiteral("Card settings"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(2);
    const auto heading = [&](const QString &text, int row, int column, int span = 1) {
        grid->addWidget(ViewBuilders::caption(frame, text, true), row, column, 1, span);
    };
    heading(QStringLiteral("I/O type"), 0, 1);
    heading(QStringLiteral("Ch. No."), 0, 2);
    heading(QStringLiteral("SLMP device"), 0, 3);
    heading(QStringLiteral("Device address"), 0, 4, 2);
    heading(QStringLiteral("Hex."), 1, 4);
    heading(QStringLiteral("Dec."), 1, 5);
    for (int r = 0; r < kRows; ++r) {
        EntryRow &row = rows.at(size_t(r));
        const int line = r + 2;
        grid->addWidget(MakeLabel(frame, QString(), QStringLiteral("Entry%1").arg(r + 1, 2)), line,
                        0);
        row.cardType = new QComboBox(frame);
        row.cardType->setObjectName(arrayName(QStringLiteral("cardType"), r));
        row.cardType->addItems(kIoTypes);
        grid->addWidget(row.cardType, line, 1);
        row.ChNo = ViewBuilders::field(frame, arrayName(QStringLiteral("ChNo"), r), 3);
        grid->addWidget(row.ChNo, line, 2);
        // A device code that no table knows shows as "0", which no list has: the list shows
        // a text of its own, which the user cannot type into.
        row.DevType = new QComboBox(frame);
        row.DevType->setObjectName(arrayName(QStringLiteral("DevType"), r));
        row.DevType->setEditable(true);
        row.DevType->lineEdit()->setReadOnly(true);
        row.DevType->setInsertPolicy(QComboBox::NoInsert);
        row.DevType->setMinimumContentsLength(5);
        grid->addWidget(row.DevType, line, 3);
        row.DevAdd16 = ViewBuilders::field(frame, arrayName(QStringLiteral("DevAdd16"), r), 9);
        row.DevAdd10 = ViewBuilders::field(frame, arrayName(QStringLiteral("DevAdd10"), r), 9);
        grid->addWidget(row.DevAdd16, line, 4);
        grid->addWidget(row.DevAdd10, line, 5);
    }
    layout->addWidget(frame);
    return panel;
}

void FrmHLINK::installChecks() {
    const auto leave = [this](QLineEdit *box, std::function<bool()> check) {
        InstallSelectAllOnFocus(box);
        Comm::InstallLeaveCheck(box, cmdExit, std::move(check));
    };
    leave(pausePeriod, [this] { return checkPausePeriod(); });
    for (Comm::AddressFields *address : {&txtIP, &txtSNM, &txtDGate, &txtSLMPIP})
        for (QLineEdit *part : address->parts)
            leave(part, [part] {
                return Comm::CheckNumber(part->text(), 0, 255,
                                         QStringLiteral("address:Please enter number 0 - 255"), 3);
            });
    leave(CPUNo, [this] { return checkCPUNo(); });
    leave(TimeOut, [this] { return checkTimeOut(); });
    leave(NWNo, [this] { return checkNWNo(); });
    leave(StationNo, [this] { return checkStationNo(); });
    leave(PortNo, [this] { return checkPortNo(); });
    leave(DeviceNo, [this] {
        if (!checkDeviceNo()) return false;
        SetRowEnabling(ActiveRows());
        return true;
    });
    connect(List_ServerType, &QComboBox::activated, this, [this] {
        if (!kServerTypes.contains(List_ServerType->currentText()))
            message(QStringLiteral("Server type 16 or 32bit:Please select number 16 or 32"));
    });
    for (int r = 0; r < kRows; ++r) {
        EntryRow &row = rows.at(size_t(r));
        leave(row.ChNo, [this, r] { return checkChNo(r); });
        leave(row.DevAdd16, [this, r] { return checkDevAdd16(r); });
        leave(row.DevAdd10, [this, r] { return checkDevAdd10(r); });
        connect(row.cardType, &QComboBox::activated, this, [this, r] {
            const QString type = rows.at(size_t(r)).cardType->currentText();
            if (!kIoTypes.contains(type)) {
                message(QStringLiteral("I/O card type:Please select AI or AO or DI or DO"));
                return;
            }
            ApplyListKind(r, ListKindFor(type, List_ServerType->currentText()));
        });
        connect(row.DevType, &QComboBox::activated, this,
                [this, r](int position) { selectDevice(r, position); });
    }
}

// --- The entry table ---------------------------------------------------------------------------

int FrmHLINK::ActiveRows() const {
    return Comm::NumberInRange(DeviceNo->text(), 0, kRows, 2) ? DeviceNo->text().toInt() : 0;
}

void FrmHLINK::setAddressBoxes(int r, const QString &radix) {
    const EntryRow &row = rows.at(size_t(r));
    if (radix != kRadix10 && radix != kRadix16) return;
    setOpen(row.DevAdd16, radix == kRadix16);
    setOpen(row.DevAdd10, radix == kRadix10);
}

void FrmHLINK::ApplyListKind(int r, int kind) {
    EntryRow &row = rows.at(size_t(r));
    if (kind == 0 || row.rowListKind == kind) return;
    const QList<Device> &table = DeviceTable(kind);
    row.DevType->clear();
    for (const Device &device : table)
        row.DevType->addItem(device.name);
    row.DevType->setCurrentIndex(0);
    row.rowDeviceCode = table.first().code;
    row.rowRadix = table.first().radix;
    row.rowListKind = kind;
    setAddressBoxes(r, table.first().radix);
}

void FrmHLINK::selectDevice(int r, int position) {
    EntryRow &row = rows.at(size_t(r));
    const QList<Device> &table = DeviceTable(row.rowListKind);
    if (position < 0 || position >= table.size()) return;
    row.rowDeviceCode = table.at(position).code;
    row.rowRadix = table.at(position).radix;
    setAddressBoxes(r, table.at(position).radix);
}

void FrmHLINK::showDevice(int r, const QString &name) {
    QComboBox *list = rows.at(size_t(r)).DevType;
    const int position = list->findText(name, Qt::MatchExactly);
    list->setCurrentIndex(position);
    if (position < 0) list->setEditText(name);
}

// The I/O type of a row, as Upload and the file set it: the device list follows it.
void FrmHLINK::setRowType(int r, const QString &type) {
    rows.at(size_t(r)).cardType->setCurrentIndex(kIoTypes.indexOf(type));
    ApplyListKind(r, ListKindFor(type, List_ServerType->currentText()));
}

void FrmHLINK::SetRowEnabling(int count) {
    for (int r = 0; r < kRows; ++r) {
        const EntryRow &row = rows.at(size_t(r));
        const bool active = r < count;
        for (QWidget *control :
             {static_cast<QWidget *>(row.cardType), static_cast<QWidget *>(row.ChNo),
              static_cast<QWidget *>(row.DevType)})
            setOpen(control, active);
        const QString radix = row.rowRadix.value_or(QString());
        if (active && (radix == kRadix10 || radix == kRadix16)) {
            setAddressBoxes(r, radix);
        } else {
            setOpen(row.DevAdd16, false);
            setOpen(row.DevAdd10, false);
        }
    }
}

bool FrmHLINK::ParseEntry(int r, const QString &text) {
    if (text.count(QLatin1Char(',')) != 2) return false;
    const QStringList fields = text.split(QLatin1Char(','));
    EntryRow &row = rows.at(size_t(r));
    const QString code = fields.at(0).right(2);
    QString address = fields.at(1);
    if (address.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) address = address.mid(2);
    const QString type = fields.at(2).left(2);
    // The list follows the type first; the entry's own device then stands over its first one.
    setRowType(r, type);
    row.rowDeviceCode = code;

    // The table's radix overrides the address's prefix; a code it lacks is device "0".
    QString name = QStringLiteral("0");
    QString radix = kRadix10;
    for (const Device &device : DeviceTable(row.rowListKind)) {
        if (device.code.compare(code, Qt::CaseInsensitive) != 0) continue;
        name = device.name;
        radix = device.radix;
        break;
    }
    row.rowRadix = radix;
    row.ChNo->setText(fields.at(2).mid(2));
    showDevice(r, name);
    (radix == kRadix16 ? row.DevAdd16 : row.DevAdd10)->setText(address);
    return true;
}

// --- Checks ------------------------------------------------------------------------------------

bool FrmHLINK::checkPausePeriod() {
    return number(pausePeriod, 0, 10000, 5,
                  QStringLiteral("Pause period:Please enter number 0 - 10000"));
}

bool FrmHLINK::checkAddress(const Comm::AddressFields &address) {
    for (const QLineEdit *part : address.parts)
        if (!number(part, 0, 255, 3, QStringLiteral("address:Please enter number 0 - 255")))
            return false;
    return true;
}

bool FrmHLINK::checkServerType() {
    if (kServerTypes.contains(List_ServerType->currentText())) return true;
    People::message(QStringLiteral("Server Type:Please select 16 or 32"),
                    QStringLiteral("Server Type"), People::Icon::Stop);
    return false;
}

bool FrmHLINK::checkCPUNo() {
    const QString canonical = canonicalHex(CPUNo->text(), 4);
    if (canonical.isEmpty()) {
        message(QStringLiteral("Processor No.:Please enter number 0000 - FFFF"));
        return false;
    }
    CPUNo->setText(canonical);
    return true;
}

bool FrmHLINK::checkTimeOut() {
    return number(TimeOut, 1, 10, 2, QStringLiteral("SLMP timeout:Please enter number 1 - 10"));
}

bool FrmHLINK::checkNWNo() {
    return number(NWNo, 0, 239, 3, QStringLiteral("Network No.:Please enter number 0 - 239"));
}

bool FrmHLINK::checkStationNo() {
    const QString text = StationNo->text();
    // 1 to 120, and the three special stations.
    if (Comm::NumberInRange(text, 1, 120, 3) || Comm::NumberInRange(text, 125, 126, 3) ||
        Comm::NumberInRange(text, 255, 255, 3))
        return true;
    message(QStringLiteral("Station No.:Please enter number 1 - 120,125,126,255"));
    return false;
}

bool FrmHLINK::checkPortNo() {
    return number(PortNo, 0, 65535, 5,
                  QStringLiteral("SLMP server Port No.:Please enter number 0 - 65535"));
}

bool FrmHLINK::checkDeviceNo() {
    return number(DeviceNo, 0, kRows, 2,
                  QStringLiteral("Access device No.:Please enter number 0 - 16"));
}

bool FrmHLINK::checkChNo(int r) {
    QLineEdit *box = rows.at(size_t(r)).ChNo;
    if (box->text().isEmpty()) return true;
    QString failure;
    if (!Comm::NumberInRange(box->text(), 1, 16, 2)) {
        failure = QStringLiteral("Ch. No.:Please enter number 1 - 16");
    } else {
        int total = 0;
        for (int other = 0; other < ActiveRows(); ++other) {
            const QString text = rows.at(size_t(other)).ChNo->text();
            if (Comm::NumberInRange(text, 0, 99)) total += text.toInt();
        }
        if (total > kMaxChannels)
            failure = QStringLiteral("Set the total number of channels to 128 or less");
    }
    if (failure.isEmpty()) return true;
    message(failure);
    box->clear();
    return false;
}

bool FrmHLINK::checkDevAdd16(int r) {
    QLineEdit *box = rows.at(size_t(r)).DevAdd16;
    if (box->text().isEmpty()) return true;
    const QString canonical = canonicalHex(box->text(), 8);
    if (canonical.isEmpty()) {
        message(QStringLiteral("Device address(Hex):Please enter number 00000000 - FFFFFFFF"));
        box->clear();
        return false;
    }
    box->setText(canonical);
    return true;
}

bool FrmHLINK::checkDevAdd10(int r) {
    QLineEdit *box = rows.at(size_t(r)).DevAdd10;
    if (box->text().isEmpty() || Comm::NumberInRange(box->text(), 0, 99999999, 8)) return true;
    message(QStringLiteral("Device address:Please enter number 00000000 - 99999999"));
    box->clear();
    return false;
}

bool FrmHLINK::CmdOK_Click() {
    if (isBusy()) return false;
    Run run(this);
    if (!(checkPausePeriod() && checkAddress(txtIP) && checkAddress(txtSNM) &&
          checkAddress(txtDGate) && checkServerType() && checkCPUNo() && checkTimeOut() &&
          checkNWNo() && checkStationNo() && checkAddress(txtSLMPIP) && checkPortNo() &&
          checkDeviceNo()))
        return false;
    // This is how a change of the protocol type reaches the entries.
    for (int r = 0; r < ActiveRows(); ++r)
        ApplyListKind(r, ListKindFor(rows.at(size_t(r)).cardType->currentText(),
                                     List_ServerType->currentText()));
    return true;
}

bool FrmHLINK::rowsComplete() const {
    for (int r = 0; r < ActiveRows(); ++r) {
        const EntryRow &row = rows.at(size_t(r));
        const QString radix = row.rowRadix.value_or(QString());
        const bool address = (radix == kRadix10 && !row.DevAdd10->text().isEmpty()) ||
                             (radix == kRadix16 && !row.DevAdd16->text().isEmpty());
        if (row.cardType->currentText().isEmpty() || row.ChNo->text().isEmpty() ||
            row.DevType->currentText().isEmpty() || !address) {
            message(QStringLiteral("Card Settings:Incorrect settings"));
            return false;
        }
    }
    return true;
}

QString FrmHLINK::entryText(int r) const {
    const EntryRow &row = rows.at(size_t(r));
    if (!Comm::NumberInRange(row.ChNo->text(), 1, 16, 2)) {
        message(QStringLiteral("Ch. No.:Please enter number 1 - 16"));
        return {};
    }
    QString address;
    if (row.rowRadix == kRadix16) {
        if (!Comm::IsHexText(row.DevAdd16->text()) || row.DevAdd16->text().size() > 8) {
            message(QStringLiteral("Device address(Hex):Please enter number 00000000 - FFFFFFFF"));
            return {};
        }
        address = QStringLiteral("0x") + row.DevAdd16->text();
    } else {
        if (!Comm::NumberInRange(row.DevAdd10->text(), 0, 99999999, 8)) {
            message(QStringLiteral("Device address:Please enter number 00000000 - 99999999"));
            return {};
        }
        address = row.DevAdd10->text();
    }
    return QStringLiteral("%1,%2,%3%4")
        .arg(row.rowDeviceCode.value_or(QString()), address, row.cardType->currentText(),
             row.ChNo->text());
}

// --- Opening, Upload, Download -----------------------------------------------------------------

void FrmHLINK::OpenView(const QString &) {
    Upload_First_File();
}

void FrmHLINK::Upload_First_File() {
    if (isBusy()) return;
    initialise();
    cmdUp_Click();
}

// As the dialog first stands: blank, no entry's list filled, every entry closed.
void FrmHLINK::initialise() {
    settingsFileVersion = 0;
    for (QLineEdit *box : {pausePeriod, CPUNo, TimeOut, NWNo, StationNo, PortNo, DeviceNo})
        box->clear();
    for (Comm::AddressFields *address : {&txtIP, &txtSNM, &txtDGate, &txtSLMPIP})
        address->setText(QString());
    List_ServerType->setCurrentIndex(-1);
    for (QLabel *label : lblMac)
        label->clear();
    for (EntryRow &row : rows) {
        row.cardType->setCurrentIndex(-1);
        row.ChNo->clear();
        row.DevType->clear();
        row.DevType->setEditText(QString());
        row.DevAdd16->clear();
        row.DevAdd10->clear();
        row.rowDeviceCode.reset();
        row.rowRadix.reset();
        row.rowListKind = 0;
    }
    SetRowEnabling(0);
}

void FrmHLINK::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    // What was read before a failure stays in the fields.
    if (!uploadCard())
        People::message(QStringLiteral("Upload incomplete"), QStringLiteral("Upload"),
                        People::Icon::Stop);
}

bool FrmHLINK::uploadCard() {
    if (!Comm::SelectCommCardAndTest(kGateway, QStringLiteral("1"))) return false;
    QString value;
    pausePeriod->setText(Comm::ReadValue(kZero, QStringLiteral("09")));
    const std::pair<Comm::AddressFields *, const char *> addresses[] = {
        {&txtIP, "59"}, {&txtSNM, "60"}, {&txtDGate, "61"}};
    for (const auto &[address, item] : addresses) {
        if (!Comm::ReadRequired(kZero, QLatin1String(item), value)) return false;
        address->setText(value);
    }
    List_ServerType->setCurrentIndex(
        kServerTypes.indexOf(Comm::ReadValue(kZero, QStringLiteral("63"))));
    CPUNo->setText(Comm::ReadValue(kZero, QStringLiteral("64")));
    TimeOut->setText(Comm::ReadValue(kZero, QStringLiteral("65")));
    NWNo->setText(Comm::ReadValue(kZero, QStringLiteral("66")));
    StationNo->setText(Comm::ReadValue(kZero, QStringLiteral("67")));
    if (!Comm::ReadRequired(kZero, QStringLiteral("68"), value)) return false;
    txtSLMPIP.setText(value);
    PortNo->setText(Comm::ReadValue(kZero, QStringLiteral("69")));
    DeviceNo->setText(Comm::ReadValue(kGateway, QStringLiteral("09")));
    if (!Comm::NumberInRange(DeviceNo->text(), 0, kRows)) return false;
    for (int i = 0; i < 2; ++i) {
        if (!Comm::ReadRequired(kZero, QString::number(57 + i), value)) return false;
        lblMac.at(size_t(i))->setText(value);
    }
    const int count = ActiveRows();
    for (int r = 0; r < count; ++r)
        if (!ParseEntry(r, Comm::ReadValue(kGateway, QString::number(10 + r)))) return false;
    SetRowEnabling(count);
    return true;
}

void FrmHLINK::cmdDown_Click() {
    if (isBusy()) return;
    // The same checks run again below, each just before its field goes out.
    CmdOK_Click();
    Run run(this);
    if (!downloadCard())
        People::message(QStringLiteral("Downloading incomplete"), QStringLiteral("Downloading"),
                        People::Icon::Stop);
}

// A failed check stops the Download after what went before it.
bool FrmHLINK::downloadCard() {
    if (!rowsComplete()) return false;
    if (!Comm::SelectCommCardAndTest(kGateway, QStringLiteral("1"), kRetries)) return false;
    const auto write = [](const QString &group, const char *item, const QString &data) {
        return Comm::WriteSetting(group, QLatin1String(item), data, kRetries);
    };
    if (!checkPausePeriod() || !write(kZero, "09", pausePeriod->text())) return false;
    const std::pair<Comm::AddressFields *, const char *> addresses[] = {
        {&txtIP, "59"}, {&txtSNM, "60"}, {&txtDGate, "61"}};
    for (const auto &[address, item] : addresses)
        if (!checkAddress(*address) || !write(kZero, item, address->text())) return false;
    if (!checkServerType() || !write(kZero, "63", List_ServerType->currentText())) return false;
    if (!checkCPUNo() || !write(kZero, "64", CPUNo->text().toUpper())) return false;
    if (!checkTimeOut() || !write(kZero, "65", TimeOut->text())) return false;
    if (!checkNWNo() || !write(kZero, "66", NWNo->text())) return false;
    if (!checkStationNo() || !write(kZero, "67", StationNo->text())) return false;
    if (!checkAddress(txtSLMPIP) || !write(kZero, "68", txtSLMPIP.text())) return false;
    if (!checkPortNo() || !write(kZero, "69", PortNo->text())) return false;
    if (!checkDeviceNo() || !write(kGateway, "09", DeviceNo->text())) return false;
    for (int r = 0; r < ActiveRows(); ++r) {
        const QString entry = entryText(r);
        if (entry.isEmpty() ||
            !Comm::WriteSetting(kGateway, QString::number(10 + r), entry, kRetries))
            return false;
    }
    return true;
}

// --- Files -------------------------------------------------------------------------------------

HlinkFile::Settings FrmHLINK::settingsOfControls() const {
    HlinkFile::Settings s;
    s.version = settingsFileVersion;
    s.pausePeriod = pausePeriod->text();
    s.ip = txtIP.text();
    s.subnetMask = txtSNM.text();
    s.gateway = txtDGate.text();
    s.serverType = List_ServerType->currentText();
    s.cpuNo = CPUNo->text();
    s.timeOut = TimeOut->text();
    s.networkNo = NWNo->text();
    s.stationNo = StationNo->text();
    s.serverIp = txtSLMPIP.text();
    s.portNo = PortNo->text();
    s.deviceNo = DeviceNo->text();
    for (int r = 0; r < kRows; ++r) {
        const EntryRow &row = rows.at(size_t(r));
        s.rows.at(size_t(r)) = {
            row.cardType->currentText(), row.ChNo->text(), row.DevType->currentText(),
            row.rowDeviceCode,           row.rowRadix,     row.DevAdd16->text(),
            row.DevAdd10->text()};
    }
    return s;
}

void FrmHLINK::applySettings(const HlinkFile::Settings &s) {
    pausePeriod->setText(s.pausePeriod);
    txtIP.setText(s.ip);
    txtSNM.setText(s.subnetMask);
    txtDGate.setText(s.gateway);
    List_ServerType->setCurrentIndex(kServerTypes.indexOf(s.serverType));
    CPUNo->setText(s.cpuNo);
    TimeOut->setText(s.timeOut);
    NWNo->setText(s.networkNo);
    StationNo->setText(s.stationNo);
    txtSLMPIP.setText(s.serverIp);
    PortNo->setText(s.portNo);
    DeviceNo->setText(s.deviceNo);
    // The entries beyond the count keep what the dialog had.
    for (int r = 0; r < ActiveRows(); ++r) {
        const HlinkFile::Row &from = s.rows.at(size_t(r));
        EntryRow &row = rows.at(size_t(r));
        setRowType(r, from.cardType);
        row.ChNo->setText(from.chNo);
        showDevice(r, from.devType);
        row.DevAdd16->setText(from.add16);
        row.DevAdd10->setText(from.add10);
        row.rowDeviceCode = from.code;
        row.rowRadix = from.radix;
    }
    SetRowEnabling(ActiveRows());
}

void FrmHLINK::CmdSaveF_Click() {
    if (isBusy()) return;
    CmdOK_Click();
    Run run(this);
    const QString failed = QStringLiteral("save file incomplete");
    if (!rowsComplete()) {
        People::message(failed, QStringLiteral("save file"), People::Icon::Stop);
        return;
    }
    People::FileRequest request;
    request.save = true;
    request.filter = Comm::SettingsFileFilter(QStringLiteral("hlk"));
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const QString error =
        HlinkFile::Write(path, settingsOfControls(), m_openedFiles.forSaving(path));
    if (!error.isEmpty())
        People::message(failed + QStringLiteral("\n\n") + Comm::FileFault(path, error),
                        QStringLiteral("save file"), People::Icon::Stop);
}

void FrmHLINK::CmdReadF_Click() {
    if (isBusy()) return;
    Run run(this);
    People::FileRequest request;
    request.filter = Comm::SettingsFileFilter(QStringLiteral("hlk"));
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    HlinkFile::Settings settings;
    TextFile::Encoding encoding = TextFile::Encoding::System;
    const QString error = HlinkFile::Read(path, settings, &encoding);
    if (!error.isEmpty()) {
        People::message(Comm::FileFault(path, error), QString(), People::Icon::Stop);
        return;
    }
    m_openedFiles.opened(path, encoding);
    applySettings(settings);
}
