#!/usr/bin/env bash
# Builds the Debian package of VXCFG in a build folder of its own (build-package, or
# $VXCFG_PACKAGE_DIR) and checks it: the files it must lay out and the dependencies it must
# declare. Prints the package's path last; fails when anything expected is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1

# dpkg-shlibdeps (dpkg-dev) works out the dependencies from what the programs link.
bash scripts/install-packages.sh qt6-base-dev qt6-serialport-dev qt6-charts-dev cmake g++ ninja-build \
    ccache dpkg-dev file

build=${VXCFG_PACKAGE_DIR:-build-package}
# Only the two programs are packaged: the install step need not build the tests first.
cmake -G Ninja -B "$build" -S . -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON >/dev/null
cmake --build "$build" --target vxcfg vxrack-sim
rm -f "$build"/vxcfg_*.deb
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls "$build"/vxcfg_*.deb)

fail=0
contents=$(dpkg-deb --contents "$deb")
for file in ./usr/bin/vxcfg ./usr/bin/vxrack-sim ./usr/share/applications/vxcfg.desktop \
    ./usr/share/icons/hicolor/scalable/apps/vxcfg.svg \
    ./usr/share/icons/hicolor/256x256/apps/vxcfg.png ./usr/share/doc/vxcfg/README.md \
    ./usr/share/vxcfg/racks/comm-zb.rack; do
    if ! grep -q " $file\$" <<<"$contents"; then
        echo "package.sh: $deb lacks $file" >&2
        fail=1
    fi
done
depends=$(dpkg-deb -f "$deb" Depends)
# The package names alone, one a line, without versions.
names=$(tr ',|' '\n\n' <<<"$depends" | awk 'NF { print $1 }')
for dependency in libc6 libstdc++6 libqt6core6 libqt6gui6 libqt6widgets6 libqt6serialport6 \
    libqt6charts6; do
    if ! grep -qxF "$dependency" <<<"$names"; then
        echo "package.sh: $deb does not depend on $dependency (Depends: $depends)" >&2
        fail=1
    fi
done
[ "$fail" -eq 0 ] || exit 1
echo "Depends: $depends"
echo "$deb"
