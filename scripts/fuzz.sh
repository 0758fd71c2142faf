#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang in their own folder and runs each one for a
# fixed time, starting from its checked-in seeds. Prints the executions and findings of each;
# an input that breaks something is kept under fuzz-out/<target>/ for a regression test.
#   scripts/fuzz.sh            30 s a target
#   scripts/fuzz.sh -t 120     120 s a target
#   scripts/fuzz.sh -t 60 fuzz_replies fuzz_rackfile
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=30
while getopts "t:h" opt; do
    case $opt in
    t) seconds=$OPTARG ;;
    *) sed -n '2,8p' "$0"; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(fuzz_replies fuzz_projectfile fuzz_textroutines fuzz_rackfile
    fuzz_wirelessfile fuzz_hlinkfile fuzz_vhxfile)

# clang with its libFuzzer and sanitizer runtimes, Qt and the build tools (Debian 12).
bash scripts/install-packages.sh clang libclang-rt-14-dev qt6-base-dev qt6-serialport-dev qt6-charts-dev cmake \
    ninja-build

build=${VXCFG_FUZZ_DIR:-build-fuzz}
out=${VXCFG_FUZZ_OUT:-fuzz-out}
if [ ! -f "$build/build.ninja" ]; then
    cmake -G Ninja -S fuzz -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug
fi
cmake --build "$build" --target "${targets[@]}"

export QT_QPA_PLATFORM=offscreen
# Qt keeps caches for the whole run on purpose; they are not leaks of an input.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
summary=()
status=0
for target in "${targets[@]}"; do
    corpus="$build/corpus/$target"
    artifacts="$out/$target"
    mkdir -p "$corpus" "$artifacts"
    log="$build/$target.log"
    echo "== $target: $seconds s"
    marker="$build/$target.started"
    touch "$marker"
    rc=0
    "$build/$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
        -print_final_stats=1 -artifact_prefix="$artifacts/" "$corpus" "fuzz/corpus/$target" \
        >"$log" 2>&1 || rc=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    [ -n "$runs" ] || runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log" | tail -1)
    findings=$(find "$artifacts" -maxdepth 1 -type f \( -name 'crash-*' -o -name 'timeout-*' \
        -o -name 'oom-*' -o -name 'leak-*' \) -newer "$marker" 2>/dev/null | wc -l) || true
    if [ "$rc" -ne 0 ]; then
        status=1
        grep -m1 -E "ERROR|fuzz check failed|runtime error|deadly signal" "$log" || true
        echo "   log: $log; input kept in $artifacts/"
    fi
    summary+=("$(printf '%-20s %10s executions  %s findings' "$target" "${runs:-?}" "$findings")")
done
echo
printf '%s\n' "${summary[@]}"
exit $status
