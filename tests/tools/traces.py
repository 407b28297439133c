"""Traces and sentences, byte by byte, for the end-to-end tests."""
import datetime
import functools
import operator
import struct

SECOND = 1_000_000_000
DAY = 86_400 * SECOND
GPS = 22
CAN = 1


def sentence(body, end=b"\r\n"):
    """The sentence $body*hh with its right checksum; body without "$"."""
    checksum = functools.reduce(operator.xor, body, 0)
    return b"$" + body + b"*%02X" % checksum + end


def stored(text):
    """A sentence as a message keeps it."""
    text = text if text.endswith(b"\n") else text + b"\n"
    return text[:2] + b"P" + text[3:] if text.startswith(b"$G") else text


def message(stamp, *sentences, reserved=0):
    """A GPS message that holds the sentences."""
    held = {}
    for text in map(stored, sentences):
        held.setdefault(text[:6], text)
    payload = b"".join(held[code] for code in sorted(held))
    return other(GPS, stamp, payload, reserved)


def other(number, stamp, payload, reserved=0):
    """A message of the type with this id."""
    return struct.pack(">HHHQ", 12 + len(payload), number, reserved, stamp) + payload


def utc(text):
    """2019-02-05T02:09:35.5 as nanoseconds since 1970."""
    whole, _, fraction = text.partition(".")
    time = datetime.datetime.fromisoformat(whole + "+00:00")
    since = time - datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
    return (since.days * 86_400 + since.seconds) * SECOND + int((fraction + "0" * 9)[:9])
