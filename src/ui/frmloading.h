#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

// The progress window of long commands (frmLoading): it shows without blocking and stays above
// the main window while the command pumps events.
class FrmLoading : public QDialog {
    Q_OBJECT
public:
    explicit FrmLoading(QWidget *parent = nullptr);
    QProgressBar *pgBarLoading;
    QLabel *lblLoading;
};

// The one progress window, made on first use.
FrmLoading *LoadingDialog();

// Makes the window ready (minimum 0, value 0, `maximum`, caption text) and shows it.
void OpenProgress(int maximum, const QString &text);
void SetProgress(int value);
void AdvanceProgress();
void CloseProgress();
