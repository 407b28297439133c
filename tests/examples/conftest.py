"""Where the example programs are."""
import pathlib

import pytest


def pytest_addoption(parser):
    parser.addoption("--examples", required=True, help="the folder of the example programs")


@pytest.fixture
def examples(request):
    return pathlib.Path(request.config.getoption("--examples")).resolve()
