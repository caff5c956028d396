#!/usr/bin/env bash
# completions.sh FOLDER: what bash, and zsh and fish where they are installed, offer behind a command line.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
made=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/files"
cd "$folder/files"
touch drawing.svg 'two words.png'

# The line up to the cursor | words that are offered | words that are not
cases='
tarvex tr|trace transform|warp
tarvex trace --mo|--mode|--mm-width --tolerance
tarvex trace --mode |outline color centerline edges|--mode drawing.svg
tarvex trace --mode cent|centerline|color
tarvex trace --threshold |auto|0..255
tarvex trace |drawing.svg|outline
tarvex trace -o |drawing.svg|outline
tarvex warp drawing.svg --type b|bulge-top barrel|arch
tarvex shape |difference intersection xor union|trace
tarvex shape xor |drawing.svg|union
tarvex breakup drawing.svg --format=s|svg satin|json
'

# Each prints what its shell offers for the line, a candidate a line. They are called by these names.
# shellcheck disable=SC2317
offer_bash() {
    bash --norc --noprofile -c '
        . "$1"
        line=${2//=/ = }
        read -ra COMP_WORDS <<<"$line"
        if [[ $line == *" " ]]; then COMP_WORDS+=(""); fi
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        _tarvex 2>/dev/null
        printf "%s\n" "${COMPREPLY[@]}"' bash "$made/tarvex.bash" "$1"
}

# shellcheck disable=SC2317
offer_fish() {
    # shellcheck disable=SC2016 # fish expands it
    HOME=$folder fish --no-config -c 'source $argv[1]; complete -C $argv[2]' "$made/tarvex.fish" "$1" |
        sed 's/\t.*//; s/^.*=//'
}

# shellcheck disable=SC2317
offer_zsh() {
    if [ ! -e ../offered ]; then
        sed '/^$/d; s/|.*//' <<<"$cases" | HOME=$folder timeout 120 zsh -f "$here/offer.zsh" "$made" >../offered
    fi
    awk -F '\t' -v line="$1" '$1 == line { print $2 }' ../offered
}

failures=0
check() {
    local shell=$1 line offered absent word list
    while IFS='|' read -r line offered absent; do
        if [ -z "$line" ]; then continue; fi
        list=$("offer_$shell" "$line" || true)
        for word in $offered; do
            if ! grep -qxF -e "$word" <<<"$list"; then
                printf '%s does not offer %s for "%s", but: %s\n' "$shell" "$word" "$line" "${list//$'\n'/ }"
                failures=$((failures + 1))
            fi
        done
        for word in $absent; do
            if grep -qxF -e "$word" <<<"$list"; then
                printf '%s offers %s for "%s"\n' "$shell" "$word" "$line"
                failures=$((failures + 1))
            fi
        done
    done <<<"$cases"
}

for shell in bash zsh fish; do
    if command -v "$shell" >/dev/null; then check "$shell"; else echo "no $shell here"; fi
done
exit "$((failures > 0))"
