#pragma once

#include <QColor>
#include <QWidget>
#include <array>

class QGridLayout;
class QLabel;

// The view of the whole rack: one row per slot with its number, the card's display name, its
// class and its live values. A row has 32 discrete lamps, 8 value fields and 4 wide fields; a
// card's layout shows only the ones it uses, and they share one area behind the class, so a row
// stays narrow enough for the work area.
class FrmOverview : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRows = 16;
    static constexpr int kLamps = 32;
    static constexpr int kValues = 8;
    static constexpr int kWideValues = 4;
    static constexpr int kDataColumn = 3; // first grid column after "No", "Type", "In/ Out"

    explicit FrmOverview(QWidget *parent = nullptr);

    // Cells of slot 1..16; channels count from 1.
    QLabel *UnitNo(int slot) const { return row(slot).unitNo; }
    QLabel *lblCardType(int slot) const { return row(slot).cardType; }
    QLabel *lblCardStatus(int slot) const { return row(slot).cardStatus; }
    QLabel *lblDIDataCh(int slot, int ch) const;
    QLabel *lblInputDataCh(int slot, int ch) const;
    QLabel *lblInputDataLCh(int slot, int ch) const;

    // Removes what the row shows of a card: name, class, values, and the first 16 lamps.
    void ClearOverviewSlot(int slot);
    // Hides every lamp and value field of the row.
    void HideSlotData(int slot);
    // Shows the lamps or fields the card of that name uses in the row.
    void ShowChData(const QString &name, int slot);
    // Colours one lamp by a bit text: "1" red, anything else green.
    void SetSlotLamp(int slot, int channel, const QString &bitText);
    // Lamps first..last of the row back to the neutral colour.
    void NeutralLamps(int slot, int first, int last);
    // Each time the overview comes on show: every row's name and layout from the card table.
    void Form_Activate();

protected:
    void showEvent(QShowEvent *event) override;

    struct Row {
        QLabel *unitNo = nullptr;
        QLabel *cardType = nullptr;
        QLabel *cardStatus = nullptr;
        std::array<QLabel *, kLamps> lamps{};
        std::array<QLabel *, kValues> values{};
        std::array<QLabel *, kWideValues> wideValues{};
    };
    const Row &row(int slot) const { return m_rows.at(static_cast<size_t>(slot - 1)); }
    // Grid row of slot 1..16 in grid().
    static int gridRow(int slot) { return slot + 1; }
    QGridLayout *grid() const { return m_grid; }

private:
    QWidget *buildDataArea(Row &r, int slot);
    void showLamps(int slot, int first, int last);

    QGridLayout *m_grid;
    std::array<Row, kRows> m_rows;
};

// A lamp's colour before its bit is known: the neutral colour of menus.
QColor NeutralLampColour();
inline const QColor kLampBitOn{255, 0, 0};
inline const QColor kLampBitOff{0, 128, 0};

// The overview, made on first use (registered as "frmOverview").
FrmOverview *Overview();
void ClearOverviewSlot(int slot);
void HideSlotData(int slot);
void ShowChData(const QString &name, int slot);
void SetSlotLamp(int slot, int channel, const QString &bitText);
