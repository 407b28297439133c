"""Measures how fast the program vextrace passes over bytes of any kind that are in a trace.

Usage: benchBytes.py VEXTRACE TRACE FOLDER
  TRACE   a sound trace, in front of and behind the bytes
  FOLDER  where what is read goes
"""
import pathlib
import random
import resource
import struct
import subprocess
import sys
import zlib

SIZE = 8_000_000
ROUNDS = 3
STAMP = 1_700_000_000_000_000_000
VEXTRACE, TRACE, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
DRAWN = random.Random(1)


def header(size, number, stamp):
    return struct.pack(">HHHQ", size, number, 0, stamp)


def repeated(pattern):
    return (pattern * (SIZE // len(pattern) + 1))[:SIZE]


def headers(sizes, numbers, first, step):
    """Nothing but headers, the size fields of which lead to one another."""
    return b"".join(header(14 * DRAWN.randrange(1, sizes) - 2, DRAWN.choice(numbers),
                           first + i * step)
                    for i in range(SIZE // 14))


def overlapping(period):
    """Containers of which each holds most of the next."""
    pattern = bytearray(header(0xF000, 12, STAMP) + bytes(period - 14))
    pattern[14:18] = struct.pack(">HH", period - 2, 1)
    return repeated(bytes(pattern))


def words():
    """Headers of few types and other short bytes in any order."""
    choice = [header(0x3AB6, 8, 0xD28D), header(0x4D0D, 15, 0xD28D), b"\x7b\x00\xd3\x9b\xf1",
              b"\xa6\x00\x00\x00", b"\x27\xfd\x00", b"\x91"]
    return b"".join(DRAWN.choice(choice) for _ in range(SIZE // 5))[:SIZE]


def kinds(trace):
    program = pathlib.Path(VEXTRACE).read_bytes()
    text = pathlib.Path(__file__).read_bytes()
    yield "a sound trace", repeated(trace)[:SIZE // len(trace) * len(trace)]
    yield "noise", DRAWN.randbytes(SIZE)
    yield "code", repeated(program)
    yield "compressed", repeated(zlib.compress(program))
    yield "text", repeated(text)
    for pattern in (b"\0", b"\xff", b"\xc0\0", b"\0\x16", b"\xff\xff\0\2", b"\xc0\1\xc0\1\0\1",
                    b"\0\x10\xc0\1\0\0\0", b"\x10\0\xc0\1\0\0\0\0"):
        yield f"pattern {pattern.hex()}", repeated(pattern)
    yield "16 bit counter", repeated(struct.pack(">65536H", *range(65536)))
    yield "32 bit counter", struct.pack(f">{SIZE // 4}I", *range(SIZE // 4))
    yield "headers", headers(4600, (0xC001, 1), STAMP, 1_000_000_000)
    yield "short headers", headers(9, (0xC001,), 1000, 1)
    yield "named headers", headers(9, (1, 4, 8), 1000, 1)
    yield "same headers", headers(5, (13, 0xDFFF), 0xC78B, 0)
    yield "containers", overlapping(20)
    yield "long containers", overlapping(40)
    yield "words", words()


def seconds(path):
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime
    before = used()
    run = subprocess.run([VEXTRACE, "info", path], capture_output=True, check=False)
    if run.returncode not in (0, 1):  # 1 where there is damage
        sys.exit(f"status {run.returncode}: {run.stderr[:1000].decode(errors='replace')}")
    return used() - before


def beginning(path, length):
    """The first messages of a trace."""
    trace = b""
    with open(path, "rb") as file:
        while len(trace) < length and (size := file.read(2)):
            trace += size + file.read(int.from_bytes(size, "big"))
    return trace


def main():
    trace = beginning(TRACE, 50_000)
    print(f"{'bytes in a trace':<28} {'speed':>10}  {'of sound ones':>13}  wanted")
    sound = None
    path = FOLDER / "bytes.trace"
    for name, data in kinds(trace):
        path.write_bytes(trace + data + trace)
        speed = len(data) / min(seconds(path) for _ in range(ROUNDS)) / 1e6
        sound = sound or speed
        print(f"{name:<28} {speed:5.0f} MB/s  {speed / sound:13.2f}  at least 20 MB/s")


main()
