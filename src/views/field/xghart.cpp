#include "views/field/xghart.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/textfile.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"
#include "views/field/fieldkit.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QEventLoop>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int kRetries = 3;
const QString kCR = QStringLiteral("\r");

// The order of the settings, as the store and the file keep them.
enum Setting {
    PollAddress,
    CycleHigh,
    CycleLow,
    Retries,
    MasterMode,
    FirstBlockField,
};

struct ShortSetting {
    const char *control;
    const char *caption;
    const char *item;
    int low;
    int high;
    bool zeroToo; // 0 passes below the range
    const char *message;
};

const ShortSetting kShortSettings[] = {
    {"PollAdd", "Polling Address", "30", 0, 255, false, "Please enter 0 - 255"},
    {"CYCL_HIGH", "CYCL_HIGH", "31", 0, 59, false, "Please enter 0 - 59"},
    {"CYCL_LOW", "CYCL_LOW", "32", 6, 36, true, "Please enter 0 or 6 - 36"},
    {"Retry", "Retry", "33", 0, 16, false, "Please enter 0 - 16"},
};
const char *const kMasterModeItem = "34";
const QStringList kMasterModes = {"Primary", "Secondary"};

// A long setting moves in blocks of `blockSize` characters, at most `blockCount` of them; the
// block's address is its character offset in hexadecimal with `addressWidth` digits.
struct BlockSetting {
    const char *control;
    const char *caption;
    const char *item;
    int blockSize;
    int blockCount;
    int addressWidth;
    const char *padding;
    int maxLength; // 0: no limit of its own
    int multiple;
    const char *lengthMessage;
    const char *multipleMessage;
    int lines; // lines of the text box
    int fullLength() const { return blockSize * blockCount; }
};

const char *const kEven = "Please enter even characters";
const char *const kFourN = "Please enter 4N characters";
const BlockSetting kBlockSettings[] = {
    {"DeviceVariableCode", "Device Variable Codes", "37", 16, 2, 2, "FA", 0, 2, "", kEven, 1},
    {"AnalogChCode", "Analog Channel Codes", "38", 8, 1, 2, "FA", 0, 2, "", kEven, 1},
    {"AutoCmmand", "Auto Command", "39", 8, 23, 2, "0000", 184, 4,
     "Please enter 0 - 184 characters", kFourN, 3},
    {"DeviceSpecificCommand", "Device Specific Auto Command", "40", 16, 32, 3, "0000", 512, 4,
     "Please enter 0 - 512 characters", kFourN, 8},
    {"ConstantData", "Constant Data", "41", 16, 16, 2, "00", 256, 2,
     "Please enter 0 - 256 characters", kEven, 4},
};
constexpr int kBlockFields = 5;

// Characters a line of a text box shows for the long settings: four blocks of sixteen.
constexpr int kHexColumns = 64;

// The message for a short setting's text, empty when it passes. The empty text passes.
QString shortProblem(const ShortSetting &s, const QString &text) {
    if (text.isEmpty()) return {};
    bool ok = false;
    const qlonglong value = IsDigitText(text) ? text.toLongLong(&ok) : -1;
    const bool inRange = ok && ((value >= s.low && value <= s.high) || (s.zeroToo && value == 0));
    return inRange ? QString() : QString::fromLatin1(s.message);
}

// The message for a long setting's text, empty when it passes.
QString blockProblem(const BlockSetting &s, const QString &text) {
    if (s.maxLength > 0 && text.size() > s.maxLength) return QString::fromLatin1(s.lengthMessage);
    if (text.size() % s.multiple != 0) return QString::fromLatin1(s.multipleMessage);
    return {};
}

QString padded(const BlockSetting &s, QString text) {
    while (text.size() < s.fullLength())
        text += QLatin1String(s.padding);
    return text;
}

bool isHexDigit(QChar c) {
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
           (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
}

bool isHexText(const QString &text) {
    for (const QChar c : text)
        if (!isHexDigit(c)) return false;
    return true;
}

QString hex(int value, int width) {
    return QStringLiteral("%1").arg(value, width, 16, QLatin1Char('0')).toUpper();
}

void KeyDigits(QLineEdit *, int &key) {
    if (key != kBackspaceKey && key != 16 && (key < '0' || key > '9')) key = 0;
}

// --- The settings file ---------------------------------------------------------------------------

const QString kFileKind = QStringLiteral("a HART channel settings file");
constexpr qint64 kMaxFileBytes = 64 * 1024;
const QString kFileVersion = QStringLiteral("0");

QString fileFilter() {
    // "All Files" is "*": a pattern with a dot would hide files without one outside Windows.
    return QStringLiteral("vhx Files (*.vhx);;Text Files (*.txt);;All Files (*)");
}

QString faultText(const QString &path, const QString &reason) {
    return QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), reason);
}

QString settingCaption(int setting) {
    if (setting < FirstBlockField)
        return setting == MasterMode ? QStringLiteral("Master Mode")
                                     : QString::fromLatin1(kShortSettings[setting].caption);
    return QString::fromLatin1(kBlockSettings[setting - FirstBlockField].caption);
}

// What keeps a stored text out of the file, or the empty text.
QString settingProblem(int setting, const QString &text) {
    if (setting < MasterMode) return shortProblem(kShortSettings[setting], text);
    if (setting == MasterMode)
        return text.isEmpty() || kMasterModes.contains(text)
                   ? QString()
                   : QStringLiteral("neither Primary nor Secondary");
    const BlockSetting &s = kBlockSettings[setting - FirstBlockField];
    if (!isHexText(text)) return QStringLiteral("characters other than 0-9 and A-F");
    return blockProblem(s, text);
}

enum class FileVerdict { Read, OtherVersion, Broken };

// Reads a whole settings file; `texts` is touched only for a file that is read in full.
FileVerdict ReadSettingsFile(const QString &path, QStringList &texts, QString &error,
                             TextFile::Encoding &encoding) {
    QString content;
    error = TextFile::read(path, kMaxFileBytes, kFileKind, content, &encoding);
    if (!error.isEmpty()) return FileVerdict::Broken;
    const QList<TextFile::Line> lines = TextFile::lines(content);
    auto broken = [&error](int line, const QString &what) {
        error = QStringLiteral("This is not %1, or it is damaged: line %2 %3.")
                    .arg(kFileKind)
                    .arg(line)
                    .arg(what);
        return FileVerdict::Broken;
    };
    if (lines.isEmpty()) return broken(1, QStringLiteral("is missing"));
    const QString version = lines.first().text.trimmed();
    if (!IsDigitText(version) && !(version.startsWith('-') && IsDigitText(version.mid(1))))
        return broken(lines.first().number, QStringLiteral("holds no file version"));
    if (version.toLongLong() != 0 || version.size() > 9) return FileVerdict::OtherVersion;
    if (lines.size() < 1 + FrmXG_HART::kSettings)
        return broken(lines.last().number + 1,
                      QStringLiteral("is missing: the file ends before the ten settings"));
    if (lines.size() > 1 + FrmXG_HART::kSettings)
        return broken(lines.at(1 + FrmXG_HART::kSettings).number,
                      QStringLiteral("goes on past the ten settings of one channel"));
    QStringList read;
    for (int setting = 0; setting < FrmXG_HART::kSettings; ++setting) {
        const TextFile::Line &line = lines.at(1 + setting);
        const QString field = line.text.trimmed();
        if (field.size() < 2 || !field.startsWith('"') || !field.endsWith('"') ||
            field.mid(1, field.size() - 2).contains('"'))
            return broken(line.number, QStringLiteral("is not a text in double quotes"));
        const QString text = field.mid(1, field.size() - 2);
        const QString problem = settingProblem(setting, text);
        if (!problem.isEmpty())
            return broken(line.number, QStringLiteral("(%1) holds \"%2\": %3")
                                           .arg(settingCaption(setting), text.left(40), problem));
        read << text;
    }
    texts = read;
    return FileVerdict::Read;
}

QString WriteSettingsFile(const QString &path, const QStringList &texts,
                          TextFile::Encoding encoding) {
    QStringList lines = {kFileVersion};
    for (int setting = 0; setting < texts.size(); ++setting) {
        const QString &text = texts.at(setting);
        // A text in the file has no escape: a quote or a line end would break it.
        for (const QChar c : text)
            if (c == QLatin1Char('"') || c < QLatin1Char(' '))
                return QStringLiteral("The %1 hold a character that %2 cannot keep.")
                    .arg(settingCaption(setting), kFileKind);
        lines << QLatin1Char('"') + text + QLatin1Char('"');
    }
    return TextFile::writeLines(path, lines, "\r\n", encoding);
}

} // namespace

// --- Block exchange ------------------------------------------------------------------------------

QString BlockExchangeOnce(const QString &group, const QString &item, const QString &data) {
    if (SendLine("G" + group + kCR) != QLatin1String("COK")) return {};
    const QString itemReply = SendLine("I" + item + kCR);
    if (itemReply.isEmpty() || itemReply == QLatin1String("CNU") ||
        itemReply == QLatin1String("CNG") || itemReply == QLatin1String("DTMOUT"))
        return {};
    const QString reply = SendLine("D" + data + kCR);
    if (reply.isEmpty() || reply.endsWith(QLatin1String("NG"))) return {};
    return reply.mid(1);
}

QString BlockExchange(int retries, const QString &group, const QString &item, const QString &data) {
    QString result;
    for (int attempt = 0; attempt <= retries && result.isEmpty(); ++attempt)
        result = TrimBlanks(BlockExchangeOnce(group, item, data));
    return result;
}

// --- HexEdit -------------------------------------------------------------------------------------

HexEdit::HexEdit(QWidget *parent) : QPlainTextEdit(parent) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setWordWrapMode(QTextOption::WrapAnywhere);
    setTabChangesFocus(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void HexEdit::setText(const QString &text) {
    if (text != toPlainText()) setPlainText(text);
}

void HexEdit::keyPressEvent(QKeyEvent *event) {
    const QString typed = event->text();
    const bool printable = !typed.isEmpty() && typed.at(0) >= QLatin1Char(' ') &&
                           !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->ignore(); // the dialog's own keys, never a line break in the data
        return;
    }
    if (printable && !isHexText(typed)) return;
    QPlainTextEdit::keyPressEvent(event);
}

bool HexEdit::canInsertFromMimeData(const QMimeData *source) const {
    return source->hasText();
}

// Pasted text goes in as if typed: only what the keys could have put there.
void HexEdit::insertFromMimeData(const QMimeData *source) {
    QString kept;
    for (const QChar c : source->text())
        if (isHexDigit(c)) kept += c;
    if (!kept.isEmpty()) insertPlainText(kept);
}

// --- The dialog ----------------------------------------------------------------------------------

FrmXG_HART::FrmXG_HART(QWidget *parent) : QDialog(parent) {
    setObjectName("frmXG_HART");
    setWindowTitle("HART Master Setting");
    auto *layout = new QGridLayout(this);
    layout->addWidget(buildSettings(), 0, 0);
    layout->addWidget(buildCommands(), 0, 1);
    layout->addWidget(buildBlocks(), 1, 0, 1, 2);
    ProgressBar = new QProgressBar(this);
    ProgressBar->setObjectName("ProgressBar");
    ProgressBar->setTextVisible(false);
    ProgressBar->hide();
    layout->addWidget(ProgressBar, 2, 0, 1, 2);
    installChecks();
    Init();
    Disp();
}

QWidget *FrmXG_HART::buildSettings() {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    HARTCh_No = MakeLabel(box, "HARTCh_No", "HART1");
    QFont bold = HARTCh_No->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    HARTCh_No->setFont(bold);
    CmdDownCh = MakeButton(box, "CmdDownCh", "Down Ch");
    CmdUpCh = MakeButton(box, "CmdUpCh", "Up Ch");
    auto *top = new QHBoxLayout;
    top->addWidget(HARTCh_No);
    top->addSpacing(16);
    top->addWidget(CmdDownCh);
    top->addWidget(CmdUpCh);
    top->addStretch();
    grid->addLayout(top, 0, 0, 1, 4);

    QLineEdit **fields[] = {&PollAdd, &CYCL_HIGH, &CYCL_LOW, &Retry};
    for (int i = 0; i < 4; ++i) {
        const ShortSetting &s = kShortSettings[i];
        *fields[i] = ViewBuilders::field(box, s.control, 4);
        m_short[static_cast<size_t>(i)] = *fields[i];
        grid->addWidget(ViewBuilders::caption(box, s.caption), 1 + i / 2, (i % 2) * 2);
        grid->addWidget(*fields[i], 1 + i / 2, (i % 2) * 2 + 1, Qt::AlignLeft);
        InstallSelectAllOnFocus(*fields[i]);
        InstallKeyFilter(*fields[i], KeyDigits);
    }
    List_MasterMode = new QComboBox(box);
    List_MasterMode->setObjectName("List_MasterMode");
    grid->addWidget(ViewBuilders::caption(box, "Master Mode"), 3, 0);
    grid->addWidget(List_MasterMode, 3, 1, 1, 2, Qt::AlignLeft);
    grid->setColumnStretch(4, 1);

    connect(CmdDownCh, &QPushButton::clicked, this, &FrmXG_HART::CmdDownCh_Click);
    connect(CmdUpCh, &QPushButton::clicked, this, &FrmXG_HART::CmdUpCh_Click);
    connect(List_MasterMode, &QComboBox::currentIndexChanged, this,
            [this] { stored(MasterMode) = List_MasterMode->currentText(); });
    return box;
}

QWidget *FrmXG_HART::buildBlocks() {
    auto *box = new QWidget(this);
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < kBlockFields; ++i) {
        const BlockSetting &s = kBlockSettings[i];
        QGroupBox *frame = MakeFrame(box, QStringLiteral("fra%1").arg(s.control), s.caption);
        auto *row = new QHBoxLayout(frame);
        auto *edit = new HexEdit(frame);
        edit->setObjectName(s.control);
        const QFontMetrics metrics(edit->font());
        const int margins =
            2 * (edit->frameWidth() + static_cast<int>(edit->document()->documentMargin()));
        edit->setFixedWidth(metrics.horizontalAdvance(QString(kHexColumns, QLatin1Char('0'))) +
                            margins + 4);
        edit->setFixedHeight(metrics.lineSpacing() * s.lines + margins + 2);
        m_blocks[static_cast<size_t>(i)] = edit;
        CmdClear[static_cast<size_t>(i)] =
            MakeButton(frame, ViewBuilders::arrayName("CmdClear", i), "Clear");
        row->addWidget(edit);
        row->addWidget(CmdClear[static_cast<size_t>(i)], 0, Qt::AlignTop);
        row->addStretch();
        column->addWidget(frame);
        connect(CmdClear[static_cast<size_t>(i)], &QPushButton::clicked, this,
                [this, i] { CmdClear_Click(i); });
    }
    DeviceVariableCode = m_blocks[0];
    AnalogChCode = m_blocks[1];
    AutoCmmand = m_blocks[2];
    DeviceSpecificCommand = m_blocks[3];
    ConstantData = m_blocks[4];
    return box;
}

QWidget *FrmXG_HART::buildCommands() {
    auto *box = new QWidget(this);
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    CmdUpload = MakeButton(box, "CmdUpload", "Upload");
    CmdDownload = MakeButton(box, "CmdDownload", "Download");
    CmdReadFile = MakeButton(box, "CmdReadFile", "Read File");
    CmdWriteFile = MakeButton(box, "CmdWriteFile", "Save File");
    CmdReset = MakeButton(box, "CmdReset", "Reset Start");
    cmdExit = MakeButton(box, "cmdExit", "Exit");
    const QList<QPushButton *> order = {CmdUpload,   CmdDownload,  CmdReset,
                                        CmdReadFile, CmdWriteFile, cmdExit};
    for (int i = 0; i < order.size(); ++i) {
        order[i]->setMinimumWidth(100);
        grid->addWidget(order[i], i % 3, i / 3);
    }
    connect(CmdUpload, &QPushButton::clicked, this, &FrmXG_HART::CmdUpload_Click);
    connect(CmdDownload, &QPushButton::clicked, this, &FrmXG_HART::CmdDownload_Click);
    connect(CmdReadFile, &QPushButton::clicked, this, &FrmXG_HART::CmdReadFile_Click);
    connect(CmdWriteFile, &QPushButton::clicked, this, &FrmXG_HART::CmdWriteFile_Click);
    connect(CmdReset, &QPushButton::clicked, this, &FrmXG_HART::CmdReset_Click);
    connect(cmdExit, &QPushButton::clicked, this, &FrmXG_HART::cmdExit_Click);
    return box;
}

// A field that passes is stored for the channel on show; an empty short one keeps the store.
void FrmXG_HART::installChecks() {
    for (int i = 0; i < 4; ++i) {
        QLineEdit *field = m_short[static_cast<size_t>(i)];
        FieldKit::InstallLeaveCheck(field, [this, field, i]() -> QString {
            const QString problem = shortProblem(kShortSettings[i], field->text());
            if (problem.isEmpty() && !field->text().isEmpty()) stored(i) = field->text();
            return problem;
        });
    }
    for (int i = 0; i < kBlockFields; ++i) {
        HexEdit *field = m_blocks[static_cast<size_t>(i)];
        FieldKit::InstallLeaveCheck(field, [this, field, i]() -> QString {
            const BlockSetting &s = kBlockSettings[i];
            const QString problem = blockProblem(s, field->text());
            if (!problem.isEmpty()) return problem;
            field->setText(padded(s, field->text()));
            stored(FirstBlockField + i) = field->text();
            return {};
        });
    }
}

void FrmXG_HART::XG4_HART_Init(int channelIndex) {
    currentHartChannel = std::clamp(channelIndex, 0, kChannels - 1);
    Init();
    Disp();
}

void FrmXG_HART::Init() {
    for (auto &channel : m_store)
        for (QString &text : channel)
            text.clear();
    if (List_MasterMode->count() == 0) List_MasterMode->addItems(kMasterModes);
    // A field refused before the store was emptied stands refused no more.
    FieldKit::ClearRefused(this);
}

void FrmXG_HART::Disp() {
    HARTCh_No->setText(QStringLiteral("HART%1").arg(currentHartChannel + 1));
    // The store is what the controls show; reading it first keeps the list's own store from
    // overwriting it while the list changes.
    const auto texts = m_store[static_cast<size_t>(currentHartChannel)];
    for (int i = 0; i < 4; ++i)
        m_short[static_cast<size_t>(i)]->setText(texts[static_cast<size_t>(i)]);
    List_MasterMode->setCurrentIndex(List_MasterMode->findText(texts[MasterMode]));
    for (int i = 0; i < kBlockFields; ++i)
        m_blocks[static_cast<size_t>(i)]->setText(texts[static_cast<size_t>(FirstBlockField + i)]);
}

void FrmXG_HART::SetpgBar_Local(int maximum) {
    ProgressBar->setMaximum(maximum);
    ProgressBar->setMinimum(0);
    ProgressBar->setValue(0);
    ProgressBar->setVisible(true);
}

void FrmXG_HART::HideProgress() {
    ProgressBar->setVisible(false);
}

void FrmXG_HART::SetButtons(bool enabled) {
    m_busy = !enabled;
    for (QPushButton *b :
         {CmdDownCh, CmdUpCh, CmdReadFile, CmdWriteFile, CmdUpload, CmdDownload, cmdExit, CmdReset})
        b->setEnabled(enabled);
    for (QPushButton *b : CmdClear)
        b->setEnabled(enabled);
}

void FrmXG_HART::OpenChannel(bool selectCommCard) {
    WriteData(kRetries, "00", "01", "F");
    if (selectCommCard) WriteData(kRetries, "00", "41", "00");
    WriteData(kRetries, "00", "41", QString::number(CardNo));
    WriteData(kRetries, group(), "01", "F");
}

void FrmXG_HART::CmdDownCh_Click() {
    currentHartChannel = (currentHartChannel + kChannels - 1) % kChannels;
    Disp();
}

void FrmXG_HART::CmdUpCh_Click() {
    currentHartChannel = (currentHartChannel + 1) % kChannels;
    Disp();
}

// Blocks are read in order; the first that stays unanswered ends the field, since the blocks
// after it would land at the wrong places.
void FrmXG_HART::ReadBlocks(int field) {
    const BlockSetting &s = kBlockSettings[field];
    QString text;
    for (int b = 0; b < s.blockCount; ++b) {
        const QString request = "R" + hex(b * s.blockSize, s.addressWidth) + hex(s.blockSize, 2);
        const QString result = BlockExchange(kRetries, group(), s.item, request);
        if (result.isEmpty()) break;
        text += result.startsWith(request) ? result.mid(request.size()) : result;
    }
    m_blocks[static_cast<size_t>(field)]->setText(text);
    stored(FirstBlockField + field) = text;
}

// A text shorter than the full length ends early with a short block; one longer sends only what
// the blocks hold.
void FrmXG_HART::WriteBlocks(int field) {
    const BlockSetting &s = kBlockSettings[field];
    const QString text = m_blocks[static_cast<size_t>(field)]->text();
    for (int b = 0; b < s.blockCount; ++b) {
        const QString piece = text.mid(b * s.blockSize, s.blockSize);
        if (piece.isEmpty()) break;
        BlockExchange(kRetries, group(), s.item,
                      "W" + hex(b * s.blockSize, s.addressWidth) + hex(piece.size(), 2) + piece);
    }
}

void FrmXG_HART::CmdUpload_Click() {
    SetButtons(false);
    SetpgBar_Local(69);
    OpenChannel(true);
    for (int i = 0; i < 4; ++i) {
        QLineEdit *field = m_short[static_cast<size_t>(i)];
        field->setText(ValueAfterColon(ReadData(kRetries, group(), kShortSettings[i].item)));
        stored(i) = field->text();
    }
    bool ok = false;
    const int mode = ValueAfterColon(ReadData(kRetries, group(), kMasterModeItem)).toInt(&ok);
    List_MasterMode->setCurrentIndex(ok && mode >= 0 && mode < kMasterModes.size() ? mode : -1);
    stored(MasterMode) = List_MasterMode->currentText();
    ProgressBar->setValue(10);
    ReadBlocks(0);
    ReadBlocks(1);
    ProgressBar->setValue(20);
    ReadBlocks(2);
    ProgressBar->setValue(50);
    ReadBlocks(3);
    ReadBlocks(4);
    ProgressBar->setValue(69);
    HideProgress();
    SetButtons(true);
}

void FrmXG_HART::CmdDownload_Click() {
    // A field that was just refused is not sent.
    if (FieldKit::AnyRefused(this)) return;
    SetButtons(false);
    SetpgBar_Local(69);
    OpenChannel(false);
    for (int i = 0; i < 4; ++i)
        WriteData(kRetries, group(), kShortSettings[i].item,
                  m_short[static_cast<size_t>(i)]->text().trimmed());
    if (List_MasterMode->currentIndex() >= 0)
        WriteData(kRetries, group(), kMasterModeItem,
                  QString::number(List_MasterMode->currentIndex()));
    ProgressBar->setValue(10);
    WriteBlocks(0);
    WriteBlocks(1);
    ProgressBar->setValue(20);
    WriteBlocks(2);
    ProgressBar->setValue(50);
    WriteBlocks(3);
    WriteBlocks(4);
    ProgressBar->setValue(69);
    HideProgress();
    SetButtons(true);
}

void FrmXG_HART::CmdClear_Click(int index) {
    SetButtons(false);
    OpenChannel(true);
    WriteData(kRetries, group(), kBlockSettings[index].item, "C");
    SetButtons(true);
}

void FrmXG_HART::CmdReset_Click() {
    SetButtons(false);
    OpenChannel(true);
    WriteData(kRetries, group(), "50", "9999");
    // The master restarts; the dialog waits with its commands off but keeps drawing.
    QEventLoop wait;
    QTimer::singleShot(Clock::ms(3000), &wait, &QEventLoop::quit);
    wait.exec();
    SetButtons(true);
}

void FrmXG_HART::CmdWriteFile_Click() {
    if (FieldKit::AnyRefused(this)) return;
    People::FileRequest request;
    request.save = true;
    request.filter = fileFilter();
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const auto &texts = m_store[static_cast<size_t>(currentHartChannel)];
    const QString error = WriteSettingsFile(path, QStringList(texts.begin(), texts.end()),
                                            m_openedFiles.forSaving(path));
    if (!error.isEmpty()) People::message(faultText(path, error), QString(), People::Icon::Stop);
}

void FrmXG_HART::CmdReadFile_Click() {
    People::FileRequest request;
    request.filter = fileFilter();
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    QStringList texts;
    QString error;
    TextFile::Encoding encoding = TextFile::Encoding::System;
    switch (ReadSettingsFile(path, texts, error, encoding)) {
    case FileVerdict::OtherVersion:
        People::message("read file incomplete", "read file", People::Icon::Stop);
        return;
    case FileVerdict::Broken:
        People::message(faultText(path, error), QString(), People::Icon::Stop);
        return;
    case FileVerdict::Read:
        break;
    }
    m_openedFiles.opened(path, encoding);
    for (int i = 0; i < kSettings; ++i)
        stored(i) = texts.at(i);
    Disp();
}

void FrmXG_HART::cmdExit_Click() {
    done(QDialog::Accepted);
}

// While a command talks to the card the dialog stays, as its Exit button is off then.
void FrmXG_HART::reject() {
    if (!m_busy) QDialog::reject();
}

void FrmXG_HART::closeEvent(QCloseEvent *event) {
    if (m_busy) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}
