"""Exports of random traces against the reference: sums, and calls that lie strictly in each other.

Whoever draws an export works out from its times alone which call lies in which. inside_each_other()
does so as browsers' tracing viewers do, in doubles.
"""

import json
import subprocess

import pytest

import calls
from cases import POINT_CODES
from random_trace import random_trace
from sonascope import SONASCOPE

# Nanoseconds. Times end at 2^63, where all that is later is one moment; sums end there, too.
LONGEST = 2**62


def exported(data, name, *arguments):
    done = subprocess.run([SONASCOPE, "export", "-", "--to", name, *arguments], input=data,
                          capture_output=True, check=False, timeout=60)
    assert done.returncode == 0, done.stderr.decode()
    return done.stdout.decode()


def random_traces(hundred):
    for seed in range(100 * hundred, 100 * hundred + 100):
        data = random_trace(seed)
        trace = calls.read(data, POINT_CODES)
        if all(abs(record.time) < LONGEST for record in trace.records):
            yield f"random_trace({seed})", data, trace


def inside_each_other(events):
    """Slot and depth of each call, by slot; the calls that a viewer would drop are missing."""
    found = {}
    for thread in {event["tid"] for event in events}:
        stack = []  # ends
        own = [event for event in events if event["tid"] == thread]
        for event in sorted(own, key=lambda event: (event["ts"], -(event["ts"] + event["dur"]))):
            end = event["ts"] + event["dur"]
            while stack and event["ts"] >= stack[-1]:
                stack.pop()
            if stack and end > stack[-1]:
                continue
            found[event["args"]["slot"]] = len(stack)
            stack.append(end)
    return found


@pytest.mark.parametrize("hundred", range(3))
def test_chrome_has_each_call_at_its_depth(hundred):
    for where, data, trace in random_traces(hundred):
        events = json.loads(exported(data, "chrome"))["traceEvents"]
        found = inside_each_other([event for event in events if event["ph"] == "X"])
        assert found == {call.start.slot: call.depth for call in trace.calls}, where


@pytest.mark.parametrize("hundred", range(3))
def test_speedscope_opens_and_closes_each_call_in_order(hundred):
    for where, data, trace in random_traces(hundred):
        document = json.loads(exported(data, "speedscope"))
        spans, nudged = [], 1
        for profile in document["profiles"]:
            stack, latest = [], profile["startValue"]
            for event in profile["events"]:
                assert latest <= event["at"] <= profile["endValue"], where
                nudged = 1 + (abs(event["at"]) >> 50)
                latest = event["at"]
                if event["type"] == "O":
                    stack.append(event)
                else:
                    opened = stack.pop()
                    assert opened["frame"] == event["frame"], where
                    spans.append((opened["at"], event["at"], len(stack)))
            assert stack == [], where
        told = [(call.start.time, call.end_time, call.depth) for call in trace.calls]
        assert sorted(span[2] for span in spans) == sorted(call[2] for call in told), where
        # Moments that coincide are told apart; after a cut a thread may have to wait.
        if all(call.how != "cut off" for call in trace.calls):
            apart = len(trace.records) * nudged
            for place in (0, 1):
                moments = zip(sorted(span[place] for span in spans),
                              sorted(call[place] for call in told))
                assert all(0 <= moment - time <= apart for moment, time in moments), where


@pytest.mark.parametrize("hundred", range(3))
def test_folded_and_callgrind_sum_up_to_the_self_times(hundred):
    for where, data, trace in random_traces(hundred):
        whole = sum(call.self_time for call in trace.calls)
        if whole >= LONGEST:
            continue
        folded = exported(data, "folded").splitlines()
        assert sum(int(line.rpartition(" ")[2]) for line in folded) == whole, where
        grind = exported(data, "callgrind")
        assert f"\nsummary: {whole}\n" in grind, where


@pytest.mark.parametrize("hundred", range(3))
def test_json_has_each_call_of_the_trace(hundred):
    for where, data, trace in random_traces(hundred):
        found = map(json.loads, exported(data, "json", "--what", "calls").splitlines())
        assert sorted((row["slot"], row["time_ns"], row["duration_ns"], row["self_ns"],
                       row["depth"], row["ended"]) for row in found) == sorted(
            (call.start.slot, call.start.time, call.time, call.self_time, call.depth, call.how)
            for call in trace.calls), where


def test_what_does_not_fit_into_memory_is_sorted_all_the_same(tmp_path):
    """More events than are sorted in memory: every thread has a call around all others."""
    simulator = SONASCOPE.parent / "sonaprobe-sim"
    path = tmp_path / "large.raw"
    subprocess.run([simulator, "write", "all", path, "--records", "400000", "--seed", "1"],
                   check=True, timeout=60)
    with subprocess.Popen([SONASCOPE, "export", path, "--to", "chrome"],
                          stdout=subprocess.PIPE) as process:
        latest, count, size = -1, 0, 0
        for line in process.stdout:
            size += len(line)
            if not line.startswith((b'{"ph":"X"', b'{"ph":"i"')):
                continue
            time = float(line.partition(b'"ts":')[2].partition(b",")[0])
            assert time >= latest
            latest = time
            count += 1
    assert process.returncode == 0
    assert size > 80 << 20 and count > 200_000
