#!/usr/bin/env bash
# tests/package/windows.sh BUILD-DIR: unpacks the ZIP, builds foreign programs against it with CMake and
# runs them under wine, linked and by name; shows a picture with the lines of docs/windows.md; compares
# the DLL's exported names with the list.
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
for part in gcc ikelex libjpeg-turbo libpng1.6 mingw-w64 zlib; do
    [ -n "$(ls "$prefix/share/doc/$part")" ] || { echo "no terms of $part"; exit 1; }
done

cat - <(sed -n '/^    BITMAPINFO info/,/^    StretchDIBits/p' "$root/docs/windows.md") >"$work/show.cpp" <<'EOF'
#include <ikelex/handle.h>
#include <windows.h>

int main() {
    const int w = 1, h = 2;
    unsigned char rows[] = {0, 0, 255, 0, 255, 0, 0, 0};  // red above blue
    BITMAPINFO given = {};
    given.bmiHeader = {40, w, h, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    const KelImagePtr image = KelNewImage();
    image->OpenAs(&given, rows, 0);
    const HDC hdc = CreateCompatibleDC(nullptr);
    SelectObject(hdc, CreateDIBSection(hdc, &given, DIB_RGB_COLORS, nullptr, nullptr, 0));
EOF
echo 'return GetPixel(hdc, 0, 0) == RGB(255, 0, 0) && GetPixel(hdc, 0, 1) == RGB(0, 0, 255) ? 0 : 1; }' >>"$work/show.cpp"
mkdir -p "$work/build"
x86_64-w64-mingw32-g++-posix -std=c++11 -Wall -Wextra -Werror -I "$prefix/include" "$work/show.cpp" \
    -L "$prefix/lib" -likelex -likelex_platform -lgdi32 -o "$work/build/show.exe"
programs=(host host_static classes byname)
cmake --build "$work/build" --target "${programs[@]}" >"$work/log" || { cat "$work/log"; exit 1; }
cp "$work"/build/*.exe "$prefix/bin/"
cd "$prefix/bin"
for program in "${programs[@]}" show; do
    argument=Z:$work
    [ "$program" != byname ] || argument=libikelex.dll
    "$root/tools/wine" "$program.exe" "$argument"
done
echo "foreign programs build and run over the unpacked archive"
