"""The scripts and the events tool say what is wrong and what to do, and change nothing."""

import os
import pathlib
import subprocess

import pytest

from conftest import BUILD, run_program

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])


def run(*command, **options):
    return subprocess.run(command, check=False, text=True, capture_output=True,
                          stdin=subprocess.DEVNULL, timeout=60, **options)


@pytest.mark.parametrize("script, arguments, message", [
    ("demo", ["--seconds"], "demo: --seconds wants a value; see script/demo --help\n"),
    ("demo", ["--seconds", "x"], "demo: --seconds takes a number from 1 to 999999, not 'x'\n"),
    ("demo", ["-k"], "demo: unknown argument '-k'; options of sonaprobe stand behind '--', "
                     "see script/demo --help\n"),
    ("demo", ["--build", "/nowhere"], "demo: there is no /nowhere/sonaprobe\n"),
    ("demo", ["--build", BUILD, "--scenario", "opera"],
     "sonaprobe-sim: unknown scenario 'opera'; sonaprobe-sim scenarios lists them\n"
     "demo: see script/demo --help for the scenarios\n"),
    ("test", ["--all"], "test: unknown argument '--all'; see script/test --help\n"),
    ("coverage", ["src"], "coverage: unknown argument 'src'; see script/coverage --help\n"),
    ("make-sample", ["/nowhere"], "make-sample: there is no /nowhere/sonaprobe-sim; "
                                  "cmake --build --preset release makes it\n"),
    ("update-generated", ["/nowhere"], "update-generated: there is no /nowhere/sonaprobe; "
                                       "cmake --preset release -DSONAPROBE_TESTS=ON && "
                                       "cmake --build --preset release makes it\n"),
])
def test_a_script_names_what_is_wrong(script, arguments, message):
    result = run(SOURCE / "script" / script, *arguments)
    assert (result.stderr, result.stdout, result.returncode) == (message, "", 1)


@pytest.mark.parametrize("script", ["bench", "coverage", "demo", "test"])
def test_a_script_shows_its_help_wherever_it_is_called_from(script):
    result = run(f"./{script}", "--help", cwd=SOURCE / "script")
    assert f"\n  script/{script}" in result.stdout
    assert (result.stderr, result.returncode) == ("", 0)


def test_the_demo_asks_for_root_where_there_is_no_sudo(tmp_path):
    for tool in ("bash", "basename", "dirname"):
        (tmp_path / tool).symlink_to(f"/usr/bin/{tool}")
    (tmp_path / "id").write_text("#!/bin/sh\necho 1000\n")
    (tmp_path / "id").chmod(0o755)
    result = run(SOURCE / "script/demo", "--build", BUILD, env={"PATH": str(tmp_path)})
    assert result.stderr == "demo: there is no sudo here; run this as root\n"
    assert (result.stdout, result.returncode) == ("", 1)


@pytest.mark.parametrize("arguments", [[], ["texts"], ["markdown", "records"]])
def test_the_events_tool_names_what_it_takes(arguments):
    result = run_program(*arguments, program="sonaprobe-events")
    assert (result.stdout, result.returncode) == ("", 1)
    assert result.stderr == ("sonaprobe-events: give one of markdown, records, counts; "
                             "see sonaprobe-events --help\n")


def test_the_events_tool_fails_where_its_output_is_lost():
    with open("/dev/full", "w", encoding="ascii") as full:
        result = run_program("markdown", program="sonaprobe-events", capture_output=False,
                             stdout=full, stderr=subprocess.PIPE)
    assert result.returncode == 1
    assert result.stderr == "sonaprobe-events: cannot write to standard output\n"
