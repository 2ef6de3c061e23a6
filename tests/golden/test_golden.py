"""Each stanza of the golden files: the program prints its lines for its records, and no others."""

import pathlib

import pytest

from conftest import run_program
from records import pack_lines, read_cases, without_clock

FILES = sorted(pathlib.Path(__file__).parent.rglob("*.golden"))
CASES = [case for path in FILES for case in read_cases(path)]


@pytest.mark.parametrize("case", CASES, ids=lambda case: f"{case.where} {case.title}")
def test_prints(case, tmp_path):
    trace = tmp_path / "trace.raw"
    trace.write_bytes(pack_lines("\n".join(case.records)))
    result = run_program(*case.options, "-r", trace, program=case.program)
    assert without_clock(result.stdout).splitlines() == case.expected
    assert (result.stderr, result.returncode) == ("", 0)
