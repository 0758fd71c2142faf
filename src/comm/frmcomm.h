#pragma once

#include "comm/commdialog.h"

#include <array>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// frmComm, "Com.Card Settings": name, version, switches and status of the communication card,
// and the few settings most comm cards share: the communication time, the sixteen direct output
// values and the fieldbus activate delay switch. Which of them a card has follows from its name
// and version. The dialog reads the card each time it comes on the screen.
//
// Record 17 keeps what it reads and writes: CardName and VerNo after an Upload, Param(1) the
// time, Param(2..17) the direct outputs of slots 1..16, Param(18) the delay switch "0" or "1".
class FrmComm : public CommDialog {
    Q_OBJECT
public:
    explicit FrmComm(QWidget *parent = nullptr);

    QLineEdit *txtName;
    QLineEdit *txtVersion;
    QLabel *lblVersion2;
    QLineEdit *txtVersion2;
    QLineEdit *txtSW;
    QLabel *lblStatus;
    std::array<QLineEdit *, 2> txtStatus{};
    QLabel *lblTimeout;
    QLineEdit *txtTimeout;
    QGroupBox *fraOutput;
    std::array<QLineEdit *, 17> txtOutSlot{}; // 1..16; element 0 is unused
    QLabel *lblDIOData;
    QLineEdit *txtZD1;
    QLabel *lblDelay;
    QCheckBox *ChkCJC;
    QLabel *lblDelaySec;

    // The short name of a comm card's name text: "ZOKAR" as it is, "QV3..." without its first
    // four characters, any other without its "VX-" prefix.
    static QString ShortName(const QString &name);
    // The number of a version text "V1.01": 101.
    static double VersionNumber(const QString &version);

    // What a card has, by its short name, its version text and, for the direct outputs, the
    // reply of its item 04.
    static bool HasTimeout(const QString &name);
    static bool HasDirectOutput(const QString &name, const QString &version,
                                const QString &nameReply);
    static bool HasActivateDelay(const QString &name, const QString &version);

    // The same for the card on show; HasDirectOutput asks the card for its item 04 each time.
    bool HasTimeout() const;
    bool HasDirectOutput() const;
    bool HasActivateDelay() const;

public slots:
    // The opening, run each time the dialog comes on the screen.
    void Form_Activate();
    void cmdUp_Click();
    void cmdDown_Click();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildForm();
    // The group of the time (g) and of the direct outputs (h): "50" on the CC-Link IE cards.
    QString timeGroup() const;
    QString outputGroup() const;
    void showDelaySwitch(bool visible);
    bool openCard();
    bool uploadCard();

    bool m_delayPresent = false;
};
