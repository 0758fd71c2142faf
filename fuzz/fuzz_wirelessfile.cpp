// Opens arbitrary bytes as a settings file of the wireless comm cards, in the format the first
// byte picks (.zrv, .zrv1f, .zq). A refused file must say why and leave the settings alone; a read
// file that saves again must read back to the same values.
#include "comm/wirelessfile.h"
#include "fuzzsupport.h"
#include "ui/textfile.h"

namespace {

using WirelessFile::Format;

QByteArray describe(const WirelessFile::Settings &settings) {
    QByteArray out = QByteArray::number(settings.version) + '\n';
    for (auto it = settings.values.cbegin(); it != settings.values.cend(); ++it)
        out += it.key().toUtf8() + '=' + it.value().toUtf8() + '\n';
    return out;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    const Format format = static_cast<Format>(data[0] % 3);
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));

    // The way the dialogs read a file: the bytes decoded as the program's text files are.
    QString text;
    if (!TextFile::decode(bytes, WirelessFile::KindOf(format), text).isEmpty()) return 0;

    WirelessFile::Settings settings;
    settings.version = -7;
    const QString error = WirelessFile::Parse(format, text, settings);
    if (!error.isEmpty()) {
        fuzz::check(!error.trimmed().isEmpty(), "a refusal without words");
        fuzz::check(settings.version == -7 && settings.values.isEmpty(),
                    "a refused file changed the settings");
        return 0;
    }

    QStringList lines;
    const QString composeError = WirelessFile::Compose(format, settings, lines);
    if (!composeError.isEmpty()) {
        // A key of another length is read as it stands and only refused on a save.
        fuzz::check(lines.isEmpty(), "a refused save still gave lines");
        return 0;
    }
    WirelessFile::Settings again;
    const QString againError = WirelessFile::Parse(format, lines.join("\r\n") + "\r\n", again);
    fuzz::check(againError.isEmpty(), "a saved file does not read back", againError.toUtf8());
    fuzz::check(again.version == settings.version && again.values == settings.values,
                "a value changed on its way through a file",
                describe(settings) + "---\n" + describe(again));
    return 0;
}
