#pragma once

#include "simrack.h"

#include <QByteArray>
#include <QString>

// A rack made from a traffic log that VXCFG saved (the plain text export of its traffic log),
// so that what a real rack did in the field can be done again on a desk.
//
// Each card answers an item read with the replies the log shows for that slot, group and item,
// in the order they came, silences and noise included; once those are used up it keeps giving
// the last real reply (or, after a write, what was written). Groups answer "COK" where the log
// shows the card took them. Writes are echoed and kept, as a healthy card does. The cards'
// models, versions and DIP switches come from the replies the log shows for them.
namespace Replay {

// Largest log taken: a full log of 100,000 rows is about 3 MB.
constexpr qint64 kMaxBytes = 32 * 1024 * 1024;

// Replaces the rack's cards by those the log shows. The file is read whole and checked first:
// on any error the rack stays as it was and the error names the line and the reason.
bool load(const QString &path, SimRack &rack, QString *error = nullptr);
bool parse(const QByteArray &text, SimRack &rack, QString *error = nullptr);

} // namespace Replay
