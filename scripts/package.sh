#!/usr/bin/env bash
# package.sh [DIR]: builds the Debian package (default build/package) for /usr: libvsm.so, its
# header, pkg-config and CMake files, vsmctl, vsmkit, vsmhost and its page. Prints the .deb's path.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
dir=${1:-build/package}
scripts/build.sh "$dir" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DVSM_BUILD_TESTS=OFF
(cd "$dir" && cpack -G DEB >/dev/null)
deb=$(ls "$dir"/vsm_*.deb)
dpkg-deb --info "$deb" | sed -n 's/^ \(Package\|Version\|Depends\|Recommends\):/\1:/p'
echo "$deb"
