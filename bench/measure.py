#!/usr/bin/env python3
"""Measures sonaprobe beside the least that its output can cost and beside the straightforward
program, and prints the tables of docs/performance.md. script/bench builds what this needs.

usage: measure.py BUILD_DIR FOLDER [--records N] [--rounds N] [--seconds S]

FOLDER is on a memory file system. Must be run as root, with a trace facility that nobody else uses.
"""

import argparse
import fcntl
import os
import pathlib
import random
import re
import shutil
import signal
import statistics
import struct
import subprocess
import sys
import time
from dataclasses import dataclass, field

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/support"))

from records import SLOT, pack_lines  # noqa: E402

DEBUGID = struct.Struct("<48xI12x")
PIPE_SIZE = 1 << 20
CHECKED_RECORDS = 100_000
COUNTED_RECORDS = 20_000


@dataclass
class Case:
    """A way to print a trace, and what it is held to."""

    title: str
    options: tuple = ()
    trace: str = "story"
    sink: str = "null"
    zone: str | None = "UTC"
    goals: tuple = ()  # (what, comparison, limit): see measure_case()


@dataclass
class Cost:
    """What one run took, in nanoseconds."""

    wall: int
    processor: int


@dataclass
class Samples:
    """One figure a round for each thing measured, nanoseconds a record."""

    sonaprobe: list = field(default_factory=list)
    floor: list = field(default_factory=list)
    straightforward: list = field(default_factory=list)
    default: list = field(default_factory=list)

    def ratio(self, one, other):
        """The median of the ratios of runs that stood next to each other."""
        return statistics.median(a / b for a, b in zip(getattr(self, one), getattr(self, other)))


DEFAULT = Case("local time", goals=(("straightforward", ">=", 11), ("ns", "<=", 60)))
CASES = (
    DEFAULT,
    Case("local time, `TZ` unset", zone=None, goals=(("straightforward", ">=", 30),)),
    Case("`-k`", ("-k",), goals=(("straightforward", ">=", 8),)),
    Case("`-c -C`", ("-c", "-C"), goals=(("default", "<=", 1.3),)),
    Case("every text, at random", ("-A", "-i"), trace="texts", goals=(("ns", "<=", 150),)),
    Case("unclassified", trace="unclassified", goals=(("default", "<=", 1),)),
    Case("`-B`", ("-B",), goals=(("default", "<=", 1),)),
    Case("into a pipe of 1 MiB", sink="pipe", goals=(("floor", "<=", 2),)),
    Case("into a file", sink="file", goals=(("floor", "<=", 2),)),
)


class Bench:
    """The programs, the traces, and the ways to run one over the other."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.bytes_of = {}  # output of a case, for its floor

    def program(self, name):
        return str(self.build / ("" if name.startswith("sonaprobe") else "bench") / name)

    def trace(self, name):
        return str(self.folder / f"{name}.raw")

    def command(self, name, case, trace=None):
        # Last comes what says something on standard output only where --verbose is already on.
        return [self.program(name), *case.options, "-r", trace or self.trace(case.trace), "-v"]

    def sim(self, *arguments):
        return subprocess.run([self.program("sonaprobe-sim"), *map(str, arguments)], check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def make_traces(self, records):
        """The simulator's story without the audio server, some of whose starts have no ends and
        would indent the lines more and more; the same with an undecoded class in each code; the
        texts of all decoders in a random order. Every record prints a line."""
        everything = self.folder / "everything.raw"
        self.sim("write", "all", everything, "--records", 2 * records, "--seed", 1)
        data = everything.read_bytes()
        everything.unlink()
        slots = [data[at:at + SLOT.size] for at in range(0, len(data), SLOT.size)]
        divisor = slots[0]
        story = [slot for slot in slots[1:] if slot[50:52] == b"\x24\x05"][:records]
        self.write_trace("story", divisor, story)
        self.write_trace("unclassified", divisor, map(as_class_12, story))

        texts = subprocess.run([self.program("sonaprobe-events"), "records"], check=True,
                               stdout=subprocess.PIPE, text=True).stdout
        # No option prints class 0.
        lines = "".join(part for part in texts.split("# ") if not part.startswith("0 "))
        lines = "\n".join(line for line in lines.splitlines() if line.startswith("0x"))
        samples = pack_lines(lines)
        samples = [samples[at:at + SLOT.size] for at in range(0, len(samples), SLOT.size)]
        chance = random.Random(1)
        stamps = (struct.pack("<Q", 3_600_000_000_000 + 5_347_000 * i) for i in range(len(story)))
        self.write_trace("texts", divisor,
                         (stamp + chance.choice(samples)[8:] for stamp in stamps))
        return len(story)

    def write_trace(self, name, divisor, slots):
        slots = list(slots)
        pathlib.Path(self.trace(name)).write_bytes(divisor + b"".join(slots))
        for suffix, count in (("checked", CHECKED_RECORDS), ("counted", COUNTED_RECORDS),
                              ("counted-twice", 2 * COUNTED_RECORDS)):
            part = divisor + b"".join(slots[:count])
            pathlib.Path(self.trace(f"{name}-{suffix}")).write_bytes(part)

    def environment(self, case):
        environment = {key: value for key, value in os.environ.items() if key != "TZ"}
        return environment | ({"TZ": case.zone} if case.zone else {})

    def lines(self, name, case):
        """What a program prints of the first records, the time of day masked."""
        command = self.command(name, case, self.trace(f"{case.trace}-checked"))
        printed = subprocess.run(command, check=True, stdout=subprocess.PIPE,
                                 env=self.environment(case)).stdout
        return re.sub(rb"(?m)^\d\d:\d\d:\d\d(?= \[)", b"HH:MM:SS", printed)

    def check(self, case):
        """Ends the program unless both print the same bytes."""
        if self.lines("sonaprobe", case) != self.lines("straightforward", case):
            sys.exit(f"{case.title}: sonaprobe and the straightforward program print other bytes")

    def prepare(self, case):
        """The bytes of a case, as a file to copy from and, its pages mapped, one to write to."""
        source = self.folder / "lines"
        with open(source, "wb") as out:
            subprocess.run(self.command("sonaprobe", case), check=True, stdout=out,
                           env=self.environment(case))
        shutil.copyfile(source, self.folder / "out")
        return source.stat().st_size

    def run(self, command, case):
        """Runs a program with its standard output where the case says."""
        cat = None
        if case.sink == "pipe":
            read_end, out = os.pipe()
            fcntl.fcntl(out, fcntl.F_SETPIPE_SZ, PIPE_SIZE)
            cat = subprocess.Popen(["cat"], stdin=read_end, stdout=subprocess.DEVNULL)
            os.close(read_end)
        else:
            out = os.open(self.folder / "out" if case.sink == "file" else os.devnull, os.O_WRONLY)
        begin = time.perf_counter_ns()
        process = subprocess.Popen(command, stdout=out, stderr=subprocess.PIPE, text=True,
                                   env=self.environment(case))
        os.close(out)
        message = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter_ns() - begin
        process.returncode = os.waitstatus_to_exitcode(status)
        if cat:
            cat.wait()
        if process.returncode != 0:
            sys.exit(f"{command[0]} failed: {message}")
        cost = Cost(wall, round((usage.ru_utime + usage.ru_stime) * 1e9))
        return cost, message

    def time_of(self, cost, case):
        """A process alone is timed by its processor, which others on the machine do not disturb."""
        return cost.wall if case.sink == "pipe" else cost.processor


def as_class_12(slot):
    debugid = DEBUGID.unpack(slot)[0] & 0xFFFF03FF | 12 << 10
    return slot[:48] + struct.pack("<I", debugid) + slot[52:]


def measure_case(bench, case, records, rounds):
    """Runs the case and what it is compared with in turn."""
    samples = Samples()
    for _ in range(rounds):
        for name in ("sonaprobe", "straightforward"):
            cost, _ = bench.run(bench.command(name, case), case)
            getattr(samples, name).append(bench.time_of(cost, case) / records)
        cost, message = bench.run([bench.program("floor"), str(bench.folder / "lines")], case)
        cost = Cost(*map(int, message.split()))
        samples.floor.append(bench.time_of(cost, case) / records)
        if any(what == "default" for what, _, _ in case.goals):
            cost, _ = bench.run(bench.command("sonaprobe", DEFAULT), DEFAULT)
            samples.default.append(bench.time_of(cost, DEFAULT) / records)
    return samples


def verdict(met):
    return "met" if met else "**not met**"


def judge(samples, goal):
    """A goal as text, with what was reached, and whether it was."""
    what, comparison, limit = goal
    if what == "ns":
        reached, text = statistics.median(samples.sonaprobe), f"{limit} ns and below"
    elif what == "straightforward":
        reached, text = samples.ratio("straightforward", "sonaprobe"), f"at least {limit} times"
    else:
        reached = samples.ratio("sonaprobe", what)
        text = f"at most {limit} times the {what}, was {reached:.2f}"
    met = reached >= limit if comparison == ">=" else reached <= limit
    return f"{text}: {verdict(met)}"


def print_speed(bench, records, rounds):
    print("| `-r` | ns a record | GB/s | writing the same bytes, ns | straightforward, ns "
          "| times as fast | goals |\n|---|---|---|---|---|---|---|", flush=True)
    for case in CASES:
        bench.check(case)
        size = bench.prepare(case)
        samples = measure_case(bench, case, records, rounds)
        sonaprobe = statistics.median(samples.sonaprobe)
        print(f"| {case.title} | {sonaprobe:.0f} | {size / records / sonaprobe:.1f} "
              f"| {statistics.median(samples.floor):.0f} "
              f"| {statistics.median(samples.straightforward):.0f} "
              f"| {samples.ratio('straightforward', 'sonaprobe'):.1f} "
              f"| {'; '.join(judge(samples, goal) for goal in case.goals)} |", flush=True)


def instructions(bench, case, trace):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
               *bench.command("sonaprobe", case, bench.trace(trace))]
    told = subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          env=bench.environment(case), text=True).stderr
    return int(re.search(r"Collected : (\d+)", told)[1])


def print_instructions(bench):
    print("\n| instructions a record | |\n|---|---|")
    for case in CASES:
        if case.sink == "null":
            twice = instructions(bench, case, f"{case.trace}-counted-twice")
            once = instructions(bench, case, f"{case.trace}-counted")
            print(f"| {case.title} | {(twice - once) / COUNTED_RECORDS:.0f} |", flush=True)


def resident_kilobytes(bench):
    """The most memory that printing ever held: all records through a pipe that stays open."""
    read_end, write_end = os.pipe()
    process = subprocess.Popen([bench.program("sonaprobe"), "-r", "/dev/stdin"], stdin=read_end,
                               stdout=subprocess.DEVNULL)
    os.close(read_end)
    with open(write_end, "wb") as out, open(bench.trace("story"), "rb") as trace:
        shutil.copyfileobj(trace, out)
        out.flush()
        status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    process.wait()
    return int(re.search(r"VmHWM:\s+(\d+)", status)[1])


def print_sizes(bench):
    print("\n| whole program | | goal |\n|---|---|---|")
    resident = resident_kilobytes(bench) / 1024
    print(f"| most memory of `-r`, resident | {resident:.1f} MiB "
          f"| 8 MiB: {verdict(resident < 8)} |")
    starts = [bench.run([bench.program("sonaprobe"), "-V", "-r", "/dev/null"], DEFAULT)[0]
              for _ in range(50)]
    start = statistics.median(cost.processor for cost in starts) / 1e6
    print(f"| processor time of `-V -r /dev/null` | {start:.2f} ms | 2 ms: {verdict(start < 2)} |")
    stripped = bench.folder / "stripped"
    subprocess.run(["strip", "-o", stripped, bench.program("sonaprobe")], check=True)
    size = stripped.stat().st_size
    print(f"| stripped binary | {size / 1e3:.0f} kB | 1 MB: {verdict(size < 1e6)} |", flush=True)


def status(bench):
    pairs = (line.split(": ", 1) for line in bench.sim("status").splitlines())
    return {key: int(value) for key, value in pairs if value.isdecimal()}


class LiveRun:
    """sonaprobe live, its lines thrown away, from its set-up to its end."""

    def __init__(self, bench, *options):
        bench.sim("reset")
        self.process = subprocess.Popen([bench.program("sonaprobe"), *options],
                                        stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 30
        while (state := status(bench)).get("entries", 0) == 0 or state["nolog"] != 0:
            if self.process.poll() is not None or time.monotonic() > deadline:
                sys.exit("sonaprobe does not start")
            time.sleep(0.05)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGINT)
        self.process.wait()


def processor_nanoseconds(process):
    return int(pathlib.Path(f"/proc/{process.pid}/schedstat").read_text().split()[0])


def print_loss(bench, title, rate, seconds, options):
    with LiveRun(bench, *options) as live:
        before = processor_nanoseconds(live.process)
        # A tenth more than asked: the rate is the mean of a round, and drivers start late.
        bench.sim("play", "all", "--rate", rate * 11 // 10, "--seconds", seconds)
        deadline = time.monotonic() + 10
        while (state := status(bench))["pending"] > 0 and time.monotonic() < deadline:
            time.sleep(0.02)
        busy = (processor_nanoseconds(live.process) - before) / seconds / 1e7
    posted = state["posted"] / seconds / 1e6
    result = verdict(state["lost"] == 0)
    if state["lost"] == 0 and posted < rate / 1e6:
        result = "not shown, the producer was slower"
    print(f"| {title} | {posted:.2f} million a second for {seconds} s, {state['lost']} lost, "
          f"{busy:.0f} % of a core | no loss at {rate / 1e6:.0f} million: {result} |",
          flush=True)


def print_live(bench, seconds):
    print("\n| live | | goal |\n|---|---|---|")
    print_loss(bench, "printing, `-v`", 4_000_000, seconds, ["-v"])
    written = bench.folder / "written.raw"
    print_loss(bench, "printing and writing, `-v -w`", 1_000_000, seconds, ["-v", f"-w{written}"])
    written.unlink()
    with LiveRun(bench) as live, subprocess.Popen([bench.program("idle_loop")]) as loop:
        begin = [processor_nanoseconds(process) for process in (live.process, loop)]
        time.sleep(seconds)
        end = [processor_nanoseconds(process) for process in (live.process, loop)]
        loop.kill()
    idle, bare = ((b - a) / seconds / 1e3 for a, b in zip(begin, end))
    print(f"| idle | {idle:.0f} µs of processor time a second, the bare loop {bare:.0f} "
          f"| at most 1.5 times, was {idle / bare:.2f}: {verdict(idle <= 1.5 * bare)} |")
    bench.sim("reset")


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--records", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--seconds", type=int, default=5)
    arguments = parser.parse_args()

    bench = Bench(arguments.build, arguments.folder)
    records = bench.make_traces(arguments.records)
    print(f"{records} records, {arguments.rounds} rounds\n")
    print_speed(bench, records, arguments.rounds)
    if shutil.which("valgrind"):
        print_instructions(bench)
    print_sizes(bench)
    print_live(bench, arguments.seconds)


if __name__ == "__main__":
    main()
