#include "support/testsupport.h"

#include "rack/limits.h"
#include "rack/textroutines.h"

#include <QTest>

#include <limits>

// The four scale and adjust limits at and just beyond their edges, reached from the texts a user
// types, as the views test them.
class LimitsTest : public QObject {
    Q_OBJECT

    static Limit limitNamed(const QString &name) {
        if (name == "zero scale") return ZeroScaleLimit;
        if (name == "full scale") return FullScaleLimit;
        if (name == "zero adjust") return ZeroAdjustLimit;
        return FullAdjustLimit;
    }

private slots:
    void edges_data() {
        QTest::addColumn<QString>("limit");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("inRange");
        for (const char *scale : {"zero scale", "full scale"}) {
            const QByteArray n = scale;
            QTest::newRow(n + " top") << QString(scale) << "32000" << true;
            QTest::newRow(n + " bottom") << QString(scale) << "-32000" << true;
            QTest::newRow(n + " above") << QString(scale) << "32000.5" << false;
            QTest::newRow(n + " below") << QString(scale) << "-32000.5" << false;
            QTest::newRow(n + " zero") << QString(scale) << "0" << true;
            QTest::newRow(n + " lone minus") << QString(scale) << "-" << true;
        }
        QTest::newRow("zero adjust top") << QString("zero adjust") << "320.0" << true;
        QTest::newRow("zero adjust bottom") << QString("zero adjust") << "-320" << true;
        QTest::newRow("zero adjust above") << QString("zero adjust") << "320.01" << false;
        QTest::newRow("zero adjust below") << QString("zero adjust") << "-320.01" << false;
        QTest::newRow("zero adjust scale value") << QString("zero adjust") << "32000" << false;
        QTest::newRow("full adjust top") << QString("full adjust") << "3.2" << true;
        QTest::newRow("full adjust bottom") << QString("full adjust") << "-3.2" << true;
        QTest::newRow("full adjust trailing zeros") << QString("full adjust") << "3.20000" << true;
        QTest::newRow("full adjust above") << QString("full adjust") << "3.2000001" << false;
        QTest::newRow("full adjust below") << QString("full adjust") << "-3.21" << false;
        QTest::newRow("full adjust leading dot") << QString("full adjust") << "-.5" << true;
        QTest::newRow("full adjust zero adjust value") << QString("full adjust") << "320" << false;
        QTest::newRow("malformed text") << QString("zero scale") << "1.2.3" << false;
    }
    void edges() {
        QFETCH(QString, limit);
        QFETCH(QString, text);
        QFETCH(bool, inRange);
        QCOMPARE(InRange(RealTextValue(text), limitNamed(limit)), inRange);
    }

    void nonNumbersAreNeverInRange() {
        for (const Limit &limit :
             {ZeroScaleLimit, FullScaleLimit, ZeroAdjustLimit, FullAdjustLimit}) {
            QVERIFY(!InRange(std::numeric_limits<double>::quiet_NaN(), limit));
            QVERIFY(!InRange(std::numeric_limits<double>::infinity(), limit));
            QVERIFY(!InRange(-std::numeric_limits<double>::infinity(), limit));
        }
    }
};

VX_TEST(LimitsTest)
#include "tst_limits.moc"
