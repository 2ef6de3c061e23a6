"""Traces of one I/O thread, made cycle by cycle: 512 frames at 48 kHz, times in ticks, 24 a µs."""

from records import DIVISOR_MARKER, INVALID_MARKER, pack

OVERLOAD, IO_THREAD, IO_CYCLE, CLIENT, ZERO_TIME_STAMP = (0x21040000 + 4 * n for n in range(5))
POLL_REGISTER, CODEC_COMMAND = 0x05245028, 0x05245120  # silent without -v
PIN_SENSE, STOP_AUDIO, CONVERT = 0x05246E30, 0x0524A400, 0x05249434
START, END = 1, 2
FRAMES = 512
BUDGET = 256_000  # ticks
MS = 24_000
IO, DRIVER, OTHER = 0x51, 0x9E, 0xA1  # threads
ORIGIN = 1_000_000_000


class Trace:
    """Records in any order; the file has them in the order of time."""

    def __init__(self, host=0):
        self.records = []
        self.host = host  # how far the host clock is ahead
        self.due = ORIGIN
        self.sample = 4096
        self.free = 0  # when the thread is done with what it does

    def put(self, time, code, thread=IO, cpu=0, **arguments):
        self.records.append((time, len(self.records), pack(code, t=time, a5=thread, cpu=cpu,
                                                           **arguments)))

    def lose(self, time):
        """The mark of a tracer that has lost records."""
        self.put(time, INVALID_MARKER, thread=0)

    def call(self, begin, end, code=PIN_SENSE, thread=DRIVER, cpu=5):
        """A call with its start, and its end where there is one."""
        self.put(begin, code | START, thread, cpu, a1=0x10)
        if end is not None:
            self.put(end, code | END, thread, cpu, a1=0x10)

    def cycle(self, late=0, client=9_600, overload=None, words=True, start=True, cpu=0):
        """A cycle that begins so late and whose client takes so long; `overload` puts a dropout so
        long after the client (before or after the cycle's end). Returns when its client began."""
        begin = max(self.due + 500 + late, self.free)
        if start:
            self.put(begin, IO_CYCLE | START, cpu=cpu, a1=self.sample, a2=begin + self.host,
                     a3=FRAMES)
        inside = begin + 200
        if start:
            self.put(inside, CLIENT | START, cpu=cpu)
        over = inside + client
        self.put(over, CLIENT | END, cpu=cpu)
        end = over + 400
        if overload is not None:
            told = {"a1": self.sample, "a2": over + overload + self.host,
                    "a3": self.sample + FRAMES, "a4": self.due + BUDGET + self.host}
            self.put(over + overload, OVERLOAD | START, cpu=cpu, **(told if words else {}))
        self.sample += FRAMES
        self.due += BUDGET
        self.put(end, IO_CYCLE | END, cpu=cpu, a1=self.sample, a2=self.due + self.host)
        self.free = max(end, over + (overload or 0)) + 100
        return inside

    def healthy(self, count=20):
        for _ in range(count):
            self.cycle()

    def bytes(self):
        slots = [pack(DIVISOR_MARKER, t=24)]
        return b"".join(slots + [record for _, _, record in sorted(self.records)])
