"""Traces of vehicle data loggers with the sentences of GPS receivers, for Python.

The rules and the numbers are those of the program ``vextrace``, for they are the same code:
``frame()`` gives what ``vextrace export --to csv`` writes, bit for bit.

Examples
--------
>>> import vextrace
>>> trace = vextrace.record(
...     b"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\\r\\n")
>>> [item.fix.speed for item in vextrace.read(trace)]
[41.4848]
>>> vextrace.frame(trace).latitude_deg[0]
48.11729999999999
"""

import datetime
from collections.abc import Iterator
from typing import Optional, Union

from ._table import COLUMNS, Buffer, Source, fixes, frame
from ._vextrace import Damage, Fix, GPSTraceMessage, Message, __version__, _record, _TraceIterator

__all__ = [
    "COLUMNS",
    "Damage",
    "Fix",
    "GPSTraceMessage",
    "Message",
    "__version__",
    "fixes",
    "frame",
    "read",
    "record",
]


def read(trace: Source) -> Iterator[Union[Message, Damage]]:
    """Reads a trace message by message, over damage.

    Parameters
    ----------
    trace : str, os.PathLike, bytes-like or file object
        A path, the bytes of a trace, or an object with a method ``read`` that gives bytes. A file
        object is read on from where it stands.

    Returns
    -------
    iterator of Message or Damage
        In the order of the trace. Together they are all of its bytes.

    Raises
    ------
    FileNotFoundError, PermissionError, OSError
        When the file cannot be read.
    TypeError
        When it is nothing of the above.

    Examples
    --------
    >>> for item in vextrace.read("drive.trace"):  # doctest: +SKIP
    ...     if isinstance(item, vextrace.Damage):
    ...         print(item.offset, item.length, item.reason)
    ...     elif item.fix:
    ...         print(item.time, item.fix.latitude, item.fix.longitude)
    """
    return _TraceIterator(trace)


def record(log: Buffer, *, date: Optional[Union[str, datetime.date]] = None) -> bytes:
    """Records what a receiver sent, as the program ``vextrace record`` does.

    Parameters
    ----------
    log : bytes-like
        What the receiver sent; whatever else is among its sentences is left out.
    date : str or datetime.date, optional
        The day of what comes before any sentence brings one, such as ``"2026-11-21"``. Without it
        such stamps are a time of day only, and count as no time.

    Returns
    -------
    bytes
        The trace; empty where the log holds no sentence.

    Raises
    ------
    ValueError
        When ``date`` is no day.
    """
    return _record(log, "" if date is None else str(date))
