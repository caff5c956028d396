#!/bin/bash
# Breaks up clip-art and tells how often that works, what is covered, and what it costs.
#
#     bench/breakup.sh PROGRAM [DIRECTORY [COUNT]]
#
# Takes COUNT pictures of DIRECTORY (the Debian package openclipart-png by default), for as long as
# BREAKUP_SECONDS allows, keeps those that are silhouettes (two tones: few pixels between dark and light, and
# neither tone nearly everything), and calls made of strokes those whose shape is mostly thin: at least four times as long, by half its outline, as
# wide. A shape counts as broken up when every part of it that matters (a hundredth of its area or more) is.
set -eu
program=$1
directory=${2:-/usr/share/openclipart/png}
count=${3:-400}
here=$(dirname "$0")
exec /usr/bin/python3 "$here/breakup_report.py" "$program" "$directory" "$count"
