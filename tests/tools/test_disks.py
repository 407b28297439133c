"""Disks that are full or cannot be written, under every command that writes a file."""
import os
import re
import shutil
import subprocess

import pytest

from conftest import DRIVE
from model import recording

WRITING = {
    "record": ["record", "-o", "disk/out", DRIVE],
    "export": ["export", "--to", "gpx", "-o", "disk/out", "trace"],
    "repair": ["repair", "trace", "disk/out"],
    "report": ["report", "-o", "disk/out", "trace"],
}


def mount(*arguments):
    mounted = subprocess.run(["mount", *arguments], check=False, capture_output=True)
    if mounted.returncode != 0:
        pytest.skip("no file system can be mounted here: " + mounted.stderr.decode().strip())


@pytest.fixture
def disk(tmp_path):
    """A disk of 16 KiB, which holds less than what is made of the trace beside it."""
    (tmp_path / "trace").write_bytes(recording.trace(DRIVE.read_bytes()))
    folder = tmp_path / "disk"
    folder.mkdir()
    mount("-t", "tmpfs", "-o", "size=16k", "none", folder)
    yield folder
    subprocess.run(["umount", folder], check=True)


@pytest.fixture
def closed(disk):
    """A disk that can be read only, with a file on it."""
    (disk / "out").write_bytes(b"precious")
    mount("-o", "remount,ro", disk)
    return disk


def refused(result, status, line):
    assert (result.returncode, result.stdout) == (status, b"")
    assert result.stderr.decode() == f"vextrace: {line}\n"


@pytest.mark.parametrize("command", ["export", "repair", "report"])
def test_a_full_disk_holds_nothing_that_is_half_written(vextrace, disk, command):
    result = vextrace(*WRITING[command])
    refused(result, 1, "disk/out: cannot be written: No space left on device")
    assert os.listdir(disk) == []


@pytest.mark.parametrize("command", ["export", "repair", "report"])
def test_a_full_disk_keeps_the_file_that_was_to_be_replaced(vextrace, disk, command):
    (disk / "out").write_bytes(b"precious")
    result = vextrace(*WRITING[command], "--force")
    refused(result, 1, "disk/out: cannot be written: No space left on device")
    assert os.listdir(disk) == ["out"]
    assert (disk / "out").read_bytes() == b"precious"


@pytest.mark.parametrize("command", WRITING)
def test_a_disk_for_reading_is_refused(vextrace, closed, command):
    arguments = [name.replace("/out", "/new") if isinstance(name, str) else name
                 for name in WRITING[command]]
    refused(vextrace(*arguments), 2, "disk/new: cannot be written: Read-only file system")
    assert os.listdir(closed) == ["out"]


@pytest.mark.parametrize("command", WRITING)
def test_a_file_on_a_disk_for_reading_is_kept(vextrace, closed, command):
    refused(vextrace(*WRITING[command], "--force"), 2,
            "disk/out: cannot be written: Read-only file system")
    assert (closed / "out").read_bytes() == b"precious"


def test_a_trace_on_a_disk_for_reading_cannot_go_on(vextrace, closed):
    refused(vextrace(*WRITING["record"], "--append"), 2,
            "disk/out: cannot be written: Read-only file system")


def test_inputs_on_a_disk_for_reading_are_read(vextrace, disk):
    small = recording.trace(DRIVE.read_bytes()[:5000])
    (disk / "in").write_bytes(small)
    mount("-o", "remount,ro", disk)
    for arguments in (["show", "disk/in"], ["info", "disk/in"], ["repair", "disk/in", "-"],
                      ["export", "--to", "csv", "disk/in"], ["report", "disk/in"],
                      ["record", "disk/in"]):
        result = vextrace(*arguments)
        assert result.returncode == 0, arguments
        assert result.stdout != b""


def system_calls(vextrace, folder, *arguments):
    """Names of those that are asked of a file system, in their order, with what they are asked for."""
    if shutil.which("strace") is None:
        pytest.skip("strace is not at hand")
    log = folder / "calls"
    # Under strace leaks cannot be looked for, which a build with sanitizers would complain of.
    quiet = {**os.environ, "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
    done = subprocess.run(["strace", "-f", "-y", "-o", log, "-e", "trace=fsync,fdatasync,/rename.*", vextrace.program,
                           *map(str, arguments)], cwd=folder, capture_output=True, check=False,
                          env=quiet)
    if not log.exists() or not log.stat().st_size:
        pytest.skip("strace may not trace here")
    assert done.returncode == 0
    return re.findall(r"(fsync|fdatasync|rename)\w*\((.*)\) = 0", log.read_text())


@pytest.mark.parametrize("force", [[], ["--force"]])
@pytest.mark.parametrize("command", ["export", "repair", "report"])
def test_a_file_is_on_its_disk_before_it_bears_its_name(vextrace, tmp_path, command, force):
    (tmp_path / "trace").write_bytes(recording.trace(DRIVE.read_bytes()[:5000]))
    arguments = [argument.replace("disk/", "") for argument in WRITING[command]]
    if force:
        (tmp_path / "out").write_bytes(b"old")
    calls = system_calls(vextrace, tmp_path, *arguments, *force)
    assert [name for name, _ in calls] == ["fdatasync", "rename", "fsync"]
    assert f"{tmp_path}/.vextrace-" in calls[0][1]
    assert calls[2][1].endswith(f"<{tmp_path}>")


def test_a_new_trace_has_its_name_on_the_disk_with_its_first_epoch(vextrace, tmp_path):
    calls = system_calls(vextrace, tmp_path, "record", "--sync", "-o", "out", DRIVE)
    assert calls[0][0] == "fdatasync" and calls[0][1].endswith(f"<{tmp_path}/out>")
    assert calls[1][0] == "fsync" and calls[1][1].endswith(f"<{tmp_path}>")
    assert {name for name, _ in calls[2:]} <= {"fdatasync"}
