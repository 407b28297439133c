"""vextrace record beside a receiver that sends as it likes."""
import os
import random
import re
import shutil
import signal
import socket
import struct
import subprocess
import threading
import time
import tty

import pytest

from conftest import DRIVE
from model import recording
from recorders import (GGA, GSV, LAST, LAST_STAMP, NEVER, NEXT, NEXT_STAMP, PATIENCE, RMC, STAMP, feed,
                       is_raw, unread, wait_until)
from test_record import walk
from traces import SECOND, message, sentence, utc


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
