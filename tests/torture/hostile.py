"""Traces made to exhaust whoever reads them, against every command of sonascope: it answers, or
refuses with a message, and takes no more than in proportion."""

import math
import os
import random
import re
import subprocess
from dataclasses import dataclass, field

from setting import BUILD

GENERATOR = BUILD / "tests/hostile-trace"

# {trace} is read, {new} written.
COMMANDS = {
    "info": "info {trace}",
    "lines": "lines {trace}",
    "lines --plain": "lines {trace} --plain -i",
    "lines --around": "lines {trace} --around dropout=1ms",
    "stats": "stats {trace}",
    "stats --by thread": "stats {trace} --by thread,event --longest 10",
    "stats --by object": "stats {trace} --by object --longer 1us",
    "tree": "tree {trace}",
    "why": "why {trace}",
    "diff": "diff {trace} {trace}",
    "cut": "cut {trace} -o {new}",
    "repair": "repair {trace} -o {new}",
    "timeline": "timeline {trace} -o {new}",
    **{f"export {name}": f"export {{trace}} --to {name} -o {{new}}"
       for name in ("json", "csv", "sqlite", "chrome", "speedscope", "folded", "callgrind")},
    "export calls": "export {trace} --to json --what calls -o {new}",
    "export stats": "export {trace} --to csv --what stats -o {new}",
}
# Its indentation, which is sonaprobe's, is as wide as calls are deep: the count of steps must tell.
QUADRATIC = ("nested", "lines {trace} --plain")

OUT_OF_MEMORY = "sonascope: out of memory; a part of the trace may fit, see --from and --to\n"
NOTHING_SELECTED = "no record is selected"

# Where the records double once more, the steps of linear work grow by twice as much as before, those
# of quadratic work by four times.
COUNTED = 2_000
MOST_GROWTH = 2.6
NOISE = 1_000_000  # steps: what starts differ by; at 8,000 records a quadratic command takes more


@dataclass
class Tally:
    runs: int = 0
    refused: int = 0  # with a message
    worst: float = 0  # growth of steps
    peak: int = 0  # MiB
    faults: list = field(default_factory=list)


def kinds():
    return subprocess.run([GENERATOR], stdout=subprocess.PIPE, text=True,
                          check=True).stdout.split()


def write(path, kind, count):
    with open(path, "wb") as trace:
        subprocess.run([GENERATOR, kind, str(count)], stdout=trace, check=True)


def words(command, trace, new):
    return [str(BUILD / "sonascope"), *command.format(trace=trace, new=new).split()]


def steps(command, trace, new):
    """How many instructions the command takes, which is the same on a busy machine."""
    counted = subprocess.run(
        ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
         *words(command, trace, new)],
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, errors="replace",
        check=False)
    new.unlink(missing_ok=True)
    found = re.search(r"I\s+refs:\s+([\d,]+)", counted.stderr)
    if found is None:
        raise RuntimeError(f"valgrind, status {counted.returncode}: {counted.stderr[-2000:]}")
    return int(found[1].replace(",", ""))


def growth(kind, command, folder):
    """How much faster than the trace the steps grow; what each run takes at its start is left out.
    Threads and the like, which start once, add to one doubling alone: in doubt there is another."""
    taken = []
    found = math.inf
    for doublings in range(4):
        write(folder / "trace", kind, COUNTED << doublings)
        taken.append(steps(command, folder / "trace", folder / "new"))
        if doublings >= 2:
            found = min(found, (taken[-1] - taken[-2]) / max(NOISE, taken[-2] - taken[-3]))
            if found <= MOST_GROWTH:
                break
    return found


def check_growth(kind, name, folder, tally):
    found = growth(kind, COMMANDS[name], folder)
    tally.worst = max(tally.worst, found)
    if found > MOST_GROWTH:
        tally.faults.append(f"{name} of {kind}: steps grow by {found:.2f}")


def check_counting(folder, tally):
    """What is quadratic must be found out, or nothing would be."""
    found = growth(*QUADRATIC, folder)
    if found <= MOST_GROWTH:
        tally.faults.append(f"{QUADRATIC[1]} is quadratic, but its steps grow by {found:.2f}")


def check_answers(kind, count, folder, tally, names, limit=None):
    """Each command has an answer, or refuses for want of memory and leaves nothing."""
    trace, new = folder / "trace", folder / "new"
    write(trace, kind, count)
    for name in names:
        with subprocess.Popen(words(COMMANDS[name], trace, new), stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, errors="replace",
                              preexec_fn=limit) as process:
            said = process.stderr.read()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        tally.runs += 1
        tally.peak = max(tally.peak, usage.ru_maxrss >> 10)
        where = f"{name} of {count} {kind}: status {process.returncode}"
        if process.returncode == 2:
            tally.refused += 1
            if said != OUT_OF_MEMORY and NOTHING_SELECTED not in said:
                tally.faults.append(f"{where}, {said!r}")
            if list(folder.glob("new*")):
                tally.faults.append(f"{where} leaves {list(folder.glob('new*'))}")
        elif process.returncode not in (0, 1):
            tally.faults.append(f"{where}, {said!r}")
        new.unlink(missing_ok=True)
    trace.unlink()


def pairs():
    """Each kind with each command, mixed: a part of them has something of everything."""
    all_pairs = [(kind, name) for kind in kinds() for name in COMMANDS]
    random.Random(0).shuffle(all_pairs)
    return all_pairs


def torture(folder, number, count):
    """The pair of this number, with so many records and more of them where calls are nested."""
    tally = Tally()
    if number == 0:
        check_counting(folder, tally)
    kind, name = pairs()[number % len(pairs())]
    check_answers(kind, 10 * count if kind == "nested" else count, folder, tally, [name])
    check_growth(kind, name, folder, tally)
    return tally
