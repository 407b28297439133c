"""Signals that end vextrace record."""
import contextlib
import fcntl
import os
import pathlib
import re
import select
import signal
import subprocess
import termios
import time

import pytest

from conftest import DRIVE
from model import recording
from recorders import (GSV, LAST, LAST_STAMP, NEVER, NEXT, NEXT_STAMP, PATIENCE, RMC, STAMP, is_raw,
                       unread, wait_until)
from traces import message, sentence


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_ends_in_order_by_signals(start, line, number):
    receiver, serial, name = line
    before = termios.tcgetattr(serial)
    recorder = start("--idle", NEVER, "--baud", "38400", name)
    wait_until(lambda: is_raw(serial))
    os.write(receiver, RMC + GSV + NEXT)
    first = message(STAMP, RMC, GSV)
    recorder.wait_for(first)
    status, told = recorder.stop(number)
    assert status == 128 + number
    assert recorder.trace() == first + message(NEXT_STAMP, NEXT)
    data = len(RMC + GSV + NEXT)
    assert told == [
        f"vextrace: {name}: {data} bytes read, {data} recorded, 0 skipped",
        f"vextrace: {name}: 3 sentences, 3 checked, 0 with a wrong checksum, 0 without",
        f"vextrace: trace: 2 epochs, 2 messages, {len(recorder.trace())} bytes written",
        "vextrace: trace: 1994-03-23T12:35:19Z to 1994-03-23T12:35:20Z",
        f"vextrace: {name}: ended by {number.name}"]
    assert termios.tcgetattr(serial) == before


def test_leaves_signals_ignored_that_were(start, pipe):
    recorder = start("--idle", NEVER, stdin=pipe[0],
                     preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    recorder.process.send_signal(signal.SIGHUP)
    os.write(pipe[1], LAST)
    recorder.wait_for(message(STAMP, RMC) + message(NEXT_STAMP, NEXT))
    recorder.stop()


def test_ends_by_a_second_signal_where_nobody_takes_the_trace(start, pipe, tmp_path):
    """The pipe behind it is full: the first signal waits for room."""
    reader, writer = os.pipe()
    fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
    recorder = start("--idle", NEVER, stdin=pipe[0], stdout=writer)
    os.close(writer)
    epochs = b"".join(sentence(b"GPRMC,1235%02d,A," % (i % 60) + b"x" * 900) for i in range(40))
    os.write(pipe[1], epochs)
    wait_until(lambda: unread(reader) > 3000 and unread(pipe[0]) == 0)
    for _ in range(50):
        recorder.process.send_signal(signal.SIGTERM)
        if recorder.process.poll() is not None:
            break
        time.sleep(0.05)
    status, told = recorder.end()
    assert status == 1
    assert told[-1] == "vextrace: standard output: cannot be written: Interrupted system call"
    os.close(reader)


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_records_what_was_sent_before_a_signal(start, pipe, number):
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    recorder.process.send_signal(signal.SIGSTOP)
    os.write(pipe[1], GSV + LAST)
    recorder.process.send_signal(number)
    recorder.process.send_signal(signal.SIGCONT)
    status, _ = recorder.end()
    assert status == 128 + number
    assert recorder.trace() == (message(STAMP, RMC) + message(NEXT_STAMP, GSV, NEXT)
                                + message(LAST_STAMP, LAST))
def test_ends_by_a_signal_while_a_reader_is_slow(start, pipe, tmp_path):
    os.mkfifo(tmp_path / "fifo")
    slow = os.open(tmp_path / "fifo", os.O_RDONLY | os.O_NONBLOCK)
    fcntl.fcntl(slow, fcntl.F_SETPIPE_SZ, 4096)
    recorder = start("--idle", NEVER, "-o", "fifo", stdin=pipe[0], stdout=None)
    epochs = b"".join(sentence(b"GPRMC,1235%02d,A," % (i % 60) + b"x" * 900) for i in range(40))
    os.write(pipe[1], epochs)
    wait_until(lambda: unread(slow) > 3000 and unread(pipe[0]) == 0)
    status = pathlib.Path(f"/proc/{recorder.process.pid}/status")
    wait_until(lambda: re.search(r"State:\s+S", status.read_text()))  # until there is room
    recorder.process.send_signal(signal.SIGINT)
    wait_until(lambda: re.search(r"ShdPnd:\s+0+\n", status.read_text()))  # it was delivered
    trace = b""
    deadline = time.monotonic() + PATIENCE
    while (recorder.process.poll() is None or select.select([slow], [], [], 0)[0]) and (
            time.monotonic() < deadline):
        with contextlib.suppress(BlockingIOError):
            piece = os.read(slow, 512)
            trace += piece
            if not piece:
                break
    assert recorder.end()[0] == 128 + signal.SIGINT
    assert trace == recording.trace(epochs)
    os.close(slow)


def test_ends_by_a_signal_where_the_source_never_pauses(start, pipe):
    fcntl.fcntl(pipe[1], fcntl.F_SETPIPE_SZ, 1 << 20)
    sources = [subprocess.Popen(["cat", "/dev/zero"], stdout=pipe[1]) for _ in range(4)]
    try:
        recorder = start("--idle", NEVER, stdin=pipe[0])
        time.sleep(0.1)
        assert recorder.stop(signal.SIGINT)[0] == 128 + signal.SIGINT
    finally:
        for source in sources:
            source.kill()
            source.wait()


@pytest.mark.parametrize("unit", [b"\0", b"\xff\xff\0\x02", DRIVE.read_bytes()[:64]])
def test_ends_by_a_signal_while_the_trace_is_looked_through(start, pipe, tmp_path, unit):
    with open(tmp_path / "trace", "wb") as trace:
        trace.write(message(STAMP, RMC))
        for _ in range(256):
            trace.write(unit * ((1 << 20) // len(unit)))
    size = os.path.getsize(tmp_path / "trace")
    recorder = start("--append", stdin=pipe[0])
    time.sleep(0.3)
    begin = time.monotonic()
    status, told = recorder.stop(signal.SIGINT)
    assert time.monotonic() - begin < 2
    assert (status, told) == (
        128 + signal.SIGINT, ["vextrace: trace: ended by SIGINT, before anything was recorded"])
    assert os.path.getsize(tmp_path / "trace") == size


def catches(pid, number):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    caught = int(re.search(r"SigCgt:\s*(\w+)", status)[1], 16)
    return caught >> (number - 1) & 1


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_ends_by_a_signal_while_nobody_reads_the_fifo_yet(start, pipe, tmp_path, number):
    os.mkfifo(tmp_path / "trace")
    recorder = start(stdin=pipe[0])
    wait_until(lambda: catches(recorder.process.pid, number))
    time.sleep(0.3)
    name = signal.Signals(number).name
    assert recorder.stop(number) == (
        128 + number, [f"vextrace: trace: ended by {name}, before anything was recorded"])
