"""Live runs that meet a busy facility, an operation that fails, or files that are not as they were."""

import contextlib
import fcntl
import os
import pathlib
import shlex
import signal
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, run_program
from live import left_behind, random_records, sim, stage, status, until

FOLDER = pathlib.Path("/dev/shm/sonaprobe")

# What a signal may wait for an operation: 0.3 s each, and this machine may be busy.
SOON = 3

READ_FAILED = ("trace facility failure, KERN_KDREADTR\n"
               "Try using a larger buffer size with --bufsize.\n")


def error_of(result):
    """The message behind the program's name."""
    return result.stderr.removeprefix(f"{BUILD / 'sonaprobe'}: ")


def test_a_facility_in_use_is_left_to_its_owner(stage):
    with subprocess.Popen([BUILD / "sonaprobe-sim", "hold"], stdout=subprocess.PIPE,
                          text=True) as holder:
        try:
            assert f"process {holder.pid} owns" in holder.stdout.readline()
            result = run_program("-b", 1000)
            assert (error_of(result), result.returncode) == (
                "The trace facility is currently in use.\n\n", 1)
            assert left_behind() == {"owner": str(holder.pid)}
        finally:
            holder.send_signal(signal.SIGINT)
            assert holder.wait(timeout=PATIENCE) == 0
    assert left_behind() == {}
    run = stage.start()
    assert run.end() == 0


@pytest.mark.parametrize("operation, error, options, message", [
    ("KERN_KDREMOVE", "EBUSY", [], "The trace facility is currently in use.\n"),
    ("KERN_KDREMOVE", "EPERM", [], "Trace facility failure, KERN_KDREMOVE\n"),
    ("KERN_KDSETBUF", "EINVAL", [], "trace facility failure, KERN_KDSETBUF\n"),
    ("KERN_KDSETREG", "EINVAL", [], "trace facility failure, KERN_KDSETREG\n"),
    ("KERN_KDSETUP", "ENOMEM", [], "trace facility failure, KERN_KDSETUP\n"),
    ("KERN_KDGETBUF", "EPERM", [], "trace facility failure, KERN_KDGETBUF\n"),
    ("KERN_KDENABLE", "EPERM", [], "trace facility failure, KERN_KDENABLE\n"),
    ("KERN_KDREADTR", "EINVAL", [], READ_FAILED),
    ("KERN_KDREADTR", "EINVAL", ["-wtrace"], "trace facility failure, KERN_KDREADTR\n"),
])
def test_an_operation_that_fails_ends_the_run_with_nothing_left(stage, operation, error, options,
                                                                message):
    sim("fail", operation, error)
    result = run_program("-b", 1000, *options, cwd=stage.folder)
    assert (error_of(result), result.returncode) == (message + "\n", 1)
    assert left_behind() == {}


@pytest.mark.parametrize("passes", [1, 5])
def test_a_read_that_fails_later_ends_the_run_with_nothing_left(stage, passes):
    sim("fail", "KERN_KDREADTR", "EIO", "--after", str(passes))
    result = run_program("-b", 1000)
    assert (error_of(result), result.returncode) == (READ_FAILED + "\n", 1)
    assert left_behind() == {}


@pytest.mark.parametrize("times, stderr", [
    (1, ""), (2, "sysctlbyname failed to get old 'audio' debug flags second time\n")])
def test_audio_flags_that_cannot_be_read_do_not_end_the_run(stage, times, stderr):
    sim("fail", "debug.Audio.get", "EPERM", "--times", str(times))
    run = stage.start()
    assert run.end() == 0
    assert run.err.read_text() == stderr
    assert left_behind() == {}


def test_audio_flags_that_cannot_be_set_do_not_end_the_run(stage):
    sim("fail", "debug.Audio.set", "EPERM", "--times", "2")
    run = stage.start()
    assert run.end() == 0
    assert run.err.read_text() == "sysctlbyname failed to set new 'audio' debug flags\n" * 2
    assert left_behind() == {}


@pytest.mark.parametrize("failures, message, left", [
    (["KERN_KDENABLE"], "trace facility failure, KERN_KDENABLE\n", {}),
    (["KERN_KDREMOVE"], "The trace facility is currently in use.\n", {"entries": "10000"}),
    (["KERN_KDENABLE", "KERN_KDREMOVE"], "The trace facility is currently in use.\n",
     {"entries": "10000", "nolog": "0"}),
])
def test_the_cleanup_goes_on_behind_a_step_that_fails(stage, failures, message, left):
    run = stage.start()
    for operation in failures:
        sim("fail", operation, "EBUSY", "--times", "100")
    assert run.end() == 1
    assert run.err.read_text() == f"{BUILD / 'sonaprobe'}: {message}\n"
    found = left_behind()
    found.pop("bufid", None)  # beside the entries
    assert found == left

    for operation in failures:
        sim("fail", operation, "EBUSY", "--times", "0")
    run = stage.start()
    assert status()["entries"] == "10000"
    assert run.end() == 0
    assert left_behind() == {}


@contextlib.contextmanager
def operation():
    """This process in the midst of an operation, as if it were stopped there."""
    with (FOLDER / "state").open("r+b") as state:
        fcntl.lockf(state, fcntl.LOCK_EX, 1)
        yield


def wait_until_asleep(process):
    until(lambda: pathlib.Path(f"/proc/{process.pid}/stat").read_text().split()[2] == "S",
          "the program waited")


NAMES_THE_HOLDER = (f"trace facility: process {os.getpid()} is in the midst of an operation; "
                    f"if it is stopped: kill -CONT {os.getpid()}")


@pytest.mark.parametrize("number", [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM])
def test_a_signal_ends_a_run_that_waits_for_a_stopped_process(stage, number):
    run = stage.start()
    with operation():
        wait_until_asleep(run.process)
        time.sleep(0.2)
        begin = time.monotonic()
        assert run.end(number) == 1
        assert time.monotonic() - begin < SOON
    assert run.errors().count(NAMES_THE_HOLDER) == 1
    assert run.errors()[-2].endswith(": Trace facility failure, KERN_KDREMOVE")
    sim("reset")


def test_a_signal_ends_a_set_up_that_waits_for_a_stopped_process(stage):
    with operation():
        run = stage.start("-L", tracing=False)
        until(lambda: run.errors() == [NAMES_THE_HOLDER], "the holder was named")
        assert run.end() == 1
    assert left_behind() == {}


def test_a_signal_ends_a_run_in_order_once_the_process_goes_on(stage):
    run = stage.start("-L", tracing=False)
    assert run.process.wait(timeout=PATIENCE) == 0
    run = stage.start()
    with operation():
        time.sleep(0.2)
        run.send(signal.SIGINT)
        time.sleep(0.1)
    assert run.process.wait(timeout=PATIENCE) == 0
    assert run.errors() == []
    assert left_behind() == {"audio-debug-flags": "1"}  # as it was found


@pytest.mark.parametrize("command", ["status", "hold"])
def test_the_simulator_names_a_stopped_process_and_ends_by_a_signal(stage, command):
    with operation(), subprocess.Popen([BUILD / "sonaprobe-sim", command], text=True,
                                       stderr=subprocess.PIPE) as process:
        assert process.stderr.readline() == NAMES_THE_HOLDER + "\n"
        process.send_signal(signal.SIGINT)
        assert process.wait(timeout=PATIENCE) == -signal.SIGINT


def test_a_folder_that_is_not_trusted_is_named_once_with_what_mends_it(stage):
    FOLDER.chmod(0o755)
    result = run_program("-b", 1000)
    told, *others = result.stderr.splitlines()
    what, _, command = told.rpartition(": ")
    assert what == (f"trace facility: {FOLDER} is open to other users, so it is not trusted; "
                    "when no program uses it")
    assert not any(line.startswith("trace facility:") for line in others)
    assert error_of(result).endswith(": Trace facility failure, KERN_KDREMOVE\n\n")
    subprocess.run(shlex.split(command), check=True)
    assert run_program("-b", 1000, "-L").returncode == 0


@pytest.mark.parametrize("name, size", [("ring", 0), ("ring", 4096), ("ring", 100_000),
                                        ("state", 0), ("state", 100)])
@pytest.mark.parametrize("mode", [(), ("-wtrace",)])
def test_a_file_that_is_cut_short_ends_the_run_with_the_flags_restored(stage, name, size, mode):
    run = stage.start(*mode)
    stage.post(random_records(9000, seed=6))
    os.truncate(FOLDER / name, size)
    assert run.process.wait(timeout=PATIENCE) == 1
    assert (f"trace facility: {FOLDER / name} was cut short while in use; what it held is lost"
            in run.errors())
    assert left_behind() == {}
    run = stage.start()
    assert run.end() == 0
