#!/usr/bin/env bash
# Installs what the build needs on Debian 12 when it is missing (as root or through sudo), then
# configures the one build folder with Ninja. Safe to run again: it does nothing it need not do.
set -euo pipefail
cd "$(dirname "$0")/.."
# ccache keys paths inside the repository relative to its root, so every clone on this machine
# (a CI run's among them) shares the objects already compiled.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1

bash scripts/install-packages.sh qt6-base-dev qt6-serialport-dev qt6-charts-dev cmake g++ ninja-build ccache "$@"

build=${VXCFG_BUILD_DIR:-build}
if [ ! -f "$build/build.ninja" ]; then
    cmake -G Ninja -B "$build" -S . -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
         -DCMAKE_BUILD_TYPE=${VXCFG_BUILD_TYPE:-RelWithDebInfo}
fi
cmake --build "$build"
