#!/usr/bin/python3
"""What a reading costs the program, against a short script that does the same.

usage: beside.py SIMULATOR PROGRAM [DRAWN...]

Runs pollscript.py and the program in turns on the simulated instrument, at 600 readings a second over 60
channels. Both poll it, commit each reading and draw the last minute of the first DRAWN channels: 8, then 40,
the rows of a chart, unless told otherwise. Each is measured
for a while in the middle of a run: processor time for 1000 readings stored, and bytes written for each.
Prints the ratios with their limit, and ends with 1 if one is above, if a reading was not stored, or if the
program did not draw.
"""

import glob
import os
import re
import shutil
import signal
import socket
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

from startup import OVERLAY_SECONDS, processor_seconds, wait_for_line

RATE = 600
SLOTS = "1:0,2:0,3:0"
SCANNED = "101:120,201:220,301:320"
CHANNELS = [*range(101, 121), *range(201, 221)]  # as many as a chart has rows
DRAWN = 8, len(CHANNELS)

ROUNDS = 3
LIMIT = 1.0
FILL_SECONDS = 65  # Then the minute on show is full, and scrolls.
MEASURED_SECONDS = 45
REST_SECONDS = 3   # After the scan was stopped: two polls.
END_SECONDS = 30
PATIENCE_SECONDS = 60

# Places in the program's window.
WINDOW_SIZE = 1500, 900
START_BUTTON = 46, 880
WORKSPACE_TAB = 470, 14
TOOLS = 333, 60
CHART_TOOL = 363, 90
CHART_TITLE = 600, 50
SPLITTER, RAISED_SPLITTER = (951, 747), (951, 222)
CHANNEL_BOX = 650, 294
ROW_NUMBER = 500, 400
ROW_HEIGHT = 31
ROWS_ON_SHOW = 18
ROWS_PER_NOTCH = 3
CANVAS = "1010x600+470+70"

# The colours of the rows of a process's first chart.
COLOURS = ("#B793E6 #CF8197 #DAAE7B #95E1AA #E66F3F #834DDC #E425E4 #25E4E4 #E12267 "
           "#5694EF #43DC1D #E2E627 #2CEBEB #84E425 #D13B59 #E42525 #BC8651 #2E2E8E").split()


class Instrument:
    """The simulated instrument, with all channels in its scan list."""

    def __init__(self, simulator, directory):
        self.transcript = os.path.join(directory, "transcript")
        self.process = subprocess.Popen(
            [simulator, "--tcp", "0", "--slots", SLOTS, "--rate", str(RATE), "--transcript", self.transcript],
            stdout=subprocess.PIPE, text=True)
        self.resource = self.process.stdout.readline().split()[1]
        self.port = self.resource.split("::")[2]
        self.tell(f"ROUT:SCAN (@{SCANNED})")

    def tell(self, command):
        with socket.create_connection(("127.0.0.1", int(self.port))) as connection:
            connection.sendall(command.encode() + b"\n*IDN?\n")
            connection.recv(1000)

    def readings_sent(self):
        with open(self.transcript, encoding="utf-8") as lines:
            return sum((line.count(",") + 1) // 9 for line in lines if " < #" in line and "(@" not in line)

    def end(self):
        self.process.terminate()
        self.process.wait()


class Script:
    """A run of pollscript.py."""

    def __init__(self, instrument, directory, environment, channels):
        self.file = os.path.join(directory, "readings.db")
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "pollscript.py")
        self.process = subprocess.Popen(
            [sys.executable, script, instrument.port, self.file, SCANNED, ",".join(map(str, channels))],
            env=environment, stderr=subprocess.DEVNULL)
        time.sleep(FILL_SECONDS)

    def readings_stored(self):
        return count_rows(self.file, "SELECT 'readings'")

    def draws_all(self):
        return True

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()


class Program:
    """A run of the program, with one chart."""

    def __init__(self, program, instrument, directory, environment, channels):
        self.channels = channels
        self.environment = environment
        self.directory = directory
        self.process = subprocess.Popen(
            [shutil.copy(program, directory), instrument.resource], env=environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        window = re.match(r"WID:(\d+)", self.process.stdout.readline())[1]
        self.xdotool("windowmove", "--sync", window, 0, 0)
        self.xdotool("windowsize", "--sync", window, *WINDOW_SIZE)
        self.xdotool("windowfocus", "--sync", window)
        print("ready?", file=self.process.stdin, flush=True)
        wait_for_line(self.process, "receive msg: ready?")
        time.sleep(OVERLAY_SECONDS)
        self.click(START_BUTTON)
        end = time.monotonic() + PATIENCE_SECONDS
        while self.readings_stored() == 0 and time.monotonic() < end:
            time.sleep(1)
        self.open_chart()

    def xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True)

    def click(self, place):
        self.xdotool("mousemove", *place, "click", 1)
        time.sleep(0.5)

    def drag(self, start, end):
        self.xdotool("mousemove", *start, "mousedown", 1)
        for step in range(1, 5):
            self.xdotool("mousemove", end[0], start[1] + (end[1] - start[1]) * step // 4)
        self.xdotool("mouseup", 1)
        time.sleep(0.5)

    def open_chart(self):
        """Enlarges the chart only when it scrolls: before, a larger one shows more than a minute."""
        self.click(WORKSPACE_TAB)
        self.click(TOOLS)
        time.sleep(1)
        self.click(CHART_TOOL)
        time.sleep(FILL_SECONDS)
        self.xdotool("mousemove", *CHART_TITLE, "click", "--repeat", 2, "--delay", 80, 1)
        time.sleep(1)
        self.drag(SPLITTER, RAISED_SPLITTER)
        top = 0
        for row, channel in enumerate(self.channels):
            if row == top + ROWS_ON_SHOW:
                top = self.scroll_table(top)
            self.click((CHANNEL_BOX[0], CHANNEL_BOX[1] + (row - top) * ROW_HEIGHT))
            self.xdotool("type", "--delay", 20, channel)
            self.xdotool("key", "Return")
            time.sleep(0.3)
        self.drag(RAISED_SPLITTER, SPLITTER)

    def scroll_table(self, top):
        """Scrolls by a page, or to the end; returns the row that is then the first on show."""
        notches = ROWS_ON_SHOW // ROWS_PER_NOTCH
        self.xdotool("mousemove", *ROW_NUMBER, "click", "--repeat", notches, "--delay", 50, 5)
        time.sleep(0.5)
        return min(top + ROWS_ON_SHOW, len(CHANNELS) - ROWS_ON_SHOW)

    def draws_all(self):
        """Whether the colours of all its rows are on the canvas."""
        histogram = subprocess.run(
            ["import", "-window", "root", "-crop", CANVAS, "-depth", "8", "-format", "%c", "histogram:info:-"],
            env=self.environment, capture_output=True, text=True, check=True).stdout
        return all(colour in histogram for colour in COLOURS[:len(self.channels)])

    def readings_stored(self):
        return sum(count_rows(file, "SELECT table_name FROM batch_metadata")
                   for file in glob.glob(os.path.join(self.directory, "*_Data", "*.db")))

    def end(self):
        print("exit", file=self.process.stdin, flush=True)
        self.process.wait(END_SECONDS)


def count_rows(file, tables):
    """The rows of the tables that the query names."""
    with sqlite3.connect(f"file:{file}?mode=ro", uri=True) as connection:
        return sum(connection.execute(f'SELECT count(*) FROM "{table}"').fetchone()[0]
                   for (table,) in connection.execute(tables).fetchall())


def bytes_written(pid):
    with open(f"/proc/{pid}/io", encoding="utf-8") as counters:
        return int(re.search(r"^write_bytes: (\d+)$", counters.read(), re.MULTILINE)[1])


def figures(run):
    return processor_seconds(run.process.pid), bytes_written(run.process.pid), run.readings_stored()


def measure(simulator, environment, channels, begin):
    """Makes a run; returns its processor time for 1000 readings in ms and its bytes for each."""
    with tempfile.TemporaryDirectory() as directory:
        instrument = Instrument(simulator, directory)
        run = None
        try:
            run = begin(instrument, directory, environment, channels)
            before = figures(run)
            time.sleep(MEASURED_SECONDS)
            seconds, written, readings = (now - then for now, then in zip(figures(run), before))
            if not run.draws_all():
                sys.exit("the program does not draw all channels")
            instrument.tell("ABOR")
            time.sleep(REST_SECONDS)
            stored, sent = run.readings_stored(), instrument.readings_sent()
            if stored != sent:
                sys.exit(f"{stored} of {sent} readings stored")
            run.end()
            return seconds * 1e6 / readings, written / readings
        finally:
            if run:
                run.process.kill()
                run.process.wait()
            instrument.end()


def compare(simulator, program, channels, environment):
    """Prints a case; returns whether its limit is kept."""
    begins = {"script": Script, "program": lambda *arguments: Program(program, *arguments)}
    rounds = {name: [] for name in begins}
    for _ in range(ROUNDS):
        for name, begin in begins.items():
            milliseconds, written = measure(simulator, environment, channels, begin)
            rounds[name].append(milliseconds)
            print(f"{name}: {milliseconds:.1f} ms of processor time for 1000 readings, {written:.0f} bytes written "
                  "for each", flush=True)
    script, ours = (statistics.median(rounds[name]) for name in ("script", "program"))
    kept = ours / script <= LIMIT
    print(f"a reading, {len(channels)} channels drawn: ratio {ours / script:.3f}, limit {LIMIT}: "
          f"{'kept' if kept else 'ABOVE'} ({ours:.1f} ms against {script:.1f} ms for 1000)", flush=True)
    return kept


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    simulator, program, *drawn = sys.argv[1:]
    environment = dict(os.environ, QT_QPA_PLATFORM="xcb")
    kept = [compare(simulator, program, CHANNELS[:count], environment) for count in map(int, drawn or DRAWN)]
    sys.exit(0 if all(kept) else 1)


if __name__ == "__main__":
    main()
