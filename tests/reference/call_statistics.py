"""Statistics of a trace's calls, worked out as plainly as the words define them.

    rows = statistics(trace, by="event")      one Row a key; sums do not saturate
    busy_time(trace, thread)                  time in which a thread had at least one call open
"""

from dataclasses import dataclass, field



def class_of(code):
    """Drivers and the audio server have class ids in their codes, others class words alone."""
    has_class = code >> 16 == 0x0524 or code >> 10 == 0x21040000 >> 10
    return code & ~0x3FF if has_class else code & ~0xFFFF


# What a call, a point or an orphan end is counted under. Each is a record or has one as its start.
KEYS = {
    "event": lambda record: record.code,
    "class": lambda record: class_of(record.code),
    "thread": lambda record: record.thread,
    "cpu": lambda record: record.cpu,
    "object": lambda record: record.object,
    "thread,event": lambda record: (record.thread, record.code),
}


@dataclass
class Row:
    calls: int = 0
    cut_off: int = 0
    unfinished: int = 0
    points: int = 0
    orphan_ends: int = 0
    outermost: int = 0
    self_time: int = 0
    cut_off_self: int = 0
    unfinished_self: int = 0
    times: list = field(default_factory=list)  # of the finished calls

    @property
    def total(self):
        return sum(self.times)

    @property
    def mean(self):
        """In whole nanoseconds, rounded down."""
        return sum(self.times) // len(self.times)

    def percentile(self, percent):
        """Nearest rank: the smallest time that at least that share of all times does not exceed."""
        ordered = sorted(self.times)
        rank = -(-percent * len(ordered) // 100)
        return ordered[max(rank, 1) - 1]


def statistics(trace, by="event"):
    key = KEYS[by]
    rows = {}

    def row(record):
        return rows.setdefault(key(record), Row())

    for point in trace.points:
        row(point).points += 1
    for end in trace.orphan_ends:
        row(end).orphan_ends += 1
    for call in trace.calls:
        counted = row(call.start)
        counted.calls += 1
        if call.how == "cut off":
            counted.cut_off += 1
            counted.cut_off_self += call.self_time
        elif call.how == "unfinished":
            counted.unfinished += 1
            counted.unfinished_self += call.self_time
        else:
            counted.times.append(call.time)
            counted.self_time += call.self_time
            if not call.is_within_its_own_kind(lambda call: key(call.start)):
                counted.outermost += call.time
    return rows


def busy_time(trace, thread):
    """The time in which a thread had at least one call open."""
    return sum(call.time for call in trace.calls
               if call.start.thread == thread and call.depth == 0)
