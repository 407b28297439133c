"""Runs the program where something is missing or scarce."""
import subprocess
import sys


def run_closed(vextrace, redirection, *arguments, **options):
    """Runs the program with a redirection of the shell, such as "<&-" or ">&-"."""
    options.setdefault("input", b"")
    if redirection.startswith("<"):
        options.pop("input")
    return subprocess.run(["sh", "-c", f'exec "$0" "$@" {redirection}', vextrace.program,
                           *map(str, arguments)], capture_output=True, check=False, **options)


# Tells the memory of its one child. A child has at least that of its parent, which is small.
MEASURE = """
import os, resource, sys
process = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ)
_, status = os.waitpid(process, 0)
usage = resource.getrusage(resource.RUSAGE_CHILDREN)
print(os.waitstatus_to_exitcode(status), usage.ru_maxrss * 1024, file=sys.stderr)
"""


def measured(command, **options):
    """Exit status of a command, the bytes of memory that it held at most, and what it told."""
    options.setdefault("stdin", subprocess.DEVNULL)
    done = subprocess.run([sys.executable, "-I", "-S", "-c", MEASURE, *map(str, command)],
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=True, **options)
    told, _, line = done.stderr.strip().rpartition(b"\n")
    status, memory = line.split()
    return int(status), int(memory), told


def peak_memory(command, **options):
    """Exit status of a command, and the bytes of memory that it held at most."""
    return measured(command, **options)[:2]
