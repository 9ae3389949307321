#!/usr/bin/python3
"""Logs a scan as a short script does: polls the instrument, commits each reading, draws the last minute.

usage: pollscript.py PORT FILE SCANNED DRAWN    (channel lists, separated by commas)

The baseline of beside.py.
"""

import bisect
import datetime
import socket
import sqlite3
import sys

import pyqtgraph

WINDOW_SECONDS = 60
POLL_MILLISECONDS = 1000


class Instrument:
    def __init__(self, port):
        self.stream = socket.create_connection(("127.0.0.1", port)).makefile("rw", newline="\n")

    def write(self, command):
        self.stream.write(command + "\n")
        self.stream.flush()

    def query(self, command):
        self.write(command)
        return self.stream.readline().strip()


def parse(reply):
    """Yields time, channel and value of each record of a fetch."""
    fields = reply[2 + int(reply[1]):].split(",")  # Without the header of the block, such as #3456.
    for at in range(0, len(fields) - 8, 9):
        reading, year, month, day, hour, minute, second, channel, _ = fields[at:at + 9]
        seconds = float(second)
        time = datetime.datetime(int(year), int(month), int(day), int(hour), int(minute), int(seconds))
        yield time.timestamp() + seconds % 1, int(channel), float(reading.split()[0])


class Logger:
    def __init__(self, port, path, scanned, drawn):
        self.instrument = Instrument(port)
        self.file = sqlite3.connect(path, isolation_level=None)  # Each statement is a commit.
        self.file.execute("PRAGMA journal_mode = WAL")
        self.file.execute("PRAGMA synchronous = NORMAL")
        self.file.execute("CREATE TABLE readings (channel INTEGER, time REAL, value REAL)")
        self.plot = pyqtgraph.PlotWidget(axisItems={"bottom": pyqtgraph.DateAxisItem()})
        self.plot.showGrid(x=True, y=True)
        self.plot.resize(1060, 630)  # for a canvas of about 1010 by 600
        self.plot.show()
        self.points = {channel: ([], []) for channel in drawn}
        self.curves = {channel: self.plot.plot(pen=pyqtgraph.intColor(number, len(drawn)))
                       for number, channel in enumerate(drawn)}
        for part in ("ALAR ON", "CHAN ON", "TIME ON", "TIME:TYPE ABS", "UNIT ON"):
            self.instrument.write("FORM:READ:" + part)
        self.instrument.write(f"ROUT:SCAN (@{scanned})")
        self.instrument.write("TRIG:COUN INF")
        self.instrument.write("INIT")

    def poll(self):
        count = int(self.instrument.query("DATA:POIN?"))
        if count:
            self.store(parse(self.instrument.query(f"R? {count}")))
            self.draw()
        self.instrument.query("STAT:OPER:COND?")
        self.instrument.query("STAT:OPER:EVEN?")

    def store(self, readings):
        for time, channel, value in readings:
            self.file.execute("INSERT INTO readings VALUES (?, ?, ?)", (channel, time, value))
            if channel in self.points:
                times, values = self.points[channel]
                times.append(time)
                values.append(value)

    def draw(self):
        newest = max(times[-1] for times, _ in self.points.values())
        for channel, (times, values) in self.points.items():
            old = bisect.bisect_left(times, newest - WINDOW_SECONDS)
            del times[:old], values[:old]
            self.curves[channel].setData(times, values)
        self.plot.setXRange(newest - WINDOW_SECONDS, newest, padding=0)


def main():
    port, path, scanned, drawn = sys.argv[1:]
    pyqtgraph.mkQApp()
    logger = Logger(int(port), path, scanned, [int(channel) for channel in drawn.split(",")])
    timer = pyqtgraph.QtCore.QTimer()
    timer.timeout.connect(logger.poll)
    timer.start(POLL_MILLISECONDS)
    pyqtgraph.exec()


if __name__ == "__main__":
    main()
