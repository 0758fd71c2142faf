#include "app/allviews.h"
#include "app/frmvxcfg.h"
#include "link/link.h"
#include "link/qserialline.h"

#include <QApplication>
#include <QDir>

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    // Settings files are looked for beside the program.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    Link::setPort(std::make_unique<QSerialLine>());
    RegisterAllViews();
    FrmVxCfg window;
    window.show();
    const int code = app.exec();
    Link::setPort(nullptr);
    return code;
}
