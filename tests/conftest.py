"""What all command-line tests share: the programs of the build, run as a user would run them."""

import os
import pathlib
import shutil
import subprocess
import tempfile

import pytest

from records import pack_lines

BUILD = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"])

# Far above what any of the programs takes, so that a hang is a failure and not a wait.
PATIENCE = 60


def needs_root(test):
    """Marks a test of what only root may do."""
    return pytest.mark.skipif(os.geteuid() != 0, reason="needs root")(test)


def needs_another_user(test):
    """Marks a test that becomes another user, which root of a namespace of its own cannot."""
    mapped = int(pathlib.Path("/proc/self/uid_map").read_text().split()[2])
    able = os.geteuid() == 0 and mapped > 1
    return pytest.mark.skipif(not able, reason="needs root, to become another user")(test)


def run_program(*arguments, program="sonaprobe", **options):
    """Runs a program of the build to its end; its output as text, its status as `returncode`."""
    settings = {"capture_output": True, "text": True, "errors": "surrogateescape",
                "stdin": subprocess.DEVNULL, "timeout": PATIENCE} | options
    return subprocess.run([BUILD / program, *map(str, arguments)], check=False, **settings)


@pytest.fixture
def run():
    return run_program


@pytest.fixture
def raw(tmp_path):
    """Writes records given as text into a raw file and returns its path."""

    def write(text, name="trace.raw"):
        path = tmp_path / name
        path.write_bytes(pack_lines(text))
        return path

    return write


@pytest.fixture
def open_to_all():
    """Copies a program of the build to where everyone may start it; the build may be in a home."""
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        yield lambda program: shutil.copy(BUILD / program, folder)


@pytest.fixture
def facility():
    """The stand-in trace facility, as after boot before and after the test."""
    run_program("reset", program="sonaprobe-sim")
    yield
    run_program("reset", program="sonaprobe-sim")
