#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;

// The choice of the COM port at each connect. "OK" opens the chosen port and runs the handshake;
// "Exit" runs the handshake on whatever is open, which without a port tells the user so.
class FrmComPort : public QDialog {
    Q_OBJECT
public:
    explicit FrmComPort(QWidget *parent = nullptr);

    // The port list, "COM1" .. "COM16" (its name is historical).
    QComboBox *combBPS;
    // Where the selected COM number leads on this machine, or why it would not open.
    QLabel *lblDevice;
    // A USB adapter that holds replies back, with the line that changes it; hidden otherwise.
    QLabel *lblLatency;
    QPushButton *cmdOK;
    QPushButton *cmdExit;

    // The start of each showing: the list filled, its first entry selected.
    void Form_Load();

public slots:
    void cmdOK_Click();
    void cmdExit_Click();

private:
    void showDevice();
};

// The dialog, made once on first use; a test drives it through this while it runs modally.
FrmComPort *ComPortDialog();
