#include "app/desk.h"

#include "link/link.h"
#include "views/discrete/frmxf2.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

// A line that remembers when it was closed and opened, and whether the main window was on the
// screen at that moment.
class RecordingLine : public SerialLine {
public:
    QStringList calls;
    bool open(int comNumber, QString *) override {
        calls << QStringLiteral("open %1 %2").arg(comNumber).arg(windowShown());
        m_open = true;
        return true;
    }
    void close() override {
        calls << QStringLiteral("close %1").arg(windowShown());
        m_open = false;
    }
    bool isOpen() const override { return m_open; }
    qint64 bytesAvailable() const override { return 0; }
    QByteArray readAll() override { return {}; }
    void write(const QByteArray &) override {}

private:
    static QString windowShown() { return MainWindow()->isVisible() ? "shown" : "hidden"; }
    bool m_open = true;
};

// A stand-in for the sibling tool: a script that writes down the arguments it was given.
struct StandInTool {
    QTemporaryDir dir;
    QString path = dir.filePath("VXCFG_TC");
    QString record = dir.filePath("arguments.txt");

    StandInTool() {
        QFile script(path);
        if (!script.open(QIODevice::WriteOnly)) return;
        script.write(
            "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$@\" > \"$(dirname \"$0\")/arguments.txt\"\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QStringList arguments() const {
        QFile file(record);
        if (!file.open(QIODevice::ReadOnly)) return {};
        return QString::fromLocal8Bit(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }
};

// The XF2 view opened on slot 16 of COM12, then the line swapped for one that records its
// closing and opening.
struct ToolBench : vxtest::CardDesk {
    RecordingLine *line = new RecordingLine;
    FrmXF2 *xf2 = qobject_cast<FrmXF2 *>(view);

    ToolBench() : CardDesk("XF2", 16) {
        ComPortNo = 12;
        Link::setPort(std::unique_ptr<SerialLine>(line));
    }
    ~ToolBench() { setSiblingToolPath(QString()); }
};

} // namespace

class SiblingToolTest : public QObject {
    Q_OBJECT
private slots:
    void settingsRunTheToolWithThePortFree() {
        ToolBench bench;
        StandInTool tool;
        setSiblingToolPath(tool.path);
        QVERIFY(SiblingToolCommandLine(12, 16).endsWith("VXCFG_TC  12 16"));
        bench.xf2->cmdSettings->click();
        QCOMPARE(tool.arguments(), (QStringList{"2", "12", "16"}));
        // Window hidden before the port closes, shown again only once it is open.
        QCOMPARE(bench.line->calls, (QStringList{"close hidden", "open 12 hidden"}));
        QVERIFY(bench.window->isVisible());
        QVERIFY(bench.messages.messages.isEmpty());
    }

    void missingToolIsReported() {
        ToolBench bench;
        QTemporaryDir empty;
        setSiblingToolPath(empty.filePath("VXCFG_TC"));
        bench.xf2->cmdSettings->click();
        QCOMPARE(bench.messages.messages.size(), 1);
        QCOMPARE(bench.messages.messages[0].text, QString("Can't execute VXCFG_TC.exe"));
        QCOMPARE(bench.messages.messages[0].icon, People::Icon::Stop);
        QCOMPARE(bench.line->calls, (QStringList{"close hidden", "open 12 hidden"}));
        QVERIFY(bench.line->isOpen());
        QVERIFY(bench.window->isVisible());
    }
};

VX_TEST(SiblingToolTest)
#include "tst_siblingtool.moc"
