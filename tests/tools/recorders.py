"""Recorders that run beside a test."""
import array
import fcntl
import os
import signal
import subprocess
import termios
import time

from traces import sentence, utc

PATIENCE = 20  # seconds; far more than anything here takes
NEVER = "86400000"
RMC = sentence(b"GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A")
GSV = sentence(b"GPGSV,1,1,01,01,40,083,46")
GGA = sentence(b"GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
NEXT = sentence(b"GPRMC,123520,A,4807.039,N,01131.001,E,022.5,084.5,230394,003.1,W,A")
LAST = sentence(b"GPRMC,123521,A,4807.040,N,01131.002,E,022.6,084.6,230394,003.1,W,A")
STAMP = utc("1994-03-23T12:35:19")
NEXT_STAMP = utc("1994-03-23T12:35:20")
LAST_STAMP = utc("1994-03-23T12:35:21")


class Recorder:
    """A recorder that runs, with its input and the trace that it writes."""

    def __init__(self, program, folder, *options, **streams):
        self.trace_path = folder / "trace"
        arguments = ["record", *map(str, options)] + ([] if "stdout" in streams else ["-o", "trace"])
        # Nobody's own terminal: a session of its own.
        self.process = subprocess.Popen([program, *arguments], cwd=folder, stderr=subprocess.PIPE,
                                        start_new_session=True, **streams)

    def trace(self):
        return self.trace_path.read_bytes() if self.trace_path.exists() else b""

    def wait_for(self, expected):
        """Until the trace is that long; then it must be that."""
        deadline = time.monotonic() + PATIENCE
        while len(self.trace()) < len(expected) and time.monotonic() < deadline:
            assert self.process.poll() is None, self.process.stderr.read()
            time.sleep(0.002)
        assert self.trace() == expected

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.end()

    def end(self):
        """(status, lines on standard error)"""
        _, told = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, told.decode().splitlines()


def unread(end):
    count = array.array("i", [0])
    fcntl.ioctl(end, termios.FIONREAD, count)
    return count[0]


def is_raw(serial):
    return not termios.tcgetattr(serial)[3] & (termios.ICANON | termios.ECHO | termios.ISIG)


def set_rate(serial, rate):
    settings = termios.tcgetattr(serial)
    settings[4] = settings[5] = rate
    termios.tcsetattr(serial, termios.TCSANOW, settings)


def wait_until(condition):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.002)


def feed(end, data, rng):
    """In pieces of 1 to 7 bytes, with pauses."""
    while data:
        size = rng.randint(1, 7)
        os.write(end, data[:size])
        data = data[size:]
        if rng.random() < 0.1:
            time.sleep(rng.random() * 0.003)
