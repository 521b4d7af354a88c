# Sourced by ./run, ./test and .ci/run: the packages that a build needs, and a build that is quiet unless it fails.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }

# require_packages [ci]: installs what packages.txt lists and this machine lacks. Calls apt only if something is missing.
require_packages() {
    local wanted missing as_root=()
    wanted=$(awk -v marks="${1:-}" '/^[^#]/ && ($2 == "" || $2 == marks) { print $1 }' "$root/packages.txt")
    if ! command -v dpkg-query >/dev/null; then
        command -v cmake >/dev/null && command -v ninja >/dev/null && return
        say "This machine has no Debian package tools. Install what these packages hold, then try again:" $wanted
        return 1
    fi
    missing=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' $wanted 2>/dev/null |
        awk -v wanted="$wanted" '$1 == "installed" { have[$2] = 1 }
            END { n = split(wanted, names); for (i = 1; i <= n; i++) if (!(names[i] in have)) print names[i] }')
    [ -n "$missing" ] || return 0
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    if ! command -v apt-get >/dev/null || { [ ${#as_root[@]} -gt 0 ] && ! command -v sudo >/dev/null; }; then
        say "Cannot install packages here. Please install, then try again:" $missing
        return 1
    fi
    say "Installing:" $missing
    "${as_root[@]}" apt-get update -qq >&2 || say "The package lists could not be refreshed; going on with the old ones."
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends $missing >&2 </dev/null || {
        say "These packages could not be installed:" $missing
        return 1
    }
}

# build PRESET [TARGET…]: leaves the outcome in build/PRESET. Configures only for the first time and after a changed preset.
build() {
    local preset=$1 folder=$root/build/$1 stamp=$root/build/$1/configured log
    shift
    if [ ! -e "$stamp" ] || [ "$root/CMakePresets.json" -nt "$stamp" ]; then
        say "Configuring $preset"
        mkdir -p "$folder"
        log=$(cd "$root" && cmake --preset "$preset" 2>&1) || { say "$log"; return 1; }
        touch "$stamp"
    fi
    if [ -t 2 ]; then
        ninja -C "$folder" "$@" >&2   # on a terminal it rewrites a single line
    else
        say "Building $preset"
        ninja -C "$folder" --quiet "$@" 2>&1 | sed '/^ninja: no work to do\.$/d' >&2
    fi
}
