#!/usr/bin/env bash
# Builds everything and runs the whole test suite headless, then the same suite built with
# AddressSanitizer and UBSan in its own folder (VXCFG_SANITIZE=0 skips that second run).
# Prints ctest's summary of each.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${VXCFG_BUILD_DIR:-build}
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j2
if [ "${VXCFG_SANITIZE:-1}" != 0 ]; then
    bash scripts/sanitize.sh
fi
