# Sourced by ./run, ./test and .ci/run: the packages that a build needs, and a build of which every failure says why.

set -Eeuo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }
fail() { say "$*"; exit 1; }

# What no step of its own reports. A step that explains its failure ends with `fail`, which does not come here.
trap 'say "$0: status $? from: $BASH_COMMAND"' ERR

processors() { nproc 2>/dev/null || getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2; }

# package_column NUMBER [ci]: that column and all behind it of packages.txt, for a build, or for CI as well.
package_column() {
    awk -v column="$1" -v marks="build ${2:-}" '
        /^[^#]/ && index(marks, $2) { for (i = 1; i < column; i++) sub(/^[^ ]+ +/, ""); print }' "$root/packages.txt"
}

# The presets build the desktop platform.
require_linux() {
    [ "$(uname -s)" = Linux ] ||
        fail "The desktop platform, the tool and the tests need Linux. The other libraries build here: cmake -B build && cmake --build build"
}

# require_packages [ci]: installs what packages.txt lists and this machine lacks. Calls apt-get only if something is missing.
require_packages() {
    local names missing
    if ! command -v dpkg-query >/dev/null; then
        require_build_tools
        return
    fi
    names=$(package_column 1 "$@" | awk '{ print $1 }')
    missing=$(missing_packages $names)
    [ -z "$missing" ] || install_packages $missing
}

missing_packages() {
    local known
    # Its status is non-zero when it does not know one of the packages.
    known=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
    printf '%s\n' "$@" | awk -v known="$known" '
        BEGIN { n = split(known, words); for (i = 1; i < n; i += 2) if (words[i] == "installed") have[words[i + 1]] = 1 }
        !($1 in have)'
}

install_packages() {
    local install="apt-get install -y --no-install-recommends $*" as_root=env
    command -v apt-get >/dev/null || fail "These packages are missing, and there is no apt-get to install them: $*"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "Packages are missing. As root, run: apt-get update && $install"
        as_root=sudo
    fi
    say "Installing: $*"
    $as_root apt-get update -qq >&2 </dev/null || say "The package lists could not be refreshed; trying the old ones."
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive $install >&2 </dev/null ||
        fail "These packages could not be installed; Debian 12 and later have them: $*"
}

# Where there is no dpkg, the configuration checks the libraries; without these programs it does not even begin.
require_build_tools() {
    local program absent=
    for program in cmake ninja; do
        command -v "$program" >/dev/null || absent="$absent $program"
    done
    command -v "${CXX:-c++}" >/dev/null || absent="$absent ${CXX:-c++}"
    [ -z "$absent" ] || { say "Not found:$absent"; say_what_a_build_needs; exit 1; }
}

say_what_a_build_needs() {
    say "A build needs these, in these versions or later:"
    package_column 3 | sed 's/^/  /' >&2
}

# configure PRESET: for the first time and after a changed preset.
configure() {
    local folder=$root/build/$1 log
    [ ! -e "$folder/configured" ] || [ "$root/CMakePresets.json" -nt "$folder/configured" ] || return 0
    mkdir -p "$folder" || fail "Builds go to $root/build, which cannot be written. Clone into a folder of your own."
    say "Configuring $1"
    log=$(cd "$root" && cmake --preset "$1" 2>&1) || {
        say "$log"
        command -v dpkg-query >/dev/null || say_what_a_build_needs
        fail "Configuring $1 failed."
    }
    touch "$folder/configured"
}

# build PRESET [TARGET…]: leaves the outcome in build/PRESET.
build() {
    local preset=$1
    configure "$preset"
    shift
    if [ -t 2 ]; then
        ninja -C "$root/build/$preset" "$@" >&2 # on a terminal it rewrites a single line
    else
        say "Building $preset"
        ninja -C "$root/build/$preset" "$@" 2>&1 | show_progress >&2
    fi || fail "Building $preset failed."
}

# Of ninja's status lines one every ten seconds, also while a single step takes longer; of its other lines all but two.
show_progress() {
    local line status progress='' shown=$SECONDS
    while true; do
        status=0
        IFS= read -r -t 10 line || status=$?
        if ((status > 128)); then
            : # ten seconds without a line
        elif ((status > 0)); then
            return 0
        elif [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
            progress="${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} steps done"
        elif [[ $line != 'ninja: Entering directory'* && $line != 'ninja: no work to do.' ]]; then
            printf '%s\n' "$line"
        fi
        if [ -n "$progress" ] && ((SECONDS - shown >= 10)); then
            printf '  %s\n' "$progress"
            shown=$SECONDS
        fi
    done
}
