#!/usr/bin/env bash
# Fails when a file includes a header of a layer above its own. The program's layers, lowest
# first: link, ui, rack, views and comm (side by side), app. The simulated rack stands beside the
# program and may use link only; bench, fuzz and tests sit on top and may include anything.
# Usage: check-layers.sh [source root]   (default: the repository's src/ and sim/)
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}

rank() {
    case "$1" in
    link) echo 1 ;;
    ui) echo 2 ;;
    rack) echo 3 ;;
    views | comm) echo 4 ;;
    app) echo 5 ;;
    *) echo 0 ;;
    esac
}

faults=0
report() {
    echo "layers: $1" >&2
    faults=$((faults + 1))
}

# Every quoted include of a folder of the program: file, line, the folder it reaches.
check_tree() {
    local tree=$1
    [ -d "$root/$tree" ] || return 0
    while IFS=: read -r file line text; do
        local target=${text#*\"}
        target=${target%%\"*}
        case "$target" in */*) ;; *) continue ;; esac
        local to=${target%%/*}
        local rel=${file#"$root"/}
        if [ "$tree" = sim ]; then
            case "$to" in
            link) ;;
            ui | rack | views | comm | app) report "$rel:$line includes $target: the simulated rack uses link only" ;;
            esac
            continue
        fi
        local from=${rel#src/}
        from=${from%%/*}
        local rf rt
        rf=$(rank "$from")
        rt=$(rank "$to")
        if [ "$rf" -gt 0 ] && [ "$rt" -gt "$rf" ]; then
            report "$rel:$line includes $target, a header of a higher layer ($to above $from)"
        fi
    done < <(grep -rn --include='*.h' --include='*.cpp' -E '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$root/$tree" || true)
}

check_tree src
check_tree sim

if [ "$faults" -gt 0 ]; then
    echo "layers: $faults include(s) reach up (link < ui < rack < views, comm < app; sim: link only)" >&2
    exit 1
fi
echo "layers: every include stays in its layer or below"
