"""Spans of a large trace that threads read side by side: together they are the whole."""
import random

import pytest
from traces import message, other, sentence, utc

from vextrace import _vextrace

STAMP = utc("2026-11-21T12:00:00")
SECOND = 10**9
WHOLE = 2**63
LEAD = 1 << 20  # so much is read in front of a span


def rmc(number, talker=b"GP"):
    clock = b"%02d%02d%02d" % (12 + number // 3600, number // 60 % 60, number % 60)
    return sentence(talker + b"RMC,%s,A,4807.038,N,01131.000,E,%d.4,084.4,211126,,,A"
                    % (clock, number % 100))


def fix(number, talker=b"GP"):
    return message(STAMP + number * SECOND, rmc(number, talker))


def bus(number):
    """Messages of another type, altogether longer than what is read in front of a span."""
    return b"".join(other(1, STAMP + number * SECOND + i, random.Random(i).randbytes(2000))
                    for i in range(2 * LEAD // 2000))


def read(trace, span):
    """All that is found in a trace, and the columns as plain values."""
    table = _vextrace._FixTable(0, 2**64 - 1, False)
    found = table.add(trace, 7, span=span)
    names = [name for name in dir(found) if not name.startswith("_")]
    columns = {name: [part.tolist() for part in (column if isinstance(column, tuple) else [column])]
               for name, column in table.take().items()}
    return {name: getattr(found, name) for name in names}, columns


def assert_same(trace, span):
    # Missing values are no numbers, which are not equal to themselves.
    assert repr(read(trace, span)) == repr(read(trace, WHOLE))


def test_each_log_is_the_same_in_spans(log, program, tmp_path):
    path = tmp_path / "drive.trace"
    program("record", "-o", path, log)
    for span in (path.stat().st_size // 7 + 1, path.stat().st_size - 1):
        assert_same(path, span)


def test_spans_may_end_anywhere():
    trace = b"".join(map(fix, range(6)))
    for span in range(len(fix(0)) - 16, len(fix(0)) + 16):
        assert_same(trace, span)


def test_damage_may_reach_over_spans():
    noise = random.Random(5).randbytes(3 * LEAD)
    trace = fix(0) + fix(1) + noise + fix(2) + noise[:99] + fix(3)
    for span in (LEAD // 3, LEAD, len(trace) - 1):
        assert_same(trace, span)
    found, _ = read(trace, LEAD)
    assert (found["messages"], found["places"]) == (4, 2)


def test_messages_are_numbered_from_the_beginning_of_the_trace():
    trace = fix(0) + bus(1) + fix(2) + fix(3)
    _, columns = read(trace, LEAD)
    count = 2 * LEAD // 2000
    assert columns["message"] == [[1, count + 2, count + 3]]


def test_what_lies_before_all_that_is_read_in_front_of_a_span_counts():
    # The talker of the first two goes on: one sentence that seems to be of another is wrong.
    trace = fix(0, b"GL") + fix(1, b"GL") + bus(2) + fix(3) + fix(4, b"GL")
    _, columns = read(trace, LEAD)
    assert columns["time_utc"] == [[STAMP + number * SECOND for number in (0, 1, 4)]]
    assert_same(trace, LEAD)


def test_an_empty_trace_and_what_is_none():
    assert read(b"", 1)[0]["is_trace"]
    found, columns = read(bytes(2 * LEAD), LEAD)
    assert not found["is_trace"] and found["damaged_bytes"] == 2 * LEAD
    assert columns["message"] == [[]]


def test_a_failing_read_ends_all_spans():
    with pytest.raises(OSError):
        read("/proc/self/mem", 1)
