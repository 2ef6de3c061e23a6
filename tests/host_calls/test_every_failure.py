"""Each facility call fails, once and for ever, with each errno: the exact message, the exact order
of the cleanup, the status."""

import errno

import pytest

from host import (DISABLE, ENABLE, GET_FLAGS, GETBUF, MALLOC, READTR, REEXEC, REMOVE, SET_FLAGS,
                  SETBUF, SETREG, SETUP, TIMEBASE, fail, host, info, read_of, stop_at)

RESTORE = f"{SET_FLAGS} 0x6"
SET_UP = [
    REEXEC, GET_FLAGS, f"{SET_FLAGS} 0x7", f"{MALLOC} 320000000", REMOVE, f"{SETBUF} 5000000",
    f"{SETREG} old 20: 0x40000 0 0xffffffff 0 0", SETUP, TIMEBASE, ENABLE]
PASS = [GETBUF, read_of(1)]
CLEANUP = [DISABLE, REMOVE, RESTORE]
NOT_SET = "sysctlbyname failed to set new 'audio' debug flags\n"
NO_FLAGS = "sysctlbyname failed to get old 'audio' debug flags second time\n"


def failure(operation):
    return f"trace facility failure, {operation}\n"


def removal_failure(error):
    return ("The trace facility is currently in use.\n" if error == errno.EBUSY
            else "Trace facility failure, KERN_KDREMOVE\n")


def outcome(call, error, forever, mode):
    """What failing calls lead to: all calls of the run, without the errors; what standard error
    says; the status."""
    run = SET_UP + PASS + PASS
    if call == GET_FLAGS:
        if not forever:
            return [REEXEC, GET_FLAGS, *SET_UP[1:], *PASS, *PASS, *CLEANUP], "", 0
        set_up = [REEXEC, GET_FLAGS, GET_FLAGS, f"{SET_FLAGS} 0x1", *SET_UP[3:]]
        return set_up + PASS + PASS + [DISABLE, REMOVE, f"{SET_FLAGS} 0"], NO_FLAGS, 0
    if call == SET_FLAGS:
        return run + CLEANUP, NOT_SET * (2 if forever else 1), 0
    if call == DISABLE:
        return run + CLEANUP, failure("KERN_KDENABLE"), 1

    last = next(index for index, line in enumerate(run) if line.startswith(call))
    read_failed = failure("KERN_KDREADTR") + (
        "" if mode else "Try using a larger buffer size with --bufsize.\n")
    messages = {
        MALLOC: "Can't allocate memory for tracing info\n", REMOVE: removal_failure(error),
        SETBUF: failure("KERN_KDSETBUF"), SETREG: failure("KERN_KDSETREG"),
        SETUP: failure("KERN_KDSETUP"), ENABLE: failure("KERN_KDENABLE"),
        GETBUF: failure("KERN_KDGETBUF"), READTR: read_failed}
    cleanup = [RESTORE] if call == REMOVE else CLEANUP[1:] if last < len(SET_UP) else CLEANUP
    return run[:last + 1] + cleanup, messages[call], 1


@pytest.mark.parametrize("mode", ["", "-wtrace"])
@pytest.mark.parametrize("forever", [False, True], ids=["once", "for ever"])
@pytest.mark.parametrize("error", [errno.EPERM, errno.EBUSY, errno.EINVAL, errno.ENOMEM])
@pytest.mark.parametrize("call", [GET_FLAGS, SET_FLAGS, MALLOC, REMOVE, SETBUF, SETREG, SETUP,
                                  ENABLE, GETBUF, READTR, DISABLE])
def test_a_call_that_fails_ends_the_run_in_order(host, call, error, forever, mode):
    result = host.run(mode, "flags 6", info(1), stop_at(READTR, 2),
                      fail(call, error, 0 if forever else 1))
    calls, stderr, code = outcome(call, error, forever, mode)
    made = [line.removesuffix(f" -> error {error}") for line in result.calls]
    assert made == calls
    failing = [line for line in result.calls if line.endswith(f" -> error {error}")]
    assert failing and all(line.startswith(call) for line in failing)
    assert len(failing) == 1 or forever
    assert result.stderr == (f"sonaprobe: {stderr}\n" if code else stderr)
    assert result.returncode == code
