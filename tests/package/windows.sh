#!/usr/bin/env bash
# tests/package/windows.sh BUILD-DIR: unpacks the ZIP, builds foreign programs against it with CMake and
# runs them under wine, linked and by name; compares the DLL's exported names with the list.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$1" && cpack -G ZIP -B "$work/zip" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
(cd "$work" && cmake -E tar xf zip/ikelex-*-windows-x86_64.zip)
prefix=$(echo "$work"/ikelex-*-windows-x86_64)
"$here/symbols.py" "$prefix/bin/libikelex.dll" "$here/symbols.txt"

printf 'set(CMAKE_SYSTEM_NAME Windows)\nset(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)\n' >"$work/toolchain.cmake"
cmake -S "$here/consumer" -B "$work/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
programs=(host host_static classes byname)
cmake --build "$work/build" --target "${programs[@]}" >"$work/log" || { cat "$work/log"; exit 1; }
cp "$work"/build/*.exe "$prefix/bin/"
cd "$prefix/bin"
for program in "${programs[@]}"; do
    argument=Z:$work
    [ "$program" != byname ] || argument=libikelex.dll
    "$root/tools/wine" "$program.exe" "$argument"
done
echo "foreign programs build and run over the unpacked archive"
