"""The C example against the installed library: built as its users would, and what it prints."""

import os
import pathlib
import re
import shutil
import subprocess

import pytest

from conftest import BUILD

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"
EXPECTED = (SOURCE / "tests/library/failures.txt").read_text()
PAGE = (SOURCE / "docs/library.md").read_text()
STRICT = "-std=c99 -Wall -Wextra -pedantic -Werror"

PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(failures LANGUAGES C)
find_package(sonaprobe 100 REQUIRED)
add_executable(failures failures.c)
target_link_libraries(failures PRIVATE sonaprobe::sonaprobe)
"""


def test_the_page_shows_what_the_example_prints_and_does():
    blocks = re.findall(r"^```(\w*)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
    [prints] = [text for language, text in blocks if language == ""]
    assert prints.splitlines() == [line for line in EXPECTED.splitlines() if line in prints]
    heart = next(text for language, text in blocks if language == "c")
    example = (SOURCE / "examples/failures.c").read_text()
    assert "".join(heart.split()) in "".join(example.split())


def run(*command, **options):
    done = subprocess.run(command, check=False, text=True, capture_output=True,
                          stdin=subprocess.DEVNULL, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.fixture(scope="module")
def prefix(tmp_path_factory):
    """The library, and what it is used with, where nobody has configured it to go."""
    prefix = tmp_path_factory.mktemp("installed")
    for component in ("library", "development"):
        run("cmake", "--install", BUILD, "--component", component, "--prefix", prefix)
    return prefix


def test_built_by_pkg_config(prefix, tmp_path):
    [folder] = prefix.glob("lib/**/pkgconfig")
    flags = run("pkg-config", "--cflags", "--libs", "sonaprobe",
                env=os.environ | {"PKG_CONFIG_PATH": str(folder)}).split()
    program = tmp_path / "failures"
    run("cc", *STRICT.split(), SOURCE / "examples/failures.c", "-o", program, *flags)
    assert run(program, SAMPLE, env={"LD_LIBRARY_PATH": folder.parent}) == EXPECTED


def test_built_by_cmake(prefix, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(PROJECT)
    shutil.copy(SOURCE / "examples/failures.c", tmp_path)
    run("cmake", "-S", tmp_path, "-B", tmp_path / "build", f"-DCMAKE_PREFIX_PATH={prefix}",
        f"-DCMAKE_C_FLAGS={STRICT}")
    run("cmake", "--build", tmp_path / "build")
    assert run(tmp_path / "build/failures", SAMPLE) == EXPECTED
