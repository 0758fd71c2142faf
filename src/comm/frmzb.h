#pragma once

#include "comm/commdialog.h"
#include "ui/viewregistry.h"

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

// frmZB, "ZBx Settings": what a network-variable comm card keeps for each of the rack's sixteen
// I/O cards: a name, a scaling factor for each of the card's sixteen channels, an "N2ADR" and a
// "VND:0 /AHU:1" value; and the power-on delay. The dialog holds all sixteen cards at once and
// shows the per-channel part one page of four cards at a time; a page change shows other cards
// and loses nothing. Record 17 keeps what was last read or sent: VerNo, CardName, Param(1) the
// card's item 09, Param(2) the delay, Param(16 + i) the scaling text of card i, Param(32 + i)
// its N2ADR, Param(48 + i) its VND/AHU value, ChParam(i) its name.
class FrmZB : public CommDialog, public OpenableView {
    Q_OBJECT
public:
    static constexpr int kCards = 16;
    static constexpr int kColumns = 4; // cards on a page
    static constexpr int kChannels = 16;
    // The factors of a list, in the order of the positions the card stores.
    static const QStringList &ScaleEntries();

    explicit FrmZB(QWidget *parent = nullptr);

    // The start: the fields from the record, not from the card.
    void OpenView(const QString &model) override;
    void Upload_First_File();
    void SetControlsEnabled(bool on);

    std::array<QLineEdit *, kCards + 1> txtCardList{}; // 1..16
    std::array<QRadioButton *, kColumns + 1> OptScl{}; // OptScl1..OptScl4
    std::array<QLabel *, kColumns> lblSclCard{};
    std::array<QLineEdit *, kColumns> txtN2ADR{};
    std::array<QLineEdit *, kColumns> txtVNDAHU{};
    std::array<QComboBox *, kColumns * kChannels> cbScl{};
    QLineEdit *txtTimeout;
    QPushButton *cmdReadCard;

    // What the dialog holds for card i (1..16), whichever page shows.
    const QString &scaling(int card) const { return m_scaling.at(size_t(card)); }
    const QString &n2adr(int card) const { return m_n2adr.at(size_t(card)); }
    const QString &vndAhu(int card) const { return m_vndAhu.at(size_t(card)); }

public slots:
    void cmdUp_Click();
    void cmdDown_Click();
    void cmdReadCard_Click();

protected:
    void setCommandsEnabled(bool on) override;

private:
    void buildForm();
    void buildNames();
    void buildScaling();
    bool uploadCard();
    // The page of the selected option: 0 for cards 1-4 ... 3 for cards 13-16.
    int page() const;
    void selectFirstPage();
    void showPage();
    void showAddresses();
    void scaleChosen(int index);

    std::array<QString, kCards + 1> m_scaling;
    std::array<QString, kCards + 1> m_n2adr;
    std::array<QString, kCards + 1> m_vndAhu;
    bool displayBusy = false;
};
