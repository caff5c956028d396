#!/usr/bin/env bash
# Renders heron.svg, our own drawing, to heron.png: the picture that the documentation traces.
# The committed heron.png came from librsvg 2.54; another version may smooth edges differently.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
rsvg-convert heron.svg --output heron.png
