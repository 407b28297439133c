"""Fixes of a fleet as a table of Dask: read in parts, by as many processes and machines as there are.

A part is a trace, or a span of bytes of a large one, or several small ones. The scheduler moves
names and spans alone; each worker reads its traces itself, wherever ``fsspec`` reaches.

Examples
--------
>>> import vextrace.dask
>>> fixes = vextrace.dask.frame("fleet/*.trace", blocksize="64MB")  # doctest: +SKIP
>>> fixes[fixes.valid].groupby("trace").speed_kmh.max().compute()  # doctest: +SKIP
"""

from __future__ import annotations

import os
from collections.abc import Iterable
from typing import Any, Optional, Union

import dask.dataframe
import fsspec
import pandas
from dask.dataframe.utils import clear_known_categories
from dask.utils import parse_bytes

from . import _table, _vextrace

__all__ = ["frame"]

_Name = Union[str, "os.PathLike[str]"]
_Span = tuple[str, int, Optional[int]]
_Errors = list[tuple[str, str]]


def frame(
    traces: Union[_Name, Iterable[_Name]],
    *,
    blocksize: Union[str, int] = "64MB",
    from_: Optional[_table.Time] = None,
    until: Optional[_table.Time] = None,
    unchecked: bool = False,
    errors: str = "raise",
    storage_options: Optional[dict[str, Any]] = None,
) -> dask.dataframe.DataFrame:
    """Makes a table of the fixes of many traces; reads none of them yet.

    Parameters
    ----------
    traces : str, os.PathLike, or a list of them
        Names, patterns such as ``"fleet/*.trace"``, or URLs that ``fsspec`` knows. What is the name
        of a file is no pattern. Every worker must reach them by these names.
    blocksize : str or int, optional
        Bytes of a part: smaller traces are put together, larger ones divided.
    from_, until, unchecked
        As for `vextrace.frame`.
    errors : {"raise", "report"}, optional
        What becomes of a trace that is damaged, is no trace, or cannot be read: the computation
        ends with ``ValueError`` or ``OSError``, or the table gets a column ``error``, empty but in a
        row for each such place that names the trace and says what is wrong. The fixes around a
        damage are there in both.
    storage_options : dict, optional
        For ``fsspec``.

    Returns
    -------
    dask.dataframe.DataFrame
        The columns of `vextrace.frame` but for ``message``: a part that begins inside of a trace
        does not know how many messages lie before it.

    Raises
    ------
    FileNotFoundError
        When a pattern or a name matches nothing.
    ValueError
        When a time, a size or ``errors`` is none.
    """
    if errors not in ("raise", "report"):
        raise ValueError(f'errors is "raise" or "report", not {errors!r}')
    options: dict[str, Any] = {
        "from_": _table._stamp(from_, 0),
        "until": _table._stamp(until, _table._LATEST),
        "unchecked": bool(unchecked),
        "report": errors == "report",
        "storage_options": storage_options or {},
    }
    parts = _parts(_files(traces, options["storage_options"]), parse_bytes(blocksize)) or [[]]
    return dask.dataframe.from_map(
        _read_part, parts, meta=_meta(options["report"]), label="vextrace", **options
    )


def _files(
    traces: Union[_Name, Iterable[_Name]], storage_options: dict[str, Any]
) -> list[tuple[str, int]]:
    """Names and sizes, in the order that was given; those of a pattern in that of their names."""
    if isinstance(traces, (str, os.PathLike)):
        traces = [traces]
    files: list[tuple[str, int]] = []
    for given in traces:
        pattern = os.fspath(given)
        system, path = fsspec.core.url_to_fs(pattern, **storage_options)
        if not _is_pattern(path) or system.exists(path):
            files.append((_url(system, path), system.size(path)))
            continue
        found = system.glob(path, detail=True)  # sizes with the names: no question for each file
        if not found:
            raise FileNotFoundError(f"no file matches {pattern}")
        files.extend((_url(system, name), found[name]["size"]) for name in sorted(found))
    return files


def _is_pattern(path: str) -> bool:
    return any(character in path for character in "*?[")


def _url(system: Any, name: str) -> str:
    return name if _is_local(system) else str(system.unstrip_protocol(name))


def _is_local(system: Any) -> bool:
    return system.protocol == "file" or "file" in system.protocol


def _parts(files: list[tuple[str, int]], blocksize: int) -> list[list[_Span]]:
    """Spans of about ``blocksize`` bytes together: name, begin, end; the last end of a name is None."""
    if blocksize < 1:
        raise ValueError("blocksize is at least 1 byte")
    parts: list[list[_Span]] = []
    small: list[_Span] = []
    size = 0
    for name, length in files:
        if length > blocksize:
            begins = range(0, length, blocksize)
            ends: list[Optional[int]] = [*begins[1:], None]
            parts.extend([(name, begin, end)] for begin, end in zip(begins, ends))
            continue
        if small and size + length > blocksize:
            parts.append(small)
            small, size = [], 0
        small.append((name, 0, None))
        size += length
    if small:
        parts.append(small)
    return parts


def _read_part(
    spans: list[_Span],
    *,
    from_: int,
    until: int,
    unchecked: bool,
    report: bool,
    storage_options: dict[str, Any],
) -> pandas.DataFrame:
    table = _vextrace._FixTable(from_, until, unchecked)
    names: dict[str, int] = {}
    errors: _Errors = []
    for name, begin, end in spans:
        number = names.setdefault(name, len(names))
        try:
            errors += _read_span(table, number, name, begin, end, storage_options)
        except OSError as error:
            if not report:
                raise
            errors.append((name, f"cannot be read: {error.strerror or error}"))
    if errors and not report:
        raise ValueError("; ".join(f"{name}: {reason}" for name, reason in errors))
    return _part(table, list(names), errors if report else None)


def _read_span(
    table: _vextrace._FixTable,
    number: int,
    name: str,
    begin: int,
    end: Optional[int],
    storage_options: dict[str, Any],
) -> _Errors:
    system, path = fsspec.core.url_to_fs(name, **storage_options)
    if _is_local(system):
        found = table.add(path, number, begin, end)
    else:
        with system.open(path, "rb") as file:
            found = table.add(file, number, begin, end)
    if not found.is_trace and begin == 0:
        return [(name, f"no trace: {_table._counted(found.bytes)} without any message")]
    if found.places == 0:
        return []
    further = f", and {found.places - 1} more places" if found.places > 1 else ""
    return [(name, f"damaged at byte {found.first_damage}: {found.first_reason}{further}")]


def _part(
    table: _vextrace._FixTable, names: list[str], errors: Optional[_Errors]
) -> pandas.DataFrame:
    columns = _table._taken(table)
    del columns["message"]
    part = _table._frame(columns, names)
    if errors is None:
        return part
    part["error"] = pandas.array([pandas.NA] * len(part), dtype="string")
    if not errors:
        return part
    faults = part.iloc[:0].reindex(range(len(errors)))
    faults["trace"] = pandas.Categorical([name for name, _ in errors], names)
    faults["valid"] = False
    faults["error"] = pandas.array([reason for _, reason in errors], dtype="string")
    return pandas.concat([part, faults.astype(part.dtypes)], ignore_index=True)


def _meta(report: bool) -> pandas.DataFrame:
    """An empty part, whose traces are not known yet."""
    part = _part(_vextrace._FixTable(0, 0, False), [], [] if report else None)
    return clear_known_categories(part, cols=["trace"])
