#include "comm/frmzkfd.h"

#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/textroutines.h"
#include "ui/widgets.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

const QString kGroup = QStringLiteral("50");
// The one model whose main/sub switch delay can be set.
const QString kRedundantModel = QStringLiteral("VX-ZKFD1W");

} // namespace

FrmZKFD::FrmZKFD(QWidget *parent)
    : CommDialog(QStringLiteral("frmZKFD"), QStringLiteral("CC-LinkIE Setting"), parent) {
    buildForm();
    connect(cmdUp, &QPushButton::clicked, this, &FrmZKFD::cmdUp_Click);
    connect(cmdDown, &QPushButton::clicked, this, &FrmZKFD::cmdDown_Click);
}

void FrmZKFD::buildForm() {
    QGroupBox *frame = MakeFrame(this, QStringLiteral("fraCCLinkIE"), QStringLiteral("CC-LinkIE"));
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(10);
    txbNetWorkNo =
        addField(grid, 0, QStringLiteral("NetWork No."), QStringLiteral("txbNetWorkNo"), 5);
    txbStationID =
        addField(grid, 1, QStringLiteral("Station ID"), QStringLiteral("txbStationID"), 5, true);
    txbMACAdd =
        addField(grid, 2, QStringLiteral("MAC address"), QStringLiteral("txbMACAdd"), 17, true);
    txbLinkStatus =
        addField(grid, 3, QStringLiteral("Link Status"), QStringLiteral("txbLinkStatus"), 8, true);
    txbRedundant = addField(grid, 4, QStringLiteral("Main/Sub switching delay time "),
                            QStringLiteral("txbRedundant"), 5);
    grid->addWidget(MakeLabel(frame, QString(), QStringLiteral(" (0 - 5000 msec)")), 5, 0);
    grid->setColumnStretch(1, 1);
    body()->addWidget(frame);

    addTransferCommands();

    for (QLineEdit *box : {txbNetWorkNo, txbRedundant}) {
        InstallKeyFilter(box, Comm::KeyDigits);
        InstallSelectAllOnFocus(box);
    }
    Comm::InstallLeaveCheck(txbNetWorkNo, cmdExit, [this] { return CheckNetworkNo(); });
    Comm::InstallLeaveCheck(txbRedundant, cmdExit, [this] { return CheckSwitchDelay(); });
}

void FrmZKFD::OpenView(const QString &) {
    Upload_First_File();
}

void FrmZKFD::Upload_First_File() {
    txbNetWorkNo->setText(QStringLiteral("1"));
    txbStationID->clear();
    txbMACAdd->clear();
    txbLinkStatus->clear();
    txbRedundant->setEnabled(CommCardName.left(9) == kRedundantModel);
    cmdUp_Click();
    // What the last check or Download kept is what the user meant, whatever the card says.
    if (!Comm::CommRecord().Param(20).isEmpty())
        txbNetWorkNo->setText(Comm::CommRecord().Param(20));
    if (!Comm::CommRecord().Param(21).isEmpty())
        txbRedundant->setText(Comm::CommRecord().Param(21));
}

// The card's silence leaves a box empty; there is no failure path here.
void FrmZKFD::cmdUp_Click() {
    if (isBusy()) return;
    Run run(this);
    Comm::SelectCommCard(kGroup, QStringLiteral("1"));
    txbNetWorkNo->setText(Comm::ReadValue(kGroup, QStringLiteral("88")));
    txbStationID->setText(Comm::ReadValue(kGroup, QStringLiteral("90")));
    txbMACAdd->setText(Comm::ReadValue(kGroup, QStringLiteral("87")));
    txbLinkStatus->setText(Comm::ReadValue(kGroup, QStringLiteral("92")));
    txbRedundant->setText(Comm::ReadValue(kGroup, QStringLiteral("97")));
}

// A bad value stops at its field: a bad network number leaves the delay unsent, a bad delay
// comes after the network number went out.
void FrmZKFD::cmdDown_Click() {
    if (isBusy()) return;
    Run run(this);
    Comm::SelectCommCard(kGroup, QStringLiteral("F"));
    if (!CheckNetworkNo()) return;
    WriteData(10, kGroup, QStringLiteral("88"), txbNetWorkNo->text());
    Comm::CommRecord().Param(20) = txbNetWorkNo->text();
    // The delay is checked on a card without it too; its box holds what the card reported.
    if (!CheckSwitchDelay()) return;
    WriteData(10, kGroup, QStringLiteral("97"), txbRedundant->text());
    Comm::CommRecord().Param(21) = txbRedundant->text();
}

bool FrmZKFD::CheckNetworkNo() {
    if (!Comm::CheckNumber(txbNetWorkNo->text(), 1, 239,
                           QStringLiteral("Please enter number 1 - 239")))
        return false;
    Comm::CommRecord().Param(20) = txbNetWorkNo->text();
    return true;
}

bool FrmZKFD::CheckSwitchDelay() {
    if (!Comm::CheckNumber(txbRedundant->text(), 0, 5000,
                           QStringLiteral("Please enter number 0 - 5000")))
        return false;
    Comm::CommRecord().Param(21) = txbRedundant->text();
    return true;
}
