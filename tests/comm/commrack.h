#pragma once

#include "support/testsupport.h"

#include "profiles/comm.h"
#include "rack/cardtable.h"

#include <QLineEdit>
#include <QTest>
#include <QWidget>

#include <initializer_list>

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

// A data table of text columns: each row is its name followed by one text per column.
inline void textTable(std::initializer_list<const char *> columns,
                      std::initializer_list<QStringList> rows) {
    for (const char *column : columns)
        QTest::addColumn<QString>(column);
    for (const QStringList &row : rows) {
        QTestData &data = QTest::newRow(row.front().toLatin1().constData());
        for (qsizetype i = 1; i < row.size(); ++i)
            data << row.at(i);
    }
}

// Shown within its dialog, whether or not the dialog itself is on the screen.
inline bool shown(const QWidget *widget) {
    return widget->isVisibleTo(widget->window());
}

} // namespace vxtest
