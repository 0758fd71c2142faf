#include "app/desk.h"

#include "app/frmtrafficlog.h"
#include "app/trafficlog.h"
#include "demorack.h"
#include "link/exchange.h"

#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>

using TrafficText::Row;
using vxtest::choose;
using vxtest::Desk;
using vxtest::press;

namespace {

// A row as mark and bytes: ">G00\r", "<COK", "!", "?\x01...".
QString markAndBytes(const Row &row) {
    return TrafficText::mark(row) + row.raw;
}

QStringList rowsFrom(const TrafficLogModel &log, int first) {
    QStringList rows;
    for (int n = first; n < log.rowCount(); ++n)
        rows << markAndBytes(log.row(n));
    return rows;
}

// What the rack's own transcript says passed, in the same form: a command with no reply entry
// is a step that got nothing, a reply with control bytes one that made no reply.
QStringList rowsFrom(const QList<SimTranscriptEntry> &transcript) {
    QStringList rows;
    for (qsizetype n = 0; n < transcript.size(); ++n) {
        const SimTranscriptEntry &entry = transcript.at(n);
        if (entry.fromProgram) {
            rows << ">" + entry.text + "\r";
            if (n + 1 == transcript.size() || transcript.at(n + 1).fromProgram) rows << "!";
        } else {
            const bool noise = entry.text.contains(QRegularExpression("[\\x00-\\x1f\\x7f]"));
            rows << (noise ? "?" + entry.text + "\r" : "<" + entry.text);
        }
    }
    return rows;
}

void feed(const QStringList &traffic) {
    for (const QString &row : traffic) {
        if (row.startsWith('>'))
            Link::notifyTraffic(Link::Traffic::Sent, row.mid(1) + '\r');
        else if (row.startsWith('<'))
            Link::notifyTraffic(Link::Traffic::Received, row.mid(1));
        else
            Link::notifyTraffic(Link::Traffic::NoReply, row.mid(1));
    }
}

// The demo rack, connected, with the log window open.
struct LoggedDesk : Desk {
    TrafficLogModel *log;
    FrmTrafficLog *logWindow = nullptr;

    LoggedDesk() : log(window->trafficLog()) {
        LoadDemoRack(sim.rack);
        if (!connect(1) || !choose(window->mnuToolsTrafficLog))
            QTest::qFail("not connected", __FILE__, __LINE__);
        logWindow = window->findChild<FrmTrafficLog *>();
    }
};

} // namespace

class TrafficLogTest : public QObject {
    Q_OBJECT

private slots:
    // A scan with a silent step and a noisy one: every line in the order it passed, each with
    // the slot the rack had selected, the silence and the noise as rows of their own.
    void scanRows() {
        LoggedDesk d;
        QVERIFY(d.logWindow && d.logWindow->isVisible());
        QList<int> rackSlots; // the rack's selection as each reply (or none) came
        const int watch = Link::addTrafficObserver([&](Link::Traffic kind, const QString &) {
            if (kind != Link::Traffic::Sent) rackSlots << d.sim.rack.selectedSlot();
        });
        d.sim.rack.addFault({SimFault::NoReply, "I14", 1});
        d.sim.rack.addFault({SimFault::Garbage, "I16", 1});
        d.log->flush();
        const int first = d.log->rowCount();
        d.sim.rack.clearTranscript();
        QVERIFY(press(d.window->CmdUpload));
        Link::removeTrafficObserver(watch);
        d.log->flush();
        QTRY_COMPARE(d.logWindow->tblLog->model()->rowCount(), d.log->rowCount());

        const QStringList rows = rowsFrom(*d.log, first);
        QCOMPARE(rows, rowsFrom(d.sim.rack.transcript()));
        QVERIFY(rows.size() > 200);
        QList<int> logSlots;
        for (int n = first; n < d.log->rowCount(); ++n)
            if (d.log->row(n).kind != Link::Traffic::Sent) logSlots << d.log->row(n).slot;
        QCOMPARE(logSlots, rackSlots);
        QVERIFY(logSlots.contains(0) && logSlots.contains(3) && logSlots.contains(16));

        const int silent = first + int(rows.indexOf(">I14\r")) + 1;
        QCOMPARE(TrafficText::lineText(d.log->row(silent)), QString("(no reply)"));
        const int noisy = first + int(rows.indexOf(">I16\r")) + 1;
        QCOMPARE(TrafficText::plainRow(d.log->row(noisy)).mid(13),
                 QString("? 00 \\x01\\xFE#?\\x7F\\r"));
        for (int n = first + 1; n < d.log->rowCount(); ++n)
            QVERIFY(d.log->row(n).msecs >= d.log->row(n - 1).msecs);
    }

    // The ring keeps the newest rows, reached in one batch; the slot is followed through rows
    // that fell out; paused, the rows on show stay and the new ones wait.
    void ringBatchesAndPause() {
        TrafficLogModel log(nullptr, 4);
        QSignalSpy inserted(&log, &QAbstractItemModel::rowsInserted);
        feed({">G00", "<COK", ">I41", "<D0", ">D7", "<D7", ">I40", "!"});
        QCOMPARE(log.rowCount(), 0);
        QVERIFY(inserted.wait());
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(rowsFrom(log, 0), QStringList({">D7\r", "<D7", ">I40\r", "!"}));
        for (int n = 0; n < 4; ++n)
            QCOMPARE(log.row(n).slot, 7);

        log.setPaused(true);
        feed({">G00", "<CNG"});
        log.flush();
        QCOMPARE(rowsFrom(log, 0).first(), QString(">D7\r"));
        QCOMPARE(log.held(), 2);
        log.setPaused(false);
        QCOMPARE(rowsFrom(log, 0), QStringList({">I40\r", "!", ">G00\r", "<CNG"}));
        QCOMPARE(log.held(), 0);

        log.clear();
        feed({">I04"});
        log.flush();
        QCOMPARE(log.rowCount(), 1);
        QCOMPARE(log.row(0).slot, 7);
    }

    // The window's slot and text filters, the copy of a selection, and the export in both forms
    // read back row for row.
    void filterCopyExport() {
        LoggedDesk d;
        QVERIFY(press(d.window->CmdUpload));
        // A reply with a quote and a comma, which CSV must keep whole.
        feed({">G01", "<D\"a\",b"});
        d.log->flush();
        FrmTrafficLog *w = d.logWindow;
        QTableView *table = w->tblLog;

        w->cboLogSlot->setCurrentIndex(w->cboLogSlot->findData(3));
        emit w->cboLogSlot->activated(w->cboLogSlot->currentIndex());
        w->txtLogFind->setText("xdu");
        QTRY_COMPARE(w->filter()->lines(TrafficLogFilter::Format::Plain).size(), 1);
        QVERIFY(w->filter()
                    ->lines(TrafficLogFilter::Format::Plain)
                    .constFirst()
                    .endsWith(" < 03 DXDU42B01\\r"));
        w->cboLogSlot->setCurrentIndex(0);
        emit w->cboLogSlot->activated(0);
        w->txtLogFind->clear();
        QTRY_COMPARE(table->model()->rowCount(), d.log->rowCount());

        table->selectionModel()->select(
            QItemSelection(table->model()->index(4, 0), table->model()->index(6, 0)),
            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QVERIFY(press(w->cmdLogCopy));
        QStringList copied;
        for (int n = 4; n <= 6; ++n)
            copied << TrafficText::plainRow(d.log->row(n));
        QCOMPARE(QApplication::clipboard()->text(), copied.join('\n') + '\n');

        QTemporaryDir dir;
        for (const QString name : {"log.txt", "log.csv"}) {
            const QString path = dir.filePath(name);
            People::setFileHandler(
                [&](const People::FileRequest &r) { return r.save ? path : ""; });
            QVERIFY(press(w->cmdLogExport));
            People::setFileHandler({});
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QStringList lines = QString::fromLatin1(file.readAll()).split("\r\n");
            QCOMPARE(lines.takeLast(), QString());
            if (name.endsWith(".csv")) {
                QCOMPARE(lines.takeFirst(), QString("time,direction,slot,line"));
                QCOMPARE(lines.size(), d.log->rowCount());
                QVERIFY(lines.last().endsWith(",<,16,\"D\"\"a\"\",b\\r\""));
                continue;
            }
            QCOMPARE(lines.size(), d.log->rowCount());
            for (int n = 0; n < d.log->rowCount(); ++n) {
                const std::optional<Row> back = TrafficText::parsePlainRow(lines.at(n), nullptr);
                const Row &row = d.log->row(n);
                QVERIFY(back);
                QCOMPARE(markAndBytes(*back), markAndBytes(row));
                QCOMPARE(back->slot, row.slot);
                QCOMPARE(TrafficText::timeText(back->msecs), TrafficText::timeText(row.msecs));
            }
        }
        QVERIFY(d.messages.messages.isEmpty());
    }
};

VX_TEST(TrafficLogTest)
#include "tst_trafficlog.moc"
