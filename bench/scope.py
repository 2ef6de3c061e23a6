#!/usr/bin/env python3
"""Measures sonascope's commands, and beside them the programs that one would use instead, each on its
own best input of the same events; prints tables of docs/performance.md.

usage: scope.py BUILD_DIR FOLDER [--records N] [--rounds N]
                [--alone | --beside WORDS | --before BUILD_DIR]
       scope.py BUILD_DIR FOLDER --growth N...

FOLDER is empty, on a memory file system. With --alone, sonascope's own table is all; with --beside, the
rows of other programs that have these words. With --before: its commands in turn with those of an older
build. With --growth: time and memory of each command for traces of so many records. Times are processor
time but for a browser's; runs to be compared stand next to each other.
"""

import argparse
import copy
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import time
from dataclasses import dataclass

from measure import verdict

HERE = pathlib.Path(__file__).resolve().parent
TICKS = 24  # a microsecond: the simulator's divisor
PLAIN = ("lines", "TRACE", "--plain", "-v")


@dataclass
class Work:
    """A command, TRACE and FOLDER in it standing for the paths."""

    title: str
    arguments: tuple
    limit: int | None = None  # nanoseconds a record
    beside: tuple = ()  # sonaprobe's, or another command; with the most times it may take
    memory: tuple = ()  # the most MiB, and bytes a call besides


@dataclass
class Neighbour:
    """Another program, what it is told, and which of sonascope's commands answers the same."""

    title: str
    command: tuple
    instead: tuple
    least: float | None = None  # times as fast


WORKS = (
    Work("`info`", ("info", "TRACE"), 45),
    Work("`info --quick`", ("info", "--quick", "TRACE"), 12),
    Work("`stats`", ("stats", "TRACE"), 60, memory=(64, 16)),
    Work("`tree`", ("tree", "TRACE"), 60),
    Work("`why`", ("why", "TRACE"), 60),
    Work("`lines --plain -v`", PLAIN, beside=(("sonaprobe", "-r", "TRACE", "-v"), 1.1)),
    Work("`lines`", ("lines", "TRACE")),
    Work("`export --to json`", ("export", "TRACE", "--to", "json", "--jobs", "1"), 250),
    Work("`export --to csv`", ("export", "TRACE", "--to", "csv", "--jobs", "1"), 250),
    Work("`export --to chrome`", ("export", "TRACE", "--to", "chrome"), 350),
    Work("`export --to sqlite`",
         ("export", "TRACE", "--to", "sqlite", "-o", "FOLDER/new.db", "--force"), 1500),
    Work("`timeline`", ("timeline", "TRACE", "-o", "FOLDER/new.html", "--force"), 250),
    Work("`cut` of 0.1 %", ("cut", "TRACE", "CUT", "-o", "FOLDER/new.raw", "--force")),
    Work("`cut --sorted` of 0.1 %",
         ("cut", "TRACE", "CUT", "--sorted", "-o", "FOLDER/new.raw", "--force")),
)
# On one processor and on two, by the wall clock.
TWICE = (
    ("`export --to json`", ("export", "TRACE", "--to", "json")),
    ("`export --to csv`", ("export", "TRACE", "--to", "csv")),
    ("`timeline`", ("timeline", "TRACE", "-o", "FOLDER/new.html", "--force")),
)
ONE_PROCESSOR = ("taskset", "--cpu-list", "0")
OTHER_PROCESSOR = ("taskset", "--cpu-list", "1")
ALONE = ("sonascope", "export", "TRACE", "--to", "json", "--jobs", "1")
SUMS = "SELECT code, count(*), sum(duration_ns), max(duration_ns) FROM calls GROUP BY code"
JQ_SUMS = "reduce inputs as $call ({}; .[$call.code] += $call.duration_ns)"
NEIGHBOURS = (
    Neighbour("babeltrace2 counting, CTF", ("babeltrace2", "FOLDER/ctf", "-c", "sink.utils.counter"),
              ("stats", "TRACE"), 15),
    Neighbour("babeltrace2 as text, CTF", ("babeltrace2", "FOLDER/ctf"), ("lines", "TRACE")),
    Neighbour("babeltrace2 cutting 0.1 %, CTF",
              ("babeltrace2", "FOLDER/ctf", "BEGIN_END", "-o", "ctf", "-w", "FOLDER/new"),
              ("cut", "TRACE", "CUT", "-o", "FOLDER/new.raw", "--force")),
    Neighbour("sqlite3, sums by event", ("sqlite3", "FOLDER/trace.db", SUMS), ("stats", "TRACE")),
    Neighbour("jq, sums by event, JSON", ("jq", "-n", JQ_SUMS, "FOLDER/calls.json"),
              ("stats", "TRACE")),
    Neighbour("jq, all values, JSON", ("jq", "-c", ".values", "FOLDER/records.json"),
              ("export", "TRACE", "--to", "json", "--jobs", "1")),
)
SPEEDSCOPE = "speedscope opening its own format, by the clock"
# What the neighbours read: the same events in the forms that they like best.
INPUTS = {
    "FOLDER/ctf": ("babeltrace2", "TRACE", "-o", "ctf", "-w", "FOLDER/ctf"),
    "FOLDER/trace.db": ("sonascope", "export", "TRACE", "--to", "sqlite", "-o", "FOLDER/trace.db"),
    "FOLDER/calls.json": ("sonascope", "export", "TRACE", "--to", "json", "--what", "calls",
                          "-o", "FOLDER/calls.json"),
    "FOLDER/records.json": ("sonascope", "export", "TRACE", "--to", "json",
                            "-o", "FOLDER/records.json"),
    "FOLDER/trace.speedscope.json": ("sonascope", "export", "TRACE", "--to", "speedscope",
                                     "-o", "FOLDER/trace.speedscope.json"),
}


class Bench:
    """The programs, a trace, and the ways to run one over the other."""

    def __init__(self, build, folder, records):
        self.made = set()  # of INPUTS
        self.build = build
        self.folder = folder
        self.records = records
        self.trace = folder / f"{records}.raw"
        subprocess.run([build / "sonaprobe-sim", "write", "all", self.trace, "--records",
                        str(records), "--seed", "1"], check=True)
        first, begin, end = map(self.tick, (1, records // 2, records // 2 + records // 1000))
        self.window = [(tick - first) * 1000 // TICKS for tick in (begin, end)]
        self.clock = [tick / TICKS / 1e6 for tick in (begin, end)]

    def tick(self, slot):
        with open(self.trace, "rb") as file:
            file.seek(64 * slot)
            return int.from_bytes(file.read(8), "little")

    def output(self, *arguments):
        return subprocess.run([self.build / "sonascope", *arguments], check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def calls(self):
        info = json.loads(self.output("info", "--json", self.trace))
        return info["files"][0]["calls"]["opened"]

    def filled(self, command):
        """The command with its paths and times."""
        times = {"CUT": ["--from", f"{self.window[0]}ns", "--to", f"{self.window[1]}ns"],
                 "BEGIN_END": [f"--begin={self.clock[0]:.9f}", f"--end={self.clock[1]:.9f}"]}
        for word in command:
            if word in times:
                yield from times[word]
            elif word in ("sonaprobe", "sonascope"):
                yield str(self.build / word)
            else:
                yield word.replace("TRACE", str(self.trace)).replace("FOLDER", str(self.folder))

    def run(self, command):
        """Nanoseconds a record: of processor time, and by the clock."""
        shutil.rmtree(self.folder / "new", ignore_errors=True)
        command = list(self.filled(command))
        plugin = str(self.build / "plugins/babeltrace2")
        begin = time.perf_counter_ns()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL,
                                   env=os.environ | {"TZ": "UTC", "BABELTRACE_PLUGIN_PATH": plugin})
        _, status, usage = os.wait4(process.pid, 0)
        clock = time.perf_counter_ns() - begin
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode not in (0, 1):  # 1 is an answer: there are findings
            raise SystemExit(f"{' '.join(command)}: status {process.returncode}")
        return (usage.ru_utime + usage.ru_stime) * 1e9 / self.records, clock / self.records

    def make_inputs_of(self, command):
        for name in INPUTS.keys() & set(command) - self.made:
            self.run(INPUTS[name])
            self.made.add(name)

    def together(self, *commands):
        """Nanoseconds a record until the last of several that begin together has ended."""
        begin = time.perf_counter_ns()
        processes = [subprocess.Popen(list(self.filled(command)), stdout=subprocess.DEVNULL)
                     for command in commands]
        if any([process.wait() != 0 for process in processes]):
            raise SystemExit("of commands at once, one has failed")
        return (time.perf_counter_ns() - begin) / self.records

    def scope(self, arguments):
        return self.run(("sonascope", *arguments))

    def used(self, arguments):
        """Seconds of processor time and the most MiB, as a small parent sees them: a large one's
        own memory would be counted."""
        told = subprocess.run(["time", "-f", "%U %S %M", *self.filled(("sonascope", *arguments))],
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        user, system, kilobytes = map(float, told.stderr.split()[-3:])
        return user + system, kilobytes / 1024


def print_works(bench, rounds):
    print("| sonascope | ns a record | least | MiB | goal |\n|---|---|---|---|---|")
    read = [bench.run(READ)[0] for _ in range(rounds)]
    print(f"| reading 64 bytes (`dd`) | {statistics.median(read):.0f} | {min(read):.0f} | | |",
          flush=True)
    for work in WORKS:
        pairs = []
        for _ in range(rounds):
            own = bench.scope(work.arguments)[0]
            pairs.append((own, bench.run(work.beside[0])[0] if work.beside else own))
        own, least = (choice(own for own, _ in pairs) for choice in (statistics.median, min))
        goals = []
        if work.limit:
            goals.append(f"{work.limit} ns and below: {verdict(own <= work.limit)}"
                         + (", but in the least run" if least <= work.limit < own else ""))
        if work.beside:
            ratio = statistics.median(one / other for one, other in pairs)
            goals.append(f"at most {work.beside[1]} times `sonaprobe -r`, was {ratio:.2f}: "
                         f"{verdict(ratio <= work.beside[1])}")
        used = bench.used(work.arguments)[1]
        if work.memory:
            most = work.memory[0] + work.memory[1] * bench.calls() / 2**20
            goals.append(f"{most:.0f} MiB and below: {verdict(used <= most)}")
        print(f"| {work.title} | {own:.0f} | {least:.0f} | {used:.0f} | {'; '.join(goals)} |",
              flush=True)


def print_pairs(bench, before, rounds):
    older = copy.copy(bench)
    older.build = before
    print("| | before, least | now, least | ratio, median of the pairs |\n|---|---|---|---|")
    for work in WORKS:
        if not work.limit:
            continue
        pairs = [(older.scope(work.arguments)[0], bench.scope(work.arguments)[0])
                 for _ in range(rounds)]
        before_least, least = map(min, zip(*pairs))
        ratio = statistics.median(now / then for then, now in pairs)
        print(f"| {work.title} | {before_least:.1f} | {least:.1f} | {ratio:.2f} |", flush=True)


READ = ("dd", "if=TRACE", "of=/dev/null", "bs=256k", "status=none")


def print_twice(bench, rounds):
    print("\n| two processors | one, ns a record | two | times as fast | goal |\n|---|---|---|---|---|")
    for title, arguments in TWICE:
        pairs = [(bench.run((*ONE_PROCESSOR, "sonascope", *arguments))[1],
                  bench.scope(arguments)[1]) for _ in range(rounds)]
        one, two = (statistics.median(times) for times in zip(*pairs))
        ratio = statistics.median(one / two for one, two in pairs)
        print(f"| {title} | {one:.0f} | {two:.0f} | {ratio:.2f} "
              f"| at least 1.7: {verdict(ratio >= 1.7)} |", flush=True)
    ratios = []
    for _ in range(rounds):
        one = bench.run((*ONE_PROCESSOR, *ALONE))[1]
        ratios.append(2 * one / bench.together((*ONE_PROCESSOR, *ALONE), (*OTHER_PROCESSOR, *ALONE)))
    print(f"\nTwo `export --to json --jobs 1` at once, one on each processor, do "
          f"{statistics.median(ratios):.2f} times as much as one.", flush=True)


def speedscope_nanoseconds(path):
    """From the file's choice to its picture, in a browser that is already open."""
    told = subprocess.run(["node", HERE / "speedscope.mjs", path], check=True, text=True,
                          stdout=subprocess.PIPE)
    return float(told.stdout) * 1e6


def print_neighbours(bench, rounds, which):
    """Those whose title has the words of `which`."""
    print("\n| instead | ns a record | sonascope | ns a record | times as fast |\n|---|---|---|---|---|")

    def show(title, pairs, instead, least=None):
        other, own = (statistics.median(times) for times in zip(*pairs))
        ratio = statistics.median(other / own for other, own in pairs)
        goal = f"; at least {least}: {verdict(ratio >= least)}" if least else ""
        print(f"| {title} | {other:.0f} | `{instead}` | {own:.0f} | {ratio:.1f}{goal} |", flush=True)

    for neighbour in NEIGHBOURS:
        if which not in neighbour.title:
            continue
        bench.make_inputs_of(neighbour.command)
        pairs = [(bench.run(neighbour.command)[0], bench.scope(neighbour.instead)[0])
                 for _ in range(rounds)]
        show(neighbour.title, pairs, neighbour.instead[0], neighbour.least)
    if which not in SPEEDSCOPE:
        return
    bench.make_inputs_of(("FOLDER/trace.speedscope.json",))
    path = bench.folder / "trace.speedscope.json"
    pairs = [(speedscope_nanoseconds(path) / bench.records, bench.scope(("tree", "TRACE"))[1])
             for _ in range(rounds)]
    show(SPEEDSCOPE, pairs, "tree")


def print_growth(build, folder, counts):
    """Processor time and the most memory of each command, by the trace's size."""
    cells = {work.title: [] for work in WORKS}
    for count in counts:
        bench = Bench(build, folder, count)
        for work in WORKS:
            seconds, megabytes = bench.used(work.arguments)
            cells[work.title] += [f"{seconds:.2f}", f"{megabytes:.0f}"]
            for made in folder.glob("new.*"):
                made.unlink()
        bench.trace.unlink()
    print("| records |" + "".join(f" {count:,}, s | MiB |" for count in counts))
    print("|---" * (1 + 2 * len(counts)) + "|")
    for title, row in cells.items():
        print(f"| {title} | " + " | ".join(row) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--records", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--growth", type=int, nargs="+", metavar="N")
    parser.add_argument("--alone", action="store_true")
    parser.add_argument("--beside", metavar="WORDS")
    parser.add_argument("--before", type=pathlib.Path, metavar="BUILD_DIR")
    arguments = parser.parse_args()
    if arguments.growth:
        print_growth(arguments.build, arguments.folder, arguments.growth)
        return
    bench = Bench(arguments.build, arguments.folder, arguments.records)
    if arguments.beside:
        print_neighbours(bench, arguments.rounds, arguments.beside)
        return
    if arguments.before:
        print_pairs(bench, arguments.before, arguments.rounds)
        return
    print_works(bench, arguments.rounds)
    if arguments.alone:
        return
    print_twice(bench, arguments.rounds)
    print_neighbours(bench, arguments.rounds, "")


if __name__ == "__main__":
    main()
