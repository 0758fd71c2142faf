#include "app/desk.h"

#include "app/session.h"
#include "demorack.h"
#include "rack/cardtable.h"
#include "rack/overview.h"

#include <QDialog>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QTest>

using vxtest::choose;
using vxtest::Desk;
using vxtest::press;

namespace {

// The state a finished rack scan leaves: names in the table and the selector, every command on.
void finishScan(Desk &d, const QMap<int, QString> &names) {
    for (auto it = names.begin(); it != names.end(); ++it)
        CardTable(it.key()).CardName = it.value();
    d.window->FillCardSelector();
    CommandsOn();
    d.window->cmdSWcheck->setEnabled(true);
    d.window->mnuFilesOpen->setEnabled(true);
    d.window->mnuFilesSave->setEnabled(true);
}

bool overviewShown() {
    return Overview()->isVisible();
}

// A comm card dialog standing in for the real ones: records its start and is closed by the test.
class FakeDialog : public QDialog, public OpenableView {
public:
    QStringList started;
    void OpenView(const QString &name) override { started << name; }
};

const QStringList kSpecialDialogs = {"frmEther", "frmZB",   "frmZRV1F", "frmZRV",
                                     "frmZQ",    "frmZKFD", "frmHLINK", "frmComm"};

void registerFakeDialogs() {
    for (const QString &form : kSpecialDialogs)
        RegisterView(form, [] { return new FakeDialog; });
}

// The fake dialog that is up, or null.
QWidget *visibleFake() {
    for (const QString &form : kSpecialDialogs)
        if (QWidget *w = LoadedView(form); w && w->isVisible()) return w;
    return nullptr;
}

} // namespace

// The frame as a person meets it: its shape, the commands in each operating state, the card
// selector, the special settings button and the ways out.
class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void commandsThroughASession() {
        Desk d;
        QCOMPARE(MainWindow(), d.window.get());
        QCOMPARE(Overview()->parentWidget(), d.window->workArea());
        QVERIFY(overviewShown());
        QCOMPARE(d.commands(), QString("--x--xx---x-")); // start
        QVERIFY(d.connect(1));
        QCOMPARE(d.commands(), QString("xxxx-xx----x")); // connected, first time

        finishScan(d, {{3, "NONE"}, {4, "ZZ9"}, {5, "QF4"}});
        QVERIFY(vxtest::pickCard(*d.window, 3));
        QCOMPARE(d.commands(), QString("-----xx----x")); // card view
        QVERIFY(LoadedView("frmNONE")->isVisible());
        QVERIFY(!overviewShown());
        QCOMPARE(SelFormName, QString("NONE"));
        // A name no row knows leaves the screen as it is.
        QVERIFY(vxtest::pickCard(*d.window, 4));
        QCOMPARE(CardNo, 4);
        QVERIFY(LoadedView("frmNONE")->isVisible());
        QCOMPARE(d.commands(), QString("-----xx----x"));

        QVERIFY(press(d.window->cmdOverView));
        QCOMPARE(d.commands(), QString("xxxx-xx-xx-x")); // back: no DIP switch check
        QVERIFY(overviewShown());
        QVERIFY(!LoadedView("frmNONE")->isVisible());
        QCOMPARE(d.window->cboCardNo->currentIndex(), 0);
        QCOMPARE(CardNo, 0);

        QVERIFY(choose(d.window->mnuConnectDisconnect));
        QCOMPARE(d.commands(), QString("----------x-")); // link lost
        QVERIFY(!d.sim.line->isOpen());
        QVERIFY(d.connect(1));
        QCOMPARE(d.commands(), QString("xxxx-------x")); // selector stays off until a scan
        // The connect command emptied the overview's rows.
        QCOMPARE(Overview()->lblCardType(3)->text(), QString());
    }

    void selectorFocusAndLock() {
        Desk d;
        QVERIFY(d.connect(1));
        finishScan(d, {{3, "NONE"}});
        QComboBox *selector = d.window->cboCardNo;
        QFocusEvent in(QEvent::FocusIn, Qt::MouseFocusReason);
        QApplication::sendEvent(selector, &in);
        QVERIFY(CardSelFocus);
        // Opening its own list does not take the focus from it.
        QFocusEvent toList(QEvent::FocusOut, Qt::PopupFocusReason);
        QApplication::sendEvent(selector, &toList);
        QVERIFY(CardSelFocus);
        // Opening a card view takes the focus away, so that the view's cycle may run.
        QVERIFY(vxtest::pickCard(*d.window, 3));
        QVERIFY(!CardSelFocus);
        QVERIFY(selector->isEnabled());
        QApplication::sendEvent(selector, &in);
        QFocusEvent away(QEvent::FocusOut, Qt::TabFocusReason);
        QApplication::sendEvent(selector, &away);
        QVERIFY(!CardSelFocus);

        // While the lock is set a click is ignored.
        CardSelectLock = true;
        QVERIFY(vxtest::pickCard(*d.window, 0));
        QCOMPARE(CardNo, 3);
        QVERIFY(!overviewShown());
        CardSelectLock = false;
        QVERIFY(vxtest::pickCard(*d.window, 0));
        QCOMPARE(CardNo, 0);
        QVERIFY(overviewShown());
    }

    void overviewRefreshesTheClasses() {
        Desk d;
        QVERIFY(d.connect(1));
        finishScan(d, {{2, "QK4"}});
        QCOMPARE(Overview()->lblCardStatus(2)->text(), QString());
        // Entry 0 while already on the overview refreshes the classes.
        QVERIFY(vxtest::pickCard(*d.window, 0));
        QCOMPARE(Overview()->lblCardStatus(2)->text(), QString("OUT"));
        QCOMPARE(Overview()->lblCardType(2)->text(), QString("QK4"));
        // So does a file command, even a cancelled one.
        CardTable(2).CardName = "QP4";
        People::setFileHandler([](const People::FileRequest &) { return QString(); });
        QVERIFY(choose(d.window->mnuFilesOpen));
        People::setFileHandler({});
        QCOMPARE(Overview()->lblCardStatus(2)->text(), QString("IN"));
        QVERIFY(d.messages.messages.isEmpty());
    }

    // The comm card's name decides the caption of the special settings button and what a click
    // on it opens.
    void specialSetting_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption"); // empty: the panel is hidden
        QTest::addColumn<QString>("dialog");
        QTest::addColumn<bool>("ownStart");
        const struct {
            const char *name, *caption, *dialog;
            bool ownStart;
        } rows[] = {
            {"VX-ZT1", "Ethernet Setting", "frmEther", false},
            {"ABCZT9", "Ethernet Setting", "frmEther", false},
            {"VX-HR1", "Ethernet Setting", "frmEther", false},
            {"VX-ZTKL1", "", "", false}, // its tail begins with "ZT" too
            {"VX-ZB2A", "ZBx Setting", "frmZB", false},
            {"VX-ZB3", "", "", false},
            {"VX-ZRV1F", "ZRV Setting", "frmZRV1F", true},
            {"VX-ZRV2", "ZRV Setting", "frmZRV", true},
            {"VX-ZQ1", "ZQ1 Setting", "frmZQ", true},
            {"VX-ZKFD1", "ZKFD1 Setting", "frmZKFD", true},
            {"VX-ZKFD2", "", "", false},
            {"VX-HLINK3", "HLINK Setting", "frmHLINK", true},
            {"VX-zt1", "", "", false},
            {"", "", "", false},
        };
        for (const auto &r : rows)
            QTest::newRow(*r.name ? r.name : "empty")
                << QString(r.name) << QString(r.caption) << QString(r.dialog) << r.ownStart;
    }
    void specialSetting() {
        QFETCH(QString, name);
        QFETCH(QString, caption);
        QFETCH(QString, dialog);
        QFETCH(bool, ownStart);
        Desk d;
        registerFakeDialogs();
        // Start from a visible panel with another caption, so that both outcomes show.
        SetSpecialButton("VX-HLINK");
        QVERIFY(!d.window->fraCmd->isHidden());
        CommCardName = name;
        SetSpecialButton(name);
        QCOMPARE(d.window->fraCmd->isHidden(), caption.isEmpty());
        if (caption.isEmpty()) return;
        QCOMPARE(d.window->cmdSpecialSetting->text(), caption);

        bool connectOff = false, buttonOn = true;
        QString opened;
        auto armed = vxtest::whenVisible(visibleFake, [&](QWidget *w) {
            opened = w->objectName();
            connectOff = !d.window->mnuConnect->menuAction()->isEnabled();
            buttonOn = d.window->cmdSpecialSetting->isEnabled();
            static_cast<QDialog *>(w)->accept();
        });
        QVERIFY(press(d.window->cmdSpecialSetting));
        *armed = false;
        QCOMPARE(opened, dialog);
        QVERIFY(!d.window->fraCmd->isHidden());
        QVERIFY(d.window->mnuConnect->menuAction()->isEnabled());
        QVERIFY(connectOff);
        QCOMPARE(buttonOn, !ownStart);
        QCOMPARE(static_cast<FakeDialog *>(LoadedView(dialog))->started, QStringList({name}));
    }

    // Every view of the demo rack in the window as it opens: nothing in a card's header lies on
    // top of anything else or is squeezed below what its text needs.
    void everyHeaderFits() {
        Desk d;
        LoadDemoRack(d.sim.rack);
        QVERIFY(d.connect(1) && press(d.window->CmdUpload));
        int seen = 0;
        for (int slot = 1; slot <= kSlots; ++slot) {
            if (CardTable(slot).CardName == "NONE") continue;
            QVERIFY(vxtest::pickCard(*d.window, slot));
            auto *view = qobject_cast<CardView *>(LoadedView(FormNameOfTag(SelFormName)));
            QVERIFY(view);
            QCoreApplication::processEvents();
            QList<QWidget *> parts;
            for (QWidget *w : view->fraSetModel->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
                if (w->isVisibleTo(view)) parts << w;
            for (int i = 0; i < parts.size(); ++i) {
                const QString where = CardTable(slot).CardName + " " + parts[i]->objectName();
                QVERIFY2(parts[i]->width() >= parts[i]->minimumSizeHint().width(), qPrintable(where));
                for (int j = i + 1; j < parts.size(); ++j)
                    QVERIFY2(!parts[i]->geometry().intersects(parts[j]->geometry()),
                             qPrintable(where + " / " + parts[j]->objectName()));
            }
            ++seen;
        }
        QCOMPARE(seen, 16);
    }

    void exitAndCloseEndAtOnce() {
        {
            Desk d;
            QVERIFY(d.connect(1));
            QVERIFY(choose(d.window->mnuFilesEnd));
            QCOMPARE(d.ended, 1);
            QVERIFY(!d.sim.line->isOpen());
            QVERIFY(d.messages.messages.isEmpty());
        }
        {
            Desk d;
            QVERIFY(d.connect(1));
            d.sim.rack.clearTranscript();
            d.window->close();
            QCOMPARE(d.ended, 1);
            QVERIFY(!d.sim.line->isOpen());
            QVERIFY(d.sim.rack.commands().isEmpty());
        }
        {
            // Closed while a view's live read waits for the rack: the read ends without a word.
            vxtest::CardDesk d("QF8", 8);
            const int watch = Link::addTrafficObserver([&d](Link::Traffic kind, const QString &) {
                if (kind == Link::Traffic::Sent)
                    QTimer::singleShot(0, d.window.get(), [&d] { d.window->close(); });
            });
            QTRY_COMPARE(d.ended, 1);
            Link::removeTrafficObserver(watch);
            QVERIFY(d.messages.messages.isEmpty());
        }
    }
};

VX_TEST(MainWindowTest)
#include "tst_mainwindow.moc"
