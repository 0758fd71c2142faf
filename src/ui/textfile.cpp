#include "ui/textfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>

namespace TextFile {

namespace {

WriteFunction g_write;

bool isBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

bool isBlankLine(const QString &line) {
    for (const QChar c : line)
        if (!isBlank(c)) return false;
    return true;
}

// Control characters other than tab and line ends never stand in a text file. They are the
// same bytes in every code page this program meets, so the raw bytes are looked at.
bool holdsBinary(const QByteArray &bytes) {
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if ((u < 0x20 && u != '\t' && u != '\r' && u != '\n') || u == 0x7f) return true;
    }
    return false;
}

qint64 writeBytes(QIODevice &device, const QByteArray &bytes) {
    return g_write ? g_write(device, bytes) : device.write(bytes);
}

const QByteArray kUtf8Bom = QByteArrayLiteral("\xEF\xBB\xBF");

// ICU knows the Windows variant under this name; plain Shift_JIS lacks its extensions.
const char *cp932Name() {
    static const char *const name = [] {
        for (const char *candidate : {"windows-31j", "Shift_JIS"})
            if (QStringDecoder(candidate).isValid()) return candidate;
        return static_cast<const char *>(nullptr);
    }();
    return name;
}

// The whole file in one go: a stateless decoder also reports a sequence cut off at the end.
bool decodeAs(QStringDecoder decoder, const QByteArray &bytes, QString &text) {
    if (!decoder.isValid()) return false;
    QString decoded = decoder(bytes);
    if (decoder.hasError()) return false;
    text = std::move(decoded);
    return true;
}

QStringEncoder encoderFor(Encoding encoding) {
    constexpr auto flags = QStringConverter::Flag::Stateless;
    switch (encoding) {
    case Encoding::Utf8:
    case Encoding::Utf8Bom:
        return QStringEncoder(QStringConverter::Utf8, flags);
    case Encoding::Cp932:
        return cp932Name() ? QStringEncoder(cp932Name(), flags) : QStringEncoder();
    case Encoding::System:
        break;
    }
    return QStringEncoder(QStringConverter::System, flags);
}

} // namespace

QString readBytes(const QString &path, qint64 maxBytes, const QString &kind, QByteArray &bytes) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return QStringLiteral("This is not a file that can be read as %1.").arg(kind);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return file.errorString();
    const QString tooLarge = QStringLiteral("The file is too large to be %1.").arg(kind);
    if (file.size() > maxBytes) return tooLarge;
    QByteArray read = file.read(maxBytes + 1);
    if (file.error() != QFileDevice::NoError) return file.errorString();
    if (read.size() > maxBytes) return tooLarge;
    bytes = std::move(read);
    return {};
}

bool cp932Available() {
    return cp932Name() != nullptr;
}

QString decode(const QByteArray &bytes, const QString &kind, QString &text, Encoding *encoding) {
    if (holdsBinary(bytes))
        return QStringLiteral("The file holds binary data; it is not %1.").arg(kind);
    constexpr auto flags = QStringConverter::Flag::Stateless;
    Encoding found = Encoding::Utf8;
    QString decoded;
    if (bytes.startsWith(kUtf8Bom)) {
        found = Encoding::Utf8Bom;
        if (!decodeAs(QStringDecoder(QStringConverter::Utf8, flags), bytes.mid(kUtf8Bom.size()),
                      decoded))
            return QStringLiteral("The file starts as UTF-8 but holds bytes that are not UTF-8; "
                                  "it is not %1 that can be read.")
                .arg(kind);
    } else if (!decodeAs(QStringDecoder(QStringConverter::Utf8, flags), bytes, decoded)) {
        found = Encoding::Cp932;
        if (!cp932Name() || !decodeAs(QStringDecoder(cp932Name(), flags), bytes, decoded))
            return QStringLiteral("The file holds characters that are neither UTF-8 nor the "
                                  "Japanese Windows code page (CP932); it is not %1 that can be "
                                  "read.")
                .arg(kind);
    }
    text = std::move(decoded);
    if (encoding) *encoding = found;
    return {};
}

QString read(const QString &path, qint64 maxBytes, const QString &kind, QString &text,
             Encoding *encoding) {
    QByteArray bytes;
    const QString error = readBytes(path, maxBytes, kind, bytes);
    if (!error.isEmpty()) return error;
    return decode(bytes, kind, text, encoding);
}

QList<Line> lines(const QString &text, bool skipBlank) {
    QList<Line> out;
    int number = 1;
    qsizetype start = 0;
    const qsizetype n = text.size();
    while (start <= n) {
        qsizetype end = start;
        while (end < n && text.at(end) != QLatin1Char('\r') && text.at(end) != QLatin1Char('\n'))
            ++end;
        const QString line = text.mid(start, end - start);
        if (!skipBlank || !isBlankLine(line)) out.append({number, line});
        if (end >= n) break;
        start = end + 1;
        if (text.at(end) == QLatin1Char('\r') && start < n && text.at(start) == QLatin1Char('\n'))
            ++start;
        ++number;
    }
    // A file that ends with its line end has no line after it.
    if (!skipBlank && !out.isEmpty() && out.last().text.isEmpty() &&
        (text.endsWith(QLatin1Char('\n')) || text.endsWith(QLatin1Char('\r'))))
        out.removeLast();
    return out;
}

QString encode(const QString &text, QByteArray &bytes, Encoding encoding) {
    QStringEncoder encoder = encoderFor(encoding);
    if (!encoder.isValid())
        return QStringLiteral("This system cannot write the Japanese Windows code page (CP932).");
    QByteArray encoded = encoder(text);
    if (encoder.hasError())
        return encoding == Encoding::Cp932
                   ? QStringLiteral("The text holds characters that the Japanese Windows code "
                                    "page (CP932) of this file cannot store.")
                   : QStringLiteral("The text holds characters that the system's code page "
                                    "cannot store.");
    bytes = std::move(encoded);
    return {};
}

QByteArray preamble(Encoding encoding) {
    return encoding == Encoding::Utf8Bom ? kUtf8Bom : QByteArray();
}

QString writeChunks(const QString &path, const QList<QByteArray> &chunks) {
    QSaveFile file(path);
    // Unbuffered, so each write reaches the disk and reports its own count: a buffer flushed by
    // commit() can come out short with no error at all, and commit() would keep the stub.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) return file.errorString();
    for (const QByteArray &chunk : chunks) {
        // A short count without an error state is a full disk too: commit() would keep a
        // truncated file, so nothing short of every byte is accepted.
        if (writeBytes(file, chunk) != chunk.size()) {
            const QString error =
                file.error() != QFileDevice::NoError
                    ? file.errorString()
                    : QStringLiteral("Not all of the file could be written; the disk may be full.");
            file.cancelWriting();
            return error;
        }
    }
    if (!file.commit()) return file.errorString();
    return {};
}

QString writeLines(const QString &path, const QStringList &lines, const QByteArray &lineEnd,
                   Encoding encoding) {
    QList<QByteArray> chunks;
    for (const QString &line : lines) {
        QByteArray bytes;
        const QString error = encode(line, bytes, encoding);
        if (!error.isEmpty()) return error;
        // The mark goes with the first line, so a save writes as many chunks in every encoding.
        chunks.append((chunks.isEmpty() ? preamble(encoding) : QByteArray()) + bytes + lineEnd);
    }
    return writeChunks(path, chunks);
}

namespace {

// One key for the ways a path can be written ("a/../b.zq", a link to it).
QString fileKey(const QString &path) {
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical;
}

} // namespace

void KnownEncodings::opened(const QString &path, Encoding encoding) {
    m_encodings.insert(fileKey(path), encoding);
}

Encoding KnownEncodings::forSaving(const QString &path) const {
    return m_encodings.value(fileKey(path), Encoding::System);
}

void setWriteFunction(WriteFunction write) {
    g_write = std::move(write);
}

} // namespace TextFile
