#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

class QIODevice;

// The program's text files (the project file and every settings file) are read whole and checked
// before anything changes, and written as a whole: on any fault the old file stays byte for
// byte as it was. Errors come back as words for the user, empty on success; `kind` names the file
// in them, e.g. "a project file".
//
// Files travel between this program and Windows PCs, where they are in the Windows code page
// (the Japanese one, CP932, keeps a "･" in one byte). A reader takes UTF-8 and, where the bytes
// are not UTF-8, CP932, and says which it found; a file saved back is written in the encoding it
// was read in, so the PC it came from reads it as before. A new file is in the system's code page.
namespace TextFile {

enum class Encoding {
    System,  // the system's code page: what a new file is written in
    Utf8,    // UTF-8 without a byte order mark
    Utf8Bom, // UTF-8 that starts with a byte order mark, as some Windows editors save it
    Cp932,   // the Japanese Windows code page
};

// Whether this build's converters know CP932 (they do where Qt uses ICU).
bool cp932Available();

// The bytes of a plain file of at most `maxBytes`. A device or a pipe could feed a reader for
// ever, so only plain files are read.
QString readBytes(const QString &path, qint64 maxBytes, const QString &kind, QByteArray &bytes);

// Bytes to text: refuses control characters other than tab and line ends (binary data) and bytes
// that are neither UTF-8 nor CP932. `encoding`, when given, is set to the one that read them.
QString decode(const QByteArray &bytes, const QString &kind, QString &text,
               Encoding *encoding = nullptr);

// readBytes() then decode().
QString read(const QString &path, qint64 maxBytes, const QString &kind, QString &text,
             Encoding *encoding = nullptr);

// A file's lines with their numbers (from 1). CR LF, LF and a lone CR all end a line; blank lines
// (nothing but blanks and tabs) are left out when `skipBlank` is set.
struct Line {
    int number;
    QString text;
};
QList<Line> lines(const QString &text, bool skipBlank = true);

// Text to bytes in `encoding`, without a byte order mark; an error when a character cannot be
// stored.
QString encode(const QString &text, QByteArray &bytes, Encoding encoding = Encoding::System);
// What a file in `encoding` starts with: the byte order mark, or nothing.
QByteArray preamble(Encoding encoding);

// Writes `chunks` one after the other into a new file that replaces `path` only when every byte
// is on disk.
QString writeChunks(const QString &path, const QList<QByteArray> &chunks);
// Each line encoded, followed by `lineEnd`, written as above.
QString writeLines(const QString &path, const QStringList &lines,
                   const QByteArray &lineEnd = "\r\n", Encoding encoding = Encoding::System);

// The encodings of the files a form has opened, so that each one it saves back keeps its own.
class KnownEncodings {
public:
    void opened(const QString &path, Encoding encoding);
    // The encoding `path` was opened in; the system's for a file never opened here.
    Encoding forSaving(const QString &path) const;

private:
    QHash<QString, Encoding> m_encodings;
};

// Every write of a save goes through this; tests replace it to make the disk fail on a given
// write. An empty function restores the plain write.
using WriteFunction = std::function<qint64(QIODevice &device, const QByteArray &bytes)>;
void setWriteFunction(WriteFunction write);

} // namespace TextFile
