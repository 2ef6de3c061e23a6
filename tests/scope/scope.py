"""Running sonascope, and the traces that its tests read."""

import os
import pty
import subprocess

from conftest import BUILD, PATIENCE, run_program
from records import DIVISOR_MARKER, pack
from terminal import read_to_the_end

TICKS = 24  # a microsecond, as in every trace of these tests
ENABLE = 0x05245C0C  # OrvelHDAPath::enable, with start and end texts
FORMAT = 0x05245C1C  # OrvelHDAPath::setPathFormat
OVERLOAD = 0x21040000
START, END, POINT = 1, 2, 0


def scope(*arguments, **options):
    return run_program(*arguments, program="sonascope", **options)


def divisor(ticks=TICKS):
    return pack(DIVISOR_MARKER, t=ticks)


def record(code, qualifier, microseconds, thread=0xA5, **fields):
    """A record at a time after the clock's first second."""
    return pack(code | qualifier, t=TICKS * (1_000_000 + microseconds), a5=thread,
                **({"a1": 0x10} | fields))


def nested_calls():
    """A call of 400 µs inside one of 1,000 µs; 500 µs later another thread's point."""
    return b"".join([
        divisor(),
        record(ENABLE, START, 0),
        record(FORMAT, START, 100),
        record(FORMAT, END, 500, a4=0xE00002BC),
        record(ENABLE, END, 1000),
        record(ENABLE, POINT, 1500, thread=0xB6),
    ])


def at_terminal(*arguments, columns=80, variables=(), keep_pager=False):
    """What sonascope prints to a terminal of so many columns, and its status."""
    terminal, end = pty.openpty()
    subprocess.run(["stty", "cols", str(columns), "rows", "50", "-opost"], stdin=end, check=True)
    environment = {"PATH": os.environ["PATH"], "TERM": "xterm-256color", **dict(variables)}
    if not keep_pager:
        environment["PAGER"] = "cat"
    process = subprocess.Popen([BUILD / "sonascope", *map(str, arguments)], stdin=end, stdout=end,
                               stderr=end, env=environment)
    os.close(end)
    text = read_to_the_end(terminal).decode()
    os.close(terminal)
    return text, process.wait(PATIENCE)
