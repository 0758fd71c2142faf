#pragma once

#include "rack/cardtable.h"
#include "ui/textfile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>

class QIODevice;

// The "Save" and "Open" commands of the main window: all 17 card records to and from a
// project file. Both ask for the file themselves and tell the user about any fault; the caller
// refreshes its commands afterwards.
void OpenProjectFile();
void SaveProjectFile();

// The pieces of the two commands, free of dialogs, for tests and for tools that feed the reader
// arbitrary bytes.
namespace ProjectFile {

// One line a record, 82 quoted fields a line: name, version, 64 parameters, 16 channel flags.
inline constexpr int kFieldsPerLine = 2 + CardRecord::kParams + CardRecord::kChParams;
inline constexpr int kLines = kRecords;
// Far beyond any real project file; a bigger file is the wrong file, and is not read into memory.
inline constexpr qint64 kMaxFileBytes = 4 * 1024 * 1024;

// Records 1..17 at indices 0..16; the reader fills FileCardName, never CardName.
using Table = std::array<CardRecord, kRecords>;

// The file dialog's filter list, in the dialog's own form, the project files first.
QString FileFilter();

// The fields of a record as they go on disk: CardName, VerNo, Param(1..64), ChParam(1..16).
QStringList RecordFields(const CardRecord &record);

// One line without its line end. A text cannot hold a double quote or a line end, since the
// format has no escape: SavableProblem() tells about such a text before anything is written.
QString FormatLine(const CardRecord &record);

// What keeps the table from being saved faithfully (a double quote or a line end in a text), in
// words for the user; empty when the table can be saved.
QString SavableProblem(const Table &table);

// The bytes of a whole file for `table` (CardName goes into field 1), in the system's code page.
QByteArray FormatFile(const Table &table);

struct LineFields {
    QStringList fields; // all the fields of the line, in order
    QString error;      // empty when the line could be read
};
// Splits one line (without line end) into its fields. Fields are double-quoted texts separated
// by commas; blanks around a field are skipped, and a field without quotes is taken as it stands.
// A quote anywhere else, or one that is never closed, is an error.
LineFields ParseLine(const QString &line);

struct Parsed {
    Table table;
    QString error; // empty when the whole file could be read
    TextFile::Encoding encoding = TextFile::Encoding::System; // what the bytes were read in
    bool ok() const { return error.isEmpty(); }
};
// Reads a whole file into a temporary table: the first 17 non-blank lines, the first 82 fields of
// each. Any fault (binary data, a short file or line, a stray quote) gives an error text.
Parsed ParseFile(const QByteArray &bytes);

// Moves older voltage records (two parameters for each of 16 channels) to the present layout of
// four. `old` is the record as read from the file; returns whether `record` was changed.
bool ExpandOldVoltageLayout(CardRecord &record, const CardRecord &old);

// Copies a table read from a file into CardTable, record by record, keeping every CardName, and
// sets FileLoaded.
void ApplyTable(const Table &table);

// The current CardTable as a table to save.
Table CurrentTable();

// Reads and checks the file at `path`; returns an error text, empty on success. `encoding`, when
// given, is set to the encoding the file was in.
QString ReadProjectFile(const QString &path, Table &table, TextFile::Encoding *encoding = nullptr);

// Writes `table` to `path` in `encoding` as a whole: on any fault the old file stays as it was.
// Returns an error text, empty on success.
QString WriteProjectFile(const QString &path, const Table &table,
                         TextFile::Encoding encoding = TextFile::Encoding::System);

// Every write of a save goes through this; tests replace it to make the disk fail on a given
// write. An empty function restores the plain write.
using WriteFunction = TextFile::WriteFunction;
void setWriteFunction(WriteFunction write);

} // namespace ProjectFile
