"""vextrace info: what is counted within a trace, and what over several of them."""
import json

import pytest

from samples import STAMP, fix
from traces import GPS, SECOND, other


@pytest.fixture
def sums(vextrace, tmp_path):
    """What is said of all traces together."""

    def run(*traces):
        names = [f"{number}.trace" for number in range(len(traces))]
        for name, trace in zip(names, traces):
            (tmp_path / name).write_bytes(trace)
        result = vextrace("info", "--json", *names)
        assert (result.returncode, result.stderr) == (0, b"")
        return json.loads(result.stdout)["all"]

    return run


def at(*seconds):
    """Messages without a fix at these times."""
    return b"".join(other(GPS, STAMP + second * SECOND, b"$PXYZ\n") for second in seconds)


def test_messages_of_one_epoch_are_no_step_back(sums):
    assert sums(at(1, 1, 2, 2, 2))["time"]["steps_back"] == 0


def test_steps_back_of_all_traces_are_counted(sums):
    assert sums(at(2, 1), at(0), at(9, 8, 7), at(3, 4))["time"]["steps_back"] == 3


def test_repetitions_of_all_traces_are_counted(sums):
    once, twice = fix(STAMP), fix(STAMP) * 2
    fixes = sums(twice, once, twice + fix(STAMP))["fixes"]
    assert (fixes["repeated"], fixes["valid"]) == (3, 3)


def test_sentences_of_all_traces_are_counted_whatever_their_codes(sums):
    codes = [b"$%05d\n" % number for number in range(3000)]
    trace = other(GPS, STAMP, b"".join(codes))
    sentences = sums(trace, trace)["sentences"]
    assert (sentences["count"], sentences["of_other_codes"]) == (6000, 4000)
    assert len(sentences["by_code"]) == 1000 and set(sentences["by_code"].values()) == {2}


def test_of_equal_gaps_the_first_is_the_longest(vextrace, tmp_path):
    (tmp_path / "trace").write_bytes(at(0, 10, 20, 30))
    result = vextrace("info", "trace")
    assert b"  gaps > 5 s      3, the longest 10 s after 1994-03-23T12:35:19Z\n" in result.stdout
