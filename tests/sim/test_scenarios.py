"""sonaprobe-sim write: each scenario reads as its story, by the classes' own events, and is
repeatable by its seed."""

import os
import pathlib
import re
import subprocess

import pytest

from conftest import BUILD, needs_root, run_program
from records import DIVISOR_MARKER, unpack

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
HERE = pathlib.Path(__file__).parent
SCENARIOS = ["playback", "usb", "displayport", "headset", "voice", "all"]
SERVER = 0x2104
TICKS = 24_000_000  # in a second
# Starts that no end follows.
OVERLOAD, ZERO_TIME_STAMP = 0x21040001, 0x21040011

each_scenario = pytest.mark.parametrize("scenario", SCENARIOS)


@pytest.fixture
def write(tmp_path):
    """Writes a scenario into a raw file and returns its path."""

    def run(scenario, *options):
        path = tmp_path / f"{scenario}.raw"
        result = run_program("write", scenario, path, *options, program="sonaprobe-sim")
        assert (result.stdout, result.stderr, result.returncode) == ("", "", 0)
        return path

    return run


def records_of(path):
    divisor, *records = unpack(path.read_bytes())
    assert (divisor["debugid"], divisor["t"]) == (DIVISOR_MARKER, 24)
    return records


def lines_of(path, *options):
    result = run_program(*options, "-r", path)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout.splitlines()


@needs_root
@each_scenario
def test_first_hundred_lines_read_as_the_story(scenario, write):
    """Where a text has changed, script/update-generated renews the lines."""
    options, *expected = (HERE / f"{scenario}.lines").read_text().splitlines()
    options = options.removeprefix("options: ").split()
    assert lines_of(write(scenario), *options)[:100] == expected


@each_scenario
def test_the_seed_decides_every_byte(scenario, write):
    first = write(scenario, "--seed", 7).read_bytes()
    assert write(scenario, "--seed", 7).read_bytes() == first
    assert write(scenario, "--seed", 8).read_bytes() != first


@needs_root
@each_scenario
def test_every_record_prints_a_line_of_its_class(scenario, write):
    path = write(scenario, "--records", 30000, "--seed", 11)
    lines = [line for line in lines_of(path, "-s", "-A", "-v") if line.startswith("0x")]
    assert len(lines) == len(records_of(path)) == 30000
    assert [line for line in lines if not re.match(r"0x\w{8} (->|<-|  ) +\w+::\w", line)] == []


@each_scenario
@pytest.mark.parametrize("seed", range(1, 6))
def test_calls_nest_on_each_thread_and_all_have_ended_with_the_story(scenario, seed, write):
    calls = {}
    for record in records_of(write(scenario, "--seed", seed)):
        if record["debugid"] in (OVERLOAD, ZERO_TIME_STAMP):
            continue
        code, qualifier = record["debugid"] & ~3, record["debugid"] & 3
        is_server = code >> 16 == SERVER
        call = code, None if is_server else record["a1"]
        stack = calls.setdefault(record["a5"], [])
        if qualifier == 1:
            stack.append(call)
        elif qualifier == 2:
            assert stack and stack.pop() == call, hex(code)
    assert calls and not any(calls.values())


@each_scenario
def test_time_goes_on_from_round_to_round(scenario, write):
    path = write(scenario, "--records", 30000)
    stamps = [record["t"] for record in records_of(path)]
    assert stamps == sorted(stamps)
    once = len(records_of(write(scenario)))
    assert once < 30000 and stamps[once] - stamps[once - 1] < 2 * TICKS


def test_a_number_of_records_begins_as_the_whole_story_does(write):
    whole = write("usb").read_bytes()
    assert write("usb", "--records", 1000).read_bytes() == whole[:1001 * 64]


def test_the_threads_and_objects_of_one_story_are_in_no_other(write):
    seen = {}
    for scenario in SCENARIOS[:-1]:
        drivers = [r for r in records_of(write(scenario)) if r["debugid"] >> 16 != SERVER]
        for name in {("object", r["a1"]) for r in drivers} | {("thread", r["a5"]) for r in drivers}:
            assert seen.setdefault(name, scenario) == scenario, name


@needs_root
def test_each_playback_round_has_one_dropout_and_shows_what_comes_before_it(write):
    lines = lines_of(write("playback", "--records", 40000), "-k", "-A", "-S")
    causes = {"timed out - offset": 0, "triggerJackDetection": 0, "late wake": 0}
    for at, line in enumerate(lines):
        if "::OVERLOAD " not in line:
            continue
        cycle = max(i for i in range(at) if "::IOCycle Start" in lines[i])
        reason = [cause for cause in causes if any(cause in li for li in lines[cycle:at])]
        if not reason:
            due = int(re.search(r"WakeHostTime: (\d+)", lines[cycle - 1])[1])
            came = int(re.search(r"HostTime: (\d+)", lines[cycle])[1])
            assert came - due > TICKS // 100
            reason = ["late wake"]
        causes[reason[0]] += 1
    rounds = sum("::IOThread End" in line for line in lines)
    assert rounds <= sum(causes.values()) <= rounds + 1
    assert min(causes.values()) > 0


def test_the_sample_is_what_its_script_makes(tmp_path):
    made = tmp_path / "sample.raw"
    subprocess.run([SOURCE / "script/make-sample", BUILD, made], check=True)
    sample = (SOURCE / "docs/sample/playback-dropout.raw").read_bytes()
    assert sample == made.read_bytes()
    assert len(sample) < 200_000


def test_help_and_list_name_every_scenario():
    listed = run_program("scenarios", program="sonaprobe-sim").stdout.splitlines()
    assert [line.split()[0] for line in listed] == SCENARIOS
    shown = run_program("write", "--help", program="sonaprobe-sim").stdout.splitlines()
    assert [line.strip() for line in listed] == [
        line.strip() for line in shown if line.split()[:1] and line.split()[0] in SCENARIOS]


@pytest.mark.parametrize("arguments, complaint", [
    (["write", "tuba", "x.raw"],
     "unknown scenario 'tuba'; sonaprobe-sim scenarios lists them"),
    (["write", "usb"], "FILE is missing; see sonaprobe-sim --help"),
    (["write", "usb", "/nowhere/x.raw"], "cannot open /nowhere/x.raw: No such file or directory"),
    (["write", "usb", "/dev/full"], "cannot write /dev/full: No space left on device"),
    (["write", "usb", "x.raw", "--records", "0"],
     "--records takes a number from 1 to 18446744073709551615, not '0'"),
    (["play", "tuba"], "unknown scenario 'tuba'; sonaprobe-sim scenarios lists them"),
    (["play"], "SCENARIO is missing; see sonaprobe-sim --help"),
    (["play", "usb", "--threads", "65"], "--threads takes a number from 1 to 64, not '65'"),
    (["play", "usb", "--rate", "fast"], "--rate takes a number from 1 to 1000000000, not 'fast'"),
], ids=lambda value: " ".join(value) if isinstance(value, list) else "")
def test_says_what_is_wrong(arguments, complaint, tmp_path):
    result = run_program(*arguments, program="sonaprobe-sim", cwd=tmp_path)
    assert (result.stderr, result.stdout) == (f"sonaprobe-sim: {complaint}\n", "")
    assert result.returncode == 1
