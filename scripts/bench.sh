#!/usr/bin/env bash
# Measures every hot path beside what a user would pick instead, and writes docs/benchmarks.md.
#
#   scripts/bench.sh                    all rows (measures for at most 20 minutes)
#   scripts/bench.sh clipping tracing   only the rows whose names contain one of these words: these are printed,
#                                       and the document stays as it is
#   scripts/bench.sh --list             the names of the rows
#   scripts/bench.sh --seconds 300 ...  starts no benchmark after so long (1140): rows that remain have no figure
#   scripts/bench.sh --longest 90 ...   gives each benchmark so many seconds by the clock (60)
#   scripts/bench.sh --keep DIR ...     keeps Google Benchmark's files in DIR, and measures nothing again that is
#                                       there already
#
# Installs the peers where they are missing and builds the `bench` preset. Times are processor time. With
# --keep the document may be put together from several runs, some of them of some rows only; it then tells their
# number, limits and loads, and which rows have a time and their peer's from different runs.
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
