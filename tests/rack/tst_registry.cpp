#include "support/testsupport.h"

#include "app/frmvxcfg.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "ui/viewregistry.h"
#include "ui/widgets.h"

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

    // What the footprint benchmark walks: every form with a factory (the window's own overview
    // among them), once, sorted; a name without a factory is left out.
    void registeredNames() {
        QStringList expected = RegisteredViewNames();
        QVERIFY(expected.contains("frmOverview"));
        registerFakes("frmQF8");
        RegisterView("frmQF8", {});
        for (const ModelRow &row : ModelRows())
            if (row.form != "frmQF8") expected << row.form;
        expected.removeDuplicates();
        expected.sort();
        QCOMPARE(RegisteredViewNames(), expected);
    }

    // Rows whose order or shared prefixes a slip would break, and names no row knows (no form).
    void dispatch_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("form");
        const QList<std::pair<const char *, const char *>> rows = {
            {"HLINK1", "frmHLINKdata"}, {"H2A", "frmHx"},       {"QE4B", "frmQA4"},
            {"QC8", "frmQA8"},          {"QK4", "frmQF4"},      {"QJ8", "frmQF8"},
            {"QF1", "frmQF16"},         {"QG16", "frmQF16"},    {"QN4", "frmQL4"},
            {"QR4", "frmQP4"},          {"QP8A", "frmQP8"},     {"QU8", "frmQT8"},
            {"QT16", "frmQT16"},        {"QU1Z", "frmQT16"},    {"QU32", "frmQT32"},
            {"QT64", "frmQT64"},        {"QTC16", "frmQTC16"},  {"QW32", "frmQV32"},
            {"XA1", "frmQZ16"},         {"QZ16", "frmQZ16"},    {"QZ4B", "frmQZ4A"},
            {"QZ4C", "frmQZ4"},         {"XB16", "frmXB16"},    {"XD4A", "frmXD40"},
            {"XD1B", "frmXD10"},        {"XDU12341", "frmXDU"}, {"QJS8", "frmQJS8"},
            {"QFR8", "frmQFR8"},        {"XHK2", "frmXHK2"},    {"NONE", "frmNONE"},
        };
        for (const auto &[name, form] : rows)
            QTest::newRow(name) << QString(name) << QString(form);
        for (const char *name : {"", "UNKNOWN", "qf4", "QF", "XD2", "XH1", "QZ", "NO", "ZZ9"})
            QTest::newRow(*name ? name : "empty") << QString(name) << QString();
    }
    void dispatch() {
        QFETCH(QString, name);
        QFETCH(QString, form);
        registerFakes();
        CardNo = 5;
        SelFormName = "Over";
        ShowView(Overview());
        OpenCardView(name);
        if (form.isEmpty()) {
            QVERIFY(openings().isEmpty());
            QVERIFY(Overview()->isVisible());
            QCOMPARE(SelFormName, QString("Over"));
            return;
        }
        QCOMPARE(openings(), QStringList({form + "=" + name}));
        QVERIFY(fake(form)->isVisible());
        QCOMPARE(fake(form)->parentWidget(), m_window->workArea());
        QCOMPARE(fake(form)->geometry(), QRect(0, 0, kViewWidth, kViewHeight));
        QVERIFY(!Overview()->isVisible());
        // The tag leads back to the same view, so that the next view can hide it.
        QCOMPARE(FormNameOfTag(SelFormName), form);
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

    void cardClass_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QColor>("statusColour");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QColor>("typeColour");
        // The empty slot words are written in the background's colour, so they do not show.
        const QColor black(Qt::black), untouched(Qt::darkGreen),
            hidden = QApplication::palette().color(QPalette::Window);
        const struct {
            const char *name, *status;
            QColor colour;
            const char *type;
            QColor typeColour;
        } rows[] = {
            {"QP4", "IN", kBlue, "QP4", kBlue},
            {"QC8", "IN", kBlue, "QC8", kBlue},
            {"QK4", "OUT", kRed, "QK4", kBlue},
            {"QJS8", "OUT", kRed, "QJS8", kBlue},
            {"XA1", "OUT", kRed, "XA1", kBlue},
            {"QTC16", "IN/OUT", black, "QTC16", kBlue},
            {"XB16", "IN/OUT", black, "XB16", kBlue},
            {"XB1", "before", untouched, "XB1", kBlue},
            {"H35", "IN/OUT", black, "H(5)", kBlue},
            {"XDU12343", "IN", kBlue, "XDU1234/D(3)", kBlue},
            {"ZZ9", "before", untouched, "ZZ9", kBlue},
            {"NONE", "before", untouched, "NONE", hidden},
            {"UNKNOWN", "before", untouched, "UNKNOWN", hidden},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.name) << QString(r.status) << r.colour
                                  << QString(r.type) << r.typeColour;
    }
    void cardClass() {
        QFETCH(QString, name);
        QFETCH(QString, status);
        QFETCH(QColor, statusColour);
        QFETCH(QString, type);
        QFETCH(QColor, typeColour);
        QLabel *statusCell = Overview()->lblCardStatus(9);
        QLabel *typeCell = Overview()->lblCardType(9);
        // A name of no class leaves the cell as it was.
        statusCell->setText("before");
        SetForeColor(statusCell, Qt::darkGreen);
        SetForeColor(typeCell, Qt::darkGreen);
        ShowCardClass(9, name);
        QCOMPARE(statusCell->text(), status);
        QCOMPARE(ForeColor(statusCell), statusColour);
        QCOMPARE(typeCell->text(), type);
        QCOMPARE(ForeColor(typeCell), typeColour);
        QCOMPARE(Overview()->lblCardStatus(8)->text(), QString());
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
            {"H123H", "H123H", 0},
            {"H123a", "H123a", 0},
            {"H5", "(5)", 0},
            {"XDU1231", "XDU1231", 0},
            {"XDU12341", "XDU1234/D(1)", 1},
            {"XDU-1A23", "XDU-1A2/D(3)", 3},
            {"XDU12344", "XDU12344", 0},
            {"XDU123431", "XDU123431", 0},
            // Other families keep their last character, digit or not.
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
};

VX_TEST(RegistryTest)
#include "tst_registry.moc"
