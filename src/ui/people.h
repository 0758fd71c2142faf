#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

// Every message box and every file dialog of the program goes through here, so tests can record
// what the user would have been told and answer in the user's place.
namespace People {

enum class Icon { None, Information, Exclamation, Stop, Question };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Answer { Ok, Cancel, Yes, No };

// Shows a message and waits for the answer. An empty title shows the program's name.
Answer message(const QString &text, const QString &title = QString(), Icon icon = Icon::None,
               Buttons buttons = Buttons::Ok);

struct FileRequest {
    bool save = false;
    QString title;
    QString filter;      // "Project (*.uJx)|*.uJx|All (*.*)|*.*" style is converted by callers
    QString defaultName; // file name or folder to start from
};

// Returns the chosen path, or the empty text when the user cancelled.
QString chooseFile(const FileRequest &request);

// What a test sees of a message.
struct Message {
    QString text;
    QString title;
    Icon icon;
    Buttons buttons;
};

using MessageHandler = std::function<Answer(const Message &)>;
using FileHandler = std::function<QString(const FileRequest &)>;

// Installs handlers in place of the real dialogs; empty functions restore them.
void setMessageHandler(MessageHandler handler);
void setFileHandler(FileHandler handler);

// The parent for dialogs (the main window once it exists).
void setDialogParent(QWidget *parent);

// The program's name, the title of messages that have none of their own.
inline const QString kProgramName = QStringLiteral("VXCFG");

} // namespace People
