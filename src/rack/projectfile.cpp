#include "rack/projectfile.h"

#include "ui/people.h"
#include "ui/textfile.h"

#include <QDir>

namespace ProjectFile {

namespace {

const QString kKind = QStringLiteral("a project file");
const QChar kQuote = QLatin1Char('"');
const QChar kComma = QLatin1Char(',');

bool isBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

QString trimBlanks(const QString &text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && isBlank(text.at(first)))
        ++first;
    while (last > first && isBlank(text.at(last - 1)))
        --last;
    return text.mid(first, last - first);
}

// Where field `index` (0-based) of a line goes in a record read from a file.
void setField(CardRecord &record, int index, const QString &value) {
    if (index == 0)
        record.FileCardName = value;
    else if (index == 1)
        record.VerNo = value;
    else if (index < 2 + CardRecord::kParams)
        record.Param(index - 1) = value;
    else
        record.ChParam(index - 1 - CardRecord::kParams) = value;
}

// Words for the place of a field, as the user knows the record.
QString fieldPlace(int record, int index) {
    const QString where = record == kCommRecord ? QStringLiteral("the communication card")
                                                : QStringLiteral("slot %1").arg(record);
    if (index == 0) return where + QStringLiteral(", card name");
    if (index == 1) return where + QStringLiteral(", version");
    if (index < 2 + CardRecord::kParams)
        return where + QStringLiteral(", parameter %1").arg(index - 1);
    return where + QStringLiteral(", channel %1").arg(index - 1 - CardRecord::kParams);
}

// The lines of a file, each with its CR LF, in `encoding`; the first carries the byte order mark
// that the encoding may have.
QList<QByteArray> encodedLines(const Table &table, TextFile::Encoding encoding, QString *error) {
    QList<QByteArray> lines;
    for (int r = 0; r < kRecords; ++r) {
        QByteArray bytes;
        const QString fault =
            TextFile::encode(FormatLine(table.at(static_cast<size_t>(r))), bytes, encoding);
        if (!fault.isEmpty()) {
            if (error) *error = QStringLiteral("Record %1: %2").arg(r + 1).arg(fault);
            return {};
        }
        lines.append((r == 0 ? TextFile::preamble(encoding) : QByteArray()) + bytes + "\r\n");
    }
    return lines;
}

} // namespace

QString FileFilter() {
    // The program's list in its "description|pattern|..." form. Qt reads the patterns from the
    // parentheses, where "*.*" would hide files without a dot outside Windows: "All Files" gets
    // "*", which means everything everywhere.
    const QStringList parts = QStringLiteral("uJx Files (*.uJx)|*.uJx|"
                                             "Text Files (*.txt)|*.txt|All Files (*.*)|*.*")
                                  .split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString description = parts.at(i);
        const QString pattern = parts.at(i + 1);
        if (pattern == QLatin1String("*.*"))
            description.replace(QLatin1String("(*.*)"), QLatin1String("(*)"));
        else if (!description.contains(QLatin1Char('(')))
            description += QStringLiteral(" (%1)").arg(pattern);
        filters << description;
    }
    return filters.join(QLatin1String(";;"));
}

QStringList RecordFields(const CardRecord &record) {
    QStringList fields;
    fields.reserve(kFieldsPerLine);
    fields << record.CardName << record.VerNo;
    for (int k = 1; k <= CardRecord::kParams; ++k)
        fields << record.Param(k);
    for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
        fields << record.ChParam(ch);
    return fields;
}

QString FormatLine(const CardRecord &record) {
    QString line;
    const QStringList fields = RecordFields(record);
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i > 0) line += kComma;
        line += kQuote + fields.at(i) + kQuote;
    }
    return line;
}

QString SavableProblem(const Table &table) {
    for (int r = 0; r < kRecords; ++r) {
        const QStringList fields = RecordFields(table.at(static_cast<size_t>(r)));
        for (int i = 0; i < fields.size(); ++i) {
            const QString &text = fields.at(i);
            if (text.contains(kQuote))
                return QStringLiteral("The text of %1 holds a double quote, which a project "
                                      "file cannot keep: %2\nChange the text and save again.")
                    .arg(fieldPlace(r + 1, i), text);
            if (text.contains(QLatin1Char('\r')) || text.contains(QLatin1Char('\n')))
                return QStringLiteral("The text of %1 holds a line break, which a project "
                                      "file cannot keep.\nChange the text and save again.")
                    .arg(fieldPlace(r + 1, i));
        }
    }
    return {};
}

QByteArray FormatFile(const Table &table) {
    QByteArray bytes;
    for (const QByteArray &line : encodedLines(table, TextFile::Encoding::System, nullptr))
        bytes += line;
    return bytes;
}

LineFields ParseLine(const QString &line) {
    LineFields out;
    const qsizetype n = line.size();
    qsizetype i = 0;
    auto skipBlanks = [&] {
        while (i < n && isBlank(line.at(i)))
            ++i;
    };
    for (;;) {
        const int number = static_cast<int>(out.fields.size()) + 1;
        skipBlanks();
        if (i < n && line.at(i) == kQuote) {
            const qsizetype close = line.indexOf(kQuote, i + 1);
            if (close < 0) {
                out.error = QStringLiteral("field %1 opens a double quote that is never closed.")
                                .arg(number);
                return out;
            }
            out.fields << line.mid(i + 1, close - i - 1);
            i = close + 1;
            skipBlanks();
            if (i < n && line.at(i) != kComma) {
                out.error =
                    QStringLiteral("field %1 has a double quote inside its text.").arg(number);
                return out;
            }
        } else {
            qsizetype end = line.indexOf(kComma, i);
            if (end < 0) end = n;
            const QString field = trimBlanks(line.mid(i, end - i));
            if (field.contains(kQuote)) {
                out.error =
                    QStringLiteral("field %1 has a double quote inside its text.").arg(number);
                return out;
            }
            out.fields << field;
            i = end;
        }
        if (i >= n) break;
        ++i; // the comma
    }
    return out;
}

Parsed ParseFile(const QByteArray &bytes) {
    Parsed parsed;
    if (bytes.size() > kMaxFileBytes) {
        parsed.error = QStringLiteral("The file is too large to be a project file.");
        return parsed;
    }
    QString text;
    parsed.error = TextFile::decode(bytes, kKind, text, &parsed.encoding);
    if (!parsed.ok()) return parsed;
    const QList<TextFile::Line> lines = TextFile::lines(text);
    if (lines.size() < kLines) {
        parsed.error = QStringLiteral("The file ends after %1 of the %2 lines of a project file.")
                           .arg(lines.size())
                           .arg(kLines);
        return parsed;
    }
    for (int r = 0; r < kLines; ++r) {
        const TextFile::Line &line = lines.at(r);
        const LineFields fields = ParseLine(line.text);
        if (!fields.error.isEmpty()) {
            parsed.error = QStringLiteral("Line %1: %2").arg(line.number).arg(fields.error);
            return parsed;
        }
        if (fields.fields.size() < kFieldsPerLine) {
            parsed.error = QStringLiteral("Line %1 has %2 fields; a project file line has %3.")
                               .arg(line.number)
                               .arg(fields.fields.size())
                               .arg(kFieldsPerLine);
            return parsed;
        }
        CardRecord &record = parsed.table.at(static_cast<size_t>(r));
        for (int i = 0; i < kFieldsPerLine; ++i)
            setField(record, i, fields.fields.at(i));
    }
    return parsed;
}

bool ExpandOldVoltageLayout(CardRecord &record, const CardRecord &old) {
    const bool voltage = old.FileCardName.startsWith(QLatin1String("QF1")) ||
                         old.FileCardName.startsWith(QLatin1String("QG1"));
    if (!voltage || !old.Param(33).isEmpty() || !old.Param(34).isEmpty()) return false;
    // Two values a channel become four: the two kept, then a zero offset and a unit gain.
    for (int c = CardRecord::kChParams; c >= 2; --c) {
        const int a = 2 * c - 1;
        record.Param(4 * c - 3) = old.Param(a);
        record.Param(4 * c - 2) = old.Param(a + 1);
        record.Param(4 * c - 1) = QStringLiteral("0.00");
        record.Param(4 * c) = QStringLiteral("1.0000");
    }
    record.Param(3) = QStringLiteral("0.00");
    record.Param(4) = QStringLiteral("1.0000");
    return true;
}

void ApplyTable(const Table &table) {
    for (int n = 1; n <= kRecords; ++n) {
        const CardRecord &read = table.at(static_cast<size_t>(n - 1));
        CardRecord &record = CardTable(n);
        record.FileCardName = read.FileCardName;
        record.VerNo = read.VerNo;
        for (int k = 1; k <= CardRecord::kParams; ++k)
            record.Param(k) = read.Param(k);
        for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
            record.ChParam(ch) = read.ChParam(ch);
        ExpandOldVoltageLayout(record, read);
    }
    FileLoaded = true;
}

Table CurrentTable() {
    Table table;
    for (int n = 1; n <= kRecords; ++n)
        table.at(static_cast<size_t>(n - 1)) = CardTable(n);
    return table;
}

QString ReadProjectFile(const QString &path, Table &table, TextFile::Encoding *encoding) {
    QByteArray bytes;
    const QString error = TextFile::readBytes(path, kMaxFileBytes, kKind, bytes);
    if (!error.isEmpty()) return error;
    Parsed parsed = ParseFile(bytes);
    if (!parsed.ok()) return parsed.error;
    table = std::move(parsed.table);
    if (encoding) *encoding = parsed.encoding;
    return {};
}

QString WriteProjectFile(const QString &path, const Table &table, TextFile::Encoding encoding) {
    const QString problem = SavableProblem(table);
    if (!problem.isEmpty()) return problem;
    QString error;
    const QList<QByteArray> lines = encodedLines(table, encoding, &error);
    if (!error.isEmpty()) return error;
    return TextFile::writeChunks(path, lines);
}

void setWriteFunction(WriteFunction write) {
    TextFile::setWriteFunction(std::move(write));
}

} // namespace ProjectFile

namespace {

QString faultText(const QString &path, const QString &reason) {
    return QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), reason);
}

// The project files opened in this run, so that "Save" keeps each one's encoding.
TextFile::KnownEncodings &openedFiles() {
    static TextFile::KnownEncodings files;
    return files;
}

} // namespace

void OpenProjectFile() {
    People::FileRequest request;
    request.filter = ProjectFile::FileFilter();
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    ProjectFile::Table table;
    TextFile::Encoding encoding = TextFile::Encoding::System;
    const QString error = ProjectFile::ReadProjectFile(path, table, &encoding);
    if (!error.isEmpty()) {
        People::message(faultText(path, error));
        return;
    }
    openedFiles().opened(path, encoding);
    ProjectFile::ApplyTable(table);
}

void SaveProjectFile() {
    People::FileRequest request;
    request.save = true;
    request.filter = ProjectFile::FileFilter();
    const QString path = People::chooseFile(request);
    if (path.isEmpty()) return;
    const QString error = ProjectFile::WriteProjectFile(path, ProjectFile::CurrentTable(),
                                                        openedFiles().forSaving(path));
    if (!error.isEmpty()) People::message(faultText(path, error), QStringLiteral("Open Error"));
}
