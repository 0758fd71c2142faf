#include "app/allviews.h"
#include "app/frmvxcfg.h"
#include "link/link.h"
#include "link/qserialline.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>
#include <QTimer>
#include <cstdio>

int main(int argc, char **argv) {
    QElapsedTimer sinceMain;
    sinceMain.start();
    QApplication app(argc, argv);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/vxcfg.png")));
    // Ties the windows to the desktop entry, whose icon a task bar shows.
    QGuiApplication::setDesktopFileName(QStringLiteral("vxcfg"));
    // Settings files are looked for beside the program.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    Link::setPort(std::make_unique<QSerialLine>());
    RegisterAllViews();
    FrmVxCfg window;
    window.show();
    // For the start-up benchmark: once the shown window has been laid out and painted (the
    // posted events run before a zero timer), say so and leave.
    if (qEnvironmentVariableIsSet("VXCFG_QUIT_WHEN_SHOWN")) {
        QTimer::singleShot(0, &app, [&] {
            std::printf("shown %.1f ms after main\n", sinceMain.nsecsElapsed() / 1e6);
            std::fflush(stdout);
            app.quit();
        });
    }
    const int code = app.exec();
    Link::setPort(nullptr);
    return code;
}
