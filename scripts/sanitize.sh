#!/usr/bin/env bash
# Builds the whole test suite with AddressSanitizer and UBSan in its own folder and runs it.
# Any memory fault or undefined behaviour stops the test that hit it, so ctest reports it.
# Prints how long the build and the run took.
set -euo pipefail
cd "$(dirname "$0")/.."
# ccache keys paths inside the repository relative to its root, so every clone on this machine
# (a CI run's among them) shares the objects already compiled.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1

bash scripts/install-packages.sh qt6-base-dev qt6-serialport-dev qt6-charts-dev cmake g++ ninja-build ccache

build=${VXCFG_ASAN_DIR:-build-asan}
jobs=${VXCFG_JOBS:-2}
start=$(date +%s)
if [ ! -f "$build/build.ninja" ]; then
    cmake -G Ninja -B "$build" -S . -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
         -DCMAKE_BUILD_TYPE=Debug -DVXCFG_SANITIZE=ON
fi
# Keep going past a target that does not build, so every other test still runs.
status=0
cmake --build "$build" -j "$jobs" -- -k 0 || status=$?
built=$(date +%s)

export QT_QPA_PLATFORM=offscreen
# Qt keeps some allocations for the whole run on purpose; leaks are not what this run looks for.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export QTEST_DISABLE_STACK_DUMP=1 # a debugger attached to a sanitized test takes minutes
ctest --test-dir "$build" --output-on-failure -j "$jobs" || status=$?
done_at=$(date +%s)
echo "sanitize: build $((built - start)) s, tests $((done_at - built)) s, total $((done_at - start)) s"
exit $status
