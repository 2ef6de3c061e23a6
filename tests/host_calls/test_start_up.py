"""The calls by which each run mode begins, with all values, and the steps that may end it there."""

import errno
import struct

import pytest

from host import (DISABLE, ENABLE, GET_FLAGS, GETBUF, MALLOC, READTR, REEXEC, REMOVE, SET_FLAGS,
                  SETBUF, SETREG, SETUP, TIMEBASE, fail, host, info, lines, stop_at)

RESTORE = f"{SET_FLAGS} 0"
VERSION = "sonaprobe version:  100.45\n"


def test_a_live_run_makes_these_calls_and_no_others(host):
    result = host.run("", "flags 6", info(1000), stop_at(READTR, 2))
    assert result.calls == lines("""
        reexec_to_match_kernel
        sysctlbyname debug.Audio old 12: 0 0 0 new 12: 0x41554444 0 0
        sysctlbyname debug.Audio new 12: 0x41554444 0x1 0x7
        malloc 320000000
        sysctl 1 24 7
        sysctl 1 24 4 5000000
        sysctl 1 24 8 old 20: 0x40000 0 0xffffffff 0 0
        sysctl 1 24 6
        mach_timebase_info
        sysctl 1 24 3 1
        sysctl 1 24 5 old 20: 0 0 0 0 0
        sysctl 1 24 10 old 64000
        sysctl 1 24 5 old 20: 0 0 0 0 0
        sysctl 1 24 10 old 64000
        sysctl 1 24 3 0
        sysctl 1 24 7
        sysctlbyname debug.Audio new 12: 0x41554444 0x1 0x6
    """)
    assert (result.stdout, result.stderr, result.returncode) == (VERSION, "", 0)


def test_a_verbose_run_shows_the_buffer_before_it_enables_tracing(host):
    result = host.run("-v", info(1000, 1, 0x28, 3, 7), stop_at(READTR))
    assert result.calls[8:12] == [TIMEBASE, GETBUF, ENABLE, GETBUF]
    assert result.stdout == ("Verbose mode ON\n"
                             + VERSION +
                             "The kernel buffer settings are:\n"
                             "\tentries:\t1000\n"
                             "\tflags:\t\t0x28\n"
                             "\tnolog:\t\t1\n"
                             "\tbufid:\t\t7\n"
                             "\tthreads:\t3\n"
                             "Buffer has wrapped.\n"
                             "Quiting on signal 2\n")
    assert result.returncode == 0


def test_notrace_leaves_the_audio_flags_alone_until_the_end_sets_them_to_0(host):
    result = host.run("-v -T", "flags 6", info(10), stop_at(READTR))
    assert result.calls == [
        REEXEC, f"{MALLOC} 320000000", REMOVE, f"{SETBUF} 5000000",
        f"{SETREG} old 20: 0x40000 0 0xffffffff 0 0", SETUP, TIMEBASE, GETBUF, ENABLE,
        GETBUF, f"{READTR} old 640", DISABLE, REMOVE, RESTORE]
    assert result.stdout.splitlines()[:3] == [
        "Verbose mode ON", "Will NOT enable Audio tracing", "Will not enable Audio tracing."]


def test_nolog_ends_with_everything_left_running(host):
    result = host.run("-L", "flags 6")
    assert result.calls[-2:] == [TIMEBASE, ENABLE]
    assert result.calls.count(REMOVE) == 1
    assert (result.stdout, result.stderr, result.returncode) == (VERSION, "", 0)


@pytest.mark.parametrize("options, interest", [
    ("-1 5 -2 9", "0x40000 0x5 0x9 0 0"),
    ("-I 0x10000", "0x40000 0 0xffffffff 0 0"),
    ("-I 0", "0x40000 0 0xffffffff 0 0"),
    ("-I 0x20000 -1 5 -2 0x24", "0x20000 0x5 0x24 0 0"),
    ("-I 0x200000 -1 5 -2 9", "0x200000 0x5 0x9 0 0"),
    ("-I 0x220000 -1 1 -2 2", "0x40000 0x1 0x2 0 0"),
])
def test_the_kernel_is_given_the_interest(host, options, interest):
    result = host.run(f"-L {options}")
    assert f"{SETREG} old 20: {interest}" in result.calls


@pytest.mark.parametrize("size, allocated, set_to", [("1", 64, 1), ("0x10", 1024, 16)])
def test_the_buffer_size_is_allocated_here_and_asked_of_the_kernel(host, size, allocated, set_to):
    result = host.run(f"-L -b {size}")
    assert result.calls[3:6] == [f"{MALLOC} {allocated}", REMOVE, f"{SETBUF} {set_to}"]


@pytest.mark.parametrize("flags, then", [
    (0, "0x1"), (1, "0x1"), (6, "0x7"), (0xFFFFFFFE, "0xffffffff")])
def test_bit_0_is_set_beside_the_flags_found(host, flags, then):
    result = host.run("-L", f"flags {flags}")
    assert result.calls[1:3] == [GET_FLAGS, f"{SET_FLAGS} {then}"]


@pytest.mark.parametrize("failures, gets, flags_set, restored, stderr", [
    (1, 2, "0x7", "0x6", ""),
    (2, 2, "0x1", "0", "sysctlbyname failed to get old 'audio' debug flags second time\n"),
])
def test_the_audio_flags_are_asked_for_twice_at_most(host, failures, gets, flags_set, restored,
                                                     stderr):
    result = host.run("", "flags 6", info(1), stop_at(READTR),
                      *(fail("sysctlbyname debug.Audio old", errno.EPERM, nth)
                        for nth in range(1, failures + 1)))
    failed = [f"{GET_FLAGS} -> error {errno.EPERM:d}"] * failures
    assert result.calls[1:4] == failed + [GET_FLAGS] * (gets - failures) + [
        f"{SET_FLAGS} {flags_set}"]
    assert result.calls[-1] == f"{SET_FLAGS} {restored}"
    assert (result.stdout, result.stderr, result.returncode) == (VERSION, stderr, 0)


def test_audio_flags_that_cannot_be_set_are_reported_each_time(host):
    result = host.run("", "flags 6", info(1), stop_at(READTR), fail(SET_FLAGS, errno.EPERM, 0))
    assert result.calls[2] == f"{SET_FLAGS} 0x7 -> error 1"
    assert result.calls[-1] == f"{SET_FLAGS} 0x6 -> error 1"
    assert result.stderr == "sysctlbyname failed to set new 'audio' debug flags\n" * 2
    assert (result.stdout, result.returncode) == (VERSION, 0)


@pytest.mark.parametrize("numer, denom, message, stored", [
    (125, 3, "Inserting divisor 24.000000 as 0x18", 24),
    (1, 1, "Inserting divisor 1000.000000 as 0x3e8", 1000),
    (2000, 83, "Inserting divisor 41.500000 as 0x29", 41),
    (3, 1, "Inserting divisor 333.333333 as 0x14d", 333),
    (2000, 1, "Inserting divisor 0.500000 as 0x0", 0),
])
def test_the_divisor_comes_from_the_timebase_and_goes_into_the_raw_file(
        host, numer, denom, message, stored):
    result = host.run("-v -wtrace", f"timebase {numer} {denom}", stop_at(READTR))
    assert message in result.stdout.splitlines()
    slot = struct.pack("<6Q2IQ", stored, 0, 0, 0, 0, 0, 0xFEEDFACE, 0, 0)
    assert (host.folder / "trace").read_bytes() == slot


def test_time_stamps_are_divided_by_the_timebase(host):
    result = host.run("-k", "timebase 125 3", info(1), host.read("0x05245C0D t=296296272"),
                      stop_at(READTR))
    assert result.stdout.splitlines()[1].startswith("12345.678 ")


def test_who_is_not_root_gets_no_further_than_the_message(host):
    result = host.run("-h", "euid 501")
    assert result.calls == []
    assert (result.stdout, result.returncode) == ("", 1)
    assert result.stderr == "'sonaprobe' must be run as root.\n"


def test_a_failed_re_execution_comes_before_the_options(host):
    result = host.run("-h", fail(REEXEC, 8))
    assert result.calls == [f"{REEXEC} -> error 8"]
    assert (result.stdout, result.returncode) == ("", 1)
    assert result.stderr == "Could not re-execute to match kernel architecture. (Error 8)\n"


@pytest.mark.parametrize("options", ["-h", "-?", "--nonsense", "-b"])
def test_the_usage_touches_nothing(host, options):
    result = host.run(options)
    assert result.calls == [REEXEC]
    assert (result.stdout, result.returncode) == ("", 0)
    assert "Usage: sudo sonaprobe [OPTIONS]\n" in result.stderr


@pytest.mark.parametrize("options, stderr", [
    ("-b 0", "An invalid buffer of size 0 was requested!\n"
             "sonaprobe: Argument parsing error\n\n"),
    ("-w" + 256 * "x", "sonaprobe: The path length of raw file is too long\n\n"),
    ("-r " + 256 * "x", "sonaprobe: File path length of raw data file is too long\n\n"),
    ("-d" + 256 * "x", "sonaprobe: File path length of decode file is too long\n\n"),
    ("-r missing", "sonaprobe: Could not open raw file to read!\n\n"),
])
def test_an_early_error_removes_the_buffer_and_sets_the_audio_flags_to_0(host, options, stderr):
    result = host.run(options, "flags 6")
    assert result.calls == [REEXEC, REMOVE, RESTORE]
    assert (result.stdout, result.stderr, result.returncode) == ("", stderr, 1)


def test_reading_a_raw_file_calls_nothing(host):
    (host.folder / "trace").write_bytes(b"")
    result = host.run("-wother -r trace")
    assert result.calls == [REEXEC]
    assert (result.stdout, result.stderr, result.returncode) == ("", "", 0)
    assert not (host.folder / "other").exists()
