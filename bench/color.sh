#!/usr/bin/env bash
# Tells how good reductions and traces in colour are, beside what else is at hand, as the tables of
# docs/colour.md.
#
#   bench/color.sh             all three tables
#   bench/color.sh palette     which flat colours of 60 pictures the palette has
#   bench/color.sh error       the error of reductions of pictures of many colours, beside pngquant's
#   bench/color.sh trace       ten traces, beside pngquant and potrace for each of its colours
#
# The pictures are of Debian's openclipart-png. Traces are of 12 colours at most and are drawn by rsvg-convert:
# on white at the picture's size for the mean difference per channel, on black and on magenta at one and three
# times that size to see whether the ground shows through. TARVEX names another program to measure.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib.sh"
export LC_ALL=C

need_packages compare
if [ -z "${TARVEX:-}" ] || [ -z "${TOOLS:-}" ]; then build bench; fi
tarvex=${TARVEX:-$root/build/bench/apps/tarvex/tarvex}
tools=${TOOLS:-$root/build/bench/bench}
clipart=/usr/share/openclipart/png
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# flat PICTURE OPTION...: flat colours of the picture and how many of them a reduction has.
flat() {
    "$tarvex" reduce "$@" -o "$work/reduced.png" 2>/dev/null && "$tools/color_compare" flat "$1" "$work/reduced.png"
}

palette_table() {
    local picture wanted found apart pictures=0 all=0 has=0 incomplete=0 has_apart=0
    while read -r picture; do
        read -r wanted found < <(flat "$picture" --colors 16) || continue
        read -r wanted apart < <(flat "$picture" --colors 64 --level=-23)
        pictures=$((pictures + 1)) all=$((all + wanted)) has=$((has + found)) has_apart=$((has_apart + apart))
        if [ "$found" -lt "$wanted" ]; then
            incomplete=$((incomplete + 1))
            say "$((wanted - found)) of $wanted missing: ${picture#"$clipart/"}"
        fi
    done < <(find "$clipart" -type f -name '*.png' ! -path '*/shapes/*' -size -200k | sort | awk 'NR % 22 == 5' | head -n 60)
    echo "flat colours over 1%: $all in $pictures pictures, $has in the palette; $incomplete pictures miss some"
    echo "with --colors 64 --level -23: $has_apart in the palette"
}

error_table() {
    local picture number=0
    echo "| picture | tarvex | pngquant |"
    echo "|---|---|---|"
    for picture in "$root/examples/heron.png" $(find "$clipart/unsorted" "$clipart/animals" "$clipart/plants" "$clipart/food" \
        -type f -name '*.png' -size +60k -size -400k | sort); do
        if [ "$number" -eq 8 ]; then break; fi
        if [ "$("$tools/color_compare" colors "$picture")" -lt 10000 ]; then continue; fi
        number=$((number + 1))
        "$tarvex" reduce "$picture" -o "$work/ours.png" --colors 8
        pngquant --nofs --force --output "$work/theirs.png" 8 -- "$picture"
        echo "| ${picture##*/} | $("$tools/color_compare" error "$picture" "$work/ours.png") | $("$tools/color_compare" error "$picture" "$work/theirs.png") |"
    done
}

# peer PICTURE OUT: each colour of pngquant's traced by itself, one over the other.
peer() {
    local size number color
    pngquant --nofs --force --output "$work/few.png" 12 -- "$1"
    rm -f "$work"/mask*
    size=
    {
        while read -r number color; do
            potrace --svg --flat "$work/mask$number.pbm" -o "$work/mask.svg"
            if [ -z "$size" ]; then
                size=yes
                sed -n '/<svg/,/>/p' "$work/mask.svg"
            fi
            sed -n '/<g /,/<\/g>/p' "$work/mask.svg" | sed "s/fill=\"#000000\"/fill=\"$color\"/"
        done < <("$tools/color_compare" masks "$work/few.png" "$work/mask")
        echo '</svg>'
    } >"$2"
}

# scored PICTURE DRAWING: the mean difference, paths and bytes; then the pixels that the ground shows through, and
# how strongly, at the worst of both sizes.
scored() {
    local width height scale ground
    read -r width height < <(file -b "$1" | sed 's/.* \([0-9]*\) x \([0-9]*\),.*/\1 \2/')
    draw() { rsvg-convert --width "$((width * $2))" --height "$((height * $2))" --background-color "$1" "$3" -o "$work/$1.png"; }
    draw white 1 "$2"
    printf '%s %s %s | ' "$("$tools/color_compare" difference "$1" "$work/white.png")" "$(grep -c '<path' "$2")" "$(wc -c <"$2")"
    for scale in 1 3; do
        for ground in black magenta; do draw "$ground" "$scale" "$2"; done
        "$tools/color_compare" seams "$1" "$work/black.png" "$work/magenta.png"
    done | tee "$work/seams" | awk '$1 > pixels { pixels = $1 } $2 > worst { worst = $2 } END { printf "%d (%d)", pixels, worst }'
}

trace_table() {
    local name picture row
    echo "| picture | layers | seams | \`--cutout\` | seams | pngquant + potrace | seams |"
    echo "|---|---|---|---|---|---|---|"
    for name in animals/red-eye_frog_mirko_maisc_01 computer/switch_hp_nicolas_c1 food/pizza_cheese_bw \
        office/desk_lamp_gerald_g._01 office/handshake_01 food/breads_and_carbs/potato_nicu_buculei_01 \
        office/cross_hand_drawn_linda_k_01 office/telephone/telephone_lutte_incendi_01 people/car_ride_ganson \
        unsorted/sapone_liquido_architett_01; do
        picture=$clipart/$name.png
        "$tarvex" trace --mode color --colors 12 "$picture" -o "$work/layers.svg"
        "$tarvex" trace --mode color --colors 12 --cutout "$picture" -o "$work/tiles.svg"
        peer "$picture" "$work/peer.svg"
        row="| ${name##*/} | $(scored "$picture" "$work/layers.svg")"
        say "${name##*/}, layers: opaque pixels at the edge of the opaque part: $(awk '{ printf "%d (%d) ", $3, $4 }' "$work/seams")"
        echo "$row | $(scored "$picture" "$work/tiles.svg") | $(scored "$picture" "$work/peer.svg") |"
    done
}

case ${1:-all} in
    palette | error | trace) "${1}_table" ;;
    all)
        palette_table
        error_table
        trace_table
        ;;
    *)
        say "no such table: $1"
        exit 2
        ;;
esac
