#!/usr/bin/env bash
# Draws docs/centerlines.png: handwriting, a technical drawing and the same drawing as scanned, each beside its
# centre lines. The program is the first argument (build/dev/apps/tarvex/tarvex by default). Needs rsvg-convert,
# ImageMagick's convert and the script font Z003 (fonts-urw-base35).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
program=${1:-build/dev/apps/tarvex/tarvex}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat > "$work/writing.svg" <<'SVG'
<svg xmlns="http://www.w3.org/2000/svg" width="640" height="300" viewBox="0 0 640 300">
<rect width="640" height="300" fill="#fff"/>
<g font-family="Z003" font-size="92"><text x="20" y="105">Quickly jotted</text><text x="40" y="220">lines &amp; loops</text></g>
</svg>
SVG
cat > "$work/drawing.svg" <<'SVG'
<svg xmlns="http://www.w3.org/2000/svg" width="640" height="300" viewBox="0 0 640 300">
<rect width="640" height="300" fill="#fff"/>
<g fill="none" stroke="#000" stroke-width="5" stroke-linecap="round" stroke-linejoin="round">
<rect x="40" y="50" width="220" height="190"/><circle cx="150" cy="145" r="62"/>
<path d="M20 145H280M150 30V265M40 50L260 240"/>
<path d="M320 60L600 165M320 165L600 60M320 215C400 130 470 290 600 205M360 270H610M430 270V190M520 270V180"/>
</g></svg>
SVG
rsvg-convert "$work/writing.svg" -o "$work/writing.png"
rsvg-convert "$work/drawing.svg" -o "$work/drawing.png"
convert "$work/drawing.png" -colorspace Gray -background white -rotate 4 -gravity center -extent 640x300 \
  -blur 0x1.2 -level 0,100% +level 12%,92% -seed 5 -attenuate 0.25 +noise Gaussian "$work/scan.png"

for name in writing drawing scan; do
  "$program" trace "$work/$name.png" -o "$work/$name.lines.svg" --mode centerline
  printf '%s: %s strokes and dots\n' "$name" "$(grep -c '<path\|<circle' "$work/$name.lines.svg")"
  # Strokes pale, their middles thin over them.
  sed -e 's/stroke="#000"/stroke="#bcd"/; s/fill="#000"/fill="#bcd"/' "$work/$name.lines.svg" |
    sed -e 's|</g>||; s|</svg>||' > "$work/$name.sheet.svg"
  grep '<path' "$work/$name.lines.svg" | sed -e 's/stroke-width="[^"]*"/stroke="#c00" stroke-width="1.2"/' \
    >> "$work/$name.sheet.svg"
  printf '</g></svg>\n' >> "$work/$name.sheet.svg"
  rsvg-convert --background-color white "$work/$name.sheet.svg" -o "$work/$name.traced.png"
  convert "$work/$name.png" "$work/$name.traced.png" +append "$work/$name.row.png"
done
convert "$work"/{writing,drawing,scan}.row.png -append -colors 32 -strip docs/centerlines.png
