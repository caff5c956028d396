#!/usr/bin/env bash
# Makes the Debian packages libtarvex0, libtarvex-dev and tarvex, and checks them with lintian. Installs the
# packages that takes first. Prints the names of the files made.
#
#   scripts/package.sh                      into build/package
#   sudo apt install ./build/package/*.deb
#
#   scripts/package.sh --try    also installs them in a bare Debian system made for that, under
#                               build/package, and uses the program and the library there; only root can
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

case ${1-} in
    '' | --try) ;;
    *)
        sed -n '2,/^set /s/^# \{0,1\}//p' "$0" >&2
        exit 2
        ;;
esac

tree=$root/build/package

make_packages() {
    build package
    rm -f "$tree"/*.deb
    (cd "$tree" && cpack >cpack.log) || { cat "$tree/cpack.log" >&2 && return 1; }
    lintian --allow-root --fail-on error --tag-display-limit 0 "$tree"/*.deb >&2
    printf '%s\n' "$tree"/*.deb
}

# A system with nothing but what every Debian system has.
make_bare_system() {
    local system=$1
    rm -rf "$system"
    debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$system" >"$tree/debootstrap.log"
    cp /etc/resolv.conf "$system/etc/" 2>/dev/null || true
    echo force-unsafe-io >"$system/etc/dpkg/dpkg.cfg.d/quick" # it need not survive a power cut
    mkdir "$system/try"
    cp "$tree"/*.deb "$root/examples/heron.png" "$system/try/"
}

# Runs a script in the bare system's folder /try.
inside() { chroot "$1" env DEBIAN_FRONTEND=noninteractive LC_ALL=C sh -euc "cd /try; $2" >&2; }

# What is asked of the packages there. The consumer is compiled out here, with what the packages brought.
try_packages() {
    local system=$1
    # shellcheck disable=SC2016 # the shell in there expands it
    inside "$system" '
        dpkg --unpack ./*.deb
        apt-get -qq update
        apt-get -qq --yes --no-install-recommends --fix-broken install
        test "$(dpkg-query -W -f "\${db:Status-Status} " libtarvex0 libtarvex-dev tarvex)" = "installed installed installed "
        tarvex --version
        tarvex trace heron.png -o outlines.svg
        tarvex breakup heron.png -o columns.svg
        test -s outlines.svg -a -s columns.svg
        dpkg --verify libtarvex0 libtarvex-dev tarvex'
    # shellcheck disable=SC2046 # one word per flag
    g++ -std=c++20 "$root/tests/consumer/consumer.cpp" -o "$system/try/consumer" \
        $(PKG_CONFIG_PATH=$(dirname "$(find "$system/usr/lib" -name tarvex.pc)") pkg-config --cflags --libs tarvex)
    # shellcheck disable=SC2016 # the shell in there expands it
    inside "$system" '
        ./consumer >disc.path
        test -s disc.path
        apt-get -qq --yes purge libtarvex0
        test ! -e /usr/bin/tarvex'
}

need_packages package
make_packages
if [ "${1-}" = --try ]; then
    need_packages bare
    make_bare_system "$tree/bare"
    try_packages "$tree/bare"
    rm -rf "$tree/bare"
    say "the packages install and work on a bare system"
fi
