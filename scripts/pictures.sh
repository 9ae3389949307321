#!/usr/bin/env bash
# Installs what is missing, builds, and takes the pictures of docs/pictures anew, in both sizes: all of them,
# or those of the functions in tests/pictures that are named.
#
#     scripts/pictures.sh [function...]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages $build_packages $display_packages pngquant
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset dev
cmake --build --preset dev --target scn_pictures

raw=$(mktemp -d)
trap 'rm -rf "$raw"' EXIT
for size in 1280x720 1920x1080; do
    mkdir "$raw/$size"
    tests/pictures/take.sh build/dev/tests/scn_pictures "$raw/$size" "$size" "$@"
    # A palette makes them less than half as large.
    (cd "$raw/$size" && pngquant --nofs --speed 1 --strip --force --ext .png 64 *.png)
    mkdir -p "docs/pictures/$size"
    cp "$raw/$size"/*.png "docs/pictures/$size"
done
du -sh docs/pictures
