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

} // namespace ComPorts
