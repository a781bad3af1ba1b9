#!/usr/bin/env bash
# tests/package/adopt.sh BUILD-DIR [WAY...]: foreign programs take the library in, in every way or in
# those given. The installed copy comes from BUILD-DIR and is moved after it was installed.
#
#   package     find_package: shared, static, the classes, loaded by name, inside a shared library
#   pkgconfig   the same with pkg-config, without exceptions and type information, and with -static
#   stdlibs     over other standard libraries than the library's own, where they are installed
#   meson       Meson, which asks pkg-config
#   folder      add_subdirectory
#   archive     FetchContent of an archive
#   repository  FetchContent of a git repository
#   refused     what configuration refuses, with a sentence
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
build=$(cd "$1" && pwd)
shift
[ $# -gt 0 ] || set -- package pkgconfig stdlibs meson folder archive repository refused
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
if command -v ccache >/dev/null; then
    export CCACHE_BASEDIR=$work CCACHE_NOHASHDIR=1 CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
fail() { echo "adopt: $*" >&2; exit 1; }
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "$*"; }; }

quietly cmake --install "$build" --prefix "$work/first"
mv "$work/first" "$work/moved"
prefix=$work/moved
lib=$(dirname "$(find "$prefix" -name libikelex.so)")
if grep -rlF -e "$work/first" -e "$build" "$prefix"; then
    fail "installed files name the build or the first prefix"
fi
[ "$(readelf -d "$lib/libikelex.so" | grep -c 'SONAME.*libikelex.so.1]')" -eq 1 ] || fail "soname"
export PKG_CONFIG_PATH=$lib/pkgconfig

# consumer NAME ARGUMENT...: the CMake project, configured so, built, and its programs run.
consumer() {
    local name=$1
    shift
    quietly cmake -S "$here/consumer" -B "$work/$name" -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@"
    quietly cmake --build "$work/$name" --target host host_static classes byname caller
    for program in host host_static classes caller; do
        quietly "$work/$name/$program" "$work"
    done
    ! ldd "$work/$name/host_static" "$work/$name/libplugin.so" | grep ikelex || fail "$name: not static"
}

# part NAME ARGUMENT...: the same as a part of the consumer's own build. Its installation and its
# programs' command lines stay its own.
part() {
    consumer "$@"
    quietly cmake --install "$work/$1" --prefix "$work/$1-installed"
    [ "$(cd "$work/$1-installed" && find . -type f)" = ./bin/host ] || fail "$1: installs more than its own"
    [ ! -e "$work/$1/CPackConfig.cmake" ] || fail "$1: makes packages"
    ! grep 'consumer/.*\.cpp' "$work/$1/compile_commands.json" | grep -e fast-math -e fp-contract ||
        fail "$1: flags leak"
}

# The tree without the history, as an archive has it.
tree() {
    mkdir "$work/tree"
    (cd "$top" && tar c --exclude-vcs CMakeLists.txt LICENSE CHANGELOG.md cmake ikelex platform) |
        tar x -C "$work/tree"
}

package() {
    consumer package -DCMAKE_PREFIX_PATH="$prefix"
    quietly "$work/package/byname" "$lib/libikelex.so.1"
}

# program NAME COMPILER [FLAG...]: a foreign program built so and run in a folder of its own.
program() {
    rm -rf "$work/run"
    mkdir "$work/run"
    # shellcheck disable=SC2046
    quietly "${@:2}" -std=c++11 -Wall -Wextra -Werror "$here/consumer/$1.cpp" \
        $(pkg-config --cflags --libs "${static[@]}" ikelex) -Wl,-rpath,"$lib" -o "$work/program"
    quietly "$work/program" "$work/run"
}

pkgconfig() {
    [ "$(pkg-config --modversion ikelex)" = 1.0.0 ] || fail "pkg-config: version"
    local static=()
    program host g++
    program classes g++
    static=(--static)
    program host g++ -fno-exceptions -fno-rtti
    program host g++ -static
}

# The same bytes, whatever the host's strings and streams are.
stdlibs() {
    local static=() compiler
    program host g++
    mv "$work/run" "$work/usual"
    for compiler in "g++ -D_GLIBCXX_USE_CXX11_ABI=0" "clang++ -stdlib=libc++"; do
        if echo '#include <string>' | $compiler -x c++ -fsyntax-only - 2>/dev/null; then
            # shellcheck disable=SC2086
            program host $compiler
            diff -r "$work/usual" "$work/run" || fail "other bytes: $compiler"
        else
            echo "skipped: no $compiler"
        fi
    done
}

meson() {
    quietly command meson setup "$work/meson" "$here/consumer" -Dcpp_link_args=-Wl,-rpath,"$lib"
    quietly ninja -C "$work/meson"
    quietly "$work/meson/host" "$work"
    quietly "$work/meson/classes"
}

folder() { part folder -DWAY=folder -DFROM="$top"; }

archive() {
    tree
    tar czf "$work/ikelex.tar.gz" -C "$work" tree
    part archive -DWAY=fetch "-DFROM=URL;file://$work/ikelex.tar.gz"
}

repository() {
    git clone -q "$top" "$work/clone"
    part repository -DWAY=fetch "-DFROM=GIT_REPOSITORY;file://$work/clone;GIT_TAG;$(git -C "$top" rev-parse HEAD)"
}

refused() {
    local row
    for row in "big-endian machine:--toolchain:$top/cmake/s390x.cmake" "must be portable:-DIKELEX_CPU_CAP=avx"; do
        # shellcheck disable=SC2046
        ! cmake -S "$top" -B "$work/refused" $(tr : ' ' <<<"${row#*:}") >"$work/log" 2>&1 || fail "not refused: $row"
        grep -q "${row%%:*}" "$work/log" || { cat "$work/log"; fail "refused without its sentence: $row"; }
        rm -r "$work/refused"
    done
}

for way in "$@"; do
    start=$SECONDS
    "$way"
    echo "$way: works, $((SECONDS - start)) s"
done
