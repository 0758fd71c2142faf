// Opens arbitrary bytes as a project file. A file that is read must save again as a file that
// reads back to the same records; a file that is refused must say why and leave the table alone.
#include "fuzzsupport.h"
#include "rack/projectfile.h"

namespace {

QByteArray describe(const ProjectFile::Table &table) {
    QByteArray out;
    for (const CardRecord &record : table)
        out += ProjectFile::FormatLine(record).toUtf8() + '\n';
    return out;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));

    // Single lines too: the line reader sees every line of a file on its own.
    const ProjectFile::LineFields line = ProjectFile::ParseLine(QString::fromLatin1(bytes));
    fuzz::check(line.error.isEmpty() || !line.error.trimmed().isEmpty(), "a blank line error");

    ProjectFile::Parsed parsed = ProjectFile::ParseFile(bytes);
    if (!parsed.ok()) {
        fuzz::check(!parsed.error.trimmed().isEmpty(), "a refusal without words");
        return 0;
    }

    // What was read is what a save of the same records writes.
    ProjectFile::Table table = parsed.table;
    for (CardRecord &record : table)
        record.CardName = record.FileCardName;
    if (!ProjectFile::SavableProblem(table).isEmpty()) return 0;
    const ProjectFile::Parsed again = ProjectFile::ParseFile(ProjectFile::FormatFile(table));
    fuzz::check(again.ok(), "a saved file does not read back", again.error.toUtf8());
    for (size_t r = 0; r < table.size(); ++r)
        fuzz::check(ProjectFile::RecordFields(again.table[r]).mid(1) ==
                            ProjectFile::RecordFields(table[r]).mid(1) &&
                        again.table[r].FileCardName == table[r].CardName,
                    "a record changed on its way through a file",
                    describe(table) + "---\n" + describe(again.table));

    // Loading it into the card table, old voltage layouts included, keeps every name.
    ClearCardTable();
    for (int n = 1; n <= kRecords; ++n)
        CardTable(n).CardName = QStringLiteral("RACK%1").arg(n);
    ProjectFile::ApplyTable(parsed.table);
    for (int n = 1; n <= kRecords; ++n)
        fuzz::check(CardTable(n).CardName == QStringLiteral("RACK%1").arg(n),
                    "opening a file changed a card name");
    return 0;
}
