// Plays a rack that answers anything at all: every command gets bytes the input decides, whole,
// in pieces, without CR, late, or not at all, and the line may drop in the middle. The exchanges
// must end within their limit, send only the lines they were asked for and return only what the
// line gave them.
#include "fuzzsupport.h"
#include "link/exchange.h"
#include "link/link.h"

#include <QTimer>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>

namespace {

// Replies a real rack gives, so the input reaches the deeper steps without guessing them.
const char *const kWords[] = {"COK",   "CNG", "CNU", "DTMOUT", "D    invalid data", "D12.5", "D",
                              " COK ", "DOK", "D:",  "D1:2"};

class FuzzLine : public SerialLine {
public:
    explicit FuzzLine(FuzzedDataProvider &in) : m_in(in) {}

    bool open(int, QString * = nullptr) override {
        m_open = true;
        return true;
    }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    qint64 bytesAvailable() const override { return m_open ? m_rx.size() : 0; }
    QByteArray readAll() override { return std::exchange(m_rx, QByteArray()); }

    void write(const QByteArray &data) override {
        m_written += data;
        if (m_in.remaining_bytes() == 0) return; // the rack has gone quiet
        switch (m_in.ConsumeIntegralInRange(0, 7)) {
        case 0: // swallowed
            return;
        case 1: // the adapter is pulled out
            QTimer::singleShot(0, this, [this] {
                m_open = false;
                emit lineLost(QStringLiteral("gone"));
            });
            return;
        case 2:
        case 3: { // a known word, whole
            const size_t word = m_in.ConsumeIntegralInRange<size_t>(0, std::size(kWords) - 1);
            sendLater(QByteArray(kWords[word]) + '\r');
            return;
        }
        default: { // anything, in pieces
            const int pieces = m_in.ConsumeIntegralInRange(1, 4);
            for (int i = 0; i < pieces; ++i) {
                const std::string raw = m_in.ConsumeRandomLengthString(48);
                sendLater(QByteArray(raw.data(), qsizetype(raw.size())));
            }
            return;
        }
        }
    }

    // Bytes waiting before anything was asked, as a late reply leaves them.
    void preload(const QByteArray &bytes) { m_rx += bytes; }
    const QByteArray &written() const { return m_written; }
    const QByteArray &everythingSent() const { return m_sent; }

private:
    void sendLater(const QByteArray &bytes) {
        m_sent += bytes;
        QTimer::singleShot(0, this, [this, bytes] {
            if (!m_open) return;
            m_rx += bytes;
            emit readyRead();
        });
    }

    FuzzedDataProvider &m_in;
    QByteArray m_rx;
    QByteArray m_written;
    QByteArray m_sent;
    bool m_open = false;
};

QString takeField(FuzzedDataProvider &in) {
    const std::string raw = in.ConsumeRandomLengthString(6);
    return QString::fromLatin1(raw.data(), qsizetype(raw.size()));
}

// Every line written must be one of the three the operation was asked to send. Returns how many
// lines went out (a group text may itself hold a CR, so the CRs cannot be counted).
int checkWritten(const QByteArray &written, const QString &group, const QString &item,
                 const QString &data, bool dataAllowed) {
    const QByteArray g = "G" + group.toLatin1() + '\r';
    const QByteArray i = "I" + item.toLatin1() + '\r';
    const QByteArray d = "D" + data.toLatin1() + '\r';
    qsizetype at = 0;
    int lines = 0;
    for (; at < written.size(); ++lines) {
        if (written.mid(at).startsWith(g)) {
            at += g.size();
        } else if (written.mid(at).startsWith(i)) {
            at += i.size();
        } else if (dataAllowed && written.mid(at).startsWith(d)) {
            at += d.size();
        } else {
            fuzz::fail("a line nobody asked for went to the rack", written);
        }
    }
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    // The step limit of 3000 ms becomes 1 ms: a reply that never comes costs nothing.
    Clock::setDivisor(100000);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider in(data, size);
    const int operation = in.ConsumeIntegralInRange(0, 2);
    const int retries = in.ConsumeIntegralInRange(0, 3);
    const QString group = takeField(in);
    const QString item = takeField(in);
    const QString value = takeField(in);
    const bool preload = in.ConsumeIntegralInRange(0, 7) == 0;

    auto owned = std::make_unique<FuzzLine>(in);
    FuzzLine *line = owned.get();
    line->open(1);
    if (preload) line->preload(QByteArray(1 + in.ConsumeIntegralInRange(0, 3), 'x'));
    Link::resetTimer();
    Link::setPort(std::move(owned));

    QString result;
    switch (operation) {
    case 0:
        result = ReadData(retries, group, item);
        break;
    case 1:
        result = WriteData(retries, group, item, value);
        break;
    default:
        result = WriteDataChk(retries, group, item, value);
        break;
    }

    fuzz::check(result == TrimBlanks(result), "a result with blanks at its ends", result.toUtf8());
    // Only a read and the checked write put words of their own in place of a reply.
    const bool word =
        operation != 1 && (result == QLatin1String("CNG") || result == QLatin1String("NEEDLESS"));
    fuzz::check(result.isEmpty() || word || line->everythingSent().contains(result.toLatin1()),
                "a result the rack never sent", result.toLatin1());
    const int lines = checkWritten(line->written(), group, item, value, operation != 0);
    fuzz::check(lines <= 3 * (retries + 1), "more steps than attempts allow", line->written());
    // Nothing is sent while earlier bytes wait, except by the checked write.
    if (preload && operation != 2)
        fuzz::check(line->written().isEmpty(), "sent with bytes waiting", line->written());

    Link::setPort(nullptr); // drops the line and the replies it still had on the way
    Link::resetTimer();
    return 0;
}
