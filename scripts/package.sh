#!/usr/bin/env bash
# Builds the Debian package and says where it is.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages $build_packages $package_packages
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset release -DSCN_BUILD_BENCHMARKS=OFF
cmake --build --preset release
cd build/release
cpack
ls "$PWD"/package/*.deb
