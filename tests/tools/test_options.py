"""Help, man page, manual and completion hold the same options."""
import re
import shutil
import subprocess

import pytest

from conftest import PROJECT

COMMANDS = ["record", "show", "info", "export", "check", "cut", "repair", "report"]
FORMATS = ["gpx", "geojson", "kml", "csv", "jsonl", "nmea"]
BASH = PROJECT / "completions" / "vextrace.bash"
ZSH = PROJECT / "completions" / "_vextrace"
FISH = PROJECT / "completions" / "vextrace.fish"
EVERYWHERE = {"-h", "--help"}


def options_in(text):
    return set(re.findall(r"(?<![\w-])(--[a-z]+|-[a-z])\b", text))


@pytest.fixture
def helped(vextrace):
    """The options that a command says it has."""

    def ask(command):
        lines = vextrace(command, "--help").stdout.decode().splitlines()
        begins = [line.split(None, 1)[0].split(",") for line in lines if line.startswith("  -")]
        return {name for names in begins for name in names}

    return ask


def section(command):
    """A command's part of the man page, as text."""
    page = (PROJECT / "docs" / "vextrace.1").read_text().replace("\\-", "-")
    return re.search(rf"^\.SH {command.upper()}\n(.*?)^\.SH ", page, re.S | re.M)[1]


@pytest.mark.parametrize("command", COMMANDS)
def test_the_man_page_has_every_option_and_no_other(helped, command):
    told = {line for line in section(command).splitlines() if re.match(r"\.BR? -|\.BI -", line)}
    assert options_in("\n".join(told)) == helped(command) - EVERYWHERE


def test_the_man_page_has_the_commands_and_no_other(vextrace):
    page = (PROJECT / "docs" / "vextrace.1").read_text()
    synopsis = re.search(r"^\.SH SYNOPSIS\n(.*?)^\.SH", page, re.S | re.M)[1]
    assert set(re.findall(r"vextrace ([a-z]+)", synopsis)) == {*COMMANDS, "help"}
    help_text = vextrace("--help").stdout.decode()
    commands = help_text[help_text.index("Subcommands:"):]
    assert re.findall(r"^  ([a-z]+) ", commands, re.M) == COMMANDS + ["help"]


def test_the_manual_has_every_option_and_no_other(helped):
    text = (PROJECT / "docs" / "program.md").read_text()
    every = set().union(*map(helped, COMMANDS)) - {"-h"}
    foreign = {"-m", "-n", "-r", "-c", "--component", "--install", "--build"}
    assert {name for name in options_in(text) if name.startswith("--")} - foreign <= every | {"--version"}
    assert {name for name in every if name.startswith("--")} <= options_in(text) | {"--help"}


def completed_by_bash(*words):
    script = (f'source "{BASH}"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vextrace; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "-c", script, "-", "vextrace", *words], capture_output=True, check=True)
    return set(done.stdout.decode().split())


@pytest.mark.parametrize("command", COMMANDS)
def test_bash_completes_the_options_of_a_command(helped, command):
    assert completed_by_bash(command, "-") == helped(command)


def test_bash_completes_commands_and_values_and_leaves_files(vextrace):
    assert completed_by_bash("") == {*COMMANDS, "help", "-h", "--help", "--version"}
    assert completed_by_bash("re") == {"record", "repair", "report"}
    assert completed_by_bash("help", "c") == {"check", "cut"}
    assert completed_by_bash("export", "--to", "") == set(FORMATS)
    assert completed_by_bash("export", "--format", "g") == {"gpx", "geojson"}
    assert completed_by_bash("show", "--to", "") == set()
    assert completed_by_bash("check", "--stamp", "a") == {"arrival"}
    assert completed_by_bash("show", "dr") == set()


@pytest.mark.parametrize("command", COMMANDS)
def test_zsh_completes_the_options_of_a_command(helped, command):
    case = re.search(rf"^        {command}\)\n(.*?);;", ZSH.read_text(), re.S | re.M)[1]
    offered = re.findall(r"^ +'(?:\([^)]*\)'\{([^}]*)\}'|(-[-a-z]+))\[", case, re.M)
    assert {name for names in offered for name in "".join(names).split(",")} == helped(command)


@pytest.mark.parametrize("command", COMMANDS)
def test_fish_completes_the_options_of_a_command(helped, command):
    lines = [line for line in FISH.read_text().splitlines() if f"'__vextrace_command {command}'" in line]
    names = {("--" if dash == "l" else "-") + name
             for line in lines for dash, name in re.findall(r" -([ls]) ([a-z]+)", line)}
    assert names == helped(command)


@pytest.mark.parametrize("shell, script", [("zsh", ZSH), ("fish", FISH)])
def test_other_shells_take_their_completion(shell, script):
    for name in COMMANDS + FORMATS:
        assert re.search(rf"\b{name}\b", script.read_text())
    if shutil.which(shell) is None:
        pytest.skip(f"there is no {shell} here")
    assert subprocess.run([shell, "-n", script], capture_output=True, check=False).stderr == b""


def test_fish_completes_what_stands_on_the_line(tmp_path):
    if shutil.which("fish") is None:
        pytest.skip("there is no fish here")

    def completed(line):
        done = subprocess.run(["fish", "-c", f'source "{FISH}"; complete -C "{line}"'], cwd=tmp_path,
                              env={"HOME": str(tmp_path), "PATH": "/usr/bin:/bin"},
                              capture_output=True, check=True)
        return {entry.split("\t")[0] for entry in done.stdout.decode().splitlines()}

    (tmp_path / "drive.trace").touch()
    assert completed("vextrace re") == {"record", "repair", "report"}
    assert completed("vextrace export --to g") == {"gpx", "geojson"}
    assert completed("vextrace cut --f") == {"--force", "--from"}
    assert completed("vextrace show dr") == {"drive.trace"}
