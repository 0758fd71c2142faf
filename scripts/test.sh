#!/usr/bin/env bash
# Checks that no file includes a header of a higher layer, builds everything and runs the whole
# test suite headless, then the same suite built with AddressSanitizer and UBSan in its own
# folder (VXCFG_SANITIZE=0 skips that second run).
# Prints ctest's summary of each.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/check-layers.sh
bash scripts/setup.sh
build=${VXCFG_BUILD_DIR:-build}
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j2
if [ "${VXCFG_SANITIZE:-1}" != 0 ]; then
    bash scripts/sanitize.sh
fi
