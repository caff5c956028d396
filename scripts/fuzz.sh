#!/usr/bin/env bash
# Builds the fuzz targets with their sanitizers and runs each for some seconds over its saved inputs, as many at
# once as there are processors. Prints a line for each target; ends with 1 when one of them found something, whose
# input is kept.
#
#   scripts/fuzz.sh 60                every target for a minute
#   scripts/fuzz.sh 1200 clipper fit  these two for twenty minutes
#   scripts/fuzz.sh --repeatable 10   the same inputs in the same order at each run, as many as ten seconds allow
#
# A search goes another way each time, so it may find today what was there for long. What has to judge a change
# is repeatable instead: from the saved inputs only, at fixed addresses and without the operands of comparisons,
# among which there are addresses. It reaches less.
#
# New inputs stay in build/fuzz/corpus/TARGET, where the next run finds them; findings and logs are in build/fuzz.
# scripts/fuzz.sh --merge TARGET... adds to fuzz/corpus/TARGET those of the new inputs, small ones first, that
# reach what the saved ones do not.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage() {
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "${BASH_SOURCE[0]}" >&2
    exit 2
}

work=$root/build/fuzz
programs=$root/build/asan/fuzz

# The saved inputs of a target, if it has any.
saved_of() { if [ -d "$root/fuzz/corpus/$1" ]; then echo "$root/fuzz/corpus/$1"; fi; }

# One target for some seconds; its line says how many inputs it ran and how much of the program they reached.
fuzz_one() {
    local name=$1 status=0 runs reached saved=() found=$work/corpus/$1 launch=("$programs/$1")
    mapfile -t saved < <(saved_of "$name")
    if [ -n "$repeatable" ]; then
        found=$work/repeatable/$name
        rm -rf "$found"
        launch+=(-use_cmp=0)
        # In the order of their names: that of a directory is the file system's own.
        if [ "${#saved[@]}" -gt 0 ]; then
            launch+=("-seed_inputs=$(find "${saved[@]}" -type f | LC_ALL=C sort | paste -sd ,)")
            saved=()
        fi
        if [ "$repeatable" = wholly ]; then launch=(setarch --addr-no-randomize "${launch[@]}"); fi
    fi
    mkdir -p "$found"
    "${launch[@]}" -seed=1 -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$work/$name-" "$found" "${saved[@]}" >"$work/$name.log" 2>&1 </dev/null ||
        status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$name.log")
    reached=$(grep -o 'cov: [0-9]*' "$work/$name.log" | tail -n 1 || true)
    if [ "$status" -eq 0 ]; then
        printf '%-12s ok       %9s inputs  %s\n' "$name" "$runs" "$reached"
    else
        printf '%-12s FINDING  %s\n' "$name" "$(grep -m 1 -E '^broken:|ERROR:|runtime error:' "$work/$name.log" || true)"
        tail -n 40 "$work/$name.log" >&2
    fi
    return "$status"
}

merge_one() {
    local name=$1
    mkdir -p "$root/fuzz/corpus/$name" "$work/corpus/$name"
    "$programs/$name" -merge=1 -max_len=512 "$root/fuzz/corpus/$name" "$work/corpus/$name" >"$work/$name.log" 2>&1
    printf '%-12s %s inputs saved\n' "$name" "$(find "$root/fuzz/corpus/$name" -type f | wc -l)"
}

job=fuzz_one
repeatable=
if [ "${1-}" = --repeatable ]; then
    repeatable=wholly
    shift
fi
if [ "${1-}" = --merge ]; then
    job=merge_one
elif ! [[ ${1-} =~ ^[1-9][0-9]*$ ]]; then
    usage
fi
seconds=$1
shift

need_packages ci
build asan
mkdir -p "$work"
if [ $# -eq 0 ]; then
    mapfile -t targets < <(find "$programs" -maxdepth 1 -type f -executable -printf '%f\n' | sort)
else
    targets=("$@")
fi
for name in "${targets[@]}"; do
    if [ ! -x "$programs/$name" ]; then
        say "there is no target $name"
        exit 2
    fi
done

if [ -n "$repeatable" ] && ! setarch --addr-no-randomize true 2>/dev/null; then
    say "addresses cannot be fixed here: the inputs may differ from run to run"
    repeatable=nearly
fi

export -f fuzz_one merge_one saved_of
export root work programs seconds repeatable
# shellcheck disable=SC2016 # the inner shell expands it
if ! printf '%s\0' "${targets[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c "$job"' "$0" || exit 1'; then
    say "there are findings; their inputs and logs are in $work"
    exit 1
fi
