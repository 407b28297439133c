"""vextrace record: from an input to a trace."""
import collections
import os
import pty
import random
import re
import resource
import struct
import subprocess
import sys
import time

import pytest

from conftest import DRIVE, logs_of
from limits import measured
from model import recording
from traces import SECOND, message, sentence, utc

RMC = sentence(b"GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A")
GGA = sentence(b"GNGGA,123519.00,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
NEXT = b"$GPRMC,123520.5,A,3854.51,S,07726.45,W,,,230394,,,N*00\n"
LOG = b"noise\n" + RMC + GGA + b"!AIVDM,1\n" + NEXT + b"$PXYZ"
TRACE = (message(utc("1994-03-23T12:35:19"), RMC, GGA, b"!AIVDM,1") +
         message(utc("1994-03-23T12:35:20.5"), NEXT, b"$PXYZ"))


def walk(trace):
    """(stamp, sentences) of each message."""
    found = []
    while trace:
        size, number, reserved, stamp = struct.unpack(">HHHQ", trace[:14])
        assert (number, reserved) == (22, 0) and size + 2 <= len(trace)
        found.append((stamp, trace[14:size + 2].splitlines(keepends=True)))
        trace = trace[size + 2:]
    return found


def lines(result):
    """What was told on standard error."""
    assert result.stderr.endswith(b"\n") or not result.stderr
    return result.stderr.decode().splitlines()


def refused(result, line, status=2):
    assert (result.returncode, lines(result)) == (status, ["vextrace: " + line])


@pytest.fixture
def folder(tmp_path):
    """The folder that vextrace runs in, with a small log."""
    (tmp_path / "log").write_bytes(LOG)
    return tmp_path


# --- What becomes of the bytes

def test_records_a_small_log_byte_for_byte(vextrace, folder):
    result = vextrace("record", "-o", "trace", "log")
    assert (result.returncode, result.stdout) == (0, b"")
    assert (folder / "trace").read_bytes() == TRACE


def test_accounts_for_every_byte(vextrace, folder):
    result = vextrace("record", "-o", "trace", "log")
    assert lines(result) == [
        f"vextrace: log: {len(LOG)} bytes read, {len(LOG) - 6} recorded, 6 skipped",
        "vextrace: log: 5 sentences, 2 checked, 1 with a wrong checksum, 2 without",
        f"vextrace: trace: 2 epochs, 2 messages, {len(TRACE)} bytes written",
        "vextrace: trace: 1994-03-23T12:35:19Z to 1994-03-23T12:35:20.5Z",
        "vextrace: log: ended at the end of the input"]


def test_reads_standard_input_and_writes_standard_output(vextrace, folder):
    for arguments in (["record"], ["record", "-"], ["record", "-o", "-", "-"],
                      ["record", "--output", "/dev/stdout", "/dev/stdin"]):
        result = vextrace(*arguments, input=LOG)
        assert (result.returncode, result.stdout) == (0, TRACE), arguments
    assert lines(vextrace("record", input=LOG))[0].startswith("vextrace: standard input: ")


def test_agrees_with_the_model_on_logs(vextrace, log):
    result = vextrace("record", log)
    assert result.returncode == 0
    assert result.stdout == recording.trace(log.read_bytes())


PIECES = [b"$", b"!", b"*", b"\r", b"\n", b"\r\n", b"\0", b"\xff", b"\xb5\x62\x01\x07", b"12:35:19 ",
          b"\xef\xbb\xbf", b"$G", b"$GPGGA", b"$GPRMC,", b"*00", b"*4", b"$PUBX,00*33\r\n"]


def random_sentence(rng):
    clock = rng.choice([b"", b"000001", b"000001.00", b"000001.5", b"000002", b"115959", b"120001", b"235959",
                        b"235960", b"235961", b"24"])
    date = rng.choice([b"", b"230394", b"290200", b"290201", b"311279", b"010180"])
    talker = rng.choice([b"GP", b"GN", b"GL", b"BD", b"PG", b"II"])
    body = rng.choice([
        talker + b"RMC," + clock + b",A,4807.038,N,01131.000,E,022.4,084.4," + date + b",,",
        talker + b"GGA," + clock + b",4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,",
        talker + b"GLL,4807.038,N,01131.000,E," + clock + b",A",
        talker + b"ZDA," + clock + b",23,03," + rng.choice([b"1994", b"1969", b"2600", b"94"]) + b",00,00",
        talker + rng.choice([b"GNS,", b"GST,", b"GBS,", b"VTG,"]) + clock + b",1",
        talker + b"GSV,%d,40,083,46" % rng.randrange(9),
        b"PXYZ,%d" % rng.randrange(9)])
    text = sentence(body, rng.choice([b"\r\n", b"\r\n", b"\n", b"", b"\r", b"\r\r\n"]))
    return text if rng.random() < 0.8 else text.replace(b"*", rng.choice([b"*0", b"", b"**"]), 1)


def random_stream(rng, logs):
    """Sentences, pieces of logs and what has a meaning, mixed, cut and shuffled."""
    parts = []
    for _ in range(rng.randrange(1, 30)):
        choice = rng.random()
        if choice < 0.6:
            parts.append(random_sentence(rng))
        elif choice < 0.8:
            log = rng.choice(logs)
            begin = rng.randrange(len(log))
            parts.append(log[begin:begin + rng.randrange(300)])
        else:
            parts.append(rng.choice(PIECES))
    if rng.random() < 0.3:
        rng.shuffle(parts)
    data = bytearray(b"".join(parts))
    for _ in range(rng.choice([0, 0, 1, 3])):
        at = rng.randrange(len(data) + 1)
        data[at:at + rng.randrange(3)] = bytes([rng.randrange(256)] * rng.randrange(2))
    return bytes(data)


def test_agrees_with_the_model_on_mixed_cut_and_shuffled_streams(vextrace, request, folder):
    logs = [path.read_bytes() for path in logs_of(request.config)]
    recorded = 0
    for seed in range(request.config.getoption("--streams")):
        data = random_stream(random.Random(seed), logs)
        (folder / "stream").write_bytes(data)
        result = vextrace("record", "stream")
        expected = recording.trace(data)
        assert result.stdout == expected, f"stream {seed}"
        assert result.returncode == (0 if expected else 1), f"stream {seed}"
        recorded += len(expected) > 0
    assert recorded > 0


def test_loses_no_checked_sentence(vextrace, log):
    """Found here by a search of another kind: lines of usual sentences with their checksums."""
    data = log.read_bytes()
    candidates = re.findall(rb"\$[A-Z]{2}[A-Z0-9]{3},[ -~]*?\*[0-9A-Fa-f]{2}", data)
    checked = [text for text in candidates
               if b"$" not in text[1:] and recording.xor(text[1:-3]) == int(text[-2:], 16)]
    assert checked
    held = collections.Counter(text.rstrip(b"\r\n") for _, texts in walk(vextrace("record", log).stdout)
                               for text in texts)
    assert not collections.Counter(recording.stored(text)[:-1] for text in checked) - held


def clock_of(stamp):
    """hhmmss of a stamp."""
    return time.strftime("%H%M%S", time.gmtime(stamp // SECOND)).encode()


def test_every_fix_lies_in_one_message_with_its_own_seconds_stamp(vextrace, log):
    fixes = 0
    for stamp, texts in walk(vextrace("record", log).stdout):
        field = {text[:6]: text.split(b",") for text in texts}
        both = [field[code] for code in (b"$GPRMC", b"$GPGGA") if code in field]
        clocks = {fields[1][:6] for fields in both if re.fullmatch(rb"\d{6}(\.\d+)?", fields[1])}
        if len(both) == 2 and clocks:
            assert clocks == {clock_of(stamp)}
            fixes += 1
    # As many as there are times that the log has of both.
    texts = [text for _, text, _ in recording.sentences(log.read_bytes())]
    expected = 0
    for clock, sentences in recording.epochs(texts):
        kinds = {recording.stored(text)[:6] for text in sentences}
        expected += clock is not None and {b"$GPRMC", b"$GPGGA"} <= kinds
    assert fixes >= expected


@pytest.mark.parametrize("name, fixes", [("ublox-neo-m9n-nmea.nmea", 61), ("sirfstarv-nmea.nmea", 59)])
def test_gives_each_fix_of_these_receivers_a_first_message(vextrace, request, name, fixes):
    logs = [path for path in logs_of(request.config) if path.name == name]
    if not logs:
        pytest.skip(f"{name} is not at hand")
    messages = walk(vextrace("record", logs[0]).stdout)
    firsts = [messages[i] for i in range(len(messages)) if i == 0 or messages[i][0] != messages[i - 1][0]]
    assert len(firsts) == fixes == len({stamp for stamp, _ in messages})
    for stamp, texts in firsts:
        field = {text[:6]: text.split(b",") for text in texts}
        assert field[b"$GPRMC"][1][:6] == field[b"$GPGGA"][1][:6] == clock_of(stamp)


# --- Dates and stamps

def test_takes_the_date_until_the_receiver_sends_one(vextrace):
    early = sentence(b"GPGGA,235959,,,,,0")
    late = sentence(b"GPGGA,000000,,,,,0")
    assert vextrace("record", "--date", "2020-02-29", input=early + late + RMC).stdout == (
        message(utc("2020-02-29T23:59:59"), early) + message(utc("2020-03-01T00:00:00"), late) +
        message(utc("1994-03-23T12:35:19"), RMC))
    assert vextrace("record", input=early).stdout == message(utc("1970-01-01T23:59:59"), early)


def test_stamps_arrival_when_told(vextrace):
    before = time.time_ns()
    result = vextrace("record", "--stamp", "arrival", input=LOG)
    after = time.time_ns()
    stamps = [stamp for stamp, _ in walk(result.stdout)]
    assert len(stamps) == 2
    assert all(before <= stamp <= after for stamp in stamps)
    assert [texts for _, texts in walk(result.stdout)] == [texts for _, texts in walk(TRACE)]


@pytest.mark.parametrize("option, value, line", [
    ("--date", "2020-02-30", "--date: 2020-02-30 is no day, YYYY-MM-DD"),
    ("--date", "1969-12-31", "--date: 1969-12-31 is no day, YYYY-MM-DD"),
    ("--date", "\x1b", "--date: \\x1b is no day, YYYY-MM-DD"),
    ("--baud", "9600", "log: is no serial line, --baud is for these"),
])
def test_refuses_values_that_make_no_sense(vextrace, folder, option, value, line):
    refused(vextrace("record", option, value, "-o", "trace", "log"), line)
    assert not (folder / "trace").exists()


@pytest.mark.parametrize("arguments", [
    ["--stamp", "local"], ["--idle", "-1"], ["--idle", "x"], ["--idle", "86400001"], ["--baud", "x"],
    ["--baud", "-9600"], ["--append", "--force"], ["--nonsense"], ["other"]])
def test_refuses_command_lines_that_make_no_sense(vextrace, folder, arguments):
    result = vextrace("record", "-o", "trace", "log", *arguments)
    assert result.returncode == 2
    assert len(lines(result)) == 1 and lines(result)[0].startswith("vextrace: ")
    assert not (folder / "trace").exists()


def test_shows_an_example_first(vextrace):
    result = vextrace("record", "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    text = result.stdout.decode()
    assert text.index("Example: vextrace record ") < text.index("--baud")


# --- Outputs that exist

def test_refuses_an_existing_output(vextrace, folder):
    (folder / "trace").write_bytes(b"something")
    refused(vextrace("record", "-o", "trace", "log"),
            "trace: exists; --append goes on behind it, --force replaces it")
    assert (folder / "trace").read_bytes() == b"something"


def test_replaces_an_existing_output_when_told(vextrace, folder):
    (folder / "trace").write_bytes(b"something" * 100)
    assert vextrace("record", "--force", "-o", "trace", "log").returncode == 0
    assert (folder / "trace").read_bytes() == TRACE


def test_goes_on_behind_a_trace_when_told(vextrace, folder):
    for count in (1, 2, 3):
        assert vextrace("record", "--append", "-o", "trace", "log").returncode == 0
        assert (folder / "trace").read_bytes() == TRACE * count


def test_moves_a_torn_message_aside_and_says_so(vextrace, folder):
    (folder / "trace").write_bytes(TRACE[:-1])
    whole = len(message(0, RMC, GGA, b"!AIVDM,1"))
    result = vextrace("record", "--append", "-o", "trace", "log")
    assert result.returncode == 0
    assert lines(result)[0] == (f"vextrace: trace: ended in a torn message; {len(TRACE) - 1 - whole} bytes from "
                                f"byte {whole} on moved to trace.torn")
    assert (folder / "trace").read_bytes() == TRACE[:whole] + TRACE
    assert (folder / "trace.torn").read_bytes() == TRACE[whole:-1]


def test_does_not_go_on_behind_a_log(vextrace, folder):
    (folder / "other").write_bytes(LOG)
    refused(vextrace("record", "--append", "-o", "other", "log"), "other: is no trace that could go on")
    assert (folder / "other").read_bytes() == LOG


def test_survives_swapped_arguments(vextrace, folder):
    (folder / "trace").write_bytes(TRACE)
    for option in ([], ["--append"]):
        assert vextrace("record", *option, "-o", "log", "trace").returncode == 2
        assert vextrace("record", *option, "-o", "log", "missing").returncode == 2
        assert (folder / "log").read_bytes() == LOG
        assert (folder / "trace").read_bytes() == TRACE


@pytest.mark.parametrize("option", [[], ["--append"], ["--force"]])
@pytest.mark.parametrize("name", ["log", "./log", "hard", "soft", "../{folder}/log"])
def test_never_overwrites_the_input(vextrace, folder, option, name):
    os.link(folder / "log", folder / "hard")
    os.symlink("log", folder / "soft")
    name = name.format(folder=folder.name)
    for source in ("log", "-", "/dev/stdin", "/dev/fd/0", "soft"):
        with open(folder / "log", "rb") as log:
            refused(vextrace("record", *option, "-o", name, source, stdin=log), f"{name}: is the input itself")
        assert (folder / "log").read_bytes() == LOG


def test_never_overwrites_the_input_on_standard_output(vextrace, folder):
    for flags in (os.O_RDWR, os.O_RDWR | os.O_APPEND):
        both = os.open(folder / "log", flags)
        for arguments in (["record"], ["record", "log"]):
            result = vextrace(*arguments, stdin=both, stdout=both, stderr=subprocess.PIPE)
            refused(result, "standard output: is the input itself")
            assert (folder / "log").read_bytes() == LOG
        os.close(both)


def test_goes_on_behind_what_standard_output_holds(vextrace, folder):
    (folder / "trace").write_bytes(TRACE)
    with open(folder / "trace", "ab") as out:
        assert vextrace("record", "log", stdout=out, stderr=subprocess.PIPE).returncode == 0
    assert (folder / "trace").read_bytes() == TRACE * 2


def test_goes_on_behind_what_standard_output_holds_by_its_name(vextrace, folder):
    (folder / "trace").write_bytes(TRACE)
    with open(folder / "trace", "r+b") as out:
        out.seek(0, os.SEEK_END)
        result = vextrace("record", "-o", "/dev/stdout", "log", stdout=out, stderr=subprocess.PIPE)
    assert result.returncode == 0
    assert (folder / "trace").read_bytes() == TRACE * 2


def test_cuts_nothing_off_a_longer_file_on_standard_output(vextrace, folder):
    (folder / "long").write_bytes(b"x" * 20000)
    with open(folder / "long", "r+b") as out:
        out.seek(10000)
        result = vextrace("record", "log", stdout=out, stderr=subprocess.PIPE,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (10010, 10010)))
    assert result.returncode == 1
    left = (folder / "long").read_bytes()
    assert len(left) == 20000 and left[:10000] + left[10010:] == b"x" * 19990


@pytest.mark.parametrize("arguments", [["record", "drives"], *(["export", "--to", to, "trace"] for to in (
    "csv", "jsonl", "gpx", "kml", "geojson", "nmea"))])
def test_waits_for_a_slow_reader_that_it_need_not_wait_for(vextrace, folder, arguments):
    (folder / "drives").write_bytes(DRIVE.read_bytes() * 20)
    (folder / "trace").write_bytes(recording.trace(DRIVE.read_bytes()) * 20)
    expected = vextrace(*arguments).stdout
    reader, writer = os.pipe()
    os.set_blocking(writer, False)
    with subprocess.Popen([vextrace.program, *map(str, arguments)], cwd=folder, stdout=writer,
                          stderr=subprocess.PIPE) as process:
        os.close(writer)
        read = b""
        while piece := os.read(reader, 4096):
            read += piece
        assert process.wait(60) == 0
    os.close(reader)
    assert len(expected) > 65536 and read == expected


# --- Inputs without sentences

def test_tells_no_times_of_an_empty_input(vextrace, folder):
    result = vextrace("record", "-o", "trace", input=b"")
    assert lines(result) == [
        "vextrace: standard input: 0 bytes read, 0 recorded, 0 skipped",
        "vextrace: standard input: 0 sentences, 0 checked, 0 with a wrong checksum, 0 without",
        "vextrace: trace: 0 epochs, 0 messages, 0 bytes written",
        "vextrace: standard input: ended at the end of the input",
        "vextrace: standard input: holds no NMEA sentence"]


@pytest.mark.parametrize("data", [b"", b"noise\n" * 1000, b"\0" * 1000, b"$G\n", bytes(range(128, 256))])
def test_leaves_no_trace_of_an_input_without_sentences(vextrace, folder, data):
    (folder / "log").write_bytes(data)
    for options in ([], ["--append"], ["--force"]):
        result = vextrace("record", "-o", "trace", *options, "log")
        assert result.returncode == 1
        assert lines(result)[-1] == "vextrace: log: holds no NMEA sentence"
        assert not (folder / "trace").exists()


def test_leaves_the_old_trace_when_there_is_nothing_to_replace_it(vextrace, folder):
    (folder / "trace").write_bytes(TRACE)
    for option in ("--append", "--force"):
        assert vextrace("record", "-o", "trace", option, input=b"noise\n").returncode == 1
        assert (folder / "trace").read_bytes() == TRACE


# --- What cannot be read or written

@pytest.mark.parametrize("name, line", [
    ("missing", "missing: cannot be read: No such file or directory"),
    ("log/log", "log/log: cannot be read: Not a directory"),
    (".", ".: is a directory"),
    ("\x1b[31m", "\\x1b[31m: cannot be read: No such file or directory")])
def test_touches_no_output_when_the_input_cannot_be_read(vextrace, folder, name, line):
    (folder / "trace").write_bytes(TRACE)
    for options in ([], ["--force"], ["--append"]):
        refused(vextrace("record", "-o", "trace", *options, name), line)
        assert (folder / "trace").read_bytes() == TRACE
    refused(vextrace("record", "-o", "new", name), line)
    assert not (folder / "new").exists()


@pytest.mark.parametrize("name, line", [
    ("missing/trace", "missing/trace: cannot be written: No such file or directory"),
    ("log/trace", "log/trace: cannot be written: Not a directory")])
def test_refuses_outputs_that_cannot_be_opened(vextrace, folder, name, line):
    refused(vextrace("record", "-o", name, "log"), line)


def test_refuses_a_folder_that_is_read_only(vextrace, folder):
    if os.geteuid() == 0:
        pytest.skip("the superuser may write everywhere")
    (folder / "closed").mkdir(mode=0o555)
    refused(vextrace("record", "-o", "closed/trace", "log"), "closed/trace: cannot be written: Permission denied")


def test_tells_a_full_device(vextrace, folder, full):
    result = vextrace("record", "-o", full, "log")
    assert result.returncode == 1
    assert lines(result)[-1] == f"vextrace: {full}: cannot be written: No space left on device"
    assert f"vextrace: {full}: lacks the last 5 sentences" in lines(result)
    with open("/dev/full", "wb") as full:
        result = vextrace("record", "log", stdout=full, stderr=subprocess.PIPE)
    assert result.returncode == 1
    assert lines(result)[-1] == "vextrace: standard output: cannot be written: No space left on device"


def test_tells_a_device_that_takes_nothing(vextrace, folder):
    # Such as the memory of a program in whose place another runs.
    result = subprocess.run(["sh", "-c", 'exec "$0" record log >/proc/self/mem', vextrace.program],
                            cwd=folder, stderr=subprocess.PIPE, check=False, timeout=60)
    assert result.returncode == 1
    assert lines(result)[-1] == "vextrace: standard output: cannot be written: Input/output error"


def keeps_whole_epochs(result, trace, room):
    """What is left of a recording of the drive that found no more room."""
    left = trace.read_bytes() if trace.exists() else b""
    expected = recording.trace(DRIVE.read_bytes())
    assert expected.startswith(left)
    if left:
        last, following = walk(left)[-1], walk(expected[len(left):])[0]
        assert last[0] != following[0]
    assert room - len(left) < 1000
    assert result.returncode == 1
    assert f", {len(left)} bytes written" in result.stderr.decode()
    assert ": lacks the last " in result.stderr.decode()


@pytest.mark.parametrize("room", [0, 1, 1000, 10000, 20001])
def test_keeps_whole_epochs_when_the_file_must_not_grow(vextrace, folder, room):
    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (room, room))

    for name, source, options in (("file", DRIVE, {}), ("piped", "-", {"input": DRIVE.read_bytes()})):
        result = vextrace("record", "-o", name, source, preexec_fn=limit, **options)
        keeps_whole_epochs(result, folder / name, room)
        assert lines(result)[-1] == f"vextrace: {name}: cannot be written: File too large"


@pytest.fixture
def small_disk(tmp_path):
    """A disk of 16 KiB."""
    folder = tmp_path / "disk"
    folder.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16k", "none", folder], check=False,
                             capture_output=True)
    if mounted.returncode != 0:
        pytest.skip("no file system can be mounted here: " + mounted.stderr.decode().strip())
    yield folder
    subprocess.run(["umount", folder], check=True)


def test_keeps_whole_epochs_on_a_full_disk(vextrace, small_disk):
    trace = small_disk / "trace"
    result = vextrace("record", "-o", trace, DRIVE)
    keeps_whole_epochs(result, trace, 16384)
    assert lines(result)[-1] == f"vextrace: {trace}: cannot be written: No space left on device"
    # A torn message has no room beside it; the trace stays as it is.
    torn = trace.read_bytes() + b"\x01"
    trace.write_bytes(torn)
    refused(vextrace("record", "--append", "-o", trace, DRIVE),
            f"{trace}: cannot be written: No space left on device")
    assert [path.name for path in small_disk.iterdir()] == ["trace"] and trace.read_bytes() == torn


def test_survives_closed_standard_streams(vextrace, folder):
    def closing(*streams):
        return lambda: [os.close(stream) for stream in streams]

    result = vextrace("record", "-o", "out", stdin=None, preexec_fn=closing(0))
    refused(result, "standard input: cannot be read: Bad file descriptor")
    assert not (folder / "out").exists()
    refused(vextrace("record", "log", preexec_fn=closing(1)),
            "standard output: cannot be written: Bad file descriptor")
    for number, streams in enumerate([(0,), (1,), (2,), (0, 1), (0, 2), (1, 2), (0, 1, 2)]):
        result = vextrace("record", "-o", f"trace{number}", "log", preexec_fn=closing(*streams))
        assert result.returncode == 0
        assert (folder / f"trace{number}").read_bytes() == TRACE


def test_tells_a_read_error(vextrace, folder):
    result = vextrace("record", "-o", "trace", "/proc/self/mem")
    assert result.returncode == 1
    assert lines(result)[-2:] == [
        "vextrace: /proc/self/mem: ended by a read error",
        "vextrace: /proc/self/mem: cannot be read on at byte 0: Input/output error"]
    assert not (folder / "trace").exists()


def test_writes_no_trace_to_a_terminal(vextrace, folder):
    controller, terminal = pty.openpty()
    result = vextrace("record", "log", stdout=terminal, stderr=subprocess.PIPE)
    refused(result, "standard output: is a terminal; give the trace a name with -o")
    os.close(controller)
    os.close(terminal)


def test_ends_with_the_summary_when_nobody_reads(vextrace, folder):
    reader, writer = os.pipe()
    os.close(reader)
    result = vextrace("record", "log", stdout=writer, stderr=subprocess.PIPE)
    os.close(writer)
    assert result.returncode == 1
    assert "vextrace: standard output: 0 epochs, 0 messages, 0 bytes written" in lines(result)
    assert lines(result)[-2:] == ["vextrace: log: ended by a write error",
                                  "vextrace: standard output: nobody reads it any more"]


@pytest.mark.parametrize("name", [b"-trace", b"\xff\xfe", b"a b\n", b"tr\xc3\xa4ce"])
def test_takes_file_names_of_any_bytes(vextrace, folder, name):
    os.rename(folder / "log", os.path.join(os.fsencode(folder), name))
    program = os.fsencode(vextrace.program)
    result = subprocess.run([program, b"record", b"-o", b"./" + name + b".trace", b"--", name], cwd=folder,
                            capture_output=True, check=False)
    assert result.returncode == 0
    result.stderr.decode()
    assert b"\n" not in result.stderr.splitlines()[0]
    with open(os.path.join(os.fsencode(folder), name + b".trace"), "rb") as trace:
        assert trace.read() == TRACE


@pytest.mark.parametrize("name", ["++", "[a]", "[a,b]"])
def test_takes_names_that_mean_something_to_others(vextrace, folder, name):
    os.rename(folder / "log", folder / name)
    assert vextrace("record", name).stdout == TRACE
    (folder / name).write_bytes(TRACE)
    assert vextrace("show", name).returncode == 0


def test_is_quiet_when_told_but_for_faults(vextrace, folder):
    result = vextrace("record", "--quiet", "-o", "trace", "log")
    assert (result.returncode, result.stderr) == (0, b"")
    assert (folder / "trace").read_bytes() == TRACE
    result = vextrace("record", "--quiet", input=b"")
    assert (result.returncode, lines(result)) == (1, ["vextrace: standard input: holds no NMEA sentence"])


def test_does_not_follow_the_locale(vextrace, folder):
    environment = dict(os.environ, LC_ALL="de_DE.UTF-8")
    result = vextrace("record", "log", env=environment)
    assert result.stdout == TRACE
    assert result.stderr == vextrace("record", "log").stderr


# --- Memory

GENERATOR = """
import sys
block = {block} * ({size} // len({block}) // 64)
for _ in range(64):
    sys.stdout.buffer.write(block)
"""


@pytest.mark.memory
@pytest.mark.parametrize("block", [b"x", b"$GPGSV,", b"$", b"*00", b"\r", b"$PA*11\r", b"\xb5\x62\x00\x01",
                                   b"$PA*11\n", b"$A\n", b"$GPGGA,000001,1*00\r\n"])
def test_needs_little_memory_for_any_input(vextrace, folder, block):
    """64 MB without a line feed, twice what is allowed; less where much is written."""
    size = (8 if b"\n" in block or b"*11" in block else 64) * 1000 * 1000
    with subprocess.Popen([sys.executable, "-c", GENERATOR.format(block=block, size=size)],
                          stdout=subprocess.PIPE) as generator:
        _, memory, told = measured([vextrace.program, "record"], stdin=generator.stdout, cwd=folder)
    assert generator.returncode == 0
    read = int(re.search(rb"(\d+) bytes read", told).group(1))
    assert read > size * 0.99
    assert memory < 32 << 20
