"""vextrace cut: the messages of a span."""
import pytest

from samples import STAMP, fix
from traces import CAN, SECOND, other


def can(second):
    return other(CAN, STAMP + second * SECOND, b"\x01\xff")


@pytest.fixture
def cut(vextrace, tmp_path):
    """Cuts traces, given as bytes; the result, and what was written."""

    def run(*traces, options=()):
        names = []
        for number, trace in enumerate(traces):
            names.append(f"{number}.trace")
            (tmp_path / names[-1]).write_bytes(trace)
        result = vextrace("cut", *options, "-o", "out.trace", *names)
        out = tmp_path / "out.trace"
        return result, out.read_bytes() if out.exists() else None

    return run


def test_copies_the_messages_of_a_span_of_every_type_byte_for_byte(cut):
    parts = [part for second in range(5) for part in (fix(STAMP + second * SECOND), can(second))]
    result, out = cut(b"".join(parts), options=("--from", "1994-03-23T12:35:20Z",
                                                "--until", "1994-03-23T12:35:22Z"))
    assert (result.returncode, out) == (0, b"".join(parts[2:8]))
    assert result.stdout == b""
    assert result.stderr.decode() == (
        f"vextrace: 6 messages, {len(out)} bytes kept; 0 damaged places, 0 bytes passed over; "
        "4 messages from before or after the time asked for\n")


def test_takes_several_traces_one_behind_the_other(cut):
    first, second = fix(STAMP) + can(1), can(0) + fix(STAMP + SECOND)
    result, out = cut(first, second, options=("--from", "1994-03-23T12:35:20"))
    assert (result.returncode, out) == (0, can(1) + fix(STAMP + SECOND))


def test_takes_what_is_good_around_damage(cut):
    trace = fix(STAMP) + b"\0\0junk" + fix(STAMP + SECOND) + can(2)
    result, out = cut(trace, options=("--until", "1994-03-23 12:35:20"))
    assert (result.returncode, out) == (1, fix(STAMP) + fix(STAMP + SECOND))


def test_a_span_without_a_message_leaves_no_file(cut):
    result, out = cut(fix(STAMP), options=("--until", "1994-03-23"))
    assert (result.returncode, out) == (1, None)
    assert result.stderr == b"vextrace: no message is of the time asked for: nothing was written\n"


@pytest.mark.parametrize("options, line", [
    ((), "cut: --from or --until, or both, say what is to be cut out"),
    (("--from", "1995", ), "--from: 1995 is no time such as 2026-11-21T12:35:19.5Z"),
    (("--from", "1995-01-01", "--until", "1994-01-01"), "--from: is later than --until"),
])
def test_spans_that_make_no_sense_are_refused(cut, options, line):
    result, out = cut(fix(STAMP), options=options)
    assert (result.returncode, out, result.stderr.decode()) == (2, None, f"vextrace: {line}\n")


def test_nothing_is_overwritten_without_force(cut, tmp_path):
    (tmp_path / "out.trace").write_bytes(b"old")
    result, out = cut(fix(STAMP), options=("--from", "1994-01-01"))
    assert (result.returncode, out) == (2, b"old")
    result, out = cut(fix(STAMP), options=("--from", "1994-01-01", "--force"))
    assert (result.returncode, out) == (0, fix(STAMP))


@pytest.mark.parametrize("time", ["1994-03-23T12:35", "1994-03-23 12:35", "1994-03-23 12:35:00Z",
                                  "1994-03-23T12:35Z"])
def test_times_take_minutes_alone_and_a_blank(cut, time):
    before = fix(STAMP - 20 * SECOND)  # 12:34:59
    result, out = cut(before + fix(STAMP), options=("--from", time))
    assert (result.returncode, out) == (0, fix(STAMP)), result.stderr
