"""What the passes ask of the kernel, and what they make of its answers."""

import errno

import pytest

from host import (DISABLE, ENABLE, GETBUF, MALLOC, READTR, REEXEC, REMOVE, SET_FLAGS, WRAPPED, fail,
                  host, info, lines, read_of, stop_at)
from records import unpack

RESTORE = f"{SET_FLAGS} 0"

# Lines without time, thread and pointer, the text right after the method.
PLAIN = "-s -H -u -S -T"

START = "0x05245C0D a2=0xabc"
START_LINE = "-> OrvelHDAPath::enable Start - stream: 0xabc channelID: 0 channelConfig: 0"
INNER_START_LINE = "->  OrvelHDAPath::enable Start - stream: 0xabc channelID: 0 channelConfig: 0"

# Three records that tell where they stand, and their lines.
THREE = """
    0x05245C0E a2=0x1
    0x05245C0E a2=0x2
    0x05245C0E a2=0x3
"""
THREE_LINES = lines("""
    <- OrvelHDAPath::enable End - stream: 0x1 channelID: 0 result: 0x00000000
    <- OrvelHDAPath::enable End - stream: 0x2 channelID: 0 result: 0x00000000
    <- OrvelHDAPath::enable End - stream: 0x3 channelID: 0 result: 0x00000000
""")


def of_the_passes(result):
    """The calls from the first pass on."""
    return result.calls[result.calls.index(ENABLE) + 1:]


@pytest.mark.parametrize("mode", ["", "-wtrace"])
def test_each_pass_asks_for_the_state_and_then_for_all_records(host, mode):
    result = host.run(f"{PLAIN} {mode}", info(10), info(20), host.read(THREE), host.read(THREE),
                      stop_at(READTR, 3))
    assert of_the_passes(result) == [GETBUF, read_of(10), GETBUF, read_of(20), GETBUF, read_of(20),
                                     DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines() == THREE_LINES * 2


def test_the_write_pass_stores_each_record_with_its_reserved_word_cleared(host):
    host.run("-wtrace", info(10), host.read("0x05245C0D t=1 a1=2 a2=3 a3=4 a4=5 a5=6 cpu=7 r=8"),
             host.read("0x0A0B0C0D t=9 r=0xffffffffffffffff"), stop_at(READTR, 3))
    divisor, *stored = unpack((host.folder / "trace").read_bytes())
    assert divisor["debugid"] == 0xFEEDFACE
    assert stored == [
        {"debugid": 0x05245C0D, "t": 1, "a1": 2, "a2": 3, "a3": 4, "a4": 5, "a5": 6, "cpu": 7,
         "r": 0},
        {"debugid": 0x0A0B0C0D, "t": 9, "a1": 0, "a2": 0, "a3": 0, "a4": 0, "a5": 0, "cpu": 0,
         "r": 0}]


@pytest.mark.parametrize("verbose, message", [("", []), ("-v", ["Buffer has wrapped."])])
def test_a_wrap_in_the_print_pass_restarts_tracing_and_the_indentation(host, verbose, message):
    result = host.run(f"{PLAIN} {verbose}", *([info(9)] if verbose else []),  # one for the settings
                      info(9), info(9, flags=WRAPPED), info(9, flags=0x17),
                      host.read(START), host.read(START), host.read(START), stop_at(READTR, 4))
    assert of_the_passes(result)[:10] == [GETBUF, read_of(9), GETBUF, read_of(9), DISABLE, ENABLE,
                                          GETBUF, read_of(9), GETBUF, read_of(9)]
    printed = result.stdout.splitlines()
    first = printed.index(START_LINE)
    assert printed[first:first + 3 + len(message)] == [
        START_LINE, *message, START_LINE, INNER_START_LINE]


def test_a_wrap_in_the_write_pass_restarts_tracing_and_nothing_else(host):
    result = host.run(f"{PLAIN} -v -wtrace", info(9), info(9), info(9, flags=WRAPPED), info(9),
                      host.read(START), host.read(START), stop_at(READTR, 3))
    assert of_the_passes(result) == [GETBUF, read_of(9), GETBUF, read_of(9), DISABLE, ENABLE,
                                     GETBUF, read_of(9), DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines()[-3:] == [START_LINE, INNER_START_LINE, "Quiting on signal 2"]


# What the kernel says it holds, the room that is then offered of a buffer of two records, how many
# records it says it gave, and how many are believed.
@pytest.mark.parametrize("entries, room, count, believed", [
    (2, 2, 2, 2),
    (1, 1, 3, 1),
    (3, 2, 3, 2),
    (2**31 - 1, 2, 2**31 - 1, 2),
    (-1, 2, 2, 2),
    (0, 0, 3, 0),
    (2, 2, 0, 0),
    (2, 2, -1, 0),
    (2, 2, 0xFFFFFFFF, 0),
    (2, 2, 0x80000000, 0),
])
@pytest.mark.parametrize("mode", ["", "-wtrace"])
def test_answers_that_do_not_fit_are_cut_to_the_buffer(host, mode, entries, room, count, believed):
    result = host.run(f"{PLAIN} -b 2 {mode}", info(entries), host.read(THREE, count),
                      stop_at(READTR, 2))
    assert of_the_passes(result)[1] == read_of(room)
    assert result.stdout.splitlines() == THREE_LINES[:believed]
    if mode:
        assert len(unpack((host.folder / "trace").read_bytes())) == 1 + believed
    assert (result.stderr, result.returncode) == ("", 0)


@pytest.mark.parametrize("mode, verbose, said, message", [
    ("", "", [], "trace facility failure, KERN_KDREADTR\n"
                 "Try using a larger buffer size with --bufsize.\n"),
    ("", "-v", ["CollectTrace error -1"], "trace facility failure, KERN_KDREADTR\n"
                                          "Try using a larger buffer size with --bufsize.\n"),
    ("-wtrace", "", [], "trace facility failure, KERN_KDREADTR\n"),
    ("-wtrace", "-v", ["Inserting divisor 24.000000 as 0x18"],
     "trace facility failure, KERN_KDREADTR\n"),
])
def test_a_failing_read_is_fatal(host, mode, verbose, said, message):
    result = host.run(f"-T {verbose} {mode}", fail(READTR, errno.EINVAL))
    assert of_the_passes(result) == [GETBUF, f"{read_of(0)} -> error 22", DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines()[-1:] == said
    assert (result.stderr, result.returncode) == (f"sonaprobe: {message}\n", 1)


INVALID = """
    0xDEADBEEF a1=0x77
    0x05245C0E
    0xDEADBEEF a1=0x78
"""
BASIC_LINES = [
    "       0.0   0.0  0xdeadbeef                77                 0"
    "                 0                 0  0x0000000000000000   0",
    "       0.0   0.0  0x05245c0e                 0                 0"
    "                 0                 0  0x0000000000000000   0",
    "       0.0   0.0  0xdeadbeef                78                 0"
    "                 0                 0  0x0000000000000000   0",
]


def test_the_print_pass_prints_invalid_records(host):
    result = host.run("-T -B", info(3), host.read(INVALID), stop_at(READTR, 2))
    assert result.stdout.splitlines() == BASIC_LINES


def test_the_dump_prints_invalid_records(host):
    result = host.run("-D -B", info(3), host.read(INVALID))
    assert result.stdout.splitlines() == BASIC_LINES


def test_the_write_pass_passes_invalid_records_over(host):
    result = host.run("-T -B -v -wtrace", info(3), host.read(INVALID), stop_at(READTR, 2))
    assert result.stdout.splitlines()[-4:] == [
        "Tracepoint 0 is invalid.", BASIC_LINES[1], "Tracepoint 2 is invalid.",
        "Quiting on signal 2"]
    slots = unpack((host.folder / "trace").read_bytes())
    assert [slot["debugid"] for slot in slots] == [0xFEEDFACE, 0x05245C0E]


@pytest.mark.parametrize("nolog, paused, resumed", [(0, [DISABLE], [ENABLE]), (1, [], []),
                                                    (2, [DISABLE], [ENABLE])])
def test_a_dump_reads_once_and_leaves_the_facility_as_it_was(host, nolog, paused, resumed):
    result = host.run(f"{PLAIN} -D -wtrace", "flags 6", info(5, nolog), host.read(THREE))
    assert result.calls == [REEXEC, GETBUF, *paused, f"{MALLOC} 320", read_of(5), *resumed]
    assert result.stdout.splitlines() == THREE_LINES
    assert (result.stderr, result.returncode) == ("", 0)
    assert not (host.folder / "trace").exists()


def test_a_dump_believes_no_more_records_than_it_had_room_for(host):
    result = host.run(f"{PLAIN} -D", info(2), host.read(THREE))
    assert result.stdout.splitlines() == THREE_LINES[:2]


NO_DATA = "trace facility failure, KERN_KDREADTR (no data) \n"
NO_MEMORY = "can't allocate memory for tracing info\n"


@pytest.mark.parametrize("nolog, paused, resumed, stopped", [
    (0, [DISABLE], [ENABLE], [DISABLE]), (1, [], [], [])])
@pytest.mark.parametrize("count", [0, -1])
def test_a_dump_without_data_ends_through_the_cleanup(host, nolog, paused, resumed, stopped, count):
    result = host.run("-D", "flags 6", info(5, nolog), host.read("", count))
    assert result.calls == [REEXEC, GETBUF, *paused, f"{MALLOC} 320", read_of(5), *resumed,
                            *stopped, REMOVE, RESTORE]
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonaprobe: {NO_DATA}\n", 1)


@pytest.mark.parametrize("verbose, said", [
    ("", ""), ("-v", "Verbose mode ON\nWill dump trace buffer and exit.\n"
                     "CollectWithAlloc error -1\n")])
def test_a_dump_that_cannot_read_does_not_resume_tracing(host, verbose, said):
    result = host.run(f"{verbose} -D", info(5), fail(READTR, errno.EINVAL))
    assert result.calls[1:] == [GETBUF, DISABLE, f"{MALLOC} 320", f"{read_of(5)} -> error 22",
                                REMOVE, RESTORE]
    assert (result.stdout, result.returncode) == (said, 1)
    assert result.stderr == "sonaprobe: trace facility failure, KERN_KDREADTR\n\n"


@pytest.mark.parametrize("entries, refused", [
    (5, [f"{MALLOC} 320 -> error 12"]),
    (-1, []),  # not even asked for
])
def test_a_dump_without_memory_ends_through_the_cleanup(host, entries, refused):
    result = host.run("-D", info(entries), fail(MALLOC, errno.ENOMEM))
    assert result.calls == [REEXEC, GETBUF, DISABLE, *refused, REMOVE, RESTORE]
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonaprobe: {NO_MEMORY}\n", 1)
