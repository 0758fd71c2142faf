#include "app/desk.h"

#include "views/field/fieldkit.h"
#include "views/field/xg4.h"
#include "views/field/xghart.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QTemporaryDir>

using vxtest::CardDesk;
using vxtest::MessageRecorder;
using vxtest::preamble;
using vxtest::press;
using vxtest::readLines;
using vxtest::SimSession;
using vxtest::whenVisible;
using vxtest::writeLines;

namespace {

constexpr int kSlot = 16;

qsizetype findRun(const QStringList &lines, const QStringList &run) {
    for (qsizetype i = 0; i + run.size() <= lines.size(); ++i)
        if (lines.mid(i, run.size()) == run) return i;
    return -1;
}

// The HART master settings on a simulated HART input card in slot 16, on show as the user sees
// them, channel 1 first.
struct HartDesk {
    SimSession sim;
    MessageRecorder messages;
    FrmXG_HART dialog;

    HartDesk() {
        SimCard &card = sim.rack.slot(kSlot);
        card.model = "XG4";
        InstallProfile(card);
        sim.rack.refreshDirectory();
        CardNo = kSlot;
        IsConnected = true;
        dialog.XG4_HART_Init(0);
        dialog.show();
        (void)QTest::qWaitForWindowActive(&dialog);
        sim.rack.clearTranscript();
    }
    QStringList sent() const { return sim.rack.commands(); }

    // The ten settings as the controls show them, in the file's order.
    QStringList shown() const {
        const FrmXG_HART &d = dialog;
        return {d.PollAdd->text(),
                d.CYCL_HIGH->text(),
                d.CYCL_LOW->text(),
                d.Retry->text(),
                d.List_MasterMode->currentText(),
                d.DeviceVariableCode->text(),
                d.AnalogChCode->text(),
                d.AutoCmmand->text(),
                d.DeviceSpecificCommand->text(),
                d.ConstantData->text()};
    }

    // Types `text` into the field and leaves it for the Download button.
    void leave(QWidget *field, const QString &text) {
        field->setFocus(Qt::MouseFocusReason);
        if (auto *line = qobject_cast<QLineEdit *>(field)) line->setText(text);
        if (auto *hex = qobject_cast<HexEdit *>(field)) hex->setText(text);
        dialog.CmdDownload->setFocus(Qt::MouseFocusReason);
    }
};

QString repeated(const QString &unit, int times) {
    return unit.repeated(times);
}

} // namespace

class HartInputTest : public QObject {
    Q_OBJECT
private slots:
    void uploadAndDownloadOnTheWire() {
        CardDesk rack("XG4", kSlot);
        auto *v = qobject_cast<FrmXG4 *>(rack.view);
        QVERIFY(v);
        QTRY_VERIFY(!v->valueBox(4)->text().isEmpty());
        rack.sim.rack.slot(kSlot).setItem("02", "27", "D1");
        rack.sim.rack.slot(kSlot).setItem("03", "14", "D-1.50");
        rack.runWorker(v->cmdUp);
        QStringList expected = preamble(kSlot);
        for (const QString ch : {"1", "2", "3", "4"})
            expected += writeLines(ch, "01", "1") + readLines(ch, {"17", "18", "14", "15"});
        for (const QString ch : {"1", "2", "3", "4"})
            expected += writeLines(ch, "01", "1") + readLines(ch, {"27"});
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(v->List_ChEnable[2]->currentText(), QString("1"));
        QCOMPARE(FieldKit::ListColour(v->List_ChEnable[2]), FieldKit::kListRed);
        QCOMPARE(FieldKit::ListColour(v->List_ChEnable[1]), FieldKit::kListGreen);
        QCOMPARE(CardTable(kSlot).ChParam(2), QString("1"));
        QCOMPARE(CardTable(kSlot).Param(11), QString("-1.50"));
        QCOMPARE(CardTable(kSlot).Param(6), QString("10000"));

        rack.box("txtZScale", 1)->clear(); // empty: back to its cell, nothing sent
        rack.box("txtBias", 2)->setText("320");
        rack.box("txtGain", 3)->setText("-3.2");
        rack.box("txtFScale", 4)->setText("CNG"); // no whole number: back to its cell
        v->List_ChEnable[4]->setCurrentIndex(1);
        rack.runWorker(v->cmdDown);
        const QStringList sent = rack.sent();
        QCOMPARE(sent.mid(0, 12),
                 preamble(kSlot) + writeLines("1", "01", "1") + writeLines("1", "18", "10000"));
        QVERIFY(findRun(sent, writeLines("2", "14", "320")) > 0);
        QVERIFY(findRun(sent, writeLines("3", "15", "-3.2")) > 0);
        QVERIFY(findRun(sent, writeLines("4", "01", "1") + writeLines("4", "27", "1")) > 0);
        QVERIFY(findRun(sent, writeLines("1", "17", "")) < 0 && !sent.contains("DCNG"));
        QCOMPARE(rack.box("txtZScale", 1)->text(), QString("0"));
        QCOMPARE(rack.box("txtFScale", 4)->text(), QString("10000"));
        QCOMPARE(CardTable(kSlot).ChParam(4), QString("1"));
        QCOMPARE(FieldKit::ListColour(v->List_ChEnable[4]), FieldKit::kListRed);
    }

    void fieldLimits_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("scale low") << "txtZScale"
                                   << "-32000"
                                   << "";
        QTest::newRow("scale beyond") << "txtFScale"
                                      << "32001"
                                      << "Please enter number -32000 - 32000";
        QTest::newRow("zero adjust top") << "txtBias"
                                         << "320"
                                         << "";
        QTest::newRow("zero adjust beyond") << "txtBias"
                                            << "-320.01"
                                            << "Please enter number -320.00 - 320.00";
        QTest::newRow("full adjust bottom") << "txtGain"
                                            << "-3.2"
                                            << "";
        QTest::newRow("full adjust beyond") << "txtGain"
                                            << "3.2001"
                                            << "Please enter number -3.2000 - 3.2000";
        QTest::newRow("empty") << "txtGain"
                               << ""
                               << "";
    }
    void fieldLimits() {
        QFETCH(QString, control);
        QFETCH(QString, text);
        QFETCH(QString, message);
        CardDesk rack("XG4", kSlot);
        QLineEdit *box = rack.box(control, 2);
        box->setFocus(Qt::MouseFocusReason);
        box->setText(text);
        rack.box("txtZScale", 3)->setFocus(Qt::MouseFocusReason);
        QCOMPARE(rack.messages.messages.size(), message.isEmpty() ? 0 : 1);
        if (message.isEmpty()) return;
        QCOMPARE(rack.messages.messages[0].text, message);
        QTRY_VERIFY(box->hasFocus() && box->selectedText() == text);
    }

    // The cycle rests while the settings are open and takes up again when they close.
    void hartDialogHoldsTheCycle() {
        CardDesk rack("XG4", kSlot);
        auto *v = qobject_cast<FrmXG4 *>(rack.view);
        QTRY_VERIFY(rack.sent().contains("I13"));
        bool reached = false, locked = false, quiet = false;
        QString caption;
        whenVisible([] { return LoadedView("frmXG_HART"); },
                    [&](QWidget *w) {
                        auto *d = qobject_cast<FrmXG_HART *>(w);
                        reached = true;
                        caption = d->HARTCh_No->text();
                        locked = !v->SetHART[0]->isEnabled();
                        rack.sim.rack.clearTranscript();
                        d->CmdUpload->click();
                        quiet = rack.sent().contains("DR0010") && !rack.sent().contains("I10");
                        d->cmdExit->click();
                    });
        v->SetHART[1]->click();
        QVERIFY(reached && locked && quiet);
        QCOMPARE(caption, QString("HART2"));
        QVERIFY(v->SetHART[3]->isEnabled());
        QTRY_VERIFY(rack.sent().contains("I10"));
    }

    void hartUploadOnTheWire() {
        HartDesk h;
        h.dialog.CmdUpload->click();
        const QStringList expected =
            writeLines("00", "01", "F") + writeLines("00", "41", "00") +
            writeLines("00", "41", "16") + writeLines("1", "01", "F") +
            readLines("1", {"30", "31", "32", "33", "34"}) +
            QStringList{"G1", "I37", "DR0010", "G1", "I37", "DR1010", "G1", "I38", "DR0008"};
        QCOMPARE(h.sent().mid(0, expected.size()), expected);
        const QStringList shown = h.shown();
        QCOMPARE(shown.mid(0, 5), QStringList({"0", "10", "6", "3", "Primary"}));
        QCOMPARE(shown[5], "00010203" + repeated("FA", 12));
        QCOMPARE(shown[8].size(), 512);
        QVERIFY(shown[9].startsWith("3F800000"));
        QVERIFY(h.dialog.CmdUpload->isEnabled() && !h.dialog.ProgressBar->isVisible());
        QVERIFY(h.messages.messages.isEmpty());
    }

    // Channel 3 gets new blocks: one beyond the limit of its field, a short one, and a field of
    // 32 blocks whose last address takes three digits. A fresh dialog reads them back.
    void blocksWrittenAndReadBack() {
        HartDesk h;
        FrmXG_HART &d = h.dialog;
        d.CmdDownCh->click();
        QCOMPARE(d.HARTCh_No->text(), QString("HART4"));
        d.CmdUpCh->click();
        d.CmdUpCh->click();
        d.CmdUpCh->click();
        QCOMPARE(d.HARTCh_No->text(), QString("HART3"));
        QString specific;
        for (int b = 0; b < 32; ++b)
            specific += QStringLiteral("%1").arg(b, 4, 16, QLatin1Char('0')).toUpper().repeated(4);
        h.leave(d.PollAdd, "12");
        h.leave(d.CYCL_LOW, "36");
        d.List_MasterMode->setCurrentIndex(1);
        d.DeviceVariableCode->setText("0123456789ABCDEF0123456789ABCDEF4567");
        d.AutoCmmand->setText("ABCD");
        d.DeviceSpecificCommand->setText(specific);
        h.leave(d.ConstantData, "ABCDEF");
        QCOMPARE(d.ConstantData->text(), "ABCDEF" + repeated("00", 125));
        h.sim.rack.clearTranscript();
        d.CmdDownload->click();
        const QStringList sent = h.sent();
        QCOMPARE(sent.mid(0, 9), writeLines("00", "01", "F") + writeLines("00", "41", "16") +
                                     writeLines("3", "01", "F"));
        QVERIFY(findRun(sent, writeLines("3", "32", "36")) > 0);
        QVERIFY(findRun(sent, writeLines("3", "34", "1")) > 0);
        QVERIFY(sent.contains("DW10100123456789ABCDEF") && !sent.contains("DW2004"));
        QVERIFY(sent.contains("DW0004ABCD") && !sent.contains("DW0808"));
        QVERIFY(sent.contains("DW1F010" + specific.right(16)));

        d.XG4_HART_Init(2);
        QCOMPARE(h.shown(), QStringList(10, QString()));
        d.CmdUpload->click();
        QVERIFY(h.sent().contains("DR1F010"));
        const QStringList back = h.shown();
        QCOMPARE(back.mid(0, 5), QStringList({"12", "", "36", "", "Secondary"}));
        QCOMPARE(back[5], QString("0123456789ABCDEF0123456789ABCDEF"));
        QCOMPARE(back[7], "ABCD" + repeated("0000", 45));
        QCOMPARE(back[8], specific);
        QCOMPARE(back[9], d.ConstantData->text());
        // The other channels kept what the card had.
        QCOMPARE(h.sim.rack.slot(kSlot).groups["01"]["30"], QString("D0"));
    }

    void blockAnswers() {
        HartDesk h;
        SimCard &card = h.sim.rack.slot(kSlot);
        card.onData = [next = card.onData](SimCard &c, const QString &g, const QString &i,
                                             const QString &data,
                                             qint64 ms) -> std::optional<QString> {
            if (g == "01" && i == "37") return QString("D%1NG").arg(data); // refused
            if (g == "01" && i == "38") return QString("DABCD1234");       // no echo of the request
            return next(c, g, i, data, ms);
        };
        h.dialog.CmdUpload->click();
        // Four attempts at the first block, then the field ends there.
        const QStringList sent = h.sent();
        qsizetype attempts = 0;
        for (qsizetype i = 1; i < sent.size(); ++i)
            attempts += sent[i - 1] == "I37" && sent[i] == "DR0010";
        QCOMPARE(attempts, 4);
        QVERIFY(findRun(sent, {"I37", "DR1010"}) < 0);
        QCOMPARE(h.dialog.DeviceVariableCode->text(), QString());
        QCOMPARE(h.dialog.AnalogChCode->text(), QString("ABCD1234"));
    }

    void hartFieldChecks_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("stored");
        const QString low = "Please enter 0 or 6 - 36";
        QTest::newRow("poll 256") << "PollAdd"
                                  << "256"
                                  << "Please enter 0 - 255"
                                  << "";
        QTest::newRow("high 59") << "CYCL_HIGH"
                                 << "59"
                                 << ""
                                 << "59";
        QTest::newRow("low 0") << "CYCL_LOW"
                               << "0"
                               << ""
                               << "0";
        QTest::newRow("low 5") << "CYCL_LOW"
                               << "5" << low << "";
        QTest::newRow("low 6") << "CYCL_LOW"
                               << "6"
                               << ""
                               << "6";
        QTest::newRow("low 37") << "CYCL_LOW"
                                << "37" << low << "";
        QTest::newRow("retry 17") << "Retry"
                                  << "17"
                                  << "Please enter 0 - 16"
                                  << "";
        QTest::newRow("codes odd") << "DeviceVariableCode"
                                   << "ABC"
                                   << "Please enter even characters"
                                   << "";
        QTest::newRow("codes padded") << "AnalogChCode"
                                      << "01"
                                      << ""
                                      << "01FAFAFA";
        QTest::newRow("command 6") << "AutoCmmand"
                                   << "ABCDEF"
                                   << "Please enter 4N characters"
                                   << "";
        QTest::newRow("command 188")
            << "AutoCmmand" << repeated("0", 188) << "Please enter 0 - 184 characters"
            << "";
        QTest::newRow("specific 516")
            << "DeviceSpecificCommand" << repeated("0", 516) << "Please enter 0 - 512 characters"
            << "";
        QTest::newRow("constant 257")
            << "ConstantData" << repeated("0", 257) << "Please enter 0 - 256 characters"
            << "";
    }
    void hartFieldChecks() {
        QFETCH(QString, control);
        QFETCH(QString, text);
        QFETCH(QString, message);
        QFETCH(QString, stored);
        HartDesk h;
        QWidget *field = h.dialog.findChild<QWidget *>(control);
        h.leave(field, text);
        QCOMPARE(h.messages.messages.size(), message.isEmpty() ? 0 : 1);
        if (!message.isEmpty()) {
            QCOMPARE(h.messages.messages[0].text, message);
            QCOMPARE(h.messages.messages[0].icon, People::Icon::Information);
            QTRY_VERIFY(field->hasFocus());
            // Nothing refused goes to the card.
            h.dialog.CmdDownload->click();
            QVERIFY(h.sent().isEmpty());
        }
        // What passed is in the store: a round through the channels shows it again.
        h.dialog.CmdUpCh->click();
        h.dialog.CmdDownCh->click();
        const QStringList shown = h.shown();
        QVERIFY2(shown.contains(stored), qPrintable(shown.join('|')));
    }

    void clearAndReset() {
        HartDesk h;
        h.dialog.AutoCmmand->setText("1234");
        h.dialog.CmdClear[2]->click();
        const QStringList open = writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                 writeLines("00", "41", "16") + writeLines("1", "01", "F");
        QCOMPARE(h.sent(), open + writeLines("1", "39", "C"));
        QCOMPARE(h.dialog.AutoCmmand->text(), QString("1234"));
        h.sim.rack.clearTranscript();
        h.dialog.CmdReset->click();
        QCOMPARE(h.sent(), open + writeLines("1", "50", "9999"));
        QVERIFY(h.dialog.cmdExit->isEnabled());
        // The card cleared it: an Upload shows the card's state.
        h.dialog.CmdUpload->click();
        QCOMPARE(h.dialog.AutoCmmand->text(), repeated("0000", 46));
    }

    // Saved from channel 1, read into channel 3; a cancelled dialog changes nothing.
    void settingsFileRoundTrip() {
        HartDesk h;
        QTemporaryDir dir;
        const QString path = dir.filePath("ch1.vhx");
        QStringList answers = {path, QString(), path};
        People::setFileHandler([&](const People::FileRequest &r) {
            if (!r.filter.startsWith("vhx Files (*.vhx)")) return QString();
            return answers.takeFirst();
        });
        h.dialog.CmdUpload->click();
        const QStringList channel1 = h.shown();
        h.dialog.CmdWriteFile->click();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray expected = "0\r\n";
        for (const QString &text : channel1)
            expected += "\"" + text.toLatin1() + "\"\r\n";
        QCOMPARE(file.readAll(), expected);

        h.dialog.CmdUpCh->click();
        h.dialog.CmdUpCh->click();
        h.dialog.CmdReadFile->click(); // cancelled
        QCOMPARE(h.shown(), QStringList(10, QString()));
        h.dialog.CmdReadFile->click();
        People::setFileHandler({});
        QCOMPARE(h.dialog.HARTCh_No->text(), QString("HART3"));
        QCOMPARE(h.shown(), channel1);
        QVERIFY(h.messages.messages.isEmpty());
    }

    void settingsFileRefusals_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        const QList<QByteArray> good = {"0",     "\"1\"",         "\"10\"",   "\"6\"",
                                        "\"3\"", "\"Secondary\"", "\"00FA\"", "\"0102\"",
                                        "\"\"",  "\"\"",          "\"00\""};
        auto file = [&good](qsizetype line, const QByteArray &text) {
            QList<QByteArray> lines = good;
            if (line >= 0) lines[line] = text;
            return lines.join("\r\n") + "\r\n";
        };
        QTest::newRow("other version") << file(0, "1") << "read file incomplete";
        QTest::newRow("project file")
            << QByteArray("\"QF4\",\"1.20\",\"0\"\r\n") << "line 1 holds no file version";
        QTest::newRow("truncated") << good.mid(0, 6).join("\r\n") << "line 7 is missing";
        QTest::newRow("two channels")
            << file(-1, {}) + file(-1, {}).mid(3) << "line 12 goes on past";
        QTest::newRow("no quotes") << file(2, "10") << "line 3 is not a text in double quotes";
        QTest::newRow("master mode") << file(5, "\"Tertiary\"") << "neither Primary nor Secondary";
        QTest::newRow("not hex") << file(6, "\"00fa\"") << "characters other than 0-9 and A-F";
        QTest::newRow("cycle out of range") << file(3, "\"5\"") << "Please enter 0 or 6 - 36";
        QTest::newRow("binary") << QByteArray("0\r\n\x01\x02\r\n", 7) << "binary data";
    }
    void settingsFileRefusals() {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        HartDesk h;
        h.dialog.CmdUpload->click();
        const QStringList before = h.shown();
        QTemporaryDir dir;
        const QString path = dir.filePath("bad.vhx");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        People::setFileHandler([&](const People::FileRequest &) { return path; });
        h.dialog.CmdReadFile->click();
        People::setFileHandler({});
        QCOMPARE(h.messages.messages.size(), 1);
        QVERIFY2(h.messages.messages[0].text.contains(message),
                 qPrintable(h.messages.messages[0].text));
        QCOMPARE(h.messages.messages[0].icon, People::Icon::Stop);
        if (message == "read file incomplete")
            QCOMPARE(h.messages.messages[0].title, QString("read file"));
        QCOMPARE(h.shown(), before);
    }
};

VX_TEST(HartInputTest)
#include "tst_xg4.moc"
