"""From the root check to the exit: run modes, fatal ends, and what each leaves of the facility."""

import os
import resource
import signal
import socket
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, needs_another_user, run_program
from processes import (ENDING_SIGNALS, has_handlers, read_line, started, wait_until,
                       wait_until_waiting)
from records import DIVISOR_MARKER, SLOT, pack_lines, unpack

PROGRAM = BUILD / "sonaprobe"
VERSION = "sonaprobe version:  100.45\n"
VERBOSE = "Verbose mode ON\n"
NOBODY = 65534

pytestmark = pytest.mark.usefixtures("facility")


def sim(*arguments):
    result = run_program(*arguments, program="sonaprobe-sim")
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout


def status():
    """What the facility says of itself, by name."""
    return dict(line.split(": ", 1) for line in sim("status").splitlines())


@pytest.fixture
def tracing():
    """The facility as --nolog leaves it: tracing, with the audio flags set."""
    assert run_program("-L").returncode == 0
    assert_tracing()


def assert_tracing():
    state = status()
    assert (state["nolog"], state["audio-debug-flags"]) == ("0", "1")
    assert state["entries"] != "0"


def assert_cleaned_up():
    state = status()
    assert (state["entries"], state["nolog"], state["audio-debug-flags"]) == ("0", "1", "0")


class TestRootCheck:
    """Only root gets further than the first message."""

    @needs_another_user
    @pytest.mark.parametrize("options", [[], ["-h"], ["-V"], ["-l"], ["-b", "0"], ["--nosuch"]],
                             ids=" ".join)
    def test_no_option_is_looked_at_without_root(self, open_to_all, options, tracing):
        program = open_to_all("sonaprobe")
        result = run_program(*options, program=program, user=NOBODY)
        assert result.stderr == f"'{program}' must be run as root.\n"
        assert (result.stdout, result.returncode) == ("", 1)
        assert_tracing()


class TestRunModes:
    """Dump, read, set up and leave, write, print: the first that applies."""

    POSTED, STORED = "0x05241C19 a2=1", "0x05241C19 a2=2"

    @pytest.fixture
    def stored(self, raw):
        return raw(self.STORED, "stored.raw")

    @pytest.fixture
    def posted(self, raw, tracing):
        sim("post", raw(self.POSTED, "posted.raw"))

    def line(self, number):
        return f"-> PlexoPort::Start Begin: provider 0x{number}\n"

    def test_dump_wins_over_all_others(self, posted, stored, tmp_path):
        result = run_program("-s", "-H", "-S", f"-w{tmp_path}/new", "-L", "-r", stored, "-D")
        assert (result.stdout, result.stderr, result.returncode) == (self.line(1), "", 0)
        assert not (tmp_path / "new").exists()
        assert_tracing()  # as it was

    def test_dump_leaves_the_divisor_at_1000(self, raw, tracing):
        sim("post", raw("0x05241C19 t=61234567000"))
        assert run_program("-D", "-k", "-H").stdout.startswith("01234.567 -> ")

    def test_dump_of_nothing_is_fatal(self, tracing):
        result = run_program("-D")
        message = "trace facility failure, KERN_KDREADTR (no data) \n"
        assert result.stderr == f"{PROGRAM}: {message}\n"
        assert (result.stdout, result.returncode) == ("", 1)

    def test_read_wins_over_nolog_and_write(self, stored, tmp_path, tracing):
        result = run_program("-s", "-H", "-S", "-L", f"-w{tmp_path}/new", "-r", stored)
        assert (result.stdout, result.stderr, result.returncode) == (self.line(2), "", 0)
        assert not (tmp_path / "new").exists()
        assert_tracing()  # as it was

    def test_read_takes_the_path_given_last_even_by_write(self, stored, raw):
        other = raw(self.POSTED, "other.raw")
        result = run_program("-s", "-H", "-S", "-r", other, f"-w{stored}")
        assert (result.stdout, result.returncode) == (self.line(2), 0)

    def test_nolog_sets_up_and_leaves_before_anything_is_written(self, tmp_path):
        result = run_program(f"-w{tmp_path}/new", "-L", "-b", "100")
        assert (result.stdout, result.stderr, result.returncode) == (VERSION, "", 0)
        assert not (tmp_path / "new").exists()
        assert status()["entries"] == "100"
        assert_tracing()

    def test_usage_leaves_the_facility_alone(self, tracing):
        for option in ("-h", "-?", "--nosuch"):
            assert run_program("-b", "100", option).returncode == 0
        assert_tracing()


def long_path(folder):
    """A path of 256 characters to an existing file."""
    (folder / "file").touch()
    return f"{folder}/".ljust(252, "/") + "file"


class TestFatalEnds:
    """The message after the program's name, an empty line, status 1, and everything undone."""

    def assert_fatal(self, result, message, before=""):
        assert result.stderr == f"{before}{PROGRAM}: {message}\n\n"
        assert result.returncode == 1
        assert_cleaned_up()

    @pytest.mark.parametrize("size", ["0", "abc", "", "0x100000000", "4294967296"])
    def test_a_buffer_of_no_size(self, size, tracing):
        result = run_program("-v", "-b", size, "-V")
        assert result.stdout == VERBOSE
        self.assert_fatal(result, "Argument parsing error",
                          before="An invalid buffer of size 0 was requested!\n")

    @pytest.mark.parametrize("option, said, message", [
        ("-d", "", "File path length of decode file is too long"),
        ("-w", "Got w flag\n", "The path length of raw file is too long"),
        ("-r", "", "File path length of raw data file is too long"),
    ])
    def test_a_path_of_256_characters(self, option, said, message, tmp_path, tracing):
        path = long_path(tmp_path)
        assert len(path) == 256
        result = run_program("-v", option + path, "-V")
        assert result.stdout == VERBOSE + said
        self.assert_fatal(result, message)

    def test_a_raw_file_that_cannot_be_opened_to_read(self, tmp_path, tracing):
        result = run_program("-r", tmp_path / "missing")
        assert result.stdout == ""
        self.assert_fatal(result, "Could not open raw file to read!")

    def test_a_raw_file_that_cannot_be_opened_to_write(self, tmp_path):
        result = run_program(f"-w{tmp_path}/missing/file")
        assert result.stdout == VERSION
        self.assert_fatal(result, "Can't open file!")

    def test_a_facility_in_use_gives_the_newest_message(self):
        with started(BUILD / "sonaprobe-sim", "hold") as holder:
            read_line(holder.stdout)  # it owns the facility
            result = run_program("-b", "0")
            holder.terminate()
            assert holder.wait(PATIENCE) == 0
        message = "The trace facility is currently in use.\n"
        assert result.stderr == (
            f"An invalid buffer of size 0 was requested!\n{PROGRAM}: {message}\n"
        )
        assert result.returncode == 1


@pytest.mark.parametrize("number", ENDING_SIGNALS)
@pytest.mark.parametrize("opened", [False, True], ids=["to be opened", "to bring a record"])
def test_a_signal_ends_a_read_that_waits_for_its_pipe(number, opened, tmp_path, tracing):
    fifo = tmp_path / "fifo"
    os.mkfifo(fifo)
    writer = os.open(fifo, os.O_RDWR) if opened else None
    with started(PROGRAM, "-v", "-r", fifo, stderr=subprocess.PIPE, text=True) as process:
        wait_until_waiting(process)
        process.send_signal(number)
        output, errors = process.communicate(timeout=PATIENCE)
    if opened:
        os.close(writer)
    assert output == f"{VERBOSE}Will read raw data from file {fifo}\nQuiting on signal {number}\n"
    assert (errors, process.returncode) == ("", 0)
    assert_cleaned_up()


@pytest.mark.parametrize("kind", ["pipe", "gigabytes"])
def test_a_signal_ends_a_run_that_reads_code_names(kind, tmp_path, raw, tracing):
    codes = tmp_path / "codes"
    if kind == "pipe":
        os.mkfifo(codes)
    else:
        codes.touch()
        os.truncate(codes, 64 << 30)
    with started(PROGRAM, f"-d{codes}", "-r", raw("0x01300004"), stderr=subprocess.PIPE) as process:
        if kind == "pipe":
            writer = os.open(codes, os.O_WRONLY)
            wait_until_waiting(process)
        else:
            wait_until(lambda: has_handlers(process))
            time.sleep(0.1)
        process.send_signal(signal.SIGTERM)
        output, errors = process.communicate(timeout=PATIENCE)
    if kind == "pipe":
        os.close(writer)
    assert (output, errors, process.returncode) == (b"", b"", 0)
    assert_cleaned_up()


def test_memory_that_runs_out_ends_the_program_in_order(tmp_path, raw):
    def little_memory():
        resource.setrlimit(resource.RLIMIT_AS, (40 << 20, 40 << 20))

    if run_program("-r", "/dev/null", preexec_fn=little_memory).returncode != 0:
        pytest.skip("the program alone takes more")
    assert run_program("-L", "-b", "1000").returncode == 0
    assert_tracing()
    codes = tmp_path / "codes"
    codes.write_text("".join(f"{code} name\n" for code in range(1, 600_000)))
    result = run_program("-B", f"-d{codes}", "-r", raw("0x01300004"), preexec_fn=little_memory)
    assert result.stderr == f"{PROGRAM}: Can't allocate memory\n\n"
    assert (result.stdout, result.returncode) == ("", 1)
    assert_cleaned_up()


CLOSED = ("sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh")
WITHOUT_NULL = ("unshare", "--mount", "sh", "-c", 'mount --bind socket /dev/null && exec "$@"', "sh")


@pytest.mark.parametrize("prefix", [(), WITHOUT_NULL], ids=["", "nor is there a /dev/null"])
def test_no_data_file_takes_the_place_of_a_closed_standard_stream(prefix, tmp_path):
    """Messages go nowhere then, least of all into the raw file."""
    with socket.socket(socket.AF_UNIX) as unopenable:
        unopenable.bind(str(tmp_path / "socket"))
    if subprocess.run([*prefix, "true"], cwd=tmp_path, check=False).returncode != 0:
        pytest.skip("cannot mount over /dev/null")
    written = tmp_path / "new.raw"
    with started(*prefix, *CLOSED, PROGRAM, "-v", f"-w{written}", "-b", "100",
                 cwd=tmp_path) as process:
        wait_until(lambda: written.exists() and written.stat().st_size >= SLOT.size)
        (tmp_path / "posted").write_bytes(pack_lines("0x05241C19 a2=1 a5=2"))
        sim("post", tmp_path / "posted")
        wait_until(lambda: written.stat().st_size >= 2 * SLOT.size)
        process.send_signal(signal.SIGINT)
        assert process.wait(PATIENCE) == 0
    assert [slot["debugid"] for slot in unpack(written.read_bytes())] == [
        DIVISOR_MARKER, 0x05241C19
    ]
    assert written.stat().st_size == 2 * SLOT.size
