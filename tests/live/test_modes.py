"""The live modes from first record to last: what is posted is what is printed and stored."""

import contextlib
import os
import re

import pytest

from conftest import run_program
from live import VERSION_LINE, left_behind, random_records, sim, stage, status, until
from records import pack_lines, unpack

STORY = """
    0x05245C0D t=24000000 a1=0x10 a2=0xabc a3=1 a5=0x77
    0x05245C0C t=24000024 a1=0x10 a2=0x0000bb8000000020 a3=2 a5=0x77
    0x05245C0E t=24000048 a1=0x10 a2=0xabc a5=0x77
"""
STORY_LINES = [
    "01000.000 0x00000077 -> OrvelHDAPath::enable           (0x0000000000000010) "
    "Start - stream: 0xabc channelID: 1 channelConfig: 0",
    "01000.001 0x00000077     OrvelHDAPath::enable           (0x0000000000000010) "
    "sampleRate: 48000 bitsPerSample: 32 channelCount: 0 sampleFormat: 0x00000002",
    "01000.002 0x00000077 <- OrvelHDAPath::enable           (0x0000000000000010) "
    "End - stream: 0xabc channelID: 0 result: 0x00000000",
]

# An end event whose line is its number, between other columns.
NUMBERED = "0x05245C0E a2={}"
NUMBERED_OPTIONS = ("-s", "-H", "-g", "-m", "-S")


def numbered(numbers):
    return "\n".join(NUMBERED.format(number) for number in numbers)


def numbers_of(lines):
    """The numbers of such lines, in their order."""
    return [int(line.split(" channelID")[0].split("stream: ")[1], 16) for line in lines]


def test_what_is_posted_is_printed(stage):
    run = stage.start("-k")
    stage.post(STORY)
    run.wait_for_lines(3)
    assert run.end() == 0
    assert run.out.read_text().splitlines() == [VERSION_LINE, *STORY_LINES]
    assert run.errors() == []
    assert left_behind() == {}


@pytest.mark.parametrize("options", [
    ("-k", "-c", "-C"), ("-B",), ("-k", "-A", "-i", "-S"), ("-s", "-g", "-X", "23", "-X", "24"),
    ("-k", "-F", "23")])
def test_a_live_run_prints_what_is_printed_of_the_raw_file_that_is_posted(stage, options):
    run = stage.start(*options)
    records = random_records(6000, seed=1)
    third = len(records) // 3
    for begin in range(0, len(records), third):
        stage.post(records[begin:begin + third])
    expected = stage.read(*options, "-r", stage.file(records))
    assert len(expected) > 50
    run.wait_for_lines(len(expected))
    assert run.end() == 0
    assert run.printed() == expected


def test_write_mode_stores_what_is_posted_and_prints_it(stage):
    run = stage.start("-k", "-wtrace")
    posted = stage.post(random_records(5000, seed=2))
    trace = stage.folder / "trace"
    until(lambda: trace.stat().st_size >= posted.stat().st_size, "all records were stored")
    assert run.end() == 0
    assert trace.read_bytes() == posted.read_bytes()
    assert run.printed() == stage.read("-k", "-r", trace) == stage.read("-k", "-r", posted)
    assert run.errors() == []
    assert left_behind() == {}


def test_a_reader_of_write_modes_lines_is_not_kept_waiting_for_large_pieces(stage):
    ours, theirs = os.pipe()
    run = stage.start("-s", "-H", "-S", "-wtrace", stdout=theirs)
    os.close(theirs)
    stage.post(numbered(range(100)))  # some 8 KB, far below what other modes gather
    os.set_blocking(ours, False)
    shown = b""

    def half_is_there():
        nonlocal shown
        with contextlib.suppress(BlockingIOError):
            shown += os.read(ours, 1 << 16)
        return shown.count(b"stream: ") >= 50
    until(half_is_there, "half of the lines came")
    assert shown.endswith(b"\n")
    assert run.end() == 0
    os.close(ours)


def test_write_mode_stores_no_invalid_record(stage):
    run = stage.start("-wtrace")
    stage.post("0xDEADBEEF a1=1\n0x05245C0E\n0xDEADBEEF a1=2\n0x05245C0D")
    trace = stage.folder / "trace"
    until(lambda: trace.stat().st_size == 3 * 64, "the valid records were stored")
    assert run.end() == 0
    assert [slot["debugid"] for slot in unpack(trace.read_bytes())] == [
        0xFEEDFACE, 0x05245C0E, 0x05245C0D]


@pytest.mark.parametrize("options, passed", [
    (("-1", "0x05245C00", "-2", "0x05245C0F"), ["0x05245C0D", "0x05245C0E"]),
    (("-I", "0x20000", "-1", "5", "-2", "0x24"), ["0x05245C0D", "0x05245C0E", "0x05246001"]),
    (("-I", "0x200000", "-1", "0x05246000", "-2", "0x21040000"), ["0x05246001", "0x21040001"]),
])
def test_the_interest_decides_what_is_collected(stage, options, passed):
    run = stage.start("-B", "-wtrace", *options)
    path = stage.file("0x05245C0D\n0x05245C0E\n0x05246001\n0x21040001\n0x07010004")
    assert sim("post", path) == f"{len(passed)} of 5 records logged\n"
    trace = stage.folder / "trace"
    until(lambda: trace.stat().st_size == 64 * (1 + len(passed)), "the records were stored")
    assert run.end() == 0
    assert trace.read_bytes()[64:] == pack_lines("\n".join(passed))


def test_a_small_buffer_that_wraps_loses_the_oldest_records_and_says_so(stage):
    run = stage.start("-b", 10, "-v", *NUMBERED_OPTIONS)
    total = 0
    for _ in range(20):
        stage.post(numbered(range(total, total + 25)))
        total += 25
        last = f"stream: {total - 1:#x} "
        until(lambda: last in run.out.read_text(), "the last record was printed")
    lost = int(status()["lost"])
    assert run.end() == 0
    seen = numbers_of(line for line in run.printed() if "stream: " in line)
    assert seen == sorted(set(seen))
    assert (len(seen) + lost, lost > 0) == (total, True)
    assert run.printed().count("Buffer has wrapped.") > 0
    assert left_behind() == {}


def test_nolog_leaves_the_trace_running_for_a_dump(stage):
    assert stage.read("-L", "-b", 1000) == [VERSION_LINE]
    running = {"entries": "1000", "nolog": "0", "audio-debug-flags": "1"}
    assert {name: status()[name] for name in running} == running
    assert status()["owner"] == "none"
    stage.post(STORY)
    # Without a live set-up the divisor is 1000.0.
    assert stage.read("-k", "-D", "-wtrace") == [
        re.sub(r"^01000\.00\d", "00024.000", line) for line in STORY_LINES]
    assert not (stage.folder / "trace").exists()
    assert {name: status()[name] for name in running} == running
    assert status()["pending"] == "0"

    empty = run_program("-D")
    assert (empty.stdout, empty.returncode) == ("", 1)
    assert empty.stderr.endswith(": trace facility failure, KERN_KDREADTR (no data) \n\n")
    assert left_behind() == {}


def test_a_dump_of_a_facility_that_is_not_set_up_fails(stage):
    result = run_program("-D", "-v")
    assert result.stdout.splitlines()[-1] == "CollectWithAlloc error -1"
    assert result.stderr.endswith(": trace facility failure, KERN_KDREADTR\n\n")
    assert result.returncode == 1
    assert left_behind() == {}


def test_a_run_takes_over_what_nolog_has_left(stage):
    stage.read("-L", "-b", 1000)
    run = stage.start(*NUMBERED_OPTIONS, "-b", 500)
    assert status()["entries"] == "500"
    stage.post(numbered([7]))
    run.wait_for_lines(1)
    assert run.end() == 0
    assert numbers_of(run.printed()) == [7]
    assert left_behind() == {"audio-debug-flags": "1"}  # as it was found
