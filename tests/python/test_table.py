"""Fixes as columns: those of the program's tables."""
import csv
import datetime
import io
import math
import os
import threading

import numpy
import pandas
import pytest
from traces import message, other, sentence, utc

import vextrace

RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"
GGA = b"$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n"
STAMP = utc("1994-03-23T12:35:19")
TEXTS = ("trace", "checksum")
WHOLE = ("message", "time_ns", "satellites", "quality")


def expected(text, column):
    """A value as the program wrote it, as Python has it."""
    if column in TEXTS:
        return text
    if text == "":
        return None
    if column == "valid":
        return {"true": True, "false": False}[text]
    if column == "time_utc":
        return numpy.datetime64(text.rstrip("Z"), "ns")
    return int(text) if column in WHOLE else float(text)


def values(table, column):
    """A column as the same."""
    return [None if value is pandas.NaT or value is pandas.NA or value != value
            else value.to_datetime64() if column == "time_utc" else value
            for value in table[column]]


def csv_columns(text):
    rows = list(csv.reader(io.StringIO(text.decode(errors="surrogateescape"), newline="")))
    names = rows[0]
    return {name: [expected(row[i], name) for row in rows[1:]] for i, name in enumerate(names)}


def test_a_frame_is_the_program_s_table(log, program, tmp_path):
    trace = tmp_path / "drive.trace"
    program("record", "-o", trace, log)
    for options, arguments in (({}, []), ({"unchecked": True}, ["--unchecked"])):
        columns = csv_columns(program("export", "--to", "csv", *arguments, trace))
        table = vextrace.frame(trace, **options)
        assert list(table) == list(columns)
        for name, wanted in columns.items():
            assert values(table, name) == wanted, name


def test_a_span_is_the_program_s(program, drive):
    span = ["2026-05-17T07:29:00Z", "2026-05-17T07:30:00.5Z"]
    columns = csv_columns(program("export", "--to", "csv", "--from", span[0], "--until", span[1],
                                  drive))
    zone = datetime.timezone(datetime.timedelta(hours=2))
    for from_, until in (
            span, [numpy.datetime64(text[:-1]) for text in span], map(pandas.Timestamp, span),
            [datetime.datetime(2026, 5, 17, 9, 29, tzinfo=zone),
             datetime.datetime(2026, 5, 17, 7, 30, 0, 500000)]):
        table = vextrace.frame(drive, from_=from_, until=until)
        assert values(table, "time_ns") == columns["time_ns"]
        assert 0 < len(table) < len(vextrace.frame(drive))


@pytest.mark.parametrize("time", ["yesterday", "2026-13-01", numpy.datetime64("1969-01-01"),
                                  numpy.datetime64("NaT")])
def test_what_is_no_time_is_refused(drive, time):
    with pytest.raises(ValueError):
        vextrace.frame(drive, from_=time)


def test_what_is_missing_is_missing():
    table = vextrace.frame(message(0, sentence(b"GPRMC,,V,,,,,,,,,")))
    row = table.iloc[0]
    assert row.time_utc is pandas.NaT and row.time_ns is pandas.NA
    assert row.satellites is pandas.NA and row.quality is pandas.NA
    for name in ("latitude_deg", "longitude_deg", "altitude_m", "speed_kmh", "course_deg", "hdop"):
        assert math.isnan(row[name])
    assert not row.valid


def test_columns_have_types_and_units(drive):
    table = vextrace.frame([drive])
    assert list(table) == list(vextrace.COLUMNS)
    assert {name: str(kind) for name, kind in table.dtypes.items()} == {
        "trace": "category", "message": "uint64", "time_utc": "datetime64[ns]", "time_ns": "UInt64",
        "valid": "bool", "latitude_deg": "float64", "longitude_deg": "float64",
        "altitude_m": "float64", "speed_kmh": "float64", "course_deg": "float64",
        "satellites": "UInt16", "quality": "UInt16", "hdop": "float64", "checksum": "category"}
    assert table.attrs["units"]["speed_kmh"] == "km/h"
    assert table.attrs["damage"] == {}


def test_arrays_are_the_same_as_the_frame(drive):
    arrays = vextrace.fixes(str(drive))
    table = vextrace.frame(str(drive))
    assert list(arrays) == list(table)
    assert set(arrays["trace"]) == {str(drive)}
    for name in ("message", "time_utc", "valid", "latitude_deg", "hdop", "checksum"):
        numpy.testing.assert_array_equal(arrays[name], table[name].to_numpy())
    for name in ("time_ns", "satellites", "quality"):
        assert arrays[name].tolist() == [None if v is pandas.NA else v for v in table[name]]


def test_several_traces_stand_one_behind_the_other(tmp_path):
    paths = [tmp_path / "b.trace", tmp_path / "a.trace"]
    paths[0].write_bytes(message(STAMP, RMC) + other(1, STAMP, b"x") + message(STAMP + 1, RMC))
    paths[1].write_bytes(message(STAMP + 2, GGA))
    table = vextrace.frame(paths)
    assert list(table.trace) == [str(paths[0])] * 2 + [str(paths[1])]
    assert list(table.trace.cat.categories) == [str(path) for path in paths]
    assert list(table.message) == [1, 3, 1]
    assert len(vextrace.frame([paths[1], paths[1]])) == 2
    assert list(vextrace.frame(iter(paths)).message) == [1, 3, 1]


def test_no_traces_and_empty_ones_are_an_empty_table(tmp_path):
    (tmp_path / "empty.trace").write_bytes(b"")
    for traces in ([], b"", tmp_path / "empty.trace"):
        table = vextrace.frame(traces)
        assert len(table) == 0 and list(table) == list(vextrace.COLUMNS)


@pytest.mark.parametrize("dtype", [object, str])
def test_an_array_of_names_is_names(tmp_path, dtype):
    names = [str(tmp_path / name) for name in ("a.trace", "b.trace")]
    for name in names:
        with open(name, "wb") as trace:
            trace.write(message(STAMP, RMC))
    assert vextrace.frame(numpy.array(names, dtype=dtype)).trace.tolist() == names
    assert vextrace.frame(vextrace.frame(names).trace.unique()).trace.tolist() == names


def test_damage_is_counted(tmp_path):
    path = tmp_path / "damaged.trace"
    fix = message(STAMP, RMC, GGA)
    path.write_bytes(fix + b"noise" + message(STAMP + 1, RMC) + b"more noise" + fix)
    table = vextrace.frame([path, fix])
    assert list(table.message) == [1, 2, 3, 1]
    assert table.attrs["damage"] == {str(path): {"places": 2, "bytes": 15}}


def test_what_is_no_trace_says_so(tmp_path):
    path = tmp_path / "log.nmea"
    path.write_bytes(RMC)
    with pytest.raises(ValueError, match=r"log\.nmea: no trace: 70 bytes without any message"):
        vextrace.frame([message(STAMP, RMC), path])
    with pytest.raises(FileNotFoundError):
        vextrace.frame([message(STAMP, RMC), tmp_path / "none"])


def test_names_may_hold_any_bytes(tmp_path):
    path = os.fsdecode(os.path.join(os.fsencode(tmp_path), b"\xff.trace"))
    with open(path, "wb") as file:
        file.write(message(STAMP, RMC))
    assert list(vextrace.frame(path).trace) == [path]


def test_threads_read_side_by_side(drive):
    tables = {}

    def work(number):
        tables[number] = vextrace.frame(drive)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for table in tables.values():
        pandas.testing.assert_frame_equal(table, tables[0])


@pytest.mark.parametrize("wrong", [5, None, [5], [None]])
def test_wrong_arguments_are_type_errors(wrong):
    with pytest.raises(TypeError):
        vextrace.frame(wrong)


def test_long_damage_takes_no_memory_of_the_table():
    rows = 100_000
    trace = message(STAMP, RMC, GGA) * rows
    table = vextrace.frame(trace)
    # A stamp and time that are the same are repetitions.
    assert len(table) == 1 and table.message[0] == 1
