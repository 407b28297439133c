"""Measures the program vextrace on a long log: processor time, as ratios, and peak memory.

Usage: benchTools.py VEXTRACE ALONE LOG FOLDER
  ALONE   the program that tells what the library takes alone
  FOLDER  where what is made of the log goes
"""
import os
import pathlib
import statistics
import subprocess
import sys

ROUNDS = 5
FORMATS = ["gpx", "geojson", "kml", "csv", "jsonl", "nmea"]
VEXTRACE, ALONE, LOG, FOLDER = sys.argv[1], sys.argv[2], sys.argv[3], pathlib.Path(sys.argv[4])


class Run:
    """What a run took: seconds of processor time, of user and system, and bytes of memory."""

    def __init__(self, *command):
        memory = FOLDER / "memory"
        with open(os.devnull, "wb") as nowhere:
            process = subprocess.Popen(["time", "-f", "%M", "-o", memory, *command],
                                       stdout=nowhere, stderr=subprocess.PIPE)
            errors = process.stderr.read()
            _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"{command}: status {process.returncode}: {errors.decode(errors='replace')}")
        self.seconds = usage.ru_utime + usage.ru_stime
        self.memory = int(memory.read_text().split()[-1]) * 1024


def fresh(name):
    """A file that does not exist yet."""
    path = FOLDER / name
    path.unlink(missing_ok=True)
    return path


def alone(trace):
    lines = subprocess.run([ALONE, trace], capture_output=True, check=True, text=True).stdout
    return {name: float(seconds) for name, seconds in map(str.split, lines.splitlines())}


def commands(trace):
    """The works by their names; each makes a run."""
    works = {
        "record": lambda: Run(VEXTRACE, "record", "-o", fresh("record.trace"), LOG),
        "show": lambda: Run(VEXTRACE, "show", trace),
        "info": lambda: Run(VEXTRACE, "info", trace),
        "check": lambda: Run(VEXTRACE, "check", LOG, trace),
        "repair": lambda: Run(VEXTRACE, "repair", trace, fresh("repaired.trace")),
        "report": lambda: Run(VEXTRACE, "report", "-o", fresh("report.html"), trace),
    }
    for name in FORMATS:
        works[f"export {name}"] = lambda name=name: Run(
            VEXTRACE, "export", "--to", name, "-o", fresh(f"export.{name}"), trace)
    return works


def row(name, seconds, memory, compared, ratio, wanted):
    print(f"{name:<16} {seconds:8.2f} s {memory / 1e6:9.1f} MB   {compared:<28} {ratio:6.2f}  {wanted}")


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    trace = fresh("bench.trace")
    subprocess.run([VEXTRACE, "record", "-o", trace, LOG], check=True, stderr=subprocess.DEVNULL)
    works = commands(trace)
    runs = {name: [] for name in works}
    bases = []
    for _ in range(ROUNDS):  # taking turns
        bases.append(alone(trace))
        for name, work in works.items():
            runs[name].append(work())
    seconds = {name: statistics.median(run.seconds for run in done) for name, done in runs.items()}
    memory = {name: max(run.memory for run in done) for name, done in runs.items()}
    base = {name: statistics.median(times[name] for times in bases) for name in bases[0]}
    babel = Run("gpsbabel", "-i", "nmea", "-f", LOG, "-o", "gpx", "-F", fresh("gpsbabel.gpx"))

    print(f"{LOG}: {os.path.getsize(LOG) / 1e6:.0f} MB; {trace}: {os.path.getsize(trace) / 1e6:.0f} MB")
    print(f"the library alone: decoding {base['decode']:.2f} s, the whole road {base['road']:.2f} s\n")
    print(f"{'':<16} {'processor':>10} {'peak memory':>12}   {'compared with':<28} {'ratio':>6}  wanted")
    both = seconds["record"] + seconds["export gpx"]
    row("gpsbabel", babel.seconds, babel.memory, "record and export gpx", babel.seconds / both,
        "at least 25")
    row("record", seconds["record"], memory["record"], "the whole road",
        seconds["record"] / base["road"], "at most 2")
    row("report", seconds["report"], memory["report"], "info", seconds["report"] / seconds["info"],
        "at most 2")
    row("check", seconds["check"], memory["check"], "record", seconds["check"] / seconds["record"],
        "at most 1.5")
    for name in [name for name in works if name not in ("record", "report", "check")]:
        row(name, seconds[name], memory[name], "decoding", seconds[name] / base["decode"],
            "" if name == "repair" else "at most 1.5")
    report = memory.pop("report")
    print(f"\nMemory below 32 MB: {'yes' if max(memory.values()) < 32e6 else 'NO'}; "
          f"of report below 64 MB: {'yes' if report < 64e6 else 'NO'}")


main()
