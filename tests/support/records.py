"""Records as text, and the golden files that hold them beside the lines they must print.

A record is one line: its debug id, then what differs from 0, as in

    0x05245C0D t=24000000 a1=0x10 a3=5 cpu=1

with t the time stamp, a1 to a5 the argument words, r the reserved word.
"""

import pathlib
import re
import struct
from dataclasses import dataclass, field

SLOT = struct.Struct("<6Q2IQ")
FIELDS = ("t", "a1", "a2", "a3", "a4", "a5", "debugid", "cpu", "r")
DIVISOR_MARKER = 0xFEEDFACE
INVALID_MARKER = 0xDEADBEEF


def pack(debugid, **fields):
    """One 64-byte slot."""
    values = dict.fromkeys(FIELDS, 0) | {"debugid": debugid} | fields
    return SLOT.pack(*(values[name] for name in FIELDS))


def pack_line(line):
    """One 64-byte slot from a record as text."""
    debugid, *pairs = line.split()
    fields = dict(pair.split("=", 1) for pair in pairs)
    return pack(int(debugid, 0), **{name: int(value, 0) for name, value in fields.items()})


def pack_lines(text):
    """The slots of all records in a text; blank lines and comments are passed over."""
    lines = (line.strip() for line in text.splitlines())
    return b"".join(pack_line(line) for line in lines if line and not line.startswith("#"))


def unpack(data):
    """The whole slots of a raw file, each a dict of FIELDS."""
    whole = len(data) - len(data) % SLOT.size
    return [dict(zip(FIELDS, values)) for values in SLOT.iter_unpack(data[:whole])]


@dataclass
class Case:
    """A stanza of a golden file: options, records, and the lines they print."""

    title: str
    where: str
    options: list = field(default_factory=list)
    program: str = "sonaprobe"
    records: list = field(default_factory=list)
    expected: list = field(default_factory=list)


def read_cases(path):
    """The stanzas of a golden file.

        == an end event at depth 0 leaves the depth
        options: -s -H
        0x05245C0E a1=0x10
        > <- OrvelHDAPath::enable ...

    Each line after ">" and a blank is printed by the records above it; HH:MM:SS stands for the time
    of day. "program:" names another program of the build than sonaprobe.
    """
    path = pathlib.Path(path)
    cases = []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line.startswith("== "):
            cases.append(Case(line[3:], f"{path.name}:{number}"))
        elif line.startswith("options:"):
            cases[-1].options = line.removeprefix("options:").split()
        elif line.startswith("program:"):
            cases[-1].program = line.removeprefix("program:").strip()
        elif line == ">" or line.startswith("> "):
            cases[-1].expected.append(line[2:])
        elif line.strip() and not line.startswith("#"):
            cases[-1].records.append(line)
    return cases


def without_clock(text):
    """The text with HH:MM:SS in the place of each line's time of day."""
    return re.sub(r"^\d\d:\d\d:\d\d(?= \[)", "HH:MM:SS", text, flags=re.MULTILINE)
