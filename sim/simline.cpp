#include "simline.h"

#include "link/clock.h"

#include <QTimer>

SimLine::SimLine(SimRack *rack, QObject *parent) : SerialLine(parent), m_rack(rack) {}

bool SimLine::open(int comNumber, QString *error) {
    if (!m_ports.isEmpty() && !m_ports.contains(comNumber)) {
        if (error) *error = QStringLiteral("COM%1: no such device.").arg(comNumber);
        return false;
    }
    m_open = true;
    m_com = comNumber;
    m_rx.clear();
    ++m_generation;
    return true;
}

void SimLine::close() {
    m_open = false;
    m_rx.clear();
    ++m_generation;
}

QByteArray SimLine::readAll() {
    QByteArray out;
    out.swap(m_rx);
    return out;
}

void SimLine::write(const QByteArray &data) {
    if (!m_open) return;
    const int sendMs = static_cast<int>(data.size() * m_byteMicros / 1000);
    for (const SimReply &reply : m_rack->feed(data)) {
        SimReply timed = reply;
        timed.delayMs += sendMs + static_cast<int>(reply.bytes.size() * m_byteMicros / 1000);
        deliver(timed);
    }
}

void SimLine::deliver(const SimReply &reply) {
    const quint64 generation = m_generation;
    const int pieces = std::max(1, std::min<int>(reply.pieces, std::max<int>(1, reply.bytes.size())));
    const qsizetype size = (reply.bytes.size() + pieces - 1) / pieces;
    for (int p = 0; p < pieces; ++p) {
        const QByteArray piece = reply.bytes.mid(p * size, size);
        const bool last = p == pieces - 1;
        // Pieces a few milliseconds apart, so each arrives in a read of its own.
        const int at = Clock::ms(reply.delayMs) + p * 2;
        QTimer::singleShot(at, this, [this, generation, piece, last, cutLine = reply.cutLine] {
            if (generation != m_generation || !m_open) return;
            if (!piece.isEmpty()) inject(piece);
            if (last && cutLine) cut();
        });
    }
}

void SimLine::inject(const QByteArray &bytes) {
    if (!m_open) return;
    m_rx += bytes;
    emit readyRead();
}

void SimLine::cut() {
    if (!m_open) return;
    close();
    emit lineLost(QStringLiteral("The line was cut."));
}
