#pragma once

#include "link/serialline.h"

class QSerialPort;

// The real serial port: 9600 baud, no parity, 8 data bits, 1 stop bit.
class QSerialLine : public SerialLine {
    Q_OBJECT
public:
    explicit QSerialLine(QObject *parent = nullptr);
    ~QSerialLine() override;

    bool open(int comNumber, QString *error = nullptr) override;
    void close() override;
    bool isOpen() const override;
    qint64 bytesAvailable() const override;
    QByteArray readAll() override;
    void write(const QByteArray &data) override;

    // Opens a device by path; used by open() after resolving the COM number.
    bool openDevice(const QString &path, QString *error = nullptr);

private:
    void onError(int error);
    void askForLowLatency();
    QSerialPort *m_port;
};
