"""Every block of Python in the documents runs."""
import pathlib
import re

import pytest
from test_dask import trace

PROJECT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"(<!-- not run: .* -->\n)?```python\n(.*?)```", re.DOTALL)


def blocks_of(document):
    text = (PROJECT / document).read_text(encoding="utf-8")
    return [code for kept_back, code in BLOCK.findall(text) if not kept_back]


@pytest.mark.parametrize("document", ["README.md", "docs/fleet.md"])
def test_the_blocks_run(document, tmp_path, monkeypatch):
    fleet = tmp_path / "fleet"
    fleet.mkdir()
    for car in range(4):
        (fleet / f"{car:04}.trace").write_bytes(trace(100, car))
    (tmp_path / "drive.trace").write_bytes(trace(100))
    (tmp_path / "my.nmea").write_bytes((PROJECT / "examples/data/drive.nmea").read_bytes())
    monkeypatch.chdir(tmp_path)
    blocks = blocks_of(document)
    assert blocks
    names = {"__name__": "document"}
    for code in blocks:
        exec(compile(code, document, "exec"), names)  # pylint: disable=exec-used
