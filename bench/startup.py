#!/usr/bin/python3
"""Processor time and memory of a start, against the start of another build of the program.

usage: startup.py SIMULATOR BASELINE PROGRAM

Starts both programs in turns on the simulated instrument, with few and with many channels. A start ends when
the window is usable: it answers its launcher, and the busy overlay is gone. Prints a line for each ratio with
its limit, and ends with 1 if any is above.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

TICKS_PER_SECOND = os.sysconf("SC_CLK_TCK")
OVERLAY_SECONDS = 3  # The overlay stays two seconds after the read-back.
END_SECONDS = 30

SMALL = "1:1,2:2,3:8"
LARGE = ",".join(f"{slot}:8" for slot in range(1, 16))

# Modules, rows of the channel table, rounds, limit of the ratio, limit of the memory in MB.
CASES = [(SMALL, 78, 5, 0.35, None), (LARGE, 600, 3, 0.25, 200)]


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS_PER_SECOND


def largest_memory(pid):
    """In MB."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1]) / 1024
    raise RuntimeError("no VmHWM")


def wait_for_line(process, prefix):
    for line in process.stdout:
        if line.startswith(prefix):
            return
    raise RuntimeError(f"ended before the line {prefix!r}")


def start(program, resource, environment):
    """Starts the program once; returns its processor time in seconds and its memory in MB."""
    process = subprocess.Popen(
        [program, resource], env=environment, text=True, stdin=subprocess.PIPE,
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    try:
        wait_for_line(process, "WID:")
        print("ready?", file=process.stdin, flush=True)
        wait_for_line(process, "receive msg: ready?")
        time.sleep(OVERLAY_SECONDS)
        figures = processor_seconds(process.pid), largest_memory(process.pid)
        print("exit", file=process.stdin, flush=True)
        process.wait(END_SECONDS)
        return figures
    finally:
        process.kill()
        process.wait()


def measure(simulator, programs, modules, rounds, environment):
    """Returns the starts of each program, made in turns."""
    starts = [[] for _ in programs]
    for _ in range(rounds):
        for program, figures in zip(programs, starts):
            instrument = subprocess.Popen(
                [simulator, "--tcp", "0", "--slots", modules], stdout=subprocess.PIPE, text=True)
            try:
                resource = instrument.stdout.readline().split()[1]
                figures.append(start(program, resource, environment))
            finally:
                instrument.terminate()
                instrument.wait()
    return starts


def report(rows, starts, limit, memory_limit):
    """Prints a case; returns whether its limits are kept."""
    (old, _), (new, memory) = ([statistics.median(column) for column in zip(*figures)] for figures in starts)
    kept = new / old <= limit
    print(f"start with {rows} rows: ratio {new / old:.3f}, limit {limit}: {'kept' if kept else 'ABOVE'} "
          f"({new:.2f} s against {old:.2f} s)", flush=True)
    if memory_limit is None:
        print(f"start with {rows} rows: {memory:.0f} MB")
        return kept
    memory_kept = memory <= memory_limit
    print(f"start with {rows} rows: {memory:.0f} MB, limit {memory_limit}: {'kept' if memory_kept else 'ABOVE'}",
          flush=True)
    return kept and memory_kept


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    simulator, *programs = sys.argv[1:]
    with tempfile.TemporaryDirectory() as runtime:
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=runtime)
        kept = [report(rows, measure(simulator, programs, modules, rounds, environment), limit, memory_limit)
                for modules, rows, rounds, limit, memory_limit in CASES]
    sys.exit(0 if all(kept) else 1)


if __name__ == "__main__":
    main()
