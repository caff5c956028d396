#!/usr/bin/env bash
# Draws docs/overview.png, the README's picture of what each command makes of the heron. Needs rsvg-convert.
#
#   examples/make_overview.sh docs/overview.png
set -euo pipefail

root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$(realpath -m "${1:?name the picture to write}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tarvex() { "$root/scripts/run.sh" "$@"; }
cp "$root/examples/heron.png" "$root/examples/heron.svg" "$work"
cd "$work"

tarvex trace heron.png -o outlines.svg
tarvex trace heron.png -o regions.svg --mode color --colors 4
tarvex trace heron.png -o strokes.svg --mode centerline
tarvex trace heron.png -o edges.svg --mode edges
tarvex breakup heron.png -o columns.svg
tarvex text 'Tarvex' -o plain.svg --size 150 --bold --color '#1c5d7a'
tarvex transform plain.svg -o moved.svg --translate 20,150
tarvex shape xor outlines.svg moved.svg -o both.svg
tarvex text 'all the way round and ' -o round.svg --size 62 --ellipse 190,120 --color '#1c5d7a'
tarvex warp heron.svg -o arch.svg --type arch --amount 30%
tarvex transform heron.svg -o turned.svg --rotate 25,35,10
tarvex reduce heron.png -o reduced.png --colors 3

# Each tile is a picture over its command.
columns=5 wide=180 high=150
tiles=(
    'outlines.svg|trace' 'regions.svg|trace --mode color' 'strokes.svg|trace --mode centerline'
    'edges.svg|trace --mode edges' 'columns.svg|breakup'
    'both.svg|shape xor' 'round.svg|text --ellipse' 'arch.svg|warp --type arch'
    'turned.svg|transform --rotate' 'reduced.png|reduce --colors 3'
)
rows=$(((${#tiles[@]} + columns - 1) / columns))
{
    printf '<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d">\n' \
        $((columns * wide)) $((rows * high))
    printf '<rect width="100%%" height="100%%" fill="#fff"/>\n'
    for i in "${!tiles[@]}"; do
        file=${tiles[i]%%|*}
        column=$((i % columns)) row=$((i / columns))
        x=$((column * wide)) y=$((row * high))
        if [[ $file == *.svg ]]; then
            rsvg-convert --width 480 --keep-aspect-ratio "$file" -o "$i.png"
        else
            cp "$file" "$i.png"
        fi
        printf '<image href="%d.png" x="%d" y="%d" width="%d" height="%d"/>\n' \
            "$i" $((x + 8)) $((y + 4)) $((wide - 16)) $((high - 30))
        printf '<text x="%d" y="%d" font-family="DejaVu Sans" font-size="11" text-anchor="middle">%s</text>\n' \
            $((x + wide / 2)) $((y + high - 10)) "${tiles[i]#*|}"
    done
    printf '</svg>\n'
} >sheet.svg
rsvg-convert sheet.svg -o "$out"
