#!/usr/bin/env bash
# tests/platform/bitmaptypes.sh: the bitmap types beside those of other headers, in each order. What
# cannot work names IKELEX_NO_BITMAP_TYPES; on Windows the system's types and ours are the same. Without
# mingw's compiler or clang the parts that need them are skipped.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/foreign.h" <<'EOF'
typedef struct { unsigned s; int w, h; unsigned short p, b; unsigned c, i; int x, y; unsigned u, m; } BITMAPINFOHEADER;
typedef struct { unsigned char b, g, r, x; } RGBQUAD;
typedef struct { BITMAPINFOHEADER bmiHeader; RGBQUAD bmiColors[1]; } BITMAPINFO;
EOF
ours='#include <ikelex/ikelex.h>'
foreign='#include "foreign.h"'
no='#define IKELEX_NO_BITMAP_TYPES'
system='#include <windows.h>'
use='KelResult f(IKelImage* p, BITMAPINFO* b) { return p->Open(b, nullptr); }'
failed=0
skipped=0

# compiles VERDICT COMPILER... -- LINE...: "yes", or "no" for an error that names the way out.
compiles() {
    local verdict=$1 compiler=() got=yes
    shift
    while [ "$1" != -- ]; do compiler+=("$1"); shift; done
    shift
    printf '%s\n' "$@" "$use" >"$work/host.cpp"
    "${compiler[@]}" -std=c++11 -fsyntax-only -I "$work" -I "$root/ikelex/include" -I "$root/platform/include" \
        "$work/host.cpp" 2>"$work/log" || got=no
    if [ "$got" != "$verdict" ] || { [ "$got" = no ] && ! grep -q IKELEX_NO_BITMAP_TYPES "$work/log"; }; then
        echo "expected $verdict from ${compiler[*]}: $*"
        head -3 "$work/log"
        failed=1
    fi
}
compiles yes g++ -Wall -Werror -- "$ours"
compiles yes g++ -Wall -Werror -- "$no" "$foreign" "$ours"
compiles no g++ -- "$foreign" "$ours"
compiles no g++ -- "$ours" "$foreign"
compiles no g++ -- "$no" "$ours"

mingw=x86_64-w64-mingw32-g++-posix
if command -v $mingw >/dev/null; then
    for macros in '' '#define WIN32_LEAN_AND_MEAN' '#define NOMINMAX' $'#define WIN32_LEAN_AND_MEAN\n#define NOMINMAX'; do
        compiles yes $mingw -Wall -Werror -- "$macros" "$system" "$ours"
        compiles yes $mingw -Wall -Werror -- "$macros" "$ours" "$system"
    done
    compiles no $mingw -- '#define NOGDI' "$system" "$ours"
    compiles yes $mingw -- "$no" "$foreign" "$ours"
else
    skipped=77
fi
if command -v clang++ >/dev/null; then
    # Microsoft's dialect, with stand-ins for its library's headers.
    mkdir "$work/ms"
    echo 'namespace std { typedef decltype(sizeof 0) size_t; }' >"$work/ms/cstddef"
    echo 'namespace std { struct FILE; }' >"$work/ms/cstdio"
    touch "$work/ms/memory.h" "$work/ms/string.h"
    compiles yes clang++ --target=x86_64-pc-windows-msvc -fms-extensions -fms-compatibility -nostdinc -Wall \
        -Werror -isystem "$work/ms" -- "$no" "$foreign" "$ours"
else
    skipped=77
fi
[ $failed -eq 0 ] || exit 1
exit $skipped
