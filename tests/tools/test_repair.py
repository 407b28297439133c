"""vextrace repair"""
import os
import pty
import random
import stat
import subprocess
import sys

import pytest

from limits import peak_memory, run_closed
from samples import CAN, FIRST, GGA, RMC, SECOND, SMALL, changes, message

CONTAINER = message(7, FIRST + CAN + SECOND, number=12)
MIXED = CAN + FIRST + message(0, b"", number=0) + CONTAINER + SECOND + CAN + FIRST


@pytest.fixture
def repair(vextrace, tmp_path):
    """Repairs a trace: the exit status, what comes out (None where nothing does), and what is said
    of the trace."""

    def run(trace):
        (tmp_path / "in").write_bytes(trace)
        (tmp_path / "out").unlink(missing_ok=True)
        done = vextrace("repair", "in", "out")
        assert done.stdout == b""
        assert sorted(path.name for path in tmp_path.iterdir()) in (["in"], ["in", "out"])
        said = done.stderr.decode().splitlines()
        assert all(line.startswith("vextrace: in: ") for line in said)
        out = (tmp_path / "out").read_bytes() if (tmp_path / "out").exists() else None
        return done.returncode, out, [line[len("vextrace: in: "):] for line in said]

    return run


@pytest.mark.parametrize("trace, messages", [
    (SMALL, 2), (MIXED, 7), (CAN, 1), (b"", 0),
    (message(1, b"\n\n$GPRMC,1") + message(2, b"$GPRMC,1\n$GPGGA,1\n$GPRMC,2\n"), 2),
    (SMALL * 3000, 6000)],
    ids=["GPS", "mixed", "CAN", "empty", "as others write", "long"])
def test_a_sound_trace_comes_out_the_same(repair, trace, messages):
    count = f"{messages} message" + ("" if messages == 1 else "s")
    assert repair(trace) == (
        0, trace, [f"{count}, {len(trace)} bytes kept; 0 damaged places, 0 bytes passed over"])


def test_names_the_bytes_that_it_passes_over(repair):
    assert repair(FIRST + b"\0\0junk" + MIXED + b"\0") == (
        1, FIRST + MIXED,
        ["damaged at byte 165, 6 bytes passed over: size field 0 is too small for a header",
         f"damaged at byte {171 + len(MIXED)}, 1 byte passed over: "
         "a message of 14 bytes is cut off after 1",
         f"8 messages, {165 + len(MIXED)} bytes kept; 2 damaged places, 7 bytes passed over"])


def test_names_ten_damaged_places_and_counts_the_others(repair):
    status, out, said = repair((FIRST + b"\0\0") * 100)
    assert (status, out) == (1, FIRST * 100)
    assert len(said) == 12
    assert said[10] == "90 more damaged places, 180 bytes passed over"
    assert said[11] == "100 messages, 16500 bytes kept; 100 damaged places, 200 bytes passed over"


def test_what_was_repaired_is_sound(repair):
    damaged = b"\1" + FIRST[:77] + MIXED[:-20] + SECOND + bytes(99) + CAN * 5
    status, once, _ = repair(damaged)
    assert status == 1
    assert repair(once)[:2] == (0, once)


def containers(choose):
    """Containers in containers, of bytes by chance, some of them sent twice: what they seem to be
    depends on what is around them."""
    data = b""
    while len(data) < 30_000:
        inner = choose.randbytes(1)
        for _ in range(3):
            inner += bytes(choose.choice((0, 0, 0, 1, 5)))
            stamp = 1_779_002_925_000_000_000 + choose.randrange(10**9)
            inner = message(stamp, inner, number=choose.choice((12, 1)))
            inner *= choose.choice((1, 1, 1, 1, 2))
        data += inner
    return data


def test_what_is_a_message_only_between_damage_is_taken_back(repair):
    taken_back = 0
    for seed in range(12):
        status, once, said = repair(SMALL * 9 + containers(random.Random(seed)) + SMALL * 9)
        taken_back += ", which were messages only between damage" in said[-1]
        assert status == 1
        assert repair(once)[:2] == (0, once)
    assert taken_back > 0  # the containers are hard enough


def test_every_changed_byte_costs_one_message(repair, all_changes):
    for i, damaged in changes(SMALL, all_changes):
        status, out, _ = repair(damaged)
        kept, other = (SECOND, FIRST) if i < len(FIRST) else (FIRST, SECOND)
        assert kept in out
        # A change within a sentence is none that repair could see.
        assert out in (kept, damaged) or out.replace(kept, b"") in other
        assert status == (0 if out == damaged else 1)


def test_every_beginning_gives_its_whole_messages(repair):
    for length in range(1, len(SMALL)):
        whole = FIRST if length >= len(FIRST) else None
        status, out, _ = repair(SMALL[:length])
        assert (status, out) == (0 if length == len(FIRST) else 1, whole)


@pytest.mark.parametrize("content", [GGA + RMC, b"\x7fELF" + bytes(100), bytes(10**6), b"x"],
                         ids=["log", "program", "zeros", "byte"])
def test_what_is_no_trace_gives_nothing(repair, content):
    status, out, said = repair(content)
    assert (status, out) == (1, None)
    assert len(said) == 1 and said[0].startswith("no trace: ")


# --- Inputs and outputs


def test_standard_input_and_output(vextrace):
    done = vextrace("repair", "-", "-", input=b"\0" + SMALL)
    assert (done.returncode, done.stdout) == (1, SMALL)
    assert all(line.startswith(b"vextrace: standard input: ") for line in done.stderr.splitlines())


def test_an_existing_output_is_refused_unless_forced(vextrace, tmp_path):
    (tmp_path / "in").write_bytes(SMALL)
    (tmp_path / "out").write_bytes(b"precious")
    done = vextrace("repair", "in", "out")
    assert done.returncode == 2
    assert done.stderr == b"vextrace: out: exists; --force replaces it\n"
    assert (tmp_path / "out").read_bytes() == b"precious"
    assert vextrace("repair", "--force", "in", "out").returncode == 0
    assert (tmp_path / "out").read_bytes() == SMALL


def test_the_input_is_never_overwritten(vextrace, tmp_path):
    trace = tmp_path / "in"
    trace.write_bytes(SMALL + b"\0")
    (tmp_path / "link").symlink_to("in")
    os.link(trace, tmp_path / "other")
    for name in ("in", "./in", "link", "other", "/dev/stdin"):
        with open(trace, "rb") as file:
            done = vextrace("repair", "--force", "in", name, stdin=file)
        assert done.returncode == 2
        assert trace.read_bytes() == SMALL + b"\0"
    with open(trace, "r+b") as file:
        assert vextrace("repair", "in", "-", stdout=file, stderr=subprocess.PIPE).returncode == 2
    assert trace.read_bytes() == SMALL + b"\0"


@pytest.mark.parametrize("output", ["missing/out", "in/", "in/out", ""])
def test_outputs_that_cannot_be_written_are_wrong_use(vextrace, tmp_path, output):
    (tmp_path / "in").write_bytes(SMALL)
    done = vextrace("repair", "in", output)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.startswith(b"vextrace: ") and done.stderr.count(b"\n") == 1


@pytest.mark.parametrize("name", ["missing", ".", "/"])
def test_inputs_that_cannot_be_read_leave_no_output(vextrace, tmp_path, name):
    done = vextrace("repair", name, "out")
    assert done.returncode == 2
    assert list(tmp_path.iterdir()) == []


def test_a_full_device_is_named(vextrace, tmp_path, full):
    (tmp_path / "in").write_bytes(SMALL)
    done = vextrace("repair", "in", full)
    assert done.returncode == 1
    assert done.stderr.decode() == f"vextrace: {full}: cannot be written: No space left on device\n"
    assert stat.S_ISCHR(os.stat(full).st_mode)


def test_closed_streams(vextrace):
    assert run_closed(vextrace, "<&-", "repair", "-", "out").returncode == 2
    assert run_closed(vextrace, ">&-", "repair", "-", "-", input=SMALL).returncode == 1
    done = run_closed(vextrace, "2>&-", "repair", "-", "-", input=SMALL)
    assert (done.returncode, done.stdout) == (0, SMALL)


def test_a_broken_pipe_ends_quietly(vextrace, tmp_path):
    (tmp_path / "in").write_bytes(SMALL * 20000)
    done = subprocess.run(["sh", "-c", '"$0" repair in - | head -c 1', vextrace.program],
                          cwd=tmp_path, capture_output=True, check=False)
    assert (done.stdout, done.stderr) == (b"\0", b"")


def test_a_read_error_gives_no_output_where_nothing_was_read(vextrace, tmp_path):
    done = vextrace("repair", "/proc/self/mem", "out")
    assert done.returncode == 1
    assert done.stderr == (b"vextrace: /proc/self/mem: cannot be read on at byte 0: "
                           b"Input/output error\n")
    assert list(tmp_path.iterdir()) == []


READ_ERROR = """
import os, socket, sys
ours, theirs = socket.socketpair()
theirs.sendall(sys.stdin.buffer.read())
ours.send(b"x")  # an end that is closed with unread bytes resets the line
theirs.close()
os.dup2(ours.fileno(), 0)
os.execv(sys.argv[1], sys.argv[1:])
"""


def test_a_read_error_takes_nothing_away_that_was_read(vextrace, tmp_path):
    done = subprocess.run([sys.executable, "-c", READ_ERROR, vextrace.program, "repair", "-", "out"],
                          input=SMALL + FIRST[:50], cwd=tmp_path, capture_output=True, check=False)
    assert done.returncode == 1
    assert (tmp_path / "out").read_bytes() == SMALL
    assert done.stderr.splitlines() == [
        b"vextrace: standard input: cannot be read on at byte 290: Connection reset by peer",
        b"vextrace: standard input: 2 messages, 240 bytes kept; "
        b"0 damaged places, 0 bytes passed over"]


@pytest.mark.parametrize("arguments", [[], ["a"], ["a", "b", "c"], ["--nonsense", "a", "b"]])
def test_wrong_use_is_refused(vextrace, tmp_path, arguments):
    done = vextrace("repair", *arguments)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.startswith(b"vextrace: ") and done.stderr.count(b"\n") == 1
    assert list(tmp_path.iterdir()) == []


def test_help_shows_an_example_first(vextrace):
    done = vextrace("repair", "--help")
    assert (done.returncode, done.stderr) == (0, b"")
    assert b"Example: vextrace repair" in done.stdout


@pytest.mark.memory
def test_takes_little_memory(vextrace, tmp_path):
    path = tmp_path / "long.trace"
    with open(path, "wb") as file:
        file.write(bytes(10**7))
        for _ in range(64):
            file.write(SMALL * (10**6 // len(SMALL)) + b"\xff")
    status, memory = peak_memory([vextrace.program, "repair", path, tmp_path / "out"])
    assert status == 1
    assert memory < 32 * 2**20
    assert (tmp_path / "out").stat().st_size == 64 * (10**6 // len(SMALL)) * len(SMALL)


def test_writes_no_trace_to_a_terminal(vextrace, tmp_path):
    (tmp_path / "in").write_bytes(SMALL)
    controller, terminal = pty.openpty()
    for arguments in (["in", "-"], ["-o", "-", "in"]):
        done = vextrace("repair", *arguments, stdout=terminal, stderr=subprocess.PIPE)
        assert (done.returncode, done.stderr) == (
            2, b"vextrace: OUT: name a file for the trace; it is not for a terminal\n")
    os.close(terminal)
    os.close(controller)
