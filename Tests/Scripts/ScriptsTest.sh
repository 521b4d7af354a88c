#!/usr/bin/env bash
# ScriptsTest.sh ROOT: ./run and ./test in a small checkout of their own, on machines that lack something. Each case sees only
# the programs that it names, real or fake. Whatever goes wrong, the scripts end with a status and the reason.
set -euo pipefail
root=$1
work=$(mktemp -d)
chmod 755 "$work"
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
passed=0 failed=0

# A checkout with the real scripts and a project of one source.
new_case() {
    name=$1
    checkout=$work/$((passed + failed))
    bin=$checkout/bin
    mkdir -p "$checkout/cmake" "$bin"
    cp "$root/run" "$root/test" "$root/packages.txt" "$checkout"
    cp "$root/cmake/build.bash" "$checkout/cmake"
    cat >"$checkout/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(Sandbox LANGUAGES CXX)
add_executable(corvantile_cli main.cpp)
set_target_properties(corvantile_cli PROPERTIES OUTPUT_NAME Tools/corvantile/corvantile)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/Tools/corvantile)
CMAKE
    cat >"$checkout/CMakePresets.json" <<'JSON'
{"version": 6, "configurePresets": [
  {"name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/build/release"},
  {"name": "dev", "inherits": "release", "binaryDir": "${sourceDir}/build/dev"}]}
JSON
    echo '#include <cstdio>
int main(int argc, char** argv) { std::puts(argc > 1 ? argv[1] : "the tour"); }' >"$checkout/main.cpp"
    real bash env awk sed cat mkdir touch dirname uname id getconf
}

# real PROGRAM…: the machine's own, by links. fake PROGRAM TEXT: a script of that text, which replaces a link and never
# writes through it.
real() { for program in "$@"; do ln -s "$(command -v "$program")" "$bin/$program"; done; }
fake() {
    printf '#!%s\n%s\n' "$(command -v bash)" "$2" >"$work/fake"
    chmod +x "$work/fake"
    mv -f "$work/fake" "$bin/$1"
}
compiler() { real cmake ninja c++ as ld; }

# Debian's query where all packages are installed but these: it fails if it is asked for one of them.
packages_but() {
    fake dpkg-query "for name in $(awk '/^[^#]/ { print $1 }' "$root/packages.txt" | grep -vxF "$(printf '%s\n' "$@")" | tr '\n' ' ')
do echo installed \$name; done
exit $#"
}

# A case on a machine that has everything.
complete_case() {
    new_case "$1"
    packages_but
    compiler
}

# expect STATUS TEXT… -- COMMAND…: the command ends so, and says all these texts, * being anything; of those behind ! none.
expect() {
    local wanted=$1 status=0 texts=() text problems=
    shift
    while [ "$1" != -- ]; do texts+=("$1"); shift; done
    shift
    said=$(cd "$checkout" && env -i PATH="$bin" HOME="$checkout" "$@" </dev/null 2>&1) || status=$?
    [ "$status" -eq "$wanted" ] || problems="  status $status instead of $wanted"$'\n'
    for text in "${texts[@]}"; do
        # shellcheck disable=SC2053
        case $text in
        !*) [[ $said != *${text#!}* ]] || problems+="  it says: ${text#!}"$'\n' ;;
        *) [[ $said == *$text* ]] || problems+="  it does not say: $text"$'\n' ;;
        esac
    done
    if [ -z "$problems" ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAILED: %s\n%s%s\n' "$name" "$problems" "${said:-(silence)}"
    fi
}

complete_case 'all is there: the tool is built and run, arguments are passed on'
expect 0 'Configuring release' 'Building release' 'hello' -- ./run hello

new_case 'packages are missing, neither root nor sudo: one line with the command'
packages_but g++ libasio-dev libssl-dev
fake apt-get 'echo never called; exit 1'
fake id 'echo 1000'
expect 1 'As root, run: apt-get update && apt-get install -y --no-install-recommends g++ libasio-dev libssl-dev' $'!\n' -- ./run

new_case 'packages are missing, sudo is there: it is used'
packages_but ccache
fake apt-get 'echo "apt-get $*"'
fake sudo 'echo "sudo $*"; exec "$@"'
fake id 'echo 1000'
compiler
expect 0 'sudo apt-get update' 'sudo env * apt-get install -y --no-install-recommends ccache' 'the tour' -- ./run

new_case 'packages cannot be installed'
packages_but g++ libssl-dev
fake id 'echo 0'
fake apt-get 'echo "E: no network"; exit 100'
expect 1 'lists could not be refreshed' 'E: no network' 'could not be installed' 'g++' -- ./test

new_case 'no apt-get'
packages_but g++ libssl-dev
expect 1 'no apt-get' 'libssl-dev' -- ./test

new_case 'no Debian: what is wanted has the names of libraries'
real cmake
expect 1 'Not found: ninja c++' 'CMake 3.25' 'OpenSSL 3.0' 'g++ 12 or clang++ 14' '!libssl-dev' -- ./run

new_case 'no Debian, and a library is missing: the reason and what is wanted'
compiler
echo 'find_package(NoSuchLibrary 1.0 REQUIRED)' >>"$checkout/CMakeLists.txt"
expect 1 'NoSuchLibrary' 'SQLite 3.38' 'Configuring dev failed.' -- ./test

new_case 'another system'
fake uname 'echo Darwin'
expect 1 'need Linux' 'cmake -B build && cmake --build build' -- ./run

complete_case 'the compiler does not exist'
expect 1 'no-such-compiler' 'Configuring release failed.' -- CXX=no-such-compiler ./run

complete_case 'a source does not compile: the compiler says why'
echo 'int main() { return nothing; }' >"$checkout/main.cpp"
expect 1 "main.cpp:1*nothing" 'Building dev failed.' -- ./test

complete_case 'a long build tells how far it is'
fake ninja 'for i in 1 2 3; do echo "[$i/3] Building"; done; exec sleep 0.1'
real sleep
# Ten seconds pass at once.
sed -i 's/-t 10 line/-t 0.05 line/; s/>= 10/>= 0/' "$checkout/cmake/build.bash"
fake cmake 'exit 0'
expect 127 '3 of 3 steps done' -- ./run

complete_case 'without nproc the tests run'
fake ctest 'echo "ctest $*"'
expect 0 '--parallel' '-R Router' -- ./test -R Router

complete_case 'a checkout that cannot be written'
chmod 555 "$checkout"
as_nobody=()
[ "$(id -u)" -ne 0 ] || { real setpriv; as_nobody=(setpriv --reuid=65534 --clear-groups); }
expect 1 'cannot be written' -- "${as_nobody[@]}" ./run

printf '%s passed, %s failed\n' "$passed" "$failed"
[ "$failed" -eq 0 ]
