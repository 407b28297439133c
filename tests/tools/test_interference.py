"""Traces that are removed, cut off or written by others while they are recorded."""
import os
import signal
import socket
import subprocess

import pytest

from conftest import DRIVE
from samples import SMALL
from recorders import GSV, LAST, LAST_STAMP, NEVER, NEXT, NEXT_STAMP, RMC, STAMP, unread, wait_until
from traces import message


def test_ends_when_the_trace_is_removed(start, pipe, tmp_path):
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    (tmp_path / "trace").unlink()
    os.write(pipe[1], LAST)
    status, told = recorder.end()
    assert status == 1
    assert told[-2:] == ["vextrace: standard input: ended by a write error",
                         "vextrace: trace: was removed while it was recorded"]
    assert "vextrace: trace: lacks the last 2 sentences" in told


def test_ends_when_the_trace_was_removed_at_the_end(start, pipe, tmp_path):
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    (tmp_path / "trace").unlink()
    status, told = recorder.stop()
    assert (status, told[-1]) == (1, "vextrace: trace: was removed while it was recorded")


def test_goes_on_when_the_trace_is_renamed(start, pipe, tmp_path):
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    (tmp_path / "trace").rename(tmp_path / "other")
    os.close(pipe[1])
    assert recorder.end()[0] == 0
    assert (tmp_path / "other").read_bytes() == message(STAMP, RMC) + message(NEXT_STAMP, NEXT)


def test_fills_no_hole_when_the_trace_is_cut_off(start, pipe, tmp_path):
    for options in ([], ["stdout"]):
        with open(tmp_path / "trace", "wb") as out:
            recorder = start("--append", "--idle", NEVER, stdin=pipe[0], **dict.fromkeys(options, out))
        begin = message(STAMP, RMC)
        os.write(pipe[1], RMC + NEXT)
        recorder.wait_for(begin)
        os.truncate(tmp_path / "trace", 0)
        os.write(pipe[1], LAST)
        wait_until(lambda: recorder.trace() == message(NEXT_STAMP, NEXT))
        status, told = recorder.stop()
        assert status == 128 + signal.SIGTERM
        assert recorder.trace() == message(NEXT_STAMP, NEXT) + message(LAST_STAMP, LAST)
        name = "standard output" if options else "trace"
        assert f"vextrace: {name}: {len(begin)} bytes of these cut off by another program" in told


@pytest.mark.parametrize("kind", ["pipe", "socket"])
def test_ends_when_its_reader_goes_while_the_receiver_is_silent(start, pipe, kind):
    ours, theirs = socket.socketpair() if kind == "socket" else map(os.fdopen, os.pipe(), ["rb", "wb"])
    recorder = start("--idle", NEVER, stdin=pipe[0], stdout=theirs)
    theirs.close()
    os.write(pipe[1], RMC + GSV)
    wait_until(lambda: unread(pipe[0]) == 0)
    ours.close()
    status, told = recorder.end()
    assert status == 1
    assert told[-1] == "vextrace: standard output: nobody reads it any more"
    assert "vextrace: standard output: lacks the last 2 sentences" in told


def test_lets_one_recorder_write_to_a_file_on_standard_output(start, vextrace, pipe, tmp_path):
    with open(tmp_path / "trace", "ab") as out:
        recorder = start("--idle", NEVER, stdin=pipe[0], stdout=out)
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    with open(tmp_path / "trace", "ab") as out:
        second = vextrace("record", DRIVE, stdout=out, stderr=subprocess.PIPE)
        assert (second.returncode, second.stderr) == (
            2, b"vextrace: standard output: is being recorded by another program\n")
        recorder.stop()
        # A shell may hold the file open that it opened for the first one.
        assert vextrace("record", DRIVE, stdout=out, stderr=subprocess.PIPE).returncode == 0
        assert vextrace("record", "--append", "-o", "trace", DRIVE).returncode == 0


@pytest.mark.parametrize("command", [
    ["export", "--to", "csv", "-o", "trace", "other"], ["repair", "other", "trace"],
    ["cut", "--from", "1970-01-01", "-o", "trace", "other"], ["report", "-o", "trace", "other"]])
def test_a_trace_that_is_being_recorded_is_not_replaced(start, vextrace, pipe, tmp_path, command):
    (tmp_path / "other").write_bytes(SMALL)
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    result = vextrace(*command, "--force")
    assert (result.returncode, result.stderr) == (
        2, b"vextrace: trace: is being recorded by another program\n")
    recorder.stop()
    assert recorder.trace() == message(STAMP, RMC) + message(NEXT_STAMP, NEXT)
    assert vextrace(*command, "--force").returncode == 0
