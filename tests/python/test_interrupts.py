"""Whoever presses Ctrl-C does not have to wait until all is read."""
import os
import signal
import subprocess
import sys

import pytest
from traces import message, utc

from vextrace import _vextrace

RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"
STAMP = utc("1994-03-23T12:35:19")
SECOND = 10**9
COUNT = 50_000

# The write end stays open, so that the pipe neither gives anything nor ends.
READS_A_SILENT_PIPE = """
import os, signal, sys
import vextrace
def interrupt(*_):
    raise KeyboardInterrupt
signal.signal(signal.SIGALRM, interrupt)
signal.setitimer(signal.ITIMER_REAL, 0.2, 0.2)
writer = os.open(sys.argv[1], os.O_RDWR)
try:
    READ
except KeyboardInterrupt:
    print("interrupted")
"""


@pytest.mark.parametrize("read", ["next(vextrace.read(sys.argv[1]))", "vextrace.frame(sys.argv[1])"])
def test_a_pipe_that_is_silent_is_waited_for_until_a_signal(read, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    ended = subprocess.run([sys.executable, "-c", READS_A_SILENT_PIPE.replace("READ", read), pipe],
                           capture_output=True, timeout=60, check=True)
    assert ended.stdout == b"interrupted\n"


def test_a_signal_ends_a_long_reading():
    def interrupt(*_):
        raise KeyboardInterrupt

    trace = b"".join(message(STAMP + number * SECOND, RMC) for number in range(COUNT))
    table = _vextrace._FixTable(0, 2**64 - 1, False)
    before = signal.signal(signal.SIGALRM, interrupt)
    try:
        with pytest.raises(KeyboardInterrupt):
            signal.setitimer(signal.ITIMER_REAL, 0.001)
            table.add(trace, 0, span=2**14)
    finally:
        signal.signal(signal.SIGALRM, before)
    assert len(table.take()["message"]) < COUNT
