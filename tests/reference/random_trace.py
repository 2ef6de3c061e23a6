"""Random raw files, as disorderly as drivers, processors and disks can make them."""

import random

import calls
from cases import CODES, pack

DRIVERS = [CODES["A"], CODES["B"]]
UNKNOWN = [CODES["X"], 0x05F00C04]
SERVER = [CODES["IOThread"], CODES["IOCycle"], CODES["Client"], CODES["OVERLOAD"]]


def random_trace(seed, records=400):
    """The bytes of a raw file. Each seed has habits of its own: how deep, how many threads, which
    faults and how often."""
    chance = random.Random(seed)
    threads = [chance.getrandbits(chance.choice([4, 16, 64])) for _ in range(chance.choice([1, 2, 5]))]
    objects = [chance.getrandbits(64) for _ in range(chance.choice([1, 3]))]
    codes = chance.choice([DRIVERS, DRIVERS + UNKNOWN, SERVER, DRIVERS + UNKNOWN + SERVER])
    starts = chance.choice([0.45, 0.5, 0.55])
    lost_ends = chance.choice([0, 0, 0.05, 0.3])
    foreign_ends = chance.choice([0, 0, 0.05, 0.3])
    disorder = chance.choice([0, 0, 0.03])
    steps_back = chance.choice([0, 0, 0, 0.01, 0.2])
    odd_slots = chance.choice([0, 0, 0.01])
    divisors = chance.choice([[1000], [24], [24, 1000], [0, 24, 41]])
    unit = chance.choice([1, 1000, 10**6, 10**8, 2**58])

    slots = []
    if chance.random() < 0.7:
        slots.append(pack(calls.DIVISOR, ticks=divisors[-1]))
    now = chance.getrandbits(chance.choice([8, 40, 63]))
    open_calls = {thread: [] for thread in threads}
    while len(slots) < records:
        if chance.random() < odd_slots:
            slots.append(chance.choice([bytes(calls.SLOT_SIZE), pack(calls.INVALID),
                                        pack(calls.DIVISOR, ticks=chance.choice(divisors))]))
            continue
        now += chance.choice([0, 1, chance.randrange(unit), chance.randrange(unit)])
        if chance.random() < steps_back:
            now -= chance.randrange(chance.choice([2, unit, 10**11]))
        ticks = now
        if chance.random() < disorder:
            ticks -= chance.randrange(2_500_000)
        thread = chance.choice(threads)
        stack = open_calls[thread]
        code, arg1, qualifier = chance.choice(codes), chance.choice(objects), 1
        if chance.random() < 0.1:
            qualifier = chance.choice([0, 3])
        elif stack and chance.random() > starts:
            code, arg1 = stack.pop()
            qualifier = 2
            if chance.random() < lost_ends:
                continue
        elif chance.random() < foreign_ends:
            qualifier = 2
        else:
            stack.append((code, arg1))
        slots.append(pack(code | qualifier, max(0, ticks) % 2**64, arg1, thread,
                          cpu=chance.randrange(4)))
    data = b"".join(slots)
    if chance.random() < 0.2:
        data = data[: chance.randrange(len(data))]
    return data
