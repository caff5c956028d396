#!/usr/bin/env bash
# examples.sh PROGRAM PICTURE: every example of the program's help can be run, one after the other.
set -euo pipefail

picture=$(realpath "$2")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
ln -s "$(realpath "$1")" "$folder/tarvex"
PATH=$folder:$PATH
cd "$folder"
cp "$picture" picture.png

count=0
while read -r command; do
    printf '$ %s\n' "$command"
    bash -euo pipefail -c "$command" </dev/null
    count=$((count + 1))
done < <(tarvex --help | sed -n '/^Examples:/,$s/^  \(tarvex .*\)/\1/p')
[ "$count" -ge 5 ]
