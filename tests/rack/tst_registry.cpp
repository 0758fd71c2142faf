#include "support/testsupport.h"

#include "app/frmvxcfg.h"
#include "app/widgets.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "views/common/viewregistry.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <memory>

namespace {

// Stands in for every card view: remembers how it was opened and does what the framework's
// opening routine does with the tag.
class FakeView : public QWidget, public OpenableView {
public:
    FakeView(QString form, QString tag) : m_tag(std::move(tag)) { setObjectName(form); }
    void OpenView(const QString &name) override {
        opened << name;
        SelFormName = m_tag;
        ShowView(this);
    }
    QStringList opened;

private:
    QString m_tag;
};

FakeView *fake(const QString &form) {
    return dynamic_cast<FakeView *>(LoadedView(form));
}

// Registers a fake for every form of the dispatch table but `except`.
void registerFakes(const QString &except = QString()) {
    for (const ModelRow &row : ModelRows()) {
        if (row.form == except) continue;
        const QString form = row.form, tag = row.tag;
        RegisterView(form, [form, tag] { return new FakeView(form, tag); });
    }
}

// The forms that have been opened, with the names they were opened with.
QStringList openings() {
    QStringList seen;
    for (const ModelRow &row : ModelRows())
        if (FakeView *v = fake(row.form); v && !v->opened.isEmpty())
            seen << row.form + "=" + v->opened.join(",");
    seen.removeDuplicates(); // frmQZ16 and others stand in more than one row
    return seen;
}

const QColor kBlue(0, 0, 192);
const QColor kRed(192, 0, 0);

} // namespace

// Model names to views, classes and display names.
class RegistryTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrmVxCfg> m_window;

private slots:
    void init() {
        ResetModuleData();
        ClearViewRegistry();
        m_window = std::make_unique<FrmVxCfg>();
        m_window->show();
    }
    void cleanup() {
        m_window.reset();
        ClearViewRegistry();
    }

    void dispatch_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("form");
        QTest::addColumn<QString>("tag");
        const QList<QStringList> rows = {
            {"HLINK1", "frmHLINKdata", "HLINK"},
            {"H2A", "frmHx", "Hx"},
            {"HLIN", "frmHx", "Hx"},
            {"QA4", "frmQA4", "QA4"},
            {"QE4B", "frmQA4", "QA4"},
            {"QC8", "frmQA8", "QA8"},
            {"QF4", "frmQF4", "QF4"},
            {"QK4", "frmQF4", "QF4"},
            {"QJ8", "frmQF8", "QF8"},
            {"QF1", "frmQF16", "QF16"},
            {"QG16", "frmQF16", "QF16"},
            {"QN4", "frmQL4", "QL4"},
            {"QL8", "frmQL8", "QL8"},
            {"QR4", "frmQP4", "QP4"},
            {"QP8A", "frmQP8", "QP8"},
            {"QS4", "frmQS4", "QS4"},
            {"QS8", "frmQS8", "QS8"},
            {"QT8", "frmQT8", "QT8"},
            {"QU8", "frmQT8", "QT8"},
            {"QT16", "frmQT16", "QT16"},
            {"QU1Z", "frmQT16", "QT16"},
            {"QU32", "frmQT32", "QT32"},
            {"QT64", "frmQT64", "QT64"},
            {"QTC16", "frmQTC16", "QTC16"},
            {"QW32", "frmQV32", "QV32"},
            {"QX2", "frmQX2", "QX2"},
            {"QY2", "frmQY2", "QY2"},
            {"QZ16", "frmQZ16", "QZ16"},
            {"XA1", "frmQZ16", "QZ16"},
            {"QZ2", "frmQZ2", "QZ2"},
            {"QZ4A", "frmQZ4A", "QZ4A"},
            {"QZ4B", "frmQZ4A", "QZ4A"},
            {"QZ4", "frmQZ4", "QZ4"},
            {"QZ4C", "frmQZ4", "QZ4"},
            {"QZ8", "frmQZ8", "QZ8"},
            {"XB16", "frmXB16", "XB16"},
            {"XC8", "frmXC8", "XC8"},
            {"XD4A", "frmXD40", "XD40"},
            {"XD4B", "frmXD40", "XD40"},
            {"XD1A", "frmXD10", "XD10"},
            {"XD1B", "frmXD10", "XD10"},
            {"XDU12341", "frmXDU", "XDU"},
            {"XE4", "frmXE4", "XE4"},
            {"XF2", "frmXF2", "XF2"},
            {"QJS8", "frmQJS8", "QJS"},
            {"QFR8", "frmQFR8", "QFR"},
            {"XG4", "frmXG4", "XG4"},
            {"XHK2", "frmXHK2", "XHK2"},
            {"NONE", "frmNONE", "NONE"},
        };
        for (const QStringList &r : rows)
            QTest::newRow(qPrintable(r[0])) << r[0] << r[1] << r[2];
    }
    void dispatch() {
        QFETCH(QString, name);
        QFETCH(QString, form);
        QFETCH(QString, tag);
        registerFakes();
        CardNo = 5;
        OpenCardView(name);
        QCOMPARE(openings(), QStringList({form + "=" + name}));
        QCOMPARE(SelFormName, tag);
        QVERIFY(fake(form)->isVisible());
        QCOMPARE(fake(form)->parentWidget(), m_window->workArea());
        QCOMPARE(fake(form)->geometry(), QRect(0, 0, kViewWidth, kViewHeight));
        QVERIFY(!Overview()->isVisible());
        // The tag leads back to the same view, so that the next view can hide it.
        QCOMPARE(FormNameOfTag(tag), form);
    }

    void namesNoRowKnows_data() {
        QTest::addColumn<QString>("name");
        for (const char *name : {"", "UNKNOWN", "qf4", "QF", "Q", "XD2", "XH1", "QZ", "NO", "ZZ9"})
            QTest::newRow(*name ? name : "empty") << QString(name);
    }
    void namesNoRowKnows() {
        QFETCH(QString, name);
        registerFakes();
        SelFormName = "Over";
        ShowView(Overview());
        OpenCardView(name);
        QVERIFY(openings().isEmpty());
        QVERIFY(Overview()->isVisible());
        QCOMPARE(SelFormName, QString("Over"));
    }

    void viewNotThereOpensNothing() {
        registerFakes("frmQF4");
        OpenCardView("QF4");
        QVERIFY(openings().isEmpty());
        QVERIFY(!LoadedView("frmQF4"));
        // Made once, on first use, and kept.
        OpenCardView("QF8");
        OpenCardView("QJ8");
        QCOMPARE(openings(), QStringList({"frmQF8=QF8,QJ8"}));
    }

    void oneViewOnShow() {
        registerFakes();
        SelFormName = "Over";
        ShowView(Overview());
        QCOMPARE(PrevFormName, QString("Over"));
        for (const char *name : {"QF4", "XG4", "QZ4B", "QZ4", "XHK2", "H1", "HLINK1", "QF4"}) {
            OpenCardView(name);
            const ModelRow *row = FindModelRow(name);
            QCOMPARE(PrevFormName, row->tag);
            int shown = 0;
            for (QWidget *child :
                 m_window->workArea()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
                shown += child->isVisible() ? 1 : 0;
            QCOMPARE(shown, 1);
            QVERIFY(fake(row->form)->isVisible());
        }
        SelFormName = "Over";
        ShowView(Overview());
        QVERIFY(Overview()->isVisible());
        QVERIFY(!fake("frmQF4")->isVisible());
        QCOMPARE(FormNameOfTag("Over"), QString("frmOverview"));
    }

    void cardClass_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QColor>("statusColour");
        QTest::addColumn<QString>("type");
        const QColor black(Qt::black), untouched(Qt::darkGreen);
        const struct {
            const char *name, *status;
            QColor colour;
            const char *type;
        } rows[] = {
            {"QP4", "IN", kBlue, "QP4"},
            {"QT16", "IN", kBlue, "QT16"},
            {"QC8", "IN", kBlue, "QC8"},
            {"QK4", "OUT", kRed, "QK4"},
            {"QJS8", "OUT", kRed, "QJS8"},
            {"QU16", "OUT", kRed, "QU16"},
            {"XA1", "OUT", kRed, "XA1"},
            {"QTC16", "IN/OUT", black, "QTC16"},
            {"XB16", "IN/OUT", black, "XB16"},
            {"XB1", "before", untouched, "XB1"},
            {"XHK2", "IN/OUT", black, "XHK2"},
            {"H35", "IN/OUT", black, "H(5)"},
            {"XDU12343", "IN", kBlue, "XDU1234/D(3)"},
            {"ZZ9", "before", untouched, "ZZ9"},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.name) << QString(r.status) << r.colour
                                  << QString(r.type);
    }
    void cardClass() {
        QFETCH(QString, name);
        QFETCH(QString, status);
        QFETCH(QColor, statusColour);
        QFETCH(QString, type);
        QLabel *statusCell = Overview()->lblCardStatus(9);
        QLabel *typeCell = Overview()->lblCardType(9);
        // A name of no class leaves the cell as it was.
        statusCell->setText("before");
        SetForeColor(statusCell, Qt::darkGreen);
        ShowCardClass(9, name);
        QCOMPARE(statusCell->text(), status);
        QCOMPARE(ForeColor(statusCell), statusColour);
        QCOMPARE(typeCell->text(), type);
        QCOMPARE(ForeColor(typeCell), kBlue);
        QCOMPARE(Overview()->lblCardStatus(8)->text(), QString());
    }

    void emptySlotWordsDoNotShow() {
        const QColor background = QApplication::palette().color(QPalette::Window);
        for (const char *word : {"NONE", "UNKNOWN"}) {
            ShowCardClass(2, word);
            QCOMPARE(Overview()->lblCardType(2)->text(), QString(word));
            QCOMPARE(ForeColor(Overview()->lblCardType(2)), background);
            // A card in the slot again: its name shows.
            ShowCardClass(2, "QF4");
            QCOMPARE(ForeColor(Overview()->lblCardType(2)), kBlue);
        }
        ClearOverviewSlot(2);
        QCOMPARE(Overview()->lblCardType(2)->text(), QString());
        QCOMPARE(Overview()->lblCardStatus(2)->text(), QString());
    }

    void displayNames_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("page");
        const struct {
            const char *name, *shown;
            int page;
        } rows[] = {
            {"H1231", "H12(1)", 0},
            {"H123A", "H12(10)", 0},
            {"H123G", "H12(16)", 0},
            {"H1230", "H1230", 0},
            {"H123H", "H123H", 0},
            {"H123a", "H123a", 0},
            {"H", "H", 0},
            {"H5", "(5)", 0},
            {"XDU1231", "XDU1231", 0},
            {"XDU12341", "XDU1234/D(1)", 1},
            {"XDU-1A23", "XDU-1A2/D(3)", 3},
            {"XDU12344", "XDU12344", 0},
            {"XDU123431", "XDU123431", 0},
            // Other families keep their last character, digit or not.
            {"QF4A", "QF4A", 0},
            {"XD123452", "XD123452", 2},
            {"", "", 0},
        };
        for (const auto &r : rows)
            QTest::newRow(*r.name ? r.name : "empty")
                << QString(r.name) << QString(r.shown) << r.page;
    }
    void displayNames() {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        QFETCH(int, page);
        QCOMPARE(DisplayName(name), shown);
        QCOMPARE(MultiPowerPage(name), page);
        if (name.startsWith('H')) QCOMPARE(CardShowName(name), shown);
        if (name.startsWith("XDU")) QCOMPARE(MultiPowerShowName(name), shown);
    }

    void windowlessOpening() {
        // Without a main window a view still opens, on its own.
        m_window.reset();
        registerFakes();
        OpenCardView("QS8");
        QCOMPARE(openings(), QStringList({"frmQS8=QS8"}));
        QVERIFY(fake("frmQS8")->isVisible());
        delete fake("frmQS8");
    }
};

VX_TEST(RegistryTest)
#include "tst_registry.moc"
