"""Traces message by message."""
import io
import os
import pathlib
import threading

import pytest
from traces import GPS, message, other, utc

import vextrace

RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"
GGA = b"$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n"
STAMP = utc("1994-03-23T12:35:19")
FIX = message(STAMP, RMC, GGA)
CAN = other(1, STAMP + 5, b"\1\2\3")
TRACE = FIX + CAN + FIX


def test_gives_every_message_in_order():
    items = list(vextrace.read(TRACE))
    assert [bytes(item) for item in items] == [FIX, CAN, FIX]
    assert [item.offset for item in items] == [0, len(FIX), len(FIX) + len(CAN)]
    assert [item.length for item in items] == [len(FIX), len(CAN), len(FIX)]
    assert [item.id for item in items] == [GPS, 1, GPS]
    assert [item.type for item in items] == ["MSGID_GPS", "MSGID_CAN", "MSGID_GPS"]
    assert [item.time_ns for item in items] == [STAMP, STAMP + 5, STAMP]


def test_gps_messages_have_sentences_and_a_fix():
    item = next(vextrace.read(TRACE))
    assert item.sentences == {"$GPGGA": GGA, "$GPRMC": RMC}
    assert item.fix.latitude == 48.11729999999999
    assert item.gps == vextrace.GPSTraceMessage.from_bytes(FIX)


def test_other_messages_have_none():
    item = list(vextrace.read(TRACE))[1]
    assert item.sentences == {} and item.fix is None
    with pytest.raises(ValueError, match="another type"):
        item.gps


def test_damage_is_an_item():
    items = list(vextrace.read(FIX + b"noise" + FIX))
    assert [type(item) for item in items] == [vextrace.Message, vextrace.Damage, vextrace.Message]
    assert (items[1].offset, items[1].length) == (len(FIX), 5)
    assert items[1].reason


def test_takes_what_python_has(tmp_path):
    path = tmp_path / "drive.trace"
    path.write_bytes(TRACE)
    expected = [bytes(item) for item in vextrace.read(TRACE)]
    for source in (path, str(path), bytearray(TRACE), memoryview(TRACE), io.BytesIO(TRACE),
                   open(path, "rb")):
        assert [bytes(item) for item in vextrace.read(source)] == expected


def test_names_may_hold_any_bytes(tmp_path):
    path = os.path.join(os.fsencode(tmp_path), b"\xff.trace")
    with open(path, "wb") as file:
        file.write(TRACE)
    assert len(list(vextrace.read(os.fsdecode(path)))) == 3
    assert len(list(vextrace.read(pathlib.Path(os.fsdecode(path))))) == 3


def test_errors_are_those_of_python(tmp_path):
    with pytest.raises(FileNotFoundError) as missing:
        vextrace.read(tmp_path / "none.trace")
    assert missing.value.filename == tmp_path / "none.trace"
    with pytest.raises(IsADirectoryError):
        next(vextrace.read(tmp_path))
    with pytest.raises(ValueError, match="null"):
        vextrace.read("a\0b")
    for wrong in (5, None, [TRACE], object()):
        with pytest.raises(TypeError):
            vextrace.read(wrong)


class Raising:
    """Gives a message, then fails."""

    def __init__(self, error, before=FIX):
        self.error = error
        self.before = before

    def read(self, size):
        given, self.before = self.before[:size], self.before[size:]
        if not given:
            raise self.error
        return given


def test_an_error_of_a_file_object_goes_on_to_the_caller():
    items = vextrace.read(Raising(KeyError("gone")))
    assert bytes(next(items)) == FIX
    with pytest.raises(KeyError, match="gone"):
        next(items)


@pytest.mark.parametrize("given, error", [
    ("text", TypeError), (None, TypeError), (b"x" * 10**7, ValueError)])
def test_a_file_object_must_give_what_it_is_asked_for(given, error):
    class Wrong:
        def read(self, size):
            return given

    with pytest.raises(error):
        list(vextrace.read(Wrong()))


def test_a_file_that_was_closed_is_an_error(tmp_path):
    path = tmp_path / "drive.trace"
    path.write_bytes(TRACE * 50000)
    with open(path, "rb") as file:
        items = vextrace.read(file)
        next(items)
    with pytest.raises(ValueError, match="closed"):
        list(items)


def test_a_file_that_shrinks_ends_early(tmp_path):
    path = tmp_path / "drive.trace"
    path.write_bytes(TRACE * 50000)
    items = vextrace.read(path)
    next(items)
    os.truncate(path, 100)
    assert sum(1 for _ in items) < 3 * 50000


def test_the_iterator_outlives_its_source(tmp_path):
    items = vextrace.read(bytearray(TRACE))
    assert len(list(items)) == 3
    assert list(items) == []


def test_an_iterator_used_by_two_threads_loses_nothing():
    items = vextrace.read(TRACE * 2000)
    taken = []
    refused = []

    def work():
        while True:
            try:
                taken.append(next(items).offset)
            except StopIteration:
                return
            except ValueError as error:
                refused.append(str(error))

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(taken) == [item.offset for item in vextrace.read(TRACE * 2000)]
    assert set(refused) <= {"another thread is using this object"}


def test_a_recording_is_that_of_the_program(log, program, tmp_path):
    content = log.read_bytes()
    program("record", "-o", tmp_path / "a.trace", "--date", "2026-11-21", log)
    assert vextrace.record(content, date="2026-11-21") == (tmp_path / "a.trace").read_bytes()


def test_records_nothing_of_nothing():
    assert vextrace.record(b"") == b""
    assert vextrace.record(b"no sentence") == b""
    with pytest.raises(ValueError, match="2026-02-30"):
        vextrace.record(b"", date="2026-02-30")
    with pytest.raises(TypeError):
        vextrace.record("text")
