"""vextrace check: the proof of a recording against its log."""
import functools
import subprocess
import time

import pytest

from conftest import DRIVE
from limits import peak_memory, run_closed
from model import recording
from test_record import walk
from traces import CAN, message, other, sentence, utc

STAMP = utc("1994-03-23T12:35:19")
NEXT_STAMP = utc("1994-03-23T12:35:20")
RMC = sentence(b"GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A")
GGA = sentence(b"GNGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
GSV1 = sentence(b"GPGSV,2,1,05,01,40,083,46,02,17,308,41,12,07,344,39,14,22,228,45")
GSV2 = sentence(b"GPGSV,2,2,05,20,11,120,33")
NEXT_RMC = sentence(b"GNRMC,123520.00,A,4807.039,N,01131.001,E,022.5,084.5,230394,,,A")
NEXT_GGA = sentence(b"GNGGA,123520,4807.039,N,01131.001,E,1,09,0.8,545.5,M,46.9,M,,")
LOG = RMC + GSV1 + GSV2 + GGA + NEXT_RMC + NEXT_GGA
FIRST = message(STAMP, RMC, GGA, GSV1)
SECOND = message(STAMP, GSV2)
THIRD = message(NEXT_STAMP, NEXT_RMC, NEXT_GGA)
PROVEN = (b"6 sentences, each in the place where its epoch must have it\n"
          b"3 messages of 2 epochs, used up to the last sentence\n"
          b"4 timed sentences with the time of their message's stamp\n")


def utc_text(stamp):
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(stamp // 10**9))


@pytest.fixture
def check(vextrace, tmp_path):
    """Checks a trace against a log, both given as bytes."""
    def run(log, trace, *options):
        (tmp_path / "log").write_bytes(log)
        (tmp_path / "trace").write_bytes(trace)
        return vextrace("check", *options, "log", "trace")
    return run


def expect_proven(result, output=None):
    assert (result.returncode, result.stderr) == (0, b"")
    if output is not None:
        assert result.stdout == output


def expect_difference(result, line):
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr.decode() == f"vextrace: {line}\n"


def test_proves_a_trace_that_holds_the_log_epoch_by_epoch(check):
    expect_proven(check(LOG, FIRST + SECOND + THIRD), PROVEN)


def test_passes_over_messages_of_other_types_and_counts_them(check):
    can = other(CAN, 5, b"\x01\x02\x03\x04")
    expect_proven(check(LOG, can + FIRST + can + SECOND + THIRD),
                  PROVEN + b"2 messages of other types passed over\n")


@pytest.mark.parametrize("trace, line", [
    (message(STAMP, RMC, GSV1) + SECOND + THIRD,
     f"trace: the message at byte 0 lacks the sentence at byte {len(RMC + GSV1 + GSV2)} of log"),
    (FIRST + THIRD,
     f"trace: the message at byte {len(FIRST)} lacks the sentence at byte {len(RMC + GSV1)} of log"),
    (FIRST + SECOND,
     f"trace: the message at byte {len(FIRST + SECOND)} lacks the sentence at byte "
     f"{len(RMC + GSV1 + GSV2 + GGA)} of log"),
    (message(STAMP, RMC, GGA, GSV2) + message(STAMP, GSV1) + THIRD,
     f"trace: the message at byte 0 lacks the sentence at byte {len(RMC)} of log"),
    (message(STAMP, RMC, GSV1) + message(STAMP, GGA, GSV2) + THIRD,
     f"trace: the message at byte 0 lacks the sentence at byte {len(RMC + GSV1 + GSV2)} of log"),
    (message(STAMP, RMC, GGA, GSV1, b"$PXYZ,1") + SECOND + THIRD,
     "trace: the message at byte 0 holds a $PXYZ, that the log does not have in its epoch"),
    (FIRST + SECOND + THIRD + SECOND,
     f"trace: the message at byte {len(FIRST + SECOND + THIRD)} is behind the last sentence of the log"),
    (FIRST + message(NEXT_STAMP, GSV2) + THIRD,
     f"trace: the message at byte {len(FIRST)} bears 1994-03-23T12:35:20Z, "
     "but its sentences say 1994-03-23T12:35:19Z"),
    (FIRST + SECOND + message(STAMP, NEXT_RMC, NEXT_GGA),
     f"trace: the message at byte {len(FIRST + SECOND)} bears 1994-03-23T12:35:19Z, "
     "but its sentences say 1994-03-23T12:35:20Z"),
    (FIRST + SECOND + message(utc("1994-03-24T12:35:20"), NEXT_RMC, NEXT_GGA),
     f"trace: the message at byte {len(FIRST + SECOND)} bears 1994-03-24T12:35:20Z, "
     "but its sentences say 1994-03-23T12:35:20Z"),
], ids=["sentence missing", "message missing", "epoch missing", "order of a code",
        "fix in two messages", "sentence too many", "message too many", "stamps of an epoch",
        "stamp of another second", "stamp of another day"])
def test_names_the_first_difference(check, trace, line):
    expect_difference(check(LOG, trace), line)


def test_takes_nothing_for_equal_that_mixes_two_epochs(check):
    mixed = message(STAMP, RMC, GSV1, NEXT_GGA)
    result = check(RMC + GSV1 + NEXT_GGA, mixed)
    assert result.returncode == 1
    assert b"holds a $GPGGA that the log does not have in its epoch" in result.stderr


def test_follows_the_date_over_midnight_and_a_leap_second(check):
    before = sentence(b"GPRMC,235959,A,4807.038,N,01131.000,E,,,301216,,,A")
    leap = sentence(b"GPGGA,235960.5,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    after = sentence(b"GPGGA,000000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    trace = (message(utc("2016-12-30T23:59:59"), before) +
             message(utc("2016-12-31T00:00:00.5"), leap))
    expect_proven(check(before + leap + after,
                        trace + message(utc("2016-12-31T00:00:00"), after)))
    expect_difference(check(before + leap + after,
                            trace + message(utc("2016-12-30T00:00:00"), after)),
                      f"trace: the message at byte {len(trace)} bears 2016-12-30T00:00:00Z, "
                      "but its sentences say 2016-12-31T00:00:00Z")


def test_knows_the_date_that_record_was_told(check):
    gga = sentence(b"GPGGA,010203.25,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    expect_proven(check(gga, message(utc("1970-01-01T01:02:03.25"), gga)))
    dated = message(utc("2020-02-29T01:02:03.25"), gga)
    expect_proven(check(gga, dated, "--date", "2020-02-29"))
    expect_difference(check(gga, dated),
                      "trace: the message at byte 0 bears 2020-02-29T01:02:03.25Z, "
                      "but its sentences say 1970-01-01T01:02:03.25Z")


def test_leaves_stamps_of_arrival_alone_but_wants_one_for_an_epoch(check):
    arrived = message(77, RMC, GGA, GSV1) + message(77, GSV2) + message(78, NEXT_RMC, NEXT_GGA)
    result = check(LOG, arrived, "--stamp", "arrival")
    expect_proven(result)
    assert b"timed" not in result.stdout
    torn = message(77, RMC, GGA, GSV1) + message(76, GSV2) + message(78, NEXT_RMC, NEXT_GGA)
    assert check(LOG, torn, "--stamp", "arrival").returncode == 1


def test_takes_epochs_that_silence_divided_when_told(check):
    divided = (message(STAMP, RMC, GSV1) + message(STAMP, GSV2) + message(STAMP, GGA) + THIRD)
    assert check(LOG, divided).returncode == 1
    result = check(LOG, divided, "--live")
    expect_proven(result)
    assert result.stdout.endswith(b"1 epoch in more messages than needed\n")


def recorded_with_pause(texts, pause):
    """The recording of sentences, with silence behind so many of them."""
    recorded = iter(walk(recording.trace(b"".join(texts))))
    trace = b""
    begin = 0
    for _, epoch in recording.epochs(texts):
        stamp = [next(recorded)[0] for _ in recording.messages(epoch)][0]
        before = min(max(pause - begin, 0), len(epoch))
        for part in (epoch[:before], epoch[before:]):
            trace += b"".join(recording.serialised(stamp, held) for held in recording.messages(part))
        begin += len(epoch)
    return trace


GLL = sentence(b"GNGLL,4807.038,N,01131.000,E,123519,A")


@pytest.mark.parametrize("pause", range(1, 7))
def test_takes_silence_wherever_it_was(check, pause):
    """What repeats goes into further messages on either side of it."""
    texts = [RMC, GSV1, GSV2, GSV1, GSV2, GLL, NEXT_RMC]
    trace = recorded_with_pause(texts, pause)
    expect_proven(check(b"".join(texts), trace, "--live"))
    texts[1:3] = [GSV2, GSV1]
    assert check(b"".join(texts), trace, "--live").returncode == 1


def test_takes_single_pauses_in_a_drive(check):
    data = DRIVE.read_bytes()[:6000]
    texts = [text for _, text, _ in recording.sentences(data[:data.rindex(b"\n") + 1])]
    for pause in range(len(texts)):
        expect_proven(check(b"".join(texts), recorded_with_pause(texts, pause), "--live"))


@pytest.mark.parametrize("change", range(5))
def test_names_what_silence_cannot_explain(check, change):
    first, second, third = (STAMP, RMC, GSV1), (STAMP, GSV2, GGA), (NEXT_STAMP, NEXT_RMC, NEXT_GGA)
    places = [0, len(message(*first)), len(message(*first) + message(*second))]
    parts, line = [
        ([first, (STAMP, GGA), third],
         f"at byte {places[1] + len(message(STAMP, GGA))} lacks the sentence at byte {len(RMC + GSV1)} of log"),
        ([first, (NEXT_STAMP, GSV2, GGA), third],
         f"at byte {places[1]} bears 1994-03-23T12:35:20Z, but its sentences say 1994-03-23T12:35:19Z"),
        ([first, second, third, second],
         f"at byte {places[2] + len(message(*third))} is behind the last sentence of the log"),
        ([first, second, (NEXT_STAMP, NEXT_RMC, NEXT_GGA, GSV1)],
         f"at byte {places[2]} holds a $GPGSV that the log does not have in its epoch"),
        ([first, second, (NEXT_STAMP, NEXT_RMC)],
         f"at byte {places[2] + len(message(NEXT_STAMP, NEXT_RMC))} lacks the sentence at byte "
         f"{len(LOG) - len(NEXT_GGA)} of log")][change]
    trace = b"".join(message(*part) for part in parts)
    expect_difference(check(LOG, trace, "--live"), "trace: the message " + line)


@pytest.mark.memory
@pytest.mark.parametrize("options", [[], ["--live"]])
def test_needs_little_memory_for_a_log_without_times(vextrace, tmp_path, options):
    (tmp_path / "log").write_bytes(GSV1 * 150000)  # 10 MB
    assert vextrace("record", "-o", "trace", "log").returncode == 0
    status, memory = peak_memory([vextrace.program, "check", *options, "log", "trace"], cwd=tmp_path)
    assert status == 0
    assert memory < 48 << 20


LONELY_GGA = sentence(b"GNGGA,123521,4807.039,N,01131.001,E,1,09,0.8,545.5,M,46.9,M,,")
DAY_0 = utc("1970-01-01T12:35:21")


@pytest.mark.parametrize("parts", [
    [(STAMP, RMC), (DAY_0, LONELY_GGA)],
    [(STAMP, RMC, GSV1), (DAY_0, GSV2, LONELY_GGA)],
    [(STAMP, RMC, GSV1), (0, GSV2)],
    [(STAMP, RMC, GSV1), (0, GSV2), (NEXT_STAMP, NEXT_RMC)],
], ids=["at a time", "before a time", "without a time", "without a time, then silent"])
def test_takes_what_another_recorder_went_on_with_when_told(check, parts):
    """It knows no date, and nothing of the epoch before."""
    log = b"".join(text for part in parts for text in part[1:])
    trace = b"".join(message(*part) for part in parts)
    expect_proven(check(log, trace, "--live"))
    assert check(log, trace).returncode == 1


def test_takes_a_date_that_came_after_silence_when_told(check):
    trace = message(utc("1970-01-01T12:35:19"), GGA) + message(STAMP, RMC, GSV1)
    expect_proven(check(GGA + RMC + GSV1, trace, "--live"))
    assert check(GGA + RMC + GSV1, trace).returncode == 1
    expect_proven(check(GGA + GSV1 + RMC, trace, "--live"))


@pytest.mark.parametrize("stamp", [NEXT_STAMP, utc("1994-03-24T12:35:19"), utc("1994-03-22T12:35:19"),
                                   utc("1970-01-01T12:35:19"), 0])
def test_takes_no_wrong_stamp_live_either(check, stamp):
    expect_difference(check(RMC + GGA, message(stamp, RMC, GGA), "--live"),
                      f"trace: the message at byte 0 bears {utc_text(stamp)}, "
                      "but its sentences say 1994-03-23T12:35:19Z")
    wrong = message(STAMP, RMC) + message(stamp, GGA)
    log = RMC + GGA
    if stamp != utc("1970-01-01T12:35:19"):
        assert check(log, wrong, "--live").returncode == 1


def test_takes_long_input_without_times_in_parts(check, vextrace, tmp_path):
    """A recorder does not wait for ever for the first time."""
    (tmp_path / "log").write_bytes(GSV1 * 20000 + RMC + GGA)
    assert vextrace("record", "-o", "recorded", "log").returncode == 0
    expect_proven(vextrace("check", "log", "recorded"))
    recorded = (tmp_path / "recorded").read_bytes()
    assert recorded.startswith(message(0, GSV1) * 10000)
    last = message(STAMP, RMC, GGA, GSV1)
    assert last in recorded
    expect_proven(check(GSV1 * 20000 + RMC + GGA, recorded))
    torn = recorded.replace(last, message(NEXT_STAMP, RMC, GGA, GSV1))
    assert check(GSV1 * 20000 + RMC + GGA, torn).returncode == 1


def test_calls_damage_damage(check):
    result = check(LOG, FIRST + b"\x00\x01" + SECOND + THIRD)
    assert result.returncode == 1
    assert result.stderr.startswith(b"vextrace: trace: damaged at byte %d: " % len(FIRST))
    assert result.stderr.count(b"\n") == 1


@pytest.mark.parametrize("arguments, part", [
    (["-", "-"], b"cannot both be standard input"),
    (["log", "nothing"], b"nothing: "),
    (["--date", "2020-02-30", "log", "trace"], b"--date: 2020-02-30 is no day"),
    (["--stamp", "local", "log", "trace"], b"--stamp"),
    (["log", "."], b".: is a directory"),
])
def test_refuses_a_command_line_that_makes_no_sense(vextrace, tmp_path, arguments, part):
    (tmp_path / "log").write_bytes(LOG)
    (tmp_path / "trace").write_bytes(FIRST)
    result = vextrace("check", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert part in result.stderr and result.stderr.count(b"\n") == 1


def test_reads_either_from_standard_input(vextrace, tmp_path):
    (tmp_path / "log").write_bytes(LOG)
    (tmp_path / "trace").write_bytes(FIRST + SECOND + THIRD)
    expect_proven(vextrace("check", "-", "trace", input=LOG), PROVEN)
    expect_proven(vextrace("check", "log", "-", input=FIRST + SECOND + THIRD), PROVEN)


def test_proves_what_record_made_of_every_log(vextrace, log):
    assert vextrace("record", "-o", "trace", log).returncode == 0
    expect_proven(vextrace("check", log, "trace"))


def test_what_cannot_be_read_is_wrong_use(vextrace, tmp_path):
    (tmp_path / "log").write_bytes(LOG)
    (tmp_path / "trace").write_bytes(FIRST)
    for log, trace, line in (("missing", "trace", "missing: cannot be read: No such file or directory"),
                             (".", "trace", ".: is a directory"),
                             ("log", "log/x", "log/x: cannot be read: Not a directory")):
        result = vextrace("check", log, trace)
        assert (result.returncode, result.stdout) == (2, b"")
        assert result.stderr.decode() == f"vextrace: {line}\n"


@pytest.mark.parametrize("names", [("/proc/self/mem", "trace"), ("log", "/proc/self/mem")])
def test_a_read_error_is_named(vextrace, tmp_path, names):
    (tmp_path / "log").write_bytes(LOG)
    (tmp_path / "trace").write_bytes(FIRST + SECOND + THIRD)
    expect_difference(vextrace("check", *names),
                      "/proc/self/mem: cannot be read on at byte 0: Input/output error")


def test_closed_streams(vextrace, tmp_path):
    (tmp_path / "log").write_bytes(LOG)
    trace = FIRST + SECOND + THIRD
    run = functools.partial(run_closed, vextrace, cwd=tmp_path)
    assert run("<&-", "check", "log", "-").stderr == (
        b"vextrace: standard input: cannot be read: Bad file descriptor\n")
    done = run(">&-", "check", "log", "-", input=trace)
    assert (done.returncode, done.stderr) == (
        1, b"vextrace: standard output: cannot be written: Bad file descriptor\n")
    assert run("2>&-", "check", "log", "-", input=trace).returncode == 0
    assert run("2>&-", "check", "log", "-", input=FIRST).returncode == 1


def test_a_full_device_is_named(vextrace, tmp_path):
    (tmp_path / "log").write_bytes(LOG)
    with open("/dev/full", "wb") as full:
        done = vextrace("check", "log", "-", input=FIRST + SECOND + THIRD, stdout=full,
                        stderr=subprocess.PIPE)
    assert done.returncode == 1
    assert done.stderr == b"vextrace: standard output: cannot be written: No space left on device\n"


def test_neither_input_is_written_to(vextrace, tmp_path):
    for name, content in (("log", LOG), ("trace", FIRST + SECOND + THIRD)):
        (tmp_path / name).write_bytes(content)
    for name in ("log", "trace"):
        content = (tmp_path / name).read_bytes()
        with open(tmp_path / name, "ab") as output:
            done = vextrace("check", "log", "trace", stdout=output, stderr=subprocess.PIPE)
        assert done.returncode == 2
        assert (tmp_path / name).read_bytes() == content


def test_escapes_a_date_that_is_none(vextrace):
    result = vextrace("check", "--date", "\x1b[31m", "/dev/null", "/dev/null")
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr == b"vextrace: --date: \\x1b[31m is no day, YYYY-MM-DD\n"


def test_says_that_a_file_is_no_trace(vextrace, tmp_path):
    (tmp_path / "log").write_bytes(b"no trace at all\n" * 50)
    result = vextrace("check", "log", "log")
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr == b"vextrace: log: no trace: 800 bytes without any message\n"
