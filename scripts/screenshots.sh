#!/usr/bin/env bash
# Makes the README's pictures in docs/screenshots/ from the demo rack: builds tools/vxshot and
# runs the program's own windows under Xvfb. Each picture is a grab of one window; a picture
# whose window this build does not have yet is skipped with a note, the others still made.
set -euo pipefail
cd "$(dirname "$0")/.."
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
bash scripts/install-packages.sh xvfb xauth

build=${VXCFG_BUILD_DIR:-build}
if [ ! -f "$build/build.ninja" ]; then
    cmake -G Ninja -B "$build" -S . -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
cmake --build "$build" --target vxshot
out=docs/screenshots
mkdir -p "$out"

failed=0
# shot NAME VXSHOT-ARGS...: runs vxshot, which must save $out/NAME.png. With "optional" before
# NAME, a window that this build does not have yet skips the picture instead of failing.
shot() {
    local optional=0
    if [ "$1" = optional ]; then
        optional=1
        shift
    fi
    local name=$1
    shift
    rm -f "$out/$name.png"
    local log
    log=$(QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1280x1024x24" \
        "$build/tools/vxshot" "$@" 2>&1) || true
    if [ ! -s "$out/$name.png" ] && [ "$optional" -eq 1 ] && grep -q "no window named" <<<"$log"
    then
        echo "$name.png skipped: its window is not in this build"
        return
    fi
    if [ ! -s "$out/$name.png" ]; then
        echo "screenshots.sh: $name.png not made:" >&2
        echo "$log" | sed 's/^/    /' >&2
        failed=1
        return
    fi
    local size
    size=$(stat -c %s "$out/$name.png")
    echo "$name.png  $((size / 1024)) KB"
    if [ "$size" -gt $((150 * 1024)) ]; then
        echo "screenshots.sh: $name.png is larger than 150 KB" >&2
        failed=1
    fi
}

shot main-window --wait 500 --shot "$out/main-window.png"
shot overview --wait 500 --shot "$out/overview.png:frmOverview"
shot monitor --click cmdStart --wait 2500 --shot "$out/monitor.png" --click cmdStop --wait 300
shot view-voltage --slot 8 --wait 300 --click cmdUp --wait 2500 --shot "$out/view-voltage.png"
shot view-temperature --slot 1 --wait 300 --click cmdUp --wait 2500 \
    --shot "$out/view-temperature.png"
shot view-multipower --slot 3 --wait 300 --click cmdUp --wait 4000 \
    --shot "$out/view-multipower.png"
shot comm-wireless --comm VX-ZRV1@3.00 --click cmdSpecialSetting --wait 500 --click cmdUp \
    --wait 3000 --shot "$out/comm-wireless.png:frmZRV" --click cmdExit
shot dip-check --click cmdSWcheck --wait 2500 --shot "$out/dip-check.png:frmSWcheck"
shot traffic-log --fault cut:I14:1 --click mnuToolsTrafficLog --wait 800 \
    --shot "$out/traffic-log.png:frmTrafficLog"
shot trend-plot --slot 8 --wait 300 --click cmdTrend --wait 4000 --shot "$out/trend-plot.png:frmTrend"
shot compare --slot 8 --wait 300 --click cmdUp --wait 2500 --set "txtZScale(1)=-50" \
    --set "txtFScale(1)=900" --set "txtZScale(2)=10" --click cmdCompare --wait 2500 \
    --shot "$out/compare.png:frmCompare"

exit "$failed"
