#!/usr/bin/env bash
# tests/package/stdlibs.sh BUILD-DIR: one host built over the shared libraries with other standard
# libraries than theirs writes the same bytes. A missing compiler or library makes the test skipped.
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
skipped=0

# host NAME COMPILER [OPTION...]
host() {
    mkdir "$work/$1"
    if ! echo '#include <string>' | "${@:2}" -x c++ -fsyntax-only - 2>/dev/null; then
        echo "skipped: no ${*:2}"
        skipped=77
        return
    fi
    "${@:2}" -std=c++11 -Wall -Wextra -Werror -I "$source_dir/ikelex/include" \
        -I "$source_dir/platform/include" "$source_dir/tests/package/consumer/host.cpp" \
        -L "$build/ikelex" -L "$build/platform" -likelex -likelex_platform \
        -Wl,-rpath,"$build/ikelex:$build/platform" -o "$work/$1/host"
    "$work/$1/host" "$work/$1"
    cmp "$work/usual/host.png" "$work/$1/host.png"
    cmp "$work/usual/host.png.jpg" "$work/$1/host.png.jpg"
}
host usual g++
host old_abi g++ -D_GLIBCXX_USE_CXX11_ABI=0
host libcxx clang++ -stdlib=libc++
exit $skipped
