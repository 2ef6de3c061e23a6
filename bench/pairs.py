#!/usr/bin/env python3
"""Compares two builds of sonaprobe, run in turn on the same traces, case by case of the speed table.

usage: pairs.py BEFORE AFTER FOLDER [--records N] [--rounds N]

BEFORE and AFTER are build folders, AFTER one with sonaprobe-sim and sonaprobe-events; FOLDER is on a
memory file system. Must be run as root. The ratio is the median of those of neighbouring runs.
"""

import argparse
import pathlib
import statistics

from measure import CASES, Bench


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("before", type=pathlib.Path)
    parser.add_argument("after", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--records", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=15)
    arguments = parser.parse_args()
    benches = [Bench(build, arguments.folder) for build in (arguments.before, arguments.after)]
    records = benches[1].make_traces(arguments.records)
    print("| | before, ns a record | after | ratio |\n|---|---|---|---|")
    for case in CASES:
        benches[1].prepare(case)
        rounds = []
        for _ in range(arguments.rounds):
            costs = [bench.run(bench.command("sonaprobe", case), case)[0] for bench in benches]
            rounds.append([benches[1].time_of(cost, case) / records for cost in costs])
        before, after = (statistics.median(times) for times in zip(*rounds))
        ratio = statistics.median(after / before for before, after in rounds)
        print(f"| {case.title} | {before:.1f} | {after:.1f} | {ratio:.3f} |", flush=True)


if __name__ == "__main__":
    main()
