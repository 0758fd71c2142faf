#pragma once

#include "views/common/cardview.h"

#include <QColor>
#include <array>

class QGridLayout;
class QLabel;

// The analog cards with alarm outputs: four set points, a hysteresis and four levels a channel,
// three times for the card, and one lamp for each alarm bit the card reports.
struct AlarmSpec {
    QString formName;
    QString tag;
    int channels = 4;
    int cellsPerChannel = 9; // Param cells from channel to channel
    // The four levels of a channel share one cell, level 4 first (frmQA8).
    bool packedLevels = false;
};

// The rows of frmQA4 and frmQA8.
const QList<AlarmSpec> &AlarmSpecs();

inline const QColor kAlarmOnColour{255, 0, 0};
inline const QColor kAlarmOffColour{0, 128, 0};

// Levels 1 to 4 of a channel in the packed cell: "1" high, "0" low, level 4 first. A cell of
// any length but 4 holds no levels.
using AlarmLevels = std::array<QString, 4>; // [0] is level 1
QString PackAlarmLevels(const AlarmLevels &levels);
AlarmLevels UnpackAlarmLevels(const QString &cell);

class AlarmView : public CardView {
    Q_OBJECT
public:
    explicit AlarmView(AlarmSpec row, QWidget *parent = nullptr);

    // The cycle of a previous visit must not tick into the opening.
    void OpenView(const QString &model) override;

    const AlarmSpec &alarmSpec() const { return m_row; }
    // Alarm lamp i (from 1) shows bit i-1 of the alarm word.
    QLabel *lamp(int i) const;
    int lamps() const { return m_row.channels * 4; }

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
    void ViewRefresh() override;
    void UploadTail() override;
    void ViewDownload() override;
    QString &cellOf(const ParamSpec &param, int ch) const override;
    // QC and QD models keep their parameters in group 12, the others in group 04.
    QString wireGroup(const QString &group) const override;

private:
    QGridLayout *buildFourChannelGrid(QWidget *box);
    QGridLayout *buildEightChannelGrid(QWidget *box);
    QWidget *buildTimes();
    QWidget *buildLamps();
    void SplitLevels();
    void JoinLevels();

    AlarmSpec m_row;
    // The levels of each channel (1-based) while the view works on them, for packed cells.
    mutable std::array<AlarmLevels, 9> m_levels;
};

CardView *MakeAlarmView(const QString &formName);
