"""Runs the program where something is missing or scarce."""
import os
import subprocess


def run_closed(vextrace, redirection, *arguments, **options):
    """Runs the program with a redirection of the shell, such as "<&-" or ">&-"."""
    options.setdefault("input", b"")
    if redirection.startswith("<"):
        options.pop("input")
    return subprocess.run(["sh", "-c", f'exec "$0" "$@" {redirection}', vextrace.program,
                           *map(str, arguments)], capture_output=True, check=False, **options)


def peak_memory(command, **options):
    """Bytes of memory that a command that succeeds, or finds damage, held at most."""
    with open(os.devnull, "wb") as nothing:
        process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                                   stdout=nothing, stderr=nothing, **options)
        _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode in (0, 1)
    return usage.ru_maxrss * 1024
