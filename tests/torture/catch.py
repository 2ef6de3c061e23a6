"""Watches that are ended at any moment, killed, or without room on the disk, under load: no facility
is left, and each file is whole or not there; and every record that was posted is seen or lost."""

import bisect
import contextlib
import random
import re
import resource
import signal
import struct
import subprocess
import time
from dataclasses import dataclass, field

from setting import (AIM, BUILD, CLEAN, FOUR, can_aim, reset, status, wait_for_handlers)

HANG = 4  # seconds; an end takes less than one, but the machine may be busy
SLOT = 64
MARK = -1
DIVISOR, INVALID, EVENT = 0xFEEDFACE, 0xDEADBEEF, 0x05245C0E

# What the load posts, and what it does not.
AT_ONCE, NEVER = "OrvelHDAPath::enable", "longer 1h"

WATCHED = re.compile(r"sonascope: watched .*: ([\d,]+) records?[,;]")


@dataclass
class Tally:
    """What came of the rounds so far."""

    rounds: int = 0
    sent: int = 0  # signals
    files: int = 0
    slots: int = 0
    posted: int = 0  # in rounds that were counted
    seen: int = 0
    lost: int = 0
    killed: int = 0  # producers, in those
    slowest: float = 0
    faults: list = field(default_factory=list)


class Load:
    """Numbered events, posted all the while by a process that may be killed."""

    def __init__(self):
        self.process = None
        self.start()

    def start(self):
        self.process = subprocess.Popen([BUILD / "tests/torture-load", "1500", "1000"])

    def stop(self):
        self.process.kill()
        self.process.wait()

    def restart(self):
        self.stop()
        self.start()


@contextlib.contextmanager
def loaded():
    reset()
    load = Load()
    try:
        yield load
    finally:
        load.stop()


def numbers_of(slots):
    """The numbers of the load's events, and a mark for an invalid slot; None for garbage."""
    numbers = []
    for words in struct.iter_unpack("<6Q2IQ", slots):
        if words[6] == INVALID and not any(words[:6]):
            numbers.append(MARK)
        elif words[6] == EVENT and words[0] == words[2]:
            numbers.append(words[0])
        else:
            return None
    return numbers


def faults_of(data, buffer=100_000):
    """What is wrong with a file: each number follows the one before it, but where another process
    began to post, and so near to a mark, or to the end, as one pass is long."""
    if len(data) % SLOT or not data:
        return ["a torn file"]
    head = struct.unpack("<6Q2IQ", data[:SLOT])
    numbers = numbers_of(data[SLOT:])
    if (head[0], head[6]) != (24, DIVISOR) or numbers is None:
        return ["a slot of garbage"]
    marks = [at for at, number in enumerate(numbers) if number == MARK] + [len(numbers)]
    for at, (a, b) in enumerate(zip(numbers, numbers[1:])):
        if MARK not in (a, b) and b not in (a + 1, 1):
            near = bisect.bisect(marks, at)
            if min(abs(mark - at) for mark in marks[max(0, near - 1):near + 1]) > buffer:
                return ["lost records without a mark"]
    return []


class Round:
    """One watch, from its start to what is left behind."""

    def __init__(self, folder, source, load, tally):
        self.folder = folder
        self.source = source
        self.load = load
        self.tally = tally
        self.faults = []

    def start(self, *options, aim=(), buffer=100_000):
        for old in self.folder.iterdir():
            old.unlink()
        choose = self.source.choice
        self.buffer = buffer
        self.errors = open(self.folder / "stderr", "w+", encoding="ascii")
        self.process = subprocess.Popen(
            [*aim, BUILD / "sonascope", "catch", "-o", "new.raw", "--buffer", str(buffer),
             "--keep", choose(("0s", "50ms", "10s")), "--memory", choose(("512KiB", "64MiB")),
             *options],
            cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=self.errors)
        if not aim:
            wait_for_handlers(self.process)

    def any_options(self):
        choose = self.source.choice
        return ["--on", choose((AT_ONCE, NEVER)), "--after", choose(("0s", "5ms")),
                "--count", choose(("1", "3")), *choose(([], ["--save-on-end"])),
                *choose(([], [], ["--then", "info"]))]

    def wait(self, patience=HANG):
        try:
            return self.process.wait(patience)
        except subprocess.TimeoutExpired:
            self.faults.append("a hang")
            self.process.kill()
            self.process.wait()
            return None

    def shoot(self, longest):
        time.sleep(self.source.uniform(0, longest))
        begin = time.monotonic()
        for _ in range(self.source.choice((1, 1, 2, 3, 6))):
            self.process.send_signal(self.source.choice(FOUR))
            self.tally.sent += 1
            time.sleep(self.source.choice((0, 0.001)))
        code = self.wait()
        self.tally.slowest = max(self.tally.slowest, time.monotonic() - begin)
        return code

    def check_files(self, leftovers_allowed=False):
        """The files that were written; none is half."""
        names = sorted(path.name for path in self.folder.iterdir() if path.name != "stderr")
        files = [name for name in names if re.fullmatch(r"new(-\d)?\.raw", name)]
        if len(names) > len(files) and not leftovers_allowed:
            self.faults.append(f"left behind: {names}")
        for name in files:
            data = (self.folder / name).read_bytes()
            self.faults += faults_of(data, self.buffer)
            self.tally.slots += len(data) // SLOT
        self.tally.files += len(files)
        return files

    def text(self):
        self.errors.seek(0)
        text = self.errors.read()
        self.errors.close()
        return text

    def check_facility(self):
        now = status()
        left = {name: now[name] for name, value in CLEAN.items() if now[name] != value}
        if left:
            self.faults.append(f"left behind: {left}")
            reset()
        return now

    def signalled(self):
        if can_aim() and self.source.random() < 0.4:
            aim = (AIM, str(int(self.source.choice(FOUR))), str(self.source.randrange(300)),
                   str(self.source.randrange(self.source.choice((1, 300, 5000)))))
            self.tally.sent += 1
            self.start(*self.any_options(), aim=aim)
            code = self.wait(2 * HANG)
        else:
            self.start(*self.any_options())
            code = self.shoot(longest=0.1)
        files = self.check_files()
        if code != (0 if files else 1):
            self.faults.append(f"status {code} with {files}: {self.text()}")
        self.check_facility()

    def without_room(self):
        """The disk is full at some byte of the file."""
        self.start("--on", AT_ONCE, "--after", "20ms")
        resource.prlimit(self.process.pid, resource.RLIMIT_FSIZE,
                         (self.source.randrange(300_000), resource.RLIM_INFINITY))
        code = self.wait()
        files = self.check_files()
        if code != (0 if files else 2):
            self.faults.append(f"status {code} with {files}: {self.text()}")
        self.check_facility()

    def killed(self):
        """SIGKILL: the name stands for a whole file or none, and the next watch goes well."""
        self.start(*self.any_options())
        time.sleep(self.source.uniform(0, 0.1))
        self.process.kill()
        self.process.wait()
        self.tally.sent += 1
        self.check_files(leftovers_allowed=True)
        self.start("--on", AT_ONCE, "--after", "5ms", "--no-trace")
        if self.wait() != 0 or self.check_files() != ["new.raw"]:
            self.faults.append(f"after a kill: {self.text()}")
        reset()

    def counted(self, seconds=0.5):
        """Posted = seen + lost, while those who post are killed and the watch now and then sleeps
        for longer than its buffer lasts."""
        self.start("--on", NEVER, "--save-on-end",
                   buffer=self.source.choice((20_000, 100_000, 400_000)))
        end = time.monotonic() + self.source.uniform(0, 2 * seconds)
        while time.monotonic() < end:
            time.sleep(self.source.uniform(0, 0.1))
            if self.source.random() < 0.3:
                self.load.restart()
                self.tally.killed += 1
        self.process.send_signal(signal.SIGINT)
        self.tally.sent += 1
        code = self.wait()
        now = self.check_facility()
        self.check_files()
        watched = WATCHED.search(text := self.text())
        if code not in (0, 1) or watched is None:
            self.faults.append(f"status {code}: {text}")
            return
        posted, lost = int(now["posted"]), int(now["lost"])
        seen = int(watched[1].replace(",", ""))
        if posted != seen + lost:
            self.faults.append(f"posted {posted}, seen {seen}, lost {lost}")
        self.tally.posted += posted
        self.tally.seen += seen
        self.tally.lost += lost


SCENES = (Round.signalled, Round.signalled, Round.signalled, Round.without_room, Round.killed,
          Round.counted)


def torture(folder, seed, rounds, load, scenes=SCENES, tally=None):
    """Plays rounds and adds what came of them to the tally."""
    tally = tally or Tally()
    source = random.Random(seed)
    for _ in range(rounds):
        scene = source.choice(scenes)
        play = Round(folder, source, load, tally)
        scene(play)
        tally.rounds += 1
        tally.faults += [f"{scene.__name__}: {fault}" for fault in play.faults]
    return tally
