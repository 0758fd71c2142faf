#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// The program's serial port (MSComm1): the only way to the rack. The exchanges talk to this
// interface; the real port and the simulated rack both implement it.
class SerialLine : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~SerialLine() override = default;

    // Opens COM port `comNumber` at 9600,n,8,1. On failure returns false and, if `error` is
    // given, a text a user can act on.
    virtual bool open(int comNumber, QString *error = nullptr) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual qint64 bytesAvailable() const = 0;
    virtual QByteArray readAll() = 0;
    virtual void write(const QByteArray &data) = 0;

signals:
    void readyRead();
    // The line closed under us (adapter pulled, far end gone). The port is already closed.
    void lineLost(const QString &reason);
};
