#!/usr/bin/env bash
# Installs what is missing, builds, and takes the pictures of docs/pictures anew: all of them, or those
# of the functions in tests/pictures/pictures.cpp that are named.
#
#     scripts/pictures.sh [function...]
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages $build_packages $display_packages
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset dev
cmake --build --preset dev --target scn_pictures

# The pictures show the path of the program.
place=/tmp/SCN4070A
mkdir -m 700 "$place"
trap 'rm -rf "$place"' EXIT
mkdir -m 700 "$place/runtime"
cp build/dev/tests/scn_pictures "$place"

export XDG_RUNTIME_DIR="$place/runtime" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb SCN_PICTURES="$PWD/docs/pictures"
if [ $# -eq 0 ]; then
    set -- $("$place/scn_pictures" -platform offscreen -functions | tr -d '()')
fi
# A process and a place for each, since a process makes one store only.
for picture in "$@"; do
    echo "$picture"
    rm -rf "$place"/*_Data "$place/export"
    xvfb-run -a -s "-screen 0 1280x720x24 -dpi 96 -nolisten tcp -noreset" \
        "$place/scn_pictures" "$picture" >"$place/log" 2>&1 || { cat "$place/log" >&2; exit 1; }
done
ls -l docs/pictures/*.png
