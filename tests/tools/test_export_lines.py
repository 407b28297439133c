"""vextrace export: what a line or a trace leaves behind for the next one."""
import json
import struct

import pytest

from samples import STAMP, fix
from traces import GPS, SECOND

GAP = 60 * SECOND


def features(vextrace, tmp_path, trace):
    """Type, coordinates and number of fixes of each line of the GeoJSON document."""
    (tmp_path / "lines.trace").write_bytes(trace)
    result = vextrace("export", "--to", "geojson", "lines.trace")
    assert (result.returncode, result.stderr) == (0, b"")
    return [(feature["geometry"]["type"], feature["geometry"]["coordinates"],
             feature["properties"]["fixes"])
            for feature in json.loads(result.stdout)["features"]]


def equator(stamp, longitude):
    """A fix at whole degrees, without an altitude."""
    east = b"%03d00.000,%s" % (abs(longitude), b"W" if longitude < 0 else b"E")
    return fix(stamp, b"0000.000,N", east, altitude=b"")


def drive(begin, count):
    """A fix each second, there and back between two positions whose numbers are long."""
    ends = [fix(0, b"4807.0381,N", b"01131.0001,E")[14:], fix(0, b"4807.0387,N", b"01131.0007,E")[14:]]
    return b"".join(struct.pack(">HHHQ", 12 + len(ends[i % 2]), GPS, 0, begin + i * SECOND) + ends[i % 2]
                    for i in range(count))


def test_a_line_behind_one_too_long_to_be_kept_is_whole(vextrace, tmp_path):
    # Some 4.5 MiB of coordinates each; no more than 4 MiB are kept.
    count = 120_000
    second = STAMP + count * SECOND + GAP
    third = second + count * SECOND + GAP
    trace = drive(STAMP, count) + drive(second, count) + drive(third, 2)
    first, behind, short = features(vextrace, tmp_path, trace)
    for kind, (line,), fixes in (first, behind):
        assert (kind, len(line), fixes) == ("MultiLineString", count, count)
    assert short == ("LineString", first[1][0][:2], 2)
    assert behind[1] == first[1]


def test_a_line_behind_one_that_was_cut_may_begin_on_the_antimeridian(vextrace, tmp_path):
    later = STAMP + GAP
    trace = (equator(STAMP, 179) + equator(STAMP + SECOND, -179) +
             equator(later, 180) + equator(later + SECOND, -179))
    assert features(vextrace, tmp_path, trace) == [
        ("MultiLineString", [[[179, 0], [180, 0]], [[-180, 0], [-179, 0]]], 2),
        ("LineString", [[-180, 0], [-179, 0]], 2)]


@pytest.mark.parametrize("to, mark", [("gpx", b"<trkpt "), ("geojson", b'"fixes":1'), ("kml", b"<when>"),
                                      ("csv", b"1994-03-23T12:35:19Z"), ("jsonl", b"\n")])
def test_a_fix_of_another_trace_is_no_repetition(vextrace, tmp_path, to, mark):
    (tmp_path / "a").write_bytes(fix(STAMP))
    result = vextrace("export", "--to", to, "a", "a")
    assert (result.returncode, result.stderr, result.stdout.count(mark)) == (0, b"", 2)
