"""vextrace info"""
import json
import os
import subprocess

import pytest

from limits import peak_memory, run_closed
from samples import CAN, FIRST, GGA, RMC, SECOND, SMALL, STAMP, changes, fix, message
from traces import CAN as CAN_ID
from traces import SECOND as NANOSECONDS
from traces import other

DRIVEN = (fix(STAMP, b"0000.000,N", b"17930.000,E", satellites=4, knots=b"010.0", altitude=b"-3.5") +
          fix(STAMP + 1_500_000_000, b"0000.000,N", b"17930.000,W", satellites=8, knots=b"20",
              altitude=b"12.25") +
          message(STAMP + 2 * NANOSECONDS, b"$PXYZ\x1b\n$PXYZ,1*00\r\n") + CAN +
          fix(STAMP + 9 * NANOSECONDS, status=b"V", satellites=1, knots=b"999", altitude=b"9999"))


@pytest.fixture
def info(vextrace, tmp_path):
    """Sums up traces as JSON; status and all of it."""

    def run(*traces, options=()):
        names = []
        for i, trace in enumerate(traces):
            names.append(f"{i}.trace")
            (tmp_path / names[-1]).write_bytes(trace)
        done = vextrace("info", "--json", *options, *names)
        return done.returncode, json.loads(done.stdout), done.stderr

    return run


def test_says_in_words_what_is_in_a_trace(vextrace, tmp_path):
    wrong = FIRST.replace(b"*69", b"*68").replace(b"*07", b"*FF")
    (tmp_path / "a.trace").write_bytes(DRIVEN + b"\0\0junk" + wrong)
    done = vextrace("info", "a.trace")
    length = len(DRIVEN)
    assert done.returncode == 1
    assert done.stderr.decode() == (
        f"vextrace: a.trace: damaged at byte {length}, 6 bytes passed over: "
        "size field 0 is too small for a header\n")
    assert done.stdout.decode() == f"""\
a.trace
  bytes           {length + 171}
  messages        5 GPS, 1 of other types: MSGID_CAN (1) 1
  damage          1 place, 6 bytes passed over
  sentences       11: !AIVDM 1, $GPGGA 4, $GPRMC 4, $PXYZ\\x1b 1, $PXYZ, 1
  checksums       3 wrong, 2 missing
  time            1994-03-23T12:35:19Z to 1994-03-23T12:35:28Z, 9 s; 1 step back
  gaps > 5 s      1, the longest 7 s after 1994-03-23T12:35:21Z
  fixes           2 valid, 1 not valid, 1 with a wrong checksum
  satellites      4 least, 6 median, 8 most
  distance        111.319 km
  highest speed   37.0 km/h
  altitude        -3.5 m to 12.2 m
  box             latitude 0.0000000 to 0.0000000 deg, longitude 179.5000000 to -179.5000000 deg, \
across the 180th meridian
"""


def test_says_the_same_in_json(info):
    status, said, _ = info(DRIVEN)
    summary = said["files"][0]
    distance = summary.pop("distance_m")
    assert summary.pop("distance_across_gaps_m") == 0
    assert abs(distance - 111319.4908) < 0.001
    assert status == 0
    assert summary == {
        "file": "0.trace",
        "bytes": len(DRIVEN),
        "messages": {"gps": 4, "other": 1,
                     "other_by_id": [{"id": 1, "name": "MSGID_CAN", "count": 1}]},
        "damage": {"places": 0, "bytes": 0},
        "sentences": {"count": 8,
                      "by_code": {"$GPGGA": 3, "$GPRMC": 3, "$PXYZ\\x1b": 1, "$PXYZ,": 1},
                      "of_other_codes": 0, "wrong_checksum": 1, "no_checksum": 1},
        "time": {"first": "1994-03-23T12:35:19Z", "last": "1994-03-23T12:35:28Z",
                 "first_ns": STAMP, "last_ns": STAMP + 9 * NANOSECONDS,
                 "without_date": 0, "steps_back": 0},
        "gaps": {"limit_s": 5, "count": 1, "longest_s": 7,
                 "list": [{"begin": "1994-03-23T12:35:21Z", "end": "1994-03-23T12:35:28Z",
                           "seconds": 7}]},
        "fixes": {"valid": 2, "not_valid": 1, "wrong_checksum": 0, "repeated": 0},
        "satellites": {"least": 4, "median": 6, "most": 8},
        "highest_speed_kmh": 37.04,
        "altitude_m": {"lowest": -3.5, "highest": 12.25},
        "box": {"south": 0, "west": 179.5, "north": 0, "east": -179.5},
    }
    assert list(summary) == ["file", "bytes", "messages", "damage", "sentences", "time", "gaps",
                             "fixes", "satellites", "highest_speed_kmh", "altitude_m", "box"]
    said["all"].pop("distance_m")
    assert said["all"].pop("distance_across_gaps_m") == 0
    assert said["all"].pop("files") == 1
    summary.pop("file")
    assert said["all"] == summary


def test_what_is_missing_is_null(info):
    status, said, told = info(message(0, b"$PXYZ\n") + message(0, b"", number=0x4711) + CAN)
    assert (status, told) == (0, b"")
    summary = said["files"][0]
    assert summary["messages"]["other_by_id"][1] == {"id": 0x4711, "name": None, "count": 1}
    assert summary["satellites"] == {"least": None, "median": None, "most": None}
    assert summary["altitude_m"] == {"lowest": None, "highest": None}
    assert (summary["box"], summary["highest_speed_kmh"], summary["distance_m"]) == (None, None, 0)
    assert summary["gaps"] == {"limit_s": 5, "count": 0, "longest_s": None, "list": []}
    assert summary["time"]["without_date"] == 1
    assert summary["time"]["first"] == "1970-01-01T00:00:00Z"
    assert info(CAN)[1]["files"][0]["time"] == {
        "first": None, "last": None, "first_ns": None, "last_ns": None, "without_date": 0,
        "steps_back": 0}


def test_the_gap_is_what_was_asked_for(info):
    trace = b"".join(message(STAMP + i * i * NANOSECONDS // 2, b"$PA\n") for i in range(5))
    for gap, count in (("0", 4), ("0.5", 3), ("0.499999999", 4), ("3.4", 1), ("1e99", 0)):
        _, said, _ = info(trace, options=["--gap", gap])
        assert said["all"]["gaps"]["count"] == count
        assert said["all"]["gaps"]["limit_s"] == min(float(gap), 1e9)


@pytest.mark.parametrize("gap", ["-1", "nan", "x", ""])
def test_gaps_that_are_none_are_refused(vextrace, gap):
    done = vextrace("info", f"--gap={gap}", "-", input=SMALL)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.count(b"\n") == 1


def test_several_traces_one_by_one_and_in_all(info, vextrace):
    status, said, told = info(DRIVEN, SMALL, b"", CAN)
    assert (status, told) == (0, b"")
    assert [file["file"] for file in said["files"]] == ["0.trace", "1.trace", "2.trace", "3.trace"]
    assert said["all"]["files"] == 4
    assert said["all"]["bytes"] == len(DRIVEN) + len(SMALL) + len(CAN)
    assert said["all"]["messages"] == {
        "gps": 6, "other": 2, "other_by_id": [{"id": 1, "name": "MSGID_CAN", "count": 2}]}
    # No gap and no distance lead from one trace to the next.
    assert said["all"]["gaps"]["count"] == 1
    assert said["all"]["distance_m"] == said["files"][0]["distance_m"]
    words = vextrace("info", "--long", "0.trace", "1.trace", "2.trace").stdout.decode().splitlines()
    assert [line for line in words if line[0] != " "] == ["0.trace", "1.trace", "2.trace",
                                                          "all 3 traces"]
    assert vextrace("info", "0.trace").stdout.count(b"\n") == 14


def test_what_cannot_be_read_keeps_nothing_else_back(vextrace, tmp_path):
    (tmp_path / "a").write_bytes(SMALL)
    (tmp_path / "b").write_bytes(SMALL)
    done = vextrace("info", "--json", "a", "missing", ".", "/proc/self/mem", "b")
    assert done.returncode == 2
    assert done.stderr.decode().splitlines() == [
        "vextrace: missing: cannot be read: No such file or directory",
        "vextrace: .: is a directory",
        "vextrace: /proc/self/mem: cannot be read on at byte 0: Input/output error"]
    said = json.loads(done.stdout)
    assert [file["file"] for file in said["files"]] == ["a", "/proc/self/mem", "b"]
    assert said["all"]["bytes"] == 2 * len(SMALL)


def test_what_is_no_trace_is_called_that(info):
    status, said, told = info(GGA + RMC, SMALL)
    assert status == 1
    assert told == (b"vextrace: 0.trace: no trace: 142 bytes without any message; it looks like NMEA: "
                    b"vextrace record first\n")
    assert said["files"][0]["damage"] == {"places": 1, "bytes": 142}
    assert said["all"]["messages"]["gps"] == 2


def test_every_beginning_and_every_changed_byte_is_accounted_for(info, all_changes):
    damaged = [SMALL[:length] for length in range(len(SMALL))]
    damaged += [trace for _, trace in changes(SMALL, all_changes)]
    for begin in range(0, len(damaged), 500):
        part = damaged[begin:begin + 500]
        _, said, _ = info(*part)
        for trace, file in zip(part, said["files"], strict=True):
            assert file["bytes"] == len(trace)
            assert file["messages"]["gps"] + file["messages"]["other"] <= 2
            assert file["damage"]["bytes"] <= len(trace)
        assert said["all"]["bytes"] == sum(map(len, part))


# --- Inputs and outputs


def test_standard_input(vextrace):
    done = vextrace("info", "-", input=SMALL)
    assert (done.returncode, done.stderr) == (0, b"")
    assert done.stdout.splitlines()[0] == b"standard input"


def test_names_are_any_bytes_in_words_and_in_json(vextrace, tmp_path):
    for name in (b"\xff\x01\n", "späce \\".encode()):
        with open(os.path.join(os.fsencode(tmp_path), name), "wb") as file:
            file.write(SMALL)
    done = subprocess.run([vextrace.program, "info", "--long", b"\xff\x01\n", "späce \\"], cwd=tmp_path,
                          check=False, capture_output=True)
    assert done.returncode == 0
    assert done.stdout.splitlines()[0] == b"\\xff\\x01\\x0a"
    done = subprocess.run([vextrace.program, "info", "--json", b"\xff\x01\n", "späce \\"],
                          cwd=tmp_path, check=False, capture_output=True)
    assert [file["file"] for file in json.loads(done.stdout)["files"]] == ["\\xff\\x01\\x0a",
                                                                           "späce \\"]


def test_closed_streams(vextrace):
    assert run_closed(vextrace, "<&-", "info", "-").returncode == 2
    assert run_closed(vextrace, ">&-", "info", "-", input=SMALL).returncode == 1
    assert run_closed(vextrace, "2>&-", "info", "-", input=b"x").returncode == 1


def test_a_full_device_is_named(vextrace):
    with open("/dev/full", "wb") as full:
        done = vextrace("info", "-", input=SMALL, stdout=full, stderr=subprocess.PIPE)
    assert done.returncode == 1
    assert done.stderr == b"vextrace: standard output: cannot be written: No space left on device\n"


def test_a_broken_pipe_ends_quietly(vextrace, tmp_path):
    (tmp_path / "a").write_bytes(SMALL)
    done = subprocess.run(["sh", "-c", 'yes a | head -n 2000 | xargs "$0" info --long | head -n 1',
                           vextrace.program], cwd=tmp_path, capture_output=True, check=False)
    assert (done.stdout, done.stderr) == (b"a\n", b"")


def test_no_trace_is_written_to(vextrace, tmp_path):
    path = tmp_path / "a"
    path.write_bytes(SMALL)
    with open(path, "ab") as output:
        assert vextrace("info", "a", stdout=output, stderr=subprocess.PIPE).returncode == 2
    assert path.read_bytes() == SMALL


@pytest.mark.parametrize("arguments", [[], ["--nonsense", "a"], ["--gap"]])
def test_wrong_use_is_refused(vextrace, arguments):
    done = vextrace("info", *arguments)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.startswith(b"vextrace: ") and done.stderr.count(b"\n") == 1


def test_help_shows_an_example_first(vextrace):
    done = vextrace("info", "--help")
    assert (done.returncode, done.stderr) == (0, b"")
    assert b"Example: vextrace info" in done.stdout


@pytest.mark.memory
def test_a_long_trace_takes_little_memory(vextrace, tmp_path):
    path = tmp_path / "long.trace"
    with open(path, "wb") as file:
        for _ in range(64):
            file.write(DRIVEN * (10**6 // len(DRIVEN)) + b"\xff")
    status, memory = peak_memory([vextrace.program, "info", path])
    assert status == 1
    assert memory < 32 * 2**20


@pytest.mark.memory
def test_thousands_of_traces_take_little_memory(vextrace, tmp_path):
    (tmp_path / "a").write_bytes(DRIVEN)
    for number in range(3000):
        (tmp_path / f"{number:04}").symlink_to("a")
    names = [f"{number:04}" for number in range(3000)]
    for options in ([], ["--json"]):
        status, memory = peak_memory([vextrace.program, "info", *options, *names], cwd=tmp_path)
        assert status == 0
        assert memory < 32 * 2**20
    done = vextrace("info", "--json", *names)
    said = json.loads(done.stdout)
    assert said["all"]["files"] == 3000
    assert said["all"]["messages"]["gps"] == 12000


@pytest.mark.memory
def test_many_codes_and_types_take_little_memory(vextrace, tmp_path):
    path = tmp_path / "a"
    with open(path, "wb") as file:
        for number in range(60000):
            file.write(message(STAMP, b"$%05d,1\n" % number) + message(STAMP, b"", number=0xC000 +
                                                                       number % 0x2000))
    status, memory = peak_memory([vextrace.program, "info", path])
    assert status == 0
    assert memory < 32 * 2**20
    said = json.loads(vextrace("info", "--json", path).stdout)["all"]
    assert len(said["sentences"]["by_code"]) == 1000
    assert said["sentences"]["of_other_codes"] == 59000
    assert len(said["messages"]["other_by_id"]) == 8192


def test_the_numbers_of_a_recorded_log_agree_with_those_shown(vextrace, log, tmp_path):
    assert vextrace("record", "-o", "a.trace", log).returncode == 0
    said = json.loads(vextrace("info", "--json", "a.trace").stdout)["all"]
    lines = vextrace("show", "a.trace").stdout.splitlines()
    assert said["messages"]["gps"] == len(lines)
    assert said["bytes"] == (tmp_path / "a.trace").stat().st_size
    assert said["damage"]["places"] == 0


def test_a_span_leaves_out_what_is_before_and_behind(info):
    others = b"".join(other(CAN_ID, STAMP + second * NANOSECONDS, b"x") for second in range(4))
    fixes = b"".join(fix(STAMP + second * NANOSECONDS) for second in range(4))
    status, said, _ = info(fixes + others, options=("--from", "1994-03-23T12:35:20Z",
                                                    "--until", "1994-03-23T12:35:21Z"))
    assert (status, said["all"]["messages"]["gps"], said["all"]["messages"]["other"]) == (0, 2, 2)
    assert said["all"]["time"]["first"] == "1994-03-23T12:35:20Z"
    assert said["all"]["time"]["last"] == "1994-03-23T12:35:21Z"
    assert said["all"]["bytes"] == (len(fixes) + len(others)) // 2


def test_a_span_that_ends_before_it_begins_is_refused(vextrace):
    done = vextrace("info", "--from", "1994-03-24", "--until", "1994-03-23", "-", input=SMALL)
    assert (done.returncode, done.stdout, done.stderr) == (2, b"", b"vextrace: --from: is later than --until\n")


def test_several_traces_make_a_table(info, vextrace, tmp_path):
    info(DRIVEN, fix(STAMP) + b"\0\0junk" + fix(STAMP + NANOSECONDS), CAN, b"")
    (tmp_path / "späce.trace").write_bytes(fix(STAMP))
    done = vextrace("info", "0.trace", "1.trace", "2.trace", "3.trace", "späce.trace")
    assert done.returncode == 1
    assert done.stdout.decode() == """\
trace         begin                    h:mm:ss      fixes           km     km/h  damage
0.trace       1994-03-23T12:35:19Z     0:00:09          2      111.319     37.0  none
1.trace       1994-03-23T12:35:19Z     0:00:01          2        0.000     41.5  1 place
2.trace       -                        0:00:00          0        0.000        -  none
3.trace       -                        0:00:00          0        0.000        -  none
späce.trace   1994-03-23T12:35:19Z     0:00:00          1        0.000     41.5  none
all 5 traces  1994-03-23T12:35:19Z     0:00:10          5      111.319     41.5  1 place
"""


def test_the_table_takes_what_can_be_read(vextrace, tmp_path):
    (tmp_path / "a").write_bytes(SMALL)
    done = vextrace("info", "a", "missing", "a")
    assert (done.returncode, len(done.stdout.splitlines())) == (2, 4)
    assert done.stdout.splitlines()[-1].startswith(b"all 2 traces ")
    assert done.stderr == b"vextrace: missing: cannot be read: No such file or directory\n"


def test_rare_codes_are_folded_unless_all_is_asked_for(info, vextrace):
    trace = b"".join(fix(STAMP + second * NANOSECONDS) for second in range(999))
    garbled = b"".join(message(STAMP, b"$PXAA%d,1\n" % number) for number in range(2))
    info(trace + garbled)
    said = vextrace("info", "0.trace").stdout.decode()
    assert "  sentences       2000: $GPGGA 999, $GPRMC 999, 2 rare codes 2\n" in said
    said = vextrace("info", "--long", "0.trace").stdout.decode()
    assert "  sentences       2000: $GPGGA 999, $GPRMC 999, $PXAA0 1, $PXAA1 1\n" in said
