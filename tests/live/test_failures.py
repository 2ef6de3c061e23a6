"""Live runs that meet a busy facility or an operation that fails."""

import signal
import subprocess

import pytest

from conftest import BUILD, PATIENCE, run_program
from live import left_behind, sim, stage, status

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
