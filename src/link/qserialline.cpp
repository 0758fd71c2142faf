#include "link/qserialline.h"

#include "link/comports.h"

#include <QFileInfo>
#include <QSerialPort>

#ifdef Q_OS_LINUX
#include <linux/serial.h>
#include <sys/ioctl.h>
#endif

QSerialLine::QSerialLine(QObject *parent) : SerialLine(parent), m_port(new QSerialPort(this)) {
    connect(m_port, &QSerialPort::readyRead, this, &SerialLine::readyRead);
    connect(m_port, &QSerialPort::errorOccurred, this,
            [this](QSerialPort::SerialPortError e) { onError(static_cast<int>(e)); });
}

QSerialLine::~QSerialLine() {
    close();
}

bool QSerialLine::open(int comNumber, QString *error) {
    return openDevice(ComPorts::resolve(comNumber), error);
}

static QString openErrorText(QSerialPort::SerialPortError code, const QString &path) {
    switch (code) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("%1: no such device. Is the adapter plugged in?").arg(path);
    case QSerialPort::PermissionError:
        return QStringLiteral("%1 is busy or not permitted: another program may hold it, or your "
                              "user is not in the 'dialout' group.")
            .arg(path);
    default:
        return QStringLiteral("%1 cannot be opened.").arg(path);
    }
}

bool QSerialLine::openDevice(const QString &path, QString *error) {
    close();
    // QSerialPort takes a bare name as a /dev entry; give it the link's target instead.
    const QFileInfo info(path);
    m_port->setPortName(info.isSymLink() ? info.symLinkTarget() : path);
    m_port->setBaudRate(QSerialPort::Baud9600);
    m_port->setParity(QSerialPort::NoParity);
    m_port->setDataBits(QSerialPort::Data8);
    m_port->setStopBits(QSerialPort::OneStop);
    m_port->setFlowControl(QSerialPort::NoFlowControl);
    if (m_port->open(QIODevice::ReadWrite)) {
        askForLowLatency();
        return true;
    }
    if (error) *error = openErrorText(m_port->error(), path);
    m_port->clearError();
    return false;
}

// A short reply should reach the program as soon as its CR is in: ask the driver not to hold
// received bytes back. Drivers without the setting (a pseudo-terminal, most built-in ports)
// refuse, and nothing is lost then.
void QSerialLine::askForLowLatency() {
#ifdef Q_OS_LINUX
    const int fd = static_cast<int>(m_port->handle());
    serial_struct serial{};
    if (fd < 0 || ::ioctl(fd, TIOCGSERIAL, &serial) != 0) return;
    if (serial.flags & ASYNC_LOW_LATENCY) return;
    serial.flags |= ASYNC_LOW_LATENCY;
    ::ioctl(fd, TIOCSSERIAL, &serial);
#endif
}

void QSerialLine::close() {
    if (m_port->isOpen()) m_port->close();
}

bool QSerialLine::isOpen() const {
    return m_port->isOpen();
}

qint64 QSerialLine::bytesAvailable() const {
    return m_port->isOpen() ? m_port->bytesAvailable() : 0;
}

QByteArray QSerialLine::readAll() {
    return m_port->isOpen() ? m_port->readAll() : QByteArray();
}

void QSerialLine::write(const QByteArray &data) {
    if (!m_port->isOpen()) return;
    m_port->write(data);
    // QSerialPort keeps written bytes until its write notifier runs, which comes after whatever
    // repaints are queued; hand them to the driver now, so the line starts at once (no blocking).
    m_port->flush();
}

// A vanished adapter reports its error again and again while the port stays open, at full CPU:
// close on the first one and let the waiting step end empty.
void QSerialLine::onError(int error) {
    const auto code = static_cast<QSerialPort::SerialPortError>(error);
    if (code == QSerialPort::ReadError || code == QSerialPort::ResourceError ||
        code == QSerialPort::WriteError) {
        const QString reason = m_port->errorString();
        m_port->clearError();
        if (m_port->isOpen()) {
            m_port->close();
            emit lineLost(reason);
        }
    }
}
