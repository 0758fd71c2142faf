#pragma once

#include <QString>
#include <QStringList>

// The session with the rack, from a successful connect to a disconnect, and the commands a live
// link makes available. These act on the main window's controls when there is one; without a
// window (some tests) they keep the module data alone.

#include "rack/connection.h"

// The handshake on an open port: link test, comm card selection and name. True on success.
bool ConnectRack();
// What a disconnect shows on the frame: its timer stopped, indicators off, commands off. The
// main window installs it as the handler of DisconnectRack().
void ShowDisconnected();

// The whole "Upload" of the main window: comm card preamble, special button, scan, card
// selector, one monitor pass, and the commands on again.
void UploadRack();

// Group switches of the main window's commands.
void CommandsOff();
void CommandsOn();
// After a file command and when the overview is selected: the link's commands, and the class of
// every slot on the overview.
void RefreshCommands();

// The message of a failed link test.
void ShowCommError();

// Caption and visibility of the special settings button for a comm card name.
void SetSpecialButton(const QString &name);

// The special settings a comm card offers, by its name. The characters from the fourth on are
// the tail, behind a prefix such as "VX-".
struct SpecialSetting {
    QStringList tails;      // the tail begins with one of these (the button's caption)
    QStringList clickTails; // the same for the click, where it differs; empty: as `tails`
    QStringList heads;      // or the whole name begins with one of these
    QString caption;        // empty: the card has no special settings
    QString dialog;         // form name of the dialog
    bool ownStart = false;  // the dialog takes the button off and runs its own start
};
// The first row that fits, or null. `forClick` uses the click's tests.
const SpecialSetting *FindSpecialSetting(const QString &name, bool forClick = false);

// The two link indicator states.
inline const QString kConnectedText = QStringLiteral("Connected");
inline const QString kDisconnectedText = QStringLiteral("Disconnected");
