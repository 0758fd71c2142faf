#pragma once

#include "simrack.h"

#include <QObject>
#include <QString>
#include <map>

class QIODevice;
class QSocketNotifier;

// Serves a simulated rack on a pseudo-terminal and links it as COMn in the ports folder, so the
// program (or any terminal program) opens it like a serial adapter.
//
// The server keeps a descriptor of the terminal's own end open for its whole life: without it a
// client closing the port would leave the master end reporting errors until the next client came.
// Everything is event-driven: bytes from the client wake a socket notifier, replies leave on a
// timer set to the microsecond the emulated line would have carried them (a timerfd: Qt's timers
// count whole milliseconds, a tenth of a character at 9600 baud, and would blur the line time).
class PtyServer : public QObject {
    Q_OBJECT
public:
    explicit PtyServer(SimRack *rack, QObject *parent = nullptr);
    ~PtyServer() override;
    PtyServer(const PtyServer &) = delete;
    PtyServer &operator=(const PtyServer &) = delete;

    // Opens a pseudo-terminal and links it as COM`com` in `portDir` (made if missing). A stale
    // link (its device gone) is replaced; a live one belongs to someone else and is an error.
    bool start(int com, const QString &portDir, QString *error = nullptr);
    // Removes the link (if it is still ours) and closes the terminal.
    void stop();
    bool isRunning() const { return m_master >= 0; }

    QString devicePath() const { return m_device; }
    QString linkPath() const { return m_link; }

    // Line time per byte in microseconds, both directions (0: replies leave at once). 9600 baud
    // with 10 bits a byte is about 1042.
    void setByteTimeMicros(int micros) { m_byteMicros = micros; }
    // Every command and reply is written here, one line each, as it happens.
    void setLog(QIODevice *log) { m_log = log; }

signals:
    // The terminal is ready under `device` (again after a cut line).
    void linked(const QString &device);
    // A fault cut the line; the link is made anew at once, as if the adapter were plugged back.
    void lineCut();

private:
    struct Outgoing {
        QByteArray bytes;
        bool cutAfter = false;
    };

    bool openTerminal(QString *error);
    bool makeLink(QString *error);
    void closeTerminal();
    void removeLink();
    void onReadable();
    void onWritable();
    void queueReply(const SimReply &reply, qint64 readyAtUs);
    void armTimer();
    void onTimer();
    void sendDue();
    void writeOut(const QByteArray &bytes);
    void cutLine();
    void logTranscript();
    static qint64 nowUs();

    SimRack *m_rack;
    int m_com = 0;
    QString m_portDir;
    QString m_device;
    QString m_link;
    int m_master = -1;
    int m_slave = -1;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    int m_timerFd = -1; // the reply timer, in microseconds
    QSocketNotifier *m_timerNotifier = nullptr;
    int m_byteMicros = 0;
    qint64 m_rxFreeUs = 0; // when the emulated line has carried the bytes received so far
    qint64 m_txFreeUs = 0; // when the emulated line has carried the replies queued so far
    std::multimap<qint64, Outgoing> m_queue; // by the microsecond each leaves
    QByteArray m_txBuffer;                   // bytes the terminal did not take yet
    QIODevice *m_log = nullptr;
};
