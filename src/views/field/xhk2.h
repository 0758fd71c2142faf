#pragma once

#include "views/common/cardview.h"

#include <array>

class QButtonGroup;
class QComboBox;
class QLabel;
class QRadioButton;

// The motor actuator card: two actuators with their times, enable and deadband, live position
// and setpoint, the setting of each actuator's open and close ends by jogging it, and a test mode
// that drives an actuator to a typed position.
//
// A jog never outlives the user's hold on it: a released button stops it on the next tick, and a
// view that is left (or a line that stops answering during a setting) tells the card to stop the
// jog and end the setting before anything else talks to the rack.
class FrmXHK2 : public CardView {
    Q_OBJECT
public:
    explicit FrmXHK2(QWidget *parent = nullptr);

    void SetScaleMinMax(const QString &model) override;
    QList<LiveChannel> LiveChannels() const override;

    // The view's state beyond the common flags.
    bool normalRun = true; // false: the tick is the setting tick
    QString settingGroup = QStringLiteral("03");
    QString testGroup = QStringLiteral("03");
    int settingKind = 0;      // 0 none, 1 close end, 2 open end
    int modeCommand = 0;      // 0 none, 1 end, 2 close, 3 open: the next "09" of the setting tick
    int fineLevelCommand = 0; // 0 none, 1 to 3: the next "08" of the setting tick
    int closeFineState = 0;   // 0 idle, 1 held, 2 released
    int openFineState = 0;
    int closeCoarseState = 0; // 0 idle, 1 pressed, 2 moving
    int openCoarseState = 0;
    bool closeCoarseReleased = false;
    bool openCoarseReleased = false;
    bool testSetPending = false;
    int testModeCommand = 0; // 0 none, 1 on, 2 off

    static constexpr int kChannels = 2;
    std::array<QLineEdit *, kChannels> txtMotorLockTime{};
    std::array<QLineEdit *, kChannels> txtRestartTime{};
    std::array<QComboBox *, kChannels> List_ChEnable{};
    std::array<QComboBox *, kChannels> List_Deadband{};
    std::array<QLineEdit *, kChannels> txtPosition{};
    std::array<QLineEdit *, kChannels> txtsetpoint{};
    std::array<QLineEdit *, kChannels> PosRawDat{};
    std::array<QLabel *, kChannels> lblParRaw{};
    std::array<QRadioButton *, kChannels> Channel{};
    std::array<QPushButton *, 3> butMode{};
    QPushButton *OpenCoaseAdjBut = nullptr;
    QPushButton *CloseCoaseAdjBut = nullptr;
    QPushButton *OpenFineAdjBut = nullptr;
    QPushButton *CloseFineAdjBut = nullptr;
    std::array<QRadioButton *, 3> optAdjLevel{};
    std::array<QRadioButton *, 2> optTestMode{};
    std::array<QRadioButton *, kChannels> optCh{};
    QLineEdit *txtTestModePos = nullptr;
    QPushButton *butTestMode = nullptr;

public slots:
    void butMode_Click(int index);
    void optTestMode_Click(int index);
    void optAdjLevel_Click(int index);
    void Channel_Click(int index);
    void optCh_Click(int index);
    void butTestMode_Click();

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewTick() override;
    void ViewUpload() override;
    void ViewDownload() override;
    void procCycDataRead() override;
    void ViewRefresh() override;
    void hideEvent(QHideEvent *event) override;
    QString CellName(Cell kind, int index) const override;

private:
    QWidget *buildChannel(int ch);
    QWidget *buildSettingPanel();
    QWidget *buildTestPanel();
    void installChecks();

    void NormalTick();
    void SettingTick();
    void CoarseStep(int &state, bool &released, const QPushButton *button, const QString &item);
    void ShowRawPosition(const QString &value);
    void SetLayout(bool setting);
    void SetTestLayout(bool on);
    void SelectTestMode(int index);

    // What a setting has set going on the card: a coarse jog, or the setting itself.
    bool OwesStop() const;
    // Tells the card to stop it, addressing the card anew; ends at the first write the line does
    // not answer. The view is back in its normal state afterwards.
    void StopOnCard();
    void ResetSettingState();

    // The slot this view works on; CardNo moves on before the view is hidden.
    int m_slot = 0;

    QString channelGroup(int ch) const { return QString::number(3 + ch); }
    int settingChannel() const { return settingGroup == QLatin1String("04") ? 1 : 0; }
};
