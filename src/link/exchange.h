#pragma once

#include <QString>
#include <functional>

// The G/I/D exchanges with the rack. A failure is the empty text; "CNG" is a refusal and
// "NEEDLESS" an item the card does not use. Attempts are `retries` + 1.

QString ReadData(int retries, const QString &group, const QString &item);
QString WriteData(int retries, const QString &group, const QString &item, const QString &data);
QString WriteDataChk(int retries, const QString &group, const QString &item, const QString &data);

QString ReadDataOnce(const QString &group, const QString &item);
QString WriteDataOnce(const QString &group, const QString &item, const QString &data);
QString WriteDataChkOnce(const QString &group, const QString &item, const QString &data);

// A dry run of a worker: while a hold is installed, WriteData and WriteDataChk send nothing and
// hand each write to the hold, whose text is the reply the worker sees; a data line sent any
// other way is dropped. Reads go to the line as ever. An empty function ends the hold.
using WriteHold =
    std::function<QString(const QString &group, const QString &item, const QString &data)>;
void SetWriteHold(WriteHold hold);
bool WritesHeld();

// One step: sends `command` (with its CR) and returns the reply without CR and outer blanks.
QString SendLine(const QString &command);
// The step proper: `reply` gets the reply without its CR, or the empty text.
void SendRecv(const QString &command, QString &reply);

// True while a step waits for its reply. Whatever runs from a timer in that wait (a view's
// tick) must keep off the line: one line carries one step at a time.
bool StepUnderWay();

// The text without blanks at either end (only blanks; other characters are data).
QString TrimBlanks(const QString &text);

// The longest reply a step keeps; a line that floods without CR cannot grow memory past it.
constexpr int kMaxReplyBytes = 4096;
