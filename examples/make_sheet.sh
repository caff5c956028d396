#!/usr/bin/env bash
# Draws docs/geometry.png by the example geometry_sheet, which a build has made (its folder is the first
# argument, build/dev by default).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
"${1:-build/dev}/examples/geometry_sheet" | rsvg-convert --output docs/geometry.png
