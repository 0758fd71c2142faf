#!/usr/bin/env bash
# Leaves the monitor running against the simulated demo rack with line faults injected at random
# and samples resident memory; fails when it grew by 1 MB or more after the first minute (after
# the first quarter of a shorter run). Not part of the test suite: it takes real time.
#   scripts/soak.sh              10 minutes, the plain build in build/
#   scripts/soak.sh 3            3 minutes
#   scripts/soak.sh -s 2         2 minutes of the sanitized build in build-asan/
#   scripts/soak.sh -i 5         5 minutes without line time: as many passes as the CPU allows
set -euo pipefail
cd "$(dirname "$0")/.."
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1

build=${VXCFG_BUILD_DIR:-build}
extra=()
while getopts "sih" opt; do
    case $opt in
    s) build=${VXCFG_ASAN_DIR:-build-asan} ;;
    i) extra+=(--instant) ;;
    *) sed -n '2,9p' "$0"; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
minutes=${1:-10}

if [ ! -f "$build/build.ninja" ]; then
    if [ "$build" = "${VXCFG_ASAN_DIR:-build-asan}" ]; then
        cmake -G Ninja -B "$build" -S . -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
            -DCMAKE_BUILD_TYPE=Debug -DVXCFG_SANITIZE=ON
    else
        cmake -G Ninja -B "$build" -S . -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
            -DCMAKE_BUILD_TYPE=RelWithDebInfo
    fi
fi
cmake --build "$build" --target vxsoak

export QT_QPA_PLATFORM=offscreen
# Qt keeps some allocations for the whole run on purpose; growth is what this run looks for.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
seconds=$(awk -v m="$minutes" 'BEGIN { printf "%d", m * 60 }')
exec "$build/bench/vxsoak" --seconds "$seconds" "${extra[@]}"
