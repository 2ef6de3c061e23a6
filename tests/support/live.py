"""Live runs: sonaprobe and sonaprobe-sim as processes that share the trace facility."""

import os
import random
import signal
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, run_program
from records import pack, pack_lines

VERSION_LINE = "sonaprobe version:  100.45"

# What `sonaprobe-sim status` shows where nothing is left behind.
CLEAN = {"entries": "0", "nolog": "1", "flags": "0x0", "bufid": "0", "owner": "none",
         "interest": "0x40000 0x0 0xffffffff 0x0 0x0", "audio-debug-flags": "0"}


def sim(*arguments):
    """Runs sonaprobe-sim, which is to succeed; its output."""
    result = run_program(*arguments, program="sonaprobe-sim")
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout


def status():
    return dict(line.split(": ", 1) for line in sim("status").splitlines())


def left_behind():
    """What of the status is not as it is where nothing is left behind."""
    now = status()
    return {name: now[name] for name, value in CLEAN.items() if now[name] != value}


def until(condition, what):
    """Waits until something is true."""
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline, f"waited in vain until {what}"
        time.sleep(0.005)


def random_records(count, seed):
    """Slots of audio events of all classes, reproducible by seed, none of them a marker."""
    source = random.Random(seed)

    def debugid():
        audio_class, event, qualifier = (source.randrange(n) for n in (64, 25, 4))
        return 0x05240000 | audio_class << 10 | event << 2 | qualifier

    return b"".join(
        pack(debugid(), t=source.getrandbits(48), cpu=source.randrange(8),
             a1=source.getrandbits(64), a2=source.getrandbits(64), a3=source.randrange(1000),
             a4=source.randrange(8), a5=source.getrandbits(32))
        for _ in range(count))


class Run:
    """A live run whose outputs go to files, unless given another place."""

    def __init__(self, folder, options, outputs, prefix=()):
        self.out = folder / "stdout"
        self.err = folder / "stderr"
        with self.out.open("w") as out, self.err.open("w") as err:
            self.process = subprocess.Popen(
                [*prefix, BUILD / "sonaprobe", *map(str, options)], cwd=folder,
                **({"stdin": subprocess.DEVNULL, "stdout": out, "stderr": err} | outputs))

    def wait_for_tracing(self):
        owner = str(self.process.pid)
        until(lambda: self.process.poll() is not None or
              (status()["owner"], status()["nolog"]) == (owner, "0"), "tracing was enabled")
        assert self.process.poll() is None, self.err.read_text()

    def printed(self):
        """The whole lines so far, but the version line."""
        text = self.out.read_text(errors="surrogateescape")
        return [line for line in text[:text.rfind("\n") + 1].splitlines() if line != VERSION_LINE]

    def wait_for_lines(self, count):
        until(lambda: len(self.printed()) >= count, f"{count} lines were printed")

    def errors(self):
        return self.err.read_text().splitlines()

    def send(self, number):
        self.process.send_signal(number)

    def end(self, number=signal.SIGINT):
        """Ends the run by a signal; its exit status."""
        self.send(number)
        return self.process.wait(timeout=PATIENCE)


class Stage:
    """The facility, a folder, and the runs of one test."""

    def __init__(self, folder):
        self.folder = folder
        self.runs = []
        self.posted = 0

    def start(self, *options, tracing=True, prefix=(), **outputs):
        """Starts a run, by default with a small buffer, and waits until it is tracing. `prefix` is
        a command that executes the program."""
        if "-b" not in options:
            options = ("-b", 10000, *options)
        run = Run(self.folder, options, outputs, prefix)
        self.runs.append(run)
        if tracing:
            run.wait_for_tracing()
        return run

    def file(self, records):
        """A raw file of records, given as text or as slots."""
        data = pack_lines(records) if isinstance(records, str) else records
        self.posted += 1
        path = self.folder / f"posted-{self.posted}.raw"
        path.write_bytes(pack(0xFEEDFACE, t=24) + data)
        return path

    def post(self, records):
        """Posts records, all of which are to be logged; the raw file that holds them."""
        path = self.file(records)
        count = path.stat().st_size // 64 - 1
        assert sim("post", path) == f"{count} of {count} records logged\n"
        return path

    def read(self, *arguments):
        """The lines that --read prints."""
        result = run_program(*arguments)
        assert (result.stderr, result.returncode) == ("", 0)
        return result.stdout.splitlines()


@pytest.fixture
def stage(tmp_path, facility):
    if os.geteuid() != 0:
        pytest.skip("needs root")
    stage = Stage(tmp_path)
    yield stage
    for run in stage.runs:
        run.process.kill()
        run.process.wait()
