#!/usr/bin/env bash
# Runs the tarvex program: installs the packages it needs, builds it when it is out of date, then
# hands it the arguments. The exit status is the program's; what installing and building have to say
# goes to standard error, and nothing is said when there is nothing to do.
#
#   scripts/run.sh trace picture.png -o outlines.svg
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

need_packages build
build program
exec "$root/build/program/apps/tarvex/tarvex" "$@"
