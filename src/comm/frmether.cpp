#include "comm/frmether.h"

#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using Comm::ReadRequired;

namespace {

const QString kZero = QStringLiteral("00");
constexpr int kSockets = 4;

QString portItem(int n) {
    return QString::number(60 + n);
}

QString lingerItem(int n) {
    return QString::number(70 + n);
}

} // namespace

FrmEther::FrmEther(QWidget *parent)
    : CommDialog(QStringLiteral("frmEther"), QStringLiteral("Ethernet Settings"), parent) {
    buildForm();
    connect(cmdUp, &QPushButton::clicked, this, &FrmEther::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmEther::cmdDown_Click);
    setFace(false);
}

void FrmEther::buildForm() {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    const auto addressRow = [&](int row, const QString &caption, const QString &control) {
        QLabel *label = MakeLabel(this, QString(), caption);
        grid->addWidget(label, row, 0);
        Comm::AddressFields fields = Comm::MakeAddressFields(this, control);
        grid->addLayout(fields.layout, row, 1);
        for (QLineEdit *part : fields.parts)
            connect(part, &QLineEdit::textEdited, this, [this, part] { addressPartEdited(part); });
        return std::pair{label, fields};
    };
    txtIP = addressRow(0, QStringLiteral("IP Address"), QStringLiteral("txtIP")).second;
    txtSNM = addressRow(1, QStringLiteral("Subnet  Mask"), QStringLiteral("txtSNM")).second;
    std::tie(Label10, txtDGate) =
        addressRow(2, QStringLiteral("Default Gateway"), QStringLiteral("txtDGate"));
    Label10->setObjectName(QStringLiteral("Label10"));

    lblIPSel = MakeLabel(this, QStringLiteral("lblIPSel"),
                         QStringLiteral("Use IP Address          0:CONFIG 1:DHCP 2:BOOTP"));
    txtIPsel = ViewBuilders::field(this, QStringLiteral("txtIPsel"), 2);
    txtIPsel->setAlignment(Qt::AlignCenter);
    InstallSelectAllOnFocus(txtIPsel);
    auto *ipSel = new QHBoxLayout;
    ipSel->addWidget(lblIPSel);
    ipSel->addWidget(txtIPsel);
    ipSel->addStretch(1);
    grid->addLayout(ipSel, 3, 0, 1, 2);

    grid->addWidget(MakeLabel(this, QString(), QStringLiteral("MAC Address")), 4, 0);
    auto *mac = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        QLabel *label =
            MakeLabel(this, ViewBuilders::arrayName(QStringLiteral("lblMac"), i), QString());
        label->setFrameShape(QFrame::StyledPanel);
        label->setMinimumWidth(110);
        lblMac.at(size_t(i)) = label;
        mac->addWidget(label);
    }
    mac->addStretch(1);
    grid->addLayout(mac, 4, 1);
    body()->addLayout(grid);

    // The four sockets: a port and, in its own column, the linger time of each.
    Frame1 = MakeFrame(this, QStringLiteral("Frame1"), QStringLiteral("TCP Socket"));
    auto *sockets = new QGridLayout(Frame1);
    sockets->setHorizontalSpacing(10);
    int caption = 0;
    const auto lingerCaption = [&](const QString &text) {
        QLabel *label =
            MakeLabel(Frame1, ViewBuilders::arrayName(QStringLiteral("Label4"), caption++), text);
        label->setAlignment(Qt::AlignCenter);
        return label;
    };
    sockets->addWidget(lingerCaption(QStringLiteral("Linger")), 0, 3);
    sockets->addWidget(lingerCaption(QStringLiteral("(0.1sec)")), 1, 3);
    for (int n = 1; n <= kSockets; ++n) {
        const int row = n + 1;
        sockets->addWidget(MakeLabel(Frame1, QString(), QStringLiteral("Port%1").arg(n)), row, 0);
        QLineEdit *port =
            ViewBuilders::field(Frame1, ViewBuilders::arrayName(QStringLiteral("txtPort"), n), 6);
        InstallSelectAllOnFocus(port);
        connect(port, &QLineEdit::textEdited, this, [port] {
            // The caret stays where the user left it; the test only tells.
            const int caret = port->cursorPosition();
            AddressPartValue(port->text());
            port->setCursorPosition(caret);
        });
        txtPort.at(size_t(n)) = port;
        sockets->addWidget(port, row, 1);
        sockets->addWidget(lingerCaption(QString::number(n)), row, 2);
        QLineEdit *linger = ViewBuilders::field(
            Frame1, ViewBuilders::arrayName(QStringLiteral("txtTimeout"), n), 5);
        InstallSelectAllOnFocus(linger);
        txtTimeout.at(size_t(n)) = linger;
        sockets->addWidget(linger, row, 3);
    }
    sockets->setColumnStretch(4, 1);
    body()->addWidget(Frame1);

    addTransferCommands();
}

bool FrmEther::isIpFace(const QString &model) {
    return model.size() >= 7 && model.startsWith(QLatin1String("VX-ZTIP"));
}

void FrmEther::setFace(bool ipFace) {
    m_ipFace = ipFace;
    Frame1->setVisible(!ipFace);
    for (QLabel *caption : Frame1->findChildren<QLabel *>())
        if (caption->objectName().startsWith(QLatin1String("Label4"))) caption->setVisible(!ipFace);
    for (int n = 1; n <= kSockets; ++n)
        txtTimeout.at(size_t(n))->setVisible(!ipFace);
    txtDGate.setVisible(ipFace);
    Label10->setVisible(ipFace);
    lblIPSel->setVisible(ipFace);
    txtIPsel->setVisible(ipFace);
}

void FrmEther::OpenView(const QString &model) {
    setFace(isIpFace(model));
    cmdUp_Click();
}

void FrmEther::addressPartEdited(QLineEdit *box) {
    int caret = box->cursorPosition();
    if (box->text().size() > 3) {
        box->setText(box->text().left(3));
        caret = std::min(caret, 3);
    }
    box->setCursorPosition(caret);
    const int value = AddressPartValue(box->text());
    if (value < 0 || value > 255)
        People::message(QStringLiteral("Please enter 0 to 255."), QString(),
                        People::Icon::Information);
    box->setCursorPosition(caret);
}

void FrmEther::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    if (!uploadCard()) Comm::ShowIncomplete(Comm::Transfer::Upload);
}

bool FrmEther::uploadCard() {
    if (!Comm::SelectCommCardAndTest(QStringLiteral("01"), QStringLiteral("1"))) return false;
    QString value;
    if (!ReadRequired(kZero, QStringLiteral("59"), value)) return false;
    txtIP.setText(value);
    if (m_ipFace) {
        if (!ReadRequired(kZero, QStringLiteral("78"), value)) return false;
        txtDGate.setText(value);
    }
    if (!ReadRequired(kZero, QStringLiteral("60"), value)) return false;
    txtSNM.setText(value);
    // The two halves of the MAC address each come after a switch of their own.
    if (!ReadRequired(kZero, QStringLiteral("57"), value)) return false;
    lblMac[0]->setText(value);
    WriteData(3, kZero, QStringLiteral("1"), QStringLiteral("F"));
    if (!ReadRequired(kZero, QStringLiteral("58"), value)) return false;
    lblMac[1]->setText(value);
    WriteData(3, kZero, QStringLiteral("1"), QStringLiteral("1"));
    if (!m_ipFace) {
        for (int n = 1; n <= kSockets; ++n) {
            if (!ReadRequired(kZero, portItem(n), value)) return false;
            txtPort.at(size_t(n))->setText(value);
        }
        for (int n = 1; n <= kSockets; ++n) {
            if (!ReadRequired(kZero, lingerItem(n), value)) return false;
            txtTimeout.at(size_t(n))->setText(value);
        }
    } else {
        if (!ReadRequired(kZero, QStringLiteral("77"), value)) return false;
        txtIPsel->setText(value);
    }
    return true;
}

void FrmEther::cmdDown_Click() {
    if (isBusy()) return;
    Run run(this);
    if (!Comm::SelectCommCardAndTest(QStringLiteral("01"), QStringLiteral("1"))) {
        Comm::ShowIncomplete(Comm::Transfer::Download);
        return;
    }

    // All or nothing: an address with a gap is not sent at all.
    QString missing;
    bool portsComplete = true;
    for (int n = 1; n <= kSockets; ++n)
        portsComplete = portsComplete && !txtPort.at(size_t(n))->text().isEmpty();
    if (!txtIP.complete() || (m_ipFace && !txtDGate.complete()))
        missing = QStringLiteral("Please enter number in IP Address.");
    else if (!txtSNM.complete())
        missing = QStringLiteral("Please enter number in Subnet Mask.");
    else if (!m_ipFace && !portsComplete)
        missing = QStringLiteral("Please enter number in TCP Port No.");
    if (!missing.isEmpty()) {
        People::message(missing, QString(), People::Icon::Information);
        return;
    }

    if (m_ipFace) WriteData(3, kZero, QStringLiteral("77"), txtIPsel->text());
    WriteData(3, kZero, QStringLiteral("59"), txtIP.text());
    if (m_ipFace) WriteData(3, kZero, QStringLiteral("78"), txtDGate.text());
    WriteData(3, kZero, QStringLiteral("60"), txtSNM.text());
    if (!m_ipFace) {
        for (int n = 1; n <= kSockets; ++n)
            WriteData(3, kZero, portItem(n), txtPort.at(size_t(n))->text());
        for (int n = 1; n <= kSockets; ++n)
            WriteData(3, kZero, lingerItem(n), txtTimeout.at(size_t(n))->text());
    }
}
