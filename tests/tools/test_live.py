"""vextrace record beside a receiver that sends as it likes."""
import array
import contextlib
import fcntl
import os
import pathlib
import pty
import random
import re
import select
import shutil
import signal
import socket
import stat
import struct
import subprocess
import tempfile
import termios
import threading
import time
import tty

import pytest

from conftest import DRIVE
from model import recording
from test_record import walk
from traces import SECOND, message, sentence, utc

PATIENCE = 20  # seconds; far more than anything here takes
NEVER = "86400000"
RMC = sentence(b"GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A")
GSV = sentence(b"GPGSV,1,1,01,01,40,083,46")
GGA = sentence(b"GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
NEXT = sentence(b"GPRMC,123520,A,4807.039,N,01131.001,E,022.5,084.5,230394,003.1,W,A")
LAST = sentence(b"GPRMC,123521,A,4807.040,N,01131.002,E,022.6,084.6,230394,003.1,W,A")
STAMP = utc("1994-03-23T12:35:19")
NEXT_STAMP = utc("1994-03-23T12:35:20")
LAST_STAMP = utc("1994-03-23T12:35:21")


class Recorder:
    """A recorder that runs, with its input and the trace that it writes."""

    def __init__(self, program, folder, *options, **streams):
        self.trace_path = folder / "trace"
        arguments = ["record", *map(str, options)] + ([] if "stdout" in streams else ["-o", "trace"])
        # Nobody's own terminal: a session of its own.
        self.process = subprocess.Popen([program, *arguments], cwd=folder, stderr=subprocess.PIPE,
                                        start_new_session=True, **streams)

    def trace(self):
        return self.trace_path.read_bytes() if self.trace_path.exists() else b""

    def wait_for(self, expected):
        """Until the trace is that long; then it must be that."""
        deadline = time.monotonic() + PATIENCE
        while len(self.trace()) < len(expected) and time.monotonic() < deadline:
            assert self.process.poll() is None, self.process.stderr.read()
            time.sleep(0.002)
        assert self.trace() == expected

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.end()

    def end(self):
        """(status, lines on standard error)"""
        _, told = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, told.decode().splitlines()


@pytest.fixture
def start(vextrace, tmp_path):
    """Starts recorders; none outlives its test."""
    with contextlib.ExitStack() as stack:
        def run(*options, **streams):
            recorder = Recorder(vextrace.program, tmp_path, *options, **streams)
            stack.callback(recorder.process.wait)
            stack.callback(recorder.process.kill)
            return recorder
        yield run


@pytest.fixture
def pipe():
    """(read end, write end), closed at the end where they are not."""
    ends = os.pipe()
    yield ends
    for end in ends:
        with contextlib.suppress(OSError):
            os.close(end)


@pytest.fixture
def line():
    """(receiver's end, serial line, its name)"""
    receiver, serial = pty.openpty()
    yield receiver, serial, os.ttyname(serial)
    for end in (receiver, serial):
        with contextlib.suppress(OSError):
            os.close(end)


def unread(end):
    count = array.array("i", [0])
    fcntl.ioctl(end, termios.FIONREAD, count)
    return count[0]


def is_raw(serial):
    return not termios.tcgetattr(serial)[3] & (termios.ICANON | termios.ECHO | termios.ISIG)


def set_rate(serial, rate):
    settings = termios.tcgetattr(serial)
    settings[4] = settings[5] = rate
    termios.tcsetattr(serial, termios.TCSANOW, settings)


def wait_until(condition):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.002)


def feed(end, data, rng):
    """In pieces of 1 to 7 bytes, with pauses."""
    while data:
        size = rng.randint(1, 7)
        os.write(end, data[:size])
        data = data[size:]
        if rng.random() < 0.1:
            time.sleep(rng.random() * 0.003)


def test_writes_an_epoch_as_soon_as_the_next_begins(start, pipe):
    recorder = start("--idle", NEVER, stdin=pipe[0])
    os.write(pipe[1], RMC + GGA + NEXT)
    first = message(STAMP, RMC, GGA)
    recorder.wait_for(first)
    os.write(pipe[1], GSV + LAST)
    second = message(NEXT_STAMP, NEXT, GSV)
    recorder.wait_for(first + second)
    assert recorder.stop()[0] == 128 + signal.SIGTERM
    assert recorder.trace() == first + second + message(LAST_STAMP, LAST)


def test_records_a_line_that_sends_in_small_pieces(start, line):
    receiver, _, name = line
    data = DRIVE.read_bytes()[:12000]
    data = data[:data.rindex(b"\n") + 1]
    recorder = start("--idle", NEVER, name)
    wait_until(lambda: is_raw(line[1]))
    feed(receiver, data + LAST, random.Random(1))
    recorder.wait_for(recording.trace(data))
    recorder.stop()
    assert recorder.trace() == recording.trace(data + LAST)


def test_writes_an_epoch_when_the_source_is_silent(start, pipe):
    recorder = start("--idle", "100", stdin=pipe[0])
    os.write(pipe[1], RMC + GSV)
    first = message(STAMP, RMC, GSV)
    recorder.wait_for(first)
    # The epoch goes on, in new messages.
    os.write(pipe[1], GSV + GGA)
    second = message(STAMP, GSV, GGA)
    recorder.wait_for(first + second)
    os.write(pipe[1], NEXT)
    recorder.wait_for(first + second + message(NEXT_STAMP, NEXT))
    status, told = recorder.stop()
    assert f"vextrace: trace: 2 epochs, 3 messages, {len(recorder.trace())} bytes written" in told


def test_is_not_silent_while_anything_comes(start, pipe):
    recorder = start("--idle", "2000", stdin=pipe[0])
    os.write(pipe[1], RMC)
    begin = time.monotonic()
    while time.monotonic() - begin < 2.5:
        os.write(pipe[1], b"\xff")
        time.sleep(0.05)
    assert recorder.trace() == b""
    recorder.wait_for(message(STAMP, RMC))


def test_keeps_a_sentence_whole_over_silence(start, pipe):
    recorder = start("--idle", "50", stdin=pipe[0])
    os.write(pipe[1], RMC + GGA[:20])
    recorder.wait_for(message(STAMP, RMC))
    time.sleep(0.2)
    os.write(pipe[1], GGA[20:-1])
    time.sleep(0.2)
    os.write(pipe[1], GGA[-1:])
    recorder.wait_for(message(STAMP, RMC) + message(STAMP, GGA))


def test_proves_what_silence_divided(start, pipe, vextrace, tmp_path):
    recorder = start("--idle", "50", stdin=pipe[0])
    parts = [GSV, GGA, RMC + GSV, NEXT, GSV + GSV, LAST]
    expected = 0
    for part in parts:
        os.write(pipe[1], part)
        expected += 14 + len(part) if part != GSV + GSV else 2 * (14 + len(GSV))
        wait_until(lambda: len(recorder.trace()) == expected)
    recorder.stop()
    assert [stamp for stamp, _ in walk(recorder.trace())] == [
        0, utc("1970-01-01T12:35:19"), STAMP, NEXT_STAMP, NEXT_STAMP, NEXT_STAMP, LAST_STAMP]
    (tmp_path / "log").write_bytes(b"".join(parts))
    assert vextrace("check", "--live", "log", "trace").returncode == 0
    assert vextrace("check", "log", "trace").returncode == 1


def test_writes_an_epoch_with_one_call(start, pipe):
    """Each call is a packet of its own here."""
    ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
    ours.settimeout(PATIENCE)
    data = DRIVE.read_bytes()[:20000]
    data = data[:data.rindex(b"\n") + 1]
    recorder = start("--idle", NEVER, "--sync", stdin=pipe[0], stdout=theirs)
    theirs.close()
    os.write(pipe[1], data)
    os.close(pipe[1])
    packets = list(iter(lambda: ours.recv(1 << 20), b""))
    texts = [text for _, text, _ in recording.sentences(data)]
    assert len(packets) == len(recording.epochs(texts))
    assert b"".join(packets) == recording.trace(data)
    assert recorder.end()[0] == 0


def test_waits_for_the_device_behind_each_epoch_when_told(vextrace, tmp_path):
    if shutil.which("strace") is None:
        pytest.skip("strace is not at hand")
    calls = {}
    for options in ([], ["--sync"]):
        result = subprocess.run(
            ["strace", "-f", "-e", "trace=write,fdatasync", vextrace.program, "record", *options, "-o",
             f"trace{len(options)}"], cwd=tmp_path, input=RMC + GGA + NEXT + LAST, capture_output=True, check=False)
        if result.returncode != 0:
            pytest.skip("strace may not trace here")
        calls[len(options)] = re.findall(rb"(write|fdatasync)\((?!2,)", result.stderr)
    assert calls[0] == [b"write"] * 3
    assert calls[1] == [b"write", b"fdatasync"] * 3


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


def test_ends_in_order_when_the_line_is_hung_up_in_mid_sentence(start, line):
    receiver, serial, name = line
    recorder = start("--idle", NEVER, name)
    wait_until(lambda: is_raw(serial))
    os.write(receiver, RMC + GSV + NEXT + b"\xff" + GGA[:30])
    recorder.wait_for(message(STAMP, RMC, GSV))
    # All that was sent must have been read, or it goes with the line.
    wait_until(lambda: unread(serial) == 0)
    os.close(serial)
    os.close(receiver)
    status, told = recorder.end()
    assert status == 1
    assert told[-2:] == [f"vextrace: {name}: ended by a hang-up", f"vextrace: {name}: the line was hung up"]
    assert recorder.trace() == message(STAMP, RMC, GSV) + message(NEXT_STAMP, NEXT)


def test_tells_a_read_error_behind_sentences(start):
    server = socket.create_server(("127.0.0.1", 0))
    ours = socket.create_connection(server.getsockname())
    theirs, _ = server.accept()
    recorder = start("--idle", NEVER, stdin=theirs)
    theirs.close()
    ours.sendall(RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    ours.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    ours.close()
    server.close()
    status, told = recorder.end()
    assert status == 1
    assert told[-2:] == [
        "vextrace: standard input: ended by a read error",
        f"vextrace: standard input: cannot be read on at byte {len(RMC + NEXT)}: Connection reset by peer"]
    assert recorder.trace() == message(STAMP, RMC) + message(NEXT_STAMP, NEXT)


def test_reads_and_writes_fifos(vextrace, tmp_path):
    os.mkfifo(tmp_path / "in")
    os.mkfifo(tmp_path / "out")
    data = DRIVE.read_bytes()
    writer = threading.Thread(target=lambda: (tmp_path / "in").write_bytes(data))
    found = []
    reader = threading.Thread(target=lambda: found.append((tmp_path / "out").read_bytes()))
    writer.start()
    reader.start()
    result = vextrace("record", "-o", "out", "in")
    writer.join(PATIENCE)
    reader.join(PATIENCE)
    assert result.returncode == 0
    assert found == [recording.trace(data)]


# --- Serial lines

def test_sets_a_line_up_and_puts_it_back(start, line):
    receiver, serial, name = line
    set_rate(serial, termios.B4800)
    before = termios.tcgetattr(serial)
    recorder = start("--idle", NEVER, "--baud", "115200", name)
    wait_until(lambda: is_raw(serial))
    assert termios.tcgetattr(serial)[4:6] == [termios.B115200] * 2
    # Nothing is swallowed, turned or sent back: these mean much to a terminal that is not raw.
    raw = bytes(range(1, 32)) + b"\x7f\x80\xff"
    checked = b"$P" + raw.replace(b"\r", b"").replace(b"\n", b"")
    checked += b"*%02X\r\n" % recording.xor(checked[1:])
    os.write(receiver, RMC + b"\x03\x04\x11\x13\x1a\x1c" + checked + NEXT)
    recorder.wait_for(message(STAMP, RMC, checked))
    assert not select.select([receiver], [], [], 0)[0]
    recorder.stop()
    assert termios.tcgetattr(serial) == before


def test_keeps_the_rate_of_a_line_unless_told(start, line):
    _, serial, name = line
    set_rate(serial, termios.B4800)
    recorder = start(name)
    wait_until(lambda: is_raw(serial))
    assert termios.tcgetattr(serial)[4:6] == [termios.B4800] * 2
    recorder.stop()


def test_takes_a_line_on_standard_input(start, line):
    receiver, serial, _ = line
    recorder = start("--idle", NEVER, stdin=serial)
    wait_until(lambda: is_raw(serial))
    os.write(receiver, RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    recorder.stop()


def test_refuses_rates_that_lines_do_not_have(vextrace, line, tmp_path):
    _, serial, name = line
    before = termios.tcgetattr(serial)
    for rate in ("0", "13", "9601"):
        result = vextrace("record", "--baud", rate, "-o", "trace", name)
        assert result.returncode == 2
        assert result.stderr.decode() == (f"vextrace: --baud: {rate} is no rate of a serial line, such as 4800, "
                                          "9600, 38400, 115200\n")
    assert termios.tcgetattr(serial) == before
    assert not (tmp_path / "trace").exists()


def test_does_not_write_to_the_line_it_reads(vextrace, line):
    receiver, serial, name = line
    before = termios.tcgetattr(serial)
    result = vextrace("record", "-o", name, name)
    assert (result.returncode, result.stderr.decode()) == (2, f"vextrace: {name}: is the input itself\n")
    assert termios.tcgetattr(serial) == before


def test_leaves_the_users_own_terminal_as_it_is(vextrace, tmp_path):
    pid, terminal = pty.fork()
    if pid == 0:
        os.chdir(tmp_path)
        os.execv(vextrace.program, [vextrace.program, "record", "-o", "trace"])
    try:
        os.write(terminal, RMC.replace(b"\r", b"") + b"\x04")
        _, status = os.waitpid(pid, 0)
        assert os.waitstatus_to_exitcode(status) == 0
        assert (tmp_path / "trace").read_bytes() == message(STAMP, RMC.replace(b"\r", b""))
    finally:
        os.close(terminal)


@pytest.mark.parametrize("rate", [1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000,
                                  576000, 921600, 1000000, 1152000, 1500000, 2000000, 2500000, 3000000,
                                  3500000, 4000000])
def test_sets_each_rate_and_listens(start, line, rate):
    """Without the modem's signals, which most receivers do not have."""
    _, serial, name = line
    recorder = start("--baud", rate, name)
    wait_until(lambda: is_raw(serial))
    settings = termios.tcgetattr(serial)
    assert settings[4:6] == [getattr(termios, f"B{rate}")] * 2
    assert settings[2] & termios.CLOCAL and settings[2] & termios.CREAD
    recorder.stop()


@pytest.fixture
def closed_line(tmp_path):
    """A serial line that nobody but its owner may read, in a folder that everyone may use."""
    folder = pathlib.Path(tempfile.mkdtemp())
    try:
        folder.chmod(0o777)
        os.mknod(folder / "line", 0o600 | stat.S_IFCHR, os.makedev(4, 64))
        yield folder / "line"
    except PermissionError as error:
        pytest.skip(f"no device can be made here: {error}")
    finally:
        shutil.rmtree(folder)


def test_names_the_group_that_may_read_lines(vextrace, closed_line):
    program = shutil.copy(vextrace.program, closed_line.parent)
    refused = subprocess.run([program, "record", "-o", "trace", closed_line], cwd=closed_line.parent, user=65534,
                             capture_output=True, check=False, timeout=PATIENCE)
    assert (refused.returncode, refused.stdout) == (2, b"")
    assert refused.stderr.decode() == (
        f"vextrace: {closed_line}: cannot be read: Permission denied; the group dialout may read serial lines: "
        'sudo adduser "$USER" dialout, then log in anew\n')


# --- What others do to the trace

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
        for _ in range(2):  # others may hold the file open
            assert vextrace("record", DRIVE, stdout=out, stderr=subprocess.PIPE).returncode == 0


# --- Signals

def test_ends_by_a_signal_while_a_reader_is_slow(start, pipe, tmp_path):
    os.mkfifo(tmp_path / "fifo")
    slow = os.open(tmp_path / "fifo", os.O_RDONLY | os.O_NONBLOCK)
    fcntl.fcntl(slow, fcntl.F_SETPIPE_SZ, 4096)
    recorder = start("--idle", NEVER, "-o", "fifo", stdin=pipe[0], stdout=None)
    epochs = b"".join(sentence(b"GPRMC,1235%02d,A," % (i % 60) + b"x" * 900) for i in range(40))
    os.write(pipe[1], epochs)
    wait_until(lambda: unread(slow) > 3000 and unread(pipe[0]) == 0)
    recorder.process.send_signal(signal.SIGINT)
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
    sources = [subprocess.Popen(["cat", "/dev/zero"], stdout=pipe[1]) for _ in range(2)]
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
        128 + signal.SIGINT, ["vextrace: trace: ended by SIGINT, before the trace was read to its end"])
    assert os.path.getsize(tmp_path / "trace") == size


# --- Recorders that are killed

def drive(count):
    """Epochs of several sentences, each with a number of its own, and binary bytes between them."""
    data = b""
    for i in range(count):
        clock = b"%02d%02d%02d" % (i // 3600, i // 60 % 60, i % 60)
        data += sentence(b"GPRMC,%b,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A" % clock)
        data += sentence(b"GPGSV,%d,1" % i) + b"\xb5\x62\x00\x01$" + sentence(b"GPGSV,%d,2" % i)
        data += sentence(b"GPGGA,%b,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,," % clock)
    return data


def epoch_begins(data):
    """The offset of each epoch and the end of its first sentence."""
    return [(found.start(), found.end()) for found in re.finditer(rb"\$GPRMC[^\n]*\n", data)]


def lost_by_kill(data, read, begins):
    """The bytes that a recorder may lose that was killed when it had read so many: those of the epoch in
    hand, and of the one before when the killer came between its end and its writing."""
    number = max([i for i, (begin, _) in enumerate(begins) if begin <= read], default=0)
    begin, known = begins[number]
    return begins[number - 1][0] if number and read < known + 7 else begin


def test_loses_nothing_but_the_epoch_in_hand_when_killed(start, tmp_path):
    """Killed a hundred times, and continued. The pipe tells what the dead one had read."""
    rng = random.Random(20)
    data = drive(300)
    begins = epoch_begins(data)
    trace = b""
    lost = []
    position = 0
    kills = 100
    for _ in range(kills):
        reader, writer = os.pipe()
        recorder = start("--append", "--idle", NEVER, stdin=reader)
        until = min(position + rng.randint(1, 2 * len(data) // kills), len(data))
        while position < until:
            piece = data[position:min(position + rng.randint(1, 7), until)]
            os.write(writer, piece)
            # A piece has one line feed at most, so no more than one epoch ends at a time.
            wait_until(lambda: unread(reader) == 0)
            position += len(piece)
        if rng.random() < 0.3:
            time.sleep(rng.random() * 0.002)
        recorder.process.kill()
        recorder.process.wait()
        lost.append((lost_by_kill(data, position, begins), position))
        os.close(reader)
        os.close(writer)
        assert recorder.trace().startswith(trace), "what was written stays"
        trace = recorder.trace()
    recorder = start("--append", "--idle", NEVER, stdin=subprocess.PIPE)
    _, told = recorder.process.communicate(data[position:], timeout=PATIENCE)
    assert recorder.process.returncode == 0, told
    held = [text for _, texts in walk(recorder.trace()) for text in texts]
    sent = {recording.stored(text): at for at, text, _ in recording.sentences(data)}
    assert len(sent) == 4 * 300
    places = sorted(sent[text] for text in held)
    assert len(places) == len(set(places)), "nothing is doubled"
    for text, at in sent.items():
        end = at + len(text)
        if at not in places:
            assert any(begin < end and at < read + 1 for begin, read in lost), text
    for stamp, texts in walk(recorder.trace()):
        for text in texts:
            if text.startswith((b"$GPRMC", b"$GPGGA")):
                clock = text.split(b",")[1]
                time_of_day = int(clock[:2]) * 3600 + int(clock[2:4]) * 60 + int(clock[4:])
                # Without an RMC sentence yet a recorder knows no date.
                dates = {utc("1994-03-23T00:00:00"), 0 if text.startswith(b"$GPGGA") else None}
                assert stamp - time_of_day * SECOND in dates
    assert not list(tmp_path.glob("trace.torn*"))


def test_goes_on_on_a_line_when_killed(start, line, tmp_path):
    receiver, serial, name = line
    rng = random.Random(21)
    data = drive(60)
    sent = {recording.stored(text): at for at, text, _ in recording.sentences(data)}
    position = 0
    for _ in range(10):
        recorder = start("--append", "--idle", NEVER, name)
        wait_until(lambda: is_raw(serial))
        size = rng.randint(1, len(data) // 10)
        feed(receiver, data[position:position + size], rng)
        position += size
        recorder.process.kill()
        recorder.process.wait()
        tty.setcbreak(serial)  # as it would be found by the next
    held = [text for _, texts in walk(recorder.trace()) for text in texts]
    assert held and len(held) == len(set(held)) and set(held) <= set(sent)
    places = [min(sent[text] for text in texts) for _, texts in walk(recorder.trace())]
    assert places == sorted(places)


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
