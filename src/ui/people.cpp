#include "ui/people.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

namespace {
People::MessageHandler g_messageHandler;
People::FileHandler g_fileHandler;
QPointer<QWidget> g_parent;

QMessageBox::Icon boxIcon(People::Icon icon) {
    switch (icon) {
    case People::Icon::Information:
        return QMessageBox::Information;
    case People::Icon::Exclamation:
        return QMessageBox::Warning;
    case People::Icon::Stop:
        return QMessageBox::Critical;
    case People::Icon::Question:
        return QMessageBox::Question;
    case People::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons boxButtons(People::Buttons buttons) {
    switch (buttons) {
    case People::Buttons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case People::Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case People::Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case People::Buttons::Ok:
        break;
    }
    return QMessageBox::Ok;
}
} // namespace

namespace People {

Answer message(const QString &text, const QString &title, Icon icon, Buttons buttons) {
    const Message shown{text, title.isEmpty() ? kProgramName : title, icon, buttons};
    if (g_messageHandler) return g_messageHandler(shown);
    QMessageBox box(boxIcon(icon), shown.title, text, boxButtons(buttons), g_parent);
    switch (box.exec()) {
    case QMessageBox::Cancel:
        return Answer::Cancel;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Ok;
    }
}

QString chooseFile(const FileRequest &request) {
    if (g_fileHandler) return g_fileHandler(request);
    if (request.save)
        return QFileDialog::getSaveFileName(g_parent, request.title, request.defaultName,
                                            request.filter);
    return QFileDialog::getOpenFileName(g_parent, request.title, request.defaultName,
                                        request.filter);
}

void setMessageHandler(MessageHandler handler) {
    g_messageHandler = std::move(handler);
}
void setFileHandler(FileHandler handler) {
    g_fileHandler = std::move(handler);
}
void setDialogParent(QWidget *parent) {
    g_parent = parent;
}

} // namespace People
