"""cut and repair, broken off by signals at any moment and by a full disk: the new file is whole or
not there, an old one is kept, the input is as it was."""

import contextlib
import ctypes
import os
import random
import signal
import subprocess
import time
from dataclasses import dataclass, field

from setting import BUILD

RECORDS = 60_000
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGKILL)
DISK = 2 << 20  # bytes: less than the new file takes
OLD = b"precious"


@dataclass
class Tally:
    rounds: int = 0
    whole: int = 0
    none: int = 0
    kept: int = 0  # old files
    full: int = 0  # rounds with a full disk
    faults: list = field(default_factory=list)


@contextlib.contextmanager
def small_disk(folder):
    """A file system of its own in the folder. Needs root."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.mount(b"none", bytes(folder), b"tmpfs", 0, f"size={DISK}".encode()) != 0:
        raise OSError(ctypes.get_errno(), "could not mount a tmpfs")
    try:
        yield folder
    finally:
        libc.umount(bytes(folder))


def play(command, after, sent):
    """Runs the command, sends the signal after so many seconds; (status, what it said)."""
    with subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as process:
        if sent is not None:
            time.sleep(after)
            process.send_signal(sent)
        said = process.stderr.read().decode()
        return process.wait(60), said


def expected_of(command, broken, folder):
    """The bytes that the command makes, undisturbed; and how long that takes."""
    new = folder / "expected.raw"
    begin = time.monotonic()
    subprocess.run([BUILD / "sonascope", command, broken, "-o", new, "--force"], check=True,
                   stdout=subprocess.DEVNULL)
    return new.read_bytes(), time.monotonic() - begin


def torture(folder, seed, rounds):
    tally = Tally(rounds=rounds)
    chance = random.Random(seed)
    source, target, disk = folder / "source.raw", folder / "target", folder / "disk"
    subprocess.run([BUILD / "sonaprobe-sim", "write", "all", source, "--records", str(RECORDS)],
                   check=True)
    data = source.read_bytes() + b"torn"
    source.write_bytes(data)
    target.mkdir(exist_ok=True)
    disk.mkdir(exist_ok=True)
    results = {command: expected_of(command, source, folder) for command in ("cut", "repair")}
    for number in range(rounds):
        command = chance.choice(list(results))
        expected, seconds = results[command]
        has_old, forced = chance.random() < 0.5, chance.random() < 0.5
        is_full = number % 10 == 0
        sent = None if is_full else chance.choice(SIGNALS)
        with small_disk(disk) if is_full else contextlib.nullcontext(target) as place:
            new = place / "new.raw"
            if has_old:
                new.write_bytes(OLD)
            options = ["--force"] if forced else []
            status, said = play([BUILD / "sonascope", command, source, "-o", new, *options],
                                chance.uniform(0, 1.2 * seconds), sent)
            found = new.read_bytes() if new.exists() else None
            leftover = [name for name in os.listdir(place) if name != "new.raw"]
            where = f"seed {seed}, round {number}: {command}, {sent}, status {status}"
            if found == expected and not is_full and (forced or not has_old):
                tally.whole += 1
            elif found == (OLD if has_old else None) and status != 0:
                tally.kept += has_old
                tally.none += not has_old
            else:
                tally.faults.append(f"{where}: {'no file' if found is None else len(found)}")
            # Nothing can be done about SIGKILL; the rest has another name.
            if leftover and sent != signal.SIGKILL:
                tally.faults.append(f"{where}: {leftover} is left")
            if is_full and (forced or not has_old):
                tally.full += 1
                if "No space left on device" not in said:
                    tally.faults.append(f"{where}: said {said!r}")
            for name in os.listdir(place):
                os.unlink(place / name)
    if source.read_bytes() != data:
        tally.faults.append(f"seed {seed}: the input was written to")
    return tally
