"""How the program ends: on signals and on failures, at start-up, in the passes, in the cleanup."""

import errno
import os
import signal

import pytest

from conftest import PATIENCE
from host import (DISABLE, ENABLE, GET_FLAGS, GETBUF, MALLOC, READTR, REEXEC, REMOVE, SET_FLAGS,
                  SETBUF, SETREG, SETUP, TIMEBASE, WRAPPED, fail, host, info, read_of, stop_at)

FLAGS_BEFORE = "flags 6"
RESTORE = f"{SET_FLAGS} 0x6"
SET_UP = [
    REEXEC, GET_FLAGS, f"{SET_FLAGS} 0x7", f"{MALLOC} 320000000", REMOVE, f"{SETBUF} 5000000",
    f"{SETREG} old 20: 0x40000 0 0xffffffff 0 0", SETUP, TIMEBASE, ENABLE]
VERBOSE_SET_UP = [*SET_UP[:-1], GETBUF, ENABLE]
PASS = [GETBUF, read_of(1)]

IN_USE = "The trace facility is currently in use.\n"
NOT_REMOVED = "Trace facility failure, KERN_KDREMOVE\n"
READ_FAILED = ("trace facility failure, KERN_KDREADTR\n"
               "Try using a larger buffer size with --bufsize.\n")


def facility_failure(operation):
    return f"trace facility failure, {operation}\n"


def through(call, calls):
    """The calls up to the one that begins with `call`, and that one."""
    return calls[:[line.startswith(call) for line in calls].index(True) + 1]


def failed(calls, error):
    """The calls, the last of which failed."""
    return [*calls[:-1], f"{calls[-1]} -> error {int(error)}"]


@pytest.mark.parametrize("call, error, message, cleanup", [
    (MALLOC, errno.ENOMEM, "Can't allocate memory for tracing info\n", [REMOVE, RESTORE]),
    (REMOVE, errno.EBUSY, IN_USE, [RESTORE]),
    (REMOVE, errno.EPERM, NOT_REMOVED, [RESTORE]),
    (SETBUF, errno.EINVAL, facility_failure("KERN_KDSETBUF"), [REMOVE, RESTORE]),
    (SETREG, errno.EINVAL, facility_failure("KERN_KDSETREG"), [REMOVE, RESTORE]),
    (SETUP, errno.ENOMEM, facility_failure("KERN_KDSETUP"), [REMOVE, RESTORE]),
    (GETBUF, errno.EBUSY, facility_failure("KERN_KDGETBUF"), [REMOVE, RESTORE]),
    (ENABLE, errno.EBUSY, facility_failure("KERN_KDENABLE"), [REMOVE, RESTORE]),
])
def test_a_step_of_the_set_up_that_fails_is_the_last(host, call, error, message, cleanup):
    result = host.run("-v", FLAGS_BEFORE, fail(call, error))
    assert result.calls == failed(through(call, VERBOSE_SET_UP), error) + cleanup
    assert (result.stderr, result.returncode) == (f"sonaprobe: {message}\n", 1)


def test_a_buffer_beyond_memory_is_asked_for_in_full(host):
    result = host.run("-b 4294967295", fail(MALLOC, errno.ENOMEM))
    assert f"{MALLOC} 274877906880 -> error 12" in result.calls
    assert result.stderr == "sonaprobe: Can't allocate memory for tracing info\n\n"


def test_a_raw_file_that_cannot_be_opened_ends_through_the_cleanup(host):
    result = host.run("-wmissing/trace", FLAGS_BEFORE)
    assert result.calls == SET_UP + [DISABLE, REMOVE, RESTORE]
    assert (result.stderr, result.returncode) == ("sonaprobe: Can't open file!\n\n", 1)


@pytest.mark.parametrize("script, calls, message", [
    ([fail(GETBUF, errno.EPERM)],
     [f"{GETBUF} -> error 1", DISABLE, REMOVE, RESTORE], facility_failure("KERN_KDGETBUF")),
    ([fail(READTR, errno.EINVAL)],
     [*failed(PASS, errno.EINVAL), DISABLE, REMOVE, RESTORE], READ_FAILED),
    ([info(1, flags=WRAPPED), fail(DISABLE, errno.EPERM)],
     [*PASS, f"{DISABLE} -> error 1", DISABLE, REMOVE, RESTORE], facility_failure("KERN_KDENABLE")),
    ([info(1, flags=WRAPPED), fail(DISABLE, errno.EPERM, 0)],
     [*PASS, f"{DISABLE} -> error 1", f"{DISABLE} -> error 1", REMOVE, RESTORE],
     facility_failure("KERN_KDENABLE")),
    ([info(1, flags=WRAPPED), fail(ENABLE, errno.EPERM, 2)],
     [*PASS, DISABLE, f"{ENABLE} -> error 1", REMOVE, RESTORE], facility_failure("KERN_KDENABLE")),
])
def test_an_operation_that_fails_in_a_pass_ends_through_the_cleanup(host, script, calls, message):
    result = host.run("", FLAGS_BEFORE, *script, info(1))
    assert result.calls == SET_UP + calls
    assert (result.stderr, result.returncode) == (f"sonaprobe: {message}\n", 1)


# Every step is made once, whichever fail, and the newest message is the one printed. The first
# KERN_KDREMOVE belongs to the set-up.
@pytest.mark.parametrize("failures, cleanup, stderr", [
    ([fail(DISABLE, errno.EPERM, 0)],
     [f"{DISABLE} -> error 1", REMOVE, RESTORE],
     f"sonaprobe: {facility_failure('KERN_KDENABLE')}\n"),
    ([fail(REMOVE, errno.EBUSY, 2)],
     [DISABLE, f"{REMOVE} -> error 16", RESTORE], f"sonaprobe: {IN_USE}\n"),
    ([fail(REMOVE, errno.EPERM, 2)],
     [DISABLE, f"{REMOVE} -> error 1", RESTORE], f"sonaprobe: {NOT_REMOVED}\n"),
    ([fail(DISABLE, errno.EPERM, 0), fail(REMOVE, errno.EBUSY, 2)],
     [f"{DISABLE} -> error 1", f"{REMOVE} -> error 16", RESTORE], f"sonaprobe: {IN_USE}\n"),
    ([fail(DISABLE, errno.EBUSY, 0), fail(REMOVE, errno.ENOMEM, 2), fail(RESTORE, errno.EPERM, 0)],
     [f"{DISABLE} -> error 16", f"{REMOVE} -> error 12", f"{RESTORE} -> error 1"],
     "sysctlbyname failed to set new 'audio' debug flags\n"
     f"sonaprobe: {NOT_REMOVED}\n"),
])
@pytest.mark.parametrize("cause, first_calls", [
    (stop_at(READTR), PASS), (fail(READTR, errno.EINVAL), failed(PASS, errno.EINVAL))])
def test_the_cleanup_goes_on_behind_a_step_that_fails(host, failures, cleanup, stderr, cause,
                                                      first_calls):
    result = host.run("", FLAGS_BEFORE, info(1), cause, *failures)
    assert result.calls == SET_UP + first_calls + cleanup
    assert (result.stderr, result.returncode) == (stderr, 1)


@pytest.mark.parametrize("call, last, cleanup", [
    (GET_FLAGS, SET_FLAGS, [REMOVE, RESTORE]),  # the flags are set as soon as they are known
    (SET_FLAGS, SET_FLAGS, [REMOVE, RESTORE]),
    (MALLOC, MALLOC, [REMOVE, RESTORE]),
    (REMOVE, REMOVE, [REMOVE, RESTORE]),
    (SETBUF, SETBUF, [REMOVE, RESTORE]),
    (SETREG, SETREG, [REMOVE, RESTORE]),
    (SETUP, SETUP, [REMOVE, RESTORE]),
    (TIMEBASE, TIMEBASE, [REMOVE, RESTORE]),
    (ENABLE, ENABLE, [DISABLE, REMOVE, RESTORE]),
])
def test_a_signal_during_the_set_up_ends_it_behind_that_step(host, call, last, cleanup):
    result = host.run("", FLAGS_BEFORE, stop_at(call, by=signal.SIGTERM))
    assert result.calls == through(last, SET_UP) + cleanup
    assert (result.stderr, result.returncode) == ("", 0)


@pytest.mark.parametrize("number", [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM])
@pytest.mark.parametrize("verbose", [False, True])
def test_a_signal_in_the_sleep_ends_the_run_in_order(host, number, verbose):
    host.start("-v" if verbose else "", FLAGS_BEFORE, info(1))
    host.wait_for(READTR, 3)
    host.process.send_signal(number)
    result = host.finish()
    set_up = VERBOSE_SET_UP if verbose else SET_UP
    passes = (len(result.calls) - len(set_up) - 3) // 2
    assert result.calls == set_up + PASS * passes + [DISABLE, REMOVE, RESTORE]
    assert (f"Quiting on signal {number:d}\n" in result.stdout) == verbose
    assert (result.stderr, result.returncode) == ("", 0)


@pytest.mark.parametrize("call, nth", [(DISABLE, 1), (REMOVE, 2), (RESTORE, 1)])
def test_a_second_signal_during_the_cleanup_changes_nothing(host, call, nth):
    result = host.run("-v", FLAGS_BEFORE, info(1), stop_at(READTR),
                      stop_at(call, nth, by=signal.SIGHUP))
    assert result.calls == VERBOSE_SET_UP + PASS + [DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines()[-1] == "Quiting on signal 2"
    assert (result.stderr, result.returncode) == ("", 0)


# What is stored is also printed, and records are stored together.
@pytest.mark.parametrize("mode, count", [("", 1), ("-wtrace", 3)])
def test_a_signal_in_a_pass_is_taken_after_a_whole_record_and_all_stored_with_it(host, mode, count):
    result = host.run(f"-s -H -S {mode}", FLAGS_BEFORE, info(9),
                      host.read("0x05245C0E a2=1\n0x05245C0E a2=2\n0x05245C0E a2=3"),
                      stop_at(READTR))
    assert result.calls[-3:] == [DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines()[1:] == [
        f"<- OrvelHDAPath::enable End - stream: {number:#x} channelID: 0 result: 0x00000000"
        for number in range(1, count + 1)]
    if mode:
        assert (host.folder / "trace").stat().st_size == (1 + count) * 64


def test_a_signal_before_nolog_has_left_undoes_the_set_up(host):
    result = host.run("-L", FLAGS_BEFORE, stop_at(ENABLE))
    assert result.calls == SET_UP + [DISABLE, REMOVE, RESTORE]
    assert result.returncode == 0


def run_whose_reader_goes_away_at(host, call, options):
    """The run of a program that stands still at a call until nobody reads its output any more."""
    host.start(options, FLAGS_BEFORE, info(1), stop_at(call, by=signal.SIGSTOP))
    os.waitid(os.P_PID, host.process.pid, os.WSTOPPED)
    host.process.stdout.close()
    host.process.send_signal(signal.SIGCONT)
    status = host.process.wait(timeout=PATIENCE)
    return host.calls(), host.process.stderr.read(), status


def test_nolog_leaves_its_set_up_though_nobody_reads_what_it_says(host):
    assert run_whose_reader_goes_away_at(host, TIMEBASE, "-v -L") == (VERBOSE_SET_UP, "", 0)


def test_a_pipe_that_is_closed_before_the_first_line_ends_the_set_up(host):
    assert run_whose_reader_goes_away_at(host, REEXEC, "") == (
        through(SET_FLAGS, SET_UP) + [REMOVE, RESTORE], "", 0)


def test_before_the_handlers_stand_a_signal_has_its_default_action(host):
    result = host.run("", stop_at(REEXEC))
    assert (result.calls, result.returncode) == ([REEXEC], -signal.SIGINT)
