"""sonascope diff: silent over what chance makes, and not over what was planted."""

import os
import pathlib
import random
import struct
import subprocess

import pytest

from cases import pack
from sonascope import SONASCOPE, ask

SIMULATOR = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"]) / "sonaprobe-sim"
METHOD, OTHER, POINT = 0x05245C0C, 0x05245C10, 0x01400004
RECORDS = 60_000


def story(path, seed, scenario="all", records=RECORDS):
    subprocess.run([SIMULATOR, "write", scenario, path, "--records", str(records), "--seed",
                    str(seed)], check=True, timeout=60)
    return path


def trace_of_calls(path, seed, count=500, slower=1.0, other_slower=1.0, failing=0.0):
    """Calls of METHOD of some 40 µs, each with one of OTHER inside it."""
    chance = random.Random(seed)
    now, slots = 0, [pack(0xFEEDFACE, 1000)]
    for _ in range(count):
        now += int(chance.expovariate(1 / 1_000_000))
        slots.append(pack(METHOD | 1, now, 1, 7))
        now += int(slower * abs(chance.gauss(40_000, 12_000)))
        slots.append(pack(OTHER | 1, now, 1, 7))
        now += int(other_slower * abs(chance.gauss(10_000, 2_000)))
        result = 0xE00002BC if chance.random() < failing else 0
        slots += [pack(OTHER | 2, now, 1, 7), pack(METHOD | 2, now, 1, 7, arg4=result)]
    path.write_bytes(b"".join(slots))
    return path


def findings(first, second, *arguments):
    found = subprocess.run([SONASCOPE, "diff", first, second, *arguments, "--json"],
                           capture_output=True, check=False, timeout=300)
    answer = ask("diff", first, second, *arguments, status=found.returncode)
    assert found.returncode == (1 if answer["findings"] else 0)
    return [(int(each["code"], 16), each["change"]) for each in answer["findings"]]


@pytest.mark.parametrize("scenario", ["all", "playback", "usb"])
def test_a_trace_does_not_differ_from_itself(scenario, tmp_path):
    trace = story(tmp_path / "a.raw", 1, scenario)
    assert findings(trace, trace) == []


def test_seeds_of_one_story_do_not_differ(tmp_path):
    traces = [story(tmp_path / f"{seed}.raw", seed) for seed in range(1, 8)]
    pairs = [(first, second) for place, first in enumerate(traces) for second in traces[place + 1:]]
    false = [(first.name, second.name, found) for first, second in pairs
             for found in findings(first, second)]
    assert false == []


def test_a_method_that_became_slower_by_a_fifth_is_found(tmp_path):
    found = 0
    for seed in range(100):
        before = trace_of_calls(tmp_path / "a.raw", 2 * seed)
        after = trace_of_calls(tmp_path / "b.raw", 2 * seed + 1, slower=1.2)
        found += findings(before, after) == [(METHOD, "slower")]
        found += findings(after, before) == [(METHOD, "faster")]
    assert found >= 190


def test_the_method_that_spends_the_time_is_named_not_its_caller(tmp_path):
    before = trace_of_calls(tmp_path / "a.raw", 1)
    after = trace_of_calls(tmp_path / "b.raw", 2, other_slower=1.5)
    assert findings(before, after) == [(OTHER, "slower")]


def with_points(path, seed, count):
    """The calls of trace_of_calls, and points of an unknown code among them."""
    chance = random.Random(seed)
    data = trace_of_calls(path, seed).read_bytes()
    last, = struct.unpack_from("<Q", data, len(data) - 64)
    slots = [data[at:at + 64] for at in range(64, len(data), 64)]
    slots += [pack(POINT, chance.randrange(last), 1, 9) for _ in range(count)]
    slots.sort(key=lambda slot: struct.unpack_from("<Q", slot))
    path.write_bytes(data[:64] + b"".join(slots))
    return path


def test_events_that_are_new_gone_or_more_frequent_are_found(tmp_path):
    few = with_points(tmp_path / "few.raw", 1, 100)
    many = with_points(tmp_path / "many.raw", 2, 300)
    none = trace_of_calls(tmp_path / "none.raw", 3)
    assert findings(few, many) == [(POINT, "more often")]
    assert findings(many, few) == [(POINT, "less often")]
    assert findings(none, many) == [(POINT, "new")]
    assert findings(many, none) == [(POINT, "gone")]


def test_a_method_that_fails_more_often_is_found(tmp_path):
    sound = trace_of_calls(tmp_path / "a.raw", 1, failing=0.02)
    failing = trace_of_calls(tmp_path / "b.raw", 2, failing=0.3)
    assert findings(sound, failing) == [(METHOD, "fails more")]
    assert findings(failing, sound) == [(METHOD, "fails less")]


def test_two_windows_of_one_file_are_compared(tmp_path):
    before = trace_of_calls(tmp_path / "a.raw", 1).read_bytes()
    after = trace_of_calls(tmp_path / "b.raw", 2, slower=1.2).read_bytes()
    end = struct.unpack_from("<Q", before, len(before) - 64)[0]
    later = b"".join(struct.pack("<Q", struct.unpack_from("<Q", after, at)[0] + end)
                     + after[at + 8:at + 64] for at in range(64, len(after), 64))
    trace = tmp_path / "both.raw"
    trace.write_bytes(before + later)
    answer = ask("diff", trace, "--a", f"0s..{end}ns", "--b", f"{end}ns..1h", status=1)
    assert [(each["code"], each["change"]) for each in answer["findings"]] == [
        ("0x05245C0C", "slower")]
