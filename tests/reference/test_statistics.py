"""sonascope stats against the reference, over random traces."""

import pytest

import calls
from call_statistics import busy_time, statistics
from cases import POINT_CODES, pack
from random_trace import random_trace
from sonascope import ask

# The classes that random traces have.
CLASS_NAMES = {"OrvelHDAPath": 0x05245C00, "class word 0x0140": 0x01400000,
               "class word 0x05F0": 0x05F00000, "audio server": 0x21040000}

# How a row of each grouping tells what its calls have in common.
KEYS = {
    "event": lambda row: int(row["code"], 16),
    "class": lambda row: CLASS_NAMES[row["class"]],
    "thread": lambda row: int(row["thread"], 16),
    "cpu": lambda row: row["cpu"],
    "object": lambda row: None if row["object"] is None else int(row["object"], 16),
    "thread,event": lambda row: (int(row["thread"], 16), int(row["code"], 16)),
}


def told_by_reference(row):
    """A reference's row as sonascope tells it, whose sums saturate; failures and busy time are
    other tests' business."""
    times = dict.fromkeys(("self", "total", "outermost", "mean", "p50", "p90", "p99", "max"))
    if row.times:
        times = {
            "self": row.self_time, "total": row.total, "outermost": row.outermost,
            "mean": row.mean, "p50": row.percentile(50), "p90": row.percentile(90),
            "p99": row.percentile(99), "max": max(row.times),
        }
    times |= {"cut_off_self": row.cut_off_self, "unfinished_self": row.unfinished_self}
    return {
        "calls": row.calls, "finished": len(row.times), "cut_off": row.cut_off,
        "unfinished": row.unfinished, "points": row.points, "orphan_ends": row.orphan_ends,
    } | {f"{name}_ns": time if time is None else min(time, calls.LATEST)
         for name, time in times.items()}


@pytest.mark.parametrize("by", KEYS)
@pytest.mark.parametrize("seed", range(0, 400, 10))
def test_random_trace(by, seed, tmp_path):
    data = random_trace(seed)
    (tmp_path / "trace.raw").write_bytes(data)
    answer = ask("stats", tmp_path / "trace.raw", "--by", by)
    trace = calls.read(data, POINT_CODES)

    rows = {KEYS[by](row): row for row in answer["rows"]}
    expected = statistics(trace, by)
    assert rows.keys() == expected.keys() and len(rows) == len(answer["rows"])
    for key, row in expected.items():
        told = told_by_reference(row)
        assert {name: rows[key][name] for name in told} == told, key
    assert answer["records"] == len(trace.records)
    assert (answer["steps_back"], answer["disordered"]) == (trace.steps_back, trace.disordered)


@pytest.mark.parametrize("seed", range(5, 400, 10))
def test_self_times_of_a_thread_are_its_busy_time(seed, tmp_path):
    data = random_trace(seed)
    (tmp_path / "trace.raw").write_bytes(data)
    trace = calls.read(data, POINT_CODES)
    for row in ask("stats", tmp_path / "trace.raw", "--by", "thread")["rows"]:
        spent = (row["self_ns"] or 0) + row["cut_off_self_ns"] + row["unfinished_self_ns"]
        assert spent == row["busy_ns"] == busy_time(trace, int(row["thread"], 16))


@pytest.mark.parametrize("by", KEYS)
def test_shares_are_self_times_of_all_time_in_calls(by, tmp_path):
    data = random_trace(11)
    (tmp_path / "trace.raw").write_bytes(data)
    trace = calls.read(data, POINT_CODES)
    busy = sum(busy_time(trace, thread) for thread in {call.start.thread for call in trace.calls})
    rows = ask("stats", tmp_path / "trace.raw", "--by", by)["rows"]
    assert busy > 0 and any(row["share"] for row in rows)
    for row in rows:
        assert row["share"] == (None if row["self_ns"] is None
                                else pytest.approx(row["self_ns"] / busy))


def calls_of(*lengths, code=0x05245C0C):
    """A call of each length, in nanoseconds, one after the other."""
    slots, now = [], 0
    for length in lengths:
        slots += [pack(code | 1, now), pack(code | 2, now + length)]
        now += length + 1
    return b"".join(slots)


def test_histogram_counts_by_powers_of_two(tmp_path):
    (tmp_path / "trace.raw").write_bytes(calls_of(0, 1, 2, 3, 4, 7, 8, 1000))
    histogram = ask("stats", tmp_path / "trace.raw", "--histogram", "OrvelHDAPath::enable")["histogram"]
    assert histogram["codes"] == ["0x05245C0C"]
    counted = [(each["from_ns"], each["calls"]) for each in histogram["buckets"] if each["calls"]]
    assert counted == [(0, 2), (2, 2), (4, 2), (8, 1), (512, 1)]


def test_longest_calls_come_with_their_lines(tmp_path):
    (tmp_path / "trace.raw").write_bytes(calls_of(10, 30, 20, 30))
    longest = ask("stats", tmp_path / "trace.raw", "--longest", "3")["longest"]
    assert [(each["duration_ns"], each["start_slot"], each["end_slot"]) for each in longest] == [
        (30, 2, 3), (30, 6, 7), (20, 4, 5)]
    assert longest[0]["start_text"] == "Start - stream: 0x0 channelID: 0 channelConfig: 0"
    assert longest[0]["end_text"] == "End - stream: 0x0 channelID: 0 result: 0x00000000"


def test_failures_are_counted_by_record(tmp_path):
    code = 0x05245C0C
    (tmp_path / "trace.raw").write_bytes(pack(code | 1, 0, 1) + pack(code | 2, 10, 1)
                                         + pack(code | 1, 15, 1) + pack(code | 2, 20, 1, arg4=5))
    row, = ask("stats", tmp_path / "trace.raw")["rows"]
    assert (row["calls"], row["failures"]) == (2, 1)


def test_selected_calls_start_or_end_in_the_window(tmp_path):
    (tmp_path / "trace.raw").write_bytes(calls_of(10, 10, 10, 10))  # at 0, 11, 22, 33
    row, = ask("stats", tmp_path / "trace.raw", "--from", "15ns", "--to", "33ns")["rows"]
    assert row["calls"] == 2
