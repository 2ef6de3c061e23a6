"""The cases of calls.cases: their slots as bytes, and calls written as the cases write them."""

import pathlib
import re
import struct
from dataclasses import dataclass, field

import calls

CODES = {"A": 0x05245C0C, "B": 0x05245C10, "X": 0x01400004, "Y": 0x01400008,
         "OVERLOAD": 0x21040000, "IOThread": 0x21040004, "IOCycle": 0x21040008,
         "Client": 0x2104000C}
NAMES = {code: name for name, code in CODES.items()}
QUALIFIERS = {".": 0, "(": 1, ")": 2, ":": 3}
POINT_CODES = {CODES["OVERLOAD"]}


def pack(debug_id, ticks=0, arg1=0, thread=0, cpu=0, arg4=0):
    """One slot."""
    return struct.pack("<6Q2IQ", ticks, arg1, 0, 0, arg4, thread, debug_id, cpu, 0)


def slot(line):
    """The slot that a line of a case tells."""
    if line == "empty":
        return bytes(calls.SLOT_SIZE)
    if line == "invalid":
        return pack(calls.INVALID, ticks=99)
    if line.startswith("divisor "):
        return pack(calls.DIVISOR, ticks=int(line.split()[1]))
    ticks, thread, event = line.split()
    name, obj, qualifier = re.fullmatch(r"(\w+)(?:@(\d+))?([.():])", event).groups()
    return pack(CODES[name] | QUALIFIERS[qualifier], int(ticks), int(obj or 1), int(thread))


@dataclass
class Case:
    title: str
    slots: bytes = b""
    expected: list = field(default_factory=list)


def read_cases():
    found = []
    for line in (pathlib.Path(__file__).parent / "calls.cases").read_text().splitlines():
        if line.startswith("== "):
            found.append(Case(line[3:]))
        elif line.startswith("> "):
            found[-1].expected.append(line[2:])
        elif line and not line.startswith("#"):
            found[-1].slots += slot(line)
    return found


def written(record):
    name = NAMES[record.code]
    return f"{name}@{record.object}" if record.object not in (None, 1) else name


def lines_of(trace):
    """A trace as the cases write it: calls, then points, then orphan ends."""
    for call in trace.calls:
        how = "" if call.how == "finished" else " " + call.how
        yield (f"{written(call.start)} {call.start.thread} {call.start.time}..{call.end_time} "
               f"self {call.self_time} depth {call.depth}{how}")
    for record in trace.points:
        yield f"{written(record)} {record.thread} at {record.time} point"
    for record in trace.orphan_ends:
        yield f"{written(record)} {record.thread} at {record.time} orphan end"
