#pragma once

#include "link/traffictext.h"

#include <QAbstractTableModel>
#include <QElapsedTimer>
#include <QSortFilterProxyModel>
#include <QTimer>
#include <deque>
#include <vector>

// The traffic log: every line sent and every reply received (or its absence), from the moment
// the log exists, the last `capacity` rows kept in a ring. The line must not feel it: the
// observer only appends to a buffer, and the rows reach the model in batches from a timer.
class TrafficLogModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { ColTime, ColDirection, ColSlot, ColLine, ColumnCount };
    static constexpr int kCapacity = 100000;
    // Rows reach the model at most this often while the line is busy, and this long after the
    // last one when it falls quiet. Real time, not the program's clock: they bound what the open
    // window's repaints cost, and a clock shortened for tests does not make a repaint shorter.
    static constexpr int kBatchMs = 200;
    static constexpr int kQuietBatchMs = 300;

    explicit TrafficLogModel(QObject *parent = nullptr, int capacity = kCapacity);
    ~TrafficLogModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Row `n`, the oldest first.
    const TrafficText::Row &row(int n) const;
    int capacity() const { return m_capacity; }

    // Takes in what came since the last batch; the timer calls it, tests may at once.
    void flush();
    // Paused, the rows on show stay as they are; what comes meanwhile is held (the last
    // `capacity` rows of it) and shown on resuming.
    void setPaused(bool paused);
    bool isPaused() const { return m_paused; }
    int held() const { return int(m_held.size()); }
    // Forgets the rows; the selection on the rack goes on being followed.
    void clear();

signals:
    // After each batch: rows shown and rows held.
    void batchDone();

private:
    struct Incoming {
        qint64 msecs;
        Link::Traffic kind;
        QString text;
        bool lineLost;
    };
    void record(Link::Traffic kind, const QString &text);
    void publish();

    int m_capacity;
    int m_observer;
    bool m_paused = false;
    std::vector<Incoming> m_incoming;
    std::deque<TrafficText::Row> m_held;
    std::vector<TrafficText::Row> m_ring;
    int m_head = 0; // where the oldest row stands once the ring has wrapped
    int m_count = 0;
    TrafficText::SlotFollower m_follower;
    QTimer m_batch;
    QElapsedTimer m_sinceBatch;
};

// What the log window shows of the model: the rows of one slot, or those whose line holds a
// text (either case), or both.
class TrafficLogFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    static constexpr int kAllSlots = -2;
    enum class Format { Plain, Csv };

    explicit TrafficLogFilter(TrafficLogModel *log, QObject *parent = nullptr);

    void setSlotFilter(int slot);
    void setTextFilter(const QString &text);

    // The rows shown, as lines of the plain text file or as CSV records with their header.
    QStringList lines(Format format) const;
    // The same of some of them (rows of this model, in the order given).
    QStringList lines(Format format, const QList<int> &rows) const;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    TrafficLogModel *m_log;
    int m_slot = kAllSlots;
    QString m_text;
};
