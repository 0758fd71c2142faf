#include "views/discrete/frmxf2.h"

#include "link/link.h"
#include "rack/cardtable.h"
#include "rack/connection.h"
#include "ui/people.h"

#include <QCoreApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QString &toolPathOverride() {
    static QString path;
    return path;
}

#ifdef Q_OS_WIN
const QString kToolFile = QStringLiteral("VXCFG_TC.exe");
#else
const QString kToolFile = QStringLiteral("VXCFG_TC");
#endif

// The numbers as the program has always written them: each with a blank in front.
QString toolArguments(int comPortNo, int cardNo) {
    return QStringLiteral(" %1 %2").arg(comPortNo).arg(cardNo);
}

// Runs the tool and waits for its end without running events: the program stands still while
// the tool has the port. False when it could not be started.
bool RunSiblingTool(int comPortNo, int cardNo) {
    QProcess tool;
    tool.setProgram(SiblingToolPath());
#ifdef Q_OS_WIN
    tool.setNativeArguments(toolArguments(comPortNo, cardNo));
#else
    tool.setArguments(toolArguments(comPortNo, cardNo).split(QLatin1Char(' '), Qt::SkipEmptyParts));
#endif
    tool.setProcessChannelMode(QProcess::ForwardedChannels);
    tool.start();
    if (!tool.waitForStarted(-1)) return false;
    tool.waitForFinished(-1);
    return true;
}

} // namespace

QString SiblingToolPath() {
    if (!toolPathOverride().isEmpty()) return toolPathOverride();
    return QDir(QCoreApplication::applicationDirPath()).filePath(kToolFile);
}

void setSiblingToolPath(const QString &path) {
    toolPathOverride() = path;
}

QString SiblingToolCommandLine(int comPortNo, int cardNo) {
    return QDir::toNativeSeparators(SiblingToolPath()) + QLatin1Char(' ') +
           toolArguments(comPortNo, cardNo);
}

FrmXF2::FrmXF2(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan;
              plan.formName = QStringLiteral("frmXF2");
              plan.tag = QStringLiteral("XF2");
              plan.channels = 0;
              plan.headerFrame = QStringLiteral("fraShowModel");
              plan.hasUpDown = false;
              return plan;
          }(),
          parent) {}

void FrmXF2::buildBody(QVBoxLayout *layout) {
    auto *row = new QHBoxLayout;
    cmdSettings = new QPushButton("Settings", this);
    cmdSettings->setObjectName("cmdSettings");
    cmdSettings->setAutoDefault(false);
    row->addWidget(cmdSettings);
    row->addStretch();
    layout->addLayout(row);
    layout->addStretch();
    connect(cmdSettings, &QPushButton::clicked, this, &FrmXF2::cmdSettings_Click);
}

void FrmXF2::OpenView(const QString &model) {
    WaitForTimer->stop();
    CycleActive = false;
    CardView::OpenView(model);
}

void FrmXF2::cmdSettings_Click() {
    // The whole program steps aside while the tool has the port: the frame this view lives in.
    QWidget *frame = window() != this ? window() : nullptr;
    if (frame) frame->hide();
    if (SerialLine *port = Link::port()) port->close();
    if (!RunSiblingTool(ComPortNo, CardNo))
        People::message("Can't execute VXCFG_TC.exe", QString(), People::Icon::Stop);
    if (SerialLine *port = Link::port()) {
        QString error;
        if (!port->open(ComPortNo, &error)) {
            // The session cannot go on without its port; say why and end it cleanly.
            People::message(error, QString(), People::Icon::Exclamation);
            DisconnectRack();
        }
    }
    if (frame) frame->show();
}
