"""sonaprobe.raw(5): its layout is that of the records, and its readers read raw files."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

from conftest import run_program
from records import pack_lines

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
PAGE = (SOURCE / "man/sonaprobe.raw.5").read_text()
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"

# Two divisors, an invalid slot, and a last slot that is cut short.
MIXED = b"".join([
    pack_lines("0x05245029 t=5000 a1=1 a2=2 a3=3 a4=4 a5=0x1c52"),
    pack_lines("0xFEEDFACE t=24"), pack_lines("0xDEADBEEF t=9"),
    pack_lines("0x0524502A t=4800 a1=0xffffff8022d14000"), b"cut"])
READ = """\
5 0x05245029 0x1c52 0x1 0x2 0x3 0x4
200 0x0524502a 0x0 0xffffff8022d14000 0x0 0x0 0x0
"""


def test_the_layout_of_a_slot_is_told():
    rows = re.findall(r"^\.It (\d+) Ta (\d+) Ta ([\w ]+)", PAGE, re.MULTILINE)
    assert [(int(offset), int(width), field) for offset, width, field in rows] == [
        (0, 8, "time stamp"), (8, 8, "argument 1"), (16, 8, "argument 2"), (24, 8, "argument 3"),
        (32, 8, "argument 4"), (40, 8, "argument 5"), (48, 4, "debug id"), (52, 4, "processor"),
        (56, 8, "reserved")]


@pytest.fixture(name="read", params=["Python", "C"])
def fixture_read(request, tmp_path):
    """Reads a raw file by one of the page's readers."""
    [shown] = re.findall(rf"^In {request.param}:\n\.Bd -literal\n(.*?)^\.Ed$", PAGE,
                         re.MULTILINE | re.DOTALL)
    assert len(shown.splitlines()) <= 20
    program = shown.replace(r"\e", "\\")
    if request.param == "Python":
        command = [sys.executable, "-c", program]
    else:
        if not shutil.which("cc"):
            pytest.skip("needs a C compiler")
        command = [tmp_path / "reader"]
        subprocess.run(["cc", "-std=c99", "-Wall", "-Wextra", "-Werror", "-xc", "-", "-o",
                        command[0]], input=program, text=True, check=True)

    def read(content):
        (tmp_path / "trace.raw").write_bytes(content)
        return subprocess.run([*command, tmp_path / "trace.raw"], check=True, text=True,
                              capture_output=True).stdout

    return read


def test_a_reader_knows_divisors_invalid_slots_and_a_cut_end(read):
    assert read(MIXED) == READ


def test_a_reader_finds_the_records_that_sonascope_finds(read):
    counted = run_program("info", SAMPLE, program="sonascope").stdout
    [records] = re.findall(r"^\s*records\s+([\d ,]+)", counted, re.MULTILINE)
    assert len(read(SAMPLE.read_bytes()).splitlines()) == int(re.sub(r"\D", "", records))
