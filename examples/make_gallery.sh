#!/usr/bin/env bash
# Runs each command once on the pictures of this folder and shows what came of it in docs/gallery/, and draws
# docs/breakup.png. Nothing but the program does it.
#
#   make_gallery.sh [PROGRAM [DOCS]]      build/dev/apps/tarvex/tarvex and docs by default
#
# In other DOCS it ends with 1 when the page that it wrote there is not the tree's.
set -euo pipefail
examples=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
program=$(realpath "${1:-$examples/../build/dev/apps/tarvex/tarvex}")
docs=$(realpath --canonicalize-missing "${2:-$examples/../docs}")
gallery=$docs/gallery
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$gallery"
rm -f "$gallery"/*.png
cp "$examples"/*.svg "$examples"/heron.png "$work"
cd "$work"

tarvex() { "$program" "$@"; }

# to_gallery FILE NAME: a drawing as a PNG file of the gallery's size; a picture as it is.
to_gallery() {
    if [[ $1 == *.svg ]]; then
        tarvex render "$1" -o "$gallery/$2.png" --width 480
    else
        cp "$1" "$gallery/$2.png"
    fi
}

# exhibit TITLE SOURCE RESULT WORDS...: runs `tarvex WORDS...` and shows SOURCE and RESULT side by side.
exhibit() {
    local title=$1 source=$2 result=$3 shown=
    shift 3
    tarvex "$@"
    to_gallery "$result" "${result%.*}"
    for word in "$@"; do
        [[ $word != *' '* ]] || word="'$word'"
        shown+=" $word"
    done
    local from=${source%.*}.png before=
    [[ $source == heron.png ]] && from=../../examples/heron.png
    [[ -z $source ]] || before="<img src=\"$from\" width=\"320\" alt=\"$source\">"
    cat <<END

## $title

    tarvex$shown

| ${source:-nothing but words} | ${result} |
|---|---|
| $before | <img src="${result%.*}.png" width="320" alt="$result"> |
END
}

write_page() {
    cat <<'END'
# Gallery

Every command once, on the drawings in [examples](../../examples), which were made for this project.
[make_gallery.sh](../../examples/make_gallery.sh) runs what is shown here and draws the results with
`tarvex render`.

The pictures that are traced come from the drawings, many files at once ([batches](../batches.md)):

    tarvex render cat.svg flower.svg harbour.svg letters.svg -o . --width 600
END
    exhibit 'Outlines' heron.png outlines.svg trace heron.png -o outlines.svg
    exhibit 'Centre lines' cat.png strokes.svg trace cat.png -o strokes.svg --mode centerline
    exhibit 'Regions of colour' harbour.png regions.svg trace harbour.png -o regions.svg --mode color --colors 12
    exhibit 'Edges' harbour.png edges.svg trace harbour.png -o edges.svg --mode edges
    exhibit 'Few colours' harbour.png few.png reduce harbour.png -o few.png --colors 8
    exhibit 'The region around a pixel' harbour.png hill.svg region harbour.png --seed 100,250 -o hill.svg
    exhibit 'Columns to stitch' letters.png columns.svg breakup letters.png -o columns.svg
    exhibit 'Turned in space' flower.png turned.svg transform flower.svg -o turned.svg --rotate 35,-40,20
    exhibit 'Bent' letters.png barrel.svg warp letters.svg -o barrel.svg --type barrel --amount 40%
    exhibit 'Combined' letters.png both.svg shape xor letters.svg barrel.svg -o both.svg
    exhibit 'Text' '' round.svg text 'Round and round it goes' -o round.svg --font 'DejaVu Serif' --bold --ellipse 200,140
    exhibit 'Drawn' flower.svg drawn.png render flower.svg -o drawn.png --width 480
    printf '\n## Measured\n\n    tarvex info cat.png both.svg\n\n'
    tarvex info cat.png both.svg 2>info.log | sed 's/^\(.\)/    \1/'
}

tarvex render cat.svg flower.svg harbour.svg letters.svg -o . --width 600 2>render.log
write_page >"$gallery/README.md"
for picture in cat flower harbour letters; do to_gallery "$picture.svg" "$picture"; done
tarvex breakup letters.svg -o "$docs/breakup.png"
diff "$examples/../docs/gallery/README.md" "$gallery/README.md"
