"""Signals at random and at exact moments of a loaded run, and what must hold after each."""

import os
import random
import signal
import subprocess
import time
from dataclasses import dataclass, field

from setting import (AIM, BUILD, CLEAN, FOUR, LINE, OPTIONS, VERSION_LINE, Drain, can_aim,
                     numbers_of, reset, status, wait_for_handlers, wait_until_full)

# When a run counts as hanging. It must end within a second; the machine may be busy.
HANG = 4

SLOT = 64


@dataclass
class Tally:
    """What came of the rounds so far."""

    rounds: int = 0
    faulty: int = 0  # rounds
    sent: int = 0
    lines: int = 0
    slots: int = 0
    slowest: float = 0
    faults: list = field(default_factory=list)


def faults_of_lines(text, cut_allowed):
    """What is wrong with the lines of the load in a text, and their numbers."""
    text = text.removeprefix(VERSION_LINE)
    whole = text[:text.rfind(b"\n") + 1]
    lines = whole.splitlines(keepends=True)
    numbers = []
    for line in lines:
        try:
            numbers.append(int(line.split(b" channelID")[0].rsplit(b" ", 1)[-1], 16))
        except ValueError:
            return [f"torn line {line!r}"], numbers
        if line != LINE % numbers[-1]:
            return [f"torn line {line!r}"], numbers
    faults = []
    if any(b <= a for a, b in zip(numbers, numbers[1:])):
        faults.append("doubled lines")
    if len(whole) != len(text):
        rest = text[len(whole):]
        fits = numbers and (LINE % (numbers[-1] + 1)).startswith(rest)
        if not cut_allowed or not fits:
            faults.append(f"torn last line {rest!r}")
    return faults, numbers


def faults_of_slots(data, cut_allowed):
    """The same of the slots of a raw file."""
    whole = len(data) - len(data) % SLOT
    if data and not whole and not cut_allowed:
        return ["a torn slot"], []
    numbers = numbers_of(data[SLOT:whole])
    faults = ["a torn slot"] if whole != len(data) and not cut_allowed else []
    if -1 in numbers:
        faults.append("a slot of garbage")
    elif any(b <= a for a, b in zip(numbers, numbers[1:])):
        faults.append("doubled slots")
    return faults, numbers


class Round:
    """One run of the program, from its start to what is left behind."""

    def __init__(self, program, folder, source, tally):
        self.program = program
        self.folder = folder
        self.source = source
        self.tally = tally
        self.faults = []
        self.inherited = {}  # what an owner before this one may have left

    def start(self, *options, stdout, aim=()):
        self.errors = open(self.folder / "stderr", "w+b")
        self.process = subprocess.Popen([*aim, self.program, "-b", "100000", *OPTIONS, *options],
                                        cwd=self.folder, stdin=subprocess.DEVNULL, stdout=stdout,
                                        stderr=self.errors)
        if not aim:
            wait_for_handlers(self.process)

    def exact_moment(self):
        """What sends one signal where it hurts: on the way back from a system call of the set-up or
        of the passes, before the program has noted what it did, or some instructions later."""
        number = self.source.choice(FOUR)
        calls = self.source.randrange(self.source.choice((60, 600)))
        steps = self.source.randrange(self.source.choice((1, 300, 5000)))
        self.tally.sent += 1
        return (AIM, str(int(number)), str(calls), str(steps))

    def shoot(self, longest=0.03):
        """Waits a moment, sends a signal or a storm of them, and waits for the end."""
        time.sleep(self.source.uniform(0, longest))
        begin = time.monotonic()
        for _ in range(self.source.choice((1, 1, 2, 3, 6))):
            self.process.send_signal(self.source.choice(FOUR))
            self.tally.sent += 1
            if self.source.random() < 0.5:
                time.sleep(self.source.uniform(0, 0.002))
        self.wait_for_the_end(begin)

    def start_and_shoot(self, *options, stdout):
        """Runs until a signal that comes at an exact moment or at a random one."""
        if can_aim() and self.source.random() < 0.5:
            self.start(*options, stdout=stdout, aim=self.exact_moment())
            self.wait_for_the_end()
        else:
            self.start(*options, stdout=stdout)
            self.shoot()

    def shoot_at_waiting(self, pipe):
        """Shoots at a program that fills a pipe which nobody reads, often once it is full."""
        if self.source.random() < 0.5:
            wait_until_full(pipe)
        self.shoot(longest=0.1)

    def wait_for_the_end(self, begin=None):
        """Waits for the end after a signal at this time, longer after one that is to come."""
        try:
            code = self.process.wait(2 * HANG if begin is None else HANG)
        except subprocess.TimeoutExpired:
            self.faults.append("a hang")
            self.process.kill()
            self.process.wait()
            reset()
            return
        if begin is not None:
            self.tally.slowest = max(self.tally.slowest, time.monotonic() - begin)
        if code != 0:
            self.faults.append(f"status {code}")

    def end(self, messages_allowed=False):
        self.errors.seek(0)
        text = self.errors.read()
        self.errors.close()
        if text and not messages_allowed:
            self.faults.append(f"message {text[:200]!r}")
        now = status()
        left = {name: now[name] for name, value in CLEAN.items()
                if now[name] not in (value, self.inherited.get(name))}
        if left and "a hang" not in self.faults:
            self.faults.append(f"left behind: {left}")
        if left:
            reset()

    def lines(self, text, cut_allowed=False):
        faults, numbers = faults_of_lines(text, cut_allowed)
        self.faults += faults
        self.tally.lines += len(numbers)
        return numbers

    def slots(self, data, cut_allowed=False):
        faults, numbers = faults_of_slots(data, cut_allowed)
        self.faults += faults
        self.tally.slots += len(numbers)
        return numbers

    def into_a_file(self):
        with open(self.folder / "stdout", "w+b") as out:
            self.start_and_shoot(stdout=out)
            out.seek(0)
            self.lines(out.read())
        self.end()

    def into_a_pipe(self):
        ours, theirs = os.pipe()
        drain = Drain(ours)
        with os.fdopen(theirs, "wb") as out:
            self.start_and_shoot(stdout=out)
        self.lines(drain.finish())
        self.end()

    def into_a_raw_file(self):
        trace = self.folder / "trace"
        trace.unlink(missing_ok=True)
        with open(self.folder / "stdout", "w+b") as out:
            self.start_and_shoot("-wtrace", stdout=out)
            out.seek(0)
            printed = self.lines(out.read())
        stored = self.slots(trace.read_bytes() if trace.exists() else b"")
        if printed != stored and not self.faults:
            self.faults.append("what is printed is not what is stored")
        self.end()

    def into_a_pipe_that_nobody_reads(self):
        ours, theirs = os.pipe()
        self.start(stdout=theirs)
        os.close(theirs)
        self.shoot_at_waiting(ours)
        drain = Drain(ours)
        self.lines(drain.finish(), cut_allowed=True)
        self.end()

    def into_a_raw_pipe_that_nobody_reads(self):
        fifo = self.folder / "fifo"
        fifo.unlink(missing_ok=True)
        os.mkfifo(fifo)
        ours = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK)
        with open(self.folder / "stdout", "w+b") as out:
            self.start("-wfifo", stdout=out)
            self.shoot_at_waiting(ours)
            out.seek(0)
            self.lines(out.read())
        os.set_blocking(ours, True)
        self.slots(Drain(ours).finish(), cut_allowed=True)
        self.end(messages_allowed=True)

    def from_a_pipe_without_data(self):
        fifo = self.folder / "input"
        fifo.unlink(missing_ok=True)
        os.mkfifo(fifo)
        writer = os.open(fifo, os.O_RDWR) if self.source.random() < 0.5 else None
        with open(self.folder / "stdout", "w+b") as out:
            self.start("-r", "input", stdout=out)
            self.shoot()
            out.seek(0)
            self.lines(out.read())
        if writer is not None:
            os.close(writer)
        self.end()

    def killed(self):
        """SIGKILL: the raw file reads back, and the next run takes the facility."""
        trace = self.folder / "trace"
        trace.unlink(missing_ok=True)
        with open(self.folder / "stdout", "w+b") as out:
            self.start("-wtrace", stdout=out)
            time.sleep(self.source.uniform(0, 0.03))
            self.process.kill()
            self.process.wait()
        self.tally.sent += 1
        self.slots(trace.read_bytes() if trace.exists() else b"", cut_allowed=True)
        self.errors.close()
        self.inherited = {"audio-debug-flags": "1"}
        self.into_a_file()
        reset()


SCENES = (Round.into_a_file, Round.into_a_pipe, Round.into_a_raw_file, Round.into_a_raw_file,
          Round.into_a_pipe_that_nobody_reads, Round.into_a_raw_pipe_that_nobody_reads,
          Round.from_a_pipe_without_data, Round.killed)

# What shows each mutant of the signal handler.
MUTANTS = {
    "sonaprobe-acts-at-once": (Round.into_a_file, Round.into_a_pipe, Round.into_a_raw_file),
    "sonaprobe-without-timer": (Round.into_a_pipe_that_nobody_reads,
                                Round.into_a_raw_pipe_that_nobody_reads),
}


def torture(folder, seed, rounds, program=BUILD / "sonaprobe", scenes=SCENES, tally=None):
    """Plays rounds and adds what came of them to the tally. For use under a load."""
    tally = tally or Tally()
    source = random.Random(seed)
    for _ in range(rounds):
        scene = source.choice(scenes)
        play = Round(program, folder, source, tally)
        scene(play)
        tally.rounds += 1
        tally.faulty += bool(play.faults)
        tally.faults += [f"{scene.__name__}: {fault}" for fault in play.faults]
    return tally
