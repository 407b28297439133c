"""Pipes whose other end has made them such that no read waits."""
import os
import subprocess

import pytest

from conftest import DRIVE
from recorders import unread, wait_until


@pytest.fixture
def trace(vextrace):
    """A trace of a drive."""
    return vextrace("record", DRIVE).stdout


@pytest.mark.parametrize("command", [
    ["show", "-"], ["info", "-"], ["export", "--to", "csv", "-"], ["repair", "-", "-"],
    ["cut", "--from", "1970-01-01", "-"], ["report", "-"], ["check", DRIVE, "-"]])
def test_waits_for_what_is_not_there_yet(vextrace, pipe, trace, command):
    wanted = vextrace(*command, input=trace)
    reader, writer = pipe
    os.set_blocking(reader, False)
    process = subprocess.Popen([vextrace.program, *map(str, command)], stdin=reader,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    for begin in range(0, len(trace), 4096):
        os.write(writer, trace[begin:begin + 4096])
        wait_until(lambda: unread(reader) == 0 or process.poll() is not None)
    os.close(writer)
    out, told = process.communicate(timeout=60)
    assert (process.returncode, told) == (0, wanted.stderr)
    assert out == wanted.stdout
