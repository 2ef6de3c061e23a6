"""Compares traces of the simulator's one story with sonascope diff: chance makes no findings, and a
method that is planted to be slower is found."""

import json
import struct
import subprocess
from dataclasses import dataclass, field

from setting import BUILD

RECORDS = 140_000
FALSE_FINDINGS = 0.02  # of pairs, at most
FOUND = 0.95  # of slowdowns, at least
SLOWER = 1.2
FEWEST, MOST = 450, 550  # calls of a method that is made slower
SLOT, STAMP, WORDS = 64, struct.Struct("<Q"), struct.Struct("<6Q2IQ")
START, END = 1, 2


@dataclass
class Tally:
    pairs: int = 0
    false: int = 0  # findings where there is nothing to be found
    slowdowns: int = 0
    found: int = 0
    faults: list = field(default_factory=list)


def run(program, *arguments):
    return subprocess.run([BUILD / program, *map(str, arguments)], stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)


def story(path, seed):
    written = run("sonaprobe-sim", "write", "all", path, "--records", RECORDS, "--seed", seed)
    assert (written.stderr, written.returncode) == ("", 0)
    return path


def findings(first, second):
    """Each as (code, change)."""
    answer = run("sonascope", "diff", first, second, "--json")
    found = json.loads(answer.stdout)["findings"]
    assert answer.returncode == (1 if found else 0), answer.stderr
    return [(int(each["code"], 16), each["change"]) for each in found]


def methods(path):
    """The codes of drivers' methods that are called some 500 times, the one with most time first."""
    rows = json.loads(run("sonascope", "stats", path, "--json").stdout)["rows"]
    return [int(row["code"], 16) for row in rows
            if FEWEST <= row["finished"] <= MOST and row["code"].startswith("0x0524")]


def slow_down(data, code):
    """The same trace where each call of the method takes longer, which delays its thread."""
    delays, begins, slots = {}, {}, []
    for at in range(SLOT, len(data), SLOT):
        stamp, arg1, *_, thread, debug_id, _, _ = WORDS.unpack_from(data, at)
        if debug_id == code | START:
            begins.setdefault((thread, arg1), []).append(stamp)
        elif debug_id == code | END and begins.get((thread, arg1)):
            taken = stamp - begins[thread, arg1].pop()
            delays[thread] = delays.get(thread, 0) + round((SLOWER - 1) * taken)
        slots.append(STAMP.pack(stamp + delays.get(thread, 0)) + data[at + 8:at + SLOT])
    slots.sort(key=STAMP.unpack_from)
    return data[:SLOT] + b"".join(slots)


def torture(folder, seed, pairs, slowdowns):
    tally = Tally(pairs=pairs, slowdowns=slowdowns)
    first, second = folder / "first.raw", folder / "second.raw"
    for pair in range(pairs):
        place = 2 * (seed + pair)
        false = findings(story(first, place), story(second, place + 1))
        tally.false += len(false)
    story(first, seed)
    assert findings(first, first) == []
    for slowdown in range(slowdowns):
        place = seed + slowdown
        story(first, 2 * place)
        known = methods(first)
        code = known[place % len(known)]
        data = story(second, 2 * place + 1).read_bytes()
        second.write_bytes(slow_down(data, code))
        tally.found += (code, "slower") in findings(first, second)
    return tally
