"""vextrace record on serial lines."""
import os
import pathlib
import pty
import select
import shutil
import stat
import subprocess
import tempfile
import termios

import pytest

from model import recording
from recorders import NEVER, NEXT, PATIENCE, RMC, STAMP, is_raw, set_rate, wait_until
from traces import message


def test_sets_a_line_up_and_puts_it_back(start, line):
    receiver, serial, name = line
    set_rate(serial, termios.B4800)
    before = termios.tcgetattr(serial)
    recorder = start("--idle", NEVER, "--baud", "115200", name)
    wait_until(lambda: is_raw(serial))
    assert termios.tcgetattr(serial)[4:6] == [termios.B115200] * 2
    # Nothing is swallowed, turned or sent back: these mean much to a terminal that is not raw.
    raw = bytes(range(1, 32)) + b"\x7f\x80\xff"
    checked = b"$P" + raw.replace(b"\r", b"").replace(b"\n", b"")
    checked += b"*%02X\r\n" % recording.xor(checked[1:])
    os.write(receiver, RMC + b"\x03\x04\x11\x13\x1a\x1c" + checked + NEXT)
    recorder.wait_for(message(STAMP, RMC, checked))
    assert not select.select([receiver], [], [], 0)[0]
    recorder.stop()
    assert termios.tcgetattr(serial) == before


def test_keeps_the_rate_of_a_line_unless_told(start, line):
    _, serial, name = line
    set_rate(serial, termios.B4800)
    recorder = start(name)
    wait_until(lambda: is_raw(serial))
    assert termios.tcgetattr(serial)[4:6] == [termios.B4800] * 2
    recorder.stop()


def test_takes_a_line_on_standard_input(start, line):
    receiver, serial, _ = line
    recorder = start("--idle", NEVER, stdin=serial)
    wait_until(lambda: is_raw(serial))
    os.write(receiver, RMC + NEXT)
    recorder.wait_for(message(STAMP, RMC))
    recorder.stop()


def test_refuses_rates_that_lines_do_not_have(vextrace, line, tmp_path):
    _, serial, name = line
    before = termios.tcgetattr(serial)
    for rate in ("0", "13", "9601"):
        result = vextrace("record", "--baud", rate, "-o", "trace", name)
        assert result.returncode == 2
        assert result.stderr.decode() == (f"vextrace: --baud: {rate} is no rate of a serial line, such as 4800, "
                                          "9600, 38400, 115200\n")
    assert termios.tcgetattr(serial) == before
    assert not (tmp_path / "trace").exists()


def test_does_not_write_to_the_line_it_reads(vextrace, line):
    receiver, serial, name = line
    before = termios.tcgetattr(serial)
    result = vextrace("record", "-o", name, name)
    assert (result.returncode, result.stderr.decode()) == (2, f"vextrace: {name}: is the input itself\n")
    assert termios.tcgetattr(serial) == before


def test_leaves_the_users_own_terminal_as_it_is(vextrace, tmp_path):
    pid, terminal = pty.fork()
    if pid == 0:
        os.chdir(tmp_path)
        os.execv(vextrace.program, [vextrace.program, "record", "-o", "trace"])
    try:
        os.write(terminal, RMC.replace(b"\r", b"") + b"\x04")
        _, status = os.waitpid(pid, 0)
        assert os.waitstatus_to_exitcode(status) == 0
        assert (tmp_path / "trace").read_bytes() == message(STAMP, RMC.replace(b"\r", b""))
    finally:
        os.close(terminal)


@pytest.mark.parametrize("rate", [1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000,
                                  576000, 921600, 1000000, 1152000, 1500000, 2000000, 2500000, 3000000,
                                  3500000, 4000000])
def test_sets_each_rate_and_listens(start, line, rate):
    """Without the modem's signals, which most receivers do not have."""
    _, serial, name = line
    recorder = start("--baud", rate, name)
    wait_until(lambda: is_raw(serial))
    settings = termios.tcgetattr(serial)
    assert settings[4:6] == [getattr(termios, f"B{rate}")] * 2
    assert settings[2] & termios.CLOCAL and settings[2] & termios.CREAD
    recorder.stop()


@pytest.fixture
def closed_line(tmp_path):
    """A serial line that nobody but its owner may read, in a folder that everyone may use."""
    folder = pathlib.Path(tempfile.mkdtemp())
    try:
        folder.chmod(0o777)
        os.mknod(folder / "line", 0o600 | stat.S_IFCHR, os.makedev(4, 64))
        yield folder / "line"
    except PermissionError as error:
        pytest.skip(f"no device can be made here: {error}")
    finally:
        shutil.rmtree(folder)


def test_names_the_group_that_may_read_lines(vextrace, closed_line):
    program = shutil.copy(vextrace.program, closed_line.parent)
    refused = subprocess.run([program, "record", "-o", "trace", closed_line], cwd=closed_line.parent, user=65534,
                             capture_output=True, check=False, timeout=PATIENCE)
    assert (refused.returncode, refused.stdout) == (2, b"")
    assert refused.stderr.decode() == (
        f"vextrace: {closed_line}: cannot be read: Permission denied; the group dialout may read serial lines: "
        'sudo adduser "$USER" dialout, then log in anew\n')
