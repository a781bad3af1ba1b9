#!/usr/bin/env bash
# tests/package/install.sh BUILD-DIR: installs into an empty prefix, moves the prefix, and builds and
# runs foreign programs there with CMake, with pkg-config, and one that finds the factory by name.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH

cmake --install "$1" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
prefix=$work/moved
lib=$(dirname "$(find "$prefix" -name libikelex.so)")
if grep -rlF -e "$work/first" -e "$(cd "$1" && pwd)" "$prefix"; then
    echo "installed files name the build or the first prefix"
    exit 1
fi
[ "$(readelf -d "$lib/libikelex.so" | grep -c 'SONAME.*libikelex.so.1]')" -eq 1 ]

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >"$work/log" || { cat "$work/log"; exit 1; }
for program in host host_static classes; do
    "$work/cmake/$program" "$work"
done
"$work/cmake/byname" "$lib/libikelex.so.1"
if ldd "$work/cmake/host_static" | grep ikelex; then
    echo "the static program needs a shared ikelex"
    exit 1
fi

export PKG_CONFIG_PATH=$lib/pkgconfig
g++ -std=c++11 "$here/host.cpp" $(pkg-config --cflags --libs ikelex) -Wl,-rpath,"$lib" -o "$work/host"
"$work/host" "$work"
g++ -std=c++11 "$here/classes.cpp" $(pkg-config --cflags --libs ikelex) -Wl,-rpath,"$lib" -o "$work/classes"
"$work/classes"
[ "$(pkg-config --modversion ikelex)" = 1.0.0 ]
echo "foreign programs build and run over the moved prefix"
