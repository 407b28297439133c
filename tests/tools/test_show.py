"""vextrace show"""
import os
import pty
import signal
import socket
import subprocess
import time

import pytest

from limits import peak_memory, run_closed
from samples import (CAN, COLUMN, FIRST, FIRST_LINE, GGA, RMC, SECOND, SECOND_LINE, SMALL, STAMP,
                    changes, fix, message)
from traces import sentence

ELF = b"\x7fELF\x02\x01\x01" + bytes(57) + bytes(range(256)) * 40


@pytest.fixture
def show(vextrace, tmp_path):
    """Shows a trace: its lines. They must be all there is, with status 0."""

    def run(trace, *options, environment=None):
        path = tmp_path / "a.trace"
        path.write_bytes(trace)
        done = vextrace("show", *options, path, env=environment)
        assert (done.returncode, done.stderr) == (0, b"")
        return done.stdout

    return run


@pytest.fixture
def fails(vextrace, tmp_path):
    """Shows a trace: its lines, and what is said of it without "vextrace: " and the name."""

    def run(trace, *options):
        path = tmp_path / "a.trace"
        path.write_bytes(trace)
        done = vextrace("show", *options, path)
        assert done.returncode == 1
        said = done.stderr.decode().splitlines()
        prefix = f"vextrace: {path}: "
        assert all(line.startswith(prefix) for line in said)
        return done.stdout, [line[len(prefix):] for line in said]

    return run


# --- Views


def test_shows_the_trace_line_of_each_message(show):
    assert show(SMALL) == FIRST_LINE + SECOND_LINE


def test_shows_fields_numbers_and_rdb_text(show):
    assert show(SMALL, "--rdb", "--fix", "--fields").decode() == """\
RMC
1. UTC time = 123519
2. Status = A
3. Latitude = 4807.038
4. Latitude hemisphere = N
5. Longitude = 01131.000
6. Longitude hemisphere = E
7. Speed = 022.4
8. Course = 084.4
9. UTC date = 230394
10. Magnetic = 003.1
11. Magnetic direction = W
12. Mode indicator = A
GGA
1. UTC time = 123519.00
2. Latitude = 4807.038
3. Latitude hemisphere = N
4. Longitude = 01131.000
5. Longitude hemisphere = E
6. GPS quality indicator = 1
7. Number of satellites = 08
8. Horizontal delution = 0.9
9. Altitude = 545.4
10. Altitude unit = M
11. Geodial separation = 46.9
12. Geodial unit = M
13. Age GPS data = \n\
14. Reference id = \n\
RMC: time 123519, date 230394, valid, latitude 48.1173000000 deg, longitude 11.5166666667 deg, \
speed 41.484800 km/h, course 84.4000 deg
GGA: time 123519.00, quality 1, latitude 48.1173000000 deg, longitude 11.5166666667 deg, \
8 satellites, altitude 545.4000 m
48°7.038 N, 11°31.000 E, 545.4M
RMC
1. UTC time = 123520.5
2. Status = A
3. Latitude = 3854.51
4. Latitude hemisphere = S
5. Longitude = 07726.45
6. Longitude hemisphere = W
7. Speed = \n\
8. Course = \n\
9. UTC date = 230394
10. Magnetic = \n\
11. Magnetic direction = \n\
12. Mode indicator = N
RMC: wrong checksum, time 123520.5, date 230394, valid, latitude -38.9085000000 deg, \
longitude -77.4408333333 deg, speed missing, course missing
38°54.510 S, 77°26.450 W
"""


def test_shows_bytes_in_hexadecimal(show):
    assert show(SECOND, "--hex").decode() == """\
0000  00 49 00 16 00 00 0a 9b c9 81 a9 6e b5 00 24 47  .I.........n..$G
0010  50 52 4d 43 2c 31 32 33 35 32 30 2e 35 2c 41 2c  PRMC,123520.5,A,
0020  33 38 35 34 2e 35 31 2c 53 2c 30 37 37 32 36 2e  3854.51,S,07726.
0030  34 35 2c 57 2c 2c 2c 32 33 30 33 39 34 2c 2c 2c  45,W,,,230394,,,
0040  4e 2a 30 30 0a 24 50 58 59 5a 0a                 N*00.$PXYZ.
"""


def test_shows_the_bytes_that_are_in_the_trace(show):
    twice = message(0, b"\n$GPRMC,2\n$GPRMC,1")
    assert show(twice, "--hex").decode() == """\
0000  00 1e 00 16 00 00 00 00 00 00 00 00 00 00 0a 24  ...............$
0010  47 50 52 4d 43 2c 32 0a 24 47 50 52 4d 43 2c 31  GPRMC,2.$GPRMC,1
"""
    assert show(twice) == b"0000000000000000" + COLUMN + b" $GPRMC,2\n"


def test_numbers_and_utc_stand_in_front_of_each_line(show):
    trace = SMALL + message(0, b"$PA\n") + CAN + message(1, b"$PB\n")
    assert show(trace, "--number", "--utc", "--rdb").decode() == """\
1 1994-03-23T12:35:19Z 48°7.038 N, 11°31.000 E, 545.4M
2 1994-03-23T12:35:20.5Z 38°54.510 S, 77°26.450 W
"""
    assert show(trace, "--utc", "--number")[-94:] == (
        b"3 - 0000000000000000" + COLUMN + b" $PA\n" +
        b"5 - 0000000000000001" + COLUMN + b" $PB\n")[-94:]
    assert show(trace, "--number") == (
        b"1 " + FIRST_LINE + b"2 " + SECOND_LINE + b"3 0000000000000000" + COLUMN + b" $PA\n" +
        b"5 0000000000000001" + COLUMN + b" $PB\n")


def test_missing_values_are_called_missing(show):
    trace = (message(1, b"$GPGGA,000001,,,,,0,00,\n$GPRMC,000001,V,,,,,,,010203,003.1,W*6A\r\n") +
             message(2, b"$GPGGA,000002,4807.038,N,01131.000,E\r\n") +
             message(3, b"$GPGGA,000003,4807.038,N,01131.000,E,2,01\r\n") +
             message(4, b"$GPGGA,000004,,,,,\r\n"))
    assert show(trace, "--fix").decode() == """\
RMC: wrong checksum, time 000001, date 010203, not valid, position missing, speed missing, course missing
GGA: time 000001, quality 0, position missing, 0 satellites, altitude missing
GGA: time 000002, quality missing, latitude 48.1173000000 deg, longitude 11.5166666667 deg, \
satellites missing, altitude missing
GGA: time 000003, quality 2, latitude 48.1173000000 deg, longitude 11.5166666667 deg, \
1 satellite, altitude missing
GGA: time 000004, quality missing, position missing, satellites missing, altitude missing
"""


def test_fields_hold_no_line_ends(show):
    trace = message(1, b"$GPGGA,2,4807.038\r\n$GPRMC,1,V,,,,,,,010203,003.1,W*6A\r\n")
    lines = show(trace, "--fields")
    assert b"\r" not in lines and b"\n\n" not in lines
    assert lines.count(b"\n") == 13 + 15
    assert b"11. Magnetic direction = W*6A\n12. Mode indicator = \n" in lines


def test_nothing_steers_the_terminal_unless_asked(show):
    trace = message(0, b"$PA\x1b]0;title\x07\\\xff\xc3\xa4\xc2\x9b\n")
    assert show(trace) == (b"0000000000000000" + COLUMN +
                           b" $PA\\x1b]0;title\\x07\\\\\\xff\xc3\xa4\\xc2\\x9b\n")
    assert show(trace, "--raw") == (b"0000000000000000" + COLUMN +
                                    b" $PA\x1b]0;title\x07\\\xff\xc3\xa4\xc2\x9b\n")
    cut = message(0, b"$GPGGA,1,4807.038,N,01131.000,E,1,08,0.9,\x1b[2J,M\n")
    assert b"\x1b" not in show(cut, "--rdb", "--fields", "--fix", "--hex")


def test_the_locale_changes_nothing(show, tmp_path):
    # Of the German locale what changes texts; its characters and their order would take a second more.
    (tmp_path / "german").write_text("".join(
        f'{name}\ncopy "{source}"\nEND {name}\n' for name, source in (
            ("LC_CTYPE", "POSIX"), ("LC_COLLATE", "POSIX"), ("LC_NUMERIC", "de_DE"),
            ("LC_MONETARY", "de_DE"), ("LC_TIME", "de_DE"), ("LC_MESSAGES", "de_DE"))))
    subprocess.run(["localedef", "-c", "-i", tmp_path / "german", "-f", "UTF-8",
                    tmp_path / "de_DE.UTF-8"], capture_output=True, check=False)
    environment = {"LOCPATH": str(tmp_path), "LC_ALL": "de_DE.UTF-8"}
    options = ["--fix", "--rdb", "--utc"]
    assert show(SMALL, *options, environment=environment) == show(SMALL, *options)


# --- Which messages


def test_first_is_the_first_with_a_valid_fix(show):
    trace = (message(1, b"$GPGGA,000001,,,,,1,04,\n") +
             message(2, b"$GPRMC,000002,V,4807.038,N,01131.000,E,,,,,,\n") + CAN +
             message(3, b"$GPRMC,000003,A,4807.038,N,01131.000,E,,,,,,\n") +
             message(4, b"$GPRMC,000004,A,4807.039,N,01131.000,E,,,,,,\n"))
    assert show(trace, "--first", "--number", "--fix").decode() == (
        "4 RMC: time 000003, date missing, valid, latitude 48.1173000000 deg, "
        "longitude 11.5166666667 deg, speed missing, course missing\n")
    assert show(trace[:97], "--first") == b""


def test_first_does_not_read_on(show):
    assert show(FIRST + b"\0\0junk" + SECOND, "--first") == FIRST_LINE


def test_from_and_to_are_included(show):
    assert show(SMALL, "--from", "1994-03-23T12:35:20.5Z") == SECOND_LINE
    assert show(SMALL, "--from", "1994-03-23T12:35:20.500000001Z") == b""
    assert show(SMALL, "--to", "1994-03-23T12:35:19") == FIRST_LINE
    assert show(SMALL, "--until", "1994-03-23T12:35:18.999999999") == b""
    assert show(SMALL, "--from", "1994-03-23", "--to", "1994-03-24") == FIRST_LINE + SECOND_LINE
    assert show(SMALL, "--from", "1994-03-24") == b""


@pytest.mark.parametrize("option", ["--from", "--to"])
@pytest.mark.parametrize("text", ["", "noon", "1994-02-30", "1994-03-23T24:00:00", "12:35:19"])
def test_times_that_are_none_are_refused(vextrace, option, text):
    done = vextrace("show", f"{option}={text}", "-", input=SMALL)
    assert done.returncode == 2
    assert done.stdout == b""
    assert done.stderr.count(b"\n") == 1


def test_a_span_that_ends_before_it_begins_is_refused(vextrace):
    done = vextrace("show", "--from", "1994-03-24", "--to", "1994-03-23", "-", input=SMALL)
    assert (done.returncode, done.stdout, done.stderr) == (2, b"", b"vextrace: --from: is later than --until\n")


def test_messages_of_other_types_are_ordinary(show):
    assert show(CAN + FIRST + CAN + SECOND + CAN) == FIRST_LINE + SECOND_LINE
    assert show(FIRST + message(0, b"", number=0x4711) + SECOND) == FIRST_LINE + SECOND_LINE


def test_a_trace_of_other_types_alone_shows_nothing_and_says_so(vextrace):
    done = vextrace("show", "-", input=CAN * 2)
    assert (done.returncode, done.stdout) == (0, b"")
    assert done.stderr == (b"vextrace: standard input: holds no GPS message, "
                           b"2 messages of other types\n")


def test_an_empty_trace_is_one(show):
    assert show(b"") == b""


# --- Damage


def test_every_beginning_gives_its_whole_messages(fails, show):
    for length in range(len(SMALL)):
        lines = FIRST_LINE if length >= len(FIRST) else b""
        begin = len(FIRST) if length >= len(FIRST) else 0
        if length in (0, len(FIRST)):
            assert show(SMALL[:length]) == lines
            continue
        left = length - begin
        size = f"{left} byte" + ("s" if left > 1 else "")
        whole = 14 if left < 2 else len(SECOND) if begin else len(FIRST)
        said = (f"damaged at byte {begin}, {size} passed over: "
                f"a message of {whole} bytes is cut off after {left}")
        if begin == 0:
            said = f"no trace: {size} without any message"
        assert fails(SMALL[:length]) == (lines, [said])


@pytest.mark.parametrize("header, reason", [
    (b"\0\0", "size field 0 is too small for a header"),
    (b"\0\x0b", "size field 11 is too small for a header"),
    (b"\0\x0c", "GPSTraceMessage: No NMEA code found."),
    (b"\0\x4a", "a message of 76 bytes is cut off after 75"),
    (b"\xff\xff", "a message of 65537 bytes is cut off after 75"),
])
def test_damage_is_named_by_place_length_and_reason(fails, header, reason):
    damaged = FIRST + header + SECOND[2:]
    assert fails(damaged) == (
        FIRST_LINE, [f"damaged at byte 165, 75 bytes passed over: {reason}"])


def test_reading_goes_on_behind_damage(fails):
    nul = "the GPS message holds a NUL byte"
    assert fails(b"\0\xa4" + SMALL[2:]) == (
        SECOND_LINE, [f"damaged at byte 0, 165 bytes passed over: {nul}"])
    assert fails(FIRST[:100] + SECOND + FIRST + b"xyz" + SECOND + b"\0") == (
        SECOND_LINE + FIRST_LINE + SECOND_LINE,
        [f"damaged at byte 0, 100 bytes passed over: {nul}",
         "damaged at byte 340, 3 bytes passed over: a message of 30843 bytes is cut off after 79",
         "damaged at byte 418, 1 byte passed over: a message of 14 bytes is cut off after 1"])


def test_many_damaged_places_are_counted(fails):
    lines, said = fails((FIRST + b"\0\0\0") * 15)
    assert lines == FIRST_LINE * 15
    assert len(said) == 11
    assert said[9].startswith("damaged at byte 1677, 3 bytes passed over: ")
    assert said[10] == "5 more damaged places, 15 bytes passed over"


def test_every_changed_byte_leaves_the_other_message(vextrace, tmp_path, all_changes):
    for i, damaged in changes(SMALL, all_changes):
        path = tmp_path / "a.trace"
        path.write_bytes(damaged)
        done = vextrace("show", path)
        assert done.returncode in (0, 1)
        assert (SECOND_LINE if i < len(FIRST) else FIRST_LINE) in done.stdout
        assert all(line.startswith(b"vextrace: ") for line in done.stderr.splitlines())


@pytest.mark.parametrize("content", [GGA + RMC, GGA * 1000, ELF, b"\n", b"\0", bytes(10**6)],
                         ids=["log", "long log", "program", "line", "NUL", "zeros"])
def test_what_is_no_trace_is_called_that(fails, content):
    size = f"{len(content)} byte" + ("s" if len(content) > 1 else "")
    hint = "; it looks like NMEA: vextrace record first" if GGA in content else ""
    assert fails(content) == (b"", [f"no trace: {size} without any message{hint}"])


def test_logs_are_no_trace(vextrace, log):
    done = vextrace("show", log)
    assert (done.returncode, done.stdout) == (1, b"")
    assert b": no trace: " in done.stderr


# --- Inputs and outputs


def test_reads_standard_input(vextrace):
    done = vextrace("show", "-", input=SMALL)
    assert (done.returncode, done.stdout, done.stderr) == (0, FIRST_LINE + SECOND_LINE, b"")


@pytest.mark.parametrize("name", [b"\xff\x01\n.trace", b"-trace", "späce trace".encode()])
def test_file_names_are_any_bytes(vextrace, tmp_path, name):
    path = os.path.join(os.fsencode(tmp_path), name)
    with open(path, "wb") as file:
        file.write(SMALL + b"\0")
    done = subprocess.run([vextrace.program, "show", "--", name], cwd=tmp_path, check=False,
                          capture_output=True)
    assert (done.returncode, done.stdout) == (1, FIRST_LINE + SECOND_LINE)
    assert done.stderr.count(b"\n") == 1 and b"\xff" not in done.stderr


@pytest.mark.parametrize("name, reason", [
    ("missing", "cannot be read: No such file or directory"),
    ("a.trace/x", "cannot be read: Not a directory"),
    (".", "is a directory"),
    ("/", "is a directory"),
])
def test_what_cannot_be_opened_is_wrong_use(vextrace, tmp_path, name, reason):
    (tmp_path / "a.trace").write_bytes(SMALL)
    done = vextrace("show", name)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr == f"vextrace: {name}: {reason}\n".encode()


def test_a_read_error_is_named_and_takes_nothing_away(vextrace):
    done = vextrace("show", "/proc/self/mem")
    assert (done.returncode, done.stdout) == (1, b"")
    assert done.stderr == (b"vextrace: /proc/self/mem: cannot be read on at byte 0: "
                           b"Input/output error\n")


def test_closed_streams(vextrace):
    done = run_closed(vextrace, "<&-", "show", "-")
    assert done.returncode == 2
    assert done.stderr == b"vextrace: standard input: cannot be read: Bad file descriptor\n"
    done = run_closed(vextrace, ">&-", "show", "-", input=SMALL)
    assert done.returncode == 1
    assert done.stderr == b"vextrace: standard output: cannot be written: Bad file descriptor\n"
    assert run_closed(vextrace, "2>&-", "show", "-", input=b"x").returncode == 1


def test_a_full_device_is_named(vextrace):
    with open("/dev/full", "wb") as full:
        done = vextrace("show", "-", input=SMALL, stdout=full, stderr=subprocess.PIPE)
    assert done.returncode == 1
    assert done.stderr == b"vextrace: standard output: cannot be written: No space left on device\n"


def test_a_broken_pipe_ends_quietly(vextrace, tmp_path):
    (tmp_path / "a.trace").write_bytes(SMALL * 20000)
    done = subprocess.run(["sh", "-c", '"$0" show a.trace | head -n 1', vextrace.program],
                          cwd=tmp_path, capture_output=True, check=False)
    assert (done.stdout, done.stderr) == (FIRST_LINE, b"")


def test_the_trace_is_not_written_to(vextrace, tmp_path):
    path = tmp_path / "a.trace"
    path.write_bytes(SMALL)
    with open(path, "ab") as output:
        done = vextrace("show", path, stdout=output, stderr=subprocess.PIPE)
    assert done.returncode == 2
    assert path.read_bytes() == SMALL


@pytest.mark.parametrize("arguments", [[], ["a", "b"], ["--nonsense", "a"], ["--from", "a"]])
def test_wrong_use_is_refused(vextrace, arguments):
    done = vextrace("show", *arguments)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.startswith(b"vextrace: ") and done.stderr.count(b"\n") == 1


def test_help_shows_an_example_first(vextrace):
    done = vextrace("show", "--help")
    assert (done.returncode, done.stderr) == (0, b"")
    assert b"Example: vextrace show" in done.stdout.splitlines()[1]


@pytest.mark.memory
def test_takes_little_memory(vextrace, tmp_path):
    """Less than half of what the program would take that kept its input, which is less than its output."""
    path = tmp_path / "long.trace"
    with open(path, "wb") as file:
        for _ in range(24):
            file.write(SMALL * (10**6 // len(SMALL)))
        file.write(bytes(10**6))
    for options in ([], ["--fields", "--hex", "--rdb", "--fix"], ["--first"]):
        status, memory = peak_memory([vextrace.program, "show", *options, path])
        assert status == (0 if "--first" in options else 1)
        assert memory < 14 * 2**20


# --- Following


class Following:
    """vextrace show --follow, while its trace grows."""

    def __init__(self, vextrace, path, *options):
        self.process = subprocess.Popen([vextrace.program, "show", "--follow", *options, path],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)

    def line(self):
        line = b""
        while not line.endswith(b"\n"):
            more = self.process.stdout.read(1)
            assert more != b""
            line += more
        return line

    def end(self, number=signal.SIGINT):
        self.process.send_signal(number)
        rest, said = self.process.communicate(timeout=20)
        return self.process.returncode, rest, said


@pytest.fixture
def follow(vextrace, tmp_path):
    started = []

    def start(*options, path=tmp_path / "a.trace"):
        started.append(Following(vextrace, path, *options))
        return started[-1]

    yield start
    for following in started:
        following.process.kill()
        following.process.communicate()


def test_follows_a_trace_that_grows(follow, tmp_path):
    with open(tmp_path / "a.trace", "wb", buffering=0) as trace:
        trace.write(FIRST)
        following = follow()
        assert following.line() == FIRST_LINE
        trace.write(SECOND[:20])
        time.sleep(0.3)
        trace.write(SECOND[20:])
        assert following.line() == SECOND_LINE
        trace.write(CAN + FIRST)
        assert following.line() == FIRST_LINE
    assert following.end() == (0, b"", b"")


def test_follows_over_damage(follow, tmp_path):
    with open(tmp_path / "a.trace", "wb", buffering=0) as trace:
        trace.write(FIRST + b"\0\0\0")
        following = follow("--number")
        assert following.line() == b"1 " + FIRST_LINE
        trace.write(SECOND)
        assert following.line() == b"2 " + SECOND_LINE
    status, rest, said = following.end()
    assert (status, rest) == (1, b"")
    assert b": damaged at byte 165, 3 bytes passed over: " in said


def test_follows_a_recorder_that_mends_the_end(follow, tmp_path):
    with open(tmp_path / "a.trace", "wb", buffering=0) as trace:
        trace.write(FIRST + SECOND[:30])
        following = follow()
        assert following.line() == FIRST_LINE
        time.sleep(0.3)
        trace.truncate(len(FIRST))
        time.sleep(0.3)
        trace.seek(len(FIRST))
        trace.write(SECOND)
        assert following.line() == SECOND_LINE
    assert following.end() == (0, b"", b"")


def test_says_when_a_trace_that_is_followed_becomes_shorter(follow, tmp_path):
    with open(tmp_path / "a.trace", "wb", buffering=0) as trace:
        trace.write(SMALL)
        following = follow()
        assert following.line() + following.line() == FIRST_LINE + SECOND_LINE
        trace.truncate(len(FIRST))
        _, said = following.process.communicate(timeout=20)
    assert following.process.returncode == 1
    assert said.endswith(b"a.trace: became shorter than the 240 bytes that were shown\n")


def test_follows_a_fifo_until_its_writer_has_gone(follow, tmp_path):
    path = tmp_path / "fifo"
    os.mkfifo(path)
    following = follow(path=path)
    with open(path, "wb", buffering=0) as writer:
        writer.write(FIRST)
        assert following.line() == FIRST_LINE
        writer.write(SECOND + FIRST[:-1])
        assert following.line() == SECOND_LINE
    rest, said = following.process.communicate(timeout=20)
    assert (following.process.returncode, rest) == (1, b"")
    assert b": damaged at byte 240, 164 bytes passed over: " in said


def test_an_interrupt_while_a_fifo_is_silent_ends_quietly(follow, tmp_path):
    path = tmp_path / "fifo"
    os.mkfifo(path)
    following = follow(path=path)
    with open(path, "wb", buffering=0) as writer:
        writer.write(SMALL)
        assert following.line() + following.line() == FIRST_LINE + SECOND_LINE
        assert following.end() == (0, b"", b"")


def test_following_ends_when_nobody_reads_any_more(follow, tmp_path):
    (tmp_path / "a.trace").write_bytes(SMALL)
    following = follow()
    assert following.line() == FIRST_LINE
    following.process.stdout.close()
    assert following.process.wait(timeout=20) == 0
    assert following.process.stderr.read() == b""


def test_following_ends_with_the_first_valid_fix(follow, tmp_path):
    (tmp_path / "a.trace").write_bytes(message(1, b"$PA\n"))
    following = follow("--first")
    with open(tmp_path / "a.trace", "ab") as trace:
        trace.write(fix(STAMP))
    assert following.line().startswith(b"0a9bc98150068600 ")
    assert following.process.wait(timeout=20) == 0


@pytest.mark.parametrize("kind", ["socket", "terminal"])
def test_following_ends_when_its_output_hangs_up(vextrace, tmp_path, kind):
    (tmp_path / "a.trace").write_bytes(SMALL)
    if kind == "socket":
        ends = [end.detach() for end in socket.socketpair()]
    else:
        ends = pty.openpty()
    with subprocess.Popen([vextrace.program, "show", "--follow", tmp_path / "a.trace"], stdout=ends[1],
                          stderr=subprocess.PIPE, start_new_session=True) as process:
        os.close(ends[1])
        shown = b""
        while b"PXYZ" not in shown:
            shown += os.read(ends[0], 4096)
        os.close(ends[0])
        assert process.wait(timeout=20) == 0


@pytest.mark.parametrize("sent, shown", [
    (b"12", b"12 satellites"), (b"0999", b"999 satellites"), (b"65537", b"satellites invalid"),
    (b"1000", b"satellites invalid"), (b"-1", b"satellites invalid"), (b"", b"satellites missing")])
def test_shows_no_number_of_satellites_that_cannot_be(vextrace, tmp_path, sent, shown):
    (tmp_path / "a.trace").write_bytes(
        message(1, sentence(b"GPGGA,123519,4807.038,N,01131.000,E,1," + sent + b",0.9,545.4,M,46.9,M,,")))
    assert b", " + shown + b", altitude" in vextrace("show", "--fix", "a.trace").stdout
