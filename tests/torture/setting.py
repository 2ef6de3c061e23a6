"""Where the torture happens: the programs of the build, a /dev/shm of its own, load, faults."""

import contextlib
import ctypes
import fcntl
import functools
import os
import pathlib
import signal
import struct
import subprocess
import termios
import threading
import time

BUILD = pathlib.Path(os.environ.get("SONAPROBE_BUILD_DIR", "build/release")).resolve()
SIM = BUILD / "sonaprobe-sim"
AIM = BUILD / "tests/torture-aim"

FOUR = (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM)

# What `sonaprobe-sim status` shows where nothing is left behind.
CLEAN = {"entries": "0", "nolog": "1", "flags": "0x0", "bufid": "0", "owner": "none",
         "interest": "0x40000 0x0 0xffffffff 0x0 0x0", "audio-debug-flags": "0"}

# Lines without time and thread, and the line of an event of the load.
OPTIONS = ("-s", "-H", "-g", "-S")
LINE = b"<- enable End - stream: 0x%x channelID: 0 result: 0x00000000\n"
VERSION_LINE = b"sonaprobe version:  100.45\n"


def take_private_shm():
    """Gives this process and its children a trace facility of their own; whether that went."""
    new_mounts, private, recursive = 0x20000, 1 << 18, 1 << 14
    libc = ctypes.CDLL(None, use_errno=True)
    return (os.geteuid() == 0 and libc.unshare(new_mounts) == 0
            and libc.mount(b"none", b"/", None, private | recursive, None) == 0
            and libc.mount(b"none", b"/dev/shm", b"tmpfs", 0, b"size=256m") == 0)


def reset():
    """As after boot. An owner that was killed takes a moment to be gone."""
    limit = time.monotonic() + 5
    while subprocess.run([SIM, "reset"], check=False, stderr=subprocess.DEVNULL).returncode != 0:
        if time.monotonic() > limit:
            raise RuntimeError("the facility cannot be reset")
        time.sleep(0.01)


def status():
    """What the facility says of itself, by name."""
    text = subprocess.run([SIM, "status"], check=True, capture_output=True, text=True).stdout
    return dict(line.split(": ", 1) for line in text.splitlines())


@contextlib.contextmanager
def load(burst=1500, pause=1000):
    """Events that are posted all the while."""
    reset()
    with subprocess.Popen([BUILD / "tests/torture-load", str(burst), str(pause)]) as process:
        try:
            yield
        finally:
            died = process.poll() is not None
            process.kill()
        if died:
            raise RuntimeError("the load ended by itself")


def has_handlers(process):
    """Whether a program has come as far as its signal handlers."""
    text = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
    caught = int(dict(line.split(":\t", 1) for line in text.splitlines()).get("SigCgt", "0"), 16)
    return all(caught >> number - 1 & 1 for number in FOUR)


def wait_for_handlers(process):
    limit = time.monotonic() + 20
    while process.poll() is None and not has_handlers(process):
        if time.monotonic() > limit:
            raise RuntimeError("the program does not start")


@functools.cache
def can_aim():
    """Whether programs may be traced here, so that a signal can be sent at an exact moment."""
    return subprocess.run([AIM, "15", "0", "0", "/bin/true"], check=False).returncode == 0


def wait_until_full(pipe):
    """Waits until nothing more comes into a pipe that nobody reads, though there is more."""
    filled, since = 0, time.monotonic()
    while time.monotonic() < since + 0.1:
        now = struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, bytes(4)))[0]
        if now != filled or now == 0:
            filled, since = now, time.monotonic()
        time.sleep(0.002)


class Drain:
    """Reads a pipe to its end beside what goes on."""

    def __init__(self, descriptor):
        self.data = b""
        self.descriptor = descriptor
        self.thread = threading.Thread(target=self.read)
        self.thread.start()

    def read(self):
        with os.fdopen(self.descriptor, "rb") as pipe:
            self.data = pipe.read()

    def finish(self):
        self.thread.join()
        return self.data


def numbers_of(slots):
    """The numbers in the slots of a raw file, -1 for a slot that is no event of the load."""
    return [words[0] if words[2] == words[0] and words[6] == 0x05245C0E else -1
            for words in struct.iter_unpack("<6Q2IQ", slots)]
