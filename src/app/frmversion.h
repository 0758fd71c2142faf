#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

// The program's version, from the Help menu.
class FrmVersion : public QDialog {
    Q_OBJECT
public:
    explicit FrmVersion(QWidget *parent = nullptr);

    QLabel *lblVersion;
    QPushButton *cmdOK;
};

// The dialog, made once on first use; a test reaches it through this while it runs modally.
FrmVersion *VersionDialog();
