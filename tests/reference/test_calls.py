"""The program's calls against the reference: cases worked out by hand, and random traces."""

import os
import pathlib
import subprocess

import pytest

import calls
from cases import POINT_CODES, read_cases
from random_trace import random_trace

LIST_CALLS = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"]) / "tests/reference/list_calls"


def told_by_program(data):
    done = subprocess.run([LIST_CALLS], input=data, capture_output=True, check=True, timeout=60)
    return sorted(done.stdout.decode().splitlines())


def told_by_reference(data):
    """What list_calls must print, sorted."""
    trace = calls.read(data, POINT_CODES)
    slots = len(data) // calls.SLOT_SIZE
    number = {id(call): n for n, call in enumerate(trace.calls)}
    lines = [f"steps back\t{trace.steps_back}", f"disordered\t{trace.disordered}"]
    for call in trace.calls:
        start = call.start
        lines.append("\t".join(map(str, (
            "call", number[id(call)], number.get(id(call.parent), -1), f"{start.code:x}",
            start.object or 0, start.thread, start.cpu, start.time, call.end_time, call.self_time,
            call.depth, start.slot, slots if call.end_slot < 0 else call.end_slot, call.how))))
    for what, records in ("point", trace.points), ("orphan end", trace.orphan_ends):
        for record in records:
            lines.append("\t".join(map(str, (what, f"{record.code:x}", record.object or 0,
                                             record.thread, record.time, record.slot))))
    return sorted(lines)


@pytest.mark.parametrize("case", read_cases(), ids=lambda case: case.title)
def test_case(case):
    assert told_by_program(case.slots) == told_by_reference(case.slots)


@pytest.mark.parametrize("hundred", range(10))
def test_random_traces(hundred):
    for seed in range(100 * hundred, 100 * hundred + 100):
        data = random_trace(seed)
        assert told_by_program(data) == told_by_reference(data), f"random_trace({seed})"
