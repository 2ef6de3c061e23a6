"""catch: a live watch writes what came before and after an event, whole or not at all, and gives the
facility back however it ends."""

import contextlib
import os
import pty
import re
import resource
import signal
import stat
import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, needs_another_user, run_program
from live import left_behind, sim, status, until
from records import DIVISOR_MARKER, INVALID_MARKER, pack, pack_lines, unpack
from terminal import read_to_the_end

DIVISOR = pack(DIVISOR_MARKER, t=24)
MESSAGE = "sonascope: "
NEVER = "longer 1h"
SANITIZED = "SONAPROBE_SANITIZE:STRING=\n" not in (BUILD / "CMakeCache.txt").read_text()

BEFORE = "0x05245C1D t=240 a1=0x10 a5=7"  # OrvelHDAPath::setPathFormat, start
FAILED_END = "0x05245C0E t=480 a1=0x10 a4=0xE00002BC a5=8"  # OrvelHDAPath::enable, result
DROPOUT = "0x21040001 t=600 a5=9"


# Unless a test says otherwise.
USUAL = {"--buffer": 10_000, "--after": "100ms", "-o": "new.raw"}


class Catch:
    """A watch in a folder of its own."""

    def __init__(self, folder, options, settings):
        self.folder = folder
        self.errors = folder / "stderr"
        usual = [word for name, value in USUAL.items() if name not in options
                 for word in (name, value)]
        with self.errors.open("w") as errors, (folder / "stdout").open("w") as output:
            self.process = subprocess.Popen(
                [BUILD / "sonascope", "catch", *map(str, usual), *map(str, options)], cwd=folder,
                **({"stdin": subprocess.DEVNULL, "stdout": output, "stderr": errors} | settings))
        owner = str(self.process.pid)
        until(lambda: self.process.poll() is not None or
              (status()["owner"], status()["nolog"]) == (owner, "0"), "tracing was enabled")
        assert self.process.poll() is None, self.errors.read_text()

    def post(self, records):
        """Posts records, given as text or as slots, all of which are logged; their slots."""
        data = pack_lines(records) if isinstance(records, str) else records
        path = self.folder / "posted"
        path.write_bytes(data)
        count = len(data) // 64
        assert sim("post", path) == f"{count} of {count} records logged\n"
        path.unlink()
        return data

    def wait(self):
        return self.process.wait(timeout=PATIENCE)

    def end(self, number=signal.SIGINT):
        self.process.send_signal(number)
        return self.wait()

    def written(self):
        """The files beside those of the test."""
        return sorted(path.name for path in self.folder.iterdir()
                      if path.name not in ("stderr", "stdout", "posted"))

    def said(self):
        return [line.removeprefix(MESSAGE) for line in self.errors.read_text().splitlines()]


@pytest.fixture
def catch(tmp_path, facility):
    if os.geteuid() != 0:
        pytest.skip("needs root")
    started = []

    def start(*options, **settings):
        started.append(Catch(tmp_path, options, settings))
        return started[-1]

    yield start
    for watch in started:
        watch.process.kill()
        watch.process.wait()


@pytest.mark.parametrize("event, records", [
    ("dropout", [BEFORE, DROPOUT]),
    ("failure", [BEFORE, FAILED_END]),
    ("OrvelHDAPath::enable", [BEFORE, FAILED_END]),
    ("result == 0xE00002BC", [BEFORE, FAILED_END]),
    ("longer 5ms", [BEFORE, "0x05245C1E t=120240 a1=0x10 a5=7"]),
])
def test_an_event_makes_a_file_of_what_came_before_and_after(catch, event, records):
    watch = catch("--on", event)
    data = b"".join(map(watch.post, records))
    time.sleep(0.02)
    data += watch.post(BEFORE)
    assert watch.wait() == 0
    assert (watch.folder / "new.raw").read_bytes() == DIVISOR + data
    start, caught, end = watch.said()
    assert start == f"watching for {event}; Ctrl-C ends it"
    assert re.fullmatch(f"{re.escape(event)}: 3 records of .* are in new.raw", caught)
    assert re.fullmatch("watched .*: 3 records, none lost", end)
    assert left_behind() == {}


def test_of_several_events_any_is_caught(catch):
    watch = catch("--on", "failure", "--on", "dropout")
    watch.post(DROPOUT)
    assert watch.wait() == 0
    assert watch.said()[1].startswith("dropout: ")


def test_what_is_older_than_keep_is_let_go(catch):
    watch = catch("--on", "dropout", "--keep", "300ms")
    watch.post("0x05245C0D t=1")
    time.sleep(0.6)
    late = watch.post("0x05245C0D t=2") + watch.post(DROPOUT)
    assert watch.wait() == 0
    assert (watch.folder / "new.raw").read_bytes() == DIVISOR + late


def test_after_is_waited(catch):
    watch = catch("--on", "dropout", "--after", "1s")
    data = watch.post(DROPOUT)
    time.sleep(0.7)
    data += watch.post(BEFORE)
    assert watch.written() == []
    assert watch.wait() == 0
    assert (watch.folder / "new.raw").read_bytes() == DIVISOR + data


def test_count_writes_numbered_files_and_goes_on_between(catch):
    watch = catch("--on", "dropout", "--count", 2, "--keep", "0s", "--after", "0s")
    first = watch.post(DROPOUT)
    until(lambda: "new-1.raw" in watch.written(), "the first file was there")
    assert status()["owner"] == str(watch.process.pid)
    time.sleep(0.1)
    second = watch.post("0x21040001 t=700 a5=9")
    assert watch.wait() == 0
    assert watch.written() == ["new-1.raw", "new-2.raw"]
    assert (watch.folder / "new-1.raw").read_bytes() == DIVISOR + first
    assert (watch.folder / "new-2.raw").read_bytes() == DIVISOR + second


def test_a_file_that_exists_is_told_before_the_watch(tmp_path, facility):
    (tmp_path / "new-2.raw").write_text("kept")
    result = run_program("catch", "--on", "dropout", "--count", 2, "-o", "new.raw", cwd=tmp_path,
                         program="sonascope")
    assert result.stderr == "sonascope: new-2.raw exists; give another name\n"
    assert result.returncode == 2
    assert [path.name for path in tmp_path.iterdir()] == ["new-2.raw"]


def test_a_file_that_came_meanwhile_is_not_written_over(catch):
    watch = catch("--on", "dropout")
    (watch.folder / "new.raw").write_text("kept")
    watch.post(DROPOUT)
    assert watch.wait() == 2
    assert watch.written() == ["new.raw"]
    assert (watch.folder / "new.raw").read_text() == "kept"
    assert watch.said()[-1] == "new.raw exists; give another name"
    assert left_behind() == {}


@pytest.mark.parametrize("environment, owner", [
    ({"SUDO_UID": "65534", "SUDO_GID": "65533"}, (65534, 65533)),
    ({"SUDO_UID": "65534"}, (0, 0)),
    ({"SUDO_UID": "nobody", "SUDO_GID": "1"}, (0, 0)),
    ({}, (0, 0)),
])
@needs_another_user
def test_the_file_is_its_owners_alone_who_is_whoever_called_sudo(catch, environment, owner):
    variables = {name: value for name, value in os.environ.items()
                 if not name.startswith("SUDO_")} | environment
    watch = catch("--on", "dropout", env=variables, umask=0)
    watch.post(DROPOUT)
    assert watch.wait() == 0
    found = (watch.folder / "new.raw").stat()
    assert stat.S_IMODE(found.st_mode) == 0o600
    assert (found.st_uid, found.st_gid) == owner


@pytest.mark.parametrize("number", [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM])
def test_a_signal_ends_the_watch_without_a_file(catch, number):
    watch = catch("--on", "dropout")
    watch.post(BEFORE)
    time.sleep(0.05)
    assert watch.end(number) == 1
    assert watch.written() == []
    assert watch.said()[-1].endswith(": 1 record, none lost; nothing is written")
    assert left_behind() == {}


def test_a_signal_while_the_records_after_are_awaited_writes_nothing(catch):
    watch = catch("--on", "dropout", "--after", "1min")
    watch.post(DROPOUT)
    time.sleep(0.1)
    assert watch.end() == 1
    assert watch.written() == []


def test_save_on_end_writes_what_is_kept(catch):
    watch = catch("--on", "dropout", "--save-on-end", "--then", "info")
    data = watch.post(BEFORE)
    time.sleep(0.05)
    assert watch.end() == 0
    assert (watch.folder / "new.raw").read_bytes() == DIVISOR + data
    assert watch.said()[1].startswith("end: 1 record of ")
    assert "new.raw: sound" in (watch.folder / "stdout").read_text()
    assert left_behind() == {}


def test_a_signal_ends_a_watch_whose_messages_nobody_reads(catch):
    ours, theirs = os.pipe()
    os.set_blocking(theirs, False)
    with contextlib.suppress(BlockingIOError):
        while os.write(theirs, bytes(4096)):
            pass
    os.set_blocking(theirs, True)
    watch = catch("--on", "dropout", stderr=theirs)
    os.close(theirs)
    time.sleep(0.1)
    begin = time.monotonic()
    assert watch.end() == 1
    assert time.monotonic() - begin < 3
    os.close(ours)
    assert left_behind() == {}


def test_a_signal_ends_the_answers_of_a_watch(catch):
    """An answer that nobody reads."""
    ours, theirs = os.pipe()
    watch = catch("--on", "dropout", "--count", 2, "--then", "lines", stdout=theirs)
    os.close(theirs)
    watch.post(b"".join(pack(0x05245C0D, t=n) for n in range(5000)))
    watch.post(DROPOUT)
    until(lambda: "new-1.raw" in watch.written(), "the first file was there")
    time.sleep(0.1)
    begin = time.monotonic()
    assert watch.end(signal.SIGTERM) == 0
    assert time.monotonic() - begin < 3
    os.close(ours)
    assert left_behind() == {}


@needs_another_user
def test_only_root_can_watch(open_to_all):
    result = run_program("catch", "--on", "dropout", program=open_to_all("sonascope"), user=65534)
    assert result.stderr == ("sonascope: catch must be run as root, as all that uses the trace "
                             "facility; try sudo\n")
    assert (result.stdout, result.returncode) == ("", 2)


def test_another_owner_of_the_facility_is_told_as_by_sonaprobe(tmp_path, facility):
    with subprocess.Popen([BUILD / "sonaprobe-sim", "hold"]) as holder:
        until(lambda: status()["owner"] == str(holder.pid), "the facility was held")
        catch = run_program("catch", "--on", "dropout", "-o", tmp_path / "new.raw",
                            program="sonascope")
        probe = run_program()
        holder.terminate()
    assert catch.returncode == 2
    [message] = set(re.findall("The .* in use.", probe.stderr))
    assert f"sonascope: {message}\n" in catch.stderr
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize("operation", ["KERN_KDSETBUF", "KERN_KDSETREG", "KERN_KDSETUP",
                                       "KERN_KDENABLE", "KERN_KDGETBUF", "KERN_KDREADTR"])
def test_an_operation_that_fails_is_told_and_leaves_nothing(tmp_path, facility, operation):
    sim("fail", operation, "ENOMEM")
    result = run_program("catch", "--on", "dropout", "-o", tmp_path / "new.raw", "--buffer", 1000,
                         program="sonascope")
    assert f"sonascope: trace facility failure, {operation}\n" in result.stderr
    assert result.returncode == 2
    assert list(tmp_path.iterdir()) == []
    assert left_behind() == {}


def test_a_cleanup_that_fails_costs_no_file(catch):
    watch = catch("--on", "dropout")
    sim("fail", "KERN_KDREMOVE", "ENOMEM")
    watch.post(DROPOUT)
    assert watch.wait() == 2
    assert "Trace facility failure, KERN_KDREMOVE" in watch.said()
    assert watch.written() == ["new.raw"]


def test_losses_are_told_and_marked_where_they_are(catch):
    watch = catch("--on", "dropout", "--buffer", 1000)
    watch.process.send_signal(signal.SIGSTOP)
    watch.post(b"".join(pack(0x05245C0D, t=n, a2=n) for n in range(1, 5001)))
    watch.process.send_signal(signal.SIGCONT)
    time.sleep(0.1)
    watch.post(DROPOUT)
    assert watch.wait() == 0
    slots = unpack((watch.folder / "new.raw").read_bytes())[1:]
    numbers = [0 if slot["debugid"] == INVALID_MARKER else slot["a2"] for slot in slots[:-1]]
    # The last records that found room, between two marks; and no mark after the dropout.
    assert numbers == [0, *range(4001, 5001), 0]
    caught, end = watch.said()[1:]
    assert caught.endswith("; records may be lost near 2 invalid slots")
    assert end.endswith("; records may be lost, for the kernel's buffer was too full 1 time, see "
                        "--buffer")
    info = run_program("info", watch.folder / "new.raw", program="sonascope")
    assert "invalid slot" in info.stdout
    assert info.returncode == 1


def test_memory_that_cuts_the_time_short_is_told(catch):
    watch = catch("--on", "dropout", "--memory", "512KiB", "--buffer", 100_000)
    data = watch.post(b"".join(pack(0x05245C0D, t=n) for n in range(20_000)))
    time.sleep(0.05)
    data += watch.post(DROPOUT)
    assert watch.wait() == 0
    kept = (watch.folder / "new.raw").read_bytes()[64:]
    assert 4096 * 64 <= len(kept) <= 512 * 1024
    assert data.endswith(kept)
    assert "before it went into 1 MiB, see --memory" in watch.said()[1]


def test_then_why_names_what_has_caused_a_dropout(catch):
    watch = catch("--on", "dropout", "--then", "why", "--buffer", 100_000)
    with subprocess.Popen([BUILD / "sonaprobe-sim", "play", "playback", "--seconds", "30"],
                          stdout=subprocess.DEVNULL) as player:
        assert watch.wait() == 0
        player.terminate()
    answer = (watch.folder / "stdout").read_text()
    assert "blocked-by  OrvelHDAController::pollRegister on thread 0x9e" in answer
    again = run_program("why", watch.folder / "new.raw", program="sonascope").stdout
    assert answer == again


def test_then_takes_only_what_reads(tmp_path, facility):
    result = run_program("catch", "--on", "dropout", "-o", tmp_path / "new.raw", "--then", "wy",
                         program="sonascope")
    assert result.stderr == ("sonascope: --then: 'wy' is none of why, info, lines, stats and tree; "
                             "the nearest is 'why'\n")
    assert result.returncode == 2


def test_a_full_disk_leaves_no_half_file(catch):
    watch = catch("--on", "dropout")
    watch.post(b"".join(pack(0x05245C0D, t=n) for n in range(1000)))
    resource.prlimit(watch.process.pid, resource.RLIMIT_FSIZE, (30_000, resource.RLIM_INFINITY))
    watch.post(DROPOUT)
    assert watch.wait() == 2
    assert watch.written() == []
    assert watch.said()[-1] == "could not write new.raw: File too large"
    assert left_behind() == {}


def test_drivers_and_codes_are_as_asked(catch):
    watch = catch("--on", NEVER)
    assert status()["audio-debug-flags"] == "1"
    watch.end()
    watch = catch("--on", NEVER, "--no-trace", "--codes", "0x05240000-0x0524FFFF")
    assert status()["audio-debug-flags"] == "0"
    assert status()["interest"] == "0x40000 0x5240000 0x524ffff 0x0 0x0"
    watch.end()
    assert left_behind() == {}


@pytest.mark.parametrize("options, message", [
    (["--keep", "ten"], "--keep: 'ten' is no time; give a number and a unit, such as 10s or 200ms"),
    (["--after", "-1s"], "--after: '-1s' is no time; give a number and a unit, such as 10s or "
                         "200ms"),
    (["--codes", "5-4"], "--codes: '5-4' is no range, such as 0x05240000-0x0524FFFF"),
    (["--on", "pin nodeID = 21"], "--on: "),
])
def test_an_option_that_makes_no_sense_is_told_before_the_watch(tmp_path, facility, options,
                                                                message):
    result = run_program("catch", "--on", "dropout", "-o", tmp_path / "new.raw", *options,
                         program="sonascope")
    assert result.stderr.startswith(f"sonascope: {message}")
    assert result.returncode == 2


def test_a_terminal_has_a_line_that_tells_how_the_watch_goes(catch):
    terminal, end = pty.openpty()
    watch = catch("--on", NEVER, stderr=end)
    os.close(end)
    watch.post(BEFORE)
    time.sleep(0.7)
    watch.end()
    text = read_to_the_end(terminal).decode()
    os.close(terminal)
    assert re.search(r"\r\x1b\[Kwatched \S+ ms, \d+ records/s, 0 losses, 0 caught", text)
    assert text.endswith("; nothing is written\r\n")


@pytest.mark.skipif(SANITIZED, reason="the sanitizers keep what was freed")
def test_hours_take_no_more_memory(catch):
    """Resident memory, over many times the records that are kept."""
    watch = catch("--on", NEVER, "--on", "failure", "--memory", "1MiB")
    slots = b"".join(pack(0x05245C0D, t=n, a5=n) for n in range(8000))

    def post_often(times):
        for _ in range(times):
            watch.post(slots)
            time.sleep(0.03)
        with open(f"/proc/{watch.process.pid}/statm", encoding="ascii") as statm:
            return int(statm.read().split()[1]) * resource.getpagesize()
    warm = post_often(10)
    assert post_often(60) < warm + (2 << 20)
    watch.end()
