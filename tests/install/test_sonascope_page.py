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


# Options of others that a command's paragraph refers to.
REFERRED = {"catch": {"failed", "method", "where"}}
COMMANDS = re.findall(r"^  (\w+)  ", help_of().partition("Subcommands:")[2], re.MULTILINE)


def test_each_command_has_a_paragraph_and_an_example():
    assert re.findall(r"^\.It Ic (\w+)", PAGE, re.MULTILINE) == COMMANDS
    assert {command for _, command, *_ in SHOWN} == set(COMMANDS)


def options_of(command):
    """The long names of a command's options; those of lines --plain by their letters."""
    told, _, columns = help_of(command).partition("Examples:")[0].partition("Columns of --plain:")
    pattern = r"^  (?:-\w,)?--([\w-]+)"
    names = set(re.findall(pattern, told, re.MULTILINE)) - {"help"}
    letters = set(re.findall(r"^  -(\w),", columns, re.MULTILINE))
    return names | letters | ({"plain"} if columns else set())


def explained(text):
    """The options that a part of the page names; some have letters there."""
    names = set(re.findall(r"Fl -([\w-]+)", text))
    letters = {letter for given in re.findall(r"Fl (\w(?: , \w)*)(?![\w-])", text)
               for letter in given.split(" , ")}
    return names | {{"o": "output", "j": "jobs"}.get(letter, letter) for letter in letters}


def paragraphs():
    """The paragraph of each command."""
    commands = PAGE.partition(".Ss Commands\n")[2].partition(".Ss Selection\n")[0]
    parts = re.split(r"^\.It Ic (\w+)", commands, flags=re.MULTILINE)[1:]
    return dict(zip(parts[::2], parts[1::2]))


SHARED = explained(PAGE.partition(".Ss Selection\n")[2].partition(".Sh ENVIRONMENT\n")[0])


@pytest.mark.parametrize("command", COMMANDS)
def test_each_option_of_a_command_is_explained_and_no_other(command):
    own, listed = explained(paragraphs()[command]), options_of(command)
    assert listed - own - SHARED == set()
    assert own - listed == REFERRED.get(command, set())


def test_what_commands_share_is_an_option_of_some():
    assert SHARED - {option for command in COMMANDS for option in options_of(command)} == set()


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
