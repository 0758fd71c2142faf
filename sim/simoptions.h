#pragma once

#include "simrack.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

// What vxrack-sim was asked to do.
struct SimOptions {
    int com = 1;
    QString portDir;   // where COMn is linked
    QString rackFile;  // empty: the demo rack
    QString fromLog;   // a saved traffic log to replay instead
    QString writeRack; // write the rack to this file and stop
    bool emulateBaud = false;
    QString logFile;
    QList<SimFaultRule> faults;
};

enum class SimCommand { Run, Help, Error };

// Reads the command line (the program's name first). Help and Error leave the text to print in
// `message`.
SimCommand parseSimOptions(const QStringList &arguments, SimOptions &options, QString *message);

// One fault: KIND[:MATCH[:COUNT[:PARAM]]], e.g. "split:I40:2:4" or "noreply::all".
std::optional<SimFaultRule> parseFault(const QString &plan, QString *error);
