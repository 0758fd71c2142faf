#!/usr/bin/env bash
# Builds everything and runs the whole test suite headless; prints ctest's summary.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${VXCFG_BUILD_DIR:-build}
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j2
