"""What the program says of command lines that it does not understand."""
import pytest


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
    ([], "A subcommand is required"),
])
def test_names_what_does_not_exist_and_what_is_near(vextrace, arguments, line):
    result = vextrace(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode() == f"vextrace: {line}\n"


def test_an_argument_behind_two_dashes_is_no_option(vextrace):
    result = vextrace("show", "--", "--fixs")
    assert result.returncode == 2
    assert result.stderr == b"vextrace: --fixs: cannot be read: No such file or directory\n"
