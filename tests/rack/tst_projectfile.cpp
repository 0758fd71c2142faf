#include "support/testsupport.h"

#include "rack/projectfile.h"

#include <QDir>
#include <QFile>
#include <QIODevice>
#include <QTemporaryDir>
#include <QTest>

using vxtest::MessageRecorder;

namespace {

// Answers the file dialog with `path` and keeps what was asked.
struct FileAnswer {
    QList<People::FileRequest> requests;
    explicit FileAnswer(const QString &path) {
        People::setFileHandler([this, path](const People::FileRequest &request) {
            requests.append(request);
            return path;
        });
    }
    ~FileAnswer() { People::setFileHandler({}); }
    FileAnswer(const FileAnswer &) = delete;
    FileAnswer &operator=(const FileAnswer &) = delete;
};

// A table whose every place holds a text of its own, with the characters a file could trip on.
void fillTable() {
    for (int n = 1; n <= kRecords; ++n) {
        CardRecord &r = CardTable(n);
        r.CardName = n == 4             ? QString("NONE")
                     : n == kCommRecord ? QString()
                                        : QString("QT%1").arg(n);
        r.VerNo = QString("%1.0%2").arg(n % 3).arg(n % 10);
        for (int k = 1; k <= CardRecord::kParams; ++k)
            r.Param(k) = k % 7 == 0 ? QString() : QString("r%1 p%2").arg(n).arg(k);
        r.Param(5) = "0,5";    // a comma inside a field
        r.Param(6) = " 12.5 "; // blanks that belong to the text
        r.Param(7) = QString::fromUtf8("°C µA");
        r.Param(8) = "a'b;c\\d";
        for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
            r.ChParam(ch) = (n + ch) % 2 ? "1" : "0";
    }
}

// Every text of the table, FileCardName included, and the flag, for "nothing changed".
QStringList snapshot() {
    QStringList all;
    for (int n = 1; n <= kRecords; ++n) {
        const CardRecord &r = CardTable(n);
        all << r.CardName << r.FileCardName << r.VerNo;
        for (int k = 1; k <= CardRecord::kParams; ++k)
            all << r.Param(k);
        for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
            all << r.ChParam(ch);
    }
    all << (FileLoaded ? "loaded" : "not loaded");
    return all;
}

QString quoted(const QStringList &fields) {
    QStringList q;
    for (const QString &f : fields)
        q << '"' + f + '"';
    return q.join(',');
}

// A well-formed file written by hand: record n has name "Mn", version "Vn", parameter k "n.k",
// channel ch "c".
QList<QByteArray> handLines() {
    QList<QByteArray> lines;
    for (int n = 1; n <= kRecords; ++n) {
        QStringList fields{QString("M%1").arg(n), QString("V%1").arg(n)};
        for (int k = 1; k <= 64; ++k)
            fields << QString("%1.%2").arg(n).arg(k);
        for (int ch = 1; ch <= 16; ++ch)
            fields << QString::number(ch % 2);
        lines << quoted(fields).toUtf8() + "\r\n";
    }
    return lines;
}

QByteArray joined(const QList<QByteArray> &lines) {
    QByteArray all;
    for (const QByteArray &l : lines)
        all += l;
    return all;
}

void writeFile(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return "<missing>";
    return file.readAll();
}

// A line of `count` fields "f1".."fcount" in quotes.
QString fieldLine(int count) {
    QStringList fields;
    for (int i = 1; i <= count; ++i)
        fields << QString("f%1").arg(i);
    return quoted(fields);
}

// Record 2 holds `name` with old-style values "a1".."a32"; Param(33), (34) as given.
QByteArray fileWith(const QString &name, const QString &p33, const QString &p34) {
    QList<QByteArray> lines = handLines();
    QStringList fields{name, "1.00"};
    for (int k = 1; k <= 32; ++k)
        fields << QString("a%1").arg(k);
    fields << p33 << p34;
    for (int k = 35; k <= 64; ++k)
        fields << QString();
    for (int ch = 1; ch <= 16; ++ch)
        fields << "1";
    lines[1] = quoted(fields).toUtf8() + "\r\n";
    return joined(lines);
}

} // namespace

// Save then Open: the bytes on disk, every field back in place, the names kept apart.
class ProjectFileRoundTripTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void init() { ResetModuleData(); }
    void cleanup() { People::setFileHandler({}); }

    void saveThenOpenRestoresEveryFieldAndIsByteExact() {
        MessageRecorder recorder;
        fillTable();
        const QStringList saved = snapshot();
        const QString first = m_dir.filePath("rack.uJx");
        {
            FileAnswer answer(first);
            SaveProjectFile();
            QCOMPARE(answer.requests.size(), 1);
            QVERIFY(answer.requests.first().save);
        }
        QVERIFY(recorder.messages.isEmpty());

        const QByteArray bytes = readFile(first);
        const QList<QByteArray> lines = bytes.split('\n');
        QCOMPARE(lines.size(), kRecords + 1); // the last CR LF leaves an empty tail
        QVERIFY(lines.last().isEmpty());
        // Record 3 as it must stand on disk, spelled out.
        QVERIFY(lines.at(2).startsWith("\"QT3\",\"0.03\",\"r3 p1\",\"r3 p2\",\"r3 p3\",\"r3 p4\","
                                       "\"0,5\",\" 12.5 \",\"" +
                                       QString::fromUtf8("°C µA").toUtf8() + "\",\"a'b;c\\d\","));
        QVERIFY(lines.at(2).endsWith(",\"0\",\"1\",\"0\",\"1\",\"0\",\"1\",\"0\",\"1\"\r"));
        QCOMPARE(lines.at(16).left(5), QByteArray("\"\",\"2"));

        // The rack holds other cards now; opening replaces parameters, never names.
        for (int n = 1; n <= kRecords; ++n) {
            CardTable(n) = CardRecord();
            CardTable(n).CardName = n == 3 ? QString("QV4") : QString();
        }
        {
            FileAnswer answer(first);
            OpenProjectFile();
            QCOMPARE(answer.requests.size(), 1);
            QVERIFY(!answer.requests.first().save);
        }
        QVERIFY(recorder.messages.isEmpty());
        QVERIFY(FileLoaded);
        QCOMPARE(CardTable(3).CardName, QString("QV4"));
        QCOMPARE(CardTable(3).FileCardName, QString("QT3"));
        QCOMPARE(CardTable(4).FileCardName, QString("NONE"));
        const QStringList now = snapshot();
        for (int n = 1; n <= kRecords; ++n) {
            const int base = (n - 1) * 83; // CardName, FileCardName, VerNo, 64 + 16 parameters
            QCOMPARE(now.mid(base + 2, 81), saved.mid(base + 2, 81));
            QCOMPARE(CardTable(n).FileCardName, saved.at(base)); // the name that was saved
        }

        // Saved again under the same names, the file comes out byte for byte the same.
        for (int n = 1; n <= kRecords; ++n)
            CardTable(n).CardName = CardTable(n).FileCardName;
        const QString second = m_dir.filePath("again.txt");
        {
            FileAnswer answer(second);
            SaveProjectFile();
        }
        QCOMPARE(readFile(second), bytes);
    }

    // Older voltage records of two values a channel grow to four on opening.
    void expansion_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("p33");
        QTest::addColumn<QString>("p34");
        QTest::addColumn<bool>("expanded");
        const struct {
            const char *row, *name, *p33, *p34;
            bool expanded;
        } rows[] = {
            {"QF16 old", "QF16", "", "", true},
            {"QG1 family old", "QG18A", "", "", true},
            {"QF16 with Param(33)", "QF16", "x", "", false},
            {"QF16 with Param(34)", "QF16", "", "y", false},
            {"other voltage card", "QF4", "", "", false},
            {"name inside, not at start", "XQF16", "", "", false},
        };
        for (const auto &r : rows)
            QTest::newRow(r.row) << QString(r.name) << QString(r.p33) << QString(r.p34)
                                 << r.expanded;
    }
    void expansion() {
        QFETCH(QString, name);
        QFETCH(QString, p33);
        QFETCH(QString, p34);
        QFETCH(bool, expanded);
        QTemporaryDir dir;
        const QString path = dir.filePath("old.uJx");
        writeFile(path, fileWith(name, p33, p34));
        MessageRecorder recorder;
        {
            FileAnswer answer(path);
            OpenProjectFile();
        }
        QVERIFY(recorder.messages.isEmpty());
        const CardRecord &r = CardTable(2);
        QCOMPARE(r.FileCardName, name);
        QCOMPARE(r.ChParam(16), QString("1"));
        if (!expanded) {
            QCOMPARE(r.Param(3), QString("a3"));
            QCOMPARE(r.Param(32), QString("a32"));
            QCOMPARE(r.Param(33), p33);
            QCOMPARE(r.Param(34), p34);
            return;
        }
        for (int c = 1; c <= 16; ++c) {
            QCOMPARE(r.Param(4 * c - 3), QString("a%1").arg(2 * c - 1));
            QCOMPARE(r.Param(4 * c - 2), QString("a%1").arg(2 * c));
            QCOMPARE(r.Param(4 * c - 1), QString("0.00"));
            QCOMPARE(r.Param(4 * c), QString("1.0000"));
        }
        // Only that record moved.
        QCOMPARE(CardTable(1).Param(3), QString("1.3"));
        QCOMPARE(CardTable(3).Param(33), QString("3.33"));

        // Saved again, the record is in the new layout and opens unchanged.
        CardTable(2).CardName = name;
        const QString again = dir.filePath("new.uJx");
        {
            FileAnswer answer(again);
            SaveProjectFile();
        }
        ProjectFile::Table table;
        QCOMPARE(ProjectFile::ReadProjectFile(again, table), QString());
        QCOMPARE(table.at(1).Param(5), QString("a3"));
        QCOMPARE(table.at(1).Param(61), QString("a31"));
        QCOMPARE(table.at(1).Param(64), QString("1.0000"));
        QVERIFY(!ProjectFile::ExpandOldVoltageLayout(CardTable(2), table.at(1)));
    }
};

// Files that are not project files, and saves that fail: the table and the file on disk stay as
// they were and the user learns why.
class ProjectFileFailureTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_path;
    const QByteArray m_old = "the old project file\r\n";

    void expectOldFileKept(const MessageRecorder &recorder) {
        QCOMPARE(readFile(m_path), m_old);
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"kept.uJx"});
        QCOMPARE(recorder.messages.size(), 1);
        QCOMPARE(recorder.messages.first().title, QString("Open Error"));
        QVERIFY(recorder.messages.first().text.contains(QDir::toNativeSeparators(m_path)));
    }

private slots:
    void init() {
        ResetModuleData();
        fillTable();
        m_path = m_dir.filePath("kept.uJx");
        writeFile(m_path, m_old);
    }
    void cleanup() { ProjectFile::setWriteFunction({}); }

    void rejected_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("why");
        const QList<QByteArray> good = handLines();
        QList<QByteArray> lines;

        QTest::newRow("16 lines") << joined(good.mid(0, 16)) << "ends after 16 of the 17 lines";
        QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) + joined(good)
                                << "binary data";
        QTest::newRow("not in the code page")
            << QByteArray("\"\xff\xfe\",") + joined(good) << "neither UTF-8 nor the Japanese";
        lines = good;
        lines[16] = lines[16].replace("\"17.5\"", "\"17\"5\"");
        QTest::newRow("quote inside a text, last line")
            << joined(lines) << "Line 17: field 7 has a double quote inside its text";
        lines = good;
        lines[16] = lines[16].left(lines[16].size() - 4) + "\r\n";
        QTest::newRow("quote never closed")
            << joined(lines) << "Line 17: field 82 opens a double quote that is never closed";
        lines = good;
        lines[5] = fieldLine(81).toUtf8() + "\r\n";
        QTest::newRow("81 fields") << joined(lines) << "Line 6 has 81 fields";
        lines = good;
        lines.insert(3, "\r\n  \r\n");
        lines[6] = fieldLine(2).toUtf8() + "\r\n";
        QTest::newRow("line numbers count blank lines") << joined(lines) << "Line 8 has 2 fields";
        QTest::newRow("too large")
            << QByteArray(ProjectFile::kMaxFileBytes + 1, 'x') << "too large";
    }
    void rejected() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, why);
        QTemporaryDir dir;
        const QString path = dir.filePath("bad.uJx");
        writeFile(path, bytes);
        const QStringList before = snapshot();
        MessageRecorder recorder;
        FileAnswer answer(path);
        OpenProjectFile();
        QCOMPARE(snapshot(), before);
        QVERIFY(!FileLoaded);
        QCOMPARE(recorder.messages.size(), 1);
        const People::Message &m = recorder.messages.first();
        QVERIFY2(m.text.contains(why), qPrintable(m.text));
        QVERIFY(m.text.contains(QDir::toNativeSeparators(path)));
        QCOMPARE(m.title, People::kProgramName);
        QCOMPARE(m.icon, People::Icon::None);
    }

    // What the format allows beyond what the program writes itself.
    void accepted_data() {
        QTest::addColumn<QByteArray>("bytes");
        const QList<QByteArray> good = handLines();
        QList<QByteArray> lines = good;
        QTest::newRow("LF line ends") << joined(good).replace("\r\n", "\n");
        QTest::newRow("no line end at the very end") << joined(good).chopped(2);
        for (QByteArray &l : lines)
            l = l.chopped(2) + ",\"83\",\"84\"\r\n";
        lines << "\"extra\",\"line\"\r\n"
              << "garbage \" that is never read\r\n";
        QTest::newRow("fields and lines beyond") << joined(lines);
        lines = good;
        lines[0] = lines[0].replace("\"1.1\",\"1.2\"", "  \"1.1\" ,\t1.2 ");
        lines.insert(2, "\r\n");
        lines.insert(9, "   \r\n");
        QTest::newRow("blank lines, blanks and bare fields") << joined(lines);
    }
    void accepted() {
        QFETCH(QByteArray, bytes);
        QTemporaryDir dir;
        const QString path = dir.filePath("fine.txt");
        writeFile(path, bytes);
        MessageRecorder recorder;
        FileAnswer answer(path);
        OpenProjectFile();
        QVERIFY(recorder.messages.isEmpty());
        QVERIFY(FileLoaded);
        QCOMPARE(CardTable(1).FileCardName, QString("M1"));
        QCOMPARE(CardTable(1).Param(1), QString("1.1"));
        QCOMPARE(CardTable(1).Param(2), QString("1.2"));
        QCOMPARE(CardTable(17).VerNo, QString("V17"));
        QCOMPARE(CardTable(17).Param(64), QString("17.64"));
        QCOMPARE(CardTable(17).ChParam(15), QString("1"));
        QCOMPARE(CardTable(17).ChParam(16), QString("0"));
    }
    // The disk takes half of one line and then reports no error: only the count tells. Every
    // line in turn, as a disk fills up at any point of the file.
    void shortWrite_data() {
        QTest::addColumn<int>("failing");
        for (int line = 1; line <= 17; ++line)
            QTest::addRow("line %d", line) << line;
    }
    void shortWrite() {
        QFETCH(int, failing);
        int calls = 0;
        ProjectFile::setWriteFunction([&](QIODevice &device, const QByteArray &bytes) {
            if (++calls != failing) return device.write(bytes);
            return device.write(bytes.left(bytes.size() / 2));
        });
        MessageRecorder recorder;
        FileAnswer answer(m_path);
        SaveProjectFile();
        QCOMPARE(calls, failing);
        expectOldFileKept(recorder);
        if (QTest::currentTestFailed()) return;
        QVERIFY(recorder.messages.first().text.contains("Not all of the file"));
    }

    void textsTheFormatCannotHold_data() {
        QTest::addColumn<int>("record");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("where");
        QTest::newRow("quote") << 5 << "say \"hi\""
                               << "slot 5, parameter 12";
        QTest::newRow("line break") << 17 << "a\nb"
                                    << "the communication card, parameter 12";
    }
    void textsTheFormatCannotHold() {
        QFETCH(int, record);
        QFETCH(QString, text);
        QFETCH(QString, where);
        CardTable(record).Param(12) = text;
        const QStringList before = snapshot();
        MessageRecorder recorder;
        FileAnswer answer(m_path);
        SaveProjectFile();
        expectOldFileKept(recorder);
        if (QTest::currentTestFailed()) return;
        QVERIFY2(recorder.messages.first().text.contains(where),
                 qPrintable(recorder.messages.first().text));
        QCOMPARE(snapshot(), before);
    }
};

// Project files carried to and from Windows PCs: each is saved back in the encoding it came in.
class ProjectFileEncodingTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    // Half-width katakana, the middle dot "･" among them (one byte, A5, in CP932), and a
    // two-byte character.
    const QString m_text = QString::fromUtf8("\uFF71\uFF65\u3042");
    const QByteArray m_cp932 = "\xB1\xA5\x82\xA0";

    // A project file whose record 2, parameter 1 holds `text`, behind `start`.
    QByteArray fileHolding(const QByteArray &text, const QByteArray &start = {}) const {
        return start + joined(handLines()).replace("\"2.1\"", "\"" + text + "\"");
    }

    void open(const QString &path) {
        FileAnswer answer(path);
        OpenProjectFile();
        for (int n = 1; n <= kRecords; ++n)
            CardTable(n).CardName = CardTable(n).FileCardName;
    }
    void save(const QString &path) {
        FileAnswer answer(path);
        SaveProjectFile();
    }

private slots:
    void init() { ResetModuleData(); }

    void savedBackAsItCame_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("CP932") << fileHolding(m_cp932);
        QTest::newRow("UTF-8") << fileHolding(m_text.toUtf8());
        QTest::newRow("UTF-8 with a byte order mark")
            << fileHolding(m_text.toUtf8(), "\xEF\xBB\xBF");
    }
    void savedBackAsItCame() {
        if (!TextFile::cp932Available()) QSKIP("Qt here has no CP932 converter");
        QFETCH(QByteArray, bytes);
        const QString path = m_dir.filePath(QTest::currentDataTag() + QString(".uJx"));
        writeFile(path, bytes);
        MessageRecorder recorder;
        open(path);
        QCOMPARE(CardTable(2).Param(1), m_text);
        QCOMPARE(CardTable(1).FileCardName, QString("M1")); // the mark is not part of the name

        save(path);
        QCOMPARE(readFile(path), bytes);
        // A file this program makes anew is in the system's code page, here UTF-8.
        const QString fresh = m_dir.filePath(QTest::currentDataTag() + QString(" new.uJx"));
        save(fresh);
        QCOMPARE(readFile(fresh), fileHolding(m_text.toUtf8()));
        QVERIFY(recorder.messages.isEmpty());
    }

    // A text the file's code page cannot store refuses the save and keeps the file as it was.
    void textTheOpenedCodePageCannotStore() {
        if (!TextFile::cp932Available()) QSKIP("Qt here has no CP932 converter");
        const QString path = m_dir.filePath("windows.uJx");
        const QByteArray bytes = fileHolding(m_cp932);
        writeFile(path, bytes);
        MessageRecorder recorder;
        open(path);
        CardTable(5).Param(3) = QString::fromUtf8("\u20AC 5");
        save(path);
        QCOMPARE(readFile(path), bytes);
        QCOMPARE(recorder.messages.size(), 1);
        QVERIFY2(recorder.messages.first().text.contains("Record 5: ") &&
                     recorder.messages.first().text.contains("CP932"),
                 qPrintable(recorder.messages.first().text));
    }
};

VX_TEST(ProjectFileRoundTripTest)
VX_TEST(ProjectFileFailureTest)
VX_TEST(ProjectFileEncodingTest)
#include "tst_projectfile.moc"
