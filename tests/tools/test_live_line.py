"""The line that vextrace record shows on a terminal while it records."""
import contextlib
import os
import pty
import re
import select
import signal
import subprocess
import time

import pytest

from traces import message, sentence

PATIENCE = 20  # seconds; far more than anything here takes
RMC = sentence(b"GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A")
GGA = sentence(b"GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
NEXT = sentence(b"GPRMC,123520,V,,,,,,,230394,,,N")
WRONG = b"$GPGGA,123519,4807.038,N,01131.000,E,1,99,0.9,545.4,M,46.9,M,,*00\r\n"


class Watched:
    """A recorder with a terminal, and what stands on its last line."""

    def __init__(self, program, folder, *options, columns=200):
        self.terminal, theirs = pty.openpty()
        os.set_blocking(self.terminal, False)
        subprocess.run(["stty", "cols", str(columns)], stdin=theirs, check=True)
        self.input = os.pipe()
        self.process = subprocess.Popen([program, "record", "--idle", "100", "-o", "trace", *options], cwd=folder,
                                        stdin=self.input[0], stderr=theirs, start_new_session=True)
        os.close(theirs)
        self.shown = b""

    def send(self, data):
        os.write(self.input[1], data)

    def read(self, seconds=0.1):
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            if select.select([self.terminal], [], [], left)[0]:
                try:
                    self.shown += os.read(self.terminal, 4096)
                except OSError:  # nobody has it open any more
                    break

    def wait_for(self, pattern):
        """Until a line matches; all of it."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            for line in re.split(rb"[\r\n]", self.shown):
                if re.fullmatch(pattern, line.rstrip(b" ")):
                    return line.decode().rstrip(" ")
            self.read()
        raise AssertionError((pattern, self.shown))

    def end(self):
        self.process.send_signal(signal.SIGINT)
        self.process.wait(PATIENCE)
        self.read()
        return self.shown

    def close(self):
        self.process.kill()
        self.process.wait()
        for end in (self.terminal, *self.input):
            os.close(end)


@pytest.fixture
def watch(vextrace, tmp_path):
    with contextlib.ExitStack() as stack:
        def start(*options, **more):
            watched = Watched(vextrace.program, tmp_path, *options, **more)
            stack.callback(watched.close)
            return watched
        yield start


def test_says_what_the_receiver_says(watch):
    recorder = watch()
    recorder.wait_for(rb"no time, no fix, 0 sentences/s, 0 bytes skipped, 0 bytes recorded")
    recorder.send(b"\xff\xff" + RMC + GGA)
    size = len(message(0, RMC, GGA))
    recorder.wait_for(rb"12:35:19 UTC, fix, 8 satellites, 41\.5 km/h, [012] sentences/s, 2 bytes skipped, "
                      rb"%d bytes recorded" % size)
    recorder.send(NEXT)
    size += len(message(0, NEXT))
    recorder.wait_for(rb"12:35:20 UTC, no fix, [0123] sentences/s, 2 bytes skipped, %d bytes recorded" % size)
    recorder.wait_for(rb"12:35:20 UTC, no fix, [0123] sentences/s, .* recorded, silent for [2-4] s")
    recorder.wait_for(rb"12:35:20 UTC, no fix, [0123] sentences/s, .* recorded, silent for [5-9] s")


def test_believes_no_wrong_checksum(watch):
    recorder = watch()
    recorder.send(RMC + GGA)
    recorder.wait_for(rb"12:35:19 UTC, fix, 8 satellites, .*")
    recorder.send(WRONG.replace(b"123519", b"123521"))
    recorder.wait_for(rb"12:35:19 UTC, fix, 8 satellites, .* 2\d\d bytes recorded.*")
    assert b"99 satellites" not in recorder.shown and b"12:35:21" not in recorder.shown


def test_is_erased_before_the_summary(watch):
    recorder = watch()
    line = recorder.wait_for(rb"no time.*")
    recorder.send(RMC)
    shown = recorder.end()
    erased = b"\r" + b" " * 60
    assert erased in shown
    summary = shown[shown.rindex(erased):].lstrip(b"\r ")
    assert summary.startswith(b"vextrace: standard input: %d bytes read, " % len(RMC))
    assert summary.endswith(b"vextrace: standard input: ended by SIGINT\r\n")
    assert len(line) > 50


def test_is_no_longer_than_the_terminal_is_wide(watch):
    recorder = watch(columns=20)
    assert recorder.wait_for(rb"no time.*") == "no time, no fix, 0"


def test_is_not_there_when_told(watch):
    recorder = watch("--quiet")
    recorder.send(RMC + GGA)
    recorder.read(1.5)
    assert recorder.end() == b""


def test_is_not_there_without_a_terminal(vextrace, tmp_path):
    with subprocess.Popen([vextrace.program, "record", "-o", "trace"], cwd=tmp_path, stdin=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        process.stdin.write(RMC)
        process.stdin.flush()
        time.sleep(1.5)
        process.send_signal(signal.SIGINT)
        _, told = process.communicate(timeout=PATIENCE)
    assert b"\r" not in told and b"UTC" not in told


def test_says_what_to_look_at_where_all_is_skipped(watch):
    recorder = watch()
    hint = (rb"vextrace: standard input: only bytes to skip for 5 seconds: the rate is another \(--baud 4800, 9600, "
            rb"38400, 115200\), or the receiver sends a binary protocol and must be told to send NMEA")
    recorder.send(RMC)
    begin = time.monotonic()
    while time.monotonic() - begin < 12 and b"only bytes" not in recorder.shown:
        recorder.send(b"\xb5\x62")
        recorder.read()
    assert time.monotonic() - begin > 5
    recorder.wait_for(hint)
    recorder.wait_for(rb".* bytes skipped, .*")
    assert recorder.end().count(b"only bytes") == 1


def test_shows_how_far_a_file_is(vextrace, tmp_path):
    with open(tmp_path / "log", "wb") as log:
        log.truncate(4 << 30)
    with open(tmp_path / "told", "wb") as told:
        silent = subprocess.Popen([vextrace.program, "record", "log"], cwd=tmp_path, stderr=told,
                                  stdout=subprocess.DEVNULL)
        terminal, theirs = pty.openpty()
        shown = subprocess.Popen([vextrace.program, "record", "log"], cwd=tmp_path, stderr=theirs,
                                 stdout=subprocess.DEVNULL, start_new_session=True)
        os.close(theirs)
        assert re.match(rb"\r\d+ %, [\d.]+ MB/s, \d+:\d\d left", os.read(terminal, 100))
        for process in (silent, shown):
            process.kill()
            process.wait()
        os.close(terminal)
    assert (tmp_path / "told").read_bytes() == b""
