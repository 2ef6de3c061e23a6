"""Each stanza of the golden files: the program prints its lines for its records, and no others.

It runs beside its raw file, trace.raw, and the code-name file of this folder, trace.codes.
"""

import pathlib
import shutil

import pytest

from conftest import run_program
from records import pack_lines, read_cases, without_clock

FOLDER = pathlib.Path(__file__).parent
FILES = sorted(FOLDER.rglob("*.golden"))
CASES = [case for path in FILES for case in read_cases(path)]


@pytest.mark.parametrize("case", CASES, ids=lambda case: f"{case.where} {case.title}")
def test_prints(case, tmp_path):
    shutil.copy(FOLDER / "trace.codes", tmp_path)
    (tmp_path / "trace.raw").write_bytes(pack_lines("\n".join(case.records)))
    result = run_program(*case.options, "-r", "trace.raw", program=case.program, cwd=tmp_path)
    assert without_clock(result.stdout) == "".join(f"{line}\n" for line in case.expected)
    assert (result.stderr, result.returncode) == ("", 0)
