"""The host-call build over its recording fake: what one run is to meet, and what it did."""

import os
import re
import resource
import signal
import subprocess
import time
from dataclasses import dataclass

import pytest

from conftest import BUILD, PATIENCE
from records import pack_lines

PROGRAM = BUILD / "sonaprobe-host-calls"

# The calls as the fake writes them: the words of the name; the old buffer's length and, where it is
# short, its words; the same of the new value.
REEXEC = "reexec_to_match_kernel"
TIMEBASE = "mach_timebase_info"
ENABLE = "sysctl 1 24 3 1"
DISABLE = "sysctl 1 24 3 0"
SETBUF = "sysctl 1 24 4"
GETBUF = "sysctl 1 24 5 old 20: 0 0 0 0 0"
SETUP = "sysctl 1 24 6"
REMOVE = "sysctl 1 24 7"
SETREG = "sysctl 1 24 8"
READTR = "sysctl 1 24 10"
GET_FLAGS = "sysctlbyname debug.Audio old 12: 0 0 0 new 12: 0x41554444 0 0"
SET_FLAGS = "sysctlbyname debug.Audio new 12: 0x41554444 0x1"
MALLOC = "malloc"


def read_of(records):
    """A KERN_KDREADTR with room for a number of records."""
    return f"{READTR} old {64 * records}"


def info(entries=0, nolog=0, flags=0, threads=0, bufid=0):
    """An answer to KERN_KDGETBUF."""
    return f"info {entries} {nolog} {flags} {threads} {bufid}"


WRAPPED = 0x8


def fail(call, error, nth=1):
    """The nth call whose line begins with `call` fails; 0: every one."""
    return f"fail {nth} {int(error)} {call}"


def stop_at(call, nth=1, by=signal.SIGINT):
    """The nth such call is interrupted by a signal, and answered."""
    return f"raise {nth} {int(by)} {call}"


def small_stack():
    resource.setrlimit(resource.RLIMIT_STACK, (128 << 10, 128 << 10))


@dataclass
class Outcome:
    calls: list
    stdout: str
    stderr: str
    returncode: int


class Host:
    """Runs the program over a script."""

    def __init__(self, folder):
        self.folder = folder
        self.log = folder / "calls"
        self.reads = 0
        self.process = None

    def read(self, text, count=None):
        """An answer to KERN_KDREADTR: records, and their number if it is not to be the true one."""
        data = pack_lines(text)
        path = self.folder / f"read-{self.reads}"
        path.write_bytes(data)
        self.reads += 1
        return f"read {len(data) // 64 if count is None else count} {path}"

    def start(self, options, *script):
        """Starts it with options, given as words or as a text of them."""
        words = options.split() if isinstance(options, str) else options
        path = self.folder / "script"
        path.write_text("".join(f"{line}\n" for line in script))
        self.log.write_text("")
        self.process = subprocess.Popen(
            [PROGRAM, *words], cwd=self.folder, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            preexec_fn=small_stack,
            env=os.environ | {"RECORDER_SCRIPT": path, "RECORDER_LOG": self.log})

    def calls(self):
        return self.log.read_text().splitlines()

    def finish(self):
        """What the run did, once it has ended; with "sonaprobe" as the program's name."""
        stdout, stderr = self.process.communicate(timeout=PATIENCE)
        return Outcome(self.calls(), stdout, stderr.replace(str(PROGRAM), "sonaprobe"),
                       self.process.returncode)

    def run(self, options, *script):
        self.start(options, *script)
        return self.finish()

    def wait_for(self, call, nth=1):
        """Waits until a call was made so often."""
        deadline = time.monotonic() + PATIENCE
        while sum(line.startswith(call) for line in self.calls()) < nth:
            assert time.monotonic() < deadline, f"{call} was not made {nth} times"
            time.sleep(0.001)


@pytest.fixture
def host(tmp_path):
    host = Host(tmp_path)
    yield host
    if host.process is not None:
        host.process.kill()
        host.process.wait()


def lines(text):
    """The lines of an indented block."""
    return re.sub(r"^\s+|\s+$", "", text, flags=re.MULTILINE).split("\n")
