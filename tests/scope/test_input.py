"""Traces plain and packed, from files, pipes and FIFOs, whole and broken."""

import bz2
import gzip
import os
import subprocess
import threading

import pytest

from scope import ENABLE, POINT, divisor, nested_calls, record, scope


@pytest.fixture(scope="module")
def trace():
    return divisor() + b"".join(record(ENABLE, POINT, n, a2=n) for n in range(20_000))


def zstd(data):
    return subprocess.run(["zstd", "-qc"], input=data, stdout=subprocess.PIPE, check=True).stdout


PACKINGS = {"plain": lambda data: data, "gzip": gzip.compress, "zstd": zstd}


def lines(*arguments, **options):
    result = scope("lines", *arguments, **options)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout


def write(folder, data, name="trace"):
    (folder / name).write_bytes(data)
    return folder / name


@pytest.mark.parametrize("packing", PACKINGS)
def test_a_trace_reads_alike_however_it_comes(packing, trace, tmp_path):
    expected = lines(write(tmp_path, trace))
    assert expected.count("\n") == 20_000
    packed = write(tmp_path, PACKINGS[packing](trace), "packed")
    assert lines(packed) == expected
    with packed.open() as stream:
        assert lines("-", stdin=stream) == expected
    os.mkfifo(tmp_path / "fifo")
    feeder = threading.Thread(target=(tmp_path / "fifo").write_bytes, args=[packed.read_bytes()])
    feeder.start()
    assert lines(tmp_path / "fifo") == expected
    feeder.join()


@pytest.mark.parametrize("packing", ["gzip", "zstd"])
def test_parts_packed_one_by_one_are_one_trace(packing, trace, tmp_path):
    pack = PACKINGS[packing]
    parts = write(tmp_path, pack(trace[:64_010]) + pack(trace[64_010:]))
    assert lines(parts) == lines(write(tmp_path, trace, "whole"))


def test_what_fills_a_block_after_packed_data_is_passed_over(trace, tmp_path):
    assert lines(write(tmp_path, gzip.compress(trace) + bytes(512))).count("\n") == 20_000


@pytest.mark.parametrize("packing", ["gzip", "zstd"])
def test_packed_data_that_end_early_give_what_they_hold(packing, trace, tmp_path):
    packed = PACKINGS[packing](trace)
    path = write(tmp_path, packed[:len(packed) * 3 // 4])
    result = scope("lines", path)
    assert result.stderr == f"sonascope: {path}: the packed data end early; what came before is used\n"
    assert result.returncode == 0
    found = result.stdout
    assert found and lines(write(tmp_path, trace, "whole")).startswith(found)


@pytest.mark.parametrize("packing", ["gzip", "zstd"])
def test_damaged_data_give_what_stands_before(packing, trace, tmp_path):
    packed = bytearray(PACKINGS[packing](trace + os.urandom(1 << 20)))
    packed[len(packed) // 2:len(packed) // 2 + 64] = bytes(64)
    path = write(tmp_path, bytes(packed))
    result = scope("lines", path)
    assert result.stderr == f"sonascope: {path}: the packed data are damaged; what came before is used\n"


@pytest.mark.parametrize("packing", ["gzip", "zstd"])
def test_a_file_that_unpacks_without_end_is_refused(packing, tmp_path):
    path = write(tmp_path, PACKINGS[packing](divisor() + bytes(80 << 20) + nested_calls()))
    for command in (["info"], ["lines"], ["timeline", "-o", tmp_path / "new"],
                    ["repair", "-o", tmp_path / "new"],
                    ["export", "--to", "sqlite", "-o", tmp_path / "new"]):
        result = scope(command[0], path, *command[1:])
        assert result.returncode == 2
        assert (f"{path} unpacks to more than 250 times its size, as no trace does; if you trust "
                "it, give --max-growth 0\n") in result.stdout + result.stderr
    assert "more than 300 times" in scope("lines", path, "--max-growth", 300).stderr
    assert not (tmp_path / "new").exists()
    assert lines(path, "--max-growth", 0).count("\n") == 5


def test_a_cut_last_slot_is_left_out(tmp_path):
    data = nested_calls()
    assert lines(write(tmp_path, data[:-1], "cut")) == lines(write(tmp_path, data[:-64], "short"))


def test_empty_and_invalid_slots_are_no_records(tmp_path):
    data = nested_calls()
    holes = data[:128] + bytes(64) + record(0xDEADBEEF, 0, 0) + data[128:]
    assert lines(write(tmp_path, holes)) == lines(write(tmp_path, data, "whole"))


@pytest.mark.parametrize("path, message", [
    ("no such", "could not open no such: No such file or directory"),
    ("/", "could not read /: Is a directory"),
    ("a\x1bb\nc", "could not open a\\x1bb\\nc: No such file or directory"),
])
def test_what_cannot_be_read_is_named(path, message, tmp_path):
    result = scope("lines", path, cwd=tmp_path)
    assert (result.stderr, result.returncode) == (f"sonascope: {message}\n", 2)


def test_a_trace_without_divisor_says_what_is_assumed(tmp_path):
    path = write(tmp_path, nested_calls()[64:])
    result = scope("lines", path)
    assert result.stderr == (f"sonascope: {path}: no divisor before the first record; 1000 ticks a "
                             "microsecond are assumed\n")


NO_TRACES = {
    "packed": (bz2.compress(bytes(10_000)), "this is packed with bzip2; unpack it first: bzip2 -d"),
    "packed twice": (gzip.compress(b"\xFF\xD8\xFF" + os.urandom(5_000)), "this is a JPEG image"),
    "text": (b"12:00:00 OrvelHDAPath::enable Start\n" * 9_000,
             "this is a text; traces are what sonaprobe -w keeps, not what it prints"),
    "zeros": (bytes(1 << 20), "this is nothing but zeros, as a disk leaves what was never written"),
    "nothing": (b"", "this is empty: nothing was written, not even a divisor"),
    "stump": (nested_calls()[64:94], "no slot of 64 bytes looks like a record"),
}


@pytest.mark.parametrize("command", [["lines"], ["lines", "--json"], ["stats", "--longer", "1ms"],
                                     ["tree"], ["why"], ["diff"], ["cut", "-o", "new.raw"]])
@pytest.mark.parametrize("name", NO_TRACES)
def test_what_is_no_trace_is_named(name, command, tmp_path):
    data, kind = NO_TRACES[name]
    write(tmp_path, data)
    operands = ["trace", "trace"] if command == ["diff"] else ["trace"]
    result = scope(command[0], *operands, *command[1:], cwd=tmp_path)
    assert (result.stderr, result.returncode) == (f"sonascope: trace: no trace: {kind}\n", 2)
    assert os.listdir(tmp_path) == ["trace"]


def test_a_trace_after_zeros_is_read(tmp_path):
    whole = lines(write(tmp_path, nested_calls()))
    assert lines(write(tmp_path, bytes(1 << 20) + nested_calls(), "late")) == whole


def test_plain_lines_are_of_whatever_is_given(tmp_path, run):
    path = write(tmp_path, NO_TRACES["text"][0])
    assert lines(path, "--plain", "-a", "-k") == run("-a", "-k", "-r", path).stdout != ""
