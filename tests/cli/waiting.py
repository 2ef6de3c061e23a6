"""Waiting for a program under test, but not for ever."""

import pathlib
import select
import signal
import time

from conftest import PATIENCE

ENDING_SIGNALS = (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP, signal.SIGTERM)


def read_line(stream):
    """The next line of a pipe that has been read to the end of the last one."""
    ready, _, _ = select.select([stream], [], [], PATIENCE)
    assert ready, "no line came"
    return stream.readline()


def wait_until(condition):
    limit = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < limit, "it did not come true"
        time.sleep(0.005)


def wait_until_waiting(process):
    """Until a program has its signal handlers and sleeps."""

    def waiting():
        status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
        fields = dict(line.split(":\t", 1) for line in status.splitlines())
        caught = int(fields["SigCgt"], 16)
        return fields["State"].startswith("S") and all(caught >> number - 1 & 1
                                                       for number in ENDING_SIGNALS)

    wait_until(waiting)
