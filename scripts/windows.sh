#!/usr/bin/env bash
# Builds Tarvex.dll for Windows with MinGW-w64, installs it with its import library and headers into a
# folder, and runs what can be run of its tests under Wine. Installs the packages that takes first.
#
#   scripts/windows.sh x64          into build/windows-x64/prefix
#   scripts/windows.sh x86
#
# Wine runs 64-bit programs everywhere; 32-bit ones only where Debian's wine32 can be installed. Where it
# cannot, the x86 library is built and its exports are listed, and a line says what was left out.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

target=${1-}
case $target in
    x64) tool=x86_64-w64-mingw32 wine=/usr/lib/wine/wine64 ;;
    x86) tool=i686-w64-mingw32 wine=/usr/lib/wine/wine ;;
    *)
        sed -n '2,/^$/s/^# \{0,1\}//p' "$0" >&2
        exit 2
        ;;
esac

need_packages windows
preset=windows-$target
tree=$root/build/$preset
build "$preset"
cmake --install "$tree" --prefix "$tree/prefix" >/dev/null
printf "Tarvex.dll: %s bytes\n" "$(stat --format=%s "$tree/prefix/bin/Tarvex.dll")"

# The names that leave the DLL, without what tells the systems' spellings of one type apart: arguments.
"$tool-nm" --demangle "$tree/prefix/lib/libTarvex.dll.a" |
    sed -nE 's/^[0-9a-f]+ T _?(.*)$/\1/p' | sed -E 's/\(.*//' | LC_ALL=C sort -u >"$tree/exports.txt"
printf '%s exported names\n' "$(wc -l <"$tree/exports.txt")"
foreign=$(grep -v '^tarvex::' "$tree/exports.txt" || true)
if [ -n "$foreign" ]; then
    printf 'exported, but not in namespace tarvex:\n%s\n' "$foreign"
    exit 1
fi

if [ ! -x "$wine" ]; then
    say "no $wine here: the tests for $target are neither built nor run"
    exit 0
fi
export WINEDEBUG=-all WINEPREFIX=$tree/wine
ctest --test-dir "$tree" --output-on-failure --no-tests=error
