#!/usr/bin/env bash
# Runs the program on real drawings and pictures under valgrind, which sees what the sanitizers do not: a value
# that was never set. Ends with 1, and prints the report, when a command reads one, reads where it must not, or
# loses memory. Takes a few minutes.
#
#   scripts/valgrind.sh
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

need_packages valgrind
build dev
program=$root/build/dev/apps/tarvex/tarvex
work=$root/build/valgrind
rm -rf "$work"
mkdir -p "$work"
cd "$work"

# check NAME ARGUMENT...: one command of the program; "nothing found" is an answer, too.
failures=0
check() {
    local name=$1 status=0 start=$SECONDS
    shift
    valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite \
        --errors-for-leak-kinds=definite --track-origins=yes --suppressions="$root/scripts/valgrind.supp" --log-file="$name.log" \
        "$program" "$@" >"$name.out" 2>&1 </dev/null || status=$?
    if [ "$status" -gt 1 ]; then
        printf '%-12s exit status %s after %d s\n' "$name" "$status" $((SECONDS - start))
        cat "$name.out" "$name.log" >&2
        failures=$((failures + 1))
    else
        printf '%-12s ok after %d s\n' "$name" $((SECONDS - start))
    fi
}

# Inputs small enough for a machine thirty times as slow.
"$program" render "$root/examples/heron.svg" -o picture.png --width 120
"$program" text "Rg" -o letters.svg --size 120

check trace trace picture.png -o trace.svg
check colours trace picture.png -o colours.svg --mode color
check centres trace picture.png -o centres.svg --mode centerline
check edges trace picture.png -o edges.svg --mode edges
check region region picture.png -o region.svg --seed 60,30
check reduce reduce picture.png -o reduce.png --colors 4
check breakup breakup letters.svg -o breakup.svg
check shape shape difference letters.svg trace.svg -o shape.svg
check raster shape union letters.svg trace.svg -o raster.svg --raster
check transform transform letters.svg -o turned.svg --rotate 10,20,30
check warp warp letters.svg -o bent.svg --type 3 --amount 10
check render render letters.svg -o render.png --width 90
check text text "Tarvex" -o text.svg
check info info letters.svg --json
[ "$failures" -eq 0 ]
