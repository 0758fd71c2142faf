// Opens arbitrary bytes as the gateway card's settings file (.hlk). A refused file must say why
// and leave the settings alone; a read file that saves again must read back to the same values,
// the entries whose device code and radix were never set included.
#include "comm/hlinkfile.h"
#include "fuzzsupport.h"
#include "ui/textfile.h"

namespace {

QStringList fieldsOf(const HlinkFile::Settings &s) {
    QStringList fields = {QString::number(s.version),
                          s.pausePeriod,
                          s.ip,
                          s.subnetMask,
                          s.gateway,
                          s.serverType,
                          s.cpuNo,
                          s.timeOut,
                          s.networkNo,
                          s.stationNo,
                          s.serverIp,
                          s.portNo,
                          s.deviceNo};
    const QString unset = QStringLiteral("<never set>");
    for (const HlinkFile::Row &row : s.rows)
        fields << row.cardType << row.chNo << row.devType << row.code.value_or(unset)
               << row.radix.value_or(unset) << row.add16 << row.add10;
    return fields;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString text;
    if (!TextFile::decode(bytes, HlinkFile::kKind, text).isEmpty()) return 0;

    HlinkFile::Settings settings;
    settings.ip = QStringLiteral("untouched");
    const QStringList before = fieldsOf(settings);
    const QString error = HlinkFile::Parse(text, settings);
    if (!error.isEmpty()) {
        fuzz::check(!error.trimmed().isEmpty(), "a refusal without words");
        fuzz::check(fieldsOf(settings) == before, "a refused file changed the settings");
        return 0;
    }

    QStringList lines;
    const QString composeError = HlinkFile::Compose(settings, lines);
    fuzz::check(composeError.isEmpty(), "a file that was read cannot be saved again",
                composeError.toUtf8());
    fuzz::check(lines.size() == HlinkFile::kLines, "a saved file of another length");
    HlinkFile::Settings again;
    const QString againError = HlinkFile::Parse(lines.join("\r\n") + "\r\n", again);
    fuzz::check(againError.isEmpty(), "a saved file does not read back", againError.toUtf8());
    fuzz::check(fieldsOf(again) == fieldsOf(settings), "a value changed on its way through a file",
                fieldsOf(settings).join('|').toUtf8() + "\n---\n" +
                    fieldsOf(again).join('|').toUtf8());
    return 0;
}
