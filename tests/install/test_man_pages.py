"""The manual pages: clean, and in step with the programs."""

import html
import os
import pathlib
import re
import subprocess

import pytest

from conftest import run_program
from option_table import options

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
PAGES = sorted((SOURCE / "man").glob("*.[18]"))
PAGE = SOURCE / "man/sonaprobe.8"


def rendered(page):
    """The text of a page in one line."""
    text = subprocess.run(["mandoc", "-T", "html", "-O", "fragment", page], check=True, text=True,
                          capture_output=True).stdout
    return " ".join(html.unescape(re.sub("<[^>]*>", "", text)).split())


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_the_page_is_clean(page):
    lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], check=False, text=True,
                          capture_output=True)
    assert (lint.stdout, lint.stderr, lint.returncode) == ("", "", 0)


def described():
    """Letter to (argument, long names) of the page's option entries."""
    entries = {}
    for item in re.findall(r"^\.It (Fl .*)", PAGE.read_text(), re.MULTILINE):
        [letter] = re.findall(r"Fl (\w)\b", item)
        names = re.findall(r"Fl -([\w-]+)", item)
        argument = "optional" if "Oo" in item else "required" if "Ar" in item else "none"
        assert item.count("Ar") == (0 if argument == "none" else 1 + len(names)), item
        entries[letter] = argument, names
    return entries


def test_the_options_are_those_of_the_option_table():
    assert described() == {option.letter: (option.argument, option.names) for option in options()}


def messages():
    """The fixed beginnings of the messages that the program writes about failures."""
    found = set()
    for path in sorted((SOURCE / "src").rglob("*.cpp")):
        if {"standin", "scope"} & set(path.parts) or path.name in ("usage.cpp", "audio_class_registry.cpp"):
            continue
        for call in re.findall(r"(?:fatalExit\(|printMessage\(stderr,|fprintf\(stderr,)(.*?)\);",
                               path.read_text(), re.DOTALL):
            joined = re.sub(r'"\s*"', "", call)
            for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', joined):
                for line in literal.split("\\n"):
                    fixed = re.split(r"%\w", line)
                    found.add(max(fixed, key=len).strip("' "))
    return found - {"", ":"}


def test_every_failures_message_is_explained():
    text = rendered(PAGE)
    known = messages()
    assert {"must be run as root.", "Can't open file!", "Argument parsing error"} <= known
    assert [message for message in sorted(known) if message not in text] == []


def test_the_simulators_commands_and_options_are_explained():
    text = rendered(SOURCE / "man/sonaprobe-sim.8")
    shown = run_program("help", program="sonaprobe-sim").stdout
    words = re.findall(r"^  (\w+)", shown.partition("Scenarios:")[0], re.MULTILINE)
    words += re.findall(r"--\w+|KERN_\w+|debug\.Audio[.\w]*", shown)
    assert {"play", "--rate", "KERN_KDSETREG"} <= set(words)
    assert [word for word in words if word not in text] == []


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_a_page_refers_to_no_page_that_is_missing(page):
    own = set(re.findall(r"^\.Xr (sona\S*) [18]", page.read_text(), re.MULTILINE))
    assert own and own <= {p.stem for p in PAGES}
