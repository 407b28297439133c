"""Fixes of traces as columns."""

from __future__ import annotations

import datetime
import os
from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any, Optional, Protocol, Union

import numpy

from . import _vextrace

if TYPE_CHECKING:
    import pandas

#: Bytes in memory; anything else with a buffer will do, too.
Buffer = Union[bytes, bytearray, memoryview]


class Readable(Protocol):
    """A file object that was opened in binary mode."""

    def read(self, size: int, /) -> bytes: ...


Source = Union[str, "os.PathLike[str]", "os.PathLike[bytes]", Buffer, Readable]
Time = Union[str, datetime.date, numpy.datetime64]
_Findings = list[tuple[str, _vextrace._Findings]]

_LATEST = 2**64 - 1
_CHECKSUMS = ("none", "wrong", "right")

#: What the columns are, with their units.
COLUMNS = {
    "trace": "name of the trace, as it was given",
    "message": "number of the message in its trace, from 1 on",
    "time_utc": "stamp of the message",
    "time_ns": "the same in nanoseconds since 1970",
    "valid": "whether the receiver calls the fix valid, and it has a position",
    "latitude_deg": "degrees, north positive",
    "longitude_deg": "degrees, east positive",
    "altitude_m": "metres above mean sea level",
    "speed_kmh": "km/h over ground",
    "course_deg": "degrees over ground",
    "satellites": "satellites in use",
    "quality": "of GGA: 0 no fix, 1 GPS, 2 differential, ...",
    "hdop": "horizontal dilution of precision",
    "checksum": "right, wrong or none, of the sentences that the fix comes from",
}

_UNITS = {
    "time_ns": "ns",
    "latitude_deg": "deg",
    "longitude_deg": "deg",
    "altitude_m": "m",
    "speed_kmh": "km/h",
    "course_deg": "deg",
}


def fixes(
    traces: Union[Source, Iterable[Source]],
    *,
    from_: Optional[Time] = None,
    until: Optional[Time] = None,
    unchecked: bool = False,
) -> dict[str, numpy.ndarray[Any, Any]]:
    """Reads the fixes of traces into arrays; a large trace is read by up to four threads.

    Parameters
    ----------
    traces : str, os.PathLike, bytes-like, file object, or a list of them
        As for `read`.
    from_, until : str, datetime.datetime or numpy.datetime64, optional
        Take only what is stamped in this span, both ends included. Text is UTC, such as
        ``"2026-11-21T12:35:19.5Z"``; so are times without a zone.
    unchecked : bool, optional
        Take sentences with a wrong checksum, too.

    Returns
    -------
    dict of str to numpy.ndarray
        The columns of ``vextrace export --to csv``; `COLUMNS` says what they are. A missing time is
        NaT, a missing measurement NaN; whole numbers are masked arrays.

    Raises
    ------
    FileNotFoundError, PermissionError, OSError
        When a file cannot be read.
    ValueError
        When one is no trace, or a time is none.

    Examples
    --------
    >>> columns = vextrace.fixes(["a.trace", "b.trace"])  # doctest: +SKIP
    >>> columns["speed_kmh"].max()  # doctest: +SKIP
    """
    columns, names, _ = _read(traces, from_, until, unchecked)
    columns["trace"] = numpy.array(names, dtype=object)[columns["trace"]]
    columns["checksum"] = numpy.array(_CHECKSUMS, dtype=object)[columns["checksum"]]
    for name in _MASKED:
        values, mask = columns[name]
        columns[name] = numpy.ma.MaskedArray(values, mask)
    return columns


def frame(
    traces: Union[Source, Iterable[Source]],
    *,
    from_: Optional[Time] = None,
    until: Optional[Time] = None,
    unchecked: bool = False,
) -> pandas.DataFrame:
    """Reads the fixes of traces into a pandas table.

    Parameters
    ----------
    traces, from_, until, unchecked
        As for `fixes`.

    Returns
    -------
    pandas.DataFrame
        The columns of ``vextrace export --to csv``; `COLUMNS` says what they are. ``trace`` and
        ``checksum`` are categories, whole numbers are nullable. ``attrs["units"]`` has the units;
        ``attrs["damage"]`` counts what was damaged: by name of the trace the places and the bytes.

    Raises
    ------
    FileNotFoundError, PermissionError, OSError, ValueError
        As of `fixes`.

    Examples
    --------
    >>> table = vextrace.frame("drive.trace", from_="2026-11-21T12:00")  # doctest: +SKIP
    >>> table[table.valid].speed_kmh.describe()  # doctest: +SKIP
    """
    columns, names, findings = _read(traces, from_, until, unchecked)
    table = _frame(columns, names)
    table.attrs["damage"] = _damage(findings)
    return table


def _damage(findings: _Findings) -> dict[str, dict[str, int]]:
    damage: dict[str, dict[str, int]] = {}
    for name, found in findings:
        if found.places:
            counts = damage.setdefault(name, {"places": 0, "bytes": 0})
            counts["places"] += found.places
            counts["bytes"] += found.damaged_bytes
    return damage


_MASKED = ("time_ns", "satellites", "quality")


def _read(
    traces: Union[Source, Iterable[Source]],
    from_: Optional[Time],
    until: Optional[Time],
    unchecked: bool,
) -> tuple[dict[str, Any], list[str], _Findings]:
    """Columns as they are filled, the names, and what was found in each trace."""
    table = _vextrace._FixTable(_stamp(from_, 0), _stamp(until, _LATEST), unchecked)
    sources = _sources(traces)
    names = [_name(source) for source in sources]
    numbers: dict[str, int] = {}
    for name in names:
        numbers.setdefault(name, len(numbers))
    findings = []
    for name, source in zip(names, sources):
        found = table.add(source, numbers[name])
        if not found.is_trace:
            raise ValueError(f"{name}: no trace: {_counted(found.bytes)} without any message")
        findings.append((name, found))
    return _taken(table), list(numbers), findings


def _taken(table: _vextrace._FixTable) -> dict[str, Any]:
    columns = table.take()
    columns["time_utc"] = columns["time_utc"].view("datetime64[ns]")
    return columns


def _frame(columns: dict[str, Any], names: Sequence[str]) -> pandas.DataFrame:
    import pandas

    columns["trace"] = pandas.Categorical.from_codes(columns["trace"].view("int32"), names)
    columns["checksum"] = pandas.Categorical.from_codes(columns["checksum"], _CHECKSUMS)
    for name in _MASKED:
        columns[name] = pandas.arrays.IntegerArray(*columns[name])
    table = pandas.DataFrame(columns, copy=False)
    table.attrs["units"] = dict(_UNITS)
    return table


def _sources(traces: Any) -> Sequence[Any]:
    if isinstance(traces, (list, tuple)):
        return traces
    if isinstance(traces, (str, os.PathLike)) or hasattr(traces, "read") or _is_buffer(traces):
        return [traces]
    return list(traces)


def _is_buffer(thing: Any) -> bool:
    """Whether it is bytes in memory; an array of names is none."""
    try:
        with memoryview(thing) as view:
            return not view.format.endswith(("O", "w"))  # objects, characters
    except TypeError:
        return False


def _name(source: Any) -> str:
    if isinstance(source, (str, os.PathLike)):
        return os.fsdecode(source)
    name = getattr(source, "name", "")
    return name if isinstance(name, str) else ""


def _counted(count: int) -> str:
    return "1 byte" if count == 1 else f"{count} bytes"


def _stamp(time: Any, default: int) -> int:
    """Nanoseconds since 1970 of what a user gave as a time."""
    if time is None:
        return default
    if isinstance(time, str):
        return _vextrace._stamp(time)
    if hasattr(time, "to_datetime64"):  # of pandas, in UTC
        time = time.to_datetime64()
    elif isinstance(time, datetime.datetime) and time.tzinfo is not None:
        time = time.astimezone(datetime.timezone.utc).replace(tzinfo=None)
    stamp = int(numpy.datetime64(time, "ns").astype("int64"))
    if stamp < 0:
        raise ValueError(f"no time of a trace: {time}")
    return stamp
