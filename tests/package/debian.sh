#!/usr/bin/env bash
# tests/package/debian.sh: makes the Debian packages and lets lintian look at them; as root it also
# installs both, builds and runs a host against them, and removes them without a trace.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --preset debian >/dev/null
cmake --build --preset debian
cpack --config build/debian/CPackConfig.cmake -B "$work" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
lib=usr/lib/$(gcc -print-multiarch)
# has PACKAGE FILE...: the package holds these files.
has() {
    local listing
    listing=$(dpkg-deb --contents "$work/$1"_*.deb)
    shift
    for file in "$@"; do
        grep -q " \./$file" <<<"$listing" || { echo "the package lacks /$file"; exit 1; }
    done
}
has libikelex1 "$lib"/libikelex.so.1 "$lib"/libikelex_platform.so.1 usr/share/doc/libikelex1/copyright
has libikelex-dev "$lib"/libikelex.{a,so} "$lib"/libikelex_platform.{a,so} "$lib"/pkgconfig/ikelex.pc \
    usr/include/{ikelex/ikelex.h,platform/vamplatform.h,ikelex/classes/kelimage/kelimage.h}
lintian --allow-root --fail-on error,warning "$work"/*.deb

if [ "$(id -u)" -ne 0 ] || dpkg-query -W libikelex1 >/dev/null 2>&1; then
    echo "packages looked at; not installed (needs root, and none of them in place)"
    exit 0
fi
trap 'dpkg --purge libikelex-dev libikelex1 >/dev/null 2>&1 || true; rm -rf "$work"' EXIT
chmod a+rx "$work"
apt-get -q -y -o DPkg::Lock::Timeout=300 --no-install-recommends install "$work"/*.deb
g++ -std=c++11 tests/package/consumer/host.cpp $(pkg-config --cflags --libs ikelex) -o "$work/host"
"$work/host" "$work"
dpkg --purge libikelex-dev libikelex1
leftover=$(find /usr -ipath '*ikelex*' -not -path "$PWD/*" 2>/dev/null || true)
[ -z "$leftover" ] || { echo "left behind: $leftover"; exit 1; }
echo "the packages install, serve a host, and leave nothing behind"
