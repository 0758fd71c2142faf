#include "app/trafficlog.h"

#include <QColor>
#include <QDateTime>
#include <numeric>

using TrafficText::Row;

TrafficLogModel::TrafficLogModel(QObject *parent, int capacity)
    : QAbstractTableModel(parent), m_capacity(std::max(1, capacity)) {
    m_batch.setSingleShot(true);
    m_sinceBatch.start();
    connect(&m_batch, &QTimer::timeout, this, &TrafficLogModel::flush);
    m_observer = Link::addTrafficObserver(
        [this](Link::Traffic kind, const QString &text) { record(kind, text); });
}

TrafficLogModel::~TrafficLogModel() {
    Link::removeTrafficObserver(m_observer);
}

// Runs inside every step of every exchange: append and arm the batch, nothing more. A batch
// (and the repaint of an open window) is best done just after a command has gone out: the wait
// for its reply has room for it, so it delays no step.
void TrafficLogModel::record(Link::Traffic kind, const QString &text) {
    // A lost line closes the port before its step gives up, so a closed port tells the user
    // that no rack could have answered.
    const SerialLine *line = Link::port();
    const bool lineLost =
        kind == Link::Traffic::NoReply && text.isEmpty() && (!line || !line->isOpen());
    m_incoming.push_back({QDateTime::currentMSecsSinceEpoch(), kind, text, lineLost});
    if (kind == Link::Traffic::Sent && m_sinceBatch.elapsed() >= kBatchMs)
        m_batch.start(0);
    else if (!m_batch.isActive())
        m_batch.start(kQuietBatchMs);
}

void TrafficLogModel::flush() {
    m_batch.stop();
    m_sinceBatch.start();
    // The selection is followed through every row in order, held or shown.
    for (Incoming &in : m_incoming)
        m_held.push_back(
            {in.msecs, in.kind, m_follower.see(in.kind, in.text), std::move(in.text), in.lineLost});
    m_incoming.clear();
    while (m_held.size() > size_t(m_capacity))
        m_held.pop_front();
    if (!m_paused) publish();
    emit batchDone();
}

void TrafficLogModel::publish() {
    if (m_held.empty()) return;
    const int adding = int(m_held.size());
    const int overflow = m_count + adding - m_capacity;
    if (overflow > 0) {
        beginRemoveRows(QModelIndex(), 0, overflow - 1);
        m_head = (m_head + overflow) % m_capacity;
        m_count -= overflow;
        endRemoveRows();
    }
    beginInsertRows(QModelIndex(), m_count, m_count + adding - 1);
    for (Row &row : m_held) {
        const size_t place = size_t((m_head + m_count) % m_capacity);
        if (place == m_ring.size())
            m_ring.push_back(std::move(row));
        else
            m_ring[place] = std::move(row);
        ++m_count;
    }
    m_held.clear();
    endInsertRows();
}

void TrafficLogModel::setPaused(bool paused) {
    if (m_paused == paused) return;
    m_paused = paused;
    if (!paused) flush();
}

void TrafficLogModel::clear() {
    flush();
    beginResetModel();
    m_ring.clear();
    m_held.clear();
    m_head = 0;
    m_count = 0;
    endResetModel();
    emit batchDone();
}

const Row &TrafficLogModel::row(int n) const {
    return m_ring.at(size_t((m_head + n) % m_capacity));
}

int TrafficLogModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : m_count;
}

int TrafficLogModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrafficLogModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid() || index.row() >= m_count) return QVariant();
    const Row &r = row(index.row());
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case ColTime:
            return TrafficText::timeText(r.msecs);
        case ColDirection:
            return QString(TrafficText::mark(r));
        case ColSlot:
            return TrafficText::slotText(r.slot);
        case ColLine:
            return TrafficText::lineText(r);
        default:
            return QVariant();
        }
    }
    if (role == Qt::ForegroundRole) {
        if (r.kind == Link::Traffic::NoReply) return QColor(176, 0, 0);
        if (r.kind == Link::Traffic::Sent) return QColor(0, 0, 140);
        return QVariant();
    }
    if (role == Qt::ToolTipRole && index.column() == ColDirection) {
        switch (TrafficText::mark(r).toLatin1()) {
        case '>':
            return QStringLiteral("sent to the rack");
        case '<':
            return QStringLiteral("the rack's reply");
        case '!':
            return r.lineLost ? QStringLiteral("no reply: the line was closed or lost")
                              : QStringLiteral("no reply: the step limit ran out");
        default:
            return QStringLiteral("no valid reply: noise, or a reply without its CR");
        }
    }
    return QVariant();
}

QVariant TrafficLogModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return QVariant();
    switch (section) {
    case ColTime:
        return QStringLiteral("Time");
    case ColDirection:
        return QStringLiteral("Dir.");
    case ColSlot:
        return QStringLiteral("Slot");
    case ColLine:
        return QStringLiteral("Line");
    default:
        return QVariant();
    }
}

TrafficLogFilter::TrafficLogFilter(TrafficLogModel *log, QObject *parent)
    : QSortFilterProxyModel(parent), m_log(log) {
    setSourceModel(log);
}

void TrafficLogFilter::setSlotFilter(int slot) {
    if (m_slot == slot) return;
    m_slot = slot;
    invalidateFilter();
}

void TrafficLogFilter::setTextFilter(const QString &text) {
    if (m_text == text) return;
    m_text = text;
    invalidateFilter();
}

bool TrafficLogFilter::filterAcceptsRow(int sourceRow, const QModelIndex &) const {
    const Row &r = m_log->row(sourceRow);
    if (m_slot != kAllSlots && r.slot != m_slot) return false;
    return m_text.isEmpty() || TrafficText::lineText(r).contains(m_text, Qt::CaseInsensitive);
}

QStringList TrafficLogFilter::lines(Format format) const {
    QList<int> rows(rowCount());
    std::iota(rows.begin(), rows.end(), 0);
    return lines(format, rows);
}

QStringList TrafficLogFilter::lines(Format format, const QList<int> &rows) const {
    QStringList out;
    if (format == Format::Csv) out << TrafficText::csvHeader();
    for (const int n : rows) {
        if (n < 0 || n >= rowCount()) continue;
        const Row &r = m_log->row(mapToSource(index(n, 0)).row());
        out << (format == Format::Csv ? TrafficText::csvRow(r) : TrafficText::plainRow(r));
    }
    return out;
}
