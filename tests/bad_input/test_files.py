"""Raw files cut anywhere, huge and growing; code-name files of bytes that are no lines."""

import os
import threading

import pytest

from conftest import run_program
from records import SLOT, pack

OPTIONS = ("-s", "-H", "-i", "-S", "-u")
PORT_STARTS = 0x05241C19


def slots_and_lines(count):
    """Slots with numbers to know them by, and their lines under OPTIONS."""
    slots = b"".join(pack(PORT_STARTS, a2=number) for number in range(1, count + 1))
    lines = [f"-> PlexoPort::Start Begin: provider 0x{number:x}" for number in range(1, count + 1)]
    return slots, lines


def read(path):
    result = run_program(*OPTIONS, "-r", path)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout.splitlines()


def test_a_raw_file_may_be_cut_at_any_length(tmp_path):
    slots, lines = slots_and_lines(3)
    trace = tmp_path / "trace"
    for length in range(3 * SLOT.size + 1):
        trace.write_bytes(slots[:length])
        assert read(trace) == lines[:length // SLOT.size], f"cut at {length}"


def test_a_raw_file_may_have_more_than_4_gib(tmp_path):
    slots, lines = slots_and_lines(2)
    trace = tmp_path / "trace"
    with trace.open("wb") as file:  # the hole between is of records that print nothing
        file.write(slots[:SLOT.size])
        file.seek(2**32 + 64)
        file.write(slots[SLOT.size:])
    assert read(trace) == lines


def test_of_a_raw_file_that_grows_while_it_is_read_comes_a_whole_part(tmp_path):
    slots, lines = slots_and_lines(40_000)
    before = 20_000
    trace = tmp_path / "trace"
    trace.write_bytes(slots[:before * SLOT.size])

    def grow():
        with trace.open("ab", buffering=0) as file:
            for begin in range(before * SLOT.size, len(slots), 1000):  # no multiple of a slot
                file.write(slots[begin:begin + 1000])

    grower = threading.Thread(target=grow)
    grower.start()
    printed = read(trace)
    grower.join()
    assert before <= len(printed) <= len(lines)
    assert printed == lines[:len(printed)]


@pytest.fixture
def names(raw):
    """The names of some codes by a code-name file."""
    trace = raw("0x01300004\n0x01300008\n0x0130000C\n")

    def read_names(path):
        result = run_program(*OPTIONS, "-g", f"-d{path}", "-r", trace, errors="surrogateescape")
        assert (result.stderr, result.returncode) == ("", 0)
        return [line[3:].split()[0] for line in result.stdout.splitlines()]

    return read_names


UNNAMED = ["U-0x0130|00|001", "U-0x0130|00|002", "U-0x0130|00|003"]
LONG = 1 << 20


@pytest.mark.parametrize("content, expected", [
    (b"", UNNAMED),
    (b"0x01300008 two", [UNNAMED[0], "two", UNNAMED[2]]),
    (b"0x01300004 o\0ne\n0x01300008 two\n", ["o", "two", UNNAMED[2]]),
    (b"\0 0x01300004 one\n0x01300008 two\n", [UNNAMED[0], "two", UNNAMED[2]]),
    (b"0x01300004 " + LONG * b"x" + b"\n0x01300008 two\n", [52 * "x", "two", UNNAMED[2]]),
    (LONG * b"y" + b" 0x01300008\n0x0130000C three\n", [*UNNAMED[:2], "three"]),
    (LONG * b"\0", UNNAMED),
], ids=["empty", "no line end", "NUL in a name", "NUL first", "megabyte name", "megabyte line",
        "megabyte of NUL"])
def test_a_code_name_file_may_hold_any_bytes(names, tmp_path, content, expected):
    (tmp_path / "codes").write_bytes(content)
    assert names(tmp_path / "codes") == expected


def test_a_code_name_file_may_be_a_fifo(names, tmp_path):
    fifo = tmp_path / "codes"
    os.mkfifo(fifo)
    feeder = threading.Thread(target=fifo.write_bytes, args=[b"0x01300004 one\n"])
    feeder.start()
    assert names(fifo) == ["one", *UNNAMED[1:]]
    feeder.join()


def test_a_code_name_file_that_is_cut_while_in_use_names_what_is_left(names, tmp_path):
    codes = tmp_path / "codes"
    lines = [b"0x01300004 one\n", b"0x01300008 two\n", b"0x0130000C three\n"]
    full = ["one", "two", "three"]
    ending = threading.Event()

    def cut_and_restore():
        while not ending.is_set():
            for count in (3, 1, 0, 2):
                codes.write_bytes(b"".join(lines[:count]))

    codes.write_bytes(b"".join(lines))
    cutter = threading.Thread(target=cut_and_restore)
    cutter.start()
    try:
        for _ in range(50):
            for name, whole, unnamed in zip(names(codes), full, UNNAMED, strict=True):
                assert name in (whole, unnamed)
    finally:
        ending.set()
        cutter.join()
