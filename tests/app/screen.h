#pragma once

#include "app/desk.h"

#include "app/frmtrafficlog.h"
#include "demorack.h"
#include "rack/monitor.h"
#include "ui/widgets.h"

#include <QAbstractButton>
#include <QFileInfo>
#include <QLabel>
#include <QTimer>

namespace vxtest {

// What a person sees of the main window: every named label, field, list and button on show,
// with its text and its colours, in a fixed order.
inline QStringList screen(QWidget *window) {
    QStringList seen;
    for (QWidget *w : window->findChildren<QWidget *>()) {
        if (w->objectName().isEmpty() || !w->isVisibleTo(window)) continue;
        QString text;
        if (auto *label = qobject_cast<QLabel *>(w))
            text = label->text();
        else if (auto *field = qobject_cast<QLineEdit *>(w))
            text = field->text();
        else if (auto *list = qobject_cast<QComboBox *>(w))
            text = list->currentText();
        else if (auto *button = qobject_cast<QAbstractButton *>(w))
            text = button->text();
        seen << QStringLiteral("%1=%2 %3/%4%5")
                    .arg(w->objectName(), text, ForeColor(w).name(), BackColor(w).name(),
                         w->isEnabled() ? "" : " off");
    }
    seen.sort();
    return seen;
}

// One monitor pass from "Start", stopped as a user would once it is done.
inline bool monitorPass(Desk &d) {
    const quint64 until = MonitorPasses() + 2;
    QTimer stop;
    QObject::connect(&stop, &QTimer::timeout, [&] {
        if (MonitorPasses() >= until) d.window->cmdStop->click();
    });
    stop.start(1);
    return press(d.window->cmdStart) && !IsMonitoring;
}

// A user's session: the rack scan, the Upload of the card in `slot`, back to the overview and
// a monitor pass; the screen after each, and the messages. A failed scan ends it.
inline QStringList workThrough(Desk &d, int slot) {
    QStringList screens;
    const auto look = [&](const QString &after) {
        screens << "after " + after << screen(d.window.get());
        for (const People::Message &m : d.messages.messages)
            screens << "message " + m.text + " / " + m.title;
        d.messages.messages.clear();
    };
    if (!d.connect(1) || !press(d.window->CmdUpload)) return {"no scan"};
    look("scan");
    if (!IsConnected) return screens;
    if (!pickCard(*d.window, slot)) return screens << "no card";
    auto *view = qobject_cast<CardView *>(LoadedView(FormNameOfTag(SelFormName)));
    if (!view || !press(view->cmdUp)) return screens << "no view";
    if (!QTest::qWaitFor([&] { return !view->UploadPending; }, 10000)) return screens << "stuck";
    look("Upload");
    if (!press(d.window->cmdOverView) || !monitorPass(d)) return screens << "no monitor";
    look("monitor pass");
    return screens;
}

// The log as the user saves it from its window.
inline bool exportLog(Desk &d, const QString &path) {
    FrmTrafficLog *window = ShowTrafficLog(d.window->trafficLog(), d.window.get());
    People::setFileHandler([&](const People::FileRequest &) { return path; });
    window->cmdLogExport->click();
    People::setFileHandler({});
    return d.messages.messages.isEmpty() && QFileInfo(path).size() > 0;
}

// A session worked through in the field: the demo rack with its values standing still at `time`
// (so screens can be compared), `prepare` to make trouble, and the log saved to `path`. The
// screens; nothing when the log could not be saved.
inline QStringList workInTheField(const QString &path, qint64 time,
                                  const std::function<void(SimRack &)> &prepare = {}) {
    Desk field;
    LoadDemoRack(field.sim.rack);
    field.sim.rack.setTime(time);
    if (prepare) prepare(field.sim.rack);
    const QStringList screens = workThrough(field, 8);
    return exportLog(field, path) ? screens : QStringList();
}

} // namespace vxtest
