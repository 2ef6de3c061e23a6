"""The command line: help for every command, and answers to what is mistyped."""

import re

import pytest

from scope import scope

COMMANDS = re.findall(r"^  (\w+)  ", scope("--help").stdout.partition("Subcommands:")[2],
                      re.MULTILINE)


def test_the_help_lists_the_commands():
    assert {"lines", "cut", "events", "completion"} <= set(COMMANDS)


@pytest.mark.parametrize("command", COMMANDS)
def test_each_command_has_a_help_with_an_example(command):
    result = scope(command, "--help")
    assert (result.stderr, result.returncode) == ("", 0)
    assert f"Usage: sonascope {command}" in result.stdout
    assert re.search(rf"Examples:\n.*sonascope {command}", result.stdout)


def test_the_version_is_the_projects():
    assert re.fullmatch(r"sonascope \d+\.\d+\n", scope("--version").stdout)


@pytest.mark.parametrize("arguments, message", [
    ([], "a command is missing; see sonascope --help"),
    (["evnts"], "there is no command 'evnts'; the nearest is 'events'; see sonascope --help"),
    (["lines"], "FILE is required; see sonascope lines --help"),
    (["lines", "f", "--frm=3s"], "The following argument was not expected: --frm=3s; the nearest is "
     "'--from'; see sonascope lines --help"),
    (["cut", "trace.raw"], "--output is required; see sonascope cut --help"),
    (["completion", "tcsh"], "SHELL: 'tcsh' is none of bash, fish, zsh; see sonascope completion --help"),
    (["lines", "f", "--plain", "--json"], "--plain and --json do not go together; give one of them"),
])
def test_what_is_mistyped_is_answered(arguments, message):
    result = scope(*arguments)
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonascope: {message}\n", 2)
