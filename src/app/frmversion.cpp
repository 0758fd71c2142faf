#include "app/frmversion.h"

#include "app/frmvxcfg.h"
#include "ui/widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

FrmVersion::FrmVersion(QWidget *parent) : QDialog(parent) {
    setObjectName("frmVersion");
    setWindowTitle(QStringLiteral("Version VXCFG "));
    setModal(true);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 12);
    auto *line = new QHBoxLayout;
    line->addStretch(1);
    line->addWidget(MakeLabel(this, QString(), QStringLiteral("VXCFG")));
    lblVersion = MakeLabel(this, "lblVersion", QStringLiteral("2.56.06"));
    line->addWidget(lblVersion);
    line->addStretch(1);
    layout->addLayout(line);
    layout->addStretch(1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    cmdOK = MakeButton(this, "cmdOK", QStringLiteral("OK"));
    cmdOK->setDefault(true);
    buttons->addWidget(cmdOK);
    layout->addLayout(buttons);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    setFixedSize(280, 110);
}

FrmVersion *VersionDialog() {
    static QPointer<FrmVersion> dialog;
    if (!dialog) dialog = new FrmVersion(MainWindow());
    return dialog;
}
