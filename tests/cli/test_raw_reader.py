"""Reading raw files: files of every length, pipes, devices, folders."""

import array
import fcntl
import os
import subprocess
import termios
import threading

import pytest

from conftest import BUILD, PATIENCE, run_program
from processes import read_line, started, status_of, wait_until
from records import DIVISOR_MARKER, INVALID_MARKER, SLOT, pack

OPTIONS = ("-s", "-H", "-i", "-S", "-u")
PORT_STARTS = 0x05241C19


def records(count):
    """Slots with numbers to know them by, and the lines they print under OPTIONS."""
    slots = b"".join(pack(PORT_STARTS, a2=number) for number in range(1, count + 1))
    lines = "".join(f"-> PlexoPort::Start Begin: provider 0x{number:x}\n"
                    for number in range(1, count + 1))
    return slots, lines


def read(path, **options):
    result = run_program(*OPTIONS, "-r", path, **options)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout


def test_an_empty_file_prints_nothing(tmp_path):
    (tmp_path / "empty").touch()
    assert read(tmp_path / "empty") == ""


@pytest.mark.parametrize("path", ["/", "/dev", "/dev/null"])
def test_what_opens_but_cannot_be_read_ends_like_an_empty_file(path):
    assert read(path) == ""


@pytest.mark.parametrize("rest", [1, 36, 63])
def test_a_slot_cut_short_at_the_end_is_ignored(rest, tmp_path):
    slots, _ = records(3)
    for whole in range(3):
        (tmp_path / "cut").write_bytes(slots[:whole * SLOT.size + rest])
        assert read(tmp_path / "cut") == records(whole)[1]


# The reader's block holds 2048 slots.
@pytest.mark.parametrize("count", [2047, 2048, 2049, 10_000])
def test_files_of_any_number_of_slots_are_read_whole(count, tmp_path):
    slots, lines = records(count)
    (tmp_path / "trace").write_bytes(slots)
    assert read(tmp_path / "trace") == lines


def test_the_reserved_word_of_a_slot_does_not_matter(tmp_path):
    (tmp_path / "trace").write_bytes(pack(PORT_STARTS, a2=1, r=0xFFFFFFFFFFFFFFFF))
    assert read(tmp_path / "trace") == records(1)[1]


def test_a_file_of_a_divisor_slot_alone_prints_nothing_but_under_verbose(tmp_path):
    trace = tmp_path / "trace"
    trace.write_bytes(pack(DIVISOR_MARKER, t=24))
    assert read(trace) == ""
    result = run_program("-r", trace, "-v")
    assert result.stdout == "Verbose mode ON\nFound divisor 24.000000 as 0x18\n"


def test_invalid_slots_are_skipped_and_told_of_under_verbose(tmp_path):
    trace = tmp_path / "trace"
    slots, lines = records(1)
    trace.write_bytes(pack(INVALID_MARKER) + slots + pack(INVALID_MARKER, t=1, a1=2, cpu=3))
    assert read(trace) == lines
    told = "Found an invalid entry in raw file.\n"
    assert run_program(*OPTIONS, "-r", trace, "-v").stdout == (
        "Verbose mode ON\n" + told + lines + told
    )


def test_standard_input_may_be_a_pipe_or_a_file(tmp_path):
    slots, lines = records(3000)
    for path in ("/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"):
        result = subprocess.run([BUILD / "sonaprobe", *OPTIONS, "-r", path], input=slots,
                                capture_output=True, timeout=PATIENCE, check=True)
        assert result.stdout.decode() == lines
    (tmp_path / "trace").write_bytes(slots)
    with open(tmp_path / "trace", "rb") as trace:
        assert read("/dev/stdin", stdin=trace) == lines


def test_a_pipe_may_bring_a_byte_at_a_time(tmp_path):
    slots, lines = records(3)
    fifo = tmp_path / "fifo"
    os.mkfifo(fifo)

    def is_read(pipe):
        held = array.array("i", [0])
        fcntl.ioctl(pipe, termios.FIONREAD, held)
        return held[0] == 0

    def feed():
        with open(fifo, "wb", buffering=0) as pipe:
            for byte in slots + b"rest":
                pipe.write(bytes([byte]))
                wait_until(lambda: is_read(pipe))

    feeder = threading.Thread(target=feed)
    feeder.start()
    assert read(fifo) == lines
    feeder.join()


def test_a_line_is_out_before_the_reader_waits_for_more():
    slots, lines = records(3)
    with started(BUILD / "sonaprobe", *OPTIONS, "-r", "/dev/stdin", bufsize=0,
                 stdin=subprocess.PIPE) as process:
        for number, line in enumerate(lines.splitlines(keepends=True)):
            process.stdin.write(slots[number * SLOT.size:(number + 1) * SLOT.size])
            assert read_line(process.stdout).decode() == line
        process.stdin.close()
        assert process.wait(PATIENCE) == 0


def test_the_last_file_given_is_read(raw):
    first = raw("0x05241C19 a2=1", "first.raw")
    last = raw("0x05241C19 a2=2", "last.raw")
    result = run_program(*OPTIONS, "-r", first, "--read", last)
    assert result.stdout == "-> PlexoPort::Start Begin: provider 0x2\n"


def test_memory_does_not_grow_with_the_trace():
    slots, lines = records(1)
    with started(BUILD / "sonaprobe", *OPTIONS, "-r", "/dev/stdin", bufsize=0,
                 stdin=subprocess.PIPE) as process:

        def kilobytes():
            process.stdin.write(slots)
            assert read_line(process.stdout).decode() == lines
            return int(status_of(process)["VmHWM"].split()[0])

        before = kilobytes()
        for _ in range(128):
            process.stdin.write(bytes(2**20))  # records that print nothing
        assert kilobytes() < before + 4096
