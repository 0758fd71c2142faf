#include "comm/hlinkfile.h"

#include "comm/commdialog.h"
#include "ui/textfile.h"

namespace HlinkFile {

namespace {

constexpr qint64 kMaxFileBytes = 64 * 1024;
constexpr int kHeadLines = 13; // the version and the twelve settings

struct HeadLine {
    QString Settings::*member;
    const char *caption;
};

// Lines 2 to 13, in order.
const HeadLine kHead[] = {
    {&Settings::pausePeriod, "Pause period"},    {&Settings::ip, "IP address"},
    {&Settings::subnetMask, "Subnet mask"},      {&Settings::gateway, "Default gateway"},
    {&Settings::serverType, "Protocol type"},    {&Settings::cpuNo, "Processor No."},
    {&Settings::timeOut, "SLMP timeout"},        {&Settings::networkNo, "Network No."},
    {&Settings::stationNo, "Station No."},       {&Settings::serverIp, "SLMP server IP address"},
    {&Settings::portNo, "SLMP server Port No."}, {&Settings::deviceNo, "Entry No."},
};

// The seven lines of an entry: a text, or one that may be missing (an empty line).
struct RowLine {
    QString Row::*text;
    std::optional<QString> Row::*optional;
    const char *caption;
};

const RowLine kRowLine[] = {
    {&Row::cardType, nullptr, "I/O type"},
    {&Row::chNo, nullptr, "Ch. No."},
    {&Row::devType, nullptr, "SLMP device"},
    {nullptr, &Row::code, "device code"},
    {nullptr, &Row::radix, "radix"},
    {&Row::add16, nullptr, "Device address Hex."},
    {&Row::add10, nullptr, "Device address Dec."},
};

QString entryCaption(int row, const char *caption) {
    return QStringLiteral("Entry %1 %2").arg(row + 1).arg(QLatin1String(caption));
}

} // namespace

QString Compose(const Settings &settings, QStringList &lines) {
    QStringList out = {QString::number(settings.version)};
    const auto add = [&out](const QString &text, const QString &caption) {
        QString line;
        const QString error = Comm::QuotedLine(text, caption, line);
        out << line;
        return error;
    };
    for (const HeadLine &head : kHead) {
        const QString error = add(settings.*head.member, QLatin1String(head.caption));
        if (!error.isEmpty()) return error;
    }
    for (int r = 0; r < kRows; ++r) {
        const Row &row = settings.rows.at(size_t(r));
        for (const RowLine &line : kRowLine) {
            if (line.optional && !(row.*line.optional)) {
                out << QString();
                continue;
            }
            const QString text = line.text ? row.*line.text : *(row.*line.optional);
            const QString error = add(text, entryCaption(r, line.caption));
            if (!error.isEmpty()) return error;
        }
    }
    lines = out;
    return {};
}

QString Parse(const QString &text, Settings &settings) {
    // Empty lines are values here (a device never chosen), so none is skipped; but the last
    // line is a text in quotes, so blank lines after it are no harm.
    QList<TextFile::Line> lines = TextFile::lines(text, false);
    while (!lines.isEmpty() && lines.last().text.trimmed().isEmpty())
        lines.removeLast();
    if (lines.isEmpty()) return Comm::BrokenLine(kKind, 1, QStringLiteral("is missing"));
    Settings read;
    if (!Comm::BareNumberLine(lines.first().text, -32768, 32767, read.version))
        return Comm::BrokenLine(kKind, 1, QStringLiteral("holds no file version"));
    if (lines.size() < kLines)
        return Comm::BrokenLine(kKind, lines.size() + 1,
                                QStringLiteral("is missing: the file has %1 lines").arg(kLines));
    if (lines.size() > kLines)
        return Comm::BrokenLine(
            kKind, kLines + 1, QStringLiteral("goes on past the %1 lines of the file").arg(kLines));

    int at = 1;
    const auto quoted = [&](const QString &caption, QString &value) {
        if (Comm::UnquoteLine(lines.at(at++).text, value)) return QString();
        return Comm::BrokenLine(kKind, at,
                                QStringLiteral("(%1) is not a text in double quotes").arg(caption));
    };
    for (const HeadLine &head : kHead) {
        const QString error = quoted(QLatin1String(head.caption), read.*head.member);
        if (!error.isEmpty()) return error;
    }
    if (!Comm::NumberInRange(read.deviceNo, 0, kRows, 2))
        return Comm::BrokenLine(
            kKind, kHeadLines,
            QStringLiteral("(Entry No.) holds \"%1\", not a number from 0 to 16")
                .arg(read.deviceNo.left(20)));
    for (int r = 0; r < kRows; ++r) {
        Row &row = read.rows.at(size_t(r));
        for (const RowLine &line : kRowLine) {
            if (line.optional && lines.at(at).text.trimmed().isEmpty()) {
                ++at;
                continue;
            }
            QString value;
            const QString error = quoted(entryCaption(r, line.caption), value);
            if (!error.isEmpty()) return error;
            if (line.optional)
                row.*line.optional = value;
            else
                row.*line.text = value;
        }
    }
    settings = read;
    return {};
}

QString Write(const QString &path, const Settings &settings, TextFile::Encoding encoding) {
    QStringList lines;
    const QString error = Compose(settings, lines);
    if (!error.isEmpty()) return error;
    return TextFile::writeLines(path, lines, "\r\n", encoding);
}

QString Read(const QString &path, Settings &settings, TextFile::Encoding *encoding) {
    QString text;
    const QString error = TextFile::read(path, kMaxFileBytes, kKind, text, encoding);
    if (!error.isEmpty()) return error;
    return Parse(text, settings);
}

} // namespace HlinkFile
