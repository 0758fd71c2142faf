#pragma once

#include "ui/viewregistry.h"

#include <QMainWindow>
#include <functional>

class QAction;
class QComboBox;
class QGroupBox;
class QLabel;
class QMenu;
class QPushButton;
class QTimer;
class TrafficLogModel;

// The frame of the program: menus, the panel of commands with the card selector and the link
// indicators, and the work area in which exactly one view is on show.
//
// The members below carry the controls' names (each is also the widget's objectName, so tests
// find them with findChild). The menus' handlers and the buttons' click handlers are the slots
// named <control>_Click.
//
// Modal dialogs run their own event loop; a test reaches them while they run through
// ComPortDialog() and VersionDialog() (frmcomport.h, frmversion.h), or through ViewByName() for
// the comm card dialogs, e.g. from a QTimer::singleShot(0, ...) armed before the command.
class FrmVxCfg : public QMainWindow, public ViewHost {
    Q_OBJECT
public:
    explicit FrmVxCfg(QWidget *parent = nullptr);
    ~FrmVxCfg() override;

    // Panel "Module select"
    QGroupBox *fraUnit;
    QComboBox *cboCardNo;
    QPushButton *cmdOverView;
    // Panel "Com. Card"
    QGroupBox *Frame1;
    QPushButton *CmdUpload;
    QPushButton *cmdComm;
    // Panel "Monitoring"
    QGroupBox *Frame2;
    QPushButton *cmdStart;
    QPushButton *cmdStop;
    // Panel "I/O Card DipSW"
    QGroupBox *Frame3;
    QPushButton *cmdSWcheck;
    // Panel of the comm card's special settings
    QWidget *fraCmd;
    QPushButton *cmdSpecialSetting;
    // Link indicators
    QLabel *lblComPortNo;
    QWidget *shpLamp;
    QLabel *lblConStatus;
    // Present so that a disconnect can stop it, as every view's tick is stopped.
    QTimer *WaitForTimer;

    QMenu *mnuFiles;
    QAction *mnuFilesOpen;
    QAction *mnuFilesSave;
    QAction *mnuFilesVar;
    QAction *mnuFilesEnd;
    QMenu *mnuConnect;
    QAction *mnuConnectConnect;
    QAction *mnuConnectDisconnect;
    QMenu *mnuHelp;
    QAction *mnuHelpVersion;
    // The program's own tools, beside what the rack needs: they watch and change nothing.
    QMenu *mnuTools;
    QAction *mnuToolsTrafficLog;

    // The log of the line, recording since the window was made.
    TrafficLogModel *trafficLog() const { return m_trafficLog; }

    // Where the views live.
    QWidget *workArea() const { return m_workArea; }
    void placeView(QWidget *view) override;
    void hideViewsBut(QWidget *view) override;

    // Entries 1..16 of the card selector: "01:" .. "16:".
    void ClearCardSelector();
    // Entries 1..16 with the display name of each slot's card.
    void FillCardSelector();
    // Selects entry 0 and puts the overview on show, and leaves the commands as they are; for
    // commands that turn the commands off and on themselves (the rack scan, the monitor).
    void SelectOverview();

    // Makes the selector's list `rows` rows deep, so that it needs no scroll bar.
    static void Y_SetComboListRows(QComboBox *combo, int rows);

    // What ending the program does once the port is closed: leaving the event loops in the
    // program; tests put a recorder in its place.
    void setEndProgram(std::function<void()> end) { m_endProgram = std::move(end); }

public slots:
    void mnuFilesOpen_Click();
    void mnuFilesSave_Click();
    void mnuFilesEnd_Click();
    void mnuConnectConnect_Click();
    void mnuConnectDisconnect_Click();
    void mnuHelpVersion_Click();
    void mnuToolsTrafficLog_Click();
    void cboCardNo_Click();
    void cmdOverView_Click();
    void CmdUpload_Click();
    void cmdComm_Click();
    void cmdStart_Click();
    void cmdStop_Click();
    void cmdSWcheck_Click();
    void cmdSpecialSetting_Click();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildMenus();
    QWidget *buildPanel();
    void Form_Load();
    void EndProgram();
    bool showDialog(const QString &formName, bool start);

    QWidget *m_workArea;
    TrafficLogModel *m_trafficLog;
    std::function<void()> m_endProgram;
    bool m_ending = false;
};

// The main window; null until one is made, and in tests that make none.
FrmVxCfg *MainWindow();
