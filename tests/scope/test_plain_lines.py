"""lines --plain is what sonaprobe -r prints, byte for byte."""

import json
import os
import pathlib
import random
import shutil
import subprocess

import pytest

from conftest import BUILD, needs_root, run_program
from records import DIVISOR_MARKER, INVALID_MARKER, SLOT, pack_lines, read_cases, without_clock
from scope import nested_calls, scope

GOLDEN = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "tests/golden"
CASES = [case for path in sorted(GOLDEN.rglob("*.golden")) for case in read_cases(path)
         if case.program == "sonaprobe"]

# What sonaprobe says under --verbose beside its lines.
MESSAGES = ("Verbose mode ON", "Will read raw data", "Found divisor", "Found an invalid entry")

# More of them: script/torture lines
RANDOM_RECORDS = int(os.environ.get("SONASCOPE_RANDOM_RECORDS", "20000"))
CHUNK = 100_000


def test_prints_every_golden_stanza(tmp_path):
    shutil.copy(GOLDEN / "trace.codes", tmp_path)
    assert len(CASES) > 100
    for case in CASES:
        (tmp_path / "trace.raw").write_bytes(pack_lines("\n".join(case.records)))
        expected = [line for line in case.expected if not line.startswith(MESSAGES)]
        options = [option for option in case.options if option != "-t"]
        result = scope("lines", "trace.raw", "--plain", *options, cwd=tmp_path)
        assert without_clock(result.stdout).splitlines() == expected, case.where
        assert (result.stderr, result.returncode) == ("", 0), case.where


def known_codes():
    listed = json.loads(scope("events", "--json").stdout)["events"]
    return [int(event["code"], 16) for event in listed]


def random_slots(source, codes, count):
    """Slots of all kinds: known codes, audio codes, any codes, divisors, invalid and empty ones."""
    words = [0, 1, 2, 0xFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 1 << 63, (1 << 64) - 1]

    def word():
        return source.choice(words) if source.random() < 0.4 else source.getrandbits(64)

    for _ in range(count):
        kind = source.random()
        if kind < 0.8:
            debugid = source.choice(codes) | source.getrandbits(2)
        elif kind < 0.9:
            debugid = 0x05240000 | source.getrandbits(16)
        elif kind < 0.98:
            debugid = source.getrandbits(32)
        else:
            debugid = source.choice([DIVISOR_MARKER, INVALID_MARKER, 0])
        stamp = source.getrandbits(source.choice([20, 40, 64]))
        yield SLOT.pack(stamp, word(), word(), word(), word(), word(), debugid,
                        source.getrandbits(8), 0)


@needs_root
def test_prints_random_records_alike(tmp_path):
    source = random.Random(int(os.environ.get("SONASCOPE_RANDOM_SEED", "7")))
    codes = known_codes()
    path = tmp_path / "random.raw"
    for begin in range(0, RANDOM_RECORDS, CHUNK):
        count = min(CHUNK, RANDOM_RECORDS - begin)
        path.write_bytes(b"".join(random_slots(source, codes, count)))
        columns = source.sample(["-c", "-C", "-H", "-g", "-m", "-u", "-i", "-S", "-A", "-a", "-B",
                                 "-Xhdad", "-Fhdac"], source.randrange(6))
        time = source.choice(["-k", "-s"])
        plain = subprocess.run([BUILD / "sonascope", "lines", path, "--plain", time, *columns],
                               check=True, capture_output=True)
        probe = subprocess.run([BUILD / "sonaprobe", time, *columns, "-r", path], check=True,
                               capture_output=True)
        assert plain.stderr == probe.stderr == b""
        assert plain.stdout == probe.stdout, columns
        assert plain.stdout.count(b"\n") > 100


def test_selection_leaves_lines_out_and_changes_none(tmp_path):
    (tmp_path / "trace.raw").write_bytes(nested_calls())
    columns = ["--plain", "-k", "-H", "-i"]
    whole = scope("lines", "trace.raw", *columns, cwd=tmp_path).stdout.splitlines()
    part = scope("lines", "trace.raw", *columns, "--from", "100us", "--to", "1ms", cwd=tmp_path)
    assert part.stdout.splitlines() == whole[1:3]


@pytest.mark.parametrize("option", ["-k", "--codes", "-Xhdad"])
def test_columns_are_those_of_plain_lines_alone(option):
    result = scope("lines", "trace.raw", option)
    assert result.returncode == 2
    assert "requires --plain" in result.stderr


def test_a_full_disk_is_told(tmp_path):
    (tmp_path / "trace.raw").write_bytes(nested_calls())
    with open("/dev/full", "w") as full:
        result = subprocess.run([BUILD / "sonascope", "lines", tmp_path / "trace.raw", "--plain"],
                                stdout=full, stderr=subprocess.PIPE, text=True, check=False)
    assert (result.stderr, result.returncode) == (
        "sonascope: could not write to standard output: No space left on device\n", 2)


def test_a_closed_pipe_ends_it_silently(tmp_path):
    (tmp_path / "trace.raw").write_bytes(nested_calls() * 5_000)
    process = subprocess.Popen([BUILD / "sonascope", "lines", tmp_path / "trace.raw", "--plain"],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.readline()
    process.stdout.close()
    assert process.stderr.read() == b""
    assert process.wait() != 0
