#include "ptyserver.h"

#include "link/clock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/timerfd.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace {

// Pieces of a split reply leave this far apart, so a reader sees each on its own.
constexpr qint64 kPieceGapUs = 2000;
// A client that stops reading cannot make the server hoard replies without end.
constexpr qsizetype kMaxTxBuffer = 64 * 1024;

QString systemError(const char *what) {
    return QStringLiteral("%1: %2").arg(QLatin1String(what),
                                        QString::fromLocal8Bit(strerror(errno)));
}

// Printable text for the log: control and high bytes as \xNN.
QString printable(const QString &text) {
    QString out;
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (u < 0x20 || u >= 0x7f)
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

} // namespace

PtyServer::PtyServer(SimRack *rack, QObject *parent) : QObject(parent), m_rack(rack) {
    m_timerFd = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (m_timerFd < 0) qFatal("vxrack-sim: timerfd_create: %s", strerror(errno));
    m_timerNotifier = new QSocketNotifier(m_timerFd, QSocketNotifier::Read, this);
    connect(m_timerNotifier, &QSocketNotifier::activated, this, &PtyServer::onTimer);
}

qint64 PtyServer::nowUs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

PtyServer::~PtyServer() {
    stop();
    delete m_timerNotifier;
    ::close(m_timerFd);
}

bool PtyServer::start(int com, const QString &portDir, QString *error) {
    stop();
    m_com = com;
    m_portDir = portDir;
    if (!openTerminal(error)) return false;
    if (!makeLink(error)) {
        closeTerminal();
        return false;
    }
    emit linked(m_device);
    return true;
}

void PtyServer::stop() {
    removeLink();
    closeTerminal();
}

bool PtyServer::openTerminal(QString *error) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0) {
        if (error) *error = systemError("posix_openpt");
        return false;
    }
    const char *name = nullptr;
    if (grantpt(master) != 0 || unlockpt(master) != 0 || (name = ptsname(master)) == nullptr) {
        if (error) *error = systemError("pseudo-terminal");
        ::close(master);
        return false;
    }
    const QString device = QString::fromLocal8Bit(name);
    const int slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave < 0) {
        if (error) *error = systemError(name);
        ::close(master);
        return false;
    }
    // Raw bytes both ways: no echo of the commands, no CR turned into LF.
    termios tio{};
    if (tcgetattr(slave, &tio) == 0) {
        cfmakeraw(&tio);
        cfsetispeed(&tio, B9600);
        cfsetospeed(&tio, B9600);
        tcsetattr(slave, TCSANOW, &tio);
    }
    fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
    fcntl(master, F_SETFD, FD_CLOEXEC);

    m_master = master;
    m_slave = slave;
    m_device = device;
    m_rxFreeUs = m_txFreeUs = nowUs();
    m_readNotifier = new QSocketNotifier(master, QSocketNotifier::Read, this);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &PtyServer::onReadable);
    m_writeNotifier = new QSocketNotifier(master, QSocketNotifier::Write, this);
    m_writeNotifier->setEnabled(false);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, &PtyServer::onWritable);
    return true;
}

bool PtyServer::makeLink(QString *error) {
    if (!QDir().mkpath(m_portDir)) {
        if (error) *error = QStringLiteral("%1: cannot make the ports folder").arg(m_portDir);
        return false;
    }
    const QString link = QDir(m_portDir).filePath(QStringLiteral("COM%1").arg(m_com));
    const QFileInfo existing(link);
    if (existing.isSymLink()) {
        if (QFileInfo::exists(existing.symLinkTarget())) {
            if (error)
                *error = QStringLiteral("%1 is in use: it leads to %2. Is another simulator "
                                        "running? Choose another --com.")
                             .arg(link, existing.symLinkTarget());
            return false;
        }
        QFile::remove(link); // left behind by a simulator that was killed
    } else if (existing.exists()) {
        if (error)
            *error = QStringLiteral("%1 exists and is not a link; it is left alone.").arg(link);
        return false;
    }
    if (!QFile::link(m_device, link)) {
        if (error) *error = QStringLiteral("%1: cannot make the link").arg(link);
        return false;
    }
    m_link = link;
    return true;
}

void PtyServer::closeTerminal() {
    const itimerspec off{};
    timerfd_settime(m_timerFd, 0, &off, nullptr);
    m_queue.clear();
    m_txBuffer.clear();
    delete m_readNotifier;
    delete m_writeNotifier;
    m_readNotifier = m_writeNotifier = nullptr;
    if (m_slave >= 0) ::close(m_slave);
    if (m_master >= 0) ::close(m_master);
    m_slave = m_master = -1;
    m_device.clear();
}

void PtyServer::removeLink() {
    if (m_link.isEmpty()) return;
    // Only our own link: if someone relinked the name since, it is theirs now.
    const QFileInfo info(m_link);
    if (info.isSymLink() && info.symLinkTarget() == m_device) QFile::remove(m_link);
    m_link.clear();
}

void PtyServer::onReadable() {
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(m_master, buffer, sizeof buffer);
        if (n > 0) {
            const qint64 now = nowUs();
            // The emulated line carries the command's bytes one after another; its replies are
            // ready only when the last byte is in.
            m_rxFreeUs = std::max(now, m_rxFreeUs) + n * m_byteMicros;
            const QList<SimReply> replies = m_rack->feed(QByteArray(buffer, n));
            logTranscript();
            for (const SimReply &reply : replies)
                queueReply(reply, m_rxFreeUs);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        // EAGAIN: all read. Anything else cannot happen while we hold the terminal's own end;
        // stop listening rather than spin on it.
        if (n < 0 && errno != EAGAIN && m_readNotifier) m_readNotifier->setEnabled(false);
        return;
    }
}

void PtyServer::queueReply(const SimReply &reply, qint64 readyAtUs) {
    const qint64 delayUs = qint64(Clock::ms(reply.delayMs)) * 1000;
    qint64 start = readyAtUs + delayUs;
    // An on-time reply waits for the line to be free; a delayed one comes when it comes.
    if (delayUs == 0) start = std::max(start, m_txFreeUs);
    const int pieces =
        std::max(1, std::min<int>(reply.pieces, std::max<int>(1, int(reply.bytes.size()))));
    const qsizetype size = (reply.bytes.size() + pieces - 1) / pieces;
    qint64 at = start;
    for (int p = 0; p < pieces; ++p) {
        const QByteArray piece = reply.bytes.mid(p * size, size);
        at += piece.size() * m_byteMicros + (p > 0 ? kPieceGapUs : 0);
        const bool last = p == pieces - 1;
        m_queue.emplace(at, Outgoing{piece, last && reply.cutLine});
    }
    if (delayUs == 0) m_txFreeUs = at;
    armTimer();
}

void PtyServer::armTimer() {
    if (m_queue.empty()) return;
    // An absolute time: a moment already past fires at once. Zero would disarm the timer.
    const qint64 atUs = std::max<qint64>(m_queue.begin()->first, 1);
    itimerspec when{};
    when.it_value.tv_sec = atUs / 1000000;
    when.it_value.tv_nsec = long(atUs % 1000000) * 1000;
    timerfd_settime(m_timerFd, TFD_TIMER_ABSTIME, &when, nullptr);
}

void PtyServer::onTimer() {
    quint64 expirations = 0;
    [[maybe_unused]] const ssize_t n = ::read(m_timerFd, &expirations, sizeof expirations);
    sendDue();
}

void PtyServer::sendDue() {
    const qint64 now = nowUs();
    while (!m_queue.empty() && m_queue.begin()->first <= now) {
        const Outgoing out = m_queue.begin()->second;
        m_queue.erase(m_queue.begin());
        if (!out.bytes.isEmpty()) writeOut(out.bytes);
        if (out.cutAfter) {
            cutLine();
            return;
        }
    }
    armTimer();
}

void PtyServer::writeOut(const QByteArray &bytes) {
    if (m_master < 0) return;
    m_txBuffer += bytes;
    if (m_txBuffer.size() > kMaxTxBuffer) m_txBuffer = m_txBuffer.right(kMaxTxBuffer);
    onWritable();
}

void PtyServer::onWritable() {
    while (!m_txBuffer.isEmpty()) {
        const ssize_t n = ::write(m_master, m_txBuffer.constData(), size_t(m_txBuffer.size()));
        if (n > 0) {
            m_txBuffer.remove(0, n);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        // Terminal full: nobody reads; go on when there is room.
        if (n < 0 && errno == EAGAIN) break;
        m_txBuffer.clear();
    }
    if (m_writeNotifier) m_writeNotifier->setEnabled(!m_txBuffer.isEmpty());
}

// The adapter is pulled: closing both ends hangs up the client's port. Then a fresh terminal is
// linked under the same name, as if it were plugged back in.
void PtyServer::cutLine() {
    if (m_log) {
        m_log->write(QStringLiteral("%1 line cut\n").arg(nowUs() / 1e6, 0, 'f', 3).toUtf8());
        if (auto *file = qobject_cast<QFile *>(m_log)) file->flush();
    }
    removeLink();
    closeTerminal();
    emit lineCut();
    QString error;
    if (openTerminal(&error) && makeLink(&error)) {
        emit linked(m_device);
    } else {
        qWarning("vxrack-sim: cannot plug the line back in: %s", qPrintable(error));
        closeTerminal();
    }
}

void PtyServer::logTranscript() {
    const QList<SimTranscriptEntry> entries = m_rack->transcript();
    // The server runs for hours; keep only what has not been logged yet.
    m_rack->clearTranscript();
    if (!m_log) return;
    const QString stamp = QString::number(nowUs() / 1e6, 'f', 3);
    QByteArray lines;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const SimTranscriptEntry &e = entries.at(i);
        lines += QStringLiteral("%1 %2 %3\n")
                     .arg(stamp, e.fromProgram ? QStringLiteral(">") : QStringLiteral("<"),
                          printable(e.text))
                     .toUtf8();
        const bool answered = i + 1 < entries.size() && !entries.at(i + 1).fromProgram;
        if (e.fromProgram && !answered)
            lines += QStringLiteral("%1 < (no reply)\n").arg(stamp).toUtf8();
    }
    m_log->write(lines);
    if (auto *file = qobject_cast<QFile *>(m_log)) file->flush();
}
