# shellcheck shell=bash
# What the scripts share: finding the tree, installing Debian packages, configuring and building.
# Sourced, not run. Everything here talks on standard error, so that standard output stays the
# program's own.

root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

# The packages of a group and of the groups that it builds on.
packages_of() {
    local base
    base=$(awk -v group="$1" '$1 == group && $2 == ":" { print $3 }' "$root/scripts/packages.txt")
    if [ -n "$base" ]; then packages_of "$base"; fi
    awk -v group="$1" '$1 == group && $2 != ":" { print $2 }' "$root/scripts/packages.txt"
}

apt() {
    local -a command=(env DEBIAN_FRONTEND=noninteractive apt-get
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 -o Acquire::Retries=3 -qq "$@")
    if [ "$(id -u)" -ne 0 ]; then
        command=(sudo "${command[@]}")
    fi
    "${command[@]}" </dev/null >&2
}

# Installs what is missing of a group's packages; says so, and does nothing when nothing is missing.
need_packages() {
    local -a wanted missing=()
    local -A have=()
    local package status
    mapfile -t wanted < <(packages_of "$1")
    if ! command -v dpkg-query >/dev/null; then
        say "no Debian system; going on in the hope that the like of these is there: ${wanted[*]}"
        return 0
    fi
    while read -r package status; do
        if [ "$status" = installed ]; then have[$package]=1; fi
    done < <(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null)
    for package in "${wanted[@]}"; do
        if [ -z "${have[$package]-}" ]; then missing+=("$package"); fi
    done
    if [ "${#missing[@]}" -eq 0 ]; then return 0; fi

    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        say "these packages are missing, and only root can install them: ${missing[*]}"
        return 1
    fi
    say "installing ${missing[*]}"
    # A mirror in the middle of an update fails for a moment, so a second try is worth its time.
    local try
    for try in 1 2; do
        apt update || say "the package lists could not all be renewed"
        if apt --yes --no-install-recommends install "${missing[@]}"; then return 0; fi
        if [ "$try" -eq 1 ]; then sleep 5; fi
    done
    say "could not install ${missing[*]}"
    return 1
}

# Configures a preset unless that is done; CMake itself notices later changes to its own files.
# Further arguments are CMake's and configure anew.
configure() {
    local preset=$1 ninja=$root/build/$1/build.ninja
    shift
    if [ $# -eq 0 ] && [ "$ninja" -nt "$root/CMakePresets.json" ]; then return 0; fi
    say "configuring $preset"
    cmake -S "$root" --preset "$preset" "$@" </dev/null >&2
}

# Configures and builds a preset; silent when all is up to date. Two scripts that build the same
# preset at once do so one after the other.
build() {
    local preset=$1
    mkdir -p "$root/build"
    (
        flock 9
        configure "$@"
        cmake --build "$root/build/$preset" --parallel "$(nproc)" </dev/null 2>&1 |
            awk '!/no work to do|Re-checking globbed directories|ninja: Entering/ { print; fflush() }' >&2
    ) 9>"$root/build/.$preset.lock"
}
