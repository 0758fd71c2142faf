#include "support/testsupport.h"

#include "cardprofiles.h"

#include <QTest>

namespace {

// The reply of the card in slot 1 to a write, through the rack's own protocol core.
QString write(SimRack &rack, const QString &group, const QString &item, const QString &data) {
    rack.answer("G00");
    rack.answer("I41");
    rack.answer("D1");
    rack.answer("G" + group);
    rack.answer("I" + item);
    return rack.answer("D" + data);
}

} // namespace

// The simulated multi-power card serves what its register map has, and refuses the rest.
class MultiPowerCardTest : public QObject {
    Q_OBJECT

private slots:
    void bindingsTheCardTakes_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("binding");
        QTest::addColumn<bool>("taken");
        const struct {
            const char *tag, *model, *binding;
            bool taken;
        } rows[] = {
            {"free", "XDU41B01", "0;0;0;0", true},
            {"two words", "XDU41B01", "40003;2;1;3", true},
            {"second system", "XDU42B01", "40003;2;2;0", true},
            {"second system it has not", "XDU41B01", "40003;2;2;0", false},
            {"inside a two-word register", "XDU41B01", "40004;1;1;0", false},
            {"between the areas", "XDU41B01", "40017;2;1;0", false},
            {"harmonic", "XDU41B01", "42142;1;1;0", true},
            {"harmonic of two words", "XDU41B01", "41538;2;1;0", false},
            {"harmonic order 32", "XDU41B01", "41567;1;1;0", false},
            {"scale 4", "XDU41B01", "40003;2;1;4", false},
            {"three fields", "XDU41B01", "40003;2;1", false},
        };
        for (const auto &r : rows)
            QTest::newRow(r.tag) << QString(r.model) << QString(r.binding) << r.taken;
    }
    void bindingsTheCardTakes() {
        QFETCH(QString, model);
        QFETCH(QString, binding);
        QFETCH(bool, taken);
        SimRack rack;
        rack.slot(1).model = model;
        InstallProfile(rack.slot(1));
        rack.refreshDirectory();
        const QString before = rack.slot(1).groups["02"]["10"];
        QCOMPARE(write(rack, "02", "10", binding), taken ? "D" + binding : QString("CNG"));
        QCOMPARE(rack.slot(1).groups["02"]["10"], taken ? "D" + binding : before);
    }

    // The words follow the bindings once the card takes them over, low word first.
    void liveWordsFollowTheBindings() {
        SimRack rack;
        rack.slot(1).model = "XDU41B01";
        InstallProfile(rack.slot(1));
        rack.refreshDirectory();
        rack.setTime(0);
        write(rack, "02", "10", "40129;2;1;0"); // energy, from 1234560 a tenth of a kWh
        write(rack, "02", "11", "0;0;0;0");
        write(rack, "02", "09", "1");
        rack.answer("G01");
        QCOMPARE(rack.answer("I10"), QString("DD680")); // 1234560 = 0x0012D680
        QCOMPARE(rack.answer("I11"), QString("D0012"));
        QCOMPARE(rack.answer("I12"), QString("D0000"));
        write(rack, "03", "25", "1"); // the sum restarts
        rack.answer("G01");
        QCOMPARE(rack.answer("I10"), QString("D0000"));
    }
};

VX_TEST(MultiPowerCardTest)
#include "tst_multipower.moc"
