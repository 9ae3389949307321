#!/usr/bin/env bash
# demo.sh BIN_DIR OUTPUT_DIR: a short scan on the simulated instrument under a virtual display, with
# real clicks, and its export. Leaves a picture of the window, the CSV file, the day file, and the
# transcript of the wire in OUTPUT_DIR, in place of those of the demonstration before. The folder may hold
# nothing else.
set -eu
programs=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
ours='screenshot\.png|transcript\.txt|program\.log|display|display\.log|runtime|before_export|[0-9]{8}\.db|.*_Trace_1_.*\.csv'
if ls -A "$out" | grep -qvxE "$ours"; then
    echo "$out holds something else than a demonstration's files. Name an empty folder." >&2
    exit 1
fi
rm -rf "${out:?}"/*

XDG_RUNTIME_DIR="$out/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"
# The launcher opens at its usual place, and leaves nothing in the user's folders.
XDG_CONFIG_HOME="$XDG_RUNTIME_DIR/config" XDG_STATE_HOME="$XDG_RUNTIME_DIR/state"
XDG_DATA_HOME="$XDG_RUNTIME_DIR/data"
export XDG_RUNTIME_DIR XDG_CONFIG_HOME XDG_STATE_HOME XDG_DATA_HOME LC_ALL=C.UTF-8
# The data goes beside the program: not among that of the user's instruments.
bin="$XDG_RUNTIME_DIR/bin"
mkdir "$bin"
for program in scn4070a scn4070a-launcher scn4070a-sim; do
    cp -l "$programs/$program" "$bin" 2>/dev/null || cp "$programs/$program" "$bin"
done

# The server picks a free display and tells its number.
exec 3<> "$out/display"
# Ctrl+C is for the launcher, which needs the display until it has ended.
setsid Xvfb -displayfd 3 -screen 0 1520x1000x24 -nolisten tcp -noreset >"$out/display.log" 2>&1 &
server=$!
launcher=""
finish() {
    if [ -n "$launcher" ]; then
        kill "$launcher" 2>/dev/null || true
        # It ends the simulator, and needs the display until then.
        wait "$launcher" 2>/dev/null || true
    fi
    kill "$server" 2>/dev/null || true
    rm -rf "$out/display" "$out/display.log" "$XDG_RUNTIME_DIR"
}
trap finish EXIT

# wait_for SECONDS TEXT COMMAND...: until the command succeeds.
wait_for() {
    limit=$(($(date +%s) + $1)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ "$(date +%s)" -lt "$limit" ] || { echo "gave up waiting for: $what" >&2; exit 1; }
        sleep 0.2
    done
}
wait_for 20 "the virtual display" test -s "$out/display"
DISPLAY=":$(head -n 1 "$out/display")"
export DISPLAY

# Points of the program's window, which lies in the launcher's at left, top.
point() { xdotool mousemove $((left + $1)) $((top + $2)); }
click() { point "$1" "$2"; xdotool sleep 0.1 click 1; sleep 0.5; }
received() { grep -q -e " > $1" "$out/transcript.txt"; }

echo "starting the simulated instrument and the program"
"$bin/scn4070a-launcher" --slots 1:2,2:14 --rate 40 --transcript "$out/transcript.txt" >"$out/program.log" 2>&1 &
launcher=$!
wait_for 60 "the program's read-back" received 'MEM:STAT:VAL? 5'
# The busy overlay covers the window for two seconds more.
wait_for 20 "the first polls" sh -c "[ \$(grep -c ' > STAT:OPER:EVEN?' '$out/transcript.txt') -ge 5 ]"

window=$(xdotool search --onlyvisible --name 'SCN4070A 控制软件' | tail -n 1)
left=$(xwininfo -id "$window" | awk '/Absolute upper-left X/ { print $NF }')
top=$(xwininfo -id "$window" | awk '/Absolute upper-left Y/ { print $NF }')

echo "ticking four channels and pressing start"
for row in 0 1 2 3; do
    click 356 $((129 + 33 * row))
done
wait_for 10 "the scan list" received 'ROUT:SCAN (@101:104)'
click 46 880
wait_for 30 "the start of the scan" received 'INIT'
wait_for 30 "the first readings" received 'R? '

echo "opening a chart with three of the channels"
click 471 14   # the workspace
click 330 300  # its side bar
click 350 90   # a new chart
point 600 52
xdotool click --repeat 2 --delay 60 1  # as large as the workspace
sleep 1
# The splitter goes up, so that three rows of the chart's table show.
point 950 729
xdotool mousedown 1
for y in 650 560; do
    sleep 0.2
    point 950 "$y"
done
xdotool sleep 0.2 mouseup 1
sleep 0.5
for row in 1 2 3; do
    click 690 $((633 + 31 * (row - 1)))
    for _ in $(seq "$row"); do
        xdotool key Down
    done
    xdotool key Return
    sleep 0.5
done
sleep 8
import -window root "$out/screenshot.png"

echo "pressing stop"
click 46 880
wait_for 20 "the end of the scan" received 'ABOR'
sleep 3

echo "exporting the readings to a CSV file"
touch "$out/before_export"
new_csv() { find "$bin" -maxdepth 1 -name '*_Trace_1_*.csv' -newer "$out/before_export"; }
click 1455 880  # the export button
click 840 585   # in its dialog: to the file
# Its readings follow six lines that tell what they are; all of them are flushed at the end.
has_rows() { [ -n "$(new_csv)" ] && [ "$(wc -l <"$(new_csv)")" -gt 6 ]; }
wait_for 20 "the CSV file" has_rows
sleep 1
mv "$(new_csv)" "$out"
rm "$out/before_export"
csv_file=$(ls "$out"/*.csv)

# The end of the launcher ends the program, which closes its day file.
kill "$launcher"
wait "$launcher" 2>/dev/null || true
launcher=""
day_file=$(ls "$bin"/*_Data/*.db | tail -n 1) # two of them if midnight has passed
cp "$bin"/*_Data/*.db "$out"

echo
echo "screenshot:  $out/screenshot.png"
echo "CSV file:    $csv_file ($(($(wc -l <"$csv_file") - 6)) rows)"
echo "day file:    $out/$(basename "$day_file")"
echo "transcript:  $out/transcript.txt ($(grep -c ' > R? ' "$out/transcript.txt") fetches)"
