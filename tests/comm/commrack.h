#pragma once

#include "support/testsupport.h"

#include "profiles/comm.h"
#include "rack/cardtable.h"

#include <QLineEdit>
#include <QWidget>

namespace vxtest {

// A connected rack whose comm card is `model` at `version`, with its profile, and the module
// data as a connect to it leaves them. The transcript starts empty.
struct CommRack {
    SimSession sim;
    MessageRecorder messages;

    CommRack(const QString &model, const QString &version) {
        SimCard &comm = sim.rack.comm();
        comm = SimCard();
        comm.model = model;
        comm.version = version;
        InstallCommProfile(comm);
        sim.rack.refreshDirectory();
        IsConnected = true;
        CommCardName = model + ":00";
    }

    SimCard &card() { return sim.rack.comm(); }
    QStringList sent() const { return sim.rack.commands(); }
    QString wire() const { return sent().join(' '); }
    void clear() { sim.rack.clearTranscript(); }
};

// Shown within its dialog, whether or not the dialog itself is on the screen.
inline bool shown(const QWidget *widget) {
    return widget->isVisibleTo(widget->window());
}

} // namespace vxtest
