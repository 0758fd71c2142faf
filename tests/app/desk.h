#pragma once

#include "support/testsupport.h"

#include "app/allviews.h"
#include "app/frmcomport.h"
#include "app/frmvxcfg.h"
#include "cardprofiles.h"
#include "rack/projectfile.h"
#include "rack/registry.h"
#include "ui/viewregistry.h"
#include "views/common/cardview.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

namespace vxtest {

// Runs `act` on a modal window from inside its own event loop, once it is on the screen, as a
// person would. `find` is asked again on every turn of the loop until the window is up. Setting
// the returned flag to false calls it off.
inline std::shared_ptr<bool> whenVisible(std::function<QWidget *()> find,
                                         std::function<void(QWidget *)> act, int turns = 1000,
                                         std::shared_ptr<bool> armed = {}) {
    if (!armed) armed = std::make_shared<bool>(true);
    QTimer::singleShot(0, qApp, [=] {
        if (!*armed) return;
        QWidget *window = find();
        if (window && window->isVisible()) {
            *armed = false;
            act(window);
            return;
        }
        if (turns > 0) whenVisible(find, act, turns - 1, armed);
    });
    return armed;
}

// A menu item as a person chooses it: only when it and its menu are enabled.
inline bool choose(QAction *item) {
    const auto *menu = qobject_cast<QMenu *>(item->parent());
    if (!item->isEnabled() || (menu && !menu->menuAction()->isEnabled())) return false;
    item->trigger();
    return true;
}

// A button as a person presses it (a disabled one does nothing).
inline bool press(QPushButton *button) {
    if (!button->isEnabled() || !button->isVisible()) return false;
    button->click();
    return true;
}

// Picks an entry of the card selector as a person would.
inline bool pickCard(FrmVxCfg &w, int index) {
    if (!w.cboCardNo->isEnabled()) return false;
    w.cboCardNo->setCurrentIndex(index);
    emit w.cboCardNo->activated(index);
    return true;
}

// The program's main window on a simulated rack whose line is installed but not yet open, as at
// the start of the program; the message boxes are recorded and ending is only counted.
struct Desk {
    SimSession sim;
    MessageRecorder messages;
    std::unique_ptr<FrmVxCfg> window;
    int ended = 0;

    Desk() {
        sim.line->close();
        sim.rack.clearTranscript();
        ClearViewRegistry();
        RegisterAllViews();
        window = std::make_unique<FrmVxCfg>();
        window->setEndProgram([this] { ++ended; });
        window->show();
    }
    ~Desk() {
        window.reset();
        ClearViewRegistry();
    }
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    // "Connect", then in the port dialog COM `port` and `button` ("OK" or "Exit"). `inDialog`
    // runs first, while the dialog is up.
    bool connect(int port = 1, const QString &button = "OK",
                 std::function<void(FrmComPort *)> inDialog = {}) {
        bool reached = false;
        if (!window->mnuConnect->menuAction()->isEnabled() ||
            !window->mnuConnectConnect->isEnabled())
            return false;
        auto armed = whenVisible([] { return ComPortDialog(); },
                                 [&](QWidget *) {
                                     reached = true;
                                     FrmComPort *d = ComPortDialog();
                                     if (inDialog) inDialog(d);
                                     d->combBPS->setCurrentIndex(port - 1);
                                     (button == "OK" ? d->cmdOK : d->cmdExit)->click();
                                     if (d->isVisible()) d->reject(); // never leave a test hanging
                                 });
        choose(window->mnuConnectConnect);
        *armed = false;
        return reached;
    }

    // The enabled state of the commands, in this order: CmdUpload, cmdComm, cmdSpecialSetting,
    // cmdStart, cmdStop, cmdOverView, cboCardNo, cmdSWcheck, mnuFilesOpen, mnuFilesSave,
    // mnuConnectConnect, mnuConnectDisconnect; "x" enabled, "-" disabled.
    QString commands() const {
        const FrmVxCfg &w = *window;
        const QList<bool> on = {
            w.CmdUpload->isEnabled(),         w.cmdComm->isEnabled(),
            w.cmdSpecialSetting->isEnabled(), w.cmdStart->isEnabled(),
            w.cmdStop->isEnabled(),           w.cmdOverView->isEnabled(),
            w.cboCardNo->isEnabled(),         w.cmdSWcheck->isEnabled(),
            w.mnuFilesOpen->isEnabled(),      w.mnuFilesSave->isEnabled(),
            w.mnuConnectConnect->isEnabled(), w.mnuConnectDisconnect->isEnabled()};
        QString text;
        for (bool b : on)
            text += b ? QLatin1Char('x') : QLatin1Char('-');
        return text;
    }
};

// The main window on a connected rack of one card, whose view was opened from the card selector
// as a user opens it. The transcript starts after the opening.
struct CardDesk : Desk {
    int slot;
    CardView *view = nullptr;

    CardDesk(const QString &model, int slot, const QString &version = "1.07") : slot(slot) {
        SimCard &card = sim.rack.slot(slot);
        card.model = model;
        card.version = version;
        InstallProfile(card);
        sim.rack.refreshDirectory();
        sim.line->open(1);
        (void)QTest::qWaitForWindowActive(window.get());
        IsConnected = true;
        for (int n = 1; n <= kSlots; ++n)
            CardTable(n).CardName = "NONE";
        CardTable(slot).CardName = model;
        window->cboCardNo->setCurrentIndex(slot);
        window->cboCardNo_Click();
        view = qobject_cast<CardView *>(LoadedView(FormNameOfTag(SelFormName)));
        sim.rack.clearTranscript();
    }

    QLineEdit *box(const QString &control, int ch) const { return view->field(control, ch); }
    QStringList sent() const { return sim.rack.commands(); }

    // Clicks a command of the view and waits until its worker has run and the cycle is back.
    // A long worker on a loaded machine may need more than the default time.
    void runWorker(QPushButton *button, int timeoutMs = 20000) {
        sim.rack.clearTranscript();
        button->click();
        QTRY_VERIFY_WITH_TIMEOUT(
            !view->UploadPending && !view->DownloadPending && sent().count("G00") >= 3, timeoutMs);
    }

    // Leaves the card's view for the overview and opens it again from the selector.
    void reopen() {
        for (int entry : {0, slot}) {
            window->cboCardNo->setCurrentIndex(entry);
            window->cboCardNo_Click();
        }
    }

    // Keeps the rack in a project file, lets the card and its record forget everything, opens
    // the file again and, unless told not to, enters the view anew: what follows comes from the
    // file alone.
    void throughProjectFile(bool enterAgain = true) {
        QTemporaryDir dir;
        const QString path = dir.filePath("rack.uJx");
        People::setFileHandler([&](const People::FileRequest &) { return path; });
        SaveProjectFile();
        InstallProfile(sim.rack.slot(slot));
        const QString name = CardTable(slot).CardName;
        CardTable(slot) = CardRecord();
        CardTable(slot).CardName = name;
        OpenProjectFile();
        People::setFileHandler({});
        if (enterAgain) reopen();
    }

    // Every live item of the card answers `value`, tagged with its channel as the card tags it.
    void answerAll(const QString &value) {
        sim.rack.slot(slot).live = [value](const QString &, const QString &item,
                                           qint64) -> std::optional<QString> {
            return QStringLiteral("D%1:%2").arg(item.toInt() - 9).arg(value);
        };
    }
};

} // namespace vxtest
