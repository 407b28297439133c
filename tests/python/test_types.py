"""The types of the package: what the stub says is there, and users' programs are checked with it."""
import os
import pathlib
import subprocess
import sys

import pytest

import vextrace

pytest.importorskip("mypy")

SETTINGS = pathlib.Path(__file__).with_name("mypy.ini")
ALLOWED = SETTINGS.with_name("stubtest.allowlist")
PROGRAM = '''
import io
import pathlib

import vextrace
import vextrace.dask

for item in vextrace.read(pathlib.Path("drive.trace")):
    if isinstance(item, vextrace.Damage):
        print(item.offset + item.length, item.reason.upper())
    elif item.fix is not None and item.fix.latitude is not None:
        print(item.fix.latitude + 1, item.sentences["$GPRMC"].split(b","))
trace: bytes = vextrace.record(b"", date="2026-11-21")
columns = vextrace.fixes(["a.trace", io.BytesIO(trace)], from_="2026-11-21T12:00")
print(columns["speed_kmh"].max(), vextrace.frame(trace, unchecked=True))
print(vextrace.dask.frame("fleet/*.trace", blocksize="64MB").npartitions)
'''
MISTAKES = '''
import vextrace

for item in vextrace.read(5):
    item.reason
for again in vextrace.read("drive.trace"):
    again.fix.latitude
vextrace.record("text")
'''


def run(tmp_path, *command):
    folder = os.path.dirname(os.path.dirname(vextrace.__file__))
    return subprocess.run([sys.executable, "-m", *command], cwd=tmp_path, capture_output=True,
                          text=True, env={**os.environ, "MYPYPATH": folder}, timeout=170, check=False)


def check(tmp_path, program):
    (tmp_path / "program.py").write_text(program, encoding="utf-8")
    return run(tmp_path, "mypy", "--config-file", SETTINGS, "--cache-dir", tmp_path.parent / "cache",
               "program.py")


def test_the_stub_is_what_is_there(tmp_path):
    ended = run(tmp_path, "mypy.stubtest", "vextrace", "--mypy-config-file", SETTINGS,
                "--allowlist", ALLOWED, "--ignore-unused-allowlist")
    assert ended.returncode == 0, ended.stdout + ended.stderr


def test_a_program_is_checked(tmp_path):
    ended = check(tmp_path, PROGRAM)
    assert ended.returncode == 0, ended.stdout + ended.stderr
    ended = check(tmp_path, MISTAKES)
    assert sorted({int(line.split(":")[1]) for line in ended.stdout.splitlines() if ": error:" in line}
                  ) == [4, 5, 7, 8], ended.stdout


def test_the_package_says_that_it_has_types():
    assert os.path.exists(os.path.join(os.path.dirname(vextrace.__file__), "py.typed"))
