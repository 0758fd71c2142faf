#!/usr/bin/env bash
# Shows the program on the simulated demo rack: installs what the build needs when it is missing,
# builds, serves the demo rack as COM1 and starts the program. Pick COM1 and press OK.
# The simulator stops when the program closes.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
build=${VXCFG_BUILD_DIR:-build}

# The rack is linked as COM1 in a ports folder of its own, so nothing is left behind.
work=$(mktemp -d "${TMPDIR:-/tmp}/vxcfg-demo.XXXXXX")
export VXCFG_PORT_DIR="$work/ports"
mkdir -p "$VXCFG_PORT_DIR"
sim_pid=""
drain_pid=""
stop() {
    [ -n "$sim_pid" ] && kill "$sim_pid" 2>/dev/null && wait "$sim_pid" 2>/dev/null
    [ -n "$drain_pid" ] && wait "$drain_pid" 2>/dev/null
    rm -rf "$work"
}
trap 'stop || true' EXIT
trap 'exit 130' INT TERM

mkfifo "$work/sim.out"
"$build/vxrack-sim" --com 1 --port-dir "$VXCFG_PORT_DIR" >"$work/sim.out" 2>&1 &
sim_pid=$!
exec 3<"$work/sim.out"

# The simulator says "COM1 -> <device>" once the port is there.
ready=""
while IFS= read -r -t 30 line <&3; do
    echo "vxrack-sim: $line"
    case $line in "COM1 -> "*) ready=yes; break ;; esac
done
if [ -z "$ready" ]; then
    echo "The simulated rack did not start." >&2
    exit 1
fi
# Keep reading what it says, so that it never blocks on a full pipe.
cat <&3 >"$work/sim.log" &
drain_pid=$!
exec 3<&-

echo "Demo rack on COM1. In VXCFG: Connect > Connect, pick COM1, press OK."
"$build/vxcfg"
