"""sonaprobe-sim write dropouts: what it plants is in the trace, which reads as drivers' work."""

import json
import os
import pathlib

import jsonschema
import pytest

from conftest import needs_root, run_program
from records import DIVISOR_MARKER, unpack

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SCHEMA = json.loads((SOURCE / "docs/schema/dropouts-truth.schema.json").read_text())
OVERLOAD, ZERO_TIME_STAMP = 0x21040001, 0x21040011  # starts that no end follows
CAUSES = SCHEMA["properties"]["dropouts"]["items"]["properties"]["cause"]["enum"]
# Of these the records are all there.
WHOLE = ",".join(cause for cause in CAUSES if cause != "lost-records")

each_level = pytest.mark.parametrize("level", ["easy", "medium", "hard"])


@pytest.fixture
def write(tmp_path):
    def run(*options):
        trace, truth = tmp_path / "dropouts.raw", tmp_path / "truth.json"
        result = run_program("write", "dropouts", trace, "--truth", truth, *options,
                             program="sonaprobe-sim")
        assert (result.stdout, result.stderr, result.returncode) == ("", "", 0)
        return trace, json.loads(truth.read_text())

    return run


@each_level
def test_what_was_planted_is_where_the_truth_says(level, write):
    trace, truth = write("--level", level, "--count", 45, "--seed", 3)
    jsonschema.validate(truth, SCHEMA)
    slots = unpack(trace.read_bytes())
    assert (slots[0]["debugid"], slots[0]["t"]) == (DIVISOR_MARKER, 24)
    overloads = [i for i, slot in enumerate(slots) if slot["debugid"] == OVERLOAD]
    assert [dropout["slot"] for dropout in truth["dropouts"]] == overloads
    assert len(overloads) >= 45
    assert {dropout["cause"] for dropout in truth["dropouts"]} == set(CAUSES)
    for dropout in truth["dropouts"]:
        assert slots[dropout["slot"]]["a5"] == int(dropout["thread"], 0)
        culprit = dropout["culprit"]
        assert (culprit is None) == (dropout["cause"] in ("late-wake", "unknown"))
        if culprit and "code" in culprit:
            slot = slots[culprit["slot"]]
            assert (slot["debugid"], slot["a5"], slot["cpu"]) == (
                int(culprit["code"], 0) | 1, int(culprit["thread"], 0), culprit["cpu"])


@each_level
def test_calls_nest_and_each_threads_records_are_in_order(level, write):
    trace, _ = write("--level", level, "--count", 24, "--cause", WHOLE)
    open_calls, latest = {}, {}
    for slot in unpack(trace.read_bytes())[1:]:
        thread = slot["a5"]
        assert latest.get(thread, 0) <= slot["t"]
        latest[thread] = slot["t"]
        calls = open_calls.setdefault(thread, [])
        code, qualifier = slot["debugid"] & ~3, slot["debugid"] & 3
        if slot["debugid"] in (OVERLOAD, ZERO_TIME_STAMP):
            continue
        if qualifier == 1:
            calls.append(code)
        elif qualifier == 2:
            assert calls.pop() == code
    assert not any(open_calls.values())


@needs_root
@each_level
def test_every_record_prints_a_line(level, write):
    trace, _ = write("--level", level, "--count", 9)
    result = run_program("-s", "-A", "-v", "-r", trace)
    lines = [line for line in result.stdout.splitlines() if line.startswith("0x")]
    assert len(lines) == len(unpack(trace.read_bytes())) - 1


def test_the_seed_decides_every_byte(write):
    first = write("--seed", 7)[0].read_bytes()
    assert write("--seed", 7)[0].read_bytes() == first
    assert write("--seed", 8)[0].read_bytes() != first


def test_only_the_causes_that_are_asked_for_are_planted(write):
    _, truth = write("--cause", "client,clock", "--count", 8)
    assert {dropout["cause"] for dropout in truth["dropouts"]} == {"client", "clock"}


@pytest.mark.parametrize("options, message", [
    (["--level", "nasty"], "--level is easy, medium or hard, not 'nasty'"),
    (["--cause", "client,ghost"], "'ghost' is no cause; they are client, driver-call, blocked-by, "
     "preempted, late-wake, clock, engine-change, lost-records, unknown"),
    (["--truth"], "--truth takes a text, and none follows"),
    (["--count", "many"], "--count takes a number from 0 to 100000, not 'many'"),
])
def test_what_it_does_not_understand_it_says(options, message, tmp_path):
    result = run_program("write", "dropouts", tmp_path / "x.raw", *options, program="sonaprobe-sim")
    assert (result.stderr, result.returncode) == (f"sonaprobe-sim: {message}\n", 1)
