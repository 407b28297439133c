"""vextrace export: every format, what is left out, and what becomes of the output."""
import csv
import decimal
import io
import itertools
import json
import os
import re
import signal
import struct
import subprocess
import sys
import time
import xml.etree.ElementTree as ElementTree

import pytest

from conftest import PROJECT
from model import reading, recording
from traces import CAN, GPS, SECOND, message, other, sentence, stored, utc

FORMATS = ["gpx", "geojson", "kml", "csv", "jsonl", "nmea"]
DRAWN = ["gpx", "geojson", "kml"]
TABLES = ["csv", "jsonl"]

NOON = utc("1994-03-23T12:00:00")


# --- Traces


def checked(body):
    """A sentence with its checksum."""
    return sentence(body if isinstance(body, bytes) else body.encode())


def rmc(position="4807.038,N,01131.000,E", status="A", motion="022.4,084.4", talker="GN"):
    return checked(f"{talker}RMC,120000,{status},{position},{motion},230394,,,A")


def gga(position="4807.038,N,01131.000,E", quality="1", rest="08,0.9,545.4,M,46.9,M,,"):
    return checked(f"GNGGA,120000,{position},{quality},{rest}")


def gsa(mode):
    return checked(f"GNGSA,A,{mode},01,02,03,,,,,,,,,,1.7,0.9,1.4")


def wrong(right):
    """The sentence with another checksum."""
    star = right.index(b"*")
    return right[:star] + b"*%02X\r\n" % (int(right[star + 1:star + 3], 16) ^ 0x01)


def at(longitude):
    """A position by its longitude, in degrees."""
    degrees = abs(longitude)
    return "0000.000,N,%03d%07.4f,%s" % (int(degrees), degrees % 1 * 60, "W" if longitude < 0 else "E")


SMALL = [
    message(NOON, rmc(), gga(), gsa(3), checked("GPGSV,1,1,00")),
    message(NOON, checked("GPGSV,2,1,00")),
    message(NOON + SECOND // 2, rmc("3854.51,S,07726.45,W", motion=",")),
    other(CAN, 0, b"\x00\xff"),
    message(NOON + 2 * SECOND, wrong(rmc("4807.039,N,01131.001,E")), wrong(gga())),
    message(NOON + 3 * SECOND, rmc(",,,", "V", ","), gga(",,,", "0", "00,99.99,,,,,,")),
    message(NOON + 7 * SECOND, gga("4807.040,N,01131.002,E", "2", "11,,,M,,,,")),
    message(NOON + 8 * SECOND, checked("PVEXT,1")),
]
SMALL_LEFT_OUT = {
    "drawn": "1 fix with a wrong checksum, 1 fix that the receiver does not call valid, "
             "1 epoch without RMC and GGA, 1 message of other types",
    "tables": "1 fix with a wrong checksum, 1 epoch without RMC and GGA, 1 message of other types",
    "nmea": "1 message of other types",
}

SMALL_GPX = """\
<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="vextrace" xmlns="http://www.topografix.com/GPX/1/1" \
xmlns:tpx="http://www.garmin.com/xmlschemas/TrackPointExtension/v2">
<trk>
<name>NAME</name>
<trkseg>
<trkpt lat="48.1173" lon="11.516666666667"><ele>545.4</ele><time>1994-03-23T12:00:00Z</time>\
<fix>3d</fix><sat>8</sat><hdop>0.9</hdop><extensions><tpx:TrackPointExtension>\
<tpx:speed>11.524</tpx:speed><tpx:course>84.4</tpx:course></tpx:TrackPointExtension></extensions>\
</trkpt>
<trkpt lat="-38.9085" lon="-77.440833333333"><time>1994-03-23T12:00:00.5Z</time></trkpt>
</trkseg>
<trkseg>
<trkpt lat="48.117333333333" lon="11.5167"><time>1994-03-23T12:00:07Z</time><fix>dgps</fix>\
<sat>11</sat></trkpt>
</trkseg>
</trk>
</gpx>
"""

SMALL_GEOJSON = """\
{"type":"FeatureCollection","features":[
{"type":"Feature","geometry":{"type":"LineString","coordinates":[[11.516666666666667,48.11729999999999,545.4],\
[-77.44083333333333,-38.908500000000004]]},"properties":{"trace":"NAME","first_utc":"1994-03-23T12:00:00Z",\
"last_utc":"1994-03-23T12:00:00.5Z","fixes":2}},
{"type":"Feature","geometry":{"type":"Point","coordinates":[11.516699999999998,48.117333333333335]},\
"properties":{"trace":"NAME","first_utc":"1994-03-23T12:00:07Z","last_utc":"1994-03-23T12:00:07Z","fixes":1}}
]}
"""

SMALL_KML = """\
<?xml version="1.0" encoding="UTF-8"?>
<kml xmlns="http://www.opengis.net/kml/2.2" xmlns:gx="http://www.google.com/kml/ext/2.2">
<Document>
<Schema id="fix">
<gx:SimpleArrayField name="speed" type="double"><displayName>Speed (km/h)</displayName>\
</gx:SimpleArrayField>
</Schema>
<Folder><name>NAME</name>
<Placemark><name>NAME</name><gx:MultiTrack>
<gx:Track>
<when>1994-03-23T12:00:00Z</when>
<when>1994-03-23T12:00:00.5Z</when>
<gx:coord>11.516666666666667 48.11729999999999 545.4</gx:coord>
<gx:coord>-77.44083333333333 -38.908500000000004</gx:coord>
<gx:angles>84.4 0 0</gx:angles>
<gx:angles></gx:angles>
<ExtendedData><SchemaData schemaUrl="#fix"><gx:SimpleArrayData name="speed">
<gx:value>41.4848</gx:value>
<gx:value></gx:value>
</gx:SimpleArrayData></SchemaData></ExtendedData>
</gx:Track>
</gx:MultiTrack></Placemark>
<Placemark><name>NAME</name><gx:MultiTrack>
<gx:Track>
<when>1994-03-23T12:00:07Z</when>
<gx:coord>11.516699999999998 48.117333333333335</gx:coord>
</gx:Track>
</gx:MultiTrack></Placemark>
</Folder>
</Document>
</kml>
"""

SMALL_CSV = """\
trace,message,time_utc,time_ns,valid,latitude_deg,longitude_deg,altitude_m,speed_kmh,course_deg,satellites,\
quality,hdop,checksum\r
NAME,1,1994-03-23T12:00:00Z,764424000000000000,true,48.11729999999999,11.516666666666667,545.4,41.4848,84.4,8,1,0.9,\
right\r
NAME,3,1994-03-23T12:00:00.5Z,764424000500000000,true,-38.908500000000004,-77.44083333333333,,,,,,,right\r
NAME,6,1994-03-23T12:00:03Z,764424003000000000,false,,,,,,0,0,99.99,right\r
NAME,7,1994-03-23T12:00:07Z,764424007000000000,true,48.117333333333335,11.516699999999998,,,,11,2,,right\r
"""

SMALL_JSONL = """\
{"trace":"NAME","message":1,"time_utc":"1994-03-23T12:00:00Z","time_ns":764424000000000000,"valid":true,\
"latitude_deg":48.11729999999999,"longitude_deg":11.516666666666667,"altitude_m":545.4,"speed_kmh":41.4848,\
"course_deg":84.4,"satellites":8,"quality":1,"hdop":0.9,"checksum":"right"}
{"trace":"NAME","message":3,"time_utc":"1994-03-23T12:00:00.5Z","time_ns":764424000500000000,"valid":true,\
"latitude_deg":-38.908500000000004,"longitude_deg":-77.44083333333333,"altitude_m":null,"speed_kmh":null,\
"course_deg":null,"satellites":null,"quality":null,"hdop":null,"checksum":"right"}
{"trace":"NAME","message":6,"time_utc":"1994-03-23T12:00:03Z","time_ns":764424003000000000,"valid":false,\
"latitude_deg":null,"longitude_deg":null,"altitude_m":null,"speed_kmh":null,\
"course_deg":null,"satellites":0,"quality":0,"hdop":99.99,"checksum":"right"}
{"trace":"NAME","message":7,"time_utc":"1994-03-23T12:00:07Z","time_ns":764424007000000000,"valid":true,\
"latitude_deg":48.117333333333335,"longitude_deg":11.516699999999998,"altitude_m":null,"speed_kmh":null,\
"course_deg":null,"satellites":11,"quality":2,"hdop":null,"checksum":"right"}
"""

# Sentences with a right checksum as they were sent.
SMALL_NMEA = b"".join([
    gga(), gsa(3), checked("GPGSV,1,1,00"), rmc(), checked("GPGSV,2,1,00"),
    rmc("3854.51,S,07726.45,W", motion=","),
    stored(wrong(gga())), stored(wrong(rmc("4807.039,N,01131.001,E"))),
    gga(",,,", "0", "00,99.99,,,,,,"), rmc(",,,", "V", ","),
    gga("4807.040,N,01131.002,E", "2", "11,,,M,,,,"), checked("PVEXT,1")]).decode()

# NAME stands for the name of the trace.
WHOLE = {"gpx": SMALL_GPX, "geojson": SMALL_GEOJSON, "kml": SMALL_KML, "csv": SMALL_CSV,
         "jsonl": SMALL_JSONL, "nmea": SMALL_NMEA}


def whole(to, name):
    """The document of the small trace, given its name."""
    return WHOLE[to].replace("NAME", name)


@pytest.fixture
def trace(tmp_path):
    """Writes a trace of these messages; gives its name."""
    names = (f"{number}.trace" for number in itertools.count())

    def write(*messages):
        name = next(names)
        (tmp_path / name).write_bytes(b"".join(messages))
        return name

    return write


@pytest.fixture
def export(vextrace):
    """Exports traces; gives the document, and requires that all went well."""

    def run(to, *arguments, **options):
        result = vextrace("export", "--to", to, *arguments, **options)
        assert result.returncode == 0, result.stderr
        return result.stdout

    return run


# --- The whole text of each format


@pytest.mark.parametrize("to", FORMATS)
def test_writes_the_whole_document(vextrace, trace, to):
    result = vextrace("export", "--to", to, trace(*SMALL))
    kind = "drawn" if to in DRAWN else "tables" if to in TABLES else "nmea"
    assert result.stdout.decode() == whole(to, "0.trace")
    assert result.stderr.decode() == f"vextrace: left out: {SMALL_LEFT_OUT[kind]}\n"
    assert result.returncode == 0


@pytest.mark.parametrize("to", FORMATS)
def test_writes_the_same_to_a_file_and_from_standard_input(vextrace, tmp_path, to):
    result = vextrace("export", "--to", to, "-o", "out", "-", input=b"".join(SMALL))
    assert (result.returncode, result.stdout) == (0, b"")
    assert (tmp_path / "out").read_bytes().decode() == whole(to, "-")
    assert os.listdir(tmp_path) == ["out"]


@pytest.mark.parametrize("to", FORMATS)
def test_an_empty_trace_is_an_empty_document(vextrace, trace, to):
    result = vextrace("export", "--to", to, trace())
    assert (result.returncode, result.stderr) == (0, b"")
    assert document_is_valid(to, result.stdout)
    assert fixes_in(to, result.stdout) == 0


def fixes_in(to, text):
    """How many fixes a document holds; of NMEA the sentences."""
    if to == "geojson":
        return sum(feature["properties"]["fixes"] for feature in json.loads(text)["features"])
    if to == "csv":
        return len(text.splitlines()) - 1
    return text.count({"gpx": b"<trkpt ", "kml": b"<when>", "jsonl": b"\n", "nmea": b"\n"}[to])


# --- The names of traces


NAMES = ["a, \"b\".trace", "50 % <&'>.trace", "späce \\.trace", "\nline", b"\xff.trace"]
SHOWN = ["a, \"b\".trace", "50 % <&'>.trace", "späce \\\\.trace", "\\x0aline", "\\xff.trace"]


@pytest.fixture
def named(tmp_path):
    """A trace of each of these names, in bytes, with two fixes."""
    names = [os.fsencode(name) for name in NAMES]
    for number, name in enumerate(names):
        with open(os.path.join(os.fsencode(tmp_path), name), "wb") as file:
            file.write(other(CAN, NOON, b"") * number + message(NOON, rmc()) + message(NOON + SECOND, rmc()))
    return names


def test_tables_name_the_trace_and_the_message(vextrace, tmp_path, named):
    wanted = [(name if isinstance(name, str) else "\\xff.trace", number + count)
              for number, name in enumerate(NAMES) for count in (1, 2)]
    text = vextrace("export", "--to", "csv", *named).stdout.decode()
    rows = csv.DictReader(io.StringIO(text, newline=""))
    assert [(row["trace"], int(row["message"])) for row in rows] == wanted
    lines = vextrace("export", "--to", "jsonl", *named).stdout.splitlines()
    assert [(row["trace"], row["message"]) for row in map(json.loads, lines)] == wanted


def test_drawings_name_the_traces(vextrace, named):
    text = vextrace("export", "--to", "gpx", *named).stdout
    check_gpx(text)
    gpx = "{http://www.topografix.com/GPX/1/1}"
    assert [name.text for name in ElementTree.fromstring(text).iter(gpx + "name")] == SHOWN
    text = vextrace("export", "--to", "kml", *named).stdout
    check_kml(text)
    assert [folder[0].text for folder in ElementTree.fromstring(text).iter(KML + "Folder")] == SHOWN
    features = json.loads(vextrace("export", "--to", "geojson", *named).stdout)["features"]
    assert [feature["properties"]["trace"] for feature in features] == NAMES[:-1] + ["\\xff.trace"]


def test_a_trace_without_a_fix_has_no_track(vextrace, trace):
    names = [trace(), trace(*seconds(0)), trace(message(NOON, checked("PVEXT,1")))]
    text = vextrace("export", "--to", "gpx", *names).stdout
    assert (text.count(b"<trk>"), text.count(b"<name>1.trace</name>")) == (1, 1)
    assert vextrace("export", "--to", "kml", *names).stdout.count(b"<Folder>") == 1


# --- Documents are valid


def document_is_valid(to, text):
    check = {"gpx": check_gpx, "geojson": check_geojson, "kml": check_kml, "csv": check_csv,
             "jsonl": check_jsonl}.get(to)
    if check:
        check(text)
    return True


def check_gpx(text):
    result = subprocess.run(["xmllint", "--noout", "--nonet", "--schema",
                             PROJECT / "tests" / "tools" / "gpx11.xsd", "-"],
                            input=text, capture_output=True, check=False)
    assert result.returncode == 0, result.stderr[:500]


def is_position(position):
    return (len(position) in (2, 3) and all(isinstance(number, (int, float)) for number in position)
            and -180 <= position[0] <= 180 and -90 <= position[1] <= 90)


def lines_of(geometry):
    coordinates = geometry["coordinates"]
    return {"Point": lambda: [], "LineString": lambda: [coordinates],
            "MultiLineString": lambda: coordinates}[geometry["type"]]()


def check_geojson(text):
    collection = json.loads(text)
    assert set(collection) == {"type", "features"} and collection["type"] == "FeatureCollection"
    for feature in collection["features"]:
        assert set(feature) == {"type", "geometry", "properties"} and feature["type"] == "Feature"
        geometry = feature["geometry"]
        if geometry["type"] == "Point":
            assert is_position(geometry["coordinates"])
        for line in lines_of(geometry):
            assert len(line) >= 2 and all(map(is_position, line))
            steps = zip(line, line[1:])
            assert all(abs(first[0] - second[0]) <= 180 for first, second in steps)


KML = "{http://www.opengis.net/kml/2.2}"
GX = "{http://www.google.com/kml/ext/2.2}"


def check_kml(text):
    root = ElementTree.fromstring(text)
    assert root.tag == KML + "kml"
    (document,) = root
    assert document.tag == KML + "Document" and document[0].tag == KML + "Schema"
    for folder in document[1:]:
        assert folder.tag == KML + "Folder" and folder[0].tag == KML + "name" and len(folder) > 1
        for placemark in folder[1:]:
            check_placemark(placemark, folder[0].text)


def check_placemark(placemark, name):
    assert placemark.tag == KML + "Placemark"
    title, multi = placemark
    assert (title.tag, title.text) == (KML + "name", name)
    assert len(multi) > 0
    if multi.tag == KML + "MultiGeometry":
        check_kml_places(multi)
        return
    assert multi.tag == GX + "MultiTrack"
    for track in multi:
        check_kml_track(track)


def check_kml_places(geometry):
    """Of a line without times."""
    for part in geometry:
        (coordinates,) = part
        assert coordinates.tag == KML + "coordinates"
        places = [[float(number) for number in place.split(",")] for place in coordinates.text.split()]
        assert all(map(is_position, places))
        assert part.tag == KML + ("Point" if len(places) == 1 else "LineString")


def check_kml_track(track):
    assert track.tag == GX + "Track"
    runs = [(tag, len(list(run))) for tag, run in itertools.groupby(track, lambda child: child.tag)]
    count = runs[0][1]
    order = [KML + "when", GX + "coord", GX + "angles", KML + "ExtendedData"]
    assert [tag for tag, _ in runs] == [tag for tag in order if tag in dict(runs)]
    assert all(length == count for tag, length in runs if tag != KML + "ExtendedData")
    values = track.findall(f".//{GX}value")
    assert len(values) in (0, count)
    for when in track.findall(KML + "when"):
        assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d{1,9})?Z", when.text)
    for place in track.findall(GX + "coord"):
        numbers = [float(number) for number in place.text.split(" ")]
        assert is_position(numbers)


def check_csv(text):
    rows = list(csv.reader(io.StringIO(text.decode("ascii"), newline="")))
    assert all(len(row) == len(rows[0]) for row in rows)
    assert text.endswith(b"\r\n") and text.count(b"\r\n") == len(rows) == text.count(b"\n")


def check_jsonl(text):
    keys = [tuple(json.loads(line)) for line in text.splitlines()]
    assert len(set(keys)) <= 1


# --- Every log, compared with a plain reading of its sentences


def sentences_of(log):
    """The lines of a log that begin like sentences and fit a message."""
    lines = log.read_bytes().split(b"\n")
    found = [line[line.find(b"$"):] + b"\n" for line in lines if b"$" in line]
    return [line for line in found if b"\0" not in line and 6 < len(line) < 1000]


def messages_of(log):
    """The sentences in messages: a new one begins with each code that is held."""
    groups = []
    for line in sentences_of(log):
        code = stored(line)[:6]
        if not groups or code in groups[-1]:
            groups.append({})
        groups[-1][code] = line
    return [(NOON + number * SECOND // 4, list(group.values()))
            for number, group in enumerate(groups)]


def bits(number):
    return None if number is None else struct.pack(">d", number)


def check_row(row, expected):
    """A row as texts, None where a value is missing."""
    for key in ("latitude_deg", "longitude_deg", "altitude_m", "speed_kmh", "course_deg", "hdop"):
        number = None if row[key] is None else float(row[key])
        assert bits(number) == bits(expected[key]), (key, expected)
    for key in ("satellites", "quality"):
        assert (None if row[key] is None else int(row[key])) == expected[key], (key, expected)
    assert row["checksum"] == expected["checksum"], expected
    assert row["valid"] == ("true" if expected["valid"] else "false")
    stamp = expected["stamp"]
    is_time = stamp >= reading.FIRST_DATED
    assert row["time_ns"] == (str(stamp) if is_time else None)
    assert row["time_utc"] == (utc_text(stamp) if is_time else None)


def check_tables(export, name, trace):
    """Both tables of a trace are those of the model."""
    for arguments in ([], ["--unchecked"]):
        expected = reading.table(trace, unchecked=bool(arguments))
        text = export("csv", name, *arguments)
        check_csv(text)
        rows = [{key: value or None for key, value in row.items()}
                for row in csv.DictReader(io.StringIO(text.decode(), newline=""))]
        lines = [json.loads(line, parse_float=str, parse_int=str)
                 for line in export("jsonl", name, *arguments).splitlines()]
        assert len(rows) == len(lines) == len(expected)
        for row, line, expectation in zip(rows, lines, expected):
            check_row(row, expectation)
            line["valid"] = "true" if line["valid"] else "false"
            check_row(line, expectation)


def utc_text(stamp):
    whole = time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(stamp // SECOND))
    fraction = f".{stamp % SECOND:09}".rstrip("0") if stamp % SECOND else ""
    return whole + fraction + "Z"


@pytest.fixture
def grouped(log, trace, tmp_path):
    """A log as a trace of dated messages, and its bytes."""
    name = trace(*(message(stamp, *sentences) for stamp, sentences in messages_of(log)))
    return name, (tmp_path / name).read_bytes()


def test_tables_hold_the_numbers_of_the_sentences(grouped, export):
    check_tables(export, *grouped)


def test_drawings_hold_the_valid_fixes(grouped, export):
    name, content = grouped
    good = [row for row in reading.table(content) if row["valid"]]
    for to in DRAWN:
        text = export(to, name)
        assert document_is_valid(to, text)
        assert fixes_in(to, text) == len(good)
    places = re.findall(rb'<trkpt lat="([^"]*)" lon="([^"]*)">', export("gpx", name))
    assert [place for pair in places for place in map(float, pair)] == pytest.approx(
        [row[key] for row in good for key in ("latitude_deg", "longitude_deg")], rel=0, abs=1e-12)


def test_nmea_gives_back_all_sentences(grouped, log, export):
    name, _ = grouped
    lines = export("nmea", name).splitlines(keepends=True)
    assert sorted(map(stored, lines)) == sorted(map(stored, sentences_of(log)))


def test_a_log_that_was_recorded_is_exported_as_the_model_says(vextrace, log, tmp_path, export):
    assert vextrace("record", "-o", "trace", log).returncode == 0
    content = (tmp_path / "trace").read_bytes()
    assert export("nmea", "trace") == reading.nmea(content)
    check_tables(export, "trace", content)


# --- What is in a document


def point_of(export, trace, *sentences, stamp=NOON):
    """The track point that GPX has for a message; empty where it has none."""
    text = export("gpx", trace(message(stamp, *sentences)), "--unchecked")
    check_gpx(text)
    return b"".join(re.findall(rb"<trkpt.*?</trkpt>", text)).decode()


def place_of(point):
    return re.search(r'lat="([^"]*)" lon="([^"]*)"', point).groups()


@pytest.mark.parametrize("position, place", [
    ("9000.000,N,18000.000,E", ("90", "-180")),
    ("9000.000,S,18000.000,W", ("-90", "-180")),
    ("0000.000,N,17959.99999999999,E", ("0", "-180")),
    ("0000.000,S,00000.000,W", ("0", "0")),
    ("0000.0001,N,00000.0000001,E", ("0.000001666667", "0.000000001667")),
    ("0000.00000000001,S,17959.99999999999,W", ("0", "-180")),
])
def test_positions_at_the_edges(export, trace, position, place):
    assert place_of(point_of(export, trace, rmc(position))) == place


@pytest.mark.parametrize("status, position", [
    ("V", "4807.038,N,01131.000,E"), ("", "4807.038,N,01131.000,E"), ("A", "9000.001,N,01131.000,E"),
    ("A", "4807.038,N,18000.001,W"), ("A", "nan,N,01131.000,E"), ("A", "4807.038,N,inf,E"),
    ("A", "4807.038,N,1e999,E"), ("A", ",N,01131.000,E"), ("A", "4807.038,N,,E"),
    ("A", "4807.038,,01131.000,E"), ("A", "4807.038,N,4,02.3"),
])
def test_no_point_without_a_valid_position(export, trace, status, position):
    assert point_of(export, trace, rmc(position, status)) == ""


@pytest.mark.parametrize("altitude", ["", "nan", "inf", "-1e999", "12m"])
def test_no_elevation_of_what_is_no_altitude(export, trace, altitude):
    assert "<ele>" not in point_of(export, trace, rmc(), gga(rest=f"08,0.9,{altitude},M,,,,"))


def test_an_elevation_below_the_sea(export, trace):
    assert "<ele>-3.25</ele>" in point_of(export, trace, rmc(), gga(rest="08,0.9,-3.25,M,,,,"))


@pytest.mark.parametrize("quality, mode, kind", [
    ("1", None, None), ("1", 1, None), ("1", 2, "2d"), ("1", 3, "3d"), ("2", 3, "dgps"),
    ("3", 3, "pps"), ("4", 3, "dgps"), ("5", None, "dgps"), ("6", 3, "3d"), ("8", None, None),
])
def test_the_type_of_the_fix(export, trace, quality, mode, kind):
    sentences = [rmc(), gga(quality=quality)] + ([gsa(mode)] if mode else [])
    found = re.search(r"<fix>(.*)</fix>", point_of(export, trace, *sentences))
    assert (found and found[1]) == kind


def test_the_type_of_the_fix_needs_a_right_checksum(export, trace):
    assert "<fix>" not in point_of(export, trace, rmc(), gga(), wrong(gsa(3)))


@pytest.mark.parametrize("motion, elements", [
    (",", ""),
    ("0.0,", "<tpx:speed>0</tpx:speed>"),
    ("1.234,", "<tpx:speed>0.635</tpx:speed>"),
    (",360.0", "<tpx:course>0</tpx:course>"),
    ("100,359.99", "<tpx:speed>51.444</tpx:speed><tpx:course>359.99</tpx:course>"),
])
def test_speed_in_metres_per_second_and_course(export, trace, motion, elements):
    point = point_of(export, trace, rmc(motion=motion))
    assert "".join(re.findall(r"<tpx:(?:speed|course)>.*</tpx:(?:speed|course)>", point)) == elements
    assert ("<extensions>" in point) == bool(elements)


@pytest.mark.parametrize("stamp, text", [
    (reading.FIRST_DATED, "1971-01-01T00:00:00Z"), (2**64 - 1, "2554-07-21T23:34:33.709551615Z"),
    (951782400 * SECOND, "2000-02-29T00:00:00Z"), (4107542399 * SECOND + 1000, "2100-02-28T23:59:59.000001Z"),
])
def test_times_of_stamps(export, trace, stamp, text):
    assert f"<time>{text}</time>" in point_of(export, trace, rmc(), stamp=stamp)
    row = export("csv", trace(message(stamp, rmc()))).decode().splitlines()[1]
    assert row.startswith(f"1.trace,1,{text},{stamp},")


@pytest.mark.parametrize("stamp", [0, 1, 43_200 * SECOND, reading.FIRST_DATED - 1])
def test_a_stamp_without_a_date_is_no_time(export, trace, stamp):
    name = trace(message(stamp, rmc()))
    assert "<time>" not in point_of(export, trace, rmc(), stamp=stamp)
    row = export("csv", name).decode().splitlines()[1]
    assert row.startswith(f"{name},1,,,true,48.11729999999999,")
    row = json.loads(export("jsonl", name))
    assert (row["time_utc"], row["time_ns"]) == (None, None)
    (feature,) = json.loads(export("geojson", name))["features"]
    assert feature["properties"] == {"trace": name, "first_utc": None, "last_utc": None, "fixes": 1}
    assert b"<when>" not in export("kml", name)


def test_kml_draws_lines_without_a_date_without_times(export, trace):
    undated = [message(offset * SECOND, rmc(), gga()) for offset in (1, 2)]
    alone = message(20 * SECOND, rmc("3854.51,S,07726.45,W"))
    name = trace(*undated, alone, message(NOON, rmc()))
    text = export("kml", name)
    check_kml(text)
    placemark = f"<Placemark><name>{name}</name>"
    place = "11.516666666666667,48.11729999999999,545.4\n"
    assert (placemark + "<MultiGeometry>\n<LineString><coordinates>\n" + 2 * place +
            "</coordinates></LineString>\n</MultiGeometry></Placemark>\n"
            + placemark + "<MultiGeometry>\n<Point><coordinates>\n"
            "-77.44083333333333,-38.908500000000004\n"
            "</coordinates></Point>\n</MultiGeometry></Placemark>\n"
            + placemark + "<gx:MultiTrack>\n<gx:Track>\n<when>1994") in text.decode()


@pytest.mark.parametrize("to", ["gpx", "geojson"])
def test_no_line_leads_from_a_time_of_day_to_a_date(export, trace, to):
    name = trace(message(reading.FIRST_DATED - 1, rmc()), message(reading.FIRST_DATED, rmc()))
    assert counts_of(to, export(to, name)) == [1, 1]


def test_a_gga_without_rmc_is_a_fix(export, trace):
    name = trace(message(NOON, gga()))
    assert [fixes_in(to, export(to, name)) for to in DRAWN + TABLES] == [1, 1, 1, 1, 1]


@pytest.mark.parametrize("position, place", [
    ("0000.000,S,00000.000,W", (-0.0, -0.0)),
    ("0000.0001,N,00000.0000001,E", (0.0001 / 60, 0.0000001 / 60)),
    ("9000.000,S,18000.000,E", (-90, 180)),
    ("0000.0006,N,00000.006,W", (0.0006 / 60, -0.006 / 60)),
])
def test_tables_hold_the_shortest_numbers_without_exponent(export, trace, position, place):
    name = trace(message(NOON, rmc(position)))
    texts = [format(decimal.Decimal(repr(number)), "f") for number in place]
    assert export("csv", name).decode().splitlines()[1].split(",")[5:7] == texts
    row = json.loads(export("jsonl", name), parse_float=str, parse_int=str)
    assert [row["latitude_deg"], row["longitude_deg"]] == texts


# --- Checksums


def columns(export, name, key, *arguments):
    rows = csv.DictReader(io.StringIO(export("csv", name, *arguments).decode(), newline=""))
    return [row[key] for row in rows]


def test_fixes_of_wrong_sentences_alone_are_left_out_unless_unchecked(vextrace, export, trace):
    name = trace(message(NOON, wrong(rmc()), gga()), message(NOON + SECOND, rmc(), wrong(gga())),
                 message(NOON + 2 * SECOND, rmc(), gga()), message(NOON + 3 * SECOND, wrong(gga())))
    for to in DRAWN + TABLES:
        result = vextrace("export", "--to", to, name)
        assert fixes_in(to, result.stdout) == 3
        assert result.stderr == b"vextrace: left out: 1 fix with a wrong checksum\n"
        assert result.returncode == 0
        result = vextrace("export", "--to", to, name, "--unchecked")
        assert (fixes_in(to, result.stdout), result.stderr) == (4, b"")
    assert columns(export, name, "checksum") == ["right", "right", "right"]
    assert columns(export, name, "speed_kmh") == ["", "41.4848", "41.4848"]
    assert columns(export, name, "altitude_m") == ["545.4", "", "545.4"]
    assert columns(export, name, "checksum", "--unchecked") == ["wrong", "wrong", "right", "wrong"]
    assert columns(export, name, "speed_kmh", "--unchecked") == ["41.4848"] * 3 + [""]
    assert columns(export, name, "altitude_m", "--unchecked") == ["545.4"] * 4


def test_nmea_keeps_sentences_with_a_wrong_checksum(export, trace):
    assert export("nmea", trace(message(NOON, wrong(rmc())))) == stored(wrong(rmc()))


@pytest.mark.parametrize("talker", ["GP", "GN", "GL", "GA", "GB", "GI"])
def test_the_checksum_is_that_of_the_sentence_as_received(export, trace, talker):
    assert columns(export, trace(message(NOON, rmc(talker=talker))), "checksum") == ["right"]


def test_a_missing_checksum_is_not_a_wrong_one(export, trace):
    bare = rmc().split(b"*")[0] + b"\r\n"
    name = trace(message(NOON, bare, gga()), message(NOON + 1, bare), message(NOON + 2, rmc(), gga()))
    assert columns(export, name, "checksum") == ["none", "none", "right"]
    assert fixes_in("gpx", export("gpx", name)) == 3


# --- Lines


def counts_of(to, text):
    """How many fixes each line of a drawing holds."""
    if to == "gpx":
        return [part.count(b"<trkpt ") for part in text.split(b"<trkseg>")[1:]]
    if to == "kml":
        return [part.count(b"<when>") for part in text.split(b"<Placemark>")[1:]]
    return [feature["properties"]["fixes"] for feature in json.loads(text)["features"]]


def seconds(*offsets):
    return [message(NOON + int(offset * SECOND), rmc()) for offset in offsets]


@pytest.mark.parametrize("to", DRAWN)
def test_lines_end_at_gaps(export, trace, to):
    name = trace(*seconds(0, 5, 10.001, 11, 3, 8, 100))
    assert counts_of(to, export(to, name)) == [2, 2, 2, 1]
    assert counts_of(to, export(to, name, "--gap", "100")) == [7]
    assert counts_of(to, export(to, name, "--gap", "0.5")) == [1] * 7
    assert counts_of(to, export(to, name, "--gap", "5.001")) == [4, 2, 1]


@pytest.mark.parametrize("to", DRAWN)
def test_lines_end_with_their_trace(export, trace, to):
    names = [trace(*seconds(0, 1)), trace(), trace(*seconds(2, 3, 4))]
    assert counts_of(to, export(to, *names)) == [2, 3]


@pytest.mark.parametrize("to", DRAWN)
def test_what_is_left_out_makes_a_gap(export, trace, to):
    name = trace(*seconds(0, 1), message(NOON + 4 * SECOND, rmc(status="V")), *seconds(7))
    assert counts_of(to, export(to, name)) == [2, 1]


def test_gaps_are_numbers_of_seconds(vextrace, trace):
    for gap in ("0", "-1", "nan", "x", ""):
        result = vextrace("export", "--to", "gpx", "--gap", gap, trace(*SMALL))
        assert (result.returncode, result.stdout) == (2, b"")
        assert result.stderr.startswith(b"vextrace: ") and b"--gap" in result.stderr
    for gap in ("inf", "1e300"):
        assert vextrace("export", "--to", "gpx", "--gap", gap, trace(*SMALL)).returncode == 0


def geometry_of(export, trace, *longitudes):
    fixes = [message(NOON + number * SECOND, rmc(at(longitude)))
             for number, longitude in enumerate(longitudes)]
    text = export("geojson", trace(*fixes))
    check_geojson(text)
    (feature,) = json.loads(text)["features"]
    return feature["geometry"]["type"], feature["geometry"]["coordinates"]


@pytest.mark.parametrize("longitudes, lines", [
    ([179.5, -179.5], [[179.5, 180], [-180, -179.5]]),
    ([-179.5, 179.5], [[-179.5, -180], [180, 179.5]]),
    ([179, 179.5, -179.5, -179], [[179, 179.5, 180], [-180, -179.5, -179]]),
    ([179.5, 180, -179.5], [[179.5, 180], [-180, -179.5]]),
    ([179.5, -180, -179.5], [[179.5, 180], [-180, -179.5]]),
    ([-179.5, 180, 179.5], [[-179.5, -180], [180, 179.5]]),
    ([179.5, -179.5, 179.5], [[179.5, 180], [-180, -179.5, -180], [180, 179.5]]),
])
def test_geojson_cuts_lines_at_the_antimeridian(export, trace, longitudes, lines):
    kind, coordinates = geometry_of(export, trace, *longitudes)
    assert kind == "MultiLineString"
    assert [[position[0] for position in line] for line in coordinates] == lines


@pytest.mark.parametrize("longitudes, line", [
    ([180, -179.5], [-180, -179.5]),
    ([-180, 179.5], [180, 179.5]),
    ([179.5, -180], [179.5, 180]),
    ([179.5, -180, 179.5], [179.5, 180, 179.5]),
    ([180, -180], [180, 180]),
    ([90, -90], [90, -90]),
])
def test_geojson_does_not_cut_lines_that_only_touch_it(export, trace, longitudes, line):
    kind, coordinates = geometry_of(export, trace, *longitudes)
    assert kind == "LineString"
    assert [position[0] for position in coordinates] == line


def test_geojson_finds_the_place_where_a_line_crosses(export, trace):
    height = "08,0.9,%s,M,,,,"
    before = message(NOON, rmc("1000.000,N,17945.000,E"), gga(rest=height % "100"))
    behind = message(NOON + SECOND, rmc("1400.000,N,17915.000,W"), gga(rest=height % "200"))
    (feature,) = json.loads(export("geojson", trace(before, behind)))["features"]
    assert feature["geometry"]["coordinates"] == [
        [[179.75, 10, 100], [180, 11, 125]], [[-180, 11, 125], [-179.25, 14, 200]]]


def test_long_lines_stay_whole(export, trace):
    """Too long for GeoJSON to be kept, and for KML to be one track."""
    count = 150_000
    messages = [message(NOON + number * SECOND, rmc(f"4807.{number:06},N,01131.{number:06},E"))
                for number in range(count)]
    text = export("geojson", trace(*messages))
    assert len(text) > 4 * 2**20
    check_geojson(text)
    (feature,) = json.loads(text)["features"]
    assert feature["geometry"]["type"] == "MultiLineString"
    (line,) = feature["geometry"]["coordinates"]
    assert len(line) == feature["properties"]["fixes"] == count
    assert line[77_777] == [11 + (1131.077777 - 1100) / 60, 48 + (4807.077777 - 4800) / 60]
    count = 20_000
    text = export("kml", trace(*messages[:count]))
    check_kml(text)
    (placemark,) = ElementTree.fromstring(text).iter(KML + "Placemark")
    tracks = [[place.text for place in track.findall(GX + "coord")] for track in placemark[1]]
    assert len(tracks) > 4
    assert all(first[-1] == second[0] for first, second in zip(tracks, tracks[1:]))
    assert sum(map(len, tracks)) - len(tracks) + 1 == count
    assert all(len(track) > 1 for track in tracks)


# --- A time that is asked for


def test_a_time_can_be_asked_for(vextrace, trace):
    name = trace(*seconds(0, 1, 1.5, 2, 3))
    for to in FORMATS:
        result = vextrace("export", "--to", to, "--from", "1994-03-23T12:00:01Z",
                          "--until", "1994-03-23T12:00:02", name)
        assert fixes_in(to, result.stdout) == 3
        assert result.stderr == (
            b"vextrace: left out: 2 messages from before or after the time asked for\n")


def test_times_must_make_sense(vextrace, trace):
    name = trace(*seconds(0))
    for option, text in (("--from", "noon"), ("--until", "1994-02-30"), ("--from", "1994-03-23T25:00:00")):
        result = vextrace("export", "--to", "csv", option, text, name)
        assert result.returncode == 2
        assert result.stderr.decode() == (
            f"vextrace: {option}: {text} is no time such as 2026-11-21T12:35:19.5Z\n")
    result = vextrace("export", "--to", "csv", "--from", "1994-03-24", "--until", "1994-03-23", name)
    assert (result.returncode, result.stderr) == (2, b"vextrace: --from: is later than --until\n")


# --- Hostile texts


HOSTILE = ["<b>&amp;", "]]>", '"', "'", "\\", "-->", "\x01\x1b[2J", "\x7f", "\ufeff", "\u2028", ";=@",
           "{}", "%s%n"]


@pytest.mark.parametrize("to", FORMATS)
def test_hostile_texts_make_no_document_invalid(export, trace, to):
    texts = [text.encode() for text in HOSTILE] + [b"\xff\xfe", b"\xc0\x80", b"\xed\xa0\x80"]
    fixes = []
    for number, text in enumerate(texts):
        body = b"GPRMC,120000,A%s,4807.038,N,01131.000,E,%s,%s,230394,%s,%s,%s" % ((text,) * 6)
        more = b"GPGGA,120000%s,4807.038,N,01131.000,E,%s,%s,%s,%s,M%s,%s,M,," % ((text,) * 7)
        fixes.append(message(NOON + number * SECOND, checked(body), checked(more),
                             checked(b"GPGSA,A,%s,%s" % (text, text)), b"$" + text))
    text = export(to, trace(*fixes))
    assert document_is_valid(to, text)
    assert fixes_in(to, text) == len(texts) * (4 if to == "nmea" else 1)


@pytest.mark.parametrize("to", FORMATS)
def test_absurd_numbers_make_no_document_invalid(export, trace, to):
    digits = ["9" * 400, "0." + "0" * 400 + "1", "1" * 300, "0" * 400, "1." + "3" * 400, "." * 3]
    fixes = [message(NOON, checked(f"GPRMC,,A,4807.038,N,01131.000,E,{text},{text},,,,"),
                     checked(f"GPGGA,,4807.038,N,01131.000,E,{text},{text},{text},{text},M,,,,"))
             for text in digits]
    text = export(to, trace(*fixes))
    assert document_is_valid(to, text)
    assert fixes_in(to, text) == len(digits) * (2 if to == "nmea" else 1)
    assert not re.search(rb"inf|nan", text.replace(b"Infinite", b""))


# --- Damage


def test_what_is_good_goes_out_around_damage(vextrace, trace):
    good = seconds(0, 1, 2, 3)
    damaged = bytearray(b"".join(good))
    position = len(good[0])
    damaged[position:position + 2] = b"\x00\x00"
    for to in DRAWN + TABLES:
        result = vextrace("export", "--to", to, trace(damaged))
        assert result.returncode == 1
        assert fixes_in(to, result.stdout) == 3
        assert document_is_valid(to, result.stdout)
        assert re.fullmatch(rb"vextrace: \d+\.trace: damaged at byte %d, %d bytes passed over: [^\n]+\n"
                            % (position, len(good[1])), result.stderr)


def test_a_torn_message_at_the_end_is_damage(vextrace, trace, tmp_path):
    good = seconds(0, 1)
    name = trace(*good, good[0][:-1])
    result = vextrace("export", "--to", "csv", "-o", "out", name)
    assert result.returncode == 1
    assert result.stderr.startswith(b"vextrace: %s: damaged at byte %d, "
                                    % (name.encode(), 2 * len(good[0])))
    assert fixes_in("csv", (tmp_path / "out").read_bytes()) == 2


def test_what_is_no_trace_is_called_so_and_makes_no_document(vextrace, trace, tmp_path):
    name = trace(b"No trace at all, but a text of many words.\n" * 100)
    result = vextrace("export", "--to", "gpx", "-o", "out", name)
    assert result.returncode == 1
    assert result.stderr == b"vextrace: %s: no trace: 4300 bytes without any message\n" % name.encode()
    assert os.listdir(tmp_path) == [name]
    result = vextrace("export", "--to", "gpx", name)
    assert (result.returncode, result.stdout) == (1, b"")


def test_what_is_no_trace_hinders_no_other(vextrace, trace):
    result = vextrace("export", "--to", "csv", trace(b"Not a trace, but a text.\n"), trace(*seconds(0)))
    assert (result.returncode, fixes_in("csv", result.stdout)) == (1, 1)
    assert b": no trace: " in result.stderr


def test_every_prefix_gives_a_valid_document(vextrace, tmp_path):
    whole = b"".join(SMALL)
    ends = list(itertools.accumulate(map(len, SMALL)))
    for length in [*range(0, 20), *range(20, len(whole), 13), *ends]:
        for to in DRAWN + TABLES:
            result = vextrace("export", "--to", to, "-", input=whole[:length])
            assert result.returncode == (0 if length in [0, *ends] else 1)
            if length >= ends[0]:
                assert document_is_valid(to, result.stdout)


# --- The output


def test_an_existing_output_is_refused_unless_forced(vextrace, trace, tmp_path):
    name = trace(*SMALL)
    (tmp_path / "out").write_bytes(b"old")
    result = vextrace("export", "--to", "csv", "-o", "out", name)
    assert (result.returncode, result.stderr) == (2, b"vextrace: out: exists; --force replaces it\n")
    assert (tmp_path / "out").read_bytes() == b"old"
    assert vextrace("export", "--to", "csv", "-o", "out", "--force", name).returncode == 0
    assert (tmp_path / "out").read_bytes().decode() == whole("csv", name)


def test_no_arrangement_overwrites_an_input(vextrace, trace, tmp_path):
    first, name = trace(*seconds(0)), trace(*SMALL)
    content = (tmp_path / name).read_bytes()
    os.link(tmp_path / name, tmp_path / "hard")
    os.symlink(name, tmp_path / "soft")
    for output in (name, "hard", "soft", f"./{name}", tmp_path / name):
        result = vextrace("export", "--to", "csv", "--force", "-o", output, first, name)
        assert result.returncode == 2
        assert result.stderr == b"vextrace: %s: is an input, too\n" % os.fsencode(output)
    with open(tmp_path / name, "rb") as stdin:
        for output in ("/dev/stdin", "/proc/self/fd/0", name):
            result = vextrace("export", "--to", "csv", "--force", "-o", output, "-", stdin=stdin)
            assert (result.returncode, result.stderr.count(b"is an input, too\n")) == (2, 1)
    with open(tmp_path / name, "ab") as stdout:
        for output in ("-", "/dev/stdout"):
            result = vextrace("export", "--to", "csv", "-o", output, name, stdout=stdout,
                              stderr=subprocess.PIPE)
            assert result.returncode == 2
            assert result.stderr == b"vextrace: standard output: is an input, too\n"
    assert (tmp_path / name).read_bytes() == content


@pytest.mark.parametrize("to", FORMATS)
def test_a_full_device_is_an_error(vextrace, trace, full, to):
    name = trace(*SMALL)
    result = vextrace("export", "--to", to, "-o", full, name)
    assert result.returncode == 1
    assert result.stderr.decode() == f"vextrace: {full}: cannot be written: No space left on device\n"
    with open(full, "wb") as out:
        result = vextrace("export", "--to", to, name, stdout=out, stderr=subprocess.PIPE)
    assert result.returncode == 1
    assert result.stderr == b"vextrace: standard output: cannot be written: No space left on device\n"


def test_closed_standard_streams(vextrace, trace, tmp_path):
    name = trace(*SMALL)
    command = f'"{vextrace.program}" export --to csv'

    def status(text):
        return subprocess.run(["bash", "-c", text], cwd=tmp_path, stderr=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, check=False).returncode

    assert status(f"{command} {name} >&-") == 1
    assert status(f"{command} - <&-") in (1, 2)
    assert status(f"{command} -o closed <&- >&- 2>&- {name}") == 0
    assert (tmp_path / "closed").read_bytes().decode() == whole("csv", name)


def test_a_reader_that_goes_ends_the_export_quietly(vextrace, trace):
    reading, writing = os.pipe()
    os.close(reading)
    with os.fdopen(writing, "wb") as stdout:
        result = vextrace("export", "--to", "jsonl", trace(*SMALL), stdout=stdout,
                          stderr=subprocess.PIPE)
    assert (result.returncode, result.stderr) == (0, b"")


def test_outputs_that_cannot_be_written(vextrace, trace, tmp_path):
    name = trace(*SMALL)
    for output, reason in ((f"{name}/", "cannot be made: File exists"),
                           ("missing/out", "cannot be written: No such file or directory"),
                           (f"{name}/out", "cannot be written: Not a directory")):
        result = vextrace("export", "--to", "gpx", "-o", output, name)
        assert (result.returncode, result.stderr.decode()) == (2, f"vextrace: {output}: {reason}\n")
    assert os.listdir(tmp_path) == [name]


def test_inputs_that_cannot_be_read(vextrace, trace, tmp_path):
    name = trace(*SMALL)
    for wrong_name, reason in ((".", "is a directory"),
                               ("missing", "cannot be read: No such file or directory"),
                               (f"{name}/x", "cannot be read: Not a directory")):
        result = vextrace("export", "--to", "gpx", "-o", "out", name, wrong_name)
        assert (result.returncode, result.stderr.decode()) == (2, f"vextrace: {wrong_name}: {reason}\n")
    assert os.listdir(tmp_path) == [name]


def test_an_input_that_fails_to_read_is_damage(vextrace, trace):
    # The first page of a process' memory cannot be read.
    result = vextrace("export", "--to", "csv", "/proc/self/mem", trace(*seconds(0)))
    assert (result.returncode, fixes_in("csv", result.stdout)) == (1, 1)
    assert result.stderr.startswith(b"vextrace: /proc/self/mem: cannot be read on at byte 0: ")


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL])
def test_an_interrupted_export_leaves_nothing_under_its_name(vextrace, tmp_path, number):
    # At this place no signal does any harm yet.
    process = subprocess.Popen([vextrace.program, "export", "--to", "csv", "-o", "out", "-"],
                               cwd=tmp_path, stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
    process.stdin.write(b"".join(seconds(*range(3000))))
    process.stdin.flush()
    while not os.listdir(tmp_path):
        time.sleep(0.001)
    assert "out" not in os.listdir(tmp_path)
    process.send_signal(number)
    assert process.wait(10) == -number
    process.stdin.close()
    left = os.listdir(tmp_path)
    assert "out" not in left and (not left or number == signal.SIGKILL)


@pytest.mark.parametrize("name", [b"-", b"--to", b"[x]", b"[]", b"{}", b"%%", b"a b", b"a\nb",
                                  b"\xff\x1b[2J", b"\\", "\u00e4".encode(), b"n" * 255])
def test_file_names_of_any_bytes(vextrace, tmp_path, name):
    folder = os.fsencode(tmp_path)
    with open(folder + b"/" + name, "wb") as file:
        file.write(b"".join(SMALL))
    given = b"./-" if name == b"-" else name
    result = subprocess.run([vextrace.program, "export", "--to", "csv", "--", given],
                            cwd=tmp_path, capture_output=True, check=False)
    assert result.returncode == 0
    rows = csv.DictReader(io.StringIO(result.stdout.decode(), newline=""))
    try:
        shown = given.decode()
    except UnicodeDecodeError:
        shown = "\\xff\\x1b[2J"
    assert {row["trace"] for row in rows} == {shown}
    os.mkdir(folder + b"/out")
    result = subprocess.run([os.fsencode(vextrace.program), b"export", b"--to", b"csv",
                             b"--output=out/" + name, b"--", given],
                            cwd=tmp_path, capture_output=True, check=False)
    assert result.returncode == 0
    assert os.listdir(folder + b"/out") == [name]


def test_wrong_use(vextrace, trace):
    name = trace(*SMALL)
    for arguments, text in (([name], "--to: name a format, one of gpx,"), (["--to", "gpx"], "TRACE is required"),
                            (["--to", "gpz", name], "--to: gpz not in {gpx,"),
                            (["--to", "gpx", "--nonsense", name], "--nonsense")):
        result = vextrace("export", *arguments)
        assert (result.returncode, result.stdout) == (2, b"")
        assert result.stderr.startswith(b"vextrace: ") and result.stderr.count(b"\n") == 1
        assert text in result.stderr.decode()


def test_help_shows_an_example_first(vextrace):
    result = vextrace("export", "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    text = result.stdout.decode()
    assert text.index("Example: vextrace export -o drive.gpx ") < text.index("--gap")


# --- Memory


# Until it runs another program, a child has the memory of its parent, so the parent must be small.
PEAK = """
import os, sys
process = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ)
_, status, usage = os.wait4(process, 0)
print(usage.ru_maxrss * 1024, file=sys.stderr)
sys.exit(os.waitstatus_to_exitcode(status))
"""


def peak_memory(program, folder, *arguments):
    """In bytes, of a run that went well; its output is not kept."""
    result = subprocess.run([sys.executable, "-I", "-S", "-c", PEAK, program, *arguments], cwd=folder,
                            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=True)
    return int(result.stderr.split()[-1])


@pytest.mark.memory
@pytest.mark.parametrize("to", FORMATS)
def test_memory_does_not_grow_with_the_trace(vextrace, tmp_path, to):
    block = b"".join(message(NOON + number * SECOND, rmc(), gga(), gsa(3)) for number in range(1000))
    with open(tmp_path / "long.trace", "wb") as file:
        for _ in range(300):
            file.write(block)  # one line, since no jump between two fixes is a gap
    arguments = ["export", "--to", to, "--gap", "1e9", "long.trace"]
    assert peak_memory(vextrace.program, tmp_path, *arguments) < 32_000_000


@pytest.mark.memory
def test_memory_does_not_grow_with_the_files(vextrace, tmp_path):
    (tmp_path / "0.trace").write_bytes(b"".join(SMALL))
    for number in range(1, 3000):
        os.link(tmp_path / "0.trace", tmp_path / f"{number}.trace")
    names = sorted(os.listdir(tmp_path))
    assert peak_memory(vextrace.program, tmp_path, "export", "--to", "gpx", *names) < 32_000_000


# --- Sentences of one epoch


SECOND_OF_REPEATED = utc("1994-03-23T12:00:00")
REPEATED = [message(SECOND_OF_REPEATED, sentence(b"GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,"),
                    sentence(b"GPRMC,120000,A,4807.038,N,01131.000,E,022.4,084.4,230394,,")),
            message(SECOND_OF_REPEATED, sentence(b"GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,"))]


@pytest.mark.parametrize("to", ["gpx", "geojson", "kml", "csv", "jsonl"])
def test_a_fix_that_is_sent_again_is_no_other_fix(vextrace, export, trace, to):
    name = trace(*REPEATED)
    result = vextrace("export", "--to", to, name)
    assert (result.returncode, result.stderr) == (0, b"vextrace: left out: 1 repetition of a fix in its epoch\n")
    once = export(to, trace(REPEATED[0]))
    assert result.stdout == once.replace(b"1.trace", name.encode())


def test_nmea_begins_each_epoch_with_its_time(export, trace):
    early = [b"$BDGSA,A,3,02*0A\r\n", b"$GPGGA,120000,,,,,0,,,,,,,,*53\r\n", b"$GPRMC,120000,V,,,,,,,230394,,*35\r\n"]
    again = [b"$BDGSA,A,3,03*0B\r\n", b"$GPGSV,1,1,00*79\r\n"]
    stamp = utc("1994-03-23T12:00:00")
    name = trace(message(stamp, *early), message(stamp, *again))
    assert export("nmea", name) == b"".join([early[1], early[0], early[2], *again])


def test_nmea_begins_a_message_with_its_time_only_where_the_stamp_changes(export, trace):
    stamp = utc("1994-03-23T12:00:00")
    texts = [rmc(), checked("GPGSV,2,1,1"), checked("GPGSV,2,2,2"), rmc(status="V")]
    name = trace(message(stamp, texts[0], texts[1]), message(stamp, texts[2], texts[3]))
    assert export("nmea", name) == b"".join(texts)


def test_nmea_recorded_again_has_each_sentence_under_its_stamp(vextrace, export, tmp_path, log):
    def places(name):
        trace, found, begin = (tmp_path / name).read_bytes(), [], 0
        while begin < len(trace):
            end = begin + 2 + int.from_bytes(trace[begin:begin + 2], "big")
            found += [(trace[begin + 6:begin + 14], line) for line in trace[begin + 14:end].split(b"\n")]
            begin = end
        return found

    assert vextrace("record", "-o", "first", log).returncode == 0
    (tmp_path / "again.nmea").write_bytes(export("nmea", "first"))
    assert vextrace("record", "-o", "second", "again.nmea").returncode == 0
    assert sorted(places("first")) == sorted(places("second"))
