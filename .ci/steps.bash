# Sourced by .ci/run and .ci/full: named steps, of which the first failure ends the run.
source "$(dirname "${BASH_SOURCE[0]}")/../cmake/build.bash"
cd "$root"

# A compiler cache, where there is one, serves every clone on the machine.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

clock() { printf '\n== %02d:%02d == %s\n' $((SECONDS / 60)) $((SECONDS % 60)) "$1"; }

# step NAME COMMAND…
step() {
    clock "$1"
    ("${@:2}") </dev/null || { printf '\nFAILED: %s\n' "$1"; exit 1; }
}
