"""Messages by themselves."""
import pickle

import numpy
import pytest
from traces import message, utc

import vextrace

RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"
GGA = b"$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n"
STAMP = utc("1994-03-23T12:35:19")


def fix_message():
    built = vextrace.GPSTraceMessage(STAMP, RMC)
    built.add(GGA)
    return built


def test_bytes_are_those_of_the_format():
    assert bytes(fix_message()) == message(STAMP, RMC, GGA)


def test_comes_back_from_its_bytes():
    assert vextrace.GPSTraceMessage.from_bytes(bytes(fix_message())) == fix_message()


@pytest.mark.parametrize("data, reason", [
    (b"", "end within"), (message(STAMP, RMC)[:-1], ""), (message(STAMP, RMC) + b"x", "before the bytes do"),
    (message(STAMP, b"$X")[:2] + b"\0\1" + message(STAMP, b"$X")[4:], ""),
])
def test_other_bytes_are_refused(data, reason):
    with pytest.raises(ValueError, match=reason):
        vextrace.GPSTraceMessage.from_bytes(data)


def test_the_first_sentence_of_a_code_stays():
    built = vextrace.GPSTraceMessage(STAMP, b"$GNRMC,1\r\n")
    assert built.add(b"$GLRMC,2\r\n") is False
    assert built.add(b"$GPTXT,3") is True
    assert built.sentences == {"$GPRMC": b"$GPRMC,1\r\n", "$GPTXT": b"$GPTXT,3\n"}
    assert list(built.sentences) == ["$GPRMC", "$GPTXT"]


def test_is_equal_by_its_sentences():
    assert fix_message() == fix_message()
    assert fix_message() != vextrace.GPSTraceMessage(STAMP, RMC)
    assert fix_message() != 5
    with pytest.raises(TypeError, match="unhashable"):
        hash(fix_message())


def test_texts():
    assert str(fix_message()).endswith("GPS         | " + GGA[:-2].decode() + " " + RMC[:-2].decode())
    assert fix_message().rdb == "48°7.038 N, 11°31.000 E, 545.4M"
    assert vextrace.GPSTraceMessage(1, b"$GPTXT,1\r\n").rdb == ""


def test_bytes_that_are_no_text_are_shown_as_surrogates():
    built = vextrace.GPSTraceMessage(1, b"$GPTXT,\xff\xc3\xa4\r\n")
    assert str(built).endswith("$GPTXT,\udcffä")
    assert built.sentences["$GPTXT"] == b"$GPTXT,\xff\xc3\xa4\n".replace(b"\n", b"\r\n")


def test_times():
    assert fix_message().time_ns == STAMP
    assert fix_message().time == numpy.datetime64("1994-03-23T12:35:19", "ns")
    assert numpy.isnat(vextrace.GPSTraceMessage(0, RMC).time)
    assert numpy.isnat(vextrace.GPSTraceMessage(utc("1970-12-31T23:59:59"), RMC).time)
    assert not numpy.isnat(vextrace.GPSTraceMessage(utc("1971-01-01T00:00:00"), RMC).time)
    latest = vextrace.GPSTraceMessage(2**64 - 1, RMC)
    assert latest.time_ns == 2**64 - 1 and numpy.isnat(latest.time)


def test_the_fix_has_numbers_and_none():
    fix = fix_message().fix
    assert (fix.latitude, fix.longitude, fix.altitude) == (48.11729999999999, 11.516666666666667, 545.4)
    assert (fix.speed, fix.course, fix.satellites, fix.quality) == (41.4848, 84.4, 8, 1)
    assert (fix.valid, fix.checksum, fix.hdop) == (True, "right", 0.9)
    lone = vextrace.GPSTraceMessage(STAMP, RMC).fix
    assert lone.altitude is None and lone.satellites is None
    assert vextrace.GPSTraceMessage(STAMP, b"$GPTXT,1\r\n").fix is None


@pytest.mark.parametrize("sentence", [RMC, b"", b"$G", b"$GP", b"\n", b"a\0b\r\n", b"$GPX\nY"])
def test_pickles_whatever_it_holds(sentence):
    built = vextrace.GPSTraceMessage(STAMP, sentence)
    copy = pickle.loads(pickle.dumps(built))
    assert copy == built and copy.sentences == built.sentences and copy.time_ns == STAMP


def test_one_that_is_too_long_cannot_become_bytes():
    built = vextrace.GPSTraceMessage(1, b"x" * 70000)
    with pytest.raises(ValueError):
        bytes(built)
    assert pickle.loads(pickle.dumps(built)) == built


@pytest.mark.parametrize("arguments", [
    (), (1,), (-1, RMC), (2**64, RMC), (1.5, RMC), ("1", RMC), (1, "text"), (1, None), (None, RMC)])
def test_wrong_arguments_are_type_errors(arguments):
    with pytest.raises(TypeError):
        vextrace.GPSTraceMessage(*arguments)
