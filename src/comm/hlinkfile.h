#pragma once

#include "ui/textfile.h"

#include <QString>
#include <QStringList>
#include <array>
#include <optional>

// The settings file of the SLMP gateway card (".hlk"): 125 lines ending in CR LF. Line 1 is the
// file's version, a bare 0; lines 2 to 13 the card's settings, and then seven lines for each of
// the sixteen entries, active or not. Every value is a text in double quotes, but for an entry's
// device code and radix that were never set, which are empty lines.
namespace HlinkFile {

constexpr int kRows = 16;
constexpr int kLines = 125;

struct Row {
    QString cardType;
    QString chNo;
    QString devType;
    std::optional<QString> code;  // nothing: never set
    std::optional<QString> radix; // nothing: never set
    QString add16;
    QString add10;
};

struct Settings {
    int version = 0;
    QString pausePeriod;
    QString ip;
    QString subnetMask;
    QString gateway;
    QString serverType;
    QString cpuNo;
    QString timeOut;
    QString networkNo;
    QString stationNo;
    QString serverIp;
    QString portNo;
    QString deviceNo; // the count of active entries, 0 to 16
    std::array<Row, kRows> rows;
};

inline const QString kKind = QStringLiteral("an hlk settings file");

// The lines of the file, without line ends; an error (and no lines) for a value the file cannot
// keep.
QString Compose(const Settings &settings, QStringList &lines);
// A file's text taken apart and checked line by line; `settings` changes only when the whole
// file is good. The error names the line and what is wrong with it.
QString Parse(const QString &text, Settings &settings);

// Compose, then an atomic write in `encoding`: on any fault the old file stays as it was.
QString Write(const QString &path, const Settings &settings,
              TextFile::Encoding encoding = TextFile::Encoding::System);
// The whole file read, then Parse; `encoding`, when given, is set to the one the file was in.
QString Read(const QString &path, Settings &settings, TextFile::Encoding *encoding = nullptr);

} // namespace HlinkFile
