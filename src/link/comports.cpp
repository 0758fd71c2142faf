#include "link/comports.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace ComPorts {

QString portDirectory() {
    const QString fromEnv = qEnvironmentVariable("VXCFG_PORT_DIR");
    if (!fromEnv.isEmpty()) return fromEnv;
    return QDir::homePath() + "/.config/vxcfg/ports";
}

#ifdef Q_OS_WIN
QString resolve(int comNumber) {
    return QStringLiteral("COM%1").arg(comNumber);
}
#else
// USB adapters first, then ACM, each by number (ttyUSB10 after ttyUSB9).
static QStringList adapters() {
    QStringList found;
    for (const QString &kind : {QStringLiteral("ttyUSB"), QStringLiteral("ttyACM")}) {
        QList<int> numbers;
        const QStringList names = QDir("/dev").entryList({kind + "*"}, QDir::System | QDir::Files);
        for (const QString &name : names) {
            bool ok = false;
            const int n = name.mid(kind.size()).toInt(&ok);
            if (ok) numbers << n;
        }
        std::sort(numbers.begin(), numbers.end());
        for (int n : numbers)
            found << QStringLiteral("/dev/%1%2").arg(kind).arg(n);
    }
    return found;
}

QString resolve(int comNumber) {
    const QString name = QStringLiteral("COM%1").arg(comNumber);
    const QFileInfo linked(QDir(portDirectory()).filePath(name));
    if (linked.exists() || linked.isSymLink()) return linked.absoluteFilePath();
    const QStringList usb = adapters();
    if (comNumber >= 1 && comNumber <= usb.size()) return usb.at(comNumber - 1);
    return QStringLiteral("/dev/ttyS%1").arg(comNumber - 1);
}
#endif

QString describe(int comNumber) {
    const QString path = resolve(comNumber);
#ifndef Q_OS_WIN
    const QFileInfo info(path);
    if (info.isSymLink()) {
        const QString target = info.symLinkTarget();
        if (!QFileInfo::exists(target)) return path + " (no device)";
        return target;
    }
    if (!info.exists()) return path + " (no device)";
#endif
    return path;
}

namespace {

// The kernel's name of the device behind a path: "ttyUSB0" for /dev/ttyUSB0 or a link to it.
QString kernelName(const QString &device) {
    const QFileInfo info(device);
    const QString target = info.isSymLink() ? info.symLinkTarget() : device;
    return QFileInfo(target).fileName();
}

QString latencyFile(const QString &device, const QString &sysRoot) {
    const QString name = kernelName(device);
    if (name.isEmpty()) return {};
    return QStringLiteral("%1/bus/usb-serial/devices/%2/latency_timer").arg(sysRoot, name);
}

} // namespace

int latencyTimerMs(const QString &device, const QString &sysRoot) {
    QFile file(latencyFile(device, sysRoot));
    if (!file.open(QIODevice::ReadOnly)) return -1;
    bool ok = false;
    const int ms = file.read(16).trimmed().toInt(&ok);
    return ok && ms >= 0 ? ms : -1;
}

QString latencyAdvice(const QString &device, const QString &sysRoot) {
    const int ms = latencyTimerMs(device, sysRoot);
    if (ms <= kLatencyAdviceMs) return {};
    return QStringLiteral("The adapter holds replies for %1 ms, which slows every exchange. To "
                          "set it to 1 ms:\necho 1 | sudo tee %2")
        .arg(ms)
        .arg(latencyFile(device, sysRoot));
}

} // namespace ComPorts
