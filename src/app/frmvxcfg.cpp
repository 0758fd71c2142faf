#include "app/frmvxcfg.h"

#include "app/frmcomport.h"
#include "app/frmtrafficlog.h"
#include "app/frmversion.h"
#include "app/session.h"
#include "app/trafficlog.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "rack/projectfile.h"
#include "rack/registry.h"
#include "rack/scan.h"
#include "rack/swcheck.h"
#include "ui/people.h"
#include "ui/viewregistry.h"
#include "ui/widgets.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFocusEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QPointer<FrmVxCfg> g_mainWindow;

constexpr int kPanelWidth = 180;
constexpr int kSelectorEntries = 17;

QString selectorNumber(int slot) {
    return QStringLiteral("%1:").arg(slot, 2, 10, QLatin1Char('0'));
}

QAction *menuItem(QMenu *menu, const QString &name, const QString &caption) {
    QAction *action = menu->addAction(caption);
    action->setObjectName(name);
    return action;
}

} // namespace

FrmVxCfg *MainWindow() {
    return g_mainWindow;
}

FrmVxCfg::FrmVxCfg(QWidget *parent)
    : QMainWindow(parent), m_trafficLog(new TrafficLogModel(this)),
      m_endProgram([] { QCoreApplication::exit(0); }) {
    g_mainWindow = this;
    SetViewHost(this);
    SetDisconnectHandler(ShowDisconnected);
    setObjectName("frmVxCfg");
    setWindowTitle(QStringLiteral("VXCFG"));
    People::setDialogParent(this);

    WaitForTimer = new QTimer(this);
    WaitForTimer->setObjectName("WaitForTimer");

    buildMenus();
    auto *central = new QWidget(this);
    auto *layout = new QHBoxLayout(central);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(buildPanel(), 0, Qt::AlignTop);
    m_workArea = new QWidget(central);
    m_workArea->setObjectName("workArea");
    m_workArea->setFixedSize(kViewWidth, kViewHeight);
    layout->addWidget(m_workArea, 0, Qt::AlignTop);
    setCentralWidget(central);

    // A fixed frame: no sizing border, no maximize box.
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    setWindowFlag(Qt::MSWindowsFixedSizeDialogHint, true);
    setFixedSize(sizeHint());

    Form_Load();
}

FrmVxCfg::~FrmVxCfg() {
    if (g_mainWindow == this) {
        g_mainWindow = nullptr;
        SetViewHost(nullptr);
        SetDisconnectHandler({});
    }
    People::setDialogParent(nullptr);
}

void FrmVxCfg::buildMenus() {
    mnuFiles = menuBar()->addMenu(QStringLiteral("File"));
    mnuFiles->setObjectName("mnuFiles");
    mnuFilesOpen = menuItem(mnuFiles, "mnuFilesOpen", QStringLiteral("Open"));
    mnuFilesSave = menuItem(mnuFiles, "mnuFilesSave", QStringLiteral("Save"));
    mnuFilesVar = mnuFiles->addSeparator();
    mnuFilesVar->setObjectName("mnuFilesVar");
    mnuFilesEnd = menuItem(mnuFiles, "mnuFilesEnd", QStringLiteral("Exit"));

    mnuConnect = menuBar()->addMenu(QStringLiteral("Connect"));
    mnuConnect->setObjectName("mnuConnect");
    mnuConnectConnect = menuItem(mnuConnect, "mnuConnectConnect", QStringLiteral("Connect"));
    mnuConnectDisconnect =
        menuItem(mnuConnect, "mnuConnectDisconnect", QStringLiteral("Disconnect"));

    mnuHelp = menuBar()->addMenu(QStringLiteral("Help"));
    mnuHelp->setObjectName("mnuHelp");
    mnuHelpVersion = menuItem(mnuHelp, "mnuHelpVersion", QStringLiteral("Version"));

    mnuTools = menuBar()->addMenu(QStringLiteral("Tools"));
    mnuTools->setObjectName("mnuTools");
    mnuToolsTrafficLog = menuItem(mnuTools, "mnuToolsTrafficLog", QStringLiteral("Traffic Log"));

    connect(mnuFilesOpen, &QAction::triggered, this, &FrmVxCfg::mnuFilesOpen_Click);
    connect(mnuFilesSave, &QAction::triggered, this, &FrmVxCfg::mnuFilesSave_Click);
    connect(mnuFilesEnd, &QAction::triggered, this, &FrmVxCfg::mnuFilesEnd_Click);
    connect(mnuConnectConnect, &QAction::triggered, this, &FrmVxCfg::mnuConnectConnect_Click);
    connect(mnuConnectDisconnect, &QAction::triggered, this, &FrmVxCfg::mnuConnectDisconnect_Click);
    connect(mnuHelpVersion, &QAction::triggered, this, &FrmVxCfg::mnuHelpVersion_Click);
    connect(mnuToolsTrafficLog, &QAction::triggered, this, &FrmVxCfg::mnuToolsTrafficLog_Click);
}

QWidget *FrmVxCfg::buildPanel() {
    auto *panel = new QWidget(this);
    panel->setObjectName("panel");
    panel->setFixedWidth(kPanelWidth);
    auto *column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);

    fraUnit = MakeFrame(panel, "fraUnit", QStringLiteral("Module select"));
    auto *unit = new QVBoxLayout(fraUnit);
    unit->addWidget(MakeLabel(fraUnit, QString(), QStringLiteral("Card No.")));
    cboCardNo = new QComboBox(fraUnit);
    cboCardNo->setObjectName("cboCardNo");
    cboCardNo->addItem(QStringLiteral("00:OverView"));
    for (int slot = 1; slot < kSelectorEntries; ++slot)
        cboCardNo->addItem(selectorNumber(slot));
    cboCardNo->installEventFilter(this);
    unit->addWidget(cboCardNo);
    cmdOverView = MakeButton(fraUnit, "cmdOverView", QStringLiteral("OverView"));
    unit->addWidget(cmdOverView);
    column->addWidget(fraUnit);

    // The command frames: a titled row of buttons each.
    struct ButtonPlace {
        QPushButton *&button;
        const char *name;
        QString caption;
    };
    const auto buttonRow = [&](const char *frameName, const QString &title,
                               std::initializer_list<ButtonPlace> buttons) {
        QGroupBox *frame = MakeFrame(panel, frameName, title);
        auto *row = new QHBoxLayout(frame);
        for (const ButtonPlace &place : buttons) {
            place.button = MakeButton(frame, place.name, place.caption);
            row->addWidget(place.button);
        }
        column->addWidget(frame);
        return frame;
    };
    Frame1 = buttonRow("Frame1", QStringLiteral("Com. Card"),
                       {{CmdUpload, "CmdUpload", QStringLiteral("Upload")},
                        {cmdComm, "cmdComm", QStringLiteral("Setting")}});
    Frame2 = buttonRow("Frame2", QStringLiteral("Monitoring"),
                       {{cmdStart, "cmdStart", QStringLiteral("Start")},
                        {cmdStop, "cmdStop", QStringLiteral("Stop")}});
    Frame3 = buttonRow("Frame3", QStringLiteral("I/O Card DipSW"),
                       {{cmdSWcheck, "cmdSWcheck", QStringLiteral("Check")}});

    fraCmd = new QWidget(panel);
    fraCmd->setObjectName("fraCmd");
    auto *special = new QVBoxLayout(fraCmd);
    special->setContentsMargins(0, 0, 0, 0);
    cmdSpecialSetting = MakeButton(fraCmd, "cmdSpecialSetting", QStringLiteral("SpecialSetting"));
    cmdSpecialSetting->setMinimumHeight(32);
    special->addWidget(cmdSpecialSetting);
    column->addWidget(fraCmd);

    column->addStretch(1);
    auto *link = new QFrame(panel);
    link->setObjectName("fraLink");
    link->setFrameShape(QFrame::StyledPanel);
    auto *indicators = new QHBoxLayout(link);
    lblComPortNo = MakeLabel(link, "lblComPortNo", QString());
    lblComPortNo->setMinimumWidth(48);
    shpLamp = MakeLamp(link, "shpLamp", 16);
    lblConStatus = MakeLabel(link, "lblConStatus", QString());
    indicators->addWidget(lblComPortNo);
    indicators->addWidget(shpLamp);
    indicators->addWidget(lblConStatus, 1);
    column->addWidget(link);

    connect(cboCardNo, &QComboBox::activated, this, &FrmVxCfg::cboCardNo_Click);
    connect(cmdOverView, &QPushButton::clicked, this, &FrmVxCfg::cmdOverView_Click);
    connect(CmdUpload, &QPushButton::clicked, this, &FrmVxCfg::CmdUpload_Click);
    connect(cmdComm, &QPushButton::clicked, this, &FrmVxCfg::cmdComm_Click);
    connect(cmdStart, &QPushButton::clicked, this, &FrmVxCfg::cmdStart_Click);
    connect(cmdStop, &QPushButton::clicked, this, &FrmVxCfg::cmdStop_Click);
    connect(cmdSWcheck, &QPushButton::clicked, this, &FrmVxCfg::cmdSWcheck_Click);
    connect(cmdSpecialSetting, &QPushButton::clicked, this, &FrmVxCfg::cmdSpecialSetting_Click);
    return panel;
}

void FrmVxCfg::Form_Load() {
    CardNo = 0;
    ComPortNo = 1;
    ComSpeed = QStringLiteral("1200");
    CardSelectLock = true;
    IsMonitoring = false;
    cboCardNo->setCurrentIndex(0);
    // What needs a scanned rack is off from the start; what needs a link, too.
    cmdSWcheck->setEnabled(false);
    mnuFilesOpen->setEnabled(false);
    mnuFilesSave->setEnabled(false);
    cmdComm->setEnabled(false);
    CmdUpload->setEnabled(false);
    cmdStart->setEnabled(false);
    cmdStop->setEnabled(false);
    fraCmd->hide();
    mnuConnectDisconnect->setEnabled(false);
    SetLampColor(shpLamp, QColor(0, 0, 128));
    lblComPortNo->clear();
    lblConStatus->setText(kDisconnectedText);

    SelFormName = QStringLiteral("Over");
    ShowView(Overview());
    CardSelectLock = false;
    Y_SetComboListRows(cboCardNo, kSelectorEntries);
    CommCardName.clear();
}

void FrmVxCfg::Y_SetComboListRows(QComboBox *combo, int rows) {
    combo->setMaxVisibleItems(rows);
}

void FrmVxCfg::placeView(QWidget *view) {
    if (view->parentWidget() != m_workArea) view->setParent(m_workArea);
    view->setGeometry(0, 0, kViewWidth, kViewHeight);
}

void FrmVxCfg::hideViewsBut(QWidget *view) {
    const auto children = m_workArea->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *child : children)
        if (child != view) child->hide();
}

void FrmVxCfg::ClearCardSelector() {
    for (int slot = 1; slot < kSelectorEntries; ++slot)
        cboCardNo->setItemText(slot, selectorNumber(slot));
}

void FrmVxCfg::FillCardSelector() {
    for (int slot = 1; slot < kSelectorEntries; ++slot)
        cboCardNo->setItemText(slot, selectorNumber(slot) + DisplayName(CardTable(slot).CardName));
}

void FrmVxCfg::SelectOverview() {
    cboCardNo->setCurrentIndex(0);
    CardNo = 0;
    SelFormName = QStringLiteral("Over");
    ShowView(Overview());
}

// --- The card selector -------------------------------------------------------------------------

bool FrmVxCfg::eventFilter(QObject *watched, QEvent *event) {
    if (watched == cboCardNo) {
        // While the selector has the focus the views' ticks keep off the line, so that it is free
        // when the user changes card. Its own drop-down list does not count as losing it.
        if (event->type() == QEvent::FocusIn) CardSelFocus = true;
        if (event->type() == QEvent::FocusOut &&
            static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason)
            CardSelFocus = false;
    }
    return QMainWindow::eventFilter(watched, event);
}

void FrmVxCfg::cboCardNo_Click() {
    if (CardSelectLock) return;
    CardNo = cboCardNo->currentIndex();
    if (CardNo != 0) {
        for (QWidget *command :
             QList<QWidget *>{cmdComm, cmdStart, cmdSpecialSetting, CmdUpload, cmdSWcheck})
            command->setEnabled(false);
        const QString name = CardTable(CardNo).CardName;
        if (!name.isEmpty()) {
            mnuFilesOpen->setEnabled(false);
            mnuFilesSave->setEnabled(false);
            OpenCardView(name);
            // Taking the focus off the selector lets the view's cycle run.
            cboCardNo->setEnabled(false);
            cboCardNo->setEnabled(true);
            CardSelFocus = false;
        } else {
            SelFormName = QStringLiteral("Over");
            ShowView(Overview());
            mnuFilesOpen->setEnabled(IsConnected);
            mnuFilesSave->setEnabled(IsConnected);
        }
        return;
    }
    SelFormName = QStringLiteral("Over");
    ShowView(Overview());
    if (IsConnected) {
        mnuFilesOpen->setEnabled(true);
        mnuFilesSave->setEnabled(true);
        cmdComm->setEnabled(!IsMasterComm);
        cmdStart->setEnabled(true);
        CmdUpload->setEnabled(true);
    }
    cmdSpecialSetting->setEnabled(true);
    RefreshCommands();
}

void FrmVxCfg::cmdOverView_Click() {
    cboCardNo->setCurrentIndex(0);
    cboCardNo_Click();
}

// --- Menus ---------------------------------------------------------------------------------------

void FrmVxCfg::mnuFilesOpen_Click() {
    OpenProjectFile();
    RefreshCommands();
}

void FrmVxCfg::mnuFilesSave_Click() {
    SaveProjectFile();
    RefreshCommands();
}

void FrmVxCfg::mnuFilesEnd_Click() {
    EndProgram();
}

void FrmVxCfg::mnuConnectConnect_Click() {
    // No second connect can start while the port dialog is up.
    mnuConnect->menuAction()->setEnabled(false);
    ClearCardTable();
    cmdOverView_Click();
    for (int slot = 1; slot <= kSlots; ++slot)
        ClearOverviewSlot(slot);
    FrmComPort *dialog = ComPortDialog();
    dialog->Form_Load();
    dialog->exec();
    if (m_ending) return;
    ClearCardSelector();
    mnuConnect->menuAction()->setEnabled(true);
}

void FrmVxCfg::mnuConnectDisconnect_Click() {
    DisconnectRack();
}

void FrmVxCfg::mnuHelpVersion_Click() {
    VersionDialog()->exec();
}

void FrmVxCfg::mnuToolsTrafficLog_Click() {
    ShowTrafficLog(m_trafficLog, this);
}

// --- Commands
// --------------------------------------------------------------------------------------

void FrmVxCfg::CmdUpload_Click() {
    UploadRack();
}

// The monitor runs inside this handler until "Stop" or a failed pass; everything that could
// disturb its exchanges is off meanwhile.
void FrmVxCfg::cmdStart_Click() {
    SelectOverview();
    IsMonitoring = true;
    for (QWidget *command : QList<QWidget *>{CmdUpload, cmdComm, cmdSWcheck, cmdStart, cmdOverView,
                                             cmdSpecialSetting, cboCardNo})
        command->setEnabled(false);
    mnuFilesOpen->setEnabled(false);
    mnuFilesSave->setEnabled(false);
    cmdStop->setEnabled(true);
    MonitorLoop();
}

// The check of the DIP switches stays off until the next "Upload".
void FrmVxCfg::cmdStop_Click() {
    IsMonitoring = false;
    for (QWidget *command :
         QList<QWidget *>{CmdUpload, cmdStart, cmdOverView, cmdSpecialSetting, cboCardNo})
        command->setEnabled(true);
    mnuFilesOpen->setEnabled(true);
    mnuFilesSave->setEnabled(true);
    cmdComm->setEnabled(!IsMasterComm);
    cmdStop->setEnabled(false);
}

void FrmVxCfg::cmdSWcheck_Click() {
    ShowSWcheck();
}

void FrmVxCfg::cmdComm_Click() {
    mnuConnect->menuAction()->setEnabled(false);
    showDialog(QStringLiteral("frmComm"), false);
    if (m_ending) return;
    mnuConnect->menuAction()->setEnabled(true);
}

void FrmVxCfg::cmdSpecialSetting_Click() {
    mnuConnect->menuAction()->setEnabled(false);
    const SpecialSetting *row = IsMasterComm ? nullptr : FindSpecialSetting(CommCardName, true);
    if (!row || row->dialog.isEmpty()) {
        fraCmd->hide();
    } else {
        // These dialogs turn the button on again when they close.
        if (row->ownStart) cmdSpecialSetting->setEnabled(false);
        if (!showDialog(row->dialog, true))
            People::message(QStringLiteral("%1: this dialog is not available in this version of "
                                           "VXCFG.")
                                .arg(row->caption),
                            QString(), People::Icon::Information);
        if (row->ownStart) cmdSpecialSetting->setEnabled(true);
    }
    if (m_ending) return;
    mnuConnect->menuAction()->setEnabled(true);
}

// Shows a registered dialog modally; `start` runs its opening routine first. A dialog that is
// not part of the program yet opens nothing and gives false.
bool FrmVxCfg::showDialog(const QString &formName, bool start) {
    auto *dialog = qobject_cast<QDialog *>(ViewByName(formName));
    if (!dialog) return false;
    if (start)
        if (auto *openable = dynamic_cast<OpenableView *>(dialog)) openable->OpenView(CommCardName);
    dialog->exec();
    return true;
}

// --- Ending
// ----------------------------------------------------------------------------------------

void FrmVxCfg::closeEvent(QCloseEvent *event) {
    event->accept();
    EndProgram();
}

// Ends at once, whatever runs: nothing asks and nothing is saved.
void FrmVxCfg::EndProgram() {
    if (m_ending) return;
    m_ending = true;
    SerialLine *line = Link::port();
    if (line && line->isOpen()) line->close();
    // A view's live read under way finds the port closed: with no session left it says nothing.
    IsConnected = false;
    IsMonitoring = false;
    IntervalTimerOff();
    WaitForTimer->stop();
    hide();
    if (m_endProgram) m_endProgram();
}
