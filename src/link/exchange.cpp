#include "link/exchange.h"

#include "link/link.h"

#include <QEventLoop>
#include <QPointer>
#include <optional>

QString TrimBlanks(const QString &text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == QLatin1Char(' '))
        ++first;
    while (last > first && text.at(last - 1) == QLatin1Char(' '))
        --last;
    return text.mid(first, last - first);
}

namespace {

const QString kCR = QStringLiteral("\r");

bool bytesWaiting() {
    SerialLine *line = Link::port();
    return !line || !line->isOpen() || line->bytesAvailable() > 0;
}

// The rack answers in plain text. Control bytes in a reply are line noise (a loose plug, a
// wrong baud rate), and a reply carrying them is no answer, so the retry layer asks again
// rather than take the noise as a card name or a value.
bool isNoise(const QByteArray &reply) {
    for (const char c : reply)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return true;
    return false;
}

// Replies that end a write attempt, and a read's "I" step, as failures.
bool isWriteFailure(const QString &reply) {
    return reply.isEmpty() || reply == QLatin1String("CNU") || reply == QLatin1String("CNG") ||
           reply == QLatin1String("DTMOUT");
}

// What a read makes of its item reply; nothing when the reply is data.
std::optional<QString> itemWord(const QString &reply) {
    if (reply.isEmpty() || reply == QLatin1String("DTMOUT")) return QString();
    if (reply == QLatin1String("CNG")) return reply;
    if (reply == QLatin1String("CNU")) return QStringLiteral("NEEDLESS");
    return std::nullopt;
}

WriteHold &writeHold() {
    static WriteHold hold;
    return hold;
}

template <typename Attempt> QString retry(int retries, Attempt attempt) {
    QString result;
    for (int counter = 0; counter <= retries; ++counter) {
        result = TrimBlanks(attempt());
        if (!result.isEmpty()) break;
    }
    return result;
}

int stepsUnderWay = 0;

} // namespace

bool StepUnderWay() { return stepsUnderWay > 0; }

void SetWriteHold(WriteHold hold) {
    writeHold() = std::move(hold);
}

bool WritesHeld() {
    return static_cast<bool>(writeHold());
}

void SendRecv(const QString &command, QString &reply) {
    reply.clear();
    // Whatever path a data line takes during a dry run, it does not reach the card.
    if (WritesHeld() && command.startsWith(QLatin1Char('D'))) return;
    QPointer<SerialLine> line = Link::port();
    if (!line || !line->isOpen()) {
        Link::notifyTraffic(Link::Traffic::Sent, command);
        Link::notifyTraffic(Link::Traffic::NoReply, QString());
        return;
    }

    IntervalTimerOn(3000);
    ++stepsUnderWay;
    Link::notifyTraffic(Link::Traffic::Sent, command);
    line->write(command.toLatin1());

    // Sleep until something can change the outcome: data, the step limit, the end of a step
    // nested in this one (which stops the shared timer), or the line going away.
    QEventLoop loop;
    QObject::connect(line, &SerialLine::readyRead, &loop, &QEventLoop::quit);
    QObject::connect(line, &SerialLine::lineLost, &loop, &QEventLoop::quit);
    QObject::connect(line, &QObject::destroyed, &loop, &QEventLoop::quit);
    QObject::connect(Link::events(), &Link::Events::stepEnded, &loop, &QEventLoop::quit);
    QObject::connect(Link::events(), &Link::Events::stepExpired, &loop, &QEventLoop::quit);
    QByteArray received;
    bool complete = false;
    for (;;) {
        if (line && line->isOpen() && line->bytesAvailable() > 0) {
            const QByteArray chunk = line->readAll();
            received += chunk;
            if (received.size() > kMaxReplyBytes) received = received.right(kMaxReplyBytes);
            if (chunk.endsWith('\r')) {
                complete = true;
                break;
            }
        }
        if (IntervalTimerCheck() || !IntervalTimerEnabled() || !line || !line->isOpen()) break;
        // A program on its way out runs no more event loops (exec returns at once): nothing
        // could end the wait then, so the step gives up rather than spin.
        if (loop.exec() < 0) break;
    }

    if (complete) received.chop(1);
    if (complete && !isNoise(received)) {
        reply = QString::fromLatin1(received);
        Link::notifyTraffic(Link::Traffic::Received, reply);
    } else {
        // What came instead of a reply goes to the observers, so that a log shows the noise.
        if (complete) received += '\r';
        Link::notifyTraffic(Link::Traffic::NoReply, QString::fromLatin1(received));
    }
    --stepsUnderWay;
    IntervalTimerOff();
}

QString SendLine(const QString &command) {
    QString reply;
    SendRecv(command, reply);
    return TrimBlanks(reply);
}

QString ReadDataOnce(const QString &group, const QString &item) {
    if (bytesWaiting()) return QString();
    if (SendLine("G" + group + kCR) != QLatin1String("COK")) return QString();
    if (item.isEmpty()) return QString();
    const QString reply = SendLine("I" + item + kCR);
    return itemWord(reply).value_or(reply.mid(1));
}

QString WriteDataOnce(const QString &group, const QString &item, const QString &data) {
    if (WritesHeld()) return writeHold()(group, item, data);
    if (bytesWaiting()) return QString();
    if (SendLine("G" + group + kCR) != QLatin1String("COK")) return QString();
    if (isWriteFailure(SendLine("I" + item + kCR))) return QString();
    const QString reply = SendLine("D" + data + kCR);
    if (isWriteFailure(reply)) return QString();
    return reply.mid(1);
}

QString WriteDataChkOnce(const QString &group, const QString &item, const QString &data) {
    if (WritesHeld()) return writeHold()(group, item, data);
    if (SendLine("G" + group + kCR) != QLatin1String("COK")) return QString();
    if (item.isEmpty()) return QString();
    const QString itemReply = SendLine("I" + item + kCR);
    if (const auto word = itemWord(itemReply)) return *word;
    if (itemReply == QLatin1String("D    invalid data")) return QStringLiteral("CNG");
    const QString reply = SendLine("D" + data + kCR);
    if (isWriteFailure(reply)) return QString();
    return reply.mid(1);
}

QString ReadData(int retries, const QString &group, const QString &item) {
    return retry(retries, [&] { return ReadDataOnce(group, item); });
}

QString WriteData(int retries, const QString &group, const QString &item, const QString &data) {
    return retry(retries, [&] { return WriteDataOnce(group, item, data); });
}

QString WriteDataChk(int retries, const QString &group, const QString &item, const QString &data) {
    return retry(retries, [&] { return WriteDataChkOnce(group, item, data); });
}
