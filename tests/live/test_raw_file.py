"""A raw file that cannot take all records: a message for each that is not stored, whole slots for
the others, and a run that goes on."""

import errno
import os
import pathlib
import re
import resource
import subprocess

import pytest

from live import left_behind, stage, until
from records import unpack

# All is stored, nothing is printed.
SILENT = ("-X", "1")


def events(first, count):
    """End events that tell their number by their time stamp."""
    return "\n".join(f"0x05245C0E t={n} a2={n}" for n in range(first, first + count))


def message(error, number):
    return (f"Error {int(error)} occurred writing data with debugid 0x5245c0e "
            f"and timestamp {number:#x}")


def numbers_in(trace):
    """The numbers of the events in a raw file, which is to be whole and in step."""
    data = trace.read_bytes()
    assert len(data) % 64 == 0
    divisor, *slots = unpack(data)
    assert divisor["debugid"] == 0xFEEDFACE
    assert {slot["debugid"] for slot in slots} <= {0x05245C0E}
    return [slot["t"] for slot in slots]


def post_and_wait(stage, run, trace, first, count):
    """Posts events and waits until each is stored or has its message."""
    def settled():
        return trace.stat().st_size // 64 - 1 + len(run.errors())
    before = settled()
    stage.post(events(first, count))
    until(lambda: settled() >= before + count, "each event was stored or had its message")


@pytest.mark.parametrize("beyond", [0, 1, 32, 63])
def test_a_file_at_its_limit_takes_whole_slots_and_more_when_the_limit_is_lifted(stage, beyond):
    room = 9000
    run = stage.start("-b", 20000, "-wtrace", *SILENT)
    trace = stage.folder / "trace"
    _, hard = resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE, (64 * (1 + room) + beyond, hard))
    post_and_wait(stage, run, trace, 0, 5000)
    post_and_wait(stage, run, trace, 5000, 5000)
    lost = range(room, 10000)
    assert numbers_in(trace) == [*range(room)]
    assert run.errors() == [message(errno.EFBIG, number) for number in lost]

    resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE, (hard, hard))
    post_and_wait(stage, run, trace, 10000, 10)
    assert run.end() == 0
    assert numbers_in(trace) == [*range(room), *range(10000, 10010)]
    assert len(run.errors()) == len(lost)
    assert left_behind() == {}


IN_A_SMALL_DISK = ("unshare", "--mount", "sh", "-c",
                   'mount -t tmpfs -o size=256k tmpfs disk && exec "$@"', "sh")


def test_a_full_disk_costs_the_records_that_come_meanwhile(stage):
    (stage.folder / "disk").mkdir()
    if subprocess.run([*IN_A_SMALL_DISK, "true"], cwd=stage.folder, check=False).returncode != 0:
        pytest.skip("cannot mount a file system")
    run = stage.start("-wdisk/trace", *SILENT, prefix=IN_A_SMALL_DISK)
    disk = pathlib.Path(f"/proc/{run.process.pid}/root{stage.folder}/disk")
    trace = disk / "trace"
    ballast = disk / "ballast"
    ballast.write_bytes(bytes(192 << 10))
    post_and_wait(stage, run, trace, 0, 3000)
    stored = numbers_in(trace)
    assert stored == [*range(1023)]  # and the divisor fill the last 64 KiB
    assert run.errors() == [message(errno.ENOSPC, number) for number in range(1023, 3000)]

    ballast.unlink()
    post_and_wait(stage, run, trace, 3000, 500)
    assert numbers_in(trace) == [*stored, *range(3000, 3500)]
    assert len(run.errors()) == 3000 - 1023
    assert run.end() == 0
    assert left_behind() == {}


def test_records_that_cannot_be_stored_are_printed_all_the_same(stage):
    run = stage.start("-s", "-H", "-w/dev/full")
    posted = stage.post(events(1, 2000))
    until(lambda: len(run.errors()) == 2001, "each record had its message")
    assert run.end() == 0
    assert run.errors() == ["Error 28 writing divisor data",
                            *(message(errno.ENOSPC, number) for number in range(1, 2001))]
    assert run.printed() == stage.read("-s", "-H", "-r", posted)
    assert left_behind() == {}


def test_the_message_of_a_record_that_is_not_stored_stands_before_its_line(stage):
    both = stage.folder / "both"
    with both.open("a") as outputs:
        run = stage.start("-s", "-H", "-S", "-w/dev/full", stdout=outputs, stderr=outputs)
    count = 1500  # more than are stored together
    stage.post(events(1, count))
    until(lambda: both.read_text().count("timestamp") == count, "each record had its message")
    assert run.end() == 0
    told = re.findall(r"(timestamp|stream:) (\w+)", both.read_text())
    place = {word: at for at, word in enumerate(told)}
    assert len(place) == 2 * count
    for number in map(hex, range(1, count + 1)):
        assert place["timestamp", number] < place["stream:", number]


@pytest.mark.parametrize("umask, mode", [(0o077, 0o600), (0o022, 0o644)])
def test_a_raw_file_gets_the_mode_that_the_umask_leaves(stage, umask, mode):
    run = stage.start("-wtrace", umask=umask)
    assert run.end() == 0
    assert (stage.folder / "trace").stat().st_mode & 0o777 == mode


def test_a_raw_file_that_is_cut_short_gets_a_hole_of_empty_slots(stage):
    run = stage.start("-wtrace", *SILENT)
    trace = stage.folder / "trace"
    post_and_wait(stage, run, trace, 1, 100)
    os.truncate(trace, 64)
    stage.post(events(101, 1))
    until(lambda: trace.stat().st_size == 102 * 64, "the next event was stored")
    assert run.end() == 0
    slots = unpack(trace.read_bytes())
    assert [slot["debugid"] for slot in slots] == [0xFEEDFACE, *100 * [0], 0x05245C0E]
    assert run.errors() == []


def test_a_raw_file_is_emptied_at_the_start(stage):
    trace = stage.folder / "trace"
    trace.write_bytes(b"x" * 1000)
    run = stage.start("-wtrace")
    until(lambda: trace.stat().st_size == 64, "the divisor was stored")
    assert run.end() == 0
    assert numbers_in(trace) == []
