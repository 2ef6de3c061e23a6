"""Broken trace files, what `sonascope info` says of each, and what `sonascope repair` makes of it.

Run as a script, it writes them into a folder: python3 broken_files.py FOLDER
"""

import pathlib
import sys
from dataclasses import dataclass, field

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from records import DIVISOR_MARKER, INVALID_MARKER, pack

TICKS = 24  # a microsecond
SERVER = 0x21040000
IO_CYCLE, CLIENT = SERVER | 2 << 2, SERVER | 3 << 2
ENABLE, SET_FORMAT = 0x05245C0C, 0x05245C1C  # of OrvelHDAPath
START, END = 1, 2
ENGINE_THREAD, IO_THREAD = 0x1C3A, 0x1C52
BUFFER = 512


def divisor(ticks=TICKS):
    return pack(DIVISOR_MARKER, t=ticks)


class Trace:
    """Slots, one after the other, at times that go on."""

    def __init__(self):
        self.slots = [divisor()]
        self.now = 86_400_000_000

    def add(self, code, qualifier, microseconds=50, **fields):
        self.now += microseconds * TICKS
        fields = {"a5": ENGINE_THREAD, "cpu": 2} | fields
        self.slots.append(pack(code | qualifier, t=self.now, **fields))


def cycles(trace, first, count):
    """Cycles of the audio server, with a client in each."""
    for number in range(first, first + count):
        at = {"a5": IO_THREAD, "cpu": 5}
        sample = number * BUFFER
        trace.add(IO_CYCLE, START, 10_000, a1=sample, a2=trace.now, a3=BUFFER, **at)
        trace.add(CLIENT, START, 10, a3=sample + 2 * BUFFER, **at)
        trace.add(CLIENT, END, 300, **at)
        trace.add(IO_CYCLE, END, 20, a1=sample + BUFFER, a2=trace.now, **at)


def sound():
    """41 slots: a divisor, a driver's call inside another, nine cycles."""
    trace = Trace()
    path = 0xFFFFFF80_22E13000
    trace.add(SET_FORMAT, START, a1=path, a2=0xFFFFFF80_22E0D600, a3=48000)
    trace.add(ENABLE, START, a1=path, a2=0xFFFFFF80_22E0D600, a3=1)
    trace.add(ENABLE, END, a1=path, a2=0xFFFFFF80_22E0D600)
    trace.add(SET_FORMAT, END, a1=path)
    cycles(trace, 0, 9)
    return trace.slots


SLOTS = sound()
WHOLE = b"".join(SLOTS)
GARBAGE = bytes((7 * n * n + 31 * n + 5) % 251 for n in range(192))


def swapped(slot):
    """The slot as a machine of the other byte order writes it."""
    words = [(begin, 8) for begin in range(0, 48, 8)] + [(48, 4), (52, 4), (56, 8)]
    return b"".join(slot[begin:begin + size][::-1] for begin, size in words)


def joined(*parts):
    return b"".join(b"".join(part) if isinstance(part, list) else part for part in parts)


def later(slots, microseconds):
    """The same records at other times."""
    moved = []
    for slot in slots:
        stamp = int.from_bytes(slot[:8], "little") + microseconds * TICKS
        moved.append(stamp.to_bytes(8, "little") + slot[8:])
    return moved


@dataclass
class Broken:
    """A broken file."""

    name: str
    data: bytes
    findings: list  # the lines of info
    repaired: bytes | None  # None where no file is written
    stays: list = field(default_factory=list)  # kinds of findings that the repaired file has


REALIGN = "sonascope repair realigns it"
LOST = "what stood there is lost; sonascope repair leaves it out"
EARLY = ("writing ended early: look for a full disk or a killed program; "
         "sonascope repair leaves it out")
NOT_AT_64 = "from here on slots do not begin at a multiple of 64 bytes; the next one begins"
ASSUMED = ("records without a divisor before them, to slot {}: 1,000 ticks a microsecond are "
           "assumed. look for the file's beginning; without it times may be wrong")
LARGER = "record with a larger trace buffer: sonaprobe -b"

FILES = [
    Broken("cut", WHOLE[:-28],
           [f"slot 40  cut last slot  the last slot has 36 of its 64 bytes. {EARLY}"],
           WHOLE[:-64]),
    Broken("bytes-between-slots", joined(SLOTS[:20], GARBAGE[:37], SLOTS[20:]),
           [f"slot 20  misaligned  {NOT_AT_64} at byte 1,317, after 37 bytes of none. {REALIGN}"],
           WHOLE),
    Broken("bytes-inside-a-slot",
           joined(SLOTS[:20], SLOTS[20][:30], GARBAGE[:5], SLOTS[20][30:], SLOTS[21:]),
           [f"slot 20  misaligned  {NOT_AT_64} at byte 1,349, after 69 bytes of none. {REALIGN}"],
           joined(SLOTS[:20], SLOTS[21:]), stays=["missing_records"]),
    Broken("bytes-gone", WHOLE[:1300] + WHOLE[1310:],
           [f"slot 20  misaligned  {NOT_AT_64} at byte 1,334, after 54 bytes of none. {REALIGN}"],
           joined(SLOTS[:20], SLOTS[21:]), stays=["missing_records"]),
    Broken("beginning-gone", WHOLE[40:],
           [f"slot 0  misaligned  {NOT_AT_64} at byte 24, after 24 bytes of none. {REALIGN}",
            f"slot 0  no divisor  {ASSUMED.format(39)}"],
           joined(SLOTS[1:]), stays=["no_divisor"]),
    Broken("garbage", joined(SLOTS[:20], GARBAGE, SLOTS[23:]),
           [f"slot 20  garbage  192 bytes that are no slots, to slot 22. {LOST}"],
           joined(SLOTS[:20], SLOTS[23:]), stays=["missing_records"]),
    Broken("garbage-to-the-end", joined(SLOTS[:20], GARBAGE, GARBAGE[:50]),
           [f"slot 20  garbage  242 bytes that are no slots, to slot 23. {LOST}"],
           joined(SLOTS[:20])),
    Broken("other-byte-order", joined([swapped(slot) for slot in SLOTS]),
           ["slot 0  other byte order  written by a machine of the other byte order, to slot 40. "
            "sonascope repair swaps the bytes"],
           WHOLE),
    Broken("other-byte-order-from-the-middle-on",
           joined(SLOTS[:21], GARBAGE[:11], [swapped(slot) for slot in SLOTS[21:]]),
           [f"slot 21  misaligned  {NOT_AT_64} at byte 1,355, after 11 bytes of none. {REALIGN}",
            "slot 21  other byte order  written by a machine of the other byte order, to slot 40. "
            "sonascope repair swaps the bytes"],
           WHOLE),
    Broken("no-divisor", joined(SLOTS[1:]),
           [f"slot 0  no divisor  {ASSUMED.format(39)}"],
           joined(SLOTS[1:]), stays=["no_divisor"]),
    Broken("zero-divisor", joined(SLOTS[:20], divisor(0), SLOTS[20:]),
           ["slot 20  zero divisor  1 divisor of 0. it is ignored; sonascope repair leaves it out"],
           WHOLE),
    Broken("repeated-divisor", joined(SLOTS[:20], divisor(), divisor(), SLOTS[20:], divisor(0)),
           ["slot 20  repeated divisor  2 divisors of the value in force. it changes nothing; "
            "sonascope repair leaves it out",
            "slot 43  zero divisor  1 divisor of 0. it is ignored; sonascope repair leaves it out"],
           WHOLE),
    Broken("invalid", joined(SLOTS[:20], pack(INVALID_MARKER, t=5), SLOTS[20:]),
           ["slot 20  invalid  1 invalid slot. they hold no records; sonascope repair leaves them "
            "out"],
           WHOLE),
    Broken("empty", joined(SLOTS[:20], bytes(3 * 64), SLOTS[20:], bytes(64)),
           ["slot 20  empty  3 slots of nothing but zeros. what stood there never reached the disk; "
            "sonascope repair leaves them out",
            "slot 44  empty  1 slot of nothing but zeros. what stood there never reached the disk; "
            "sonascope repair leaves them out"],
           WHOLE),
    Broken("zeros-from-inside-a-slot-to-the-end", WHOLE[:1300] + bytes(1000),
           [f"slot 20  garbage  64 bytes that are no slots. {LOST}",
            "slot 21  empty  14 slots of nothing but zeros. what stood there never reached the "
            "disk; sonascope repair leaves them out",
            f"slot 35  cut last slot  the last slot has 60 of its 64 bytes. {EARLY}"],
           joined(SLOTS[:20])),
    Broken("step-back", joined(SLOTS, later(SLOTS[1:5], -2_000_000)),
           ["slot 41  step back  the clock steps back by 2.09 s; calls that are open end here. "
            "two recordings in one file, or a clock that was set: compare no times across it"],
           joined(SLOTS, later(SLOTS[1:5], -2_000_000)), stays=["step_back"]),
    Broken("end-missing", joined(SLOTS[:3], SLOTS[4:]),
           ["slot 2  missing records?  between slots 2 and 3: OrvelHDAPath::enable did not end "
            f"before a call around it. {LARGER}"],
           joined(SLOTS[:3], SLOTS[4:]), stays=["missing_records"]),
    Broken("start-missing", joined(SLOTS[:2], SLOTS[3:]),
           ["slot 1  missing records?  between slots 1 and 2: OrvelHDAPath::enable ended without a "
            f"start inside another call. {LARGER}"],
           joined(SLOTS[:2], SLOTS[3:]), stays=["missing_records"]),
    Broken("cycle-end-missing", joined(SLOTS[:12], SLOTS[13:]),
           ["slot 9  missing records?  between slots 9 and 12: QuorraHAL::IOCycle did not end "
            f"before it began anew. {LARGER}"],
           joined(SLOTS[:12], SLOTS[13:]), stays=["missing_records"]),
    Broken("cycle-start-missing", joined(SLOTS[:13], SLOTS[14:]),
           ["slot 12  missing records?  between slots 12 and 15: QuorraHAL::IOCycle ended without a "
            f"start; 1 more sign. {LARGER}"],
           joined(SLOTS[:13], SLOTS[14:]), stays=["missing_records"]),
    Broken("cycles-missing", joined(SLOTS[:13], SLOTS[25:]),
           ["slot 12  missing records?  between slots 12 and 13: QuorraHAL::IOCycle began whole "
            f"buffers later than the one before told. {LARGER}"],
           joined(SLOTS[:13], SLOTS[25:]), stays=["missing_records"]),
    Broken("inside-cycles-missing", joined(SLOTS[:15], SLOTS[27:]),
           ["slot 14  missing records?  between slots 14 and 15: QuorraHAL::IOCycle began whole "
            f"buffers later than the one before told. {LARGER}"],
           joined(SLOTS[:15], SLOTS[27:]), stays=["missing_records"]),
    Broken("clock-jumps", joined(SLOTS[:33], later(SLOTS[33:], 60_000_000)),
           ["slot 32  missing records?  between slots 32 and 33: the clock jumps, and the sample "
            f"times of QuorraHAL::IOCycle do not. {LARGER}"],
           joined(SLOTS[:33], later(SLOTS[33:], 60_000_000)), stays=["missing_records"]),
]

# What is no trace, and what info says of it.
OTHERS = {
    "empty-file": (b"", "this is empty: nothing was written, not even a divisor"),
    "zeros": (bytes(6400), "this is nothing but zeros, as a disk leaves what was never written"),
    "photo.jpg": (b"\xFF\xD8\xFF\xE0" + 20 * GARBAGE, "this is a JPEG image"),
    "trace.raw.xz": (b"\xFD7zXZ\0" + 20 * GARBAGE,
                     "this is packed with xz; unpack it first: xz -d"),
    "lines.txt": (b"12:00:00 [     100][  100 us] OrvelHDAPath::enable Start\n" * 50,
                  "this is a text; traces are what sonaprobe -w keeps, not what it prints"),
    "noise": (20 * GARBAGE, "no slot of 64 bytes looks like a record"),
    "half-a-slot": (SLOTS[1][:40], "no slot of 64 bytes looks like a record"),
}


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "sound.raw").write_bytes(WHOLE)
    for broken in FILES:
        (folder / f"{broken.name}.raw").write_bytes(broken.data)
    for name, (data, _) in OTHERS.items():
        (folder / name).write_bytes(data)


if __name__ == "__main__":
    main()
