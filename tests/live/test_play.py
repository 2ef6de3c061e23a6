"""sonaprobe-sim play: simulated drivers and the audio server post in real time, as sonaprobe and the
options ask them to."""

import os
import pty
import signal
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE
from live import sim, stage, status, until  # noqa: F401, stage is a fixture
from records import unpack
from terminal import read_to_the_end

SERVER = 0x2104
AUDIO = 0x0524
TICKS = 24_000_000


def play(*arguments):
    """Plays to the end; how many records were logged and posted."""
    logged, posted = sim("play", *arguments).removesuffix(" records logged\n").split(" of ")
    return int(logged), int(posted)


@pytest.fixture
def written(stage):  # noqa: F811
    """Keeps what is posted in a file; ends the run and returns the records."""

    def start(*options):
        path = stage.folder / "live.raw"
        run = stage.start(f"-w{path}", "-b", 200000, *options)

        def end():
            until(lambda: status()["pending"] == "0", "all was written")
            assert run.end() == 0
            return unpack(path.read_bytes())[1:]

        return end

    return start


def class_words(records):
    return {record["debugid"] >> 16 for record in records}


def test_drivers_post_while_the_audio_debug_flags_ask_them_to(written):
    end = written()
    logged, posted = play("playback", "--seconds", 2)
    records = end()
    assert logged == posted == len(records)
    assert class_words(records) == {SERVER, AUDIO}


def test_only_the_audio_server_posts_without_the_audio_debug_flags(written):
    end = written("-T")
    logged, posted = play("playback", "--seconds", 2)
    records = end()
    assert logged == posted == len(records) > 0
    assert class_words(records) == {SERVER}


def test_nothing_is_logged_while_nobody_traces(facility):
    logged, posted = play("playback", "--seconds", 1)
    assert logged == 0 < posted


def test_stamps_are_the_trace_clock_and_keep_their_order(written):
    end = written()
    before = time.monotonic_ns() * 3 // 125
    play("all", "--seconds", 2)
    after = time.monotonic_ns() * 3 // 125
    stamps = [record["t"] for record in end()]
    assert before <= stamps[0] and stamps == sorted(stamps) and stamps[-1] <= after
    # A story goes at its own pace: the two seconds are filled.
    assert stamps[-1] - stamps[0] > TICKS


def test_rate_is_that_of_all_producers_in_sum(written):
    end = written()
    logged, posted = play("usb", "--rate", 20000, "--seconds", 2, "--threads", 2)
    records = end()
    assert logged == posted == len(records)
    assert 20000 < posted < 60000


def test_each_producer_plays_drivers_of_its_own(written):
    end = written()
    logged, _ = play("displayport", "--rate", 30000, "--seconds", 2, "--threads", 3)
    assert int(status()["posted"]) == logged
    records = end()
    # Threads and objects of a producer lie apart from those of another by its number.
    assert {record["a5"] >> 16 for record in records} == {0, 1, 2}
    drivers = [record for record in records if record["debugid"] >> 16 == AUDIO]
    assert {record["a1"] - (record["a5"] >> 16 << 32) >> 32 for record in drivers} == {0xFFFFFF80}


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_a_signal_ends_it_in_order(number, facility):
    process = subprocess.Popen([BUILD / "sonaprobe-sim", "play", "playback", "--threads", "2"],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    time.sleep(1)
    assert process.poll() is None
    process.send_signal(number)
    out, err = process.communicate(timeout=PATIENCE)
    assert (err, process.returncode) == ("", 0)
    assert out.startswith("0 of ") and out.endswith(" records logged\n")


def test_progress_is_shown_on_a_terminal_and_wiped_at_the_end(facility):
    terminal, end = pty.openpty()
    result = subprocess.run([BUILD / "sonaprobe-sim", "play", "playback", "--seconds", "1"],
                            stdout=subprocess.PIPE, stderr=end, timeout=PATIENCE, check=True)
    os.close(end)
    shown = read_to_the_end(terminal).decode()
    os.close(terminal)
    progress, wiped, rest = shown.partition("\r\x1b[K")
    assert wiped and "s: " in progress and "records posted, 0 logged" in progress
    assert rest.startswith("sonaprobe-sim: nobody traced meanwhile") and rest.count("\n") == 1
    assert result.stdout.endswith(b" records logged\n")
