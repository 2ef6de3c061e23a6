"""The scripts' help, and what the events tool says of mistakes; the table of mistakes has the rest."""

import os
import pathlib
import re
import subprocess

import pytest

from conftest import BUILD, needs_root, run_program

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])


def run(*command, **options):
    return subprocess.run(command, check=False, text=True, capture_output=True,
                          stdin=subprocess.DEVNULL, timeout=60, **options)


@pytest.mark.parametrize("script", ["bench", "coverage", "demo", "make-sample", "test", "try-packages"])
def test_a_script_shows_its_help_wherever_it_is_called_from(script):
    result = run(f"./{script}", "--help", cwd=SOURCE / "script")
    assert f"\n  script/{script}" in result.stdout
    assert (result.stderr, result.returncode) == ("", 0)


@needs_root
def test_the_demo_catches_a_dropout_says_why_and_makes_the_page(facility, tmp_path):
    result = run(SOURCE / "script/demo", "--build", BUILD, env=os.environ | {"TMPDIR": str(tmp_path)})
    assert result.returncode == 0, result.stderr
    assert "blocked-by  OrvelHDAController::pollRegister" in result.stdout
    assert "Left in the trace facility is nothing" in result.stdout
    [caught] = tmp_path.glob("caught-*.raw")
    assert f"sonascope lines {caught} --around dropout=20ms" in result.stdout
    [page] = re.findall("^  file://(.*)$", result.stdout, re.MULTILINE)
    assert pathlib.Path(page) == caught.with_suffix(".html")
    assert pathlib.Path(page).read_bytes().startswith(b"<!doctype html>")


@needs_root
def test_the_demo_shows_live_lines(facility):
    result = run(SOURCE / "script/demo", "--build", BUILD, "--lines", "--scenario", "usb",
                 "--seconds", "1", "--", "-k")
    assert result.returncode == 0, result.stderr
    # Which lines are seen depends on when sonaprobe has started; all of them are of USB drivers.
    assert re.search(r"OrvelUSB\w+::\w+", result.stdout)
    assert "Stopped as by Ctrl-C. Left in the trace facility is nothing" in result.stdout


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
