"""sonaprobe-sim's administrative commands: status, reset, post, hold, fail, and what they refuse."""

import ctypes
import os
import pathlib
import re
import signal
import subprocess

import pytest

from conftest import BUILD, needs_another_user, run_program
from records import DIVISOR_MARKER, INVALID_MARKER, pack
from terminal import read_to_the_end

FOLDER = pathlib.Path("/dev/shm/sonaprobe")
SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
CLONE_NEWNS = 0x20000
MS_PRIVATE_REC = 0x40000 | 0x4000

pytestmark = pytest.mark.skipif(os.geteuid() != 0, reason="the trace facility is root's")

AFTER_BOOT = """\
entries: 0
nolog: 1
flags: 0x0
threads: 0
bufid: 0
owner: none
posted: 0
pending: 0
lost: 0
interest: 0x40000 0x0 0xffffffff 0x0 0x0
audio-debug-flags: 0
"""


@pytest.fixture(scope="module", autouse=True)
def private_shm():
    """A /dev/shm of these tests' own, where the host lets them have one."""
    libc = ctypes.CDLL(None, use_errno=True)
    with open("/proc/self/ns/mnt", encoding="ascii") as former:
        private = (
            libc.unshare(CLONE_NEWNS) == 0
            and libc.mount(b"none", b"/", None, MS_PRIVATE_REC, None) == 0
            and libc.mount(b"none", b"/dev/shm", b"tmpfs", 0, b"size=64m") == 0
        )
        yield private
        if private:
            libc.setns(former.fileno(), CLONE_NEWNS)


@pytest.fixture(autouse=True)
def fresh_facility(private_shm):
    sim("reset")
    yield
    sim("reset")


def sim(*arguments):
    """Runs a command that succeeds, silently but for its output."""
    done = run_program(*arguments, program="sonaprobe-sim")
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout


def refused(*arguments):
    """Runs a command that fails, and returns the one line that says why."""
    done = run_program(*arguments, program="sonaprobe-sim")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.startswith("sonaprobe-sim: ") and done.stderr.count("\n") == 1
    return done.stderr.removeprefix("sonaprobe-sim: ").rstrip("\n")


def call(*arguments):
    """Makes facility calls as another tool would, and returns what each answers."""
    done = run_program(*arguments, program="tests/facility-call")
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout.splitlines()


def state():
    return dict(line.split(": ", 1) for line in sim("status").splitlines())


class Holder:
    """sonaprobe-sim hold, owning the facility for the length of a with block."""

    def __enter__(self):
        self.process = subprocess.Popen([BUILD / "sonaprobe-sim", "hold"], stdout=subprocess.PIPE, text=True)
        self.line = self.process.stdout.readline()
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()


def test_status_after_boot():
    assert sim("status") == AFTER_BOOT


def test_status_of_a_set_up():
    call("setbuf=2000", "setreg=0x524", "setup", "enable=1", "audio-set=0xa5")
    now = state()
    assert now["entries"] == "2000"
    assert now["nolog"] == "0"
    assert int(now["bufid"]) > 0
    assert now["owner"] == "none"
    assert now["interest"] == "0x20000 0x5 0x24 0x0 0x0"
    assert now["audio-debug-flags"] == "165"


def test_the_manual_tells_what_status_shows(tmp_path):
    page = (SOURCE / "man/sonaprobe-sim.8").read_text()
    told = dict(re.findall(r"^\.It (\w[\w-]*)\n(.*)$", page, re.MULTILINE))
    after_boot = state()
    call("setbuf=1024", "setup", "enable=1", "audio-set=1")
    raw = tmp_path / "trace.raw"
    raw.write_bytes(pack(0x05245C0C) * 1025)
    sim("post", raw)
    tracing = state()
    assert told["nolog"] == f"{tracing['nolog']} while tracing is enabled"
    assert told["entries"].endswith(f"; {after_boot['entries']}: not set up")
    assert told["bufid"].endswith(f"; {after_boot['bufid']}: not set up")
    assert told["threads"] == f"always {tracing['threads']}"
    assert told["flags"] == f"{tracing['flags']} if the buffer has wrapped"
    assert told["audio-debug-flags"] == "bit 0: the drivers trace"


def test_reset_goes_back_to_the_state_after_boot():
    call("setbuf=2000", "setreg=0x524", "setup", "enable=1", "audio-set=1")
    sim("fail", "KERN_KDSETBUF", "EIO")
    assert sim("reset") == ""
    assert sim("status") == AFTER_BOOT
    assert not (FOLDER / "ring").exists()
    assert call("setbuf=1") == ["setbuf: done"]


def test_post_logs_records_as_they_stand(tmp_path):
    raw = tmp_path / "trace.raw"
    raw.write_bytes(
        pack(DIVISOR_MARKER, t=24)
        + pack(0x05245C0C, a1=0x11, t=7)
        + pack(INVALID_MARKER, a1=0x22, t=8, r=9)
        + pack(DIVISOR_MARKER, t=24)
        + pack(0x21040001, a1=0x33, t=6)
        + pack(0x05245C0D)[:40]
    )
    call("setbuf=1024", "setup", "enable=1")
    assert sim("post", raw) == "3 of 3 records logged\n"
    assert state()["pending"] == "3"
    assert call("read") == [
        "record 5245c0c 11 7",
        "record deadbeef 22 8",
        "record 21040001 33 6",
        "read: done",
    ]
    now = state()
    assert (now["posted"], now["pending"], now["lost"]) == ("3", "0", "0")


def test_post_goes_through_enable_state_and_filter(tmp_path):
    raw = tmp_path / "trace.raw"
    raw.write_bytes(pack(0x05245C0C, a1=1) + pack(0x21040000, a1=2))
    assert sim("post", raw) == "0 of 2 records logged\n"
    call("setbuf=1024", "setup")
    assert sim("post", raw) == "0 of 2 records logged\n"
    call("setreg=0x2104", "enable=1")
    assert sim("post", raw) == "1 of 2 records logged\n"
    assert call("read") == ["record 21040000 2 0", "read: done"]


def test_who_watches_is_told_why_nothing_was_logged(tmp_path):
    raw = tmp_path / "trace.raw"
    raw.write_bytes(pack(0x05245C0C))
    terminal, end = os.openpty()
    done = run_program("post", raw, program="sonaprobe-sim", capture_output=False, stderr=end,
                       stdout=subprocess.PIPE)
    os.close(end)
    shown = read_to_the_end(terminal)
    os.close(terminal)
    assert (done.returncode, done.stdout) == (0, "0 of 1 records logged\n")
    assert b"nobody traced meanwhile" in shown


def test_post_of_an_empty_file(tmp_path):
    raw = tmp_path / "empty.raw"
    raw.write_bytes(b"")
    assert sim("post", raw) == "0 of 0 records logged\n"


def test_posting_past_the_end_wraps_and_counts(tmp_path):
    raw = tmp_path / "trace.raw"
    raw.write_bytes(b"".join(pack(0x05245C0C, a1=i) for i in range(1500)))
    call("setbuf=1024", "setup", "enable=1")
    assert sim("post", raw) == "1500 of 1500 records logged\n"
    now = state()
    assert now["flags"] == "0x8"
    assert (now["posted"], now["pending"], now["lost"]) == ("1500", "1024", "476")
    lines = call("read")
    assert len(lines) == 1025
    assert lines[0] == "record 5245c0c 1dc 0"
    assert state()["flags"] == "0x0"


def test_post_refuses_what_it_cannot_read(tmp_path):
    missing = tmp_path / "missing.raw"
    assert refused("post", missing) == f"cannot open {missing}: No such file or directory"
    done = run_program("post", tmp_path, program="sonaprobe-sim")
    assert done.returncode == 1
    assert done.stderr == f"sonaprobe-sim: cannot read {tmp_path} to its end: Is a directory\n"


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_hold_owns_the_facility_until_a_signal(number):
    with Holder() as holder:
        pid = holder.process.pid
        assert holder.line == f"process {pid} owns the trace facility until a signal\n"
        assert state()["owner"] == str(pid)
        assert call("getbuf", "remove", "setbuf=5", "read") == [
            "getbuf: done",
            "remove: Device or resource busy",
            "setbuf: Device or resource busy",
            "read: Device or resource busy",
        ]
        for command in ("reset", "hold"):
            assert f"process {pid} owns the trace facility" in refused(command)
        holder.process.send_signal(number)
        assert holder.process.wait(timeout=10) == 0
    assert state()["owner"] == "none"
    assert call("setbuf=5") == ["setbuf: done"]


def test_a_killed_holder_leaves_nothing_locked():
    with Holder() as holder:
        holder.process.kill()
        holder.process.wait()
        assert call("remove") == ["remove: done"]


OPERATIONS = {
    "KERN_KDENABLE": "enable=1",
    "KERN_KDSETBUF": "setbuf=1024",
    "KERN_KDGETBUF": "getbuf",
    "KERN_KDSETUP": "setup",
    "KERN_KDSETREG": "setreg=0x524",
    "KERN_KDREADTR": "read",
    "KERN_KDREMOVE": "remove",
    "debug.Audio.get": "audio-get",
    "debug.Audio.set": "audio-set=1",
}


@pytest.mark.parametrize("operation", OPERATIONS)
def test_fail_makes_the_named_operation_fail_once(operation):
    name = OPERATIONS[operation].split("=")[0]
    others = [argument for argument in OPERATIONS.values() if not argument.startswith(name)]
    call("setbuf=1024", "setup")
    sim("fail", operation, "EPERM")
    assert call(OPERATIONS[operation]) == [f"{name}: Operation not permitted"]
    call("setbuf=1024", "setup")
    assert call(OPERATIONS[operation]) == [f"{name}: done"]
    call("remove", "setbuf=1024", "setup")
    sim("fail", operation, "EIO")
    assert all(line.endswith(": done") for line in call(*others))


def test_fail_counts_times_and_after():
    sim("fail", "debug.Audio", "12", "--times", "2", "--after=1")
    assert call("audio-get", "audio-set=1", "audio-get", "audio-get") == [
        "audio-get: done",
        "audio-set: Cannot allocate memory",
        "audio-get: Cannot allocate memory",
        "audio-get: done",
    ]
    sim("fail", "KERN_KDREMOVE", "EBUSY", "--times", "5")
    sim("fail", "KERN_KDREMOVE", "EBUSY", "--times", "0")
    assert call("remove") == ["remove: done"]


@pytest.mark.parametrize(
    "arguments, reason",
    [
        ([], "a command is missing; see sonaprobe-sim --help"),
        (["frobnicate"], "unknown command 'frobnicate'; see sonaprobe-sim --help"),
        (["status", "x"], "one argument too many: 'x'; see sonaprobe-sim --help"),
        (["status", "-v"], "unknown option '-v'; see sonaprobe-sim --help"),
        (["post"], "FILE is missing; see sonaprobe-sim --help"),
        (["fail"], "OPERATION is missing; see sonaprobe-sim --help"),
        (["fail", "KERN_KDSETUP"], "ERRNO is missing; see sonaprobe-sim --help"),
        (
            ["fail", "KERN_KDFOO", "EIO"],
            "unknown operation 'KERN_KDFOO'; sonaprobe-sim --help lists them",
        ),
        (
            ["fail", "KERN_KDSETUP", "EFOO"],
            "unknown error 'EFOO'; give a name such as EBUSY or a number from 1 to 4095",
        ),
        (
            ["fail", "KERN_KDSETUP", "0"],
            "unknown error '0'; give a name such as EBUSY or a number from 1 to 4095",
        ),
        (
            ["fail", "KERN_KDSETUP", "EIO", "--times", "some"],
            "--times takes a number from 0 to 4294967295, not 'some'",
        ),
        (
            ["fail", "KERN_KDSETUP", "EIO", "--after"],
            "--after takes a number from 0 to 4294967295, and none follows",
        ),
        (["fail", "KERN_KDSETUP", "EIO", "--often=2"], "unknown option '--often'; see sonaprobe-sim --help"),
    ],
)
def test_wrong_arguments_are_named(arguments, reason):
    assert refused(*arguments) == reason


def test_help_lists_every_command():
    text = sim("--help")
    assert text == sim("help") == sim("status", "--help")
    commands = re.findall(r"^  (\w+)", text, re.MULTILINE)
    assert {"status", "reset", "post", "hold", "fail", "help"} <= set(commands)


def test_output_that_cannot_be_written_is_an_error():
    with open("/dev/full", "w", encoding="ascii") as full:
        done = subprocess.run(
            [BUILD / "sonaprobe-sim", "status"],
            stdout=full, stderr=subprocess.PIPE, text=True, check=False,
        )
    assert done.returncode == 1
    assert done.stderr == "sonaprobe-sim: cannot write to standard output\n"


def test_closed_streams_leave_the_state_alone():
    command = f"'{BUILD}/sonaprobe-sim' status <&- >&- 2>&-"
    assert subprocess.run(["sh", "-c", command], check=False).returncode == 1
    assert sim("status") == AFTER_BOOT


@needs_another_user
def test_a_folder_of_somebody_else_is_refused_with_the_reason(private_shm):
    if not private_shm:
        pytest.skip("no right to a /dev/shm of its own")
    os.chown(FOLDER, 12345, 0)
    try:
        for command in ("status", "reset", "hold"):
            why = refused(command)
            assert "/dev/shm/sonaprobe belongs to another user" in why
            assert "remove /dev/shm/sonaprobe" in why
    finally:
        os.chown(FOLDER, 0, 0)


def test_a_host_without_shared_memory_is_told_so(private_shm):
    if not private_shm:
        pytest.skip("no right to a /dev/shm of its own")
    command = ["unshare", "-m", "sh", "-c", "umount /dev/shm; mount -t tmpfs none /dev; exec \"$0\" status"]
    done = subprocess.run([*command, BUILD / "sonaprobe-sim"], capture_output=True, text=True,
                          stdin=subprocess.DEVNULL, check=False)
    assert done.returncode == 1
    assert done.stderr == (
        "sonaprobe-sim: cannot read the state: there is no /dev/shm; mount a tmpfs there\n")


@needs_another_user
def test_it_is_roots(open_to_all):
    done = run_program("status", program=open_to_all("sonaprobe-sim"), user=12345)
    assert done.returncode == 1
    assert done.stderr == (
        "sonaprobe-sim: cannot read the state: the trace facility is root's; run this as root\n"
    )
