#!/usr/bin/env bash
# Installs what the build needs on Debian 12 when it is missing (as root or through sudo), then
# configures the one build folder with Ninja. Safe to run again: it does nothing it need not do.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(qt6-base-dev qt6-serialport-dev cmake g++ ninja-build "$@")
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi

build=${VXCFG_BUILD_DIR:-build}
if [ ! -f "$build/build.ninja" ]; then
    cmake -G Ninja -B "$build" -S . -DCMAKE_BUILD_TYPE=${VXCFG_BUILD_TYPE:-RelWithDebInfo}
fi
cmake --build "$build"
