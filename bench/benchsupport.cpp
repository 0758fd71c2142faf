#include "benchsupport.h"

#include "link/link.h"

#include <QFile>
#include <QProcessEnvironment>

#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

namespace Bench {

double cpuMsSelf() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

double cpuMsOf(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return -1;
    const QByteArray text = stat.readAll();
    // Fields after the command name in parentheses; utime and stime are the 14th and 15th.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13) return -1;
    const double ticks = fields.at(11).toDouble() + fields.at(12).toDouble();
    return ticks * 1e3 / double(sysconf(_SC_CLK_TCK));
}

Simulator::~Simulator() {
    if (m_process.state() == QProcess::NotRunning) return;
    m_process.terminate();
    m_process.waitForFinished(5000);
}

bool Simulator::start(const QString &program, const QStringList &arguments, QString *error) {
    QString path = program;
    if (path.isEmpty()) path = qEnvironmentVariable("VXRACK_SIM");
    if (path.isEmpty()) path = QStringLiteral(VXRACK_SIM_BUILT);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("VXCFG_PORT_DIR", m_portDir.path());
    m_process.setProcessEnvironment(env);
    m_process.start(path, QStringList{"--com", "1"} + arguments);
    if (!m_process.waitForStarted(10000)) {
        *error = "cannot start " + path;
        return false;
    }
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(10000)) {
            *error = "the simulator did not get ready: " +
                     QString::fromLocal8Bit(m_process.readAllStandardError());
            return false;
        }
    }
    std::printf("%s", m_process.readLine().constData());
    // The program finds COM1 where the simulator linked it.
    qputenv("VXCFG_PORT_DIR", m_portDir.path().toLocal8Bit());
    return true;
}

LineCount::LineCount() {
    m_observer = Link::addTrafficObserver([this](Link::Traffic kind, const QString &text) {
        switch (kind) {
        case Link::Traffic::Sent:
            ++steps;
            sent += text.size();
            m_step.start();
            return;
        case Link::Traffic::Received:
            received += text.size() + 1;
            break;
        case Link::Traffic::NoReply:
            ++silent;
            break;
        }
        if (m_step.isValid()) waitMs += m_step.nsecsElapsed() / 1e6;
        m_step.invalidate();
    });
}

LineCount::~LineCount() {
    Link::removeTrafficObserver(m_observer);
}

double statusMb(const char *field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return -1;
    const QByteArray key = QByteArray(field) + ':';
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(key.size()).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return -1;
}

int fail(const char *program, const QString &text) {
    std::fprintf(stderr, "%s: %s\n", program, qPrintable(text));
    return 1;
}

} // namespace Bench
