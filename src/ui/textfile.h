#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

class QIODevice;

// The program's text files (the project file and every settings file) are read whole and checked
// before anything changes, and written as a whole: on any fault the old file stays byte for
// byte as it was. Texts are in the system's code page. Errors come back as words for the user,
// empty on success; `kind` names the file in them, e.g. "a project file".
namespace TextFile {

// The bytes of a plain file of at most `maxBytes`. A device or a pipe could feed a reader for
// ever, so only plain files are read.
QString readBytes(const QString &path, qint64 maxBytes, const QString &kind, QByteArray &bytes);

// Bytes to text: refuses control characters other than tab and line ends (binary data) and bytes
// that the system's code page cannot read.
QString decode(const QByteArray &bytes, const QString &kind, QString &text);

// readBytes() then decode().
QString read(const QString &path, qint64 maxBytes, const QString &kind, QString &text);

// A file's lines with their numbers (from 1). CR LF, LF and a lone CR all end a line; blank lines
// (nothing but blanks and tabs) are left out when `skipBlank` is set.
struct Line {
    int number;
    QString text;
};
QList<Line> lines(const QString &text, bool skipBlank = true);

// Text to bytes in the system's code page; an error when a character cannot be stored.
QString encode(const QString &text, QByteArray &bytes);

// Writes `chunks` one after the other into a new file that replaces `path` only when every byte
// is on disk.
QString writeChunks(const QString &path, const QList<QByteArray> &chunks);
// Each line encoded, followed by `lineEnd`, written as above.
QString writeLines(const QString &path, const QStringList &lines,
                   const QByteArray &lineEnd = "\r\n");

// Every write of a save goes through this; tests replace it to make the disk fail on a given
// write. An empty function restores the plain write.
using WriteFunction = std::function<qint64(QIODevice &device, const QByteArray &bytes)>;
void setWriteFunction(WriteFunction write);

} // namespace TextFile
