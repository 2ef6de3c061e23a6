"""The hunts are real: each command is run, in the page's order, and each excerpt is what it prints."""

import os
import pathlib
import re
import subprocess

from conftest import BUILD
from shown import blocks, commands, misfit, shown_runs

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
PAGE = (SOURCE / "docs/hunting.md").read_text()
FINDINGS = 1  # the exit status of a sonascope that has found something


def test_each_scenario_has_its_hunt():
    listed = subprocess.run([BUILD / "sonaprobe-sim", "scenarios"], check=True, text=True,
                            capture_output=True).stdout
    scenarios = [line.split()[0] for line in listed.splitlines()]
    assert re.findall(r"^## (\w+):", PAGE, re.MULTILINE) == scenarios
    assert len(scenarios) == 6


def test_each_command_runs_and_prints_its_excerpt(tmp_path):
    environment = os.environ | {"PATH": f"{BUILD}:{os.environ['PATH']}"}
    for shown, excerpt in shown_runs(PAGE):
        for command in shown:
            result = subprocess.run(["bash", "-c", command.replace("/tmp/", f"{tmp_path}/")],
                                    cwd=SOURCE, env=environment, check=False, text=True,
                                    stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
            assert result.returncode in (0, FINDINGS), f"{command}\n{result.stderr}"
            assert result.stderr == "", command
        if excerpt:
            printed = result.stdout.replace(f"{tmp_path}/", "/tmp/").splitlines()
            assert misfit(excerpt, printed) is None, shown[-1]


def test_each_excerpt_follows_its_command():
    kinds = [language for language, _ in blocks(PAGE)]
    assert "" in kinds and set(kinds) == {"sh", ""}
    assert all(before == "sh" for before, kind in zip(kinds, kinds[1:]) if kind == "")
    assert sum(len(commands(text)) for language, text in blocks(PAGE) if language == "sh") > 20


def test_an_excerpt_that_is_not_printed_is_found():
    printed = ["one two", "three", "four"]
    assert misfit("one…\n…\nfour\n", printed) is None
    assert misfit("one…\nfour\n", printed) == "four"
    assert misfit("three\nfour\nfive\n", printed) == "five"
    assert misfit("three\n…\none two\n", printed) == "one two"
