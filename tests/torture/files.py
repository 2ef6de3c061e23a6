"""Commands that write, broken off by signals at any moment, by a full disk and by readers that
leave: a new file is whole or not there, an old one is kept, the input is as it was; what is printed
is a beginning of the whole, and the status tells."""

import contextlib
import ctypes
import os
import pathlib
import random
import signal
import subprocess
import time
from dataclasses import dataclass, field

from setting import BUILD

RECORDS = 20_000
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGKILL)
PAGE = 4096
OLD = b"precious"
FULL = ("No space left on device", "disk is full")

# Each writes one file at {new}; {source} is the trace.
WRITERS = {
    "cut": "cut {source} -o {new}",
    "repair": "repair {source} -o {new}",
    "timeline": "timeline {source} -o {new}",
    **{name: f"export {{source}} --to {name} -o {{new}}"
       for name in ("json", "csv", "sqlite", "chrome", "speedscope", "folded", "callgrind")},
    "partition": "export {source} --to csv --partition --host h --date d -o {folder}",
}
PRINTERS = {
    "lines": "lines {source}",
    "tree": "tree {source} --json",
    "page": "timeline {source} -o -",
    "printed json": "export {source} --to json",
    "printed chrome": "export {source} --to chrome",
    "completion": "completion bash",
}
COMMANDS = WRITERS | PRINTERS


@dataclass
class Tally:
    rounds: int = 0
    whole: int = 0
    none: int = 0
    kept: int = 0  # old files
    full: int = 0  # rounds with a full disk
    left: int = 0  # rounds in which the reader left
    faults: list = field(default_factory=list)


@contextlib.contextmanager
def small_disk(folder, size):
    """A file system of its own in the folder. Needs root."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.mount(b"none", bytes(folder), b"tmpfs", 0, f"size={size}".encode()) != 0:
        raise OSError(ctypes.get_errno(), "could not mount a tmpfs")
    try:
        yield folder
    finally:
        libc.umount(bytes(folder))


def play(command, after, sent, output=subprocess.DEVNULL):
    """Runs the command, sends the signal after so many seconds; (status, what it said)."""
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                          stderr=subprocess.PIPE) as process:
        if sent is not None:
            time.sleep(after)
            process.send_signal(sent)
        said = process.stderr.read().decode()
        return process.wait(60), said


class Folder:
    """Where one command writes, and what it makes undisturbed."""

    def __init__(self, name, source, place):
        self.name, self.source, self.place = name, source, place
        place.mkdir(exist_ok=True)
        begin = time.monotonic()
        result = subprocess.run(self.command(place), stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, check=True)
        self.seconds = time.monotonic() - begin
        self.expected = (self.new(place).read_bytes() if name in WRITERS else result.stdout)
        self.clear(place)

    def new(self, place):
        return place / ("host=h/date=d/part-source.csv" if self.name == "partition" else "new")

    def command(self, place, *options):
        words = COMMANDS[self.name].format(source=self.source, new=self.new(place), folder=place)
        return [BUILD / "sonascope", *words.split(), *options]

    def files(self, place):
        return {path for path in place.rglob("*") if path.is_file()}

    def clear(self, place):
        for path in self.files(place):
            path.unlink()

    def full_size(self, chance):
        """Of a disk with room for a part of what is written."""
        pages = len(self.expected) // PAGE
        return PAGE * chance.randint(1, max(1, pages - 1))


def write_round(folder, place, chance, sent, tally):
    """A file is written; without a signal, onto a disk that becomes full."""
    new = folder.new(place)
    has_old, forced = chance.random() < 0.5, chance.random() < 0.5
    if has_old:
        new.parent.mkdir(parents=True, exist_ok=True)
        new.write_bytes(OLD)
    after = chance.uniform(0, 1.2 * folder.seconds)
    status, said = play(folder.command(place, *["--force"] * forced), after, sent)
    found = new.read_bytes() if new.exists() else None
    refused = has_old and not forced
    is_full = sent is None
    if found == folder.expected and not is_full and not refused:
        tally.whole += 1
        if status not in (0, -sent):
            yield f"status {status} of a whole file"
    elif found == (OLD if has_old else None) and status != 0:
        tally.kept += has_old
        tally.none += not has_old
    else:
        yield f"status {status}, {'no file' if found is None else len(found)}"
    # Nothing can be done about SIGKILL; the rest has another name.
    leftover = folder.files(place) - {new}
    if leftover and sent != signal.SIGKILL:
        yield f"{leftover} is left"
    if is_full and not refused:
        tally.full += 1
        if status != 2 or not any(text in said for text in FULL):
            yield f"status {status}, said {said!r} of a full disk"


def print_round(folder, place, chance, sent, tally):
    """Something is printed: into a file until a signal comes, or until the disk is full."""
    with open(place / "printed", "wb") as output:
        after = chance.uniform(0, 1.2 * folder.seconds)
        status, said = play(folder.command(place), after, sent, output)
    found = (place / "printed").read_bytes()
    tally.whole += found == folder.expected
    if not folder.expected.startswith(found):
        yield "what is printed is no beginning of the whole"
    if sent is None:
        tally.full += 1
        if status != 2 or not any(text in said for text in FULL):
            yield f"status {status}, said {said!r} of a full disk"
    elif status not in (0, -sent) or (status == 0) != (found == folder.expected):
        # The last bytes may have been written when the signal came.
        if found != folder.expected:
            yield f"status {status} of {len(found)} bytes"


def read_exactly(pipe, count):
    """Not a byte more, as a file object might to fill its buffer."""
    found = b""
    while len(found) < count and (some := os.read(pipe.fileno(), count - len(found))):
        found += some
    return found


def leave_round(folder, place, chance, tally):
    """The reader of what is printed leaves after some bytes."""
    with subprocess.Popen(folder.command(place), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        found = read_exactly(process.stdout, chance.randint(0, len(folder.expected)))
        process.stdout.close()
        said = process.stderr.read().decode()
        status = process.wait(60)
    tally.left += 1
    if not folder.expected.startswith(found):
        yield "what is printed is no beginning of the whole"
    # A pipe holds 64 KiB that nobody reads.
    complete = len(found) + (1 << 16) >= len(folder.expected)
    if said or (status != 2 and not (status == 0 and complete)):
        yield f"status {status}, said {said!r} after {len(found)} bytes"


def torture(folder, seed, rounds, names=tuple(COMMANDS)):
    """So many rounds of each of the commands."""
    tally = Tally()
    chance = random.Random(seed)
    source, disk = folder / "source.raw", folder / "disk"
    disk.mkdir(exist_ok=True)
    subprocess.run([BUILD / "sonaprobe-sim", "write", "all", source, "--records", str(RECORDS)],
                   check=True)
    data = source.read_bytes() + b"torn"
    source.write_bytes(data)
    for name in names:
        target = Folder(name, source, folder / "target")
        for number in range(rounds):
            leaves = name in PRINTERS and number % 3 == 1
            is_full = number % 10 == 0
            sent = None if is_full else chance.choice(SIGNALS)
            with (small_disk(disk, target.full_size(chance)) if is_full
                  else contextlib.nullcontext(target.place)) as place:
                if leaves:
                    faults = leave_round(target, place, chance, tally)
                else:
                    play_round = write_round if name in WRITERS else print_round
                    faults = play_round(target, place, chance, sent, tally)
                tally.faults += [f"seed {seed}, round {number}: {name}, {sent}: {fault}"
                                 for fault in faults]
                target.clear(pathlib.Path(place))
            tally.rounds += 1
    if source.read_bytes() != data:
        tally.faults.append(f"seed {seed}: the input was written to")
    return tally
