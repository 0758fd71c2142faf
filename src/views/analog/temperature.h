#pragma once

#include "views/common/cardview.h"

#include <QDialog>
#include <array>

class QCheckBox;
class QLabel;

// The temperature cards: the four fields of every analog channel, two base temperatures, and
// what the card reports of itself (input types, burnout, unit). One row of data per view.
struct TemperatureSpec {
    QString formName;
    QString tag;
    int channels = 4;
    int baseChannels = 4;  // the first channels have base fields
    int firstBaseCell = 0; // Param cell of channel 1's zero base
    Acceptance acceptance = Acceptance::Syntax;
    bool keyFilters = true;
    bool limitOption = false; // chkLimit on group 00 item 56
    bool zeroOffset = false;  // the zeroDeg button and its dialog, on QP8A cards
    bool mixed = false;       // the first four channels may be resistance inputs with a leadwire
    bool stopOnLinkLoss = false;
    int burnoutItem = 20;
    int unitItem = 19;
};

// The rows of frmQP4, frmQP8 and frmQFR8.
const QList<TemperatureSpec> &TemperatureSpecs();

class TemperatureView : public CardView {
    Q_OBJECT
public:
    explicit TemperatureView(TemperatureSpec row, QWidget *parent = nullptr);

    // The temperature views read what the card reports before the cycle starts.
    void OpenView(const QString &model) override;
    // The card offers the limit option: a QP card of version 1.0 or later, or any QP8A.
    bool LimitSupported() const;
    const TemperatureSpec &temperatureSpec() const { return m_row; }
    QLineEdit *inputType(int ch) const;

    QLineEdit *txtBurnout = nullptr;
    QLineEdit *txtUnit = nullptr;
    QCheckBox *chkLimit = nullptr;  // frmQP4, frmQP8
    QPushButton *zeroDeg = nullptr; // frmQP8

public slots:
    void zeroDeg_Click();

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewTick() override;
    void ViewRefresh() override;
    void UploadTail() override;
    void DownloadTail() override;
    QString CellName(Cell kind, int index) const override;

private:
    void ReadInputKinds();
    void OpenZeroOffset();

    TemperatureSpec m_row;
    QLabel *m_limitCaption = nullptr;
    int m_busy = 0; // exchanges of the view under way: a zero offset click waits for the tick
    bool m_zeroPending = false;
};

// The zero offset of the QP8A card: each channel measures and stores its offset at 0 deg.C on a
// click. The offsets live on the card only.
class FrmQP8Azero : public QDialog {
    Q_OBJECT
public:
    explicit FrmQP8Azero(QWidget *parent = nullptr);

    // Fills the dialog from the card in the selected slot.
    void Upload_First_File();

    QLabel *lblTitle;
    QGroupBox *offset;
    std::array<QPushButton *, 8> ch{};
    std::array<QLineEdit *, 8> ch_Text{};
    QPushButton *Clear;
    QPushButton *cmdExit;

public slots:
    void ch_Click(int index);
    void Clear_Click();
    void cmdExit_Click();
    void done(int result) override;

private:
    void AddressCard();
    void SetCommandsEnabled(bool on);
    bool m_busy = false;
};

CardView *MakeTemperatureView(const QString &formName);
