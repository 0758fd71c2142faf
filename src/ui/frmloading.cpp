#include "ui/frmloading.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QVBoxLayout>

FrmLoading::FrmLoading(QWidget *parent)
    : QDialog(parent,
              Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      pgBarLoading(new QProgressBar(this)), lblLoading(new QLabel(this)) {
    setObjectName("frmLoading");
    setWindowTitle(QStringLiteral("VXCFG"));
    setModal(false);
    pgBarLoading->setObjectName("pgBarLoading");
    pgBarLoading->setTextVisible(false);
    lblLoading->setObjectName("lblLoading");
    lblLoading->setAlignment(Qt::AlignCenter);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblLoading);
    layout->addWidget(pgBarLoading);
    setFixedSize(300, 90);
}

FrmLoading *LoadingDialog() {
    static QPointer<FrmLoading> dialog;
    if (!dialog) {
        QWidget *parent = nullptr;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->objectName() == QLatin1String("frmVxCfg")) parent = w;
        dialog = new FrmLoading(parent);
    }
    return dialog;
}

void OpenProgress(int maximum, const QString &text) {
    FrmLoading *dialog = LoadingDialog();
    dialog->pgBarLoading->setRange(0, maximum);
    dialog->pgBarLoading->setValue(0);
    dialog->lblLoading->setText(text);
    dialog->show();
    dialog->raise();
}

void SetProgress(int value) {
    FrmLoading *dialog = LoadingDialog();
    dialog->pgBarLoading->setValue(std::min(value, dialog->pgBarLoading->maximum()));
}

void AdvanceProgress() {
    SetProgress(LoadingDialog()->pgBarLoading->value() + 1);
}

void CloseProgress() {
    LoadingDialog()->hide();
}
