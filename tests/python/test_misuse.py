"""Nothing that Python gives the module ends the interpreter."""
import copy
import datetime
import io
import pickle
import random

import numpy
import pandas
import pytest
from traces import message, other, utc

import vextrace
from vextrace import _vextrace

STAMP = utc("1994-03-23T12:35:19")
RMC = b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"
TRACE = message(STAMP, RMC) + b"noise" + other(1, STAMP, b"x") + message(STAMP + 1, RMC)
CLASSES = [vextrace.GPSTraceMessage, vextrace.Message, vextrace.Damage, vextrace.Fix,
           _vextrace._TraceIterator, _vextrace._FixTable, _vextrace._Findings]
ROUNDS = 4000


class Wrong:
    """Has every method that is asked for, and does something wrong in each."""

    def __init__(self, given):
        self.given = given

    def _do(self, *arguments, **named):
        if isinstance(self.given, BaseException):
            raise self.given
        return self.given

    read = seek = seekable = __fspath__ = __index__ = __int__ = __iter__ = __len__ = _do
    __buffer__ = __float__ = __str__ = __eq__ = _do
    __hash__ = None


def values(folder):
    """What is given, right and wrong."""
    (folder / "a.trace").write_bytes(TRACE)
    plain = [None, True, 0, 1, -1, 22, 2**31, 2**63, 2**64 - 1, 2**64, 10**30, 1.5, float("nan"),
             "", "a", "a\0b", "\udcff", "2026-11-21", "2026-11-21T12:00", b"", b"$", RMC, TRACE,
             TRACE[:30], b"\0" * 50, b"\xff" * 70, (), [], {}, [TRACE], [None], object(), type,
             str(folder / "a.trace"), folder / "a.trace", folder, "/dev/null"]
    made = [bytearray(TRACE), memoryview(TRACE), memoryview(TRACE)[::2], memoryview(TRACE)[::-1],
            numpy.arange(10), numpy.zeros((3, 4)), numpy.frombuffer(TRACE, numpy.uint8),
            numpy.datetime64("NaT"), numpy.datetime64("2026-11-21"), pandas.NaT,
            datetime.date(2026, 11, 21), datetime.datetime(1, 1, 1), io.StringIO("text")]
    wrong = [Wrong(given) for given in (
        None, 5, "text", b"", b"x" * 10**5, RMC, [], KeyError("wrong"), StopIteration())]
    return plain + made + wrong


def objects():
    items = list(vextrace.read(TRACE))
    gps = vextrace.GPSTraceMessage(STAMP, RMC)
    return items + [gps, gps.fix, vextrace.read(TRACE), _vextrace._FixTable(0, 2**64 - 1, False)]


def callables(randoms):
    """A function, a constructor, or an attribute of an object or of a class."""
    functions = [vextrace.read, vextrace.record, vextrace.fixes, vextrace.frame, _vextrace._stamp,
                 vextrace.GPSTraceMessage.from_bytes]
    chosen = randoms.randrange(4)
    if chosen == 0:
        return randoms.choice(functions)
    if chosen == 1:
        return randoms.choice(CLASSES)
    if chosen == 2:
        thing = randoms.choice(objects())
    else:
        thing = randoms.choice(CLASSES)
    names = [name for name in dir(type(thing)) if not name.endswith("class__") and name != "__base__"]
    name = randoms.choice(names)
    return lambda *arguments, **named: use(getattr(thing, name), arguments, named)


def use(attribute, arguments, named):
    return attribute(*arguments, **named) if callable(attribute) else attribute


def arguments_of(randoms, given):
    arguments = [randoms.choice(given) for _ in range(randoms.randrange(4))]
    names = ["from_", "until", "unchecked", "date", "number", "begin", "end"]
    return arguments, {randoms.choice(names): randoms.choice(given)
                       for _ in range(randoms.choice([0, 0, 1, 2]))}


def taste(result):
    """Uses what came back as anyone would."""
    repr(result)
    if isinstance(result, _vextrace._TraceIterator):
        for _, item in zip(range(10), result):
            bytes(item) if isinstance(item, vextrace.Message) else repr(item)
    if isinstance(result, vextrace.GPSTraceMessage):
        pickle.loads(pickle.dumps(result)) == copy.copy(result)


def test_whatever_is_given_the_interpreter_goes_on(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    randoms = random.Random(17)
    given = values(tmp_path)
    refused = 0
    for _ in range(ROUNDS):
        call = callables(randoms)
        arguments, named = arguments_of(randoms, given)
        try:
            taste(call(*arguments, **named))
        except Exception:  # pylint: disable=broad-except
            refused += 1
    assert 0 < refused < ROUNDS


def test_damaged_traces_are_read_to_their_end():
    randoms = random.Random(18)
    for _ in range(300):
        trace = bytearray(TRACE * 3)
        for _ in range(randoms.randrange(1, 6)):
            at = randoms.randrange(len(trace))
            trace[at:at + randoms.randrange(9)] = randoms.randbytes(randoms.randrange(9))
        items = list(vextrace.read(trace))
        assert sum(item.length for item in items) == len(trace)
        for item in items:
            if isinstance(item, vextrace.Message):
                assert bytes(item) == trace[item.offset:item.offset + item.length]


def test_no_object_is_there_that_was_never_constructed():
    for kind in CLASSES:
        for make in (kind, kind.__new__, object.__new__):
            with pytest.raises(TypeError):
                make(kind)
        with pytest.raises(TypeError):
            type("Derived", (kind,), {})


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_only_messages_by_themselves_are_pickled(protocol):
    built = vextrace.GPSTraceMessage(STAMP, RMC)
    assert pickle.loads(pickle.dumps(built, protocol)) == built == copy.deepcopy(built)
    for thing in objects():
        if not isinstance(thing, vextrace.GPSTraceMessage):
            with pytest.raises(TypeError):
                pickle.dumps(thing, protocol)
            with pytest.raises(TypeError):
                copy.copy(thing)
