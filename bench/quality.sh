#!/usr/bin/env bash
# Compares the outlines that `tarvex trace` draws of real pictures with potrace's.
#
#   bench/quality.sh            a fixed selection of 60 pictures
#   bench/quality.sh 200        more of them
#   bench/quality.sh a.png ...  these pictures
#
# The pictures are Debian's openclipart-png without the folders animals, tools and signs_and_symbols,
# sorted by name, the first 20 of each folder; the selection is every n-th of them, or the next of at
# most 10 megapixels whose mask has between 1% and 99% of its pixels set. The mask is what both are
# judged by: the dark side of the picture, laid on white, by Otsu's threshold. potrace traces the mask itself, with its defaults; tarvex traces the picture.
# Both drawings are rendered at the picture's size, and a pixel counts as set where at least half of
# it is covered. Segments are lines and curves in the drawing's paths, counted alike for both.
#
# Times are processor time of the whole program, reading and writing included; memory is the peak of
# the whole program. TARVEX names another program to measure; TARVEX_OPTIONS are further options for
# `tarvex trace`; KEEP names a folder that keeps the masks, drawings and renderings, and rows.txt.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib.sh"
export LC_ALL=C

need_packages compare
build bench
tarvex=${TARVEX:-$root/build/bench/apps/tarvex/tarvex}
tools=$root/build/bench/bench
read -r -a options <<<"${TARVEX_OPTIONS:-}"
clipart=/usr/share/openclipart/png
if [ -n "${KEEP:-}" ]; then
    mkdir -p "$KEEP"
    work=$(cd "$KEEP" && pwd)
else
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
fi

# Makes PICTURE's mask NAME.pbm and prints its size; false where the mask is trivial or huge.
make_mask() {
    local size
    size=$("$tools/quality_compare" mask "$1" "$work/$2.pbm") || return 1
    awk '{ print $1 "x" $2; exit !($3 >= 0.01 && $3 <= 0.99 && $1 * $2 <= 1e7) }' <<<"$size"
}

# measured OUT COMMAND...: "seconds KiB" of the command, or nothing when it fails.
measured() {
    local out=$1
    shift
    if "$tools/measure" "$out" "$@" </dev/null >"$out.log" 2>&1; then
        awk '{ print $2, $3 }' "$out"
    else
        say "$(tail -n 1 "$out.log")"
    fi
}

# scored NAME DRAWING SIZE: "IoU inverted-IoU segments" of a drawing, or nothing when it cannot be drawn.
scored() {
    local drawing=$2 rendered=${2%.svg}.png
    if rsvg-convert --width "${3%x*}" --height "${3#*x}" --background-color white "$drawing" >"$rendered" 2>/dev/null
    then
        "$tools/quality_compare" score "$work/$1.pbm" "$rendered" "$drawing"
    fi
}

# One row: picture, size, and for each program IoU, inverted IoU, segments, seconds, KiB.
compare() {
    local picture=$1 name=$2 size=$3 ours theirs ours_score theirs_score
    theirs=$(measured "$work/$name.took" potrace -s "$work/$name.pbm" -o "$work/$name.potrace.svg")
    ours=$(measured "$work/$name.took" "$tarvex" trace "$picture" -o "$work/$name.tarvex.svg" "${options[@]}")
    theirs_score=$(scored "$name" "$work/$name.potrace.svg" "$size")
    ours_score=
    if [ -n "$ours" ]; then ours_score=$(scored "$name" "$work/$name.tarvex.svg" "$size"); fi
    printf '%s %s %s %s %s %s\n' "${picture#"$clipart/"}" "$size" \
        "${ours_score:-0 0 0}" "${ours:-0 0}" "${theirs_score:-0 0 0}" "${theirs:-0 0}"
}

rows=$work/rows.txt
: >"$rows"
if [ $# -gt 0 ] && [ -f "$1" ]; then
    number=0
    for picture in "$@"; do
        number=$((number + 1))
        if size=$(make_mask "$picture" "$number"); then compare "$picture" "$number" "$size" >>"$rows"; fi
    done
else
    count=${1:-60}
    mapfile -t pictures < <(find "$clipart" -type f -name '*.png' ! -path '*/animals/*' ! -path '*/tools/*' \
        ! -path '*/signs_and_symbols/*' | sort | awk -F/ '{ name = $NF; sub("/[^/]*$", "") } ++seen[$0] <= 20 { print $0 "/" name }')
    step=$((${#pictures[@]} / count))
    for ((i = 0; i < count; ++i)); do
        for ((k = i * step; k < (i + 1) * step; ++k)); do
            if size=$(make_mask "${pictures[k]}" "$i" 2>/dev/null); then
                compare "${pictures[k]}" "$i" "$size" >>"$rows"
                break
            fi
        done
    done
fi

awk '
    function by_rank(values, n, part,    i) { i = int(part * (n - 1) + 0.5) + 1; return values[i] }
    function sorted(values, n,    i, j, v) {
        for (i = 2; i <= n; ++i) {
            v = values[i]
            for (j = i - 1; j >= 1 && values[j] > v; --j) values[j + 1] = values[j]
            values[j + 1] = v
        }
    }
    function shown(picture) { return length(picture) > 52 ? "..." substr(picture, length(picture) - 48) : picture }
    NR == 1 {
        printf "%-52s %11s | %7s %7s | %6s %6s | %7s %7s | %6s %6s\n", "", "", "IoU", "", "segm.", "", "ms", "", "MiB", ""
        printf "%-52s %11s | %7s %7s | %6s %6s | %7s %7s | %6s %6s\n", "picture", "pixels",
            "tarvex", "potrace", "tarvex", "potr.", "tarvex", "potrace", "tarvex", "potr."
    }
    {
        note = $4 > $3 ? "  INVERTED" : $5 == 0 ? "  NO RESULT" : ""
        printf "%-52s %11s | %7.4f %7.4f | %6d %6d | %7.1f %7.1f | %6.1f %6.1f%s\n", shown($1), $2, $3, $8, $5, $10,
            $6 * 1000, $11 * 1000, $7 / 1024, $12 / 1024, note
        ours[NR] = $3; theirs[NR] = $8
        worst[NR] = sprintf("%.4f %.4f %d %s%s", $3, $8, NR, $1, note)
        segments += $5; their_segments += $10
        seconds += $6; their_seconds += $11
        if ($7 > peak) peak = $7
        if ($12 > their_peak) their_peak = $12
        split($2, side, "x"); pixels += side[1] * side[2]
        inverted += $4 > $3; missing += $5 == 0
    }
    END {
        if (!NR) { print "no picture"; exit 1 }
        sorted(ours, NR); sorted(theirs, NR); sorted(worst, NR)
        printf "\n%d pictures, %.1f megapixels\n", NR, pixels / 1e6
        printf "%-28s %9s %9s\n", "", "tarvex", "potrace"
        printf "%-28s %9.4f %9.4f\n", "IoU, median", by_rank(ours, NR, 0.5), by_rank(theirs, NR, 0.5)
        printf "%-28s %9.4f %9.4f\n", "IoU, 10th percentile", by_rank(ours, NR, 0.1), by_rank(theirs, NR, 0.1)
        printf "%-28s %9.4f %9.4f\n", "IoU, worst", ours[1], theirs[1]
        printf "%-28s %9d %9d   ratio %.2f\n", "segments", segments, their_segments, segments / (their_segments ? their_segments : 1)
        printf "%-28s %9.2f %9.2f   ratio %.2f\n", "processor seconds", seconds, their_seconds, seconds / (their_seconds ? their_seconds : 1)
        printf "%-28s %9.1f %9.1f   ratio %.2f\n", "highest peak memory, MiB", peak / 1024, their_peak / 1024, peak / (their_peak ? their_peak : 1)
        printf "%-28s %9d\n%-28s %9d\n", "inverted", inverted, "no result", missing
        print "\nlowest IoU of tarvex (tarvex, potrace, row, picture):"
        for (i = 1; i <= 10 && i <= NR; ++i) print "  " worst[i]
    }
' "$rows"
