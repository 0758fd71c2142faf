#include "app/frmcomport.h"

#include "app/frmvxcfg.h"
#include "app/session.h"
#include "link/comports.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "ui/people.h"
#include "ui/widgets.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kPorts = 16;
} // namespace

FrmComPort::FrmComPort(QWidget *parent) : QDialog(parent) {
    setObjectName("frmComPort");
    setWindowTitle(QStringLiteral("COM Port Setting"));
    setModal(true);

    auto *layout = new QVBoxLayout(this);
    QLabel *heading = MakeLabel(this, QString(), QStringLiteral("COM Port Setting"));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    layout->addWidget(heading);

    auto *portRow = new QHBoxLayout;
    portRow->addWidget(MakeLabel(this, QString(), QStringLiteral("Port No.")));
    combBPS = new QComboBox(this);
    combBPS->setObjectName("combBPS");
    combBPS->setMaxVisibleItems(kPorts);
    portRow->addWidget(combBPS);
    lblDevice = MakeLabel(this, "lblDevice", QString());
    lblDevice->setMinimumWidth(220);
    lblDevice->setWordWrap(true);
    portRow->addWidget(lblDevice, 1);
    layout->addLayout(portRow);
    lblLatency = MakeLabel(this, "lblLatency", QString());
    lblLatency->setWordWrap(true);
    lblLatency->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblLatency->hide();
    layout->addWidget(lblLatency);

    QGroupBox *setting = MakeFrame(this, "fraSetting", QStringLiteral("Setting"));
    auto *settings = new QVBoxLayout(setting);
    for (const char *text :
         {"Baud Rate : 9600bps", "Parity : none", "Bit Length : 8", "Stop Bit : 1"})
        settings->addWidget(MakeLabel(setting, QString(), QString::fromLatin1(text)));
    layout->addWidget(setting);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    cmdOK = MakeButton(this, "cmdOK", QStringLiteral("OK"));
    cmdExit = MakeButton(this, "cmdExit", QStringLiteral("Exit"));
    cmdOK->setDefault(true);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdExit);
    layout->addLayout(buttons);

    connect(cmdOK, &QPushButton::clicked, this, &FrmComPort::cmdOK_Click);
    connect(cmdExit, &QPushButton::clicked, this, &FrmComPort::cmdExit_Click);
    connect(combBPS, &QComboBox::currentIndexChanged, this, &FrmComPort::showDevice);
    Form_Load();
}

void FrmComPort::Form_Load() {
    // Every connect starts from the first port; the last one used is not remembered.
    combBPS->clear();
    for (int n = 1; n <= kPorts; ++n)
        combBPS->addItem(QStringLiteral("COM%1").arg(n));
    combBPS->setCurrentIndex(0);
    showDevice();
}

void FrmComPort::showDevice() {
    if (combBPS->currentIndex() < 0) return;
    const int com = combBPS->currentIndex() + 1;
    lblDevice->setText(ComPorts::describe(com));
    const QString advice = ComPorts::latencyAdvice(ComPorts::resolve(com));
    lblLatency->setText(advice);
    lblLatency->setVisible(!advice.isEmpty());
    adjustSize();
}

void FrmComPort::cmdOK_Click() {
    ComPortNo = combBPS->currentIndex() + 1;
    ComSpeed = QStringLiteral("9600");
    QString error;
    SerialLine *line = Link::port();
    if (!line || !line->open(ComPortNo, &error)) {
        // Stay open, so that another port can be chosen; the reason shows beside the list.
        DisconnectRack();
        lblDevice->setText(error.isEmpty() ? ComPorts::describe(ComPortNo) : error);
        People::message(QStringLiteral("invalid port"));
        return;
    }
    accept();
    if (!ConnectRack()) DisconnectRack();
}

void FrmComPort::cmdExit_Click() {
    if (!ConnectRack()) CommandsOff();
    reject();
}

FrmComPort *ComPortDialog() {
    static QPointer<FrmComPort> dialog;
    if (!dialog) dialog = new FrmComPort(MainWindow());
    return dialog;
}
