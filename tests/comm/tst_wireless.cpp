#include "comm/commrack.h"
#include "comm/settingsfiles.h"

#include "comm/wireless.h"
#include "rack/textroutines.h"

#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using vxtest::CommRack;
using vxtest::FileAnswers;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

struct Model {
    WirelessModel model;
    QString name;
};

Model modelOf(const QString &text) {
    if (text == "ZQ") return {WirelessModel::ZQ, "VX-ZQ1"};
    if (text == "ZRV1F") return {WirelessModel::ZRV1F, "VX-ZRV1F"};
    return {WirelessModel::ZRV, "VX-ZRV1"};
}

// "00:56,58 17:30-33" as group and item pairs, in order.
QList<std::pair<QString, QString>> itemsOf(const QString &text) {
    QList<std::pair<QString, QString>> items;
    for (const QString &token : text.split(' ', Qt::SkipEmptyParts)) {
        const QString group = token.section(':', 0, 0);
        for (const QString &part : token.section(':', 1).split(',')) {
            const int first = part.section('-', 0, 0).toInt();
            const int last = part.contains('-') ? part.section('-', 1).toInt() : first;
            for (int item = first; item <= last; ++item)
                items.append({group, QString::number(item)});
        }
    }
    return items;
}

QStringList readsOf(const QString &text) {
    QStringList lines;
    for (const auto &[group, item] : itemsOf(text))
        lines += readLines(group, {item});
    return lines;
}

const QStringList kSelect =
    writeLines("00", "01", "F") + writeLines("00", "41", "00") + writeLines("17", "01", "1");
const QStringList kSelectAndTest = kSelect + readLines("00", {"40"});

// Everything the user sees and the key behind the mask.
QStringList snapshot(const FrmWireless &dialog) {
    QStringList state;
    for (const QLineEdit *box : dialog.findChildren<QLineEdit *>())
        state << box->objectName() + "=" + box->text();
    for (const QComboBox *list : dialog.findChildren<QComboBox *>())
        state << list->objectName() + "#" + QString::number(list->currentIndex());
    return state << "key=" + dialog.encryptionKey;
}

// Each setting of the form "control=3" (a list's position) or "control=text", as a person
// would choose or type it.
void setControls(FrmWireless &dialog, const QString &settings) {
    for (const QString &setting : settings.split(';', Qt::SkipEmptyParts)) {
        const QString control = setting.section('=', 0, 0);
        const QString value = setting.section('=', 1);
        if (QComboBox *list = dialog.list(control)) {
            list->setCurrentIndex(value.toInt());
            emit list->activated(value.toInt());
        } else if (QLineEdit *box = dialog.box(control)) {
            box->setText(value);
        }
    }
}

struct Opened {
    CommRack rack;
    FrmWireless dialog;
    Opened(const QString &model, const QString &version)
        : rack(modelOf(model).name, version), dialog(modelOf(model).model) {
        dialog.OpenView(modelOf(model).name);
    }
    QStringList messages() const { return rack.messages.texts(); }
};

} // namespace

class WirelessTest : public QObject {
    Q_OBJECT

private slots:
    // The card's version decides what the dialog offers, reads, writes and saves.
    void versionLevels_data() {
        vxtest::textTable({"model", "version", "levels", "offers", "reads", "fileLines"},
                          {{"ZQ below 2.07", "ZQ", "2.06", "0 0", "3 - -",
                            "00:56 17:30-45 00:62,63 17:46,47,76,48-50", "24"},
                           {"ZQ 2.07", "ZQ", "2.07", "0 1", "3 - -",
                            "00:56 17:30-45 00:62,63 17:46,47,76,48-50", "25"},
                           {"ZQ 3.00", "ZQ", "3.00", "1 2", "4 - x",
                            "00:56 17:30-45 00:62,63 17:46,47,76,48-50 17:26-29", "29"},
                           {"ZRV below 2.14", "ZRV", "2.13", "0 2", "3 - -",
                            "00:56,58,57,60-63 17:30-47,76,48-50", "29"},
                           {"ZRV 2.14", "ZRV", "2.14", "1 3", "3 x -",
                            "00:56,58,57,60-63 17:30-47,76,48-50 00:55", "34"},
                           {"ZRV 3.00", "ZRV", "3.00", "2 4", "4 x x",
                            "00:56,58,57,60-63 17:30-47,76,48-50 00:55 17:26-29", "34"},
                           {"ZRV1F", "ZRV1F", "1.00", "0 0", "4 x x",
                            "00:56,58,57,60-63 17:30-43,45-47,76,48-50 00:55 17:26-29", "33"}});
    }
    void versionLevels() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        QFETCH(QString, levels);
        QFETCH(QString, offers);
        QFETCH(QString, reads);
        QFETCH(QString, fileLines);
        Opened o(model, version);
        FrmWireless &d = o.dialog;
        QCOMPARE(QString("%1 %2").arg(d.firmwareFeatureLevel).arg(d.cardFileVersion), levels);
        QComboBox *mode = d.list("List_M_Mode");
        const QString shown = QString("%1 %2 %3")
                                  .arg(d.list("List_W_Scale")->count())
                                  .arg(!mode               ? "-"
                                       : mode->isEnabled() ? "x"
                                                           : "-")
                                  .arg(d.list("NDTTSU")->isEnabled() ? "x" : "-");
        QCOMPARE(shown, offers);
        // The "ZRV1F" reads no version before its Upload.
        const QStringList start = model == "ZRV1F" ? QStringList() : kSelectAndTest;
        QCOMPARE(o.rack.sent(), start + kSelectAndTest + readsOf(reads));
        QVERIFY(o.messages().isEmpty());

        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("card.set"));
        d.CmdSaveF->click();
        const QList<QByteArray> lines = vxtest::fileBytes(answers.path).split('\n');
        QCOMPARE(lines.size() - 1, fileLines.toInt());
        QCOMPARE(QString::fromLatin1(lines.first()), levels.section(' ', 1) + "\r");
        const QString extension = model == "ZQ" ? "zq" : model == "ZRV" ? "zrv" : "zrv1f";
        QCOMPARE(answers.requests.first().filter,
                 extension + " Files (*." + extension + ");;Text Files (*.txt);;All Files (*)");
        QVERIFY(answers.requests.first().save);
    }

    void versionReplies() {
        QCOMPARE(LevelsOfVersion(WirelessModel::ZRV, "").cardFileVersion, 0);
        QCOMPARE(LevelsOfVersion(WirelessModel::ZRV, "CNG").cardFileVersion, 2);
        QCOMPARE(LevelsOfVersion(WirelessModel::ZQ, "12.5").firmwareFeatureLevel, 0);
        QCOMPARE(LevelsOfVersion(WirelessModel::ZQ, "99999999999").firmwareFeatureLevel, 1);
    }

    // What the card said goes back to it unchanged, in the Download's order; lists by their
    // codes, the key and not its mask.
    void uploadThenDownloadWritesBack_data() {
        vxtest::textTable(
            {"model", "version", "writes"},
            {{"ZQ", "ZQ", "3.00", "00:56 17:30-45 00:62,63 17:46-50,26-29"},
             {"ZRV", "ZRV", "3.00", "00:56,58,57,60-63,55 17:30-50,26-29"},
             {"ZRV at 2.13", "ZRV", "2.13", "00:56,58,57,60-63 17:30-50"},
             {"ZRV1F", "ZRV1F", "1.00", "00:56,58,57,60-63,55 17:30-43,45-50,26-29"}});
    }
    void uploadThenDownloadWritesBack() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        QFETCH(QString, writes);
        Opened o(model, version);
        const SimCard stored = o.rack.card();
        QStringList expected = model == "ZRV1F" ? kSelect : kSelectAndTest;
        for (const auto &[group, item] : itemsOf(writes)) {
            const QString reply =
                stored.groups[group][QString("%1").arg(item.toInt(), 2, 10, QChar('0'))];
            // The card tells its mode by name and takes it by code.
            const QString data = item == "55" ? "1" : ValueAfterColon(reply.mid(1));
            expected += writeLines(group, item, data);
        }
        o.rack.clear();
        o.dialog.cmdDown->click();
        QCOMPARE(o.rack.sent(), expected);
        QVERIFY(o.messages().isEmpty());
        QCOMPARE(o.rack.card().groups["17"]["43"], QString("D0123456789ABCDEF0123456789ABCDEF"));
    }

    // How the controls' values go out: positions, codes, trimmed numbers, texts as they stand.
    void valuesOnTheWire_data() {
        vxtest::textTable(
            {"model", "settings", "written"},
            {{"write port RS-485", "ZRV", "List_M_WEPort=0", "G00 I61 D1"},
             {"write port by air", "ZRV", "List_M_WEPort=1", "G00 I61 D3"},
             {"ZRV1F RS-485", "ZRV1F", "List_M_WEPort=0", "G00 I61 D5"},
             {"ZRV1F by air", "ZRV1F", "List_M_WEPort=1", "G00 I61 D9"},
             {"relay forces RTU and air", "ZRV", "List_M_DataMode=1;List_M_Mode=1",
              "G00 I58 D0 G00 I57 D2 G00 I60 D0 G00 I61 D3 G00 I62 D30 G00 I63 D100 G00 I55 D2"},
             {"power is position plus 1", "ZQ", "List_W_Level=0", "G17 I45 D1"},
             {"retries are position plus 1", "ZRV", "NDTTSU=0", "G17 I29 D1"},
             {"moving devices", "ZRV1F", "List_W_Scale=3", "G17 I46 D3"},
             {"numbers trimmed", "ZRV", "modTimer= 45 ;wirChNo(9)=7 ;wirTimer_Send= 100",
              "G00 I62 D45"},
             {"channel trimmed", "ZRV", "wirChNo(9)= 7", "G17 I40 D7"},
             {"name as it stands", "ZQ", "wirNetWork= A.B ", "G17 I42 D A.B "},
             {"empty name", "ZQ", "wirNetWork=", "G17 I42 D G17"}});
    }
    void valuesOnTheWire() {
        QFETCH(QString, model);
        QFETCH(QString, settings);
        QFETCH(QString, written);
        Opened o(model, model == "ZRV1F" ? "1.00" : "3.00");
        setControls(o.dialog, settings);
        o.rack.clear();
        o.dialog.cmdDown->click();
        QVERIFY2((o.rack.wire() + " ").contains(written + " "), qPrintable(o.rack.wire()));
        QVERIFY(o.messages().isEmpty());
    }

    // Each field is checked just before it is written: a bad one stops the Download there,
    // after what went before it.
    void checksStopTheDownload_data() {
        vxtest::textTable(
            {"model", "settings", "stopsAt", "message"},
            {{"address 248", "ZRV", "modAdd=248", "00:56", "Please enter number 1 - 247"},
             {"address empty", "ZQ", "modAdd=", "00:56", "Please enter number 1 - 247"},
             {"filter time 9", "ZRV", "modTimer=9", "00:62",
              "Please enter number 10 - 600 (100msec)"},
             {"filter time off and empty", "ZRV", "List_W_flag=0;modTimer=", "00:62",
              "Please enter number 10 - 600 (100msec)"},
             {"timeout 32768", "ZQ", "wirTimer=32768", "00:63", "Please enter number 0 - 32767"},
             {"PAN ID FFFF", "ZRV", "wirPANID=FFFF", "17:30", "Please enter number 0000 - FFFE"},
             {"PAN ID of 3 digits", "ZRV", "wirPANID=1A2", "17:30",
              "Please enter number 0000 - FFFE"},
             {"channel 29", "ZRV", "wirChNo(4)=29", "17:35", "Please enter number 0 - 28"},
             {"ZRV1F channel 44", "ZRV1F", "wirChNo(4)=44", "17:35", "Please enter number 0 - 43"},
             {"ZRV1F channel 43", "ZRV1F", "wirChNo(4)=43", "", ""},
             {"short address FFFE", "ZQ", "wirShortAddress=FFFE", "17:41",
              "Please enter number 0000 - FFFD"},
             {"destination off and empty", "ZRV", "FixNetworkFlag=0;ShortAddress2=", "17:49",
              "Please enter number 0000 - FFFD"},
             {"name of 17", "ZRV", "wirNetWork=ABCDEFGHIJKLMNOPQ", "17:42",
              "Please enter less than 16 characters"},
             {"name of 16", "ZRV", "wirNetWork=ABCDEFGHIJKLMNOP", "", ""},
             {"duty time 9", "ZQ", "wirTimer_Send=9", "17:44", "Please enter number 10 - 3600"},
             {"a list left empty", "ZRV", "List_W_Level=-1", "17:45",
              "Please select Transmitter power output"}});
    }
    void checksStopTheDownload() {
        QFETCH(QString, model);
        QFETCH(QString, settings);
        QFETCH(QString, stopsAt);
        QFETCH(QString, message);
        Opened o(model, model == "ZRV1F" ? "1.00" : "3.00");
        o.rack.clear();
        o.dialog.cmdDown->click();
        const QStringList whole = o.rack.sent();
        setControls(o.dialog, settings);
        o.rack.clear();
        o.dialog.cmdDown->click();
        if (message.isEmpty()) {
            QVERIFY(o.messages().isEmpty());
            QCOMPARE(o.rack.sent().size(), whole.size());
            return;
        }
        QCOMPARE(o.messages(), QStringList({message, "Downloading incomplete"}));
        QCOMPARE(o.rack.messages.messages[0].icon, People::Icon::Information);
        QCOMPARE(o.rack.messages.messages[1].icon, People::Icon::Stop);
        const auto [group, item] = itemsOf(stopsAt).first();
        qsizetype at = 0;
        while (at + 1 < whole.size() && !(whole[at] == "G" + group && whole[at + 1] == "I" + item))
            ++at;
        QCOMPARE(o.rack.sent(), whole.mid(0, at));
        QVERIFY(o.dialog.cmdDown->isEnabled() && o.dialog.CmdSaveF->isEnabled());
        QVERIFY(IsConnected);
    }

    void noChannelNoExchange() {
        Opened o("ZRV", "3.00");
        setControls(o.dialog, "wirChNo(0)=0;wirChNo(1)=");
        o.rack.clear();
        o.dialog.cmdDown->click();
        QCOMPARE(o.messages(), QStringList({"Please enter channel No.", "Downloading incomplete"}));
        QVERIFY(o.rack.sent().isEmpty());
    }

    // A card that falls silent: the Upload keeps what it read, the Download stops at the
    // setting that got no answer after its ten retries; the session stays.
    void silentCard() {
        Opened o("ZRV", "3.00");
        o.dialog.box("wirNetWork")->clear();
        o.rack.sim.rack.addFault({SimFault::NoReply, "I47", -1, 0});
        o.dialog.cmdUp->click();
        QCOMPARE(o.messages(), QStringList({"Uploading incomplete"}));
        QCOMPARE(o.rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(o.dialog.box("wirNetWork")->text(), QString("PLANT-A"));
        QCOMPARE(o.rack.sent().last(), QString("I47"));

        o.rack.sim.rack.clearFaults();
        o.rack.sim.rack.addFault({SimFault::NoReply, "I42", -1, 0});
        o.rack.clear();
        o.rack.messages.messages.clear();
        o.dialog.cmdDown->click();
        QCOMPARE(o.messages(), QStringList({"Downloading incomplete"}));
        QCOMPARE(o.rack.sent().count("I42"), 11);
        QCOMPARE(o.rack.sent().last(), QString("I42"));
        QVERIFY(IsConnected && o.dialog.cmdUp->isEnabled());
    }

    // What a list decides for the others, as the user chooses: "state" is each control's
    // position (lists) and + for enabled, - for disabled.
    void dependentEnabling_data() {
        vxtest::textTable(
            {"settings", "state"},
            {{"relay", "List_M_DataMode=1;List_M_WEPort=0;List_M_Mode=1",
              "List_M_DataMode=0- List_M_WEPort=1-"},
             {"slave again keeps the values", "List_M_Mode=1;List_M_Mode=0",
              "List_M_DataMode=0+ List_M_WEPort=1+"},
             {"moving devices", "NetworkJointMode=1;List_W_Scale=3",
              "movementMode=0+ NetworkJointMode=0-"},
             {"back to a size", "List_W_Scale=3;movementMode=1;NetworkJointMode=1;List_W_Scale=1",
              "movementMode=0- NetworkJointMode=1+"},
             {"no packet filter", "List_W_flag=0", "modTimer=30- List_W_flag=0+"},
             {"fixed route", "FixNetworkFlag=1", "ShortAddress2=0000+ SetDetour=0+"},
             {"no fixed route", "FixNetworkFlag=1;FixNetworkFlag=0",
              "ShortAddress2=0000- SetDetour=0-"}});
    }
    void dependentEnabling() {
        QFETCH(QString, settings);
        QFETCH(QString, state);
        Opened o("ZRV", "3.00");
        setControls(o.dialog, settings);
        QStringList shown;
        for (const QString &expected : state.split(' ')) {
            const QString control = expected.section('=', 0, 0);
            QWidget *widget = o.dialog.list(control);
            const QString value = o.dialog.list(control)
                                      ? QString::number(o.dialog.list(control)->currentIndex())
                                      : o.dialog.box(control)->text();
            if (!widget) widget = o.dialog.box(control);
            shown << control + "=" + value + (widget->isEnabled() ? "+" : "-");
        }
        QCOMPARE(shown.join(' '), state);
    }

    // The key shows only while it is edited; leaving takes 32 characters and nothing else, and
    // the mask never reaches the card or the file.
    void keyHandling() {
        QCOMPARE(WirelessFile::ScrambleKey(QString(32, '0')), WirelessFile::kScrambleKey);
        QCOMPARE(WirelessFile::UnscrambleKey(
                     WirelessFile::ScrambleKey("FEDCBA9876543210FEDCBA9876543210")),
                 QString("FEDCBA9876543210FEDCBA9876543210"));
        QVERIFY(WirelessFile::ScrambleKey("0123").isEmpty());

        Opened o("ZRV", "3.00");
        FrmWireless &d = o.dialog;
        QLineEdit *key = d.box("wirPassword");
        QCOMPARE(key->text(), FrmWireless::kMask);
        QCOMPARE(d.encryptionKey, QString("0123456789ABCDEF0123456789ABCDEF"));
        d.show();
        QVERIFY(QTest::qWaitForWindowActive(&d));
        key->setFocus();
        QTRY_COMPARE(key->text(), d.encryptionKey);
        key->clear();
        QTest::keyClicks(key, "a1B2-c3D4");
        QCOMPARE(key->text(), QString("1B23D4"));
        d.box("wirNetWork")->setFocus();
        QCOMPARE(o.messages(), QStringList({"Please enter 32 characters(0-F)"}));
        QTRY_VERIFY(key->hasFocus());
        QCOMPARE(key->text(), QString("1B23D4"));
        key->setText("ABCDEF0123456789ABCDEF0123456789");
        d.box("wirNetWork")->setFocus();
        QTRY_COMPARE(key->text(), FrmWireless::kMask);
        QCOMPARE(d.encryptionKey, QString("ABCDEF0123456789ABCDEF0123456789"));

        o.rack.clear();
        d.cmdDown_Click();
        QVERIFY(o.rack.wire().contains("G17 I43 DABCDEF0123456789ABCDEF0123456789 G17 I44"));
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("k.zrv"));
        d.CmdSaveF_Click();
        const QList<QByteArray> lines = vxtest::fileBytes(answers.path).split('\n');
        QCOMPARE(lines.at(21),
                 "\"" + WirelessFile::ScrambleKey(d.encryptionKey).toLatin1() + "\"\r");
        // The card's own key comes back with an Upload.
        d.cmdUp_Click();
        QCOMPARE(d.encryptionKey, QString("ABCDEF0123456789ABCDEF0123456789"));
        d.hide();
    }

    // A file of each kind holds what the controls showed and gives it back; the ".zrv" exactly.
    void settingsFilesRoundTrip_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("version");
        QTest::newRow("ZRV") << "ZRV"
                             << "3.00";
        QTest::newRow("ZRV1F") << "ZRV1F"
                               << "1.00";
        QTest::newRow("ZQ") << "ZQ"
                            << "3.00";
    }
    void settingsFilesRoundTrip() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        Opened o(model, version);
        FrmWireless &d = o.dialog;
        setControls(d, "List_M_Mode=1;List_W_Scale=3;wirNetWork=a b@c;modTimer=077");
        const QStringList before = snapshot(d);
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("settings"));
        d.CmdSaveF->click();
        if (model == "ZRV") {
            const QString expected =
                "4\r\n\"1\"\r\n\"RTU\"\r\n\"9600bps\"\r\n\"None\"\r\n\"Wireless\"\r\n\"077\"\r\n"
                "\"100\"\r\n\"1A2B\"\r\n\"11\"\r\n\"15\"\r\n" +
                QString("\"0\"\r\n").repeated(8) + "\"0001\"\r\n\"a b@c\"\r\n\"" +
                WirelessFile::ScrambleKey("0123456789ABCDEF0123456789ABCDEF") +
                "\"\r\n\"60\"\r\n\"   1mW\"\r\n\"Fixed + Low speed moving\"\r\n\"Enable\"\r\n"
                "\"Disable\"\r\n\"0000\"\r\n\"Disable\"\r\n\"RELAY\"\r\n\"Disable\"\r\n"
                "\"Standard\"\r\n\"V3 compatible mode\"\r\n\"3\"\r\n";
            QCOMPARE(QString::fromLatin1(vxtest::fileBytes(answers.path)), expected);
        }
        d.OpenView(modelOf(model).name);
        setControls(d, "modAdd=9;List_W_Level=0;wirChNo(0)=1");
        QVERIFY(snapshot(d) != before);
        d.CmdReadF->click();
        QCOMPARE(snapshot(d), before);
        QCOMPARE(answers.requests.size(), 2);
        QVERIFY(!answers.requests.last().save);
        QVERIFY(o.messages().isEmpty());
    }

    // A file that is broken, cut short or of another kind is refused with its reason, and no
    // field changes.
    void brokenFilesChangeNothing_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QByteArray good = "4\r\n";
        for (int line = 2; line <= 34; ++line)
            good += line == 22
                        ? "\"" + WirelessFile::ScrambleKey(QString(32, '1')).toLatin1() + "\"\r\n"
                        : QByteArray("\"\"\r\n");
        const QList<QByteArray> lines = good.split('\n');
        auto without = [&](int line) {
            QList<QByteArray> kept = lines;
            kept.removeAt(line - 1);
            return kept.join('\n');
        };
        auto replaced = [&](int line, const QByteArray &text) {
            QList<QByteArray> kept = lines;
            kept[line - 1] = text + "\r";
            return kept.join('\n');
        };
        QTest::newRow("empty") << QByteArray() << "line 1 is missing";
        QTest::newRow("no version") << replaced(1, "four") << "line 1 holds no file version";
        QTest::newRow("cut short") << without(34) << "line 34 is missing";
        QTest::newRow("a line too many") << good + "\"\"\r\n"
                                         << "line 35 goes on past";
        QTest::newRow("bare value") << replaced(5, "9600bps") << "line 5 (Parity) is not a text";
        QTest::newRow("quote inside") << replaced(21, "\"a\"b\"") << "line 21 (Network name)";
        QTest::newRow("short key")
            << replaced(22, "\"123\"") << "line 22 (Encryption key) holds no key";
        QTest::newRow("not an entry") << replaced(4, "\"9600\"") << "\"Baud rate\" is \"9600\"";
        QByteArray zq = "2\r\n";
        for (int line = 2; line <= 29; ++line)
            zq += line == 16
                      ? "\"" + WirelessFile::ScrambleKey(QString(32, '1')).toLatin1() + "\"\r\n"
                      : QByteArray("\"1A2B\"\r\n");
        QTest::newRow("a zq file") << zq << "line 22 (Encryption key) holds no key";
        QTest::newRow("binary") << QByteArray("4\r\n\x01\x00\x02", 6) << "binary data";
    }
    void brokenFilesChangeNothing() {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        Opened o("ZRV", "3.00");
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("broken.zrv"));
        QVERIFY(vxtest::putFile(answers.path, content));
        const QStringList before = snapshot(o.dialog);
        o.dialog.CmdReadF->click();
        QCOMPARE(snapshot(o.dialog), before);
        QCOMPARE(o.messages().size(), 1);
        QVERIFY2(o.messages().first().contains(reason), qPrintable(o.messages().first()));
        QCOMPARE(o.rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(o.dialog.CmdReadF->isEnabled());
    }

    // A full disk midway leaves the old file as it was, and says so.
    void failedSaveKeepsTheOldFile() {
        Opened o("ZRV1F", "1.00");
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("keep.zrv1f"));
        QVERIFY(vxtest::putFile(answers.path, "old contents\r\n"));
        vxtest::failDiskAtWrite(5);
        o.dialog.CmdSaveF->click();
        QCOMPARE(vxtest::fileBytes(answers.path), QByteArray("old contents\r\n"));
        QCOMPARE(o.messages().size(), 1);
        QVERIFY(o.messages().first().startsWith(QDir::toNativeSeparators(answers.path)));
        QVERIFY(o.dialog.CmdSaveF->isEnabled());
    }

    // A "ZQ1" refuses a file newer than its own version; a "ZRV" shows a newer file's extra
    // lines, but sends them only at the level that has them.
    void newerFiles() {
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("new"));
        {
            Opened newer("ZQ", "3.00");
            newer.dialog.CmdSaveF->click();
            Opened older("ZQ", "2.07");
            const QStringList before = snapshot(older.dialog);
            older.dialog.CmdReadF->click();
            QCOMPARE(older.messages(), QStringList({"read file incomplete"}));
            QCOMPARE(older.rack.messages.messages[0].title, QString("read file"));
            QCOMPARE(snapshot(older.dialog), before);
        }
        Opened newer("ZRV", "3.00");
        setControls(newer.dialog, "NDTTSU=0");
        newer.dialog.CmdSaveF->click();
        Opened older("ZRV", "2.14");
        older.dialog.CmdReadF->click();
        QVERIFY(older.messages().isEmpty());
        QCOMPARE(older.dialog.list("NDTTSU")->currentIndex(), 0);
        QVERIFY(!older.dialog.list("NDTTSU")->isEnabled());
        older.rack.clear();
        older.dialog.cmdDown->click();
        QVERIFY(!older.rack.sent().contains("I29"));
        QVERIFY(older.rack.sent().contains("I55"));
    }

    // A list entry with the "･" of Japanese Windows (one byte, A5, in its code page): a file from
    // such a PC reads as it does there and is saved back byte for byte in its own encoding.
    void filesFromWindowsPcs_data() {
        QTest::addColumn<QByteArray>("dot");   // how the file spells the dot
        QTest::addColumn<QByteArray>("start"); // what comes before the first line
        QTest::newRow("CP932") << QByteArray("\xA5") << QByteArray();
        QTest::newRow("UTF-8") << QByteArray("\xEF\xBD\xA5") << QByteArray();
        QTest::newRow("UTF-8 with a mark")
            << QByteArray("\xEF\xBD\xA5") << QByteArray("\xEF\xBB\xBF");
    }
    void filesFromWindowsPcs() {
        if (!TextFile::cp932Available()) QSKIP("Qt here has no CP932 converter");
        QFETCH(QByteArray, dot);
        QFETCH(QByteArray, start);
        Opened o("ZRV", "3.00");
        QTemporaryDir dir;
        FileAnswers answers(dir.filePath("made here.zrv"));
        setControls(o.dialog, "NSAQuality=2");
        o.dialog.CmdSaveF->click();
        const QByteArray madeHere = vxtest::fileBytes(answers.path);
        QVERIFY(madeHere.contains("\"Changing frequency\xEF\xBD\xA5"
                                  "delaytime large\"\r\n"));

        answers.path = dir.filePath("from the PC.zrv");
        const QByteArray fromPc = start + QByteArray(madeHere).replace("\xEF\xBD\xA5", dot);
        QVERIFY(vxtest::putFile(answers.path, fromPc));
        setControls(o.dialog, "NSAQuality=0");
        o.dialog.CmdReadF->click();
        QCOMPARE(o.dialog.list("NSAQuality")->currentIndex(), 2);
        o.dialog.CmdSaveF->click();
        QCOMPARE(vxtest::fileBytes(answers.path), fromPc);
        QVERIFY(o.messages().isEmpty());
    }
};

VX_TEST(WirelessTest)
#include "tst_wireless.moc"
