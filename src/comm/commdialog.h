#pragma once

#include "rack/cardtable.h"

#include <QDialog>
#include <QList>
#include <QString>
#include <array>
#include <functional>

class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

// What the communication card dialogs share: the frame of a dialog (a heading, a row of commands
// at the bottom, the commands off while it talks to the card), the selection of the comm card,
// the words of a failed transfer, address fields, and the checks of typed numbers.
namespace Comm {

// The comm card anew: group "00" item "01" data "F", group "00" item "41" data `slot`, then the
// opening write of `group` (item "01") with `data`. The result of that last write.
QString SelectCommCard(const QString &group, const QString &data,
                       const QString &slot = QStringLiteral("00"), int retries = 3);

// The comm card selected as above, then its version read: false when the card keeps silent,
// which is where a transfer that needs the card gives up.
bool SelectCommCardAndTest(const QString &group, const QString &data, int retries = 3);

// The comm card's record in the card table.
inline CardRecord &CommRecord() {
    return CardTable(kCommRecord);
}

// The value of a read: the text behind the first colon of the reply, empty for no reply.
QString ReadValue(const QString &group, const QString &item, int retries = 3);
// A read whose silence ends the run: false when nothing came back (`value` is then emptied);
// a reply with an empty value still counts as an answer.
bool ReadRequired(const QString &group, const QString &item, QString &value, int retries = 3);

// A setting written as the dialogs write them, with 10 retries, the reply not examined. False
// only when a write of some data came back empty: the card kept silent or refused it, and what
// follows would go the same way. (The echo of an empty text is itself empty, so such a write
// tells nothing.)
bool WriteSetting(const QString &group, const QString &item, const QString &data,
                  int retries = 10);

// "Uploading incomplete" or "Downloading incomplete" with the stop icon; `endSession` also ends
// the session, as a dialog does that lost the card midway.
enum class Transfer { Upload, Download };
void ShowIncomplete(Transfer transfer, bool endSession = true);

// True for a whole number (digits, a sign in front allowed) of at most `maxChars` characters
// (0: any length) that lies from `low` to `high`.
bool NumberInRange(const QString &text, qint64 low, qint64 high, int maxChars = 0);
// The same, telling the user `message` with the information icon when the text fails.
bool CheckNumber(const QString &text, qint64 low, qint64 high, const QString &message,
                 int maxChars = 0);

// Key filter of the number boxes: digits, backspace and the code 16 pass.
void KeyDigits(QLineEdit *box, int &key);
// Key filter of the hexadecimal boxes: digits, upper-case "A" to "F", backspace and the code 16.
void KeyHex(QLineEdit *box, int &key);

// True for a text of hexadecimal digits only (either case), at least one.
bool IsHexText(const QString &text);

// The settings files of the comm cards: one value a line, a bare number on line 1 and texts in
// double quotes after it.
// The file dialog's list for files of `extension` ("zrv"): its own kind first, then text files
// and all files.
QString SettingsFileFilter(const QString &extension);
// A text as a line of a settings file, or the reason it cannot be one: the file has no escape,
// so a double quote or a control character would break it.
QString QuotedLine(const QString &text, const QString &caption, QString &line);
// The text of a line in double quotes (blanks around it allowed); false for any other line.
bool UnquoteLine(const QString &line, QString &text);
// True for a bare whole number from `low` to `high` (blanks around it allowed).
bool BareNumberLine(const QString &line, int low, int high, int &value);
// The words of a file fault: the file, then what went wrong with it.
QString FileFault(const QString &path, const QString &reason);
// What to tell of a file line that does not hold what it should.
QString BrokenLine(const QString &kind, int line, const QString &what);

// Runs `check` when `box` loses the focus to another control of its window, unless that control
// is `exitButton`: leaving by Exit must stay possible whatever the box holds. A failed check
// puts the focus back in the box. Focus that leaves the window (a message box, another program)
// does not count.
void InstallLeaveCheck(QLineEdit *box, QWidget *exitButton, std::function<bool()> check);

// The four boxes of a dotted address, named `control`(0) to `control`(3).
struct AddressFields {
    std::array<QLineEdit *, 4> parts{};

    QString text() const; // the parts joined by "."
    void setText(const QString &address);
    bool complete() const; // no part is empty
    void setVisible(bool visible);
    QHBoxLayout *layout = nullptr; // the boxes with dots between them
};
AddressFields MakeAddressFields(QWidget *parent, const QString &control);

} // namespace Comm

// The common frame of a comm card dialog: a bold heading, a body the dialog fills, and a row of
// commands at the bottom. A run with the card (Run) takes the commands off for its time and puts
// them back at its end, however it ends; closing the dialog is refused meanwhile.
class CommDialog : public QDialog {
    Q_OBJECT
public:
    CommDialog(const QString &formName, const QString &heading, QWidget *parent = nullptr);

    bool isBusy() const { return m_runs > 0; }
    void reject() override;

    // "Upload", "Download" and "Exit", made by addTransferCommands().
    QPushButton *cmdUp = nullptr;
    QPushButton *cmdDown = nullptr;
    QPushButton *cmdExit = nullptr;

public slots:
    // Closes the dialog; nothing is asked and nothing written.
    void cmdExit_Click();

signals:
    // A run with the card has ended and the commands are back.
    void workDone();

protected:
    // Commands off until it goes out of scope; runs may nest, the outermost one counts.
    class Run {
    public:
        explicit Run(CommDialog *dialog);
        ~Run();
        Run(const Run &) = delete;
        Run &operator=(const Run &) = delete;

    private:
        CommDialog *m_dialog;
    };

    QVBoxLayout *body() const { return m_body; }
    QLabel *heading() const { return m_heading; }
    // A command at the bottom right, in the order added.
    QPushButton *addCommand(const QString &name, const QString &caption);
    // cmdUp, cmdDown and cmdExit after the commands added so far; Exit is wired to close.
    void addTransferCommands();
    // A caption and a box in `row` of `grid`; the box fits `chars` characters.
    QLineEdit *addField(QGridLayout *grid, int row, const QString &caption, const QString &name,
                        int chars, bool readOnly = false, int column = 0);

    // What a run turns off and on; by default every command added.
    virtual void setCommandsEnabled(bool on);
    const QList<QPushButton *> &commands() const { return m_commands; }

private:
    QVBoxLayout *m_body;
    QLabel *m_heading;
    QHBoxLayout *m_commandRow;
    QList<QPushButton *> m_commands;
    int m_runs = 0;
};
