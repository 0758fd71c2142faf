#include "comm/wirelessfile.h"

#include "comm/commdialog.h"
#include "ui/textfile.h"

namespace WirelessFile {

namespace {

// A settings file is some thirty short lines; anything far larger is something else.
constexpr qint64 kMaxFileBytes = 64 * 1024;
// The version is a 16-bit number in the dialogs.
constexpr int kMaxVersion = 32767;

Layout channels(int fromVersion = 0) {
    Layout lines;
    for (int i = 0; i < 10; ++i)
        lines.append({QStringLiteral("wirChNo(%1)").arg(i), fromVersion});
    return lines;
}

// The radio channels, short address and network name, which all three formats keep together.
Layout channelsToNetwork() {
    return Layout{{"wirPANID", 0}} + channels() + Layout{{"wirShortAddress", 0}, {"wirNetWork", 0}};
}

Layout zrvLayout(bool dutyTime, int keyFrom, int modeFrom) {
    Layout lines = {{"modAdd", 0},        {"List_M_DataMode", 0}, {"List_M_Baudrate", 0},
                    {"List_M_Parity", 0}, {"List_M_WEPort", 0},   {"modTimer", 0},
                    {"wirTimer", 0}};
    lines += channelsToNetwork();
    lines.append({kKey, keyFrom});
    if (dutyTime) lines.append({"wirTimer_Send", 0});
    lines += Layout{{"List_W_Level", 0},      {"List_W_Scale", 0},  {"List_W_flag", 0},
                    {"FixNetworkFlag", 0},    {"ShortAddress2", 0}, {"SetDetour", 0},
                    {"List_M_Mode", modeFrom}};
    return lines;
}

Layout extras(int fromVersion) {
    return {{"movementMode", fromVersion},
            {"NSAQuality", fromVersion},
            {"NetworkJointMode", fromVersion},
            {"NDTTSU", fromVersion}};
}

QString captionOr(const CaptionOf &captionOf, const QString &control) {
    return captionOf ? captionOf(control) : control;
}

int linesOfVersion(const Layout &layout, int version) {
    int count = 0;
    for (const Line &line : layout)
        if (line.fromVersion <= version) ++count;
    return count;
}

QString shifted(const QString &text, int direction) {
    if (text.size() != kKeyLength) return {};
    QString out(kKeyLength, QChar());
    for (int i = 0; i < kKeyLength; ++i) {
        const int digit = kScrambleKey.at(i).unicode() - u'0';
        out[i] = QChar(static_cast<char16_t>(text.at(i).unicode() + direction * digit));
    }
    return out;
}

} // namespace

const Layout &LayoutOf(Format format) {
    static const Layout zrv = zrvLayout(true, 2, 3) + extras(3);
    static const Layout zrv1f = zrvLayout(false, 0, 0) + extras(0);
    // The ".zq" keeps an order of its own, and no Modbus lists.
    static const Layout zq =
        Layout{{"modAdd", 0}} + channelsToNetwork() +
        Layout{
            {kKey, 1},           {"wirTimer_Send", 0}, {"List_W_Level", 0},   {"wirTimer", 0},
            {"List_W_Scale", 0}, {"List_W_flag", 0},   {"FixNetworkFlag", 0}, {"ShortAddress2", 0},
            {"SetDetour", 0},    {"modTimer", 0}} +
        extras(2);
    switch (format) {
    case Format::Zrv1f:
        return zrv1f;
    case Format::Zq:
        return zq;
    case Format::Zrv:
        break;
    }
    return zrv;
}

QString KindOf(Format format) {
    switch (format) {
    case Format::Zrv1f:
        return QStringLiteral("a zrv1f settings file");
    case Format::Zq:
        return QStringLiteral("a zq settings file");
    case Format::Zrv:
        break;
    }
    return QStringLiteral("a zrv settings file");
}

QString ScrambleKey(const QString &key) {
    return shifted(key, 1);
}

QString UnscrambleKey(const QString &text) {
    return shifted(text, -1);
}

QString Compose(Format format, const Settings &settings, QStringList &lines,
                const CaptionOf &captionOf) {
    QStringList out = {QString::number(settings.version)};
    for (const Line &line : LayoutOf(format)) {
        if (line.fromVersion > settings.version) continue;
        QString value = settings.values.value(line.control);
        if (line.control == kKey) {
            if (value.size() != kKeyLength)
                return QStringLiteral("The encryption key is not %1 characters long, so a "
                                      "settings file cannot keep it.")
                    .arg(kKeyLength);
            value = ScrambleKey(value);
        }
        QString text;
        const QString error = Comm::QuotedLine(value, captionOr(captionOf, line.control), text);
        if (!error.isEmpty()) return error;
        out << text;
    }
    lines = out;
    return {};
}

QString Parse(Format format, const QString &text, Settings &settings, const CaptionOf &captionOf) {
    const QString kind = KindOf(format);
    const QList<TextFile::Line> lines = TextFile::lines(text);
    if (lines.isEmpty()) return Comm::BrokenLine(kind, 1, QStringLiteral("is missing"));
    Settings read;
    if (!Comm::BareNumberLine(lines.first().text, 0, kMaxVersion, read.version))
        return Comm::BrokenLine(kind, lines.first().number,
                                QStringLiteral("holds no file version"));

    const Layout &layout = LayoutOf(format);
    const int expected = 1 + linesOfVersion(layout, read.version);
    if (lines.size() < expected)
        return Comm::BrokenLine(kind, lines.last().number + 1,
                                QStringLiteral("is missing: a version %1 file has %2 lines")
                                    .arg(read.version)
                                    .arg(expected));
    if (lines.size() > expected)
        return Comm::BrokenLine(kind, lines.at(expected).number,
                                QStringLiteral("goes on past the %1 lines of a version %2 file")
                                    .arg(expected)
                                    .arg(read.version));

    int at = 1;
    for (const Line &line : layout) {
        if (line.fromVersion > read.version) continue;
        const TextFile::Line &fileLine = lines.at(at++);
        const QString caption = captionOr(captionOf, line.control);
        QString value;
        if (!Comm::UnquoteLine(fileLine.text, value))
            return Comm::BrokenLine(
                kind, fileLine.number,
                QStringLiteral("(%1) is not a text in double quotes").arg(caption));
        if (line.control == kKey) {
            value = UnscrambleKey(value);
            bool printable = !value.isEmpty();
            for (const QChar c : value)
                printable = printable && c >= QLatin1Char(' ') && c.unicode() < 0x7f;
            if (!printable)
                return Comm::BrokenLine(kind, fileLine.number,
                                        QStringLiteral("(%1) holds no key of %2 characters")
                                            .arg(caption)
                                            .arg(kKeyLength));
        }
        read.values.insert(line.control, value);
    }
    settings = read;
    return {};
}

QString Write(const QString &path, Format format, const Settings &settings,
              const CaptionOf &captionOf, TextFile::Encoding encoding) {
    QStringList lines;
    const QString error = Compose(format, settings, lines, captionOf);
    if (!error.isEmpty()) return error;
    return TextFile::writeLines(path, lines, "\r\n", encoding);
}

QString Read(const QString &path, Format format, Settings &settings, const CaptionOf &captionOf,
             TextFile::Encoding *encoding) {
    QString text;
    const QString error = TextFile::read(path, kMaxFileBytes, KindOf(format), text, encoding);
    if (!error.isEmpty()) return error;
    return Parse(format, text, settings, captionOf);
}

} // namespace WirelessFile
