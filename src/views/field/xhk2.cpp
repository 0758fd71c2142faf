#include "views/field/xhk2.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "link/link.h"
#include "rack/connection.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"
#include "ui/widgets.h"
#include "views/field/fieldkit.h"

#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>
#include <cstdlib>
#include <tuple>

using namespace FieldKit;

namespace {

constexpr int kRetries = 3;
const QStringList kDeadbands = {"0.1", "0.3", "0.5", "0.7", "1.0",
                                "1.5", "2.0", "3.0", "5.0", "8.0"};
const QStringList kEnableEntries = {"Enable", "Disable"};
const QString kDefaultDeadband = QStringLiteral("1.5");
// The fine adjustment step of levels 1, 2 and 3.
const char *const kFineSteps[] = {"50", "100", "200"};
const QColor kRawGreen(128, 255, 128);

// Cells of channel ch (0 or 1) in the record.
int lockCell(int ch) {
    return ch * 10 + 1;
}
int restartCell(int ch) {
    return ch * 10 + 2;
}
int enableCell(int ch) {
    return ch * 10 + 3;
}
int deadbandCell(int ch) {
    return ch * 10 + 4;
}

QString readValue(const QString &group, const QString &item) {
    return ValueAfterColon(ReadData(kRetries, group, item));
}

void writeItem(const QString &group, const QString &item, const QString &data) {
    WriteData(kRetries, group, item, data);
}

// Time fields take digits only; the test position a sign, a point or a comma too (the range of
// characters from "+" to "."), and digits.
void KeyDigits(QLineEdit *, int &key) {
    if (key != kBackspaceKey && (key < '0' || key > '9')) key = 0;
}
void KeyPosition(QLineEdit *, int &key) {
    if (key != kBackspaceKey && (key < '+' || key > '.') && (key < '0' || key > '9')) key = 0;
}

// At most one decimal, no leading or trailing zeros, and always the point: 12.34 gives "12.3",
// 5 gives "5.", 0.5 gives ".5".
QString FormatTenths(double value) {
    const long long tenths = RoundWhole(value * 10.0);
    const long long whole = std::llabs(tenths) / 10;
    const long long decimal = std::llabs(tenths) % 10;
    QString text = tenths < 0 ? QStringLiteral("-") : QString();
    if (whole != 0) text += QString::number(whole);
    text += QLatin1Char('.');
    if (decimal != 0) text += QString::number(decimal);
    return text;
}

// Selects the entry of that text; a text no entry has leaves the list as it is.
void SelectText(QComboBox *list, const QString &text) {
    const int index = list->findText(text);
    if (index >= 0) list->setCurrentIndex(index);
}

QRadioButton *radio(QWidget *parent, QButtonGroup *group, const QString &name, int index,
                    const QString &caption) {
    auto *button = new QRadioButton(caption, parent);
    button->setObjectName(ViewBuilders::arrayName(name, index));
    group->addButton(button, index);
    return button;
}

} // namespace

FrmXHK2::FrmXHK2(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan;
              plan.formName = QStringLiteral("frmXHK2");
              plan.tag = QStringLiteral("XHK2");
              plan.channels = kChannels;
              return plan;
          }(),
          parent) {}

// --- Building ----------------------------------------------------------------------------------

void FrmXHK2::buildBody(QVBoxLayout *layout) {
    auto *channels = new QHBoxLayout;
    for (int ch = 0; ch < kChannels; ++ch)
        channels->addWidget(buildChannel(ch));
    layout->addLayout(channels);
    auto *panels = new QHBoxLayout;
    panels->addWidget(buildSettingPanel(), 3);
    panels->addWidget(buildTestPanel(), 2);
    layout->addLayout(panels);
    layout->addStretch();
    installChecks();
}

QWidget *FrmXHK2::buildChannel(int ch) {
    QGroupBox *frame = MakeFrame(this, QStringLiteral("fraCh%1").arg(ch + 1),
                                 QStringLiteral("Ch. %1").arg(ch + 1));
    auto *grid = new QGridLayout(frame);
    auto name = [ch](const char *control) { return ViewBuilders::arrayName(control, ch); };
    txtMotorLockTime[ch] = ViewBuilders::field(frame, name("txtMotorLockTime"), 6);
    txtRestartTime[ch] = ViewBuilders::field(frame, name("txtRestartTime"), 6);
    List_ChEnable[ch] = new QComboBox(frame);
    List_ChEnable[ch]->setObjectName(name("List_ChEnable"));
    List_ChEnable[ch]->addItems(kEnableEntries);
    List_Deadband[ch] = new QComboBox(frame);
    List_Deadband[ch]->setObjectName(name("List_Deadband"));
    List_Deadband[ch]->addItems(kDeadbands);
    txtPosition[ch] = ViewBuilders::valueField(frame, name("txtPosition"), 7);
    txtsetpoint[ch] = ViewBuilders::valueField(frame, name("txtsetpoint"), 7);

    const QList<std::tuple<const char *, QWidget *, const char *>> rows = {
        {"Motor Deadlock Detecting Time", txtMotorLockTime[ch], "sec"},
        {"Restart Time", txtRestartTime[ch], "msec"},
        {"Ch Enable/Disable", List_ChEnable[ch], ""},
        {"Deadband", List_Deadband[ch], "%"},
        {"Position", txtPosition[ch], ""},
        {"Position Setpoint", txtsetpoint[ch], ""},
    };
    int row = 0;
    for (const auto &[caption, control, unit] : rows) {
        grid->addWidget(ViewBuilders::caption(frame, caption), row, 0);
        grid->addWidget(control, row, 1, Qt::AlignLeft);
        grid->addWidget(ViewBuilders::caption(frame, unit), row++, 2);
    }
    grid->setColumnStretch(2, 1);

    QComboBox *enable = List_ChEnable[ch];
    connect(enable, &QComboBox::currentIndexChanged, this,
            [enable](int index) { SetListColour(enable, index == 0 ? kListGreen : kListRed); });
    enable->setCurrentIndex(0);
    SetListColour(enable, kListGreen);
    SelectText(List_Deadband[ch], kDefaultDeadband);
    for (QLineEdit *box : {txtMotorLockTime[ch], txtRestartTime[ch]}) {
        InstallSelectAllOnFocus(box);
        InstallKeyFilter(box, KeyDigits);
    }
    return frame;
}

QWidget *FrmXHK2::buildSettingPanel() {
    QGroupBox *frame = MakeFrame(this, "fraSetting", "User Full Position Setting");
    auto *grid = new QGridLayout(frame);

    QGroupBox *chFrame = MakeFrame(frame, "fraSettingCh", "Ch.");
    auto *chRow = new QHBoxLayout(chFrame);
    auto *channelGroup = new QButtonGroup(this);
    for (int ch = 0; ch < kChannels; ++ch) {
        Channel[ch] =
            radio(chFrame, channelGroup, "Channel", ch, QStringLiteral("Ch. %1").arg(ch + 1));
        chRow->addWidget(Channel[ch]);
    }
    grid->addWidget(chFrame, 0, 0);

    const char *const modeCaptions[] = {"Set End", "Set Close Position", "Set Open Position"};
    auto *modes = new QVBoxLayout;
    for (int i : {1, 2, 0}) {
        butMode[i] = MakeButton(frame, ViewBuilders::arrayName("butMode", i), modeCaptions[i]);
        butMode[i]->setMinimumWidth(170);
        modes->addWidget(butMode[i]);
        connect(butMode[i], &QPushButton::clicked, this, [this, i] { butMode_Click(i); });
    }
    grid->addLayout(modes, 1, 0, 2, 1);

    auto jogFrame = [frame](const QString &name, const QString &caption, const QString &openName,
                            const QString &closeName, QPushButton *&open, QPushButton *&close) {
        QGroupBox *box = MakeFrame(frame, name, caption);
        auto *row = new QHBoxLayout(box);
        open = MakeButton(box, openName, "Open");
        close = MakeButton(box, closeName, "Close");
        row->addWidget(open);
        row->addWidget(close);
        return box;
    };
    grid->addWidget(jogFrame("fraCoarse", "Coarse", "OpenCoaseAdjBut", "CloseCoaseAdjBut",
                             OpenCoaseAdjBut, CloseCoaseAdjBut),
                    0, 1);
    grid->addWidget(jogFrame("fraFine", "Fine", "OpenFineAdjBut", "CloseFineAdjBut", OpenFineAdjBut,
                             CloseFineAdjBut),
                    1, 1);

    QGroupBox *levelFrame = MakeFrame(frame, "fraAdjLevel", "Fine Adj. Level");
    auto *levelRow = new QHBoxLayout(levelFrame);
    auto *levelGroup = new QButtonGroup(this);
    for (int i = 0; i < 3; ++i) {
        optAdjLevel[i] = radio(levelFrame, levelGroup, "optAdjLevel", i, QString::number(i + 1));
        levelRow->addWidget(optAdjLevel[i]);
    }
    grid->addWidget(levelFrame, 2, 1);

    auto *raw = new QGridLayout;
    for (int ch = 0; ch < kChannels; ++ch) {
        lblParRaw[ch] = MakeLabel(frame, ViewBuilders::arrayName("lblParRaw", ch),
                                  QStringLiteral("Position (Raw)"));
        PosRawDat[ch] =
            ViewBuilders::valueField(frame, ViewBuilders::arrayName("PosRawDat", ch), 7);
        raw->addWidget(lblParRaw[ch], ch, 0);
        raw->addWidget(PosRawDat[ch], ch, 1);
    }
    raw->setColumnStretch(2, 1);
    grid->addLayout(raw, 3, 0, 1, 2);

    connect(channelGroup, &QButtonGroup::idClicked, this, &FrmXHK2::Channel_Click);
    connect(levelGroup, &QButtonGroup::idClicked, this, &FrmXHK2::optAdjLevel_Click);
    // The jog buttons act on press and release, not on a click.
    auto coarse = [this](QPushButton *button, int &state, bool &released) {
        connect(button, &QPushButton::pressed, this, [&state, &released] {
            state = 1;
            released = false;
        });
        connect(button, &QPushButton::released, this, [&released] { released = true; });
    };
    auto fine = [this](QPushButton *button, int &state) {
        connect(button, &QPushButton::pressed, this, [&state] { state = 1; });
        connect(button, &QPushButton::released, this, [&state] {
            if (state == 1) state = 2;
        });
    };
    coarse(CloseCoaseAdjBut, closeCoarseState, closeCoarseReleased);
    coarse(OpenCoaseAdjBut, openCoarseState, openCoarseReleased);
    fine(CloseFineAdjBut, closeFineState);
    fine(OpenFineAdjBut, openFineState);
    return frame;
}

QWidget *FrmXHK2::buildTestPanel() {
    QGroupBox *frame = MakeFrame(this, "fraTest", "Test Mode");
    auto *column = new QVBoxLayout(frame);

    QGroupBox *modeFrame = MakeFrame(frame, "fraTestMode", "Test Mode ");
    auto *modeRow = new QHBoxLayout(modeFrame);
    auto *modeGroup = new QButtonGroup(this);
    optTestMode[0] = radio(modeFrame, modeGroup, "optTestMode", 0, "Off");
    optTestMode[1] = radio(modeFrame, modeGroup, "optTestMode", 1, "On");
    modeRow->addWidget(optTestMode[0]);
    modeRow->addWidget(optTestMode[1]);
    column->addWidget(modeFrame);

    QGroupBox *chFrame = MakeFrame(frame, "fraTestCh", "Ch.");
    auto *chRow = new QHBoxLayout(chFrame);
    auto *chGroup = new QButtonGroup(this);
    for (int ch = 0; ch < kChannels; ++ch) {
        optCh[ch] = radio(chFrame, chGroup, "optCh", ch, QStringLiteral("Ch. %1").arg(ch + 1));
        chRow->addWidget(optCh[ch]);
    }
    column->addWidget(chFrame);

    auto *setRow = new QHBoxLayout;
    txtTestModePos = ViewBuilders::field(frame, "txtTestModePos", 6);
    butTestMode = MakeButton(frame, "butTestMode", "SET");
    setRow->addWidget(ViewBuilders::caption(frame, "Position Setpoint"));
    setRow->addWidget(txtTestModePos);
    setRow->addWidget(butTestMode);
    setRow->addStretch();
    column->addLayout(setRow);
    column->addStretch();
    InstallSelectAllOnFocus(txtTestModePos);
    InstallKeyFilter(txtTestModePos, KeyPosition);

    connect(modeGroup, &QButtonGroup::idClicked, this, &FrmXHK2::optTestMode_Click);
    connect(chGroup, &QButtonGroup::idClicked, this, &FrmXHK2::optCh_Click);
    connect(butTestMode, &QPushButton::clicked, this, &FrmXHK2::butTestMode_Click);
    return frame;
}

// Leaving a field for "Upload" is no leaving: the Upload fills it anew.
void FrmXHK2::installChecks() {
    auto wholeCheck = [](QLineEdit *box, long long low, long long high, const QString &message) {
        return [=]() -> QString {
            if (box->text().isEmpty()) return {}; // sent as nothing, so nothing to check
            double value = 0;
            if (!ParseNumber(box->text(), value)) return message;
            const long long whole = RoundWhole(value);
            if (whole < low || whole > high) return message;
            box->setText(QString::number(whole));
            return {};
        };
    };
    for (int ch = 0; ch < kChannels; ++ch) {
        InstallLeaveCheck(
            txtMotorLockTime[ch],
            wholeCheck(txtMotorLockTime[ch], 60, 1000, "Please enter value 60 - 1000"), {cmdUp});
        InstallLeaveCheck(
            txtRestartTime[ch],
            wholeCheck(txtRestartTime[ch], 500, 10000, "Please enter value 500 - 10000"), {cmdUp});
    }
    InstallLeaveCheck(txtTestModePos,
                      [box = txtTestModePos]() -> QString {
                          double value = 0;
                          if (!ParseNumber(box->text(), value) || value < -0.5 || value > 100.5)
                              return QStringLiteral("Please enter value -0.5 - 100.5");
                          box->setText(FormatTenths(value));
                          return {};
                      },
                      {cmdUp});
}

// --- Entering, refreshing ----------------------------------------------------------------------

void FrmXHK2::SetScaleMinMax(const QString &model) {
    m_slot = CardNo;
    ResetSettingState();
    settingGroup = QStringLiteral("03");
    testGroup = QStringLiteral("03");
    testSetPending = false;
    testModeCommand = 0;
    Channel[0]->setChecked(true);
    optCh[0]->setChecked(true);
    optTestMode[0]->setChecked(true);
    optAdjLevel[1]->setChecked(true);
    // This selection counts as a click: the first setting tick sends level 2's step.
    optAdjLevel_Click(1);
    butMode[0]->setText("Set End");
    SetTestLayout(false);
    CardView::SetScaleMinMax(model);
}

void FrmXHK2::ViewRefresh() {
    for (int ch = 0; ch < kChannels; ++ch) {
        txtMotorLockTime[ch]->setText(record().Param(lockCell(ch)));
        txtRestartTime[ch]->setText(record().Param(restartCell(ch)));
        if (record().Param(enableCell(ch)).isEmpty()) {
            List_ChEnable[ch]->setCurrentIndex(0);
            SelectText(List_Deadband[ch], kDefaultDeadband);
            record().Param(enableCell(ch)) = List_ChEnable[ch]->currentText();
            record().Param(deadbandCell(ch)) = List_Deadband[ch]->currentText();
        } else {
            SelectText(List_ChEnable[ch], record().Param(enableCell(ch)));
            SelectText(List_Deadband[ch], record().Param(deadbandCell(ch)));
        }
    }
    txtTestModePos->setText("0");
}

// --- Layouts and the user's clicks --------------------------------------------------------------

void FrmXHK2::SetLayout(bool setting) {
    for (QWidget *w :
         {static_cast<QWidget *>(cmdUp), static_cast<QWidget *>(cmdDown),
          static_cast<QWidget *>(Channel[0]), static_cast<QWidget *>(Channel[1]),
          static_cast<QWidget *>(optTestMode[0]), static_cast<QWidget *>(optTestMode[1])})
        w->setEnabled(!setting);
    for (QPushButton *b : {OpenCoaseAdjBut, CloseCoaseAdjBut, OpenFineAdjBut, CloseFineAdjBut})
        b->setEnabled(setting);
    for (QRadioButton *level : optAdjLevel)
        level->setEnabled(setting);
    for (int ch = 0; ch < kChannels; ++ch) {
        const bool shown = setting && ch == settingChannel();
        lblParRaw[ch]->setVisible(shown);
        PosRawDat[ch]->setVisible(shown);
    }
}

void FrmXHK2::SetTestLayout(bool on) {
    for (QRadioButton *ch : optCh)
        ch->setEnabled(!on);
    txtTestModePos->setEnabled(on);
    butTestMode->setEnabled(on);
    butMode[1]->setEnabled(!on);
    butMode[2]->setEnabled(!on);
}

void FrmXHK2::butMode_Click(int index) {
    // The tick stays off while the click talks to the card; a click made during a tick leaves
    // the re-arming to that tick.
    const bool ticking = WaitForTimer->isActive();
    WaitForTimer->stop();
    WriteData(kRetries, "00", "01", "F");
    WriteData(kRetries, "00", "41", QString::number(CardNo));
    WriteData(kRetries, "03", "01", "1");
    WriteData(kRetries, "04", "01", "1");
    for (QPushButton *b : butMode)
        b->setEnabled(false);
    if (index == 1 || index == 2) {
        settingKind = index;
        normalRun = false;
        modeCommand = index + 1;
        Clock::pause(500);
        butMode[0]->setText(index == 1 ? "End Close Pos. Setting" : "End Open Pos. Setting");
        butMode[0]->setEnabled(true);
        SetLayout(true);
    } else {
        modeCommand = 1;
        Clock::pause(500);
        butMode[1]->setEnabled(true);
        butMode[2]->setEnabled(true);
        butMode[0]->setText("End Setting");
        // The setting tick runs once more and sends the end.
        settingKind = 0;
        normalRun = false;
        SetLayout(false);
    }
    if (ticking) WaitForTimer->start();
}

void FrmXHK2::optTestMode_Click(int index) {
    testModeCommand = index == 1 ? 1 : 2;
    SetTestLayout(index == 1);
}

void FrmXHK2::SelectTestMode(int index) {
    if (optTestMode[index]->isChecked()) return;
    optTestMode[index]->setChecked(true);
    optTestMode_Click(index);
}

void FrmXHK2::optAdjLevel_Click(int index) {
    fineLevelCommand = index + 1;
}

void FrmXHK2::Channel_Click(int index) {
    settingGroup = index == 1 ? QStringLiteral("04") : QStringLiteral("03");
}

void FrmXHK2::optCh_Click(int index) {
    testGroup = index == 1 ? QStringLiteral("04") : QStringLiteral("03");
}

void FrmXHK2::butTestMode_Click() {
    if (AnyRefused(this)) return;
    testSetPending = true;
}

// --- The tick ----------------------------------------------------------------------------------

void FrmXHK2::ViewTick() {
    if (!isVisible()) {
        // Left while a step was waiting: the stop that the leaving owed the card goes now.
        if (OwesStop()) StopOnCard();
        CycleActive = false;
        return;
    }
    if (normalRun)
        NormalTick();
    else
        SettingTick();
}

void FrmXHK2::NormalTick() {
    if (testModeCommand == 1) {
        writeItem(testGroup, "50", "01");
    } else if (testModeCommand == 2) {
        writeItem(testGroup, "50", "00");
    } else if (testSetPending) {
        writeItem(testGroup, "51", txtTestModePos->text());
        testSetPending = false;
    }
    testModeCommand = 0;
    // The rest is the common tick: nothing while the card selector is open, else a pending
    // Download, a pending Upload or the cyclic read.
    CardView::ViewTick();
}

void FrmXHK2::SettingTick() {
    const QString &g = settingGroup;
    if (modeCommand == 1) {
        // A jog released just before the end was clicked has not had its stop yet.
        if (closeCoarseState == 2) writeItem(g, "10", "00");
        if (openCoarseState == 2) writeItem(g, "11", "00");
        writeItem(g, "09", "00");
        ResetSettingState();
        return;
    }
    if (modeCommand == 2) writeItem(g, "09", "01");
    if (modeCommand == 3) writeItem(g, "09", "02");
    modeCommand = 0;
    if (fineLevelCommand >= 1 && fineLevelCommand <= 3)
        writeItem(g, "08", kFineSteps[fineLevelCommand - 1]);
    fineLevelCommand = 0;
    if (closeFineState > 0) writeItem(g, "10", "02");
    if (openFineState > 0) writeItem(g, "11", "02");
    if (closeFineState == 2) closeFineState = 0;
    if (openFineState == 2) openFineState = 0;
    CoarseStep(closeCoarseState, closeCoarseReleased, CloseCoaseAdjBut, "10");
    CoarseStep(openCoarseState, openCoarseReleased, OpenCoaseAdjBut, "11");

    const QString raw = ReadData(kRetries, g, "28");
    if (raw.isEmpty()) {
        // The line has stopped answering while a jog may be running: whatever still reaches the
        // card is the stop, and then the session ends as for any lost reply.
        StopOnCard();
        if (IsConnected) {
            People::message("Uploading incomplete", "Uploading", People::Icon::Stop);
            DisconnectRack();
        }
        return;
    }
    ShowRawPosition(ValueAfterColon(raw));
}

void FrmXHK2::CoarseStep(int &state, bool &released, const QPushButton *button,
                         const QString &item) {
    // A button held with the space bar lets go without a release when the focus moves on.
    if (state == 2 && !released && !button->isDown()) released = true;
    if (state == 1) {
        writeItem(settingGroup, item, "01");
        state = 2;
    } else if (state == 2 && released) {
        writeItem(settingGroup, item, "00");
        state = 0;
        released = false;
    }
}

void FrmXHK2::ShowRawPosition(const QString &value) {
    QLineEdit *box = PosRawDat[settingChannel()];
    box->setText(value);
    double counts = 0;
    const bool number = ParseNumber(value, counts);
    const bool atEnd =
        number && ((settingKind == 1 && counts <= 4000) || (settingKind == 2 && counts >= 6000));
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, atEnd ? kRawGreen : palette.color(QPalette::Window));
    box->setPalette(palette);
}

// --- Stopping what a setting set going ----------------------------------------------------------

bool FrmXHK2::OwesStop() const {
    return closeCoarseState != 0 || openCoarseState != 0 || !normalRun || settingKind != 0;
}

void FrmXHK2::StopOnCard() {
    const QString &g = settingGroup;
    QList<std::array<QString, 3>> writes = {
        {"00", "01", "F"}, {"00", "41", QString::number(m_slot)}, {g, "01", "1"}};
    if (closeCoarseState != 0) writes.append({g, "10", "00"});
    if (openCoarseState != 0) writes.append({g, "11", "00"});
    if (!normalRun || settingKind != 0) writes.append({g, "09", "00"});
    ResetSettingState();
    for (const auto &[group, item, data] : writes)
        if (WriteData(kRetries, group, item, data).isEmpty()) break;
}

void FrmXHK2::ResetSettingState() {
    normalRun = true;
    settingKind = 0;
    modeCommand = 0;
    closeFineState = openFineState = 0;
    closeCoarseState = openCoarseState = 0;
    closeCoarseReleased = openCoarseReleased = false;
    SetLayout(false);
    butMode[0]->setEnabled(false);
    const bool testing = optTestMode[1]->isChecked();
    butMode[1]->setEnabled(!testing);
    butMode[2]->setEnabled(!testing);
}

void FrmXHK2::hideEvent(QHideEvent *event) {
    CardView::hideEvent(event);
    // The stop goes before whatever took the view away talks to the rack; inside a waiting step
    // it would tangle with that step, so the tick sends it instead.
    if (OwesStop() && !IntervalTimerEnabled()) StopOnCard();
}

// --- Workers -----------------------------------------------------------------------------------

void FrmXHK2::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(3, "Uploading");
    AddressCard();
    for (const char *group : {"02", "03", "04"})
        writeItem(group, "01", "1");
    for (int ch = 0; ch < kChannels; ++ch) {
        const QString group = channelGroup(ch);
        txtMotorLockTime[ch]->setText(readValue(group, "07"));
        record().Param(lockCell(ch)) = txtMotorLockTime[ch]->text();
        txtRestartTime[ch]->setText(readValue(group, "06"));
        record().Param(restartCell(ch)) = txtRestartTime[ch]->text();
        const QString enable = readValue("02", QString::number(42 + ch));
        List_ChEnable[ch]->setCurrentIndex(enable == QLatin1String("0") ? 0 : 1);
        record().Param(enableCell(ch)) = List_ChEnable[ch]->currentText();
        // The card may answer with the entry or with its position in the list.
        const QString deadband = readValue(group, "05");
        bool isPosition = false;
        const int position = deadband.toInt(&isPosition);
        if (kDeadbands.contains(deadband))
            SelectText(List_Deadband[ch], deadband);
        else if (isPosition && position >= 0 && position < kDeadbands.size())
            List_Deadband[ch]->setCurrentIndex(position);
        record().Param(deadbandCell(ch)) = List_Deadband[ch]->currentText();
        SetProgress(ch + 1);
    }
    double test = 0;
    SelectTestMode(ParseNumber(readValue(testGroup, "50"), test) && test == 1.0 ? 1 : 0);
    txtTestModePos->setText(readValue(testGroup, "51"));
    SetProgress(3);
    CloseProgress();
}

void FrmXHK2::ViewDownload() {
    if (AnyRefused(this)) return;
    CopyHeaderToRecord();
    AddressCard();
    for (const char *group : {"02", "03", "04"})
        writeItem(group, "01", "1");
    OpenProgress(2, "Downloading");
    for (int ch = 0; ch < kChannels; ++ch) {
        const QString group = channelGroup(ch);
        if (!txtMotorLockTime[ch]->text().isEmpty()) {
            writeItem(group, "07", txtMotorLockTime[ch]->text());
            record().Param(lockCell(ch)) = txtMotorLockTime[ch]->text();
        }
        if (!txtRestartTime[ch]->text().isEmpty()) {
            writeItem(group, "06", txtRestartTime[ch]->text());
            record().Param(restartCell(ch)) = txtRestartTime[ch]->text();
        }
        writeItem("02", QString::number(42 + ch),
                  QString::number(List_ChEnable[ch]->currentIndex()));
        writeItem(group, "05", QString::number(List_Deadband[ch]->currentIndex()));
        record().Param(enableCell(ch)) = List_ChEnable[ch]->currentText();
        record().Param(deadbandCell(ch)) = List_Deadband[ch]->currentText();
        SetProgress(ch + 1);
    }
    CloseProgress();
}

QList<LiveChannel> FrmXHK2::LiveChannels() const {
    QList<LiveChannel> channels;
    for (int ch = 0; ch < kChannels; ++ch)
        channels.append({QStringLiteral("Position %1").arg(ch + 1), txtPosition[ch]});
    for (int ch = 0; ch < kChannels; ++ch)
        channels.append({QStringLiteral("Setpoint %1").arg(ch + 1), txtsetpoint[ch]});
    return channels;
}

QString FrmXHK2::CellName(Cell kind, int index) const {
    for (int ch = 0; kind == Cell::Param && ch < kChannels; ++ch) {
        const QString name = index == lockCell(ch)       ? "Motor lock time"
                             : index == restartCell(ch)  ? "Restart time"
                             : index == enableCell(ch)   ? "Unused"
                             : index == deadbandCell(ch) ? "Deadband"
                                                         : QString();
        if (!name.isEmpty()) return QStringLiteral("Ch %1 %2").arg(ch + 1).arg(name);
    }
    return QString();
}

// Replies are not tested: an empty one leaves an empty box.
void FrmXHK2::procCycDataRead() {
    AddressCard();
    QStringList values;
    for (const char *item : {"11", "12", "14", "15"})
        values << readValue("00", item);
    const QList<QLineEdit *> boxes = {txtPosition[0], txtPosition[1], txtsetpoint[0],
                                      txtsetpoint[1]};
    for (QLineEdit *box : boxes) {
        box->clear();
        box->repaint();
    }
    Clock::pause(10);
    for (qsizetype i = 0; i < boxes.size(); ++i)
        boxes.at(i)->setText(values.at(i));
}
