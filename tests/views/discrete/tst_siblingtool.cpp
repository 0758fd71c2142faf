#include "support/testsupport.h"

#include "app/frmvxcfg.h"
#include "cardprofiles.h"
#include "link/link.h"
#include "rack/registry.h"
#include "views/allviews.h"
#include "views/common/viewregistry.h"
#include "views/discrete/frmxf2.h"

#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using vxtest::MessageRecorder;
using vxtest::SimSession;

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

// The main window with the XF2 view made, on a line that records its opening and closing.
struct ToolBench {
    MessageRecorder messages;
    FrmVxCfg window;
    RecordingLine *line = new RecordingLine;
    FrmXF2 *view = nullptr;

    ToolBench() {
        ResetModuleData();
        RegisterAllViews();
        Link::setPort(std::unique_ptr<SerialLine>(line));
        window.show();
        (void)QTest::qWaitForWindowActive(&window);
        view = qobject_cast<FrmXF2 *>(ViewByName("frmXF2"));
        view->build();
        ComPortNo = 12;
        CardNo = 16;
    }
    ~ToolBench() {
        Link::setPort(nullptr);
        setSiblingToolPath(QString());
        ClearViewRegistry();
    }
};

} // namespace

class SiblingToolTest : public QObject {
    Q_OBJECT
private slots:
    void commandLineForPortAndCard() {
        StandInTool tool;
        setSiblingToolPath(tool.path);
        QVERIFY(SiblingToolCommandLine(12, 16).endsWith("VXCFG_TC  12 16"));
        QVERIFY(SiblingToolCommandLine(1, 5).endsWith("VXCFG_TC  1 5"));
        setSiblingToolPath(QString());
        QVERIFY(SiblingToolPath().endsWith("VXCFG_TC"));
    }

    void settingsRunTheToolWithThePortFree() {
        ToolBench bench;
        StandInTool tool;
        setSiblingToolPath(tool.path);
        bench.view->cmdSettings->click();
        QCOMPARE(tool.arguments(), (QStringList{"2", "12", "16"}));
        // Window hidden before the port closes, shown again only once it is open.
        QCOMPARE(bench.line->calls, (QStringList{"close hidden", "open 12 hidden"}));
        QVERIFY(bench.window.isVisible());
        QVERIFY(bench.messages.messages.isEmpty());
    }

    void missingToolIsReported() {
        ToolBench bench;
        QTemporaryDir empty;
        setSiblingToolPath(empty.filePath("VXCFG_TC"));
        bench.view->cmdSettings->click();
        QCOMPARE(bench.messages.messages.size(), 1);
        QCOMPARE(bench.messages.messages[0].text, QString("Can't execute VXCFG_TC.exe"));
        QCOMPARE(bench.messages.messages[0].icon, People::Icon::Stop);
        QCOMPARE(bench.line->calls, (QStringList{"close hidden", "open 12 hidden"}));
        QVERIFY(bench.line->isOpen());
        QVERIFY(bench.window.isVisible());
    }

    void openingPollsNothing() {
        SimSession session;
        MessageRecorder messages;
        FrmVxCfg window;
        RegisterAllViews();
        SimCard &card = session.rack.slot(11);
        card.model = "XF2";
        card.version = "3.02";
        InstallProfile(card);
        session.rack.refreshDirectory();
        window.show();
        IsConnected = true;
        CardTable(11).CardName = "XF2";
        window.cboCardNo->setCurrentIndex(11);
        window.cboCardNo_Click();
        auto *view = qobject_cast<FrmXF2 *>(LoadedView("frmXF2"));
        QVERIFY(view && view->isVisible());
        QVERIFY(view->findChild<QGroupBox *>("fraShowModel"));
        QVERIFY(!view->findChild<QPushButton *>("cmdUp"));
        QCOMPARE(view->txtVerNo->text(), QString("3.02"));
        QVERIFY(!view->WaitForTimer->isActive());
        QVERIFY(!session.rack.commands().contains("I10"));
        ClearViewRegistry();
    }
};

VX_TEST(SiblingToolTest)
#include "tst_siblingtool.moc"
