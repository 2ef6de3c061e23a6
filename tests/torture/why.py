"""Compares what sonascope why answers with what sonaprobe-sim write dropouts has planted."""

import collections
import json
import subprocess
from dataclasses import dataclass, field

from setting import BUILD

LEVELS = ("easy", "medium", "hard")
GOALS = {"easy": 0.98, "medium": 0.98, "hard": 0.93}  # of right causes
CULPRITS = 0.96  # of right culprits, where the cause is right


@dataclass
class Tally:
    """What came of the traces of one level."""

    dropouts: int = 0
    causes: int = 0  # that were right
    culprits: int = 0  # that were right, where the cause was
    shown: int = 0  # answers that claim to be beyond doubt
    confusion: collections.Counter = field(default_factory=collections.Counter)
    faults: list = field(default_factory=list)

    def add(self, other):
        self.dropouts += other.dropouts
        self.causes += other.causes
        self.culprits += other.culprits
        self.shown += other.shown
        self.confusion += other.confusion
        self.faults += other.faults

    def keeps(self, level):
        return (not self.faults and self.causes >= GOALS[level] * self.dropouts
                and self.culprits >= CULPRITS * self.causes)


def run(program, *arguments):
    return subprocess.run([BUILD / program, *map(str, arguments)], stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)


def same_culprit(planted, told):
    """The same slot is the same call; where nobody is to blame, nobody may be blamed."""
    if planted is None or told is None:
        return planted is told
    return planted["slot"] == told["slot"]


def ask(folder, level, seed, count):
    """Writes a trace and returns what was planted and what why tells, each by slot."""
    trace, truth = folder / "dropouts.raw", folder / "truth.json"
    written = run("sonaprobe-sim", "write", "dropouts", trace, "--level", level, "--seed", seed,
                  "--count", count, "--truth", truth)
    assert (written.stderr, written.returncode) == ("", 0)
    answer = run("sonascope", "why", "--json", trace)
    planted = {dropout["slot"]: dropout for dropout in json.loads(truth.read_text())["dropouts"]}
    told = {dropout["slot"]: dropout for dropout in json.loads(answer.stdout)["dropouts"]}
    assert answer.returncode == (1 if told else 0), answer.stderr
    return planted, told


def score(folder, level, seed, count):
    planted, told = ask(folder, level, seed, count)
    tally = Tally(dropouts=len(planted))
    where = f"{level}, seed {seed}, slot"
    for slot in sorted(planted.keys() | told.keys()):
        if slot not in planted or slot not in told:
            tally.faults.append(f"{where} {slot}: a dropout is made up, or overlooked")
            continue
        truth, answer = planted[slot], told[slot]
        cause = answer["cause"] == truth["cause"]
        culprit = cause and same_culprit(truth["culprit"], answer["culprit"])
        tally.causes += cause
        tally.culprits += culprit
        tally.confusion[truth["cause"], answer["cause"]] += 1
        if answer["certainty"] == "shown":
            tally.shown += 1
            if not culprit:
                tally.faults.append(f"{where} {slot}: {answer['cause']} is shown, and wrong")
    return tally


def healthy(folder, seed):
    """A trace with near misses, slow clients and long calls, but no dropout."""
    planted, told = ask(folder, LEVELS[seed % len(LEVELS)], seed, 0)
    assert not planted
    return Tally(faults=[f"healthy, seed {seed}: slot {slot} is no dropout" for slot in told])


def confusion_table(confusion):
    """Planted causes in rows, told ones in columns, as Markdown."""
    causes = sorted({cause for pair in confusion for cause in pair})
    lines = ["| planted | " + " | ".join(causes) + " |", "|---|" + "--:|" * len(causes)]
    for planted in causes:
        counts = (str(confusion[planted, told] or "") for told in causes)
        lines.append(f"| {planted} | " + " | ".join(counts) + " |")
    return "\n".join(lines)
