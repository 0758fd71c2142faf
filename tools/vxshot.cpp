// vxshot: pictures of the program's forms for people to look at. It runs the program's own main
// window against the simulated rack in this process, performs the steps given on the command
// line in their order (open a slot, click a command, type into a field, wait), and saves what
// a window shows as PNG. Messages are printed and answered OK instead of shown.
//
//   vxshot [--rack FILE] [--comm MODEL[@VERSION]] [--card SLOT=MODEL[@VERSION]]... [--no-scan]
//          [--fault KIND[:MATCH[:COUNT[:PARAM]]]]... STEP...      (faults as vxrack-sim takes them)
//   STEP:  --slot N              pick slot N in the card selector (0: the overview)
//          --click NAME          click the button or menu item of that objectName
//          --press NAME          press the mouse on that button and keep it down
//          --release NAME        let go of the mouse on that button
//          --set NAME=TEXT       type TEXT into the field (or pick it in the list) NAME
//          --wait MS             let the program run for MS milliseconds
//          --shot FILE[:NAME]    save the window NAME (default: the main window) as FILE
//          --answer yes|no|ok|cancel   the answer to the next message
//          --file PATH           the path the next file dialog returns
#include "app/allviews.h"
#include "app/frmvxcfg.h"
#include "app/session.h"
#include "cardprofiles.h"
#include "demorack.h"
#include "profiles/comm.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "rackfile.h"
#include "simline.h"
#include "simoptions.h"
#include "ui/people.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTimer>

#include <cstdio>
#include <deque>

namespace {

struct Step {
    QString verb;
    QString arg;
};

std::deque<Step> g_steps;
QList<People::Answer> g_answers;
QStringList g_files;

void say(const QString &text) {
    std::fprintf(stderr, "vxshot: %s\n", qPrintable(text));
}

QObject *findNamed(const QString &name) {
    // A modal dialog on show is where the person's next click goes; its names come first.
    if (QWidget *modal = QApplication::activeModalWidget()) {
        if (modal->objectName() == name) return modal;
        if (auto *found = modal->findChild<QWidget *>(name)) return found;
    }
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (top->objectName() == name) return top;
        if (auto *found = top->findChild<QWidget *>(name)) {
            // Prefer what a person can see: a visible one among several of that name.
            if (found->isVisible()) return found;
            for (QWidget *w : top->findChildren<QWidget *>(name))
                if (w->isVisible()) return w;
        }
        if (auto *action = top->findChild<QAction *>(name)) return action;
    }
    for (QWidget *top : QApplication::topLevelWidgets())
        if (auto *found = top->findChild<QWidget *>(name)) return found;
    return nullptr;
}

// Ends as the program ends when its window is closed (the port closed first, so no exchange
// is left waiting), after every modal loop.
void finish() {
    for (QWidget *top : QApplication::topLevelWidgets())
        if (auto *dialog = qobject_cast<QDialog *>(top); dialog && dialog->isVisible())
            dialog->reject();
    QTimer::singleShot(0, qApp, [] {
        if (MainWindow()) MainWindow()->close();
    });
}

void runNext();

void next(int delayMs = 0) {
    QTimer::singleShot(delayMs, qApp, runNext);
}

bool perform(const Step &step, int &delay) {
    if (step.verb == "slot") {
        FrmVxCfg *w = MainWindow();
        w->cboCardNo->setCurrentIndex(step.arg.toInt());
        w->cboCardNo_Click();
    } else if (step.verb == "click") {
        QObject *target = findNamed(step.arg);
        if (auto *button = qobject_cast<QAbstractButton *>(target)) {
            // A modal dialog opened by the click runs its own loop; the next steps run inside it.
            next(0);
            button->click();
            return false;
        }
        if (auto *action = qobject_cast<QAction *>(target)) {
            next(0);
            action->trigger();
            return false;
        }
        say("no button or menu item named " + step.arg);
        return true;
    } else if (step.verb == "press" || step.verb == "release") {
        auto *button = qobject_cast<QAbstractButton *>(findNamed(step.arg));
        if (!button) {
            say("no button named " + step.arg);
            return true;
        }
        const QPointF centre = QRectF(button->rect()).center();
        const bool press = step.verb == "press";
        QMouseEvent event(press ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, centre,
                          button->mapToGlobal(centre), Qt::LeftButton,
                          press ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &event);
    } else if (step.verb == "set") {
        const QString name = step.arg.section('=', 0, 0);
        const QString text = step.arg.section('=', 1);
        QObject *target = findNamed(name);
        if (auto *box = qobject_cast<QLineEdit *>(target)) {
            box->setText(text);
            emit box->textEdited(text);
        } else if (auto *list = qobject_cast<QComboBox *>(target)) {
            const int index = list->findText(text);
            list->setCurrentIndex(index >= 0 ? index : text.toInt());
            emit list->activated(list->currentIndex());
        } else {
            say("no field named " + name);
        }
    } else if (step.verb == "wait") {
        delay = step.arg.toInt();
    } else if (step.verb == "shot") {
        const QString file = step.arg.section(':', 0, 0);
        const QString name = step.arg.section(':', 1);
        QWidget *window = name.isEmpty() ? MainWindow() : qobject_cast<QWidget *>(findNamed(name));
        if (!window) {
            say("no window named " + name);
        } else if (!window->grab().save(file)) {
            say("could not save " + file);
        } else {
            say("saved " + file);
        }
    } else if (step.verb == "answer") {
        const QString a = step.arg.toLower();
        g_answers << (a == "yes"      ? People::Answer::Yes
                      : a == "no"     ? People::Answer::No
                      : a == "cancel" ? People::Answer::Cancel
                                      : People::Answer::Ok);
    } else if (step.verb == "file") {
        g_files << step.arg;
    }
    return true;
}

void runNext() {
    if (g_steps.empty()) {
        finish();
        return;
    }
    const Step step = g_steps.front();
    g_steps.pop_front();
    int delay = 0;
    if (perform(step, delay)) next(delay);
}

bool parseCard(const QString &text, SimCard &card) {
    const QString model = text.section('@', 0, 0);
    if (model.isEmpty()) return false;
    card = SimCard();
    card.model = model;
    card.version = text.contains('@') ? text.section('@', 1) : QStringLiteral("1.00");
    card.dip = QStringLiteral("00,00,00");
    InstallProfile(card);
    return true;
}

int usage() {
    std::fprintf(stderr,
                 "usage: vxshot [--rack FILE] [--comm MODEL[@VER]] [--card SLOT=MODEL[@VER]]"
                 " [--no-scan] [--fault FAULT]... STEP...\n(see the top of tools/vxshot.cpp)\n");
    return 2;
}

} // namespace

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    SimRack rack;
    LoadDemoRack(rack);
    bool scan = true;
    const QStringList args = app.arguments().mid(1);
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (!a.startsWith("--")) return usage();
        const QString verb = a.mid(2);
        if (verb == "no-scan") {
            scan = false;
            continue;
        }
        if (i + 1 >= args.size()) return usage();
        const QString value = args.at(++i);
        if (verb == "rack") {
            QString error;
            if (!RackFile::load(value, rack, &error)) {
                say(error);
                return 1;
            }
        } else if (verb == "comm") {
            SimCard card;
            if (!parseCard(value, card)) return usage();
            InstallCommProfile(card);
            rack.comm() = card;
        } else if (verb == "fault") {
            QString error;
            const std::optional<SimFaultRule> rule = parseFault(value, &error);
            if (!rule) {
                say(error);
                return 1;
            }
            rack.addFault(*rule);
        } else if (verb == "card") {
            const int slot = value.section('=', 0, 0).toInt();
            if (slot < 1 || slot > 16 || !parseCard(value.section('=', 1), rack.slot(slot)))
                return usage();
        } else {
            g_steps.push_back({verb, value});
        }
    }
    rack.refreshDirectory();

    People::setMessageHandler([](const People::Message &m) {
        say(QStringLiteral("message \"%1\" (%2)").arg(m.text, m.title));
        return g_answers.isEmpty() ? People::Answer::Ok : g_answers.takeFirst();
    });
    People::setFileHandler([](const People::FileRequest &) {
        return g_files.isEmpty() ? QString() : g_files.takeFirst();
    });

    auto *line = new SimLine(&rack);
    Link::setPort(std::unique_ptr<SerialLine>(line));
    RegisterAllViews();
    FrmVxCfg window;
    window.show();
    QTimer::singleShot(0, &app, [line, scan] {
        ComPortNo = 1;
        line->open(1);
        if (ConnectRack() && scan) UploadRack();
        runNext();
    });
    const int code = app.exec();
    Link::setPort(nullptr);
    return code;
}
