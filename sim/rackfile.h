#pragma once

#include "simrack.h"

#include <QByteArray>
#include <QString>

// The rack file: a plain text description of a simulated rack that a person writes and edits.
// The format is described in sim/README.md. A file is read whole and checked before the rack
// changes: on any error the rack stays as it was and the error names the line and the reason.
namespace RackFile {

// Largest file taken; a rack of 17 cards is a few kilobytes.
constexpr qint64 kMaxBytes = 1024 * 1024;

bool load(const QString &path, SimRack &rack, QString *error = nullptr);
bool parse(const QByteArray &text, SimRack &rack, QString *error = nullptr);

// The rack as a file that parse() reads back into the same answers (live values excepted).
QByteArray write(SimRack &rack);
bool save(const QString &path, SimRack &rack, QString *error = nullptr);

} // namespace RackFile
