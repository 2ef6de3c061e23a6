"""Running a program under test beside the test, and waiting for it, but not for ever."""

import contextlib
import datetime
import pathlib
import select
import signal
import subprocess
import time

from conftest import PATIENCE

ENDING_SIGNALS = (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP, signal.SIGTERM)


@contextlib.contextmanager
def started(*command, **options):
    """A program that runs beside the test and, whatever happens, not longer than the test."""
    settings = {"stdout": subprocess.PIPE} | options
    with subprocess.Popen(list(map(str, command)), **settings) as process:
        try:
            yield process
        finally:
            if process.poll() is None:
                process.kill()


def read_line(stream):
    """The next line of a pipe that has been read to the end of the last one."""
    ready, _, _ = select.select([stream], [], [], PATIENCE)
    assert ready, "no line came"
    return stream.readline()


def status_of(process):
    """What the kernel says of a process, by name."""
    text = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return dict(line.split(":\t", 1) for line in text.splitlines())


def local_times(action, pattern, hours=0):
    """The result of an action and the times of day, as text, that a program may show in it."""
    zone = datetime.timezone(datetime.timedelta(hours=hours))
    # The clock that programs ask for whole seconds lags behind by a timer tick.
    begin = datetime.datetime.now(zone) - datetime.timedelta(seconds=0.05)
    result = action()
    end = datetime.datetime.now(zone)
    seconds = range(int(end.timestamp()) - int(begin.timestamp()) + 1)
    return result, [(begin + datetime.timedelta(seconds=n)).strftime(pattern) for n in seconds]


def wait_until(condition):
    limit = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < limit, "it did not come true"
        time.sleep(0.0005)


def has_handlers(process):
    caught = int(status_of(process)["SigCgt"], 16)
    return all(caught >> number - 1 & 1 for number in ENDING_SIGNALS)


def wait_until_waiting(process):
    """Until a program has its signal handlers and sleeps."""
    wait_until(lambda: has_handlers(process) and status_of(process)["State"].startswith("S"))
