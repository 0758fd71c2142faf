#include "comm/commrack.h"
#include "comm/settingsfiles.h"

#include "comm/frmhlink.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using vxtest::CommRack;
using vxtest::FileAnswers;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

const QStringList kSelect = writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                            writeLines("17", "01", "1") + readLines("00", {"40"});

const QStringList kEntries = {"A8,100,AI8", "9C,0x20,DI16", "B4,0x1F0,AO4", "90,200,DO16"};

QStringList readsOf(const QString &group, const QString &items) {
    return readLines(group, items.split(' '));
}

// Everything the dialog shows and keeps beside its controls.
QStringList snapshot(const FrmHLINK &d) {
    QStringList state;
    for (const QLineEdit *box : d.findChildren<QLineEdit *>())
        state << box->objectName() + "=" + box->text() + (box->isEnabled() ? "+" : "-");
    for (const QComboBox *list : d.findChildren<QComboBox *>())
        state << list->objectName() + "#" + list->currentText();
    for (const QLabel *mac : d.lblMac)
        state << mac->text();
    for (const FrmHLINK::EntryRow &row : d.rows)
        state << row.rowDeviceCode.value_or("?") + "/" + row.rowRadix.value_or("?") + "/" +
                     QString::number(row.rowListKind);
    return state;
}

// "control=text" for boxes, "control#position" for lists (chosen as a person chooses), ";"
// between them.
void setControls(FrmHLINK &d, const QString &settings) {
    for (const QString &setting : settings.split(';', Qt::SkipEmptyParts)) {
        if (setting.contains('#')) {
            QComboBox *list = d.findChild<QComboBox *>(setting.section('#', 0, 0));
            const int position = setting.section('#', 1).toInt();
            list->setCurrentIndex(position);
            if (position >= 0) emit list->activated(position);
        } else {
            d.findChild<QLineEdit *>(setting.section('=', 0, 0))->setText(setting.section('=', 1));
        }
    }
}

// A row as "type channels device code radix hex dec".
QString rowText(const FrmHLINK &d, int r) {
    const FrmHLINK::EntryRow &row = d.rows.at(size_t(r));
    return QStringList{row.cardType->currentText(), row.ChNo->text(),
                       row.DevType->currentText(),  row.rowDeviceCode.value_or("?"),
                       row.rowRadix.value_or("?"),  row.DevAdd16->text(),
                       row.DevAdd10->text()}
        .join(' ');
}

struct Opened {
    CommRack rack{"VX-HLINK1", "1.02"};
    FrmHLINK dialog;
    Opened() { dialog.OpenView("VX-HLINK1:00"); }
    QStringList messages() const { return rack.messages.texts(); }
};

} // namespace

class FrmHLINKTest : public QObject {
    Q_OBJECT

private slots:
    void uploadAndDownloadOnTheWire() {
        Opened o;
        FrmHLINK &d = o.dialog;
        QCOMPARE(o.rack.sent(), kSelect + readsOf("00", "09 59 60 61 63 64 65 66 67 68 69") +
                                    readsOf("17", "09") + readsOf("00", "57 58") +
                                    readsOf("17", "10 11 12 13"));
        QCOMPARE(d.txtIP.text(), QString("192.168.3.20"));
        QCOMPARE(d.txtSLMPIP.text(), QString("192.168.3.39"));
        QCOMPARE(d.List_ServerType->currentText(), QString("32"));
        QCOMPARE(d.lblMac[1]->text(), QString("6A-11-02"));
        QCOMPARE(rowText(d, 0), QString("AI 8 D A8 10  100"));
        QCOMPARE(rowText(d, 1), QString("DI 16 X 9C 16 20 "));
        QCOMPARE(rowText(d, 3), QString("DO 16 M 90 10  200"));
        // Open rows show the address box of their radix; the others are closed.
        QVERIFY(d.rows[1].DevAdd16->isEnabled() && !d.rows[1].DevAdd10->isEnabled());
        QVERIFY(d.rows[3].ChNo->isEnabled() && !d.rows[4].ChNo->isEnabled());
        QVERIFY(o.messages().isEmpty());

        o.rack.clear();
        d.cmdDown->click();
        QStringList expected = kSelect;
        const QStringList items = {"09", "59", "60", "61", "63", "64",
                                   "65", "66", "67", "68", "69"};
        const QStringList data = {
            "100", "192.168.3.20", "255.255.255.0", "192.168.3.1", "32", "3FF", "5",
            "0",   "255",          "192.168.3.39",  "5007"};
        for (int i = 0; i < items.size(); ++i)
            expected += writeLines("00", items[i], data[i]);
        expected += writeLines("17", "09", "4");
        for (int r = 0; r < 4; ++r)
            expected += writeLines("17", QString::number(10 + r), kEntries[r]);
        QCOMPARE(o.rack.sent(), expected);
        QVERIFY(o.messages().isEmpty());
    }

    // An entry text into a row: the code is the last two characters, the table's radix wins over
    // the address's prefix, and a code the list lacks is device "0" with radix 10.
    void entryTexts_data() {
        vxtest::textTable({"server", "entry", "row"},
                          {{"word device", "32", "A8,100,AI8", "AI 8 D A8 10  100"},
                           {"bit device, hex", "32", "9C,0x20,DI16", "DI 16 X 9C 16 20 "},
                           {"prefix in capitals", "32", "9C,0X20,DI16", "DI 16 X 9C 16 20 "},
                           {"no prefix, hex device", "32", "9C,20,DO2", "DO 2 X 9C 16 20 "},
                           {"prefix, decimal device", "32", "A8,0x100,AO1", "AO 1 D A8 10  100"},
                           {"RD of the 32-bit words", "32", "2C,5,AI1", "AI 1 RD 2C 10  5"},
                           {"no RD in 16 bits", "16", "2C,5,AI1", "AI 1 0 2C 10  5"},
                           {"S of the 16-bit bits", "16", "98,7,DI2", "DI 2 S 98 10  7"},
                           {"no S in 32 bits", "32", "98,7,DI2", "DI 2 0 98 10  7"},
                           {"code with more in front", "32", "0xA9,3,AI4", "AI 4 SD A9 10  3"},
                           {"one comma", "32", "A8,100", ""},
                           {"three commas", "32", "A8,1,0,AI8", ""}});
    }
    void entryTexts() {
        QFETCH(QString, server);
        QFETCH(QString, entry);
        QFETCH(QString, row);
        Opened o;
        o.dialog.List_ServerType->setCurrentText(server);
        const QString before = rowText(o.dialog, 6);
        QCOMPARE(o.dialog.ParseEntry(6, entry), !row.isEmpty());
        QCOMPARE(rowText(o.dialog, 6), row.isEmpty() ? before : row);
    }

    // A bad entry or a silent card stops the Upload with what was read before it kept.
    void uploadFailures_data() {
        vxtest::textTable({"item", "reply"}, {{"entry of two fields", "11", "DA8,100"},
                                              {"count not a number", "09", "DX"},
                                              {"count above 16", "09", "D17"},
                                              {"silent address", "59", ""},
                                              {"silent MAC", "58", ""}});
    }
    void uploadFailures() {
        QFETCH(QString, item);
        QFETCH(QString, reply);
        Opened o;
        FrmHLINK &d = o.dialog;
        d.txtSNM.setText("1.2.3.4");
        d.rows[1].ChNo->setText("3");
        const QString group = item == "09" || item == "11" ? "17" : "00";
        if (reply.isEmpty())
            o.rack.sim.rack.addFault({SimFault::NoReply, "I" + item, -1, 0});
        else
            o.rack.card().setItem(group, item, reply);
        d.cmdUp->click();
        QCOMPARE(o.messages(), QStringList({"Upload incomplete"}));
        QCOMPARE(o.rack.messages.messages[0].title, QString("Upload"));
        QCOMPARE(o.rack.messages.messages[0].icon, People::Icon::Stop);
        QCOMPARE(d.txtSNM.text(), item == "59" ? QString("1.2.3.4") : QString("255.255.255.0"));
        QCOMPARE(d.rows[1].ChNo->text(), QString("3"));
        QVERIFY(d.cmdUp->isEnabled() && d.cmdExit->isEnabled());
    }

    // How the entry table follows the user: a new type refills its device list, a device picks
    // its address box, and a new protocol type reaches the rows only with "Apply".
    void editingTheEntries() {
        Opened o;
        FrmHLINK &d = o.dialog;
        setControls(d, "cardType(0)#2"); // DI
        QCOMPARE(rowText(d, 0), QString("DI 8 SM 91 10  100"));
        QCOMPARE(d.rows[0].DevType->count(), 21);
        setControls(d, "DevType(0)#1"); // X
        QCOMPARE(rowText(d, 0), QString("DI 8 X 9C 16  100"));
        QVERIFY(d.rows[0].DevAdd16->isEnabled() && !d.rows[0].DevAdd10->isEnabled());

        setControls(d, "List_ServerType#0");
        QCOMPARE(rowText(d, 2), QString("AO 4 W B4 16 1F0 "));
        QVERIFY(d.CmdOK_Click());
        // "X" is in both bit lists, so the row falls back to the first device all the same.
        QCOMPARE(rowText(d, 0), QString("DI 8 SM 91 10  100"));
        QCOMPARE(d.rows[0].DevType->count(), 18);
        QCOMPARE(rowText(d, 2), QString("AO 4 SD A9 10 1F0 "));
        QCOMPARE(d.rows[2].DevType->count(), 10);
        QVERIFY(d.rows[5].rowListKind == 0 && !d.rows[5].rowDeviceCode);
        QVERIFY(o.messages().isEmpty());
    }

    // What a box makes of its text when the user leaves it.
    void leavingBoxes_data() {
        vxtest::textTable(
            {"box", "typed", "left", "message"},
            {{"processor canonical", "CPUNo", "00ff", "FF", ""},
             {"processor of 5 digits", "CPUNo", "0FFFF", "0FFFF",
              "Processor No.:Please enter number 0000 - FFFF"},
             {"hex address canonical", "DevAdd16(1)", "0001f", "1F", ""},
             {"hex address at the top", "DevAdd16(1)", "FFFFFFFF", "FFFFFFFF", ""},
             {"hex address of 9 digits", "DevAdd16(1)", "1FFFFFFFF", "",
              "Device address(Hex):Please enter number 00000000 - FFFFFFFF"},
             {"hex address empty", "DevAdd16(1)", "", "", ""},
             {"decimal address of 9 digits", "DevAdd10(0)", "123456789", "",
              "Device address:Please enter number 00000000 - 99999999"},
             {"channels 17", "ChNo(0)", "17", "", "Ch. No.:Please enter number 1 - 16"},
             {"station 125", "StationNo", "125", "125", ""},
             {"station 124", "StationNo", "124", "124",
              "Station No.:Please enter number 1 - 120,125,126,255"},
             {"address part 256", "txtIP(2)", "256", "256", "address:Please enter number 0 - 255"},
             {"entries 17", "DeviceNo", "17", "17",
              "Access device No.:Please enter number 0 - 16"}});
    }
    void leavingBoxes() {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(QString, left);
        QFETCH(QString, message);
        Opened o;
        o.dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&o.dialog));
        QLineEdit *edit = o.dialog.findChild<QLineEdit *>(box);
        edit->setFocus();
        QTRY_VERIFY(edit->hasFocus());
        edit->setText(typed);
        o.dialog.PortNo->setFocus();
        QCOMPARE(edit->text(), left);
        QCOMPARE(o.messages(), message.isEmpty() ? QStringList() : QStringList{message});
        if (!message.isEmpty()) QTRY_VERIFY(edit->hasFocus());
        o.dialog.hide();
    }

    // Nine entries of 16 channels are too many: the box that passes 128 is emptied; eight pass.
    void channelsOfAllEntries() {
        Opened o;
        o.dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&o.dialog));
        o.dialog.DeviceNo->setText("9");
        o.dialog.SetRowEnabling(9);
        for (int r = 0; r < 9; ++r) {
            QLineEdit *box = o.dialog.rows[r].ChNo;
            box->setFocus();
            QTRY_VERIFY(box->hasFocus());
            box->setText("16");
            o.dialog.PortNo->setFocus();
            QTRY_VERIFY(o.dialog.PortNo->hasFocus() || !o.messages().isEmpty());
            QCOMPARE(box->text(), r < 8 ? QString("16") : QString());
        }
        QCOMPARE(o.messages(), QStringList({"Set the total number of channels to 128 or less"}));
        o.dialog.hide();
    }

    // A Download runs the checks of "Apply" first and again just before each field goes out, so
    // a bad field stops the writes where it stands.
    void downloadChecks_data() {
        vxtest::textTable(
            {"settings", "messages", "lastWrite"},
            {{"pause 10001", "pausePeriod=10001",
              "Pause period:Please enter number 0 - 10000|Pause period:Please enter number 0 - "
              "10000|Downloading incomplete",
              "-"},
             {"station 121", "StationNo=121",
              "Station No.:Please enter number 1 - 120,125,126,255|Station No.:Please enter number "
              "1 - 120,125,126,255|Downloading incomplete",
              "66"},
             {"no protocol type", "List_ServerType#-1",
              "Server Type:Please select 16 or 32|Server Type:Please select 16 or "
              "32|Downloading incomplete",
              "61"},
             {"entry without an address",
              "DevAdd10(0)=", "Card Settings:Incorrect settings|Downloading incomplete", ""},
             {"entry of 17 channels", "ChNo(1)=17",
              "Ch. No.:Please enter number 1 - 16|Downloading incomplete", "10"},
             {"no entries", "DeviceNo=0", "", "09"},
             {"station 255 and the processor in capitals", "StationNo=255;CPUNo=abc", "", "13"}});
    }
    void downloadChecks() {
        QFETCH(QString, settings);
        QFETCH(QString, messages);
        QFETCH(QString, lastWrite);
        Opened o;
        setControls(o.dialog, settings);
        o.rack.clear();
        o.dialog.cmdDown->click();
        QCOMPARE(o.messages().join('|'), messages);
        const QStringList sent = o.rack.sent();
        if (lastWrite.isEmpty()) {
            QVERIFY(sent.isEmpty());
        } else if (lastWrite == "-") {
            QCOMPARE(sent, kSelect);
        } else {
            QCOMPARE(sent.at(sent.size() - 2), "I" + lastWrite);
        }
        if (settings.startsWith("StationNo=255")) QVERIFY(sent.contains("DABC"));
        QVERIFY(o.dialog.cmdDown->isEnabled());
    }

    // The file keeps all sixteen entries; reading it gives back the active ones.
    void settingsFile() {
        Opened o;
        FrmHLINK &d = o.dialog;
        const QStringList before = snapshot(d);
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("gateway.hlk"));
        d.CmdSaveF->click();
        QCOMPARE(answers.requests.first().filter,
                 QString("hlk Files (*.hlk);;Text Files (*.txt);;All Files (*)"));
        const QString text = QString::fromLatin1(vxtest::fileBytes(answers.path));
        QVERIFY(
            text.startsWith("0\r\n\"100\"\r\n\"192.168.3.20\"\r\n\"255.255.255.0\"\r\n"
                            "\"192.168.3.1\"\r\n\"32\"\r\n\"3FF\"\r\n\"5\"\r\n\"0\"\r\n"
                            "\"255\"\r\n\"192.168.3.39\"\r\n\"5007\"\r\n\"4\"\r\n"
                            "\"AI\"\r\n\"8\"\r\n\"D\"\r\n\"A8\"\r\n\"10\"\r\n\"\"\r\n\"100\"\r\n"));
        // An entry never touched: no device code and no radix.
        QVERIFY(text.endsWith("\"\"\r\n\"\"\r\n\"\"\r\n\r\n\r\n\"\"\r\n\"\"\r\n"));
        QCOMPARE(text.count("\r\n"), 125);

        setControls(d, "pausePeriod=7;cardType(1)#0;ChNo(3)=1;DeviceNo=6;ChNo(5)=9");
        d.CmdReadF->click();
        QVERIFY(o.messages().isEmpty());
        QStringList after = snapshot(d);
        // Entries from the file's count on keep what the dialog had.
        QVERIFY(after.contains("ChNo(5)=9-"));
        after.replace(after.indexOf("ChNo(5)=9-"), "ChNo(5)=-");
        QCOMPARE(after, before);
    }

    void brokenFilesChangeNothing_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QList<QByteArray> good = {"0"};
        for (int line = 2; line <= 125; ++line)
            good << (line == 13 ? "\"2\"" : "\"1\"");
        const auto file = [](QList<QByteArray> lines) { return lines.join("\r\n") + "\r\n"; };
        QList<QByteArray> cut = good.mid(0, 124);
        QList<QByteArray> longer = good;
        longer << "\"1\"";
        QList<QByteArray> bare = good;
        bare[4] = "255.255.255.0";
        QList<QByteArray> count = good;
        count[12] = "\"17\"";
        QList<QByteArray> emptyType = good;
        emptyType[13] = "";
        QTest::newRow("empty") << QByteArray() << "line 1 is missing";
        QTest::newRow("no version")
            << file(QList<QByteArray>{"\"0\""} + good.mid(1)) << "line 1 holds no file version";
        QTest::newRow("cut short") << file(cut) << "line 125 is missing";
        QTest::newRow("a line too many") << file(longer) << "line 126 goes on past";
        QTest::newRow("blank lines after the end") << file(good) + "\r\n \r\n"
                                                   << "";
        QTest::newRow("bare value") << file(bare) << "line 5 (Default gateway) is not a text";
        QTest::newRow("count of 17") << file(count) << "line 13 (Entry No.) holds \"17\"";
        QTest::newRow("empty type line") << file(emptyType) << "line 14 (Entry 1 I/O type)";
        QList<QByteArray> tab = good;
        tab[4] = "\"255.\t255\"";
        QTest::newRow("tab in a text") << file(tab) << "line 5 (Default gateway) is not a text";
        QTest::newRow("a wireless file")
            << QByteArray("4\r\n\"1\"\r\n\"RTU\"\r\n") << "line 4 is missing";
    }
    void brokenFilesChangeNothing() {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        Opened o;
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("broken.hlk"));
        QVERIFY(vxtest::putFile(answers.path, content));
        const QStringList before = snapshot(o.dialog);
        o.dialog.CmdReadF->click();
        if (reason.isEmpty()) {
            QVERIFY(o.messages().isEmpty());
            QCOMPARE(o.dialog.DeviceNo->text(), QString("2"));
            QCOMPARE(o.dialog.rows[1].rowRadix.value_or("?"), QString("1"));
            return;
        }
        QCOMPARE(snapshot(o.dialog), before);
        QCOMPARE(o.messages().size(), 1);
        QVERIFY2(o.messages().first().contains(reason), qPrintable(o.messages().first()));
        QVERIFY(o.dialog.CmdReadF->isEnabled());
    }

    // Save File wants complete entries, and a full disk leaves the old file as it was.
    void saveFailures() {
        Opened o;
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("keep.hlk"));
        QVERIFY(vxtest::putFile(answers.path, "old\r\n"));
        vxtest::failDiskAtWrite(40);
        o.dialog.CmdSaveF->click();
        QCOMPARE(vxtest::fileBytes(answers.path), QByteArray("old\r\n"));
        QCOMPARE(o.messages().size(), 1);
        QVERIFY(o.messages().first().startsWith("save file incomplete\n\n" +
                                                QDir::toNativeSeparators(answers.path)));

        o.rack.messages.messages.clear();
        o.dialog.rows[2].DevAdd16->clear();
        o.dialog.CmdSaveF->click();
        QCOMPARE(o.messages(),
                 QStringList({"Card Settings:Incorrect settings", "save file incomplete"}));
        QCOMPARE(answers.requests.size(), 1);
        QCOMPARE(vxtest::fileBytes(answers.path), QByteArray("old\r\n"));
    }
};

VX_TEST(FrmHLINKTest)
#include "tst_frmhlink.moc"
