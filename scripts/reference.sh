#!/usr/bin/env bash
# Writes the reference manual of the public headers into build/reference/html, by Doxygen, and fails when
# Doxygen has a warning. Installs the packages that takes first.
#
#   scripts/reference.sh && xdg-open build/reference/html/index.html
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

need_packages reference
cd "$root"
rm -rf build/reference
mkdir -p build/reference
doxygen docs/Doxyfile
printf '%s\n' build/reference/html/index.html
