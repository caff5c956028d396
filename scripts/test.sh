#!/usr/bin/env bash
# Builds everything and runs every test: installs the packages that takes first. Arguments are
# ctest's, such as -R NAME to run only the tests whose names match.
#
#   scripts/test.sh
#   scripts/test.sh -R Shaping
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

need_packages test
build dev
exec ctest --test-dir "$root/build/dev" --parallel "$(nproc)" --output-on-failure --no-tests=error "$@"
