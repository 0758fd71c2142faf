// Opens arbitrary bytes as a HART channel settings file (.vhx) through the dialog's own Read File
// command, as a user would. A refused file must say why and leave the channel as it was; a read
// file must save through Save File and read back to the same settings on screen.
#include "fuzzsupport.h"
#include "views/field/xghart.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>

namespace {

QTemporaryDir *folder = nullptr;
FrmXG_HART *dialog = nullptr;
QString nextPath;
int messages = 0;
QString lastMessage;

// Everything the channel shows.
QStringList onScreen() {
    return {dialog->PollAdd->text(),
            dialog->CYCL_HIGH->text(),
            dialog->CYCL_LOW->text(),
            dialog->Retry->text(),
            dialog->List_MasterMode->currentText(),
            dialog->DeviceVariableCode->text(),
            dialog->AnalogChCode->text(),
            dialog->AutoCmmand->text(),
            dialog->DeviceSpecificCommand->text(),
            dialog->ConstantData->text()};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    People::setMessageHandler([](const People::Message &message) {
        ++messages;
        lastMessage = message.text;
        return People::Answer::Ok;
    });
    People::setFileHandler([](const People::FileRequest &) { return nextPath; });
    folder = new QTemporaryDir;
    dialog = new FrmXG_HART;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString input = folder->filePath("input.vhx");
    QFile file(input);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) fuzz::fail("no scratch file");
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();

    dialog->XG4_HART_Init(int(size % FrmXG_HART::kChannels));
    const QStringList before = onScreen();
    messages = 0;
    nextPath = input;
    dialog->CmdReadFile_Click();
    if (messages > 0) {
        fuzz::check(!lastMessage.trimmed().isEmpty(), "a refusal without words");
        fuzz::check(onScreen() == before, "a refused file changed the channel",
                    onScreen().join('|').toUtf8());
        return 0;
    }
    const QStringList read = onScreen();

    const QString saved = folder->filePath("saved.vhx");
    QFile::remove(saved);
    nextPath = saved;
    dialog->CmdWriteFile_Click();
    fuzz::check(messages == 0, "a file that was read cannot be saved again", lastMessage.toUtf8());
    dialog->XG4_HART_Init(dialog->currentHartChannel);
    nextPath = saved;
    dialog->CmdReadFile_Click();
    fuzz::check(messages == 0, "a saved file does not read back", lastMessage.toUtf8());
    fuzz::check(onScreen() == read, "a setting changed on its way through a file",
                read.join('|').toUtf8() + "\n---\n" + onScreen().join('|').toUtf8());
    return 0;
}
