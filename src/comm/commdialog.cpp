#include "comm/commdialog.h"

#include "link/exchange.h"
#include "rack/connection.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QDir>
#include <QFocusEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <limits>

namespace Comm {

QString SelectCommCard(const QString &group, const QString &data, const QString &slot,
                       int retries) {
    WriteData(retries, QStringLiteral("00"), QStringLiteral("01"), QStringLiteral("F"));
    WriteData(retries, QStringLiteral("00"), QStringLiteral("41"), slot);
    return WriteData(retries, group, QStringLiteral("01"), data);
}

bool SelectCommCardAndTest(const QString &group, const QString &data, int retries) {
    SelectCommCard(group, data, QStringLiteral("00"), retries);
    return !ReadData(retries, QStringLiteral("00"), QStringLiteral("40")).isEmpty();
}

QString ReadValue(const QString &group, const QString &item, int retries) {
    return ValueAfterColon(ReadData(retries, group, item));
}

bool ReadRequired(const QString &group, const QString &item, QString &value, int retries) {
    const QString reply = ReadData(retries, group, item);
    value = ValueAfterColon(reply);
    return !reply.isEmpty();
}

bool WriteSetting(const QString &group, const QString &item, const QString &data, int retries) {
    return !WriteData(retries, group, item, data).isEmpty() || data.isEmpty();
}

void ShowIncomplete(Transfer transfer, bool endSession) {
    if (transfer == Transfer::Upload)
        People::message(QStringLiteral("Uploading incomplete"), QStringLiteral("Uploading"),
                        People::Icon::Stop);
    else
        People::message(QStringLiteral("Downloading incomplete"), QStringLiteral("Downloading"),
                        People::Icon::Stop);
    if (endSession) DisconnectRack();
}

bool NumberInRange(const QString &text, qint64 low, qint64 high, int maxChars) {
    if (maxChars > 0 && text.size() > maxChars) return false;
    QStringView digits(text);
    bool negative = false;
    if (!digits.isEmpty() && (digits.front() == u'-' || digits.front() == u'+')) {
        negative = digits.front() == u'-';
        digits = digits.mid(1);
    }
    if (digits.isEmpty() || !IsDigitText(digits.toString())) return false;
    // Digits beyond what any range here needs are out of range, not an overflow.
    qint64 value = 0;
    for (QChar ch : digits) {
        value = value * 10 + (ch.unicode() - u'0');
        if (value > std::numeric_limits<qint32>::max()) return false;
    }
    if (negative) value = -value;
    return value >= low && value <= high;
}

bool CheckNumber(const QString &text, qint64 low, qint64 high, const QString &message,
                 int maxChars) {
    if (NumberInRange(text, low, high, maxChars)) return true;
    People::message(message, QString(), People::Icon::Information);
    return false;
}

void KeyDigits(QLineEdit *, int &key) {
    constexpr int kCode16 = 16;
    const bool digit = key >= '0' && key <= '9';
    if (!digit && key != kBackspaceKey && key != kCode16) key = 0;
}

void KeyHex(QLineEdit *, int &key) {
    constexpr int kCode16 = 16;
    const bool digit = (key >= '0' && key <= '9') || (key >= 'A' && key <= 'F');
    if (!digit && key != kBackspaceKey && key != kCode16) key = 0;
}

bool IsHexText(const QString &text) {
    if (text.isEmpty()) return false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (!((u >= u'0' && u <= u'9') || (u >= u'A' && u <= u'F') || (u >= u'a' && u <= u'f')))
            return false;
    }
    return true;
}

QString SettingsFileFilter(const QString &extension) {
    // "All Files" is "*": a pattern with a dot would hide files without one outside Windows.
    return QStringLiteral("%1 Files (*.%1);;Text Files (*.txt);;All Files (*)").arg(extension);
}

namespace {
// A quote would end the field early and a control character would not survive an editor: a
// settings file neither writes nor reads either inside a field.
bool fitsInQuotes(const QString &text) {
    for (const QChar c : text)
        if (c == QLatin1Char('"') || c < QLatin1Char(' ') || c == QChar(0x7f)) return false;
    return true;
}
} // namespace

QString QuotedLine(const QString &text, const QString &caption, QString &line) {
    if (!fitsInQuotes(text))
        return QStringLiteral("\"%1\" holds a character that a settings file cannot keep.")
            .arg(caption);
    line = QLatin1Char('"') + text + QLatin1Char('"');
    return {};
}

bool UnquoteLine(const QString &line, QString &text) {
    const QString field = line.trimmed();
    if (field.size() < 2 || !field.startsWith(QLatin1Char('"')) ||
        !field.endsWith(QLatin1Char('"')))
        return false;
    const QString inner = field.mid(1, field.size() - 2);
    if (!fitsInQuotes(inner)) return false;
    text = inner;
    return true;
}

bool BareNumberLine(const QString &line, int low, int high, int &value) {
    const QString field = line.trimmed();
    if (!NumberInRange(field, low, high)) return false;
    value = field.toInt();
    return true;
}

QString FileFault(const QString &path, const QString &reason) {
    return QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), reason);
}

QString BrokenLine(const QString &kind, int line, const QString &what) {
    return QStringLiteral("This is not %1, or it is damaged: line %2 %3.").arg(kind).arg(line).arg(what);
}

namespace {

class LeaveCheck : public QObject {
public:
    LeaveCheck(QLineEdit *box, QWidget *exitButton, std::function<bool()> check)
        : QObject(box), m_box(box), m_exit(exitButton), m_check(std::move(check)) {}

    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched != m_box || event->type() != QEvent::FocusOut) return false;
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) return false;
        // By now the application's focus is on the control the user went to.
        QWidget *next = QApplication::focusWidget();
        if (!next || next == m_exit || next->window() != m_box->window()) return false;
        if (!m_box->isVisible() || m_check()) return false;
        QPointer<QLineEdit> box(m_box);
        QTimer::singleShot(0, m_box, [box] {
            if (box && box->isVisible()) box->setFocus(Qt::OtherFocusReason);
        });
        return false;
    }

private:
    QLineEdit *m_box;
    QPointer<QWidget> m_exit;
    std::function<bool()> m_check;
};

} // namespace

void InstallLeaveCheck(QLineEdit *box, QWidget *exitButton, std::function<bool()> check) {
    box->installEventFilter(new LeaveCheck(box, exitButton, std::move(check)));
}

QString AddressFields::text() const {
    QStringList texts;
    for (const QLineEdit *part : parts)
        texts << part->text();
    return texts.join(QLatin1Char('.'));
}

void AddressFields::setText(const QString &address) {
    QString a, b, c, d;
    SplitAddress(address, a, b, c, d);
    parts[0]->setText(a);
    parts[1]->setText(b);
    parts[2]->setText(c);
    parts[3]->setText(d);
}

bool AddressFields::complete() const {
    for (const QLineEdit *part : parts)
        if (part->text().isEmpty()) return false;
    return true;
}

void AddressFields::setVisible(bool visible) {
    for (int i = 0; i < layout->count(); ++i)
        if (QWidget *widget = layout->itemAt(i)->widget()) widget->setVisible(visible);
}

AddressFields MakeAddressFields(QWidget *parent, const QString &control) {
    AddressFields fields;
    fields.layout = new QHBoxLayout;
    fields.layout->setSpacing(2);
    for (int i = 0; i < 4; ++i) {
        if (i > 0) fields.layout->addWidget(MakeLabel(parent, QString(), QStringLiteral(".")));
        QLineEdit *part = ViewBuilders::field(parent, ViewBuilders::arrayName(control, i), 3);
        part->setAlignment(Qt::AlignCenter);
        InstallSelectAllOnFocus(part);
        fields.parts.at(static_cast<size_t>(i)) = part;
        fields.layout->addWidget(part);
    }
    fields.layout->addStretch(1);
    return fields;
}

} // namespace Comm

CommDialog::CommDialog(const QString &formName, const QString &heading, QWidget *parent)
    : QDialog(parent) {
    setObjectName(formName);
    setWindowTitle(heading);
    setModal(true);
    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_heading = MakeLabel(this, QStringLiteral("lblTitle"), heading);
    QFont bold = m_heading->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    m_heading->setFont(bold);
    layout->addWidget(m_heading);
    m_body = new QVBoxLayout;
    layout->addLayout(m_body);
    layout->addSpacing(6);
    m_commandRow = new QHBoxLayout;
    m_commandRow->addStretch(1);
    layout->addLayout(m_commandRow);
}

void CommDialog::reject() {
    // The card is being talked to; Exit comes back when it is done.
    if (isBusy()) return;
    QDialog::reject();
}

QPushButton *CommDialog::addCommand(const QString &name, const QString &caption) {
    QPushButton *button = MakeButton(this, name, caption);
    button->setMinimumWidth(90);
    m_commandRow->addWidget(button);
    m_commands << button;
    return button;
}

void CommDialog::addTransferCommands() {
    cmdUp = addCommand(QStringLiteral("cmdUp"), QStringLiteral("Upload"));
    cmdDown = addCommand(QStringLiteral("cmdDown"), QStringLiteral("Download"));
    cmdExit = addCommand(QStringLiteral("cmdExit"), QStringLiteral("Exit"));
    connect(cmdExit, &QPushButton::clicked, this, &CommDialog::cmdExit_Click);
}

void CommDialog::cmdExit_Click() {
    accept();
}

QLineEdit *CommDialog::addField(QGridLayout *grid, int row, const QString &caption,
                                const QString &name, int chars, bool readOnly, int column) {
    grid->addWidget(MakeLabel(this, QString(), caption), row, column);
    QLineEdit *box = readOnly ? ViewBuilders::valueField(this, name, chars)
                              : ViewBuilders::field(this, name, chars);
    box->setAlignment(Qt::AlignLeft);
    grid->addWidget(box, row, column + 1, Qt::AlignLeft);
    return box;
}

void CommDialog::setCommandsEnabled(bool on) {
    for (QPushButton *command : m_commands)
        command->setEnabled(on);
}

CommDialog::Run::Run(CommDialog *dialog) : m_dialog(dialog) {
    if (m_dialog->m_runs++ == 0) m_dialog->setCommandsEnabled(false);
}

CommDialog::Run::~Run() {
    if (--m_dialog->m_runs > 0) return;
    m_dialog->setCommandsEnabled(true);
    emit m_dialog->workDone();
}
