"""Fleets: parts that are together the whole, on several processes."""
import os
import random
import signal
import time

import pandas
import pytest
from traces import message, other, sentence, utc

import vextrace
import vextrace.dask

STAMP = utc("2026-11-21T12:00:00")
SECOND = 10**9


def fix(number, car=0):
    clock = b"%02d%02d%02d" % (12 + number // 3600, number // 60 % 60, number % 60)
    rmc = sentence(b"GPRMC,%s,A,48%02d.038,N,011%02d.000,E,%d.4,084.4,211126,,,A"
                   % (clock, number % 60, car % 60, number % 100))
    gga = sentence(b"GPGGA,%s,4807.038,N,01131.000,E,1,08,0.9,%d.5,M,46.9,M,," % (clock, car))
    return message(STAMP + number * SECOND, rmc, gga)


def trace(count, car=0):
    parts = [fix(number, car) + (other(1, STAMP + number * SECOND, bytes([number % 256] * 9))
                                 if number % 3 == 0 else b"") for number in range(count)]
    return b"".join(parts)


def whole(paths):
    table = vextrace.frame(paths)
    return plain(table.drop(columns="message"))


def plain(table):
    return table.astype({"trace": str, "checksum": str}).reset_index(drop=True)


def expect_equal(table, expected):
    if not table.equals(expected):  # what tells the difference takes long for many rows
        pandas.testing.assert_frame_equal(table, expected)
        raise AssertionError("the tables differ")


def parts_of(path, boundaries):
    """The table of the parts of a trace that is cut at these bytes."""
    edges = [0, *sorted(boundaries)]
    tables = []
    for begin, end in zip(edges, [*edges[1:], None]):
        tables.append(vextrace.dask._read_part([(str(path), begin, end)], from_=0, until=2**64 - 1,
                                               unchecked=False, report=True, storage_options={}))
    parts = pandas.concat(tables)
    return plain(parts[parts.error.isna()].drop(columns="error"))


def columns_of(content, spans):
    """The columns of the parts of a trace as plain values, without what pandas makes of them."""
    table = vextrace._vextrace._FixTable(0, 2**64 - 1, False)
    for begin, end in spans:
        table.add(content, 0, begin, end)
    columns = table.take()
    del columns["message"]
    return {name: [part.tobytes() for part in (column if isinstance(column, tuple) else [column])]
            for name, column in columns.items()}


def test_the_parts_are_the_whole_at_every_boundary():
    content = trace(4) + b"noise" + trace(3)[5:]
    expected = columns_of(content, [(0, None)])
    assert len(expected["trace"][0]) == 6 * 4
    for boundary in range(len(content) + 1):
        assert columns_of(content, [(0, boundary), (boundary, None)]) == expected, boundary


def test_the_parts_are_the_whole_wherever_large_traces_are_cut(tmp_path):
    randoms = random.Random(1)
    content = bytearray(trace(30000))
    for _ in range(50):
        at = randoms.randrange(len(content))
        content[at:at + randoms.randrange(200)] = randoms.randbytes(randoms.randrange(200))
    path = tmp_path / "large.trace"
    path.write_bytes(content)
    expected = whole([path])
    for _ in range(5):
        boundaries = [randoms.randrange(len(content)) for _ in range(randoms.randrange(1, 6))]
        expect_equal(parts_of(path, boundaries), expected)


def test_small_traces_are_put_together_and_large_ones_divided():
    files = [("a", 10), ("b", 10), ("c", 25), ("d", 15), ("e", 0)]
    assert vextrace.dask._parts(files, 20) == [
        [("c", 0, 20)], [("c", 20, None)], [("a", 0, None), ("b", 0, None)],
        [("d", 0, None), ("e", 0, None)]]


def test_nothing_is_read_before_it_is_asked_for(tmp_path):
    path = tmp_path / "a.trace"
    path.write_bytes(trace(3))
    table = vextrace.dask.frame(str(path))
    path.unlink()
    assert list(table.columns) == [name for name in vextrace.COLUMNS if name != "message"]
    with pytest.raises(FileNotFoundError):
        table.compute(scheduler="synchronous")


def test_the_name_of_a_file_is_no_pattern(tmp_path):
    (tmp_path / "a1.trace").write_bytes(trace(3))
    (tmp_path / "a[1].trace").write_bytes(trace(5))
    path = str(tmp_path / "a[1].trace")
    assert vextrace.dask.frame(path).compute(scheduler="synchronous").trace.tolist() == [path] * 5
    both = vextrace.dask.frame(str(tmp_path / "a*.trace")).compute(scheduler="synchronous")
    assert len(both) == 8


def test_no_traces_are_an_empty_table():
    table = vextrace.dask.frame([])
    expected = vextrace.frame([]).drop(columns="message")
    expect_equal(plain(table.compute(scheduler="synchronous")), plain(expected))


@pytest.mark.parametrize("arguments, error", [
    ({"traces": "none/*.trace"}, FileNotFoundError), ({"traces": "none.trace"}, FileNotFoundError),
    ({"traces": [], "errors": "ignore"}, ValueError), ({"traces": 5}, TypeError)])
def test_wrong_arguments(arguments, error):
    with pytest.raises(error):
        vextrace.dask.frame(**arguments)


def test_what_is_wrong_is_raised_or_named(tmp_path):
    good, damaged, none, gone = (tmp_path / name for name in (
        "a.trace", "b.trace", "c.trace", "d.trace"))
    good.write_bytes(trace(3))
    damaged.write_bytes(trace(3) + b"noise" + trace(3))
    none.write_bytes(b"$GPRMC\r\n")
    gone.write_bytes(trace(3))
    names = [str(path) for path in (good, damaged, none, gone)]
    reported = vextrace.dask.frame(names, errors="report")
    raising = vextrace.dask.frame(names)
    gone.unlink()
    with pytest.raises((ValueError, OSError)):
        raising.compute(scheduler="synchronous")
    table = reported.compute(scheduler="synchronous")
    pandas.testing.assert_frame_equal(
        plain(table[table.error.isna()].drop(columns="error")), whole([good, damaged]))
    faults = table[table.error.notna()]
    assert dict(zip(faults.trace, faults.error)) == {
        str(damaged): f"damaged at byte {len(trace(3))}: " + faults.error.iloc[0].split(": ", 1)[1],
        str(none): "no trace: 8 bytes without any message",
        str(gone): "cannot be read: No such file or directory"}
    assert not faults.valid.any()


@pytest.fixture(scope="module")
def cluster():
    distributed = pytest.importorskip("distributed")
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as two:
        with distributed.Client(two) as client:
            yield client


@pytest.fixture(scope="module")
def fleet(tmp_path_factory):
    folder = tmp_path_factory.mktemp("fleet")
    for car in range(2000):
        (folder / f"{car:04}.trace").write_bytes(trace(20 + car % 7, car))
    return folder


def test_a_fleet_on_two_processes_is_the_table_of_one(cluster, fleet):
    table = vextrace.dask.frame(f"{fleet}/*.trace", blocksize="500kB")
    assert table.npartitions > 10
    expected = whole(sorted(fleet.glob("*.trace")))
    expect_equal(plain(table.compute()), expected)
    fastest = table[table.valid].groupby("trace").speed_kmh.max().compute()
    wanted = expected[expected.valid].groupby("trace").speed_kmh.max()
    assert fastest.astype(float).sort_index().to_dict() == wanted.to_dict()


def test_a_worker_that_is_killed_costs_nothing_but_time(cluster, fleet):
    table = vextrace.dask.frame(f"{fleet}/*.trace", blocksize="200kB")
    counts = table.map_partitions(slowly, meta=pandas.Series(dtype="int64"))
    result = cluster.compute(counts.sum())
    time.sleep(0.5)
    processes = cluster.run(os.getpid)
    os.kill(next(iter(processes.values())), signal.SIGKILL)
    assert result.result(timeout=120) == len(whole(sorted(fleet.glob("*.trace"))))


def slowly(part):
    time.sleep(0.05)
    return pandas.Series([len(part)])


def test_a_worker_stays_small_over_a_fleet(cluster, fleet, tmp_path):
    long = tmp_path / "long.trace"
    long.write_bytes(trace(30000))
    vextrace.dask.frame(f"{fleet}/*.trace", blocksize="1MB").valid.sum().compute()
    before = cluster.run(peak_memory)
    table = vextrace.dask.frame([f"{fleet}/*.trace", *[str(long)] * 40], blocksize="4MB")
    assert table.valid.sum().compute() > 1_200_000
    # These are 100 MB of tables. A worker that kept those of its own would grow by half of that.
    peaks = cluster.run(peak_memory)
    assert max(peaks.values()) < max(before.values()) + 20 * 10**6, (before, peaks)


def peak_memory():
    import resource

    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024
