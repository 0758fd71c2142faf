#pragma once

#include <QWidget>
#include <array>

class QGridLayout;
class QLabel;

// The view of the whole rack: one row per slot with its number, the card's display name and its
// class. The live values of a row (value fields and discrete lamps) go in the columns from
// kDataColumn on, behind the class.
class FrmOverview : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRows = 16;
    static constexpr int kDataColumn = 3; // first grid column after "No", "Type", "In/ Out"

    explicit FrmOverview(QWidget *parent = nullptr);

    // Cells of slot 1..16.
    QLabel *UnitNo(int slot) const { return row(slot).unitNo; }
    QLabel *lblCardType(int slot) const { return row(slot).cardType; }
    QLabel *lblCardStatus(int slot) const { return row(slot).cardStatus; }

    // Removes what the row shows of a card.
    void ClearOverviewSlot(int slot);

protected:
    struct Row {
        QLabel *unitNo = nullptr;
        QLabel *cardType = nullptr;
        QLabel *cardStatus = nullptr;
    };
    const Row &row(int slot) const { return m_rows.at(static_cast<size_t>(slot - 1)); }
    // Grid row of slot 1..16 in grid().
    static int gridRow(int slot) { return slot + 1; }
    QGridLayout *grid() const { return m_grid; }

private:
    QGridLayout *m_grid;
    std::array<Row, kRows> m_rows;
};

// The overview, made on first use (registered as "frmOverview").
FrmOverview *Overview();
void ClearOverviewSlot(int slot);
