"""The hardening of the programs as readelf sees it."""

import re
import subprocess

import pytest

from conftest import BUILD


@pytest.fixture(scope="module", params=["sonaprobe", "sonaprobe-sim"])
def readelf(request):
    def run(option):
        return subprocess.run(["readelf", "--wide", option, BUILD / request.param], check=True,
                              capture_output=True, text=True).stdout
    return run


def test_it_is_placed_anywhere(readelf):
    assert re.search(r"Type:\s+DYN \(Position-Independent Executable file\)",
                     readelf("--file-header"))


def test_all_symbols_are_bound_at_the_start_and_then_read_only(readelf):
    assert "GNU_RELRO" in readelf("--program-headers")
    dynamic = readelf("--dynamic")
    assert re.search(r"\(FLAGS\)\s.*BIND_NOW", dynamic)
    assert re.search(r"\(FLAGS_1\)\s.*NOW", dynamic)


def test_no_memory_is_both_writable_and_executable(readelf):
    headers = re.findall(r"^\s+(LOAD|GNU_STACK)\s.*?\s([R ][W ][E ])\s+0x\w+$",
                         readelf("--program-headers"), re.MULTILINE)
    assert {kind for kind, _ in headers} == {"LOAD", "GNU_STACK"}
    assert [flags for _, flags in headers if "W" in flags and "E" in flags] == []


def test_stack_frames_and_library_calls_are_checked(readelf):
    symbols = readelf("--dyn-syms")
    assert "__stack_chk_fail" in symbols
    assert re.search(r"\b__v?fprintf_chk\b", symbols)
