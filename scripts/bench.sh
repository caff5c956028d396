#!/usr/bin/env bash
# Measures every hot path beside what a user would pick instead, and writes docs/benchmarks.md.
#
#   scripts/bench.sh                    all rows (some 20 minutes on two quiet cores)
#   scripts/bench.sh clipping tracing   only the rows whose names contain one of these words
#   scripts/bench.sh --list             the names of the rows
#   scripts/bench.sh --seconds 300 ...  for about so long: what does not fit is left out of the run
#   scripts/bench.sh --keep DIR ...     keeps Google Benchmark's files in DIR, and reads those that are there
#                                       for rows that are not run
#
# Installs the peers where they are missing and builds the `bench` preset. Times are processor time. A row that
# was not run keeps no figure, so a run of some rows writes to standard output instead of the document.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
export LC_ALL=C

for argument in "$@"; do
    if [ "$argument" = --list ] || [ "$argument" = --help ]; then
        exec python3 "$root/bench/report.py" "$root" "$@"
    fi
done
need_packages compare
build bench
exec python3 "$root/bench/report.py" "$root" "$@"
