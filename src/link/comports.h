#pragma once

#include <QString>

// Where a COM number leads on this machine. On Windows COMn is the port "COMn". Elsewhere, first
// match wins: an entry named COMn in the ports folder, the n-th USB or ACM adapter, /dev/ttyS(n-1).
namespace ComPorts {

// The ports folder: $VXCFG_PORT_DIR, else ~/.config/vxcfg/ports.
QString portDirectory();

// The device that COM `comNumber` resolves to (may not exist).
QString resolve(int comNumber);

// A text for the port dialog, e.g. "/dev/ttyUSB0" or "no device".
QString describe(int comNumber);

// Most USB serial adapters hold a short reply back for their latency timer (16 ms by default on
// the common ones), which costs more than the line itself on a scan of short replies. The timer
// of the adapter behind `device` (a path or a link to one) in milliseconds, read from sysfs
// below `sysRoot`; -1 when the device has none (no USB adapter, or a driver without one).
int latencyTimerMs(const QString &device, const QString &sysRoot = QStringLiteral("/sys"));
// Above this the port dialog suggests the change.
inline constexpr int kLatencyAdviceMs = 1;
// For the port dialog: the timer and the one line that sets it to 1 ms, or the empty text when
// the adapter has no timer or it is already low.
QString latencyAdvice(const QString &device, const QString &sysRoot = QStringLiteral("/sys"));

} // namespace ComPorts
