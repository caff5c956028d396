#!/usr/bin/env bash
# Builds Tarvex.dll for Windows with MinGW-w64, installs it with its import library and headers into a
# folder, holds its exports against the list in the tree, and runs its tests and the host example under
# Wine, without a display. Installs the packages that takes first.
#
#   scripts/windows.sh x64          into build/windows-x64/prefix
#   scripts/windows.sh x86
#
# Debian's 32-bit Wine is of another architecture than the machine. It is unpacked into build/wine32 instead
# of being installed, so no package of the machine's changes. Where it cannot be had or does not run, the
# library's exports and size are still checked, and a line says what was left out; for x64 that is a failure.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage() {
    sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//p}' "$0" >&2
    exit 2
}

target=${1-}
case $target in
    x64) tool=x86_64-w64-mingw32 ;;
    x86) tool=i686-w64-mingw32 ;;
    *) usage ;;
esac
if [ $# -gt 1 ]; then usage; fi

wine32=$root/build/wine32

# The packages of i386 that wine32 needs, beside the machine's own: apt keeps a state of its own for them.
unpack_wine32() {
    if [ -e "$wine32/complete" ]; then return 0; fi
    local state=$wine32/apt package
    local -a options=(-o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=root
        -o Dir::State::Lists="$state/lists" -o Dir::State::status=/dev/null -o Dir::Cache="$state"
        -o Dir::Cache::archives="$state/archives")
    mkdir -p "$state/lists/partial" "$state/archives/partial"
    apt "${options[@]}" update || say "the package lists could not all be read"
    apt "${options[@]}" --yes --no-install-recommends --download-only install wine32 || return 1
    for package in "$state"/archives/*.deb; do dpkg -x "$package" "$wine32" || return 1; done
    rm -rf "$state" "$wine32"/usr/lib/i386-linux-gnu/wine/x86_64-windows
    touch "$wine32/complete"
}

# write_runner FILE LOADER PREFIX LINE...: a program that runs Windows' programs without a word of Wine's own.
write_runner() {
    local file=$1 loader=$2 prefix=$3
    shift 3
    {
        printf '#!/bin/sh\n'
        printf "export WINEDEBUG=-all WINEDLLOVERRIDES='winemenubuilder.exe,mscoree,mshtml='\n"
        printf "export WINEPREFIX='%s'\n" "$prefix"
        printf '%s\n' "$@"
        printf "exec '%s' \"\$@\"\n" "$loader"
    } >"$file"
    chmod +x "$file"
}

need_packages windows
preset=windows-$target
tree=$root/build/$preset
mkdir -p "$tree"
runner=$tree/run
server=
if [ "$target" = x64 ]; then
    server=/usr/lib/wine/wineserver64
    write_runner "$runner" /usr/lib/wine/wine64 "$tree/wine"
elif need_packages wine32 && unpack_wine32; then
    libraries=$wine32/usr/lib/i386-linux-gnu
    server=$wine32/usr/lib/wine/wineserver32
    # Wine's user32 needs a zlib1.dll that its package leaves outside of Wine's own folders.
    write_runner "$runner" "$wine32/usr/lib/wine/wine" "$tree/wine" \
        "export WINEARCH=win32 WINESERVER='$server' LD_LIBRARY_PATH='$libraries:$wine32/lib/i386-linux-gnu'" \
        "export WINEPATH='Z:${wine32//\//\\}\\usr\\i686-w64-mingw32\\lib'"
fi

# stop_wine: ends what Wine keeps running in the prefix for a while, which holds on to our output.
stop_wine() {
    if [ -n "$server" ]; then WINEPREFIX=$tree/wine "$server" -k || true; fi
}
trap stop_wine EXIT

emulator=
if [ -n "$server" ] && "$runner" cmd /c exit >/dev/null 2>&1; then emulator=$runner; fi
build "$preset" -DCMAKE_CROSSCOMPILING_EMULATOR="$emulator"
cmake --install "$tree" --prefix "$tree/prefix" >/dev/null
printf 'Tarvex.dll for %s: %s bytes\n' "$target" "$(stat --format=%s "$tree/prefix/bin/Tarvex.dll")"
(cd "$tree" && cmake -DLIBRARY="$tree/prefix/bin/Tarvex.dll" -DOBJDUMP="$tool-objdump" -P "$root/cmake/exports.cmake")

if [ -z "$emulator" ]; then
    say "Wine for $target cannot be had here or does not run: nothing that was built for it was run"
    if [ "$target" = x64 ]; then exit 1; fi
else
    ctest --test-dir "$tree" --parallel "$(nproc)" --output-on-failure --no-tests=error
fi
