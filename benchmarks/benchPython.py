"""Measures the Python module on a long trace: time as ratios, and memory beside the result.

Usage: benchPython.py VEXTRACE TRACE FOLDER
  FOLDER  where what is made of the trace goes
Of the module that PYTHONPATH names.
"""
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import threading
import time

import pandas

import vextrace

ROUNDS = 5
VEXTRACE, TRACE, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
TABLE = FOLDER / "table.csv"


def measured(work):
    begin = time.perf_counter()
    work()
    return time.perf_counter() - begin


def export():
    seconds = measured(lambda: subprocess.run(
        [VEXTRACE, "export", "--to", "csv", "-o", TABLE, TRACE], check=True,
        stderr=subprocess.DEVNULL))
    TABLE.replace(FOLDER / "read.csv")
    return seconds


def read():
    return measured(lambda: pandas.read_csv(FOLDER / "read.csv"))


def peak():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024


def memory():
    """Bytes that frame() takes beside its result, in a process that did nothing before."""
    before = peak()
    table = vextrace.frame(TRACE)
    return peak() - before - int(table.memory_usage(deep=True).sum())


def two_threads():
    """How many cores two threads on two files take."""
    threads = [threading.Thread(target=vextrace.frame, args=(TRACE,)) for _ in range(2)]

    def run():
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    begin = time.process_time()
    wall = measured(run)
    return (time.process_time() - begin) / wall


def row(name, seconds, compared, ratio, wanted):
    print(f"{name:<16} {seconds:8.2f} s   {compared:<28} {ratio:6.2f}  {wanted}")


def main():
    beside = memory()
    times = []
    for _ in range(ROUNDS):  # taking turns
        times.append((measured(lambda: vextrace.frame(TRACE)), export(), read()))
    frame, csv, pandas_csv = (statistics.median(column) for column in zip(*times))
    (FOLDER / "read.csv").unlink()
    row("frame()", frame, "export csv and read_csv", (csv + pandas_csv) / frame, "at least 5")
    row("frame()", frame, "export csv", frame / csv, "at most 1")
    print(f"two threads on two files take {two_threads():.2f} cores of "
          f"{len(os.sched_getaffinity(0))}")
    print(f"memory of frame() beside the table: {beside / 1e6:.1f} MB; "
          f"at most 64 MB: {'yes' if beside <= 64e6 else 'NO'}")


main()
