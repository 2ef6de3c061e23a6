"""Time, calls and points of a raw file, worked out as plainly as the words define them.

This is the second opinion that the program's answers are compared with. It shares no code with the
program, keeps everything in lists, searches from one end to the other and is in no hurry.

    trace = read(data, point_codes)
    trace.calls, trace.points, trace.orphan_ends

Times are whole nanoseconds from the file's first record.
"""

import struct
from dataclasses import dataclass, field

SLOT_SIZE = 64
DIVISOR, INVALID = 0xFEEDFACE, 0xDEADBEEF
EARLIEST, LATEST = -(2**63), 2**63 - 1
SECOND = 1_000_000_000

IO_THREAD, IO_CYCLE, CLIENT = 0x21040004, 0x21040008, 0x2104000C
DO_NOT_RECURSE = (IO_THREAD, IO_CYCLE, CLIENT)


@dataclass
class Record:
    slot: int
    time: int
    code: int
    qualifier: int
    object: int | None  # None where the code has none
    thread: int
    cpu: int


@dataclass
class Call:
    start: Record
    depth: int
    parent: "Call | None"
    how: str = "open"  # then finished, cut off or unfinished
    end_time: int = 0
    end_slot: int = -1  # of the record that closed it or cut it off, if one did
    inside: int = 0  # time of the calls directly inside

    @property
    def time(self):
        return min(self.end_time - self.start.time, LATEST)

    @property
    def self_time(self):
        return self.time - self.inside

    def is_within_its_own_kind(self, kind):
        """Whether a call around it has the same kind; `kind` tells a call's."""
        around = self.parent
        while around is not None and kind(around) != kind(self):
            around = around.parent
        return around is not None


@dataclass
class Trace:
    calls: list = field(default_factory=list)  # in the order of their starts
    points: list = field(default_factory=list)
    orphan_ends: list = field(default_factory=list)
    records: list = field(default_factory=list)
    steps_back: int = 0
    disordered: int = 0  # records earlier than the latest that are no step back
    has_divisor: bool = False


class Clock:
    """Ticks become time by the divisor in force, counted on from an anchor."""

    def __init__(self):
        self.divisor = 1000  # ticks a microsecond
        self.anchor = None  # (ticks, time), or None where the next record is to set one
        self.latest = 0
        self.last_of_thread = {}

    def time_of(self, ticks):
        if self.anchor is None:
            self.anchor = (ticks, self.latest)
        anchor_ticks, anchor_time = self.anchor
        time = anchor_time + (ticks - anchor_ticks) * 1000 // self.divisor
        return max(EARLIEST, min(time, LATEST))

    def is_step_back(self, time, thread):
        return time < self.last_of_thread.get(thread, time) or time < self.latest - SECOND


def object_of(code, arg1):
    return arg1 if code >> 16 == 0x0524 else None


def read(data, point_codes):
    """All calls, points and orphan ends of a raw file's bytes.

    `point_codes` are the events whose starts are points.
    """
    trace = Trace()
    clock = Clock()
    stacks = {}  # of each thread: its open calls, the outermost first

    def close(thread, how, time, slot):
        """Takes the innermost open call off its thread's stack."""
        call = stacks[thread].pop()
        call.how, call.end_time, call.end_slot = how, time, slot
        if call.parent is not None:
            call.parent.inside = min(call.parent.inside + call.time, LATEST)

    def close_all(how, time, slot):
        for thread, stack in stacks.items():
            while stack:
                close(thread, how, time, slot)

    def nearest(thread, code, obj):
        """Where on its thread's stack the nearest call that matches stands, -1 for nowhere."""
        stack = stacks.setdefault(thread, [])
        for place in range(len(stack) - 1, -1, -1):
            if stack[place].start.code == code and stack[place].start.object == obj:
                return place
        return -1

    def cut_off_from(thread, place, record):
        while len(stacks[thread]) > place:
            close(thread, "cut off", record.time, record.slot)

    for slot in range(len(data) // SLOT_SIZE):
        raw = data[slot * SLOT_SIZE : (slot + 1) * SLOT_SIZE]
        if raw == bytes(SLOT_SIZE):
            continue
        ticks, arg1, _, _, _, thread, debug_id, cpu, _ = struct.unpack("<6Q2IQ", raw)

        if debug_id == INVALID:
            continue
        if debug_id == DIVISOR:
            if ticks == 0:
                continue
            trace.has_divisor = True
            if ticks != clock.divisor:
                close_all("cut off", clock.latest, slot)
                clock.divisor = ticks
                clock.anchor = None
            continue

        time = clock.time_of(ticks)
        if clock.is_step_back(time, thread):
            trace.steps_back += 1
            close_all("cut off", clock.latest, slot)
            clock.anchor = None
            time = clock.time_of(ticks)
        elif time < clock.latest:
            trace.disordered += 1
        clock.latest = max(clock.latest, time)
        clock.last_of_thread[thread] = time

        code, qualifier = debug_id & ~3, debug_id & 3
        record = Record(slot, time, code, qualifier, object_of(code, arg1), thread, cpu)
        trace.records.append(record)

        if qualifier in (0, 3) or (qualifier == 1 and code in point_codes):
            trace.points.append(record)
        elif qualifier == 1:
            open_one = nearest(thread, code, record.object)
            if code in DO_NOT_RECURSE and open_one >= 0:
                cut_off_from(thread, open_one, record)
            stack = stacks[thread]
            call = Call(record, depth=len(stack), parent=stack[-1] if stack else None)
            trace.calls.append(call)
            stack.append(call)
        else:
            place = nearest(thread, code, record.object)
            if place < 0:
                trace.orphan_ends.append(record)
            else:
                cut_off_from(thread, place + 1, record)
                close(thread, "finished", time, slot)

    close_all("unfinished", clock.latest, -1)
    return trace
