"""sonascope's completion, made from its own tables, in bash, zsh and fish."""

import re

import pytest

import shells
from conftest import run_program


def help_of(*command):
    return run_program(*command, "--help", program="sonascope").stdout


COMMANDS = re.findall(r"^  (\w+)  ", help_of().partition("Subcommands:")[2], re.MULTILINE)


@pytest.fixture(scope="module", params=["bash", "zsh", "fish"])
def shell(request, tmp_path_factory):
    folder = tmp_path_factory.mktemp(request.param)
    (folder / "kept.raw").touch()
    shell = getattr(shells, request.param)(folder)
    yield shell
    shell.close()


def test_commands_are_those_of_the_help(shell):
    offered = shell.complete("sonascope ")
    assert sorted(word for word in offered if not word.startswith("-")) == sorted(COMMANDS)


@pytest.mark.parametrize("command", COMMANDS)
def test_options_are_those_of_the_commands_help(shell, command):
    known = set(re.findall(r"--\w[\w-]*", help_of(command).partition("Examples:")[0]))
    offered = {word.rstrip("=") for word in shell.complete(f"sonascope {command} --")}
    assert offered == known


@pytest.mark.parametrize("typed, completed", [
    ("sonascope lin", ["lines"]),
    ("sonascope lines kep", ["kept.raw"]),
    ("sonascope lines --color a", ["always", "auto"]),
    ("sonascope stats --by t", ["thread", "thread,event"]),
    ("sonascope stats --sort sel", ["self"]),
    ("sonascope stats --histogram setPathS", ["setPathSetFormat"]),
    ("sonascope tree --by ", ["all", "thread"]),
    ("sonascope lines --driver OrvelHDAPa", ["OrvelHDAPath", "OrvelHDAPathSet"]),
    ("sonascope lines --method setPathS", ["setPathSetFormat"]),
    ("sonascope lines --names kep", ["kept.raw"]),
    ("sonascope cut kept.raw -o kep", ["kept.raw"]),
    ("sonascope completion ", ["bash", "fish", "zsh"]),
])
def test_a_word_is_completed(shell, typed, completed):
    assert sorted(shell.complete(typed)) == completed
