"""Outputs that are folders: a file for each input."""
import os
import signal
import subprocess
import time

import pytest

from conftest import DRIVE
from samples import SMALL, STAMP, fix
from traces import SECOND

WORKS = [(["record"], "nmea", "trace"), (["export", "--to", "csv"], "trace", "csv"),
         (["export", "--to", "GeoJSON"], "trace", "geojson"), (["report"], "trace", "html"),
         (["repair"], "trace", "trace")]


@pytest.fixture
def inputs(tmp_path):
    """Makes so many logs or traces in a folder; gives their names."""

    def make(ending, count=3):
        (tmp_path / "in").mkdir()
        names = []
        for number in range(count):
            content = (DRIVE.read_bytes() if ending == "nmea"
                       else fix(STAMP) + fix(STAMP + (number + 1) * SECOND))
            names.append(f"in/{number}.{ending}")
            (tmp_path / names[-1]).write_bytes(content)
        return names

    return make


@pytest.mark.parametrize("command, ending, new", WORKS)
def test_a_folder_takes_a_file_of_each_input(vextrace, tmp_path, inputs, command, ending, new):
    names = inputs(ending)
    result = vextrace(*command, "-o", "a/b/", *names)
    assert (result.returncode, result.stdout) == (0, b""), result.stderr
    assert sorted(os.listdir(tmp_path / "a" / "b")) == [f"{number}.{new}" for number in range(3)]
    for number, name in enumerate(names):
        (tmp_path / "one").unlink(missing_ok=True)
        assert vextrace(*command, "-o", "one", name).returncode == 0
        made = (tmp_path / "a" / "b" / f"{number}.{new}").read_bytes()
        assert made == (tmp_path / "one").read_bytes()


@pytest.mark.parametrize("command, ending, new", WORKS)
def test_a_folder_that_exists_needs_no_slash(vextrace, tmp_path, inputs, command, ending, new):
    (tmp_path / "out").mkdir()
    assert vextrace(*command, "-o", "out", *inputs(ending, 1)).returncode == 0
    assert os.listdir(tmp_path / "out") == [f"0.{new}"]


@pytest.mark.parametrize("command, ending, new", WORKS)
def test_what_exists_is_named_and_the_others_are_done(vextrace, tmp_path, inputs, command, ending, new):
    names = inputs(ending)
    (tmp_path / "out").mkdir()
    old = tmp_path / "out" / f"1.{new}"
    old.write_bytes(b"old")
    result = vextrace(*command, "-o", "out/", *names)
    assert result.returncode == 1
    assert f"vextrace: out/1.{new}: exists; " in result.stderr.decode()
    assert old.read_bytes() == b"old"
    assert len(os.listdir(tmp_path / "out")) == 3
    assert vextrace(*command, "-o", "out/", "--force", *names).returncode == 0
    assert old.read_bytes() != b"old"


def test_what_fails_is_named_and_the_others_are_done(vextrace, tmp_path, inputs):
    names = inputs("trace")
    (tmp_path / "in" / "text.trace").write_bytes(b"no trace at all\n")
    result = vextrace("export", "--to", "csv", "-o", "out/", names[0], "missing", "in/text.trace", *names[1:])
    assert result.returncode == 1
    told = result.stderr.decode().splitlines()
    assert sorted(told) == [
        "vextrace: in/text.trace: no trace: 16 bytes without any message",
        "vextrace: missing: cannot be read: No such file or directory"]
    assert sorted(os.listdir(tmp_path / "out")) == ["0.csv", "1.csv", "2.csv"]


def test_two_inputs_never_become_one_output(vextrace, tmp_path):
    for folder in "ab":
        (tmp_path / folder).mkdir()
        (tmp_path / folder / "x.trace").write_bytes(SMALL)
    result = vextrace("export", "--to", "csv", "-o", "out/", "--force", "a/x.trace", "b/x.trace")
    assert result.returncode == 2
    assert result.stderr == b"vextrace: b/x.trace: would become out/x.csv, as a/x.trace does\n"
    assert not (tmp_path / "out").exists()


@pytest.mark.parametrize("command, line", [
    (["export", "--to", "csv", "-o", "out/", "-"],
     "-: standard input has no name that a file in a folder could have"),
    (["record", "-o", "one", "a", "b"], "-o: several logs need a folder for their traces, such as traces/"),
    (["repair", "a", "b", "c"], "several traces need a folder for what is kept of them, such as mended/"),
])
def test_what_cannot_be_is_refused(vextrace, tmp_path, command, line):
    result = vextrace(*command, input=SMALL)
    assert (result.returncode, result.stderr.decode()) == (2, f"vextrace: {line}\n")
    assert os.listdir(tmp_path) == []


def test_standard_input_is_refused_for_a_folder_where_no_log_is_named(vextrace, tmp_path):
    result = vextrace("record", "-o", "out/", input=DRIVE.read_bytes())
    assert (result.returncode, result.stderr) == (
        2, b"vextrace: -: standard input has no name that a file in a folder could have\n")
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("command, ending, _", WORKS)
def test_an_output_that_cannot_be_looked_at_is_refused(vextrace, inputs, command, ending, _):
    name = inputs(ending, 1)[0]
    long = "x" * 256 + "\x1b"
    for output, reason in ((long, "written"), (long + "/", "made")):
        result = vextrace(*command, "-o", output, name)
        shown = output.replace("\x1b", "\\x1b")
        assert (result.returncode, result.stderr.decode()) == (
            2, f"vextrace: {shown}: cannot be {reason}: File name too long\n")


def test_a_file_in_the_way_of_a_folder_is_named(vextrace, tmp_path, inputs):
    (tmp_path / "out").write_bytes(b"")
    result = vextrace("export", "--to", "csv", "-o", "out/", *inputs("trace"))
    assert result.returncode == 2 and result.stderr.startswith(b"vextrace: out/: cannot be made: ")


@pytest.mark.parametrize("jobs", [[], ["--jobs", "1"], ["--jobs", "7"]])
def test_lines_come_out_whole_however_many_work(vextrace, tmp_path, inputs, jobs):
    names = inputs("nmea", 12)
    result = vextrace("record", "-o", "out/", *jobs, *names)
    assert result.returncode == 0
    lines = result.stderr.decode().splitlines()
    assert len(lines) == 5 * len(names)
    for number in range(len(names)):
        mine = [line for line in lines
                if line.startswith((f"vextrace: in/{number}.nmea: ", f"vextrace: out/{number}.trace: "))]
        assert len(mine) == 5


def test_an_interrupt_ends_all_and_leaves_no_half_file(vextrace, tmp_path):
    for number in range(4):
        os.mkfifo(tmp_path / f"{number}.trace")
    process = subprocess.Popen([vextrace.program, "export", "--to", "csv", "-o", "out/", "--jobs", "2",
                                *(f"{number}.trace" for number in range(4))],
                               cwd=tmp_path, stderr=subprocess.PIPE)
    writers = [open(tmp_path / f"{number}.trace", "wb", buffering=0) for number in range(2)]
    for writer in writers:
        writer.write(SMALL)
    while len(os.listdir(tmp_path / "out")) < 2:
        time.sleep(0.01)
    process.send_signal(signal.SIGTERM)
    assert process.wait(20) == -signal.SIGTERM
    assert os.listdir(tmp_path / "out") == []
    for writer in writers:
        writer.close()
