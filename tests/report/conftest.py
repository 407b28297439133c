"""What the tests of the report share."""
import csv
import io
import pathlib
import subprocess

import pytest

from browser import browser

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DRIVE = PROJECT / "examples" / "data" / "drive.nmea"


def pytest_addoption(parser):
    parser.addoption("--vextrace", required=True, help="the program to test")
    parser.addoption("--long-trace", required=True, help="the program that writes a long trace")
    parser.addoption("--log-dir", default="", help="a folder of receiver logs to read, too")
    parser.addoption("--pictures", default="", help="a folder for pictures of pages")


def logs_of(config):
    """The project's log and, where a folder is given, all logs in it and below."""
    folder = config.getoption("--log-dir")
    found = []
    for pattern in ["**/*.nmea", "**/*.raw"]:
        found += sorted(pathlib.Path(folder).glob(pattern)) if folder else []
    return [DRIVE] + found


def pytest_generate_tests(metafunc):
    if "log" in metafunc.fixturenames:
        logs = logs_of(metafunc.config)
        metafunc.parametrize("log", logs, ids=[path.name for path in logs])


class Program:
    """Runs vextrace in a folder."""

    def __init__(self, path, folder):
        self.path = path
        self.folder = folder

    def run(self, *arguments, status=0, **options):
        done = subprocess.run([self.path, *arguments], cwd=self.folder, capture_output=True,
                              timeout=120, check=False, **options)
        assert done.returncode == status, done.stderr.decode(errors="replace")
        return done

    def record(self, log):
        """The trace of a log."""
        trace = self.folder / (pathlib.Path(log).stem + ".trace")
        self.run("record", "-o", trace, log)
        return trace

    def report(self, *traces, status=0):
        """The page of traces."""
        page = self.folder / "drive.html"
        self.run("report", "--force", "-o", page, *traces, status=status)
        return page

    def stamps(self, trace):
        """The time stamp of each message by its number, in nanoseconds."""
        lines = self.run("show", "--number", trace).stdout.split(b"\n")
        return {int(line.split()[0]): int(line.split()[1], 16) for line in lines if line}

    def rows(self, *traces):
        """The fixes of traces as export writes them, by column."""
        text = self.run("export", "--to", "csv", *traces).stdout.decode()
        return list(csv.DictReader(io.StringIO(text)))


@pytest.fixture
def program(request, tmp_path):
    return Program(pathlib.Path(request.config.getoption("--vextrace")).resolve(), tmp_path)


@pytest.fixture(scope="session")
def chromium(tmp_path_factory):
    with browser(tmp_path_factory.mktemp("profile")) as running:
        yield running


@pytest.fixture
def screen(chromium):
    """The browser, with an ordinary window."""
    chromium.look()
    return chromium


@pytest.fixture
def pictures(request):
    """The folder for pictures, or none."""
    folder = request.config.getoption("--pictures")
    if not folder:
        return None
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    return pathlib.Path(folder).resolve()
