"""What the end-to-end tests of the program share."""
import contextlib
import os
import pathlib
import pty
import stat
import subprocess

import pytest

from recorders import Recorder

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DRIVE = PROJECT / "examples" / "data" / "drive.nmea"


def pytest_addoption(parser):
    parser.addoption("--vextrace", required=True, help="the program to test")
    parser.addoption("--log-dir", default="", help="a folder of receiver logs to read, too")
    parser.addoption("--streams", default=300, type=int,
                     help="how many mixed streams are recorded and compared with the model")
    parser.addoption("--all-changes", action="store_true",
                     help="try every value of every byte, which takes an hour")


def pytest_configure(config):
    config.addinivalue_line("markers", "memory: measures the memory that the program takes")


def logs_of(config):
    """The project's log and, where a folder is given, all logs in it and below."""
    folder = config.getoption("--log-dir")
    found = sorted(pathlib.Path(folder).glob("**/*.nmea")) if folder else []
    found += sorted(pathlib.Path(folder).glob("**/*.raw")) if folder else []
    return [DRIVE] + found


def pytest_generate_tests(metafunc):
    if "log" in metafunc.fixturenames:
        logs = logs_of(metafunc.config)
        metafunc.parametrize("log", logs, ids=[path.name for path in logs])


@pytest.fixture
def all_changes(request):
    """Whether every value of a byte is tried, or one."""
    return request.config.getoption("--all-changes")


@pytest.fixture
def full(tmp_path):
    """The name of a full device, which a mistake of the superuser may remove."""
    if os.geteuid() != 0:
        return "/dev/full"
    name = tmp_path / "full"
    try:
        os.mknod(name, 0o600 | stat.S_IFCHR, os.makedev(1, 7))
        name.open("wb").close()
    except OSError as error:
        pytest.skip(f"no device can be made here: {error}")
    return str(name)


@pytest.fixture
def vextrace(request, tmp_path):
    """Runs the program in a folder of its own: vextrace("record", ..., input=b"...")."""
    program = str(pathlib.Path(request.config.getoption("--vextrace")).resolve())

    def run(*arguments, **options):
        options.setdefault("cwd", tmp_path)
        options.setdefault("timeout", 60)
        if "stdin" not in options:
            options.setdefault("input", b"")
        arguments = [part if isinstance(part, bytes) else str(part) for part in arguments]
        return subprocess.run([program, *arguments], capture_output="stdout" not in options,
                              check=False, **options)

    run.program = program
    return run


@pytest.fixture
def start(vextrace, tmp_path):
    """Starts recorders; none outlives its test."""
    with contextlib.ExitStack() as stack:
        def run(*options, **streams):
            recorder = Recorder(vextrace.program, tmp_path, *options, **streams)
            stack.callback(recorder.process.wait)
            stack.callback(recorder.process.kill)
            return recorder
        yield run


@pytest.fixture
def pipe():
    """(read end, write end), closed at the end where they are not."""
    ends = os.pipe()
    yield ends
    for end in ends:
        with contextlib.suppress(OSError):
            os.close(end)


@pytest.fixture
def line():
    """(receiver's end, serial line, its name)"""
    receiver, serial = pty.openpty()
    yield receiver, serial, os.ttyname(serial)
    for end in (receiver, serial):
        with contextlib.suppress(OSError):
            os.close(end)
