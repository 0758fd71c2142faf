#pragma once

#include "link/serialline.h"
#include "simrack.h"

#include <QSet>

// A serial line that answers through a simulated rack in the same process. Replies come back
// through the event loop, never inside write(), as from a real port.
class SimLine : public SerialLine {
    Q_OBJECT
public:
    explicit SimLine(SimRack *rack, QObject *parent = nullptr);

    bool open(int comNumber, QString *error = nullptr) override;
    void close() override;
    bool isOpen() const override { return m_open; }
    qint64 bytesAvailable() const override { return m_rx.size(); }
    QByteArray readAll() override;
    void write(const QByteArray &data) override;

    // COM numbers that open; all if empty.
    void setAvailablePorts(const QSet<int> &ports) { m_ports = ports; }
    // Emulated line time per byte in microseconds (0: instant). 9600 baud is about 1042.
    void setByteTimeMicros(int micros) { m_byteMicros = micros; }
    // Puts bytes into the receive buffer now, as if they had arrived unasked.
    void inject(const QByteArray &bytes);
    // Cuts the line as an unplugged adapter would.
    void cut();
    int openedPort() const { return m_com; }

private:
    void deliver(const SimReply &reply);

    SimRack *m_rack;
    QByteArray m_rx;
    QSet<int> m_ports;
    bool m_open = false;
    int m_com = 0;
    int m_byteMicros = 0;
    quint64 m_generation = 0; // replies of an earlier opening are dropped
};
