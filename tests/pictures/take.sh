#!/usr/bin/env bash
# Takes the pictures of the program's window, and checks its looks, on a virtual display.
#
#     take.sh PROGRAM DIRECTORY SIZE [function...]
#
# PROGRAM is scn_pictures, SIZE that of the display, e.g. 1280x720. Without functions it takes them all. It
# goes on after a fault in a picture, and fails at the end.
set -u
program=$1
directory=$2
size=$3
shift 3

# The pictures show the path of the program, so it is always the same.
place=/tmp/SCN4070A
mkdir -m 700 "$place" || exit 1
trap 'rm -rf "$place"' EXIT
mkdir -m 700 "$place/runtime"
cp "$program" "$place"
mkdir -p "$directory"

export XDG_RUNTIME_DIR="$place/runtime" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb SCN_PICTURES="$directory"
if [ $# -eq 0 ]; then
    set -- $("$place/scn_pictures" -platform offscreen -functions | tr -d '()')
fi
failed=0
# A process and a place for each, since a process makes one store only.
for function in "$@"; do
    rm -rf "$place"/*_Data "$place/export"
    xvfb-run -a -s "-screen 0 ${size}x24 -nolisten tcp -noreset" \
        "$place/scn_pictures" "$function" >"$place/log" 2>&1 || {
        echo "$function at $size:"
        grep -A3 '^FAIL' "$place/log" || cat "$place/log"
        failed=1
    }
done
exit $failed
