"""What the shared library gives to programs, and what it wants of the system."""

import os
import pathlib
import re
import subprocess

from conftest import BUILD

LIBRARY = BUILD / "libsonaprobe.so"
HEADER = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "include/sonaprobe/sonaprobe.h"

# By these a library ends its program, takes its signals, prints, or depends on its environment.
FORBIDDEN = re.compile(r"_?_?exit|_Exit|quick_exit|abort|atexit|signal|sigaction|raise|kill|alarm"
                       r"|setitimer|stdout|stderr|f?printf|v?f?printf|f?puts|putchar|perror"
                       r"|_ZSt4(cout|cerr|clog)|getenv|secure_getenv|setlocale")


def symbols(*options):
    """Names of the dynamic symbols, with their versions."""
    listing = subprocess.run(["nm", "-D", *options, LIBRARY], check=True, text=True,
                             capture_output=True).stdout
    return {line.split()[-1] for line in listing.splitlines()}


def test_it_exports_what_its_header_declares_and_nothing_else():
    declared = re.findall(r"\b(sonaprobe_\w+)\(", HEADER.read_text())
    assert len(declared) > 40
    assert symbols("--defined-only") == {"SONAPROBE_1"} | {f"{name}@@SONAPROBE_1"
                                                           for name in declared}


def test_it_neither_prints_nor_ends_the_program_nor_takes_signals():
    wanted = {name.split("@")[0] for name in symbols("--undefined-only")}
    assert "read" in wanted
    assert [name for name in wanted if FORBIDDEN.fullmatch(name)] == []


def test_its_name_carries_the_version_of_its_interface():
    dynamic = subprocess.run(["readelf", "-d", LIBRARY], check=True, text=True,
                             capture_output=True).stdout
    assert re.findall(r"soname: \[(.*)\]", dynamic) == ["libsonaprobe.so.1"]
    assert (BUILD / "libsonaprobe.so.1").resolve() == LIBRARY.resolve()


def test_it_has_no_variables():
    """What can be written to once the linker is done is the compiler's, not the library's."""
    table = subprocess.run(["objdump", "-t", LIBRARY], check=True, text=True,
                           capture_output=True).stdout
    writable = re.findall(r" (?:\.t?data|\.t?bss)\s+[0-9a-f]+\s+(?:\.hidden )?(\S+)$", table, re.M)
    assert "__dso_handle" in writable
    compilers = re.compile(r"\.data|\.bss|__dso_handle|__TMC_END__|completed\.0|DW\.ref\..*")
    assert [name for name in writable if not compilers.fullmatch(name)] == []
