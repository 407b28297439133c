"""What is known to be wrong steers nothing: dates, talkers, fixes, compared with the model."""
import collections
import csv
import io
import json
import math
import random
import re

import pytest

from conftest import logs_of
from model import reading, recording
from traces import SECOND, message, sentence, stored, utc

NOON = utc("1994-03-23T12:00:00")


def damaged(rng, data):
    """A log with one damage in about every tenth line: a digit, a cut, lost bytes, a checksum."""
    result = []
    for line in data.split(b"\n"):
        if line and rng.random() < 0.1:
            line = rng.choice([flipped, cut, shortened, garbled])(rng, line)
        result.append(line)
    return b"\n".join(result)


def flipped(rng, line):
    places = [at for at, byte in enumerate(line) if byte in b"0123456789"]
    if not places:
        return line
    at = rng.choice(places)
    return line[:at] + rng.choice(b"0123456789".replace(line[at:at + 1], b"")).to_bytes(1, "big") + line[at + 1:]


def cut(rng, line):
    return line[:rng.randrange(len(line))] + rng.choice([b"", b"\r"])


def shortened(rng, line):
    at = rng.randrange(len(line))
    return line[:at] + line[at + rng.randrange(1, 4):]


def garbled(rng, line):
    return re.sub(rb"\*[0-9A-Fa-f]{2}", b"*%02X" % rng.randrange(256), line)


def number(text, kind=float):
    return None if text in ("", None) else kind(text)


def same(expected, row):
    """Whether a row of a table is that of the model."""
    dated = expected["stamp"] >= reading.FIRST_DATED
    assert number(row["time_ns"], int) == (expected["stamp"] if dated else None)
    assert (row["time_utc"] == "") == (not dated)
    assert row["checksum"] == expected["checksum"]
    assert row["valid"] == ("true" if expected["valid"] else "false")
    for name in reading.NUMBERS:
        assert number(row[name]) == expected[name], (name, expected)


def distance(row, other):
    """In metres on a sphere, which is right to a hundredth."""
    angles = [math.radians(value) for value in (row["latitude_deg"], row["longitude_deg"],
                                                other["latitude_deg"], other["longitude_deg"])]
    half = (math.sin((angles[2] - angles[0]) / 2) ** 2 +
            math.cos(angles[0]) * math.cos(angles[2]) * math.sin((angles[3] - angles[1]) / 2) ** 2)
    return 2 * 6_371_000 * math.asin(math.sqrt(half))


def check_info(said, trace):
    expected = reading.info(trace)
    assert {key: said["sentences"][key] for key in ("count", "wrong_checksum", "no_checksum")} == {
        key: expected[key] for key in ("count", "wrong_checksum", "no_checksum")}
    assert said["fixes"] == expected["fixes"]
    assert {key: said["time"][key] for key in ("first_ns", "last_ns", "without_date")} == {
        key: expected[key] for key in ("first_ns", "last_ns", "without_date")}
    assert said["highest_speed_kmh"] == expected["highest_speed_kmh"]
    assert said["altitude_m"] == expected["altitude_m"]
    assert said["satellites"]["least"] == expected["least_satellites"]
    lengths = {False: 0, True: 0}
    valid = [row for kind, row in reading.fixes(trace) if kind == "valid"]
    for row, other in zip(valid, valid[1:]):
        lengths[abs(row["stamp"] - other["stamp"]) > 5 * SECOND] += distance(row, other)
    assert said["distance_m"] == pytest.approx(lengths[False], rel=0.01, abs=0.01)
    assert said["distance_across_gaps_m"] == pytest.approx(lengths[True], rel=0.01, abs=0.01)


def check_all(vextrace, tmp_path, data):
    """What is recorded of the data, exported and summed up is what the model says."""
    recorded = vextrace("record", input=data).stdout
    assert recorded == recording.trace(data)
    (tmp_path / "trace").write_bytes(recorded)
    checked = vextrace("check", "-", "trace", input=data)
    assert checked.returncode == 0, checked.stderr
    assert vextrace("export", "--to", "nmea", "trace").stdout == reading.nmea(recorded)
    for arguments in ([], ["--unchecked"]):
        text = vextrace("export", "--to", "csv", "trace", *arguments).stdout.decode()
        rows = list(csv.DictReader(io.StringIO(text, newline="")))
        expected = reading.table(recorded, unchecked=bool(arguments))
        assert len(rows) == len(expected)
        for row, expectation in zip(rows, expected):
            same(expectation, row)
    check_info(json.loads(vextrace("info", "--json", "trace").stdout)["files"][0], recorded)


def test_all_views_of_a_log_are_those_of_the_model(vextrace, tmp_path, log):
    check_all(vextrace, tmp_path, log.read_bytes())


def test_all_views_of_damaged_logs_are_those_of_the_model(vextrace, request, tmp_path):
    logs = [path.read_bytes() for path in logs_of(request.config)]
    for seed in range(40):
        rng = random.Random(seed)
        data = logs[seed % len(logs)]
        begin = rng.randrange(max(1, len(data) - 8000))
        check_all(vextrace, tmp_path, damaged(rng, data[begin:begin + 8000]))


def changes_of_talker(data):
    """How many right RMC and GGA sentences have another talker than the one before in the same place
    of an epoch."""
    found = recording.sentences(data)
    groups = recording.epochs([text for _, text, _ in found])
    verdicts = iter(verdict for _, _, verdict in found)
    before, count = {}, 0
    for _, texts in groups:
        seen = collections.Counter()
        for text in texts:
            kind = recording.kind(text)
            if next(verdicts) != recording.RIGHT or kind not in (b"RMC", b"GGA"):
                continue
            place = kind, seen[kind]
            seen[kind] += 1
            count += text[:3] != before.get(place, before.get((kind, 0), text[:3]))
            before[place] = text[:3]
    return count


def test_nmea_gives_back_what_the_receiver_sent(vextrace, tmp_path, log):
    """Byte for byte, in another order, but for the first RMC or GGA behind a change of talker."""
    data = log.read_bytes()
    (tmp_path / "trace").write_bytes(vextrace("record", input=data).stdout)
    lines = vextrace("export", "--to", "nmea", "trace").stdout.split(b"\n")[:-1]
    exported = collections.Counter(line + b"\n" for line in lines)
    sent = [(text if text.endswith(b"\n") else text + b"\n", verdict)
            for _, text, verdict in recording.sentences(data)]
    right = collections.Counter(text for text, verdict in sent if verdict == recording.RIGHT)
    lost = right - exported
    assert all(recording.kind(text) in (b"RMC", b"GGA") for text in lost)
    assert sum(lost.values()) <= changes_of_talker(data)
    assert sum(exported.values()) == len(sent)
    assert sorted(map(stored, exported.elements())) == sorted(stored(text) for text, _ in sent)


# --- Small traces


def rmc(talker, time=b"120000", speed=b"022.4"):
    return sentence(talker + b"RMC," + time + b",A,4807.038,N,01131.000,E," + speed + b",084.4,230394,,,A")


def garbled_rmc():
    """Of GN, with a speed that lost its beginning, so that the checksum is that of GL."""
    text = rmc(b"GL", speed=b"999.9")
    return b"$GN" + text[3:]


def test_another_talker_of_rmc_is_wrong_until_the_second_in_a_row(vextrace, tmp_path):
    sent = [rmc(b"GN"), rmc(b"GN"), garbled_rmc(), rmc(b"GN"), rmc(b"GP"), rmc(b"GP")]
    (tmp_path / "trace").write_bytes(b"".join(message(NOON + at * SECOND, text)
                                              for at, text in enumerate(sent)))
    rows = vextrace("export", "--to", "csv", "trace").stdout.splitlines()[1:]
    assert [row.split(b",")[3] for row in rows] == [b"%d" % (NOON + at * SECOND) for at in (0, 1, 3, 5)]
    exported = vextrace("export", "--to", "nmea", "trace").stdout
    assert exported == b"".join([sent[0], sent[1], stored(sent[2]), sent[3], sent[4], sent[5]])
    said = json.loads(vextrace("info", "--json", "trace").stdout)["files"][0]
    assert (said["sentences"]["wrong_checksum"], said["fixes"]["wrong_checksum"]) == (2, 2)
    shown = vextrace("show", "--fix", "trace").stdout.splitlines()
    assert [line[:19] == b"RMC: wrong checksum" for line in shown] == [
        False, False, True, False, True, False]


def test_the_verdict_does_not_depend_on_the_time_that_is_asked_for(vextrace, tmp_path):
    sent = [rmc(b"GN"), rmc(b"GN"), garbled_rmc(), garbled_rmc()]
    (tmp_path / "trace").write_bytes(b"".join(message(NOON + at * SECOND, text)
                                              for at, text in enumerate(sent)))
    span = ["--from", "1994-03-23T12:00:02", "--until", "1994-03-23T12:00:02"]
    result = vextrace("export", "--to", "csv", *span, "trace")
    assert result.stdout.count(b"\n") == 1 and b"1 fix with a wrong checksum" in result.stderr
    assert vextrace("export", "--to", "nmea", *span, "trace").stdout == stored(sent[2])
    assert vextrace("show", "--fix", *span, "trace").stdout.startswith(b"RMC: wrong checksum")
    said = json.loads(vextrace("info", "--json", *span, "trace").stdout)["files"][0]
    assert said["fixes"]["wrong_checksum"] == 1


def test_show_first_passes_wrong_fixes_over(vextrace, tmp_path):
    wrong = rmc(b"GP").replace(b"022.4", b"022.5")
    gga = sentence(b"GPGGA,120001,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    (tmp_path / "trace").write_bytes(message(NOON, wrong) + message(NOON + SECOND, wrong, gga) +
                                     message(NOON + 2 * SECOND, rmc(b"GP")))
    shown = vextrace("show", "--first", "--fix", "--utc", "trace").stdout.splitlines()
    assert [line[:25] for line in shown] == [b"1994-03-23T12:00:01Z RMC:", b"1994-03-23T12:00:01Z GGA:"]
    assert b"RMC: wrong checksum, time 120000" in shown[0] and b"GGA: time 120001" in shown[1]


def test_a_flipped_digit_in_a_gga_moves_no_date(vextrace):
    gga = [sentence(b"GPGGA,%s,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,," % time)
           for time in (b"000001", b"000002", b"000003")]
    data = rmc(b"GP", b"000000") + gga[0].replace(b"000001", b"200001") + gga[1] + gga[2]
    recorded = vextrace("record", input=data).stdout
    assert [stamp for stamp, _ in reading.messages(recorded)] == [
        utc("1994-03-23T" + time) for time in ("00:00:00", "20:00:01", "00:00:02", "00:00:03")]


# --- No date is no time


def test_numbers_at_their_ends(vextrace, tmp_path):
    ends = sentence(b"GPRMC,-123519,A,9000.000,S,18000.000,W,0,360,230394")
    high = sentence(b"GPGGA,-123519,9000.000,S,18000.000,W,1,08,0.9,+545.4,M,46.9,M,,")
    (tmp_path / "trace").write_bytes(message(NOON, ends, high))
    row = vextrace("export", "--to", "csv", "trace").stdout.splitlines()[1]
    assert row == (b"trace,1,1994-03-23T12:00:00Z,%d,true,-90,-180,545.4,0,360,8,1,0.9,right" % NOON)
    shown = vextrace("show", "--fix", "trace").stdout.splitlines()
    assert shown[0].startswith(b"RMC: time invalid, date 230394, valid, latitude -90.0000000000 deg")
    assert shown[1].endswith(b"altitude 545.4000 m")


def test_an_early_day_is_no_date(vextrace, tmp_path):
    gga = sentence(b"GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    for day, dated in (("1970-03-01", False), ("1970-12-31", False), ("1971-01-01", True)):
        result = vextrace("record", "--date", day, input=gga)
        (tmp_path / "trace").write_bytes(result.stdout)
        assert (b"1 message without a date" in result.stderr) == (not dated)
        assert (b"%s" % day.encode() in result.stderr) == dated
        shown = vextrace("show", "--utc", "trace").stdout
        assert shown.startswith(day.encode() if dated else b"- ")
        row = vextrace("export", "--to", "csv", "trace").stdout.splitlines()[1]
        assert row.startswith(b"trace,1," + (day.encode() if dated else b",,"))
        said = json.loads(vextrace("info", "--json", "trace").stdout)["files"][0]
        assert said["time"]["without_date"] == (0 if dated else 1)


def test_the_summary_of_a_recording_tells_dates_and_messages_without(vextrace):
    gga = [sentence(b"GPGGA,%s,,,,,0,,,,,,,," % time) for time in (b"115958", b"115959")]
    result = vextrace("record", input=b"".join(gga) + rmc(b"GP") + rmc(b"GP", b"120001"))
    assert result.stderr.decode().splitlines()[3:5] == [
        "vextrace: standard output: 1994-03-23T12:00:00Z to 1994-03-23T12:00:01Z",
        "vextrace: standard output: 2 messages without a date"]
    result = vextrace("record", input=gga[0])
    assert result.stderr.decode().splitlines()[3] == (
        "vextrace: standard output: 1 message without a date")


def test_two_undated_traces_make_a_report(vextrace, tmp_path):
    for name, stamp in (("a", 5 * SECOND), ("b", 9 * SECOND)):
        (tmp_path / name).write_bytes(message(stamp, rmc(b"GP")))
    result = vextrace("report", "a", "b")
    assert result.returncode == 0 and b"</html>" in result.stdout
