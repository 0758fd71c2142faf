#pragma once

#include <QColor>
#include <QDialog>
#include <QString>
#include <array>

class QLineEdit;
class QPushButton;

// frmSWcheck, "I/O Card DipSW Check": the name, version and DIP switches of all 16 I/O cards on
// one screen. The switches are physical; the dialog only reads them, each time it is shown and
// on "Upload".
class FrmSWcheck : public QDialog {
    Q_OBJECT
public:
    static constexpr int kSlots = 16;
    static constexpr int kCellsPerSlot = 24; // three switches of eight bits
    static inline const QColor kOnColour{0, 0, 0};
    static inline const QColor kOffColour{255, 255, 255};

    explicit FrmSWcheck(QWidget *parent = nullptr);

    // Paints the 24 cells of slot index `i` (0..15) from a switch text such as "01,00,80": each
    // digit "0"-"9" or "A"-"F" sets its four cells, any other character (or a missing one)
    // leaves them as they are.
    void txtCDataDraw(int i, const QString &text);

    // The reading run: names of all slots from the comm card, then version and switches of each
    // slot that holds a card.
    void cmdUp_Click();
    void cmdExit_Click();

    bool isReading() const { return m_reading; }

    // Closing is refused while a reading run talks to the rack.
    void reject() override;

signals:
    // A reading run has ended and the buttons are enabled again.
    void readingDone();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QLineEdit *cell(int n) const { return m_cells.at(static_cast<size_t>(n)); }
    void buildForm();

    std::array<QLineEdit *, kSlots> m_name{};
    std::array<QLineEdit *, kSlots> m_version{};
    std::array<QLineEdit *, kSlots> m_sw{};
    std::array<QLineEdit *, kSlots * kCellsPerSlot> m_cells{};
    std::array<bool, kSlots> m_holdsCard{};
    QPushButton *m_cmdUp = nullptr;
    QPushButton *m_cmdExit = nullptr;
    bool m_reading = false;
};

// The one frmSWcheck, made on first use and kept, hidden, for the run. While ShowSWcheck() waits
// on it, a test reaches the dialog through here (its readingDone signal says when to act).
FrmSWcheck *SWcheckDialog();

// Shows frmSWcheck modally; returns when the user leaves it.
void ShowSWcheck();
