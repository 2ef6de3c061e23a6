"""Traces for the plugins, and what sonascope says of them: what other programs are to say too."""

import json
import os
import pathlib
import random
import re

from conftest import run_program
from records import DIVISOR_MARKER, INVALID_MARKER, SLOT, pack, pack_line, read_cases, unpack

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"

START, END = 0x05245C0D, 0x05245C0E
DIVISOR = pack(DIVISOR_MARKER, t=24)
INVALID = pack(INVALID_MARKER)


def every_text():
    """A record for each text of the golden tests, one microsecond after the other."""
    records = [record for path in sorted((SOURCE / "tests/golden/rows").glob("*.golden"))
               for case in read_cases(path) for record in case.records]
    slots = (SLOT.unpack(pack_line(record)) for record in records)
    return DIVISOR + b"".join(SLOT.pack(24 * number, *words[:-1], 0)
                              for number, (_, *words) in enumerate(slots, 1))


def simulated(path, scenario, records, seed):
    run_program("write", scenario, path, "--records", records, "--seed", seed,
                program="sonaprobe-sim")
    return path.read_bytes()


def disordered(trace, seed):
    """The records of a trace as several processors write them: threads in order, each by itself."""
    slots = [trace[at:at + SLOT.size] for at in range(0, len(trace), SLOT.size)]
    chance = random.Random(seed)
    for at in range(2, len(slots)):
        one, other = slots[at - 1], slots[at]
        if one[40:48] != other[40:48] and chance.random() < 0.3:
            slots[at - 1:at + 1] = other, one
    return b"".join(slots)


def traces(folder):
    """Files of all kinds of order, by name."""
    made = {
        "sample.raw": SAMPLE.read_bytes(),
        "texts.raw": every_text(),
        "random.raw": disordered(simulated(folder / "all.raw", "all", 5000, 7), 7),
        "playback.raw": disordered(simulated(folder / "all.raw", "playback", 3000, 8), 8),
    }
    (folder / "all.raw").unlink()
    for name, content in made.items():
        (folder / name).write_bytes(content)
    return {name: folder / name for name in made}


def identifier(name, taken):
    """A value's name as CTF takes it."""
    name = re.sub(r"[^A-Za-z0-9_]", "_", name)
    name = f"value{name}" if name[0] in "_0123456789" else name
    free, number = name, 2
    while free in taken:
        free, number = f"{name}{number}", number + 1
    return free


def expected(path):
    """What is to be said of each record, by its slot."""
    _, *lines = run_program("lines", path, "--json", "--kernel-time",
                            program="sonascope").stdout.splitlines()
    slots = unpack(path.read_bytes())
    said = {}
    for line in map(json.loads, lines):
        fields = {"text": line["text"]} if "text" in line else {}
        for name, value in line.get("values", {}).items():
            fields[identifier(name, fields)] = value
        if "text" not in line:
            fields = {f"arg{n}": slots[line["slot"]][f"a{n}"] for n in (1, 2, 3, 4)}
        name = line.get("name") or f"{line['driver']}::{line['method']}"
        said[line["slot"]] = {
            "time": line["time_ns"], "name": name, "qualifier": line["qualifier"],
            "thread": int(line["thread"], 16), "cpu": line["cpu"], "code": int(line["code"], 16),
            "object": int(line.get("object", "0"), 16), "failure": line.get("failure", False),
            "fields": fields}
    return said
