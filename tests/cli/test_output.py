"""Standard output: the clock, deep lines, readers that leave, full devices, closed streams."""

import fcntl
import itertools
import os
import pathlib
import signal
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, run_program
from processes import local_times, read_line, started
from records import pack, pack_lines

PROGRAM = BUILD / "sonaprobe"
CLASS_LIST = (pathlib.Path(__file__).parent / "class_list.txt").read_text()
RECORD = "0x05245C0E"
LINE = "<- OrvelHDAPath::enable           End - stream: 0x0 channelID: 0 result: 0x00000000\n"


@pytest.mark.parametrize("zone, hours", [("UTC", 0), ("JST-9", 9), ("PST8", -8)])
def test_the_clock_shows_the_local_time_of_printing(zone, hours, raw):
    trace = raw(f"{RECORD} t=5000000")
    environment = os.environ | {"TZ": zone}
    result, times = local_times(lambda: run_program("-r", trace, env=environment),
                                "%H:%M:%S", hours)
    assert result.stdout[:8] in times


def test_the_clock_goes_on_between_lines():
    with started(PROGRAM, "-r", "/dev/stdin", stdin=subprocess.PIPE,
                 env=os.environ | {"TZ": "UTC"}) as process:

        def next_line():
            process.stdin.write(pack_lines(RECORD))
            process.stdin.flush()
            return read_line(process.stdout).decode()

        for pause in (1.1, 0):
            line, times = local_times(next_line, "%H:%M:%S")
            assert line[:8] in times
            time.sleep(pause)


def test_a_line_keeps_its_indentation_however_deep(tmp_path):
    depth = 9000  # more than twice what the line's buffer holds
    trace = tmp_path / "trace.raw"
    trace.write_bytes(pack(0x05241C19) * depth + pack(0x05241C1A) * depth)
    lines = run_program("-s", "-H", "-S", "-r", trace).stdout.splitlines()
    starts = [f"-> {'':{deep}}PlexoPort::Start Begin: provider 0x0" for deep in range(depth)]
    ends = [f"<- {'':{deep}}PlexoPort::Start End: provider 0x0 returning false"
            for deep in reversed(range(depth))]
    assert lines == starts + ends


@pytest.mark.parametrize("size, wide", [(65_536, 1 << 20), (2 << 20, 2 << 20)])
def test_a_pipe_is_widened_so_that_its_reader_is_seldom_waited_for(size, wide, raw):
    ours, theirs = os.pipe()
    try:
        fcntl.fcntl(ours, fcntl.F_SETPIPE_SZ, size)
    except PermissionError:
        pytest.skip("needs the right to widen pipes")
    run_program("-r", raw(RECORD), capture_output=False, stdout=theirs)
    assert fcntl.fcntl(ours, fcntl.F_GETPIPE_SZ) == wide
    os.close(ours)
    os.close(theirs)


@pytest.fixture
def long_trace(tmp_path):
    path = tmp_path / "long.raw"
    path.write_bytes(pack_lines(RECORD) * 100_000)
    return path


def test_a_reader_that_leaves_ends_the_program_silently(long_trace):
    with started(PROGRAM, "-s", "-H", "-i", "-r", long_trace, stderr=subprocess.PIPE,
                 text=True) as process:
        assert read_line(process.stdout) == LINE
        process.stdout.close()
        assert process.wait(PATIENCE) == -signal.SIGPIPE
        assert process.stderr.read() == ""


def test_where_broken_pipes_are_ignored_the_program_still_comes_to_its_end(long_trace):
    with started(PROGRAM, "-s", "-r", long_trace, stderr=subprocess.PIPE,
                 restore_signals=False) as process:
        read_line(process.stdout)
        process.stdout.close()
        assert process.wait(PATIENCE) == 0
        assert process.stderr.read() == b""


def test_a_full_device_is_no_error(long_trace):
    with open("/dev/full", "wb") as full:
        result = run_program("-s", "-r", long_trace, capture_output=False, stdout=full,
                             stderr=subprocess.PIPE)
    assert (result.returncode, result.stderr) == (0, "")


def test_a_standard_output_that_does_not_wait_loses_no_line(long_trace):
    ours, theirs = os.pipe()
    os.set_blocking(theirs, False)
    with started(PROGRAM, "-s", "-H", "-i", "-r", long_trace, stdout=theirs) as process:
        os.close(theirs)
        with open(ours, encoding="ascii") as pipe:
            time.sleep(0.2)  # the pipe is full by then
            assert pipe.read() == LINE * 100_000
        assert process.wait(PATIENCE) == 0


@pytest.mark.parametrize("options", [(), ("-w",)])
def test_messages_and_lines_keep_their_order(options, raw):
    trace = raw(f"{RECORD}\n0xFEEDFACE t=24\n{RECORD}")
    result = run_program(*options, "-v", "-s", "-H", "-i", "-r", trace)
    assert result.stdout.endswith(
        f"Will read raw data from file {trace}\n{LINE}Found divisor 24.000000 as 0x18\n{LINE}")


def run_with(redirections, *arguments):
    """Runs the program with redirections as the shell spells them."""
    return subprocess.run(["sh", "-c", f'exec "$@" {redirections}', "sh", PROGRAM, *arguments],
                          capture_output=True, text=True, timeout=PATIENCE, check=False)


CLOSED = [streams for count in range(4) for streams in itertools.combinations("012", count)]


@pytest.mark.parametrize("closed", CLOSED, ids="".join)
def test_standard_streams_may_be_closed_from_the_start(closed, tmp_path):
    trace, codes = tmp_path / "trace.raw", tmp_path / "codes"
    slots = pack_lines(f"{RECORD}\n0x01300005\n")
    trace.write_bytes(slots)
    codes.write_text("0x01300004 name\n")
    result = run_with(" ".join(f"{stream}>&-" for stream in closed),
                      "-s", "-H", "-i", "-l", f"-d{codes}", "-r", trace)
    named = f"-> {'::name':30} " + f"{0:16x}  " * 4 + f"0x{0:16x}   0\n"
    assert result.returncode == 0
    assert result.stdout == ("" if "1" in closed else LINE + named)
    assert result.stderr == ("" if "2" in closed else CLASS_LIST)
    assert trace.read_bytes() == slots
    assert codes.read_text() == "0x01300004 name\n"


def test_a_closed_standard_input_reads_as_an_empty_file():
    result = run_with("0<&-", "-r", "/dev/stdin")
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")
