"""What the program says of command lines that it does not understand."""
import pytest

from conftest import DRIVE
from samples import SMALL


@pytest.mark.parametrize("arguments, line", [
    (["rekord"], "rekord: no command; did you mean record?"),
    (["xport", "--to", "gpx"], "xport: no command; did you mean export?"),
    (["frobnicate"], "frobnicate: no command"),
    (["--verion"], "--verion: no option of vextrace; did you mean --version?"),
    (["show", "--fixs", "a"], "--fixs: no option of show; did you mean --fix?"),
    (["export", "--too", "gpx", "a"], "--too: no option of export; did you mean --to?"),
    (["export", "--forze=1", "--to", "gpx", "a"], "--forze: no option of export; did you mean --force?"),
    (["info", "--jason"], "--jason: no option of info; did you mean --json?"),
    (["show", "--wonderful", "a"], "--wonderful: no option of show"),
    (["show", "-x", "a"], "-x: no option of show"),
    (["sh\x1bow"], "sh\\x1bow: no command; did you mean show?"),
    (["repair", "a"], "OUT is required"),
    (["help", "rekord"], "rekord: no command; did you mean record?"),
    (["helpp"], "helpp: no command; did you mean help?"),
    (["help", "record", "sh\x1bow"], "sh\\x1bow: is one name too many"),
    (["help", "record", "--fix"], "--fix: no option of record"),
    (["show", "a", "b\x1b", "c"], "b\\x1b: is one name too many"),
    (["check", "a", "b", "c"], "c: is one name too many"),
    (["show", "--from", "2026-11-21", "a", "--from=2026-11-22"], "--from: is given 2 times"),
    (["export", "--to", "gpx", "--format", "csv", "a"], "--to: is given 2 times"),
    (["export", "-oa", "--output", "b", "--to", "csv", "a"], "-o: is given 2 times"),
    (["export", "a"], "--to: name a format, one of gpx, geojson, kml, csv, jsonl, nmea; or an output "
                      "behind -o that ends in one"),
    (["export", "-o", "a.txt", "a"], "--to: name a format, one of gpx, geojson, kml, csv, jsonl, nmea; "
                                     "or an output behind -o that ends in one"),
])
def test_names_what_does_not_exist_and_what_is_near(vextrace, arguments, line):
    result = vextrace(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode() == f"vextrace: {line}\n"


@pytest.mark.parametrize("arguments, name", [
    (["repair", "--force", "-o", "", "a", "b"], "-o"),
    (["repair", "--force", "--output=", "a", "b"], "--output"),
    (["export", "--force", "--to", "csv", "--output=", "a", "b"], "--output"),
    (["record", "--append", "--output=", "a", "log"], "--output"),
    (["record", "log", "--force", "--output", ""], "--output"),
    (["cut", "--from=", "2026-11-21", "a"], "--from"),
    (["show", "--raw", "--until", "", "a"], "--until"),
    (["info", "--gap=", "5", "a"], "--gap"),
    (["export", "--to=", "csv", "a"], "--to")])
def test_no_argument_takes_the_place_of_an_empty_value(vextrace, tmp_path, arguments, name):
    for file in ("a", "b"):
        (tmp_path / file).write_bytes(SMALL)
    (tmp_path / "log").write_bytes(DRIVE.read_bytes())
    result = vextrace(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode() == f"vextrace: {name}: its value is empty\n"
    assert (tmp_path / "a").read_bytes() == (tmp_path / "b").read_bytes() == SMALL
    assert len(list(tmp_path.iterdir())) == 3


def test_an_empty_argument_is_no_empty_value_where_none_is_due(vextrace, tmp_path):
    (tmp_path / "--from=").write_bytes(SMALL)
    wanted = vextrace("show", "./--from=")
    assert vextrace("show", "--", "--from=").stdout == wanted.stdout != b""
    assert vextrace("show", "--utc", "").stderr == (
        b"vextrace: : cannot be read: No such file or directory\n")
    assert vextrace("record", "-o", "--from=", "").stderr == (
        b"vextrace: : cannot be read: No such file or directory\n")


def test_an_argument_behind_two_dashes_is_no_option(vextrace):
    result = vextrace("show", "--", "--fixs")
    assert result.returncode == 2
    assert result.stderr == b"vextrace: --fixs: cannot be read: No such file or directory\n"


def test_help_is_shown_however_it_is_asked_for(vextrace):
    whole = vextrace("--help")
    assert (whole.returncode, whole.stderr) == (0, b"")
    assert whole.stdout.startswith(b"Records GPS receivers as traces")
    for arguments in ([], ["help"], ["-h"]):
        result = vextrace(*arguments)
        assert (result.returncode, result.stdout, result.stderr) == (0, whole.stdout, b"")
    one = vextrace("export", "--help")
    assert b"--unchecked" in one.stdout and b"Example: vextrace export" in one.stdout
    for arguments in (["help", "export"], ["help", "export", "--help"]):
        assert vextrace(*arguments).stdout == one.stdout


def test_the_format_follows_from_the_name_and_is_taken_in_any_case(vextrace, tmp_path):
    (tmp_path / "a.trace").write_bytes(SMALL)
    wanted = vextrace("export", "--to", "gpx", "a.trace").stdout
    assert wanted.startswith(b"<?xml")
    for arguments in (["-o", "b.gpx"], ["-o", "c.GPX"], ["--format", "Gpx", "-o", "d"],
                      ["--to", "GPX", "-o", "e.csv"]):
        assert vextrace("export", *arguments, "a.trace").returncode == 0
        assert (tmp_path / arguments[-1]).read_bytes() == wanted


def test_until_and_to_are_the_same_word_of_show(vextrace):
    for option in ("--until", "--to"):
        result = vextrace("show", option, "1994-03-23T12:35:19Z", "-", input=SMALL)
        assert (result.returncode, result.stdout.count(b"\n")) == (0, 1)


@pytest.mark.parametrize("command", [["show"], ["info"], ["export", "--to", "csv"], ["report", "-o", "a.html"],
                                     ["cut", "--from", "1970-01-01", "-o", "a.trace"]])
def test_a_log_where_a_trace_is_wanted_is_recognised(vextrace, tmp_path, command):
    (tmp_path / "a.nmea").write_bytes(DRIVE.read_bytes())
    result = vextrace(*command, "a.nmea")
    assert result.returncode == 1
    assert result.stderr.decode().splitlines()[0] == (
        "vextrace: a.nmea: no trace: 48878 bytes without any message; it looks like NMEA: "
        "vextrace record first")


def test_a_trace_and_a_log_that_are_swapped_are_recognised(vextrace, tmp_path):
    (tmp_path / "a.nmea").write_bytes(DRIVE.read_bytes())
    assert vextrace("record", "-o", "a.trace", "a.nmea").returncode == 0
    assert vextrace("check", "a.nmea", "a.trace").returncode == 0
    result = vextrace("check", "a.trace", "a.nmea")
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr == (b"vextrace: LOG and TRACE are swapped: a.trace is a trace, and a.nmea "
                             b"looks like NMEA\n")
