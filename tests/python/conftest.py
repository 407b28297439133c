"""What the tests of the Python module share."""
import pathlib
import subprocess
import sys

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DRIVE = PROJECT / "examples" / "data" / "drive.nmea"
sys.path.insert(0, str(PROJECT / "tests" / "tools"))  # traces.py


def pytest_addoption(parser):
    parser.addoption("--vextrace", required=True, help="the program to compare with")
    parser.addoption("--log-dir", default="", help="a folder of receiver logs to read, too")


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
def program(request, tmp_path):
    """Runs the program in a folder of its own and gives what it printed."""
    path = str(pathlib.Path(request.config.getoption("--vextrace")).resolve())

    def run(*arguments, status=0):
        ended = subprocess.run([path, *map(str, arguments)], cwd=tmp_path, capture_output=True,
                               timeout=120, check=False)
        assert ended.returncode == status, ended.stderr
        return ended.stdout

    return run


@pytest.fixture
def drive(program, tmp_path):
    """The project's log, recorded."""
    trace = tmp_path / "drive.trace"
    program("record", "-o", trace, DRIVE)
    return trace
