"""vextrace report: traces that change between the two readings."""
import os
import subprocess

import pytest

from test_report import data_of, fix, put, text_of

NOTE = "Something changed while it was read: what is drawn is not all that the numbers tell."
COUNT = 50


def report_with_change(vextrace, tmp_path, change):
    """A report of a trace and of a pipe: when the pipe is read, the trace was read once."""
    trace = put(tmp_path, "a.trace", b"".join(map(fix, range(COUNT))))
    os.mkfifo(tmp_path / "pipe")
    with subprocess.Popen([vextrace.program, "report", "-o", "drives.html", trace, "pipe"],
                          cwd=tmp_path, stderr=subprocess.PIPE) as process:
        with open(tmp_path / "pipe", "wb") as pipe:
            change(tmp_path / trace)
            pipe.write(fix(3600) + fix(3601))
        _, errors = process.communicate(timeout=60)
    return process.returncode, errors, (tmp_path / "drives.html").read_bytes()


@pytest.mark.parametrize("change, left", [
    (lambda path: os.truncate(path, 0), 0),
    (lambda path: os.truncate(path, len(fix(0)) * 10), 10),
    (lambda path: path.unlink(), 0),
    (lambda path: path.write_bytes(bytes(path.stat().st_size)), 0),
], ids=["empty", "shorter", "removed", "overwritten"])
def test_tells_that_a_trace_changed_and_draws_what_is_left(vextrace, tmp_path, change, left):
    status, errors, page = report_with_change(vextrace, tmp_path, change)
    assert (status, errors) == (1, b"vextrace: a.trace: changed while it was read\n")
    assert [drive["count"] for drive in data_of(page)["drives"]] == [left, 2]
    assert NOTE in text_of(page)


def test_a_trace_may_grow(vextrace, tmp_path):
    def grow(path):
        with open(path, "ab") as trace:
            trace.write(fix(COUNT))

    status, errors, page = report_with_change(vextrace, tmp_path, grow)
    assert (status, errors) == (0, b"")
    assert [drive["count"] for drive in data_of(page)["drives"]] == [COUNT, 2]
    assert NOTE not in text_of(page)
