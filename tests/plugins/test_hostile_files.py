"""Files that are none, or were made to do harm: each plugin says so, or reads what there is.

Where the build has sanitizers, the programs run with them: they look at the plugins' memory too.
"""

import os
import random
import subprocess

import pytest

from conftest import BUILD
from plugin_traces import DIVISOR, SAMPLE, START
from records import DIVISOR_MARKER, SLOT, pack

PLUGINS = BUILD / "plugins"
WHOLE = SAMPLE.read_bytes()
CHANCE = random.Random(1)


def swapped(content):
    """A trace of a machine of the other byte order."""
    fields = SLOT.iter_unpack(content)
    return b"".join(SLOT_SWAPPED.pack(*values) for values in fields)


SLOT_SWAPPED = type(SLOT)(">6Q2IQ")

# Nothing of these can be read.
REFUSED = {
    "empty": b"",
    "a few bytes": WHOLE[64:100],
    "a text": b"02516.771 -> QuorraHAL::IOCycle Start\n" * 400,
    "zeros": bytes(64 * 1000),
    "garbage": CHANCE.randbytes(64 * 1000),
    "misaligned": WHOLE[10:],
    "the other byte order": swapped(WHOLE),
}

# These can, whatever it is worth: so many records.
ODD_CODES = [(CHANCE.choice([0x0524, 0x2104]) << 16) | CHANCE.getrandbits(16) for _ in range(20_000)]
READ = {
    "garbage after a divisor": (DIVISOR + CHANCE.randbytes(64 * 5000), 5000),
    "all codes, arguments and threads": (
        DIVISOR +
        b"".join(pack(code, t=n, cpu=CHANCE.getrandbits(32),
                      **{f"a{a}": CHANCE.getrandbits(CHANCE.choice([8, 64])) for a in range(1, 6)})
                 for n, code in enumerate(ODD_CODES)), 20_000),
    "misaligned in the middle": (WHOLE[:6400] + WHOLE[6410:], 1781),
    "cut": (WHOLE[:-20], 1781),
    "each record earlier than the one before": (
        DIVISOR + b"".join(pack(START, t=5000 - n, a5=1) for n in range(5000)), 5000),
    "times at both ends": (
        b"".join(pack(START, t=t, a5=1) for t in (2**64 - 1, 0, 2**63, 1, 2**64 - 1)), 5),
    "divisors without end": (
        b"".join(pack(DIVISOR_MARKER, t=t) + pack(START, t=7, a5=1)
                 for t in (0, 1, 2**64 - 1, 2**63, 0, 24, 1, 24) * 20), 160),
    "codes without end": (
        DIVISOR + b"".join(pack(0x70000000 + 4 * n, t=n) for n in range(12_000)), 12_000),
}


def sanitized():
    """What a program without sanitizers needs to take a plugin that has them."""
    library = next(PLUGINS.glob("*/*.so"))
    listed = subprocess.run(["ldd", library], check=True, text=True, capture_output=True).stdout
    loaded = [line.split()[2] for line in listed.splitlines() if "libasan" in line]
    # The programs' own leaks are not ours.
    return {"LD_PRELOAD": ":".join(loaded), "ASAN_OPTIONS": "detect_leaks=0"} if loaded else {}


def run(*command, **options):
    settings = os.environ | sanitized() | {"BABELTRACE_PLUGIN_PATH": str(PLUGINS / "babeltrace2")}
    done = subprocess.run([str(word) for word in command], check=False, text=True, env=settings,
                          errors="replace", capture_output=True, timeout=120, **options)
    assert "Sanitizer" not in done.stderr and "runtime error" not in done.stderr, done.stderr
    assert done.returncode >= 0, f"ended by signal {-done.returncode}"
    return done


def in_babeltrace2(path, *options):
    return run("babeltrace2", *options, "-c", "source.sonaprobe.raw", "-p", f'inputs=["{path}"]')


def in_kernelshark(path):
    return run(BUILD / "kshark_dump", PLUGINS / "kernelshark/plugin-sonaprobe.so", path)


PROGRAMS = {"babeltrace2": in_babeltrace2, "kernelshark": in_kernelshark}
each_program = pytest.mark.parametrize("program", [
    pytest.param(name, marks=pytest.mark.skipif(not (PLUGINS / name).exists(),
                                                reason=f"built without the plugin for {name}"))
    for name in PROGRAMS])


def events_of(done, program):
    """The lines of records, without the program's other words."""
    return [line for line in done.stdout.splitlines()
            if (line.startswith("[") if program == "babeltrace2" else "\tslot " in line)]


@each_program
@pytest.mark.parametrize("kind", REFUSED)
def test_what_is_no_trace_is_refused(program, kind, tmp_path):
    path = tmp_path / "file"
    path.write_bytes(REFUSED[kind])
    done = PROGRAMS[program](path)
    assert done.returncode == 1 and events_of(done, program) == []
    if program == "babeltrace2":
        assert "this is no trace of audio drivers, or a broken one" in " ".join(done.stderr.split())


@each_program
@pytest.mark.parametrize("kind", READ)
def test_what_can_be_read_is_read_to_its_end(program, kind, tmp_path):
    content, records = READ[kind]
    path = tmp_path / "file"
    path.write_bytes(content)
    done = PROGRAMS[program](path)
    assert (done.returncode, len(events_of(done, program))) == (0, records), done.stderr
    control = {c for c in done.stdout if c < " " and c not in "\n\t"}
    assert control == set()


@each_program
def test_what_is_no_file_is_named(program, tmp_path):
    for path in (tmp_path, tmp_path / "missing"):
        done = PROGRAMS[program](path)
        assert done.returncode == 1 and str(path) in done.stderr.replace("\n", "").replace(" ", "")


@pytest.mark.skipif(not (PLUGINS / "babeltrace2").exists(), reason="built without the plugin")
def test_a_pipe_is_read_by_who_asks_for_it(tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    with subprocess.Popen(["sh", "-c", 'cat "$0" >"$1"', str(SAMPLE), str(pipe)]) as writer:
        done = in_babeltrace2(pipe)
        assert (done.returncode, len(events_of(done, "babeltrace2"))) == (0, 1782), done.stderr
        assert writer.wait() == 0
    # To look at it would use it up.
    found = run("babeltrace2", pipe)
    assert found.returncode == 1 and "No trace was found" in found.stderr


@pytest.mark.skipif(not (PLUGINS / "babeltrace2").exists(), reason="built without the plugin")
def test_a_file_that_shrinks_while_it_is_read_ends_there(tmp_path):
    path = tmp_path / "shrinks.raw"
    path.write_bytes(DIVISOR + b"".join(pack(START, t=n * 1_000_000, a5=1) for n in range(200_000)))
    settings = os.environ | sanitized() | {"BABELTRACE_PLUGIN_PATH": str(PLUGINS / "babeltrace2")}
    with subprocess.Popen(["babeltrace2", str(path)], env=settings, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE) as program:
        first = program.stdout.readline()
        os.truncate(path, 64 * 100)
        rest, complaints = program.communicate()
    lines = [first, *rest.splitlines()]
    assert (program.returncode, complaints) == (0, "") and 100 < len(lines) < 200_000
