"""Makes a long log of a short one: repeats it with times and dates that go on, and right checksums.

Usage: longLog.py LOG LENGTH >LONG_LOG, LENGTH in bytes
"""
import datetime
import functools
import operator
import re
import sys

TIMED = {b"RMC": 1, b"GGA": 1, b"GNS": 1, b"ZDA": 1, b"GST": 1, b"GBS": 1, b"GLL": 5}
START = datetime.datetime(2026, 1, 1)


def seconds_of(time):
    return int(time[:2]) * 3600 + int(time[2:4]) * 60 + int(time[4:6])


def parse(line):
    """The fields of a sentence, without its checksum, and the seconds of its time where it has one."""
    fields = line.partition(b"*")[0].split(b",")
    place = TIMED.get(fields[0][3:6]) if line.startswith(b"$") and b"*" in line else None
    timed = place is not None and len(fields) > place and re.match(rb"\d{6}", fields[place])
    return fields, place, seconds_of(fields[place]) if timed else None


def moved(fields, place, moment):
    """The sentence at another moment."""
    fields = list(fields)
    fields[place] = moment.strftime("%H%M%S").encode() + fields[place][6:]
    if fields[0].endswith(b"RMC") and len(fields) > 9 and fields[9]:
        fields[9] = moment.strftime("%d%m%y").encode()
    if fields[0].endswith(b"ZDA"):
        fields[2:5] = moment.strftime("%d,%m,%Y").encode().split(b",")
    body = b",".join(fields)
    return body + b"*%02X\r\n" % functools.reduce(operator.xor, body[1:], 0)


def main():
    with open(sys.argv[1], "rb") as log:
        lines = [(line, *parse(line)) for line in log]
    wanted = int(sys.argv[2])
    times = [seconds for _, _, _, seconds in lines if seconds is not None]
    first, period = times[0], (times[-1] - times[0]) % 86400 + 1
    written = repetitions = 0
    while written < wanted:
        start = START + datetime.timedelta(seconds=repetitions * period)
        for line, fields, place, seconds in lines:
            if seconds is not None:
                since = datetime.timedelta(seconds=(seconds - first) % 86400)
                line = moved(fields, place, start + since)
            written += sys.stdout.buffer.write(line)
        repetitions += 1


main()
