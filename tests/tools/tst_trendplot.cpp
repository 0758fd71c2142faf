#include "app/desk.h"

#include "ui/textfile.h"
#include "ui/trendplot.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>

using vxtest::CardDesk;

namespace {

// A feed over boxes of the test's own, told by hand that they were read.
struct HandFeed {
    LiveFeed feed;
    QLineEdit one, two;
    QString card = "QF4, slot 3";

    HandFeed() {
        feed.channels = [this] {
            return QList<LiveChannel>{{"Ch 1", &one}, {"Ch, two", &two, [](const QString &text) {
                                                           return text == "ON"
                                                                      ? std::optional<double>(1.0)
                                                                      : std::optional<double>();
                                                       }}};
        };
        feed.source = [this] { return card; };
    }
    void read(const QString &a, const QString &b) {
        one.setText(a);
        two.setText(b);
        feed.shown();
    }
};

} // namespace

class TrendPlotTest : public QObject {
    Q_OBJECT
private slots:
    // Every sample holds exactly what the boxes showed when the view told the read was done,
    // and the plot opened from the view follows that view's card.
    void samplesAreWhatTheViewShowed() {
        CardDesk rack("QF4", 3);
        QVERIFY(rack.view->cmdTrend->isVisible());
        QList<QStringList> shown;
        QObject::connect(rack.view->liveFeed, &LiveFeed::valuesShown, rack.view, [&] {
            QStringList texts;
            for (int ch = 1; ch <= 4; ++ch)
                texts << rack.view->valueBox(ch)->text();
            shown << texts;
        });
        rack.view->cmdTrend->click();
        FrmTrend *plot = TrendPlotOf("QF4, slot 3");
        QVERIFY(plot && plot->isVisible());
        QTRY_VERIFY(plot->samples().samples().size() >= 3);
        QCOMPARE(plot->samples().names(), QStringList({"Ch 1", "Ch 2", "Ch 3", "Ch 4"}));
        plot->close(); // no more samples from here on
        const qsizetype count = plot->samples().samples().size();
        QVERIFY(shown.size() >= count);
        for (qsizetype n = 0; n < count; ++n)
            QCOMPARE(plot->samples().samples().at(n).texts, shown.at(shown.size() - count + n));
        // Drawn values are the shown texts read as numbers.
        const QList<QList<QPointF>> runs = plot->segments(0);
        QCOMPARE(runs.size(), 1);
        QCOMPARE(runs.first().last().y(), shown.last().first().toDouble());
    }

    // The same view serves every card of its family: a plot takes only its own card's reads.
    void anotherCardsReadsAreNotTaken() {
        HandFeed hand;
        FrmTrend plot(&hand.feed, hand.card);
        plot.show();
        hand.read("1", "ON");
        hand.card = "QF4, slot 4";
        hand.read("2", "OFF");
        QCOMPARE(plot.samples().samples().size(), 1);
        QCOMPARE(plot.samples().samples().first().texts, QStringList({"1", "ON"}));
    }

    // Where a line breaks: a loss, a text that is no number, a close and a reopen.
    void linesBreakWhereNothingWasMeasured() {
        HandFeed hand;
        FrmTrend plot(&hand.feed, hand.card);
        plot.show();
        hand.read("10", "ON");
        hand.read("11.5", "OFF"); // no number for the second channel's reader
        hand.feed.lost();
        hand.read("TMOUT", "ON");
        hand.read("-3", "ON");
        plot.close();
        hand.read("99", "ON"); // not recorded while closed
        plot.show();
        hand.read("4", "ON");

        const auto ys = [&](qsizetype channel) {
            QList<QList<double>> runs;
            for (const QList<QPointF> &run : plot.segments(channel)) {
                runs.append(QList<double>());
                for (const QPointF &point : run)
                    runs.last().append(point.y());
            }
            return runs;
        };
        QCOMPARE(ys(0), QList<QList<double>>({{10, 11.5}, {-3}, {4}}));
        QCOMPARE(ys(1), QList<QList<double>>({{1}, {1, 1}, {1}}));
        QVERIFY(plot.lblStatus->text().contains("5 samples"));
    }

    void exportWritesTheSamplesAsCsv() {
        vxtest::MessageRecorder messages;
        QTemporaryDir dir;
        HandFeed hand;
        FrmTrend plot(&hand.feed, hand.card);
        plot.show();
        QString asked;
        People::setFileHandler([&](const People::FileRequest &request) {
            asked = request.defaultName;
            return dir.filePath("out.csv");
        });
        plot.cmdExport->click(); // nothing yet
        QCOMPARE(messages.messages.size(), 1);
        QVERIFY(asked.isEmpty());

        hand.read("1.25", "ON");
        hand.feed.lost();
        hand.read("\"x\"", "OFF");
        plot.cmdExport->click();
        QCOMPARE(asked, QString("trend-QF4-slot-3.csv"));
        QString text;
        QVERIFY(TextFile::read(dir.filePath("out.csv"), 1 << 20, "CSV", text).isEmpty());
        const QStringList lines = text.split("\r\n", Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines.at(0), QString("Time,Ch 1,\"Ch, two\",Note"));
        QVERIFY(lines.at(1).endsWith(",1.25,ON,"));
        QVERIFY(lines.at(2).endsWith(",,,no answer"));
        QVERIFY(lines.at(3).endsWith(",\"\"\"x\"\"\",OFF,"));
        QCOMPARE(QDateTime::fromString(lines.at(1).section(',', 0, 0), "yyyy-MM-dd hh:mm:ss.zzz")
                     .isValid(),
                 true);

        // A folder that is not there: said, and the samples stay.
        People::setFileHandler(
            [&](const People::FileRequest &) { return dir.filePath("gone/out.csv"); });
        plot.cmdExport->click();
        People::setFileHandler({});
        QCOMPARE(messages.messages.size(), 2);
        QVERIFY(messages.messages.last().text.contains("gone"));
        QCOMPARE(plot.samples().samples().size(), 3);
    }

    // Pause holds the picture; the recording goes on underneath.
    void pauseKeepsRecording() {
        HandFeed hand;
        FrmTrend plot(&hand.feed, hand.card);
        plot.show();
        plot.cboSpan->setCurrentIndex(plot.cboSpan->count() - 1);
        QCOMPARE(plot.spanSeconds(), 3600);
        plot.cmdPause->click();
        QVERIFY(plot.paused());
        hand.read("5", "ON");
        QCOMPARE(plot.samples().samples().size(), 1);
        QVERIFY(plot.lblStatus->text().startsWith("Paused"));
        plot.cmdPause->click();
        QVERIFY(!plot.paused());
        QCOMPARE(plot.lstChannels->count(), 2);
    }

    // A pulled line: the view's read fails, the plot says so and keeps what it had.
    void aPulledLineShowsAsNoAnswer() {
        CardDesk rack("QF4", 3);
        rack.view->cmdTrend->click();
        FrmTrend *plot = TrendPlotOf("QF4, slot 3");
        QTRY_VERIFY(!plot->samples().samples().isEmpty());
        rack.sim.rack.addFault({SimFault::CutLine, QString(), 1});
        QTRY_VERIFY(plot->samples().samples().last().kind == TrendSamples::Kind::Lost);
        QVERIFY(plot->lblStatus->text().contains("No answer"));
        QVERIFY(plot->samples().samples().first().kind == TrendSamples::Kind::Values);
        plot->close();
    }
};

VX_TEST(TrendPlotTest)

#include "tst_trendplot.moc"
