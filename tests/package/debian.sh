#!/usr/bin/env bash
# tests/package/debian.sh BUILD-DIR: packs the build as a Debian package and looks at its contents; as
# root it also installs the package, builds and runs a host against it, and removes it without a trace.
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$1" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
package=$(echo "$work"/ikelex_*.deb)
dpkg-deb --info "$package" | sed -n '/Package:/,$p'
listing=$(dpkg-deb --contents "$package")
for file in lib/libikelex.so.1 lib/libikelex_platform.so.1 lib/libikelex.a include/ikelex/ikelex.h \
    include/platform/vamplatform.h include/ikelex/classes/kelimage/kelimage.h lib/pkgconfig/ikelex.pc; do
    grep -q "/usr/$file" <<<"$listing" || { echo "the package lacks /usr/$file"; exit 1; }
done
if grep -vE ' \./usr/(include/(ikelex|platform)|lib|share/doc/ikelex)?(/|$)| \./(usr/(include/|share/|share/doc/)?)?$' \
    <<<"$listing"; then
    echo "the package has files where it should not"
    exit 1
fi

if [ "$(id -u)" -ne 0 ] || dpkg-query -W ikelex >/dev/null 2>&1; then
    echo "package looked at; not installed (needs root, and no ikelex in place)"
    exit 0
fi
trap 'dpkg --purge ikelex >/dev/null 2>&1 || true; rm -rf "$work"' EXIT
dpkg --install "$package"
g++ -std=c++11 "$source_dir/tests/package/consumer/host.cpp" $(pkg-config --cflags --libs ikelex) -o "$work/host"
"$work/host" "$work"
dpkg --purge ikelex
leftover=$(find /usr/include/ikelex /usr/include/platform /usr/lib/libikelex* /usr/lib/cmake/ikelex \
    /usr/share/doc/ikelex 2>/dev/null || true)
[ -z "$leftover" ] || { echo "left behind: $leftover"; exit 1; }
echo "package installs, serves a host, and leaves nothing behind"
