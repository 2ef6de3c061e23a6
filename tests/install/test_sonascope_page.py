"""sonascope(1): in step with the program, and each of its commands is run."""

import os
import pathlib
import re
import shlex

import pytest

from conftest import run_program

PAGE = (pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "man/sonascope.1").read_text()
SHOWN = [shlex.split(line)
         for line in re.findall(r"^\.Dl (?:sudo )?(sonascope .*)$", PAGE, re.MULTILINE)]


def help_of(*command):
    return run_program(*command, "--help", program="sonascope").stdout


COMMANDS = re.findall(r"^  (\w+)  ", help_of().partition("Subcommands:")[2], re.MULTILINE)


def test_each_command_has_a_paragraph_and_an_example():
    assert re.findall(r"^\.It Ic (\w+)", PAGE, re.MULTILINE) == COMMANDS
    assert {command for _, command, *_ in SHOWN} == set(COMMANDS)


def test_each_long_option_is_explained():
    listed = {option for command in COMMANDS
              for option in re.findall(r"--(\w[\w-]*)", help_of(command).partition("Examples:")[0])}
    plain = set(re.findall(r"-\w,--([\w-]+)", help_of("lines").partition("Columns of")[2]))
    explained = set(re.findall(r"Fl -([\w-]+)", PAGE))
    assert listed - plain - explained == {"output"}  # -o NEW stands for it


# catch needs root and drivers at work; README has such a hunt, which is run.
@pytest.mark.parametrize("command", [command for command in SHOWN if command[1] != "catch"],
                         ids=" ".join)
def test_each_example_runs(command, tmp_path):
    written = command[command.index("-o") + 1] if "-o" in command else None
    for name in {word for word in command if word.endswith(".raw")} - {written}:
        run_program("write", "playback", tmp_path / name, program="sonaprobe-sim")
    result = run_program(*command[1:], program="sonascope", cwd=tmp_path)
    assert result.stderr == ""
    assert result.returncode in (0, 1)  # 1 where something was found
    assert result.stdout
