#pragma once

#include "ui/textfile.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>

// The settings files of the wireless comm cards (".zrv", ".zrv1f", ".zq"). Line 1 is the file's
// version, a bare number; each line after it holds one value in double quotes: a list by the
// text of its entry, the encryption key scrambled. Which lines a file has, and in which order,
// follows from its format and its version; a line that its version does not have is left out and
// the lines after it close up. Lines end in CR LF.
namespace WirelessFile {

enum class Format { Zrv, Zrv1f, Zq };

// A value line: the control whose value it holds ("wirChNo(3)"; the key is kKey) and the first
// file version that has it.
struct Line {
    QString control;
    int fromVersion = 0;
};
using Layout = QList<Line>;

const Layout &LayoutOf(Format format);
// "a zrv settings file", as messages name it.
QString KindOf(Format format);

// The control name of the key's line; its value in Settings is the key itself, not scrambled.
inline const QString kKey = QStringLiteral("encryptionKey");
// What scrambles the key, the same in all three formats.
inline const QString kScrambleKey = QStringLiteral("60318275946027153846209731586402");
constexpr int kKeyLength = 32;

// Each character moved up (or back down) by the digit of the scramble key at its place. Both
// take exactly 32 characters and give the empty text for any other length.
QString ScrambleKey(const QString &key);
QString UnscrambleKey(const QString &text);

// What a file holds: its version and the value of each control its version has.
struct Settings {
    int version = 0;
    QMap<QString, QString> values;
};

// A control's caption, for messages; without one the control's name stands.
using CaptionOf = std::function<QString(const QString &control)>;

// The lines of a file of `settings.version`, without line ends; an error (and no lines) when a
// value cannot be kept in the file.
QString Compose(Format format, const Settings &settings, QStringList &lines,
                const CaptionOf &captionOf = {});
// A file's text taken apart and checked line by line; `settings` changes only when the whole
// file is good. The error names the line and what is wrong with it.
QString Parse(Format format, const QString &text, Settings &settings,
              const CaptionOf &captionOf = {});

// Compose, then an atomic write in `encoding`: on any fault the old file stays as it was.
QString Write(const QString &path, Format format, const Settings &settings,
              const CaptionOf &captionOf = {},
              TextFile::Encoding encoding = TextFile::Encoding::System);
// The whole file read, then Parse; `encoding`, when given, is set to the one the file was in.
QString Read(const QString &path, Format format, Settings &settings,
             const CaptionOf &captionOf = {}, TextFile::Encoding *encoding = nullptr);

} // namespace WirelessFile
