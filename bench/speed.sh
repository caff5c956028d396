#!/usr/bin/env bash
# Times `tarvex trace` against potrace on large made pictures, and shows how the time grows with the
# picture: each size has four times the pixels of the one before, so a growth of 4 is linear.
#
#   bench/speed.sh                      all kinds at 1000, 2000 and 4000 pixels a side
#   bench/speed.sh "blobs comb" "1000"  these kinds and sizes (bench/make_pictures.cpp names the kinds)
#
# Times are processor time of the whole program, reading and writing included; memory is its peak.
# A run longer than LIMIT seconds (120) is ended and shown as "-". TARVEX names another program to
# measure; TARVEX_OPTIONS are further options for `tarvex trace`.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib.sh"
export LC_ALL=C

need_packages compare
build bench
tarvex=${TARVEX:-$root/build/bench/apps/tarvex/tarvex}
tools=$root/build/bench/bench
limit=${LIMIT:-120}
read -r -a kinds <<<"${1:-blobs noise comb rings spiral checkerboard}"
read -r -a sizes <<<"${2:-1000 2000 4000}"
read -r -a options <<<"${TARVEX_OPTIONS:-}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measured COMMAND...: "seconds MiB" of the command, or dashes when it fails.
measured() {
    if timeout "$limit" "$tools/measure" "$work/took" "$@" </dev/null >"$work/log" 2>&1; then
        awk '{ printf "%.3f %.0f\n", $2, $3 / 1024 }' "$work/took"
    else
        if [ -s "$work/log" ]; then say "$(tail -n 1 "$work/log")"; fi
        echo "- -"
    fi
}

printf '%-13s %5s | %8s %7s %6s | %8s %7s %6s | %s\n' kind side tarvex growth MiB potrace growth MiB "time ratio"
for kind in "${kinds[@]}"; do
    before=- before_theirs=-
    for size in "${sizes[@]}"; do
        "$tools/make_pictures" "$kind" "$size" "$work/picture.pbm"
        read -r ours memory < <(measured "$tarvex" trace "$work/picture.pbm" -o "$work/out.svg" "${options[@]}")
        read -r theirs their_memory < <(measured potrace -s "$work/picture.pbm" -o "$work/out.svg")
        awk -v row="$(printf '%-13s %5s' "$kind" "$size")" -v a="$ours" -v am="$memory" -v ab="$before" \
            -v b="$theirs" -v bm="$their_memory" -v bb="$before_theirs" '
            function ratio(x, y) { return x == "-" || y == "-" || y == 0 ? "-" : sprintf("%.2f", x / y) }
            BEGIN { printf "%s | %8s %7s %6s | %8s %7s %6s | %s\n", row, a, ratio(a, ab), am, b, ratio(b, bb), bm, ratio(a, b) }'
        before=$ours before_theirs=$theirs
    done
done
