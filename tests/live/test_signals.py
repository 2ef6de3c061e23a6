"""The end of a live run, whatever the moment and whatever its outputs are stuck in: in order, soon,
with whole lines and slots, and with nothing left behind."""

import contextlib
import os
import pty
import random
import signal
import subprocess
import termios
import threading
import time

import pytest

from conftest import BUILD, PATIENCE, run_program
from live import left_behind, random_records, sim, stage, status, until

FOUR = [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM]

# What a stuck output may cost: the program waits for it 0.3 s, and this machine may be busy.
SOON = 3

EVENT = "0x05245C0E a2={}"
LINE = "<- enable End - stream: {:#x} channelID: 0 result: 0x00000000"
OPTIONS = ("-s", "-H", "-g", "-S")


def wait_until_stuck(process):
    """Waits until the program sleeps, and not for the 20 ms between two passes."""
    def sleeps():
        with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
            state = dict(line.split(":\t", 1) for line in file)
        return state["State"].startswith("S") and state["voluntary_ctxt_switches"]

    def stuck():
        before = sleeps()
        time.sleep(0.2)
        return before and before == sleeps()
    until(stuck, "the program was stuck")


def full_pipe():
    """A pipe that takes no more bytes: its two ends."""
    ours, theirs = os.pipe()
    os.set_blocking(theirs, False)
    with contextlib.suppress(BlockingIOError):
        while os.write(theirs, bytes(4096)):
            pass
    os.set_blocking(theirs, True)
    return ours, theirs


@pytest.mark.parametrize("number", FOUR)
@pytest.mark.parametrize("verbose", [(), ("-v",)])
def test_a_signal_ends_the_run_in_order(stage, number, verbose):
    run = stage.start(*verbose)
    assert run.end(number) == 0
    quits = [line for line in run.printed() if line.startswith("Quiting")]
    assert quits == ([f"Quiting on signal {number:d}"] if verbose else [])
    assert run.errors() == []
    assert left_behind() == {}


def test_signals_at_any_moment_of_the_set_up_leave_nothing_behind(stage):
    source = random.Random(3)
    for _ in range(40):
        run = stage.start("-b", 1000, tracing=False)
        time.sleep(source.uniform(0, 0.02))
        number = source.choice(FOUR)
        assert run.end(number) in (0, -number)  # the latter before the handlers stand
        assert run.errors() == []
        assert left_behind() == {}


def test_signals_at_any_moment_of_the_passes_leave_whole_lines_and_slots(stage):
    source = random.Random(4)
    posted = stage.file("\n".join(EVENT.format(n) for n in range(1, 5001)))
    for _ in range(15):
        run = stage.start("-wtrace", *OPTIONS)
        with subprocess.Popen([BUILD / "sonaprobe-sim", "post", posted],
                              stdout=subprocess.DEVNULL):
            time.sleep(source.uniform(0, 0.05))
            run.send(source.choice(FOUR))
            assert run.end(source.choice(FOUR)) == 0
        count = len(run.printed())
        assert run.printed() == [LINE.format(n) for n in range(1, count + 1)]
        assert run.out.read_text().endswith("\n")
        assert (stage.folder / "trace").read_bytes() == posted.read_bytes()[:64 * (1 + count)]
        assert run.errors() == []
        assert left_behind() == {}


def test_signals_end_a_run_whose_standard_output_nobody_reads(stage):
    ours, theirs = os.pipe()
    run = stage.start("-b", 100_000, *OPTIONS, stdout=theirs)
    os.close(theirs)
    posted = 30_000  # more than a widened pipe holds
    stage.post("\n".join(EVENT.format(n) for n in range(1, posted + 1)))
    wait_until_stuck(run.process)
    begin = time.monotonic()
    run.send(signal.SIGINT)
    time.sleep(0.05)
    assert run.end(signal.SIGTERM) == 0
    assert time.monotonic() - begin < SOON
    with open(ours, encoding="ascii") as pipe:
        lines = pipe.read().split("\n")
    whole = lines[1:-1]
    assert 100 < len(whole) < posted
    assert whole == [LINE.format(n) for n in range(1, len(whole) + 1)]
    assert LINE.format(len(whole) + 1).startswith(lines[-1])
    assert run.errors() == []
    assert left_behind() == {}


def test_what_nobody_reads_is_given_up_after_a_third_of_a_second(stage):
    def time_of_an_end():
        ours, theirs = os.pipe()
        run = stage.start("-b", 100_000, stdout=theirs)
        os.close(theirs)
        stage.post("\n".join(EVENT.format(n) for n in range(1, 30_001)))
        wait_until_stuck(run.process)
        begin = time.monotonic()
        assert run.end() == 0
        os.close(ours)
        return time.monotonic() - begin
    # The machine may be busy, but hardly each time.
    assert 0.2 < min(time_of_an_end() for _ in range(4)) < 0.6


def test_signals_end_a_run_whose_standard_output_does_not_wait_and_is_not_read(stage):
    ours, theirs = os.pipe()
    os.set_blocking(theirs, False)
    run = stage.start("-b", 100_000, *OPTIONS, stdout=theirs)
    os.close(theirs)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 30_001)))
    wait_until_stuck(run.process)
    begin = time.monotonic()
    assert run.end() == 0
    assert time.monotonic() - begin < SOON
    with open(ours, encoding="ascii") as pipe:
        whole = pipe.read().split("\n")[1:-1]
    assert whole == [LINE.format(n) for n in range(1, len(whole) + 1)]
    assert left_behind() == {}


def test_a_signal_ends_a_run_whose_raw_file_is_a_pipe_that_nobody_reads(stage):
    fifo = stage.folder / "fifo"
    os.mkfifo(fifo)
    run = stage.start(f"-w{fifo}")
    ours = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 5001)))
    wait_until_stuck(run.process)
    begin = time.monotonic()
    assert run.end() == 0
    assert time.monotonic() - begin < SOON
    slots = os.read(ours, 1 << 20)
    os.close(ours)
    # Each record is in the pipe or has its message.
    stored = len(slots) // 64 - 1
    printed = len(run.printed())
    assert slots == (stage.folder / "posted-1.raw").read_bytes()[:64 * (1 + stored)]
    assert run.errors() == [
        "Error 4 occurred writing data with debugid 0x5245c0e and timestamp 0x0"
    ] * (printed - stored)
    assert 0 < stored < printed
    assert left_behind() == {}


def test_a_signal_ends_a_run_whose_every_output_is_stuck(stage):
    ours, theirs = os.pipe()
    run = stage.start("-v", "-w/dev/full", stdout=theirs, stderr=theirs)
    os.close(theirs)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 9001)))
    wait_until_stuck(run.process)
    begin = time.monotonic()
    assert run.end() == 0
    assert time.monotonic() - begin < SOON
    os.close(ours)
    assert left_behind() == {}


@contextlib.contextmanager
def read_slowly(pipe):
    """Reads a page of a pipe now and then, more often than the program loses patience."""
    ended = threading.Event()

    def read():
        while not ended.wait(0.25):
            os.read(pipe, 4096)
    reader = threading.Thread(target=read)
    reader.start()
    yield
    ended.set()
    reader.join()


@pytest.mark.parametrize("raw", [False, True], ids=["standard output", "raw file"])
def test_a_signal_ends_a_run_whose_reader_is_slow(stage, raw):
    ours, theirs = os.pipe()
    if raw:
        fifo = stage.folder / "fifo"
        os.mkfifo(fifo)
        run = stage.start("-b", 100_000, f"-w{fifo}", "-X", 1)
        os.close(theirs)
        theirs = os.open(fifo, os.O_RDWR)
        ours, theirs = theirs, ours
    else:
        run = stage.start("-b", 100_000, *OPTIONS, stdout=theirs)
        os.close(theirs)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 30_001)))
    wait_until_stuck(run.process)
    with read_slowly(ours):
        time.sleep(1)
        begin = time.monotonic()
        assert run.end() == 0
        assert time.monotonic() - begin < 2  # what is left to write would take 3.3 s
    os.close(ours)
    assert left_behind() == {}


def test_signals_that_were_blocked_at_the_start_end_a_run_whose_output_is_stuck(stage):
    ours, theirs = os.pipe()
    blocked = [*FOUR, signal.SIGALRM]
    run = stage.start("-b", 100_000, stdout=theirs, preexec_fn=lambda: signal.pthread_sigmask(
        signal.SIG_BLOCK, blocked))
    os.close(theirs)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 30_001)))
    wait_until_stuck(run.process)
    assert run.end() == 0
    os.close(ours)
    assert left_behind() == {}


def set_alarm():
    signal.setitimer(signal.ITIMER_REAL, 0.3)


def block_alarm():
    signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGALRM])
    set_alarm()


@pytest.mark.parametrize("options", [(), ("-wtrace",), ("-rfifo",)], ids=" ".join)
def test_an_alarm_has_its_default_action_until_a_signal_ends_the_run(stage, options):
    os.mkfifo(stage.folder / "fifo")
    run = stage.start(*options, tracing=False, preexec_fn=set_alarm)
    assert run.process.wait(timeout=PATIENCE) == -signal.SIGALRM
    sim("reset")


def test_an_alarm_that_was_blocked_at_the_start_ends_nothing(stage):
    run = stage.start(preexec_fn=block_alarm)
    time.sleep(0.5)
    assert run.end() == 0
    assert left_behind() == {}


@pytest.mark.parametrize("number", FOUR)
def test_a_signal_during_a_dump_has_its_default_action(stage, number):
    assert run_program("-L", "-b", 100_000).returncode == 0
    stage.post("\n".join(EVENT.format(n) for n in range(1, 30_001)))
    ours, theirs = os.pipe()
    with subprocess.Popen([BUILD / "sonaprobe", "-D"], stdout=theirs) as dump:
        os.close(theirs)
        wait_until_stuck(dump)
        dump.send_signal(number)
        assert dump.wait(timeout=PATIENCE) == -number
    os.close(ours)
    after = status()
    assert (after["entries"], after["pending"]) == ("100000", "0")  # what was read is lost
    sim("reset")


def test_a_signal_on_read_gives_a_gathered_buffer_back(stage):
    assert run_program("-L", "-b", 1000).returncode == 0
    os.mkfifo(stage.folder / "fifo")
    run = stage.start("-rfifo", tracing=False)
    wait_until_stuck(run.process)
    assert run.end() == 0
    assert run.errors() == []
    assert left_behind() == {}


def test_a_signal_on_read_beside_a_live_run_silences_its_drivers(stage):
    live = stage.start()
    os.mkfifo(stage.folder / "fifo")
    read = stage.start("-rfifo", tracing=False)
    wait_until_stuck(read.process)
    assert read.end() == 1
    assert read.errors() == [f"{BUILD / 'sonaprobe'}: The trace facility is currently in use.", ""]
    now = status()
    assert (now["nolog"], now["audio-debug-flags"]) == ("0", "0")
    assert live.end() == 0
    assert left_behind() == {}


def test_a_signal_ends_a_run_on_a_stopped_terminal(stage):
    ours, theirs = pty.openpty()
    run = stage.start("-k", stdout=theirs)
    termios.tcflow(theirs, termios.TCOOFF)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 11)))
    wait_until_stuck(run.process)
    begin = time.monotonic()
    assert run.end() == 0
    assert time.monotonic() - begin < SOON
    os.close(ours)
    os.close(theirs)
    assert run.errors() == []
    assert left_behind() == {}


def test_a_killed_owner_leaves_a_facility_that_the_next_run_takes(stage):
    run = stage.start()
    stage.post(random_records(100, seed=5))
    assert run.end(signal.SIGKILL) == -signal.SIGKILL
    assert left_behind().keys() == {"entries", "nolog", "bufid", "audio-debug-flags"}

    run = stage.start(*OPTIONS)
    stage.post("\n".join(EVENT.format(n) for n in range(1, 4)))
    run.wait_for_lines(3)
    assert run.end() == 0
    assert run.printed() == [LINE.format(n) for n in range(1, 4)]
    assert left_behind() == {"audio-debug-flags": "1"}  # as it was found


@pytest.mark.parametrize("ignored", [False, True], ids=["", "SIGPIPE ignored"])
@pytest.mark.parametrize("mode", [(), ("-wtrace",)])
def test_a_broken_pipe_ends_the_run_as_a_signal_does_but_silently(stage, ignored, mode):
    ours, theirs = os.pipe()
    # Python itself ignores SIGPIPE.
    run = stage.start("-v", *mode, *OPTIONS, stdout=theirs, restore_signals=not ignored)
    os.close(theirs)
    records = stage.file("\n".join(EVENT.format(n) for n in range(1, 201)))
    sim("post", records)
    with open(ours, "rb") as pipe:
        assert pipe.readline() == b"Verbose mode ON\n"
    until(lambda: sim("post", records) and run.process.poll() is not None, "the run ended")
    assert run.process.returncode == 0
    assert run.errors() == []
    assert left_behind() == {}


def test_a_broken_pipe_ends_a_run_whose_standard_error_is_stuck(stage):
    stuck, errors = full_pipe()
    ours, theirs = os.pipe()
    run = stage.start(stdout=theirs, stderr=errors)
    for end in (theirs, ours, errors):
        os.close(end)
    sim("fail", "debug.Audio.set", "EPERM")  # has its message
    begin = time.monotonic()
    stage.post(EVENT.format(1))
    assert run.process.wait(timeout=PATIENCE) == 0
    assert time.monotonic() - begin < SOON
    os.close(stuck)
    assert left_behind() == {"audio-debug-flags": "1"}
