"""The recipes of the document do what they say, on made-up drives of two cars."""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import threading
from xml.etree import ElementTree

import pytest
from conftest import DRIVE, PROJECT
from traces import sentence

BLOCK = re.compile(r"(<!-- not run: .* -->\n)?```(sh|python)\n(.*?)```", re.DOTALL)
UNITS = sorted((PROJECT / "examples/systemd").iterdir())


def recipes():
    """By heading: (language, code) of each block that is to be run."""
    document = (PROJECT / "docs/recipes.md").read_text(encoding="utf-8")
    sections = re.split(r"^## (.*)\n", document, flags=re.MULTILINE)
    return {heading: [(language, code) for kept_back, language, code in BLOCK.findall(text)
                      if not kept_back]
            for heading, text in zip(sections[1::2], sections[2::2])}


def epoch(second, knots, longitude):
    time = b"1200%02d" % second if second < 60 else b"12%02d%02d" % divmod(second, 60)
    place = b"4807.800,N,%09.4f,E" % longitude
    return (sentence(b"GPRMC,%s,A,%s,%05.1f,090.0,210526,,,A" % (time, place, knots)) +
            sentence(b"GPGGA,%s,%s,1,08,0.9,545.4,M,46.9,M,," % (time, place)))


def log(speeds):
    """A drive to the east, from a place at 11.52 degrees, with a speed for each second."""
    minutes, text = 1131.2, b""
    for second, knots in enumerate(speeds):
        text += epoch(second, knots, minutes)
        minutes += knots * 0.514444 / 1238.0  # metres in a minute of longitude there
    return text


@pytest.fixture
def run(vextrace, tmp_path):
    """Runs the blocks of a recipe in a folder with logs: run("pandas") gives what they print."""
    programs = tmp_path / "bin"
    programs.mkdir()
    (programs / "vextrace").symlink_to(vextrace.program)
    logs = tmp_path / "logs"
    logs.mkdir()
    # Red stands for 90 s; blue drives 1.5 km, out of a circle of 500 m behind 98 s.
    (logs / "red_monday.nmea").write_bytes(log([20] * 10 + [0] * 91 + [20] * 10))
    (logs / "blue_monday.nmea").write_bytes(log([10] * 300))
    environment = {**os.environ, "PATH": f"{programs}:{os.environ['PATH']}"}

    def execute(words, code):
        done = subprocess.run(words, input=code, cwd=tmp_path, env=environment, timeout=120,
                              capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout

    def recipe(heading, *which):
        blocks = recipes()[heading]
        blocks = [blocks[i] for i in which] if which else blocks
        printed = "".join(execute(["bash", "-e"], code) for kind, code in blocks if kind == "sh")
        python = "".join(code for kind, code in blocks if kind == "python")
        return printed + (execute([sys.executable], python) if python else "")

    return recipe


def need(*modules):
    """Skips where this Python lacks one, or has one that it cannot load."""
    for module in modules:
        if subprocess.run([sys.executable, "-c", f"import {module}"], check=False,
                          capture_output=True).returncode != 0:
            pytest.skip(f"there is no {module}")


def rows(printed):
    """The words of each line."""
    return [line.split() for line in printed.splitlines()]


def test_a_folder_of_logs_becomes_traces_and_tables(run, vextrace, tmp_path):
    run("A folder of logs")
    for name in ("red_monday", "blue_monday"):
        assert vextrace("check", f"logs/{name}.nmea", f"traces/{name}.trace").returncode == 0
        assert (tmp_path / f"tables/{name}.csv").exists()
    assert len((tmp_path / "fleet.csv").read_text().splitlines()) == 1 + 111 + 300


@pytest.mark.parametrize("block, modules", [(0, ["pandas"]), (1, ["pandas", "vextrace"])])
def test_pandas_tells_the_speeds_of_each_car(block, modules, run):
    need(*modules)
    run("A folder of logs")
    printed = rows(run("pandas", block))
    assert [row[:2] + row[3:] for row in printed[-2:]] == [["blue", "300", "18.52"],
                                                         ["red", "111", "37.04"]]


def test_duckdb_tells_the_speeds_and_writes_parquet_by_car(run, tmp_path):
    need("duckdb")
    run("A folder of logs")
    printed = re.findall(r"│ +(\w+) +│ +([0-9.]+) +│", run("DuckDB, and Parquet by car"))
    assert printed == [("blue", "18.52"), ("red", "37.04"), ("blue", "300"), ("red", "111")]
    assert {path.name for path in (tmp_path / "parquet").iterdir()} == {"car=blue", "car=red"}


def test_geopandas_finds_stops_speeds_and_who_was_within_the_fence(run):
    need("geopandas")
    run("A folder of logs")
    printed = rows(run("GeoPandas: stops, speeds, a fence"))
    stops = [row for row in printed if row[0] == "traces/red_monday.trace"]
    assert stops[0][1:6] == ["2026-05-21", "12:00:10+00:00", "2026-05-21", "12:01:40+00:00",
                             "48.13"]
    assert [row for row in printed if len(row) == 2 and row[0] in ("0.0", "10.0", "30.0")] == [
        ["0.0", "91"], ["10.0", "300"], ["30.0", "20"]]
    inside = {row[0]: int(row[-1]) for row in printed[-2:]}
    assert inside["traces/red_monday.trace"] == 111
    assert inside["traces/blue_monday.trace"] == pytest.approx(98, abs=2)


def test_the_tracks_for_qgis_are_one_for_each_trace(run, tmp_path):
    run("A folder of logs")
    run("The track in QGIS")
    gpx = ElementTree.parse(tmp_path / "drives.gpx").getroot()
    names = [name.text for name in gpx.findall("{*}trk/{*}name")]
    assert names == ["traces/blue_monday.trace", "traces/red_monday.trace"]
    features = json.loads((tmp_path / "drives.geojson").read_text())["features"]
    assert [feature["properties"]["trace"] for feature in features] == names


def serve(listener, log):
    """What gpsd does for a client that asks for the sentences of a receiver."""
    client, _ = listener.accept()
    with client:
        client.sendall(b'{"class":"VERSION","release":"3.22","proto_major":3,"proto_minor":14}\r\n')
        client.recv(4096)
        client.sendall(b'{"class":"WATCH","enable":true,"nmea":true}\r\n' + log)


def test_what_gpsd_hands_on_is_recorded(run, vextrace, tmp_path):
    gpspipe = shutil.which("gpspipe")
    if gpspipe is None:
        pytest.skip("there is no gpspipe")
    with socket.create_server(("127.0.0.1", 0)) as listener:
        listener.settimeout(30)
        caller = tmp_path / "bin" / "gpspipe"
        port = listener.getsockname()[1]
        caller.write_text(f'#!/bin/sh\nexec {gpspipe} "$@" 127.0.0.1:{port}\n')
        caller.chmod(0o755)
        server = threading.Thread(target=serve, args=(listener, DRIVE.read_bytes()))
        server.start()
        run("A receiver that gpsd has")
        server.join()
    assert vextrace("check", DRIVE, "drive.trace", "--live").returncode == 0


def test_systemd_takes_the_units():
    if shutil.which("systemd-analyze") is None:
        pytest.skip("there is no systemd-analyze")
    done = subprocess.run(["systemd-analyze", "verify", *UNITS], capture_output=True, text=True,
                          timeout=60, check=False)
    assert (done.returncode, done.stderr) == (0, "")


def test_a_start_of_the_service_goes_on_behind_the_trace_of_the_day(run, vextrace, tmp_path):
    assert run  # makes the folder with the program
    unit = (PROJECT / "examples/systemd/vextrace.service").read_text(encoding="utf-8")
    script = re.search(r"^ExecStart=/bin/sh -c '(.*)'$", unit, re.MULTILINE)[1]
    script = script.replace("$$", "$").replace("%%", "%").replace(" --baud 9600", "")
    script = script.replace("/var/lib/vextrace", str(tmp_path)).replace("/dev/ttyACM0", str(DRIVE))
    environment = {**os.environ, "PATH": f"{tmp_path}/bin:{os.environ['PATH']}", "TZ": "Asia/Tokyo"}
    for _ in range(2):
        subprocess.run(["/bin/sh", "-c", script], check=True, env=environment, timeout=60)
    traces = sorted(tmp_path.glob("*.trace"))
    assert all(re.fullmatch(r"\d{4}-\d\d-\d\d\.trace", trace.name) for trace in traces)
    vextrace("record", "-o", "once", DRIVE)
    once = (tmp_path / "once").read_bytes()
    assert b"".join(trace.read_bytes() for trace in traces) == 2 * once
