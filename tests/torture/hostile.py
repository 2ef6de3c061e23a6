"""Traces made to exhaust whoever reads them, against every command of sonascope: it answers, or
refuses with a message, and takes no more than in proportion."""

import os
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
# Its indentation, which is sonaprobe's, is as wide as calls are deep: so it shows that a count of
# steps tells what is quadratic.
QUADRATIC = "lines {trace} --plain"

OUT_OF_MEMORY = "sonascope: out of memory; a part of the trace may fit, see --from and --to\n"
NOTHING_SELECTED = "no record is selected"

# From N to 2N and from 2N to 4N records, linear work grows by twice, quadratic work by four times.
MOST_GROWTH = 2.6


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


def write(path, names, count):
    with open(path, "wb") as trace:
        for name in names:
            subprocess.run([GENERATOR, name, str(count)], stdout=trace, check=True)


def words(command, trace, new):
    return [str(BUILD / "sonascope"), *command.format(trace=trace, new=new).split()]


def steps(command, trace, new):
    """How many instructions the command takes; what memory it has does not count."""
    counted = subprocess.run(
        ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
         *words(command, trace, new)],
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    new.unlink(missing_ok=True)
    found = re.search(r"I\s+refs:\s+([\d,]+)", counted.stderr)
    if found is None:
        raise RuntimeError(counted.stderr)
    return int(found[1].replace(",", ""))


def growth(command, names, count, folder):
    """How much faster than the trace the steps grow; what each run takes at its start is left out."""
    taken = []
    for size in (count, 2 * count, 4 * count):
        write(folder / "trace", names, size)
        taken.append(steps(command, folder / "trace", folder / "new"))
    return (taken[2] - taken[1]) / max(1, taken[1] - taken[0])


def check_growth(names, count, folder, tally, commands=COMMANDS):
    for name, command in commands.items():
        found = growth(command, names, count, folder)
        tally.runs += 1
        tally.worst = max(tally.worst, found)
        if found > MOST_GROWTH:
            tally.faults.append(f"{name} of {', '.join(names)}: steps grow by {found:.2f}")


def check_answers(names, count, folder, tally, commands=COMMANDS, limit=None):
    """Each command has an answer, or refuses for want of memory and leaves nothing."""
    trace, new = folder / "trace", folder / "new"
    write(trace, names, count)
    for name, command in commands.items():
        with subprocess.Popen(words(command, trace, new), stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, preexec_fn=limit) as process:
            said = process.stderr.read()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        tally.runs += 1
        tally.peak = max(tally.peak, usage.ru_maxrss >> 10)
        where = f"{name} of {count} {', '.join(names)}: status {process.returncode}"
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


def torture(folder, kind, count=1_000_000, counted=4_000):
    tally = Tally()
    check_answers([kind], 10 * count if kind == "nested" else count, folder, tally)
    check_growth([kind], counted, folder, tally)
    return tally
