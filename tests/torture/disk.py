"""A raw file whose disk is full for moments, at every misalignment, under load."""

import os
import random
import re
import resource
import subprocess
import time
from dataclasses import dataclass, field

from setting import BUILD, Drain, numbers_of, wait_for_handlers

SLOT = 64
UNLIMITED = resource.RLIM_INFINITY

MESSAGE = re.compile(r"Error 27 occurred writing data with debugid 0x5245c0e "
                     r"and timestamp 0x([0-9a-f]+)$")


@dataclass
class Tally:
    """What came of the moments so far."""

    moments: int = 0
    stored: int = 0
    messages: int = 0
    faults: list = field(default_factory=list)


def limit_file_size(process, size):
    resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (size, UNLIMITED))


def fill_up(process, trace, misalignment, source):
    """Lets the disk be full for a moment, so many bytes beyond a slot, a little further on."""
    slots = trace.stat().st_size // SLOT + source.randrange(4000)
    limit_file_size(process, slots * SLOT + misalignment)
    time.sleep(source.uniform(0.001, 0.02))
    limit_file_size(process, UNLIMITED)
    time.sleep(source.uniform(0, 0.01))


def check(trace, messages, tally):
    """Each record is stored or has its message, and none both."""
    data = trace.read_bytes()
    stored = numbers_of(data[SLOT:len(data) - len(data) % SLOT])
    lost = []
    for line in messages.decode().splitlines():
        message = MESSAGE.match(line)
        if message is None:
            tally.faults.append(f"message {line!r}")
            return
        lost.append(int(message[1], 16))
    if len(data) % SLOT or -1 in stored:
        tally.faults.append("a torn slot or one of garbage")
    elif sorted(stored + lost) != list(range(min(stored + lost), max(stored + lost) + 1)):
        tally.faults.append("records that are neither stored nor have a message, or both")
    elif stored != sorted(stored) or lost != sorted(lost):
        tally.faults.append("records out of order")
    tally.stored += len(stored)
    tally.messages += len(lost)


def torture(folder, seed, misalignments=range(SLOT), program=BUILD / "sonaprobe"):
    """One run in which the disk is full once at each misalignment. For use under a load."""
    source = random.Random(seed)
    tally = Tally()
    trace = folder / "trace"
    trace.unlink(missing_ok=True)
    # Messages come through a pipe, for the limit is one of all files.
    ours, theirs = os.pipe()
    with open(os.devnull, "w", encoding="ascii") as nowhere:
        process = subprocess.Popen([program, "-b", "200000", "-wtrace", "-X", "1"], cwd=folder,
                                   stdin=subprocess.DEVNULL, stdout=nowhere, stderr=theirs)
        os.close(theirs)
        messages = Drain(ours)
        try:
            wait_for_handlers(process)
            while not trace.exists() or trace.stat().st_size < 2 * SLOT:
                time.sleep(0.001)
            for misalignment in source.sample(misalignments, len(misalignments)):
                fill_up(process, trace, misalignment, source)
                tally.moments += 1
            process.terminate()
            if process.wait(20) != 0:
                tally.faults.append(f"status {process.returncode}")
        finally:
            process.kill()
            process.wait()
    check(trace, messages.finish(), tally)
    return tally
