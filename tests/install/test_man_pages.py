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
PAGES = sorted((SOURCE / "man").glob("*.[158]"))
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


def constant(file, pattern):
    """A number as the source has it."""
    [text] = re.findall(pattern, (SOURCE / "src/probe" / file).read_text())
    return int(text.replace("'", ""), 0)


def test_the_figures_are_those_of_the_program():
    text = rendered(PAGE)
    [period] = set(re.findall(r"every (\d+) ms", text))
    assert int(period) * 1000 == constant("collection.cpp", r"kPassPeriod = ([\d']+);")
    told = {
        "bufferSize": r"The buffer's size, (\d+) by default",
        "interestType": r"(0x\w+) debug ids from value 1 to value 2; the default",
        "interestValue1": r"Value 1, by default (\w+)\.",
        "interestValue2": r"Value 2, by default (\w+)\.",
    }
    for field, pattern in told.items():
        [figure] = re.findall(pattern, text)
        assert int(figure, 0) == constant("settings.h", rf"{field} = (\w+);"), field


@pytest.mark.parametrize("page, warnings", [
    (PAGE, [
        "They end -r in the same way, which removes a buffer too that an earlier -L left",
        "the drivers of the other run fall silent",
        "They end -D at once, as they end any program; a shell shows status 130 after Ctrl-C. "
        "What it has read is lost",
        "lost without a message and with status 0; ‘sonascope lines --plain’ prints the same lines",
        "cut short gets a hole of empty slots",
        "The file gets the mode that the umask leaves.",
        "(umask 077; sonaprobe -w/tmp/trace.raw)",
    ]),
    (SOURCE / "README.md", [
        "Every error, and Ctrl-C on `-r`, removes the buffer",
        "live run silences that run's drivers",
        "Ctrl-C on it loses what it has read",
        "Lines that a full disk does not take are lost without a message; `sonascope lines --plain`",
        "it holds kernel addresses, and `umask 077` beforehand keeps others from reading it",
    ]),
], ids=["manual", "README"])
def test_a_reader_is_warned(page, warnings):
    text = rendered(page) if page == PAGE else " ".join(page.read_text().split())
    assert [warning for warning in warnings if warning not in text] == []


def messages():
    """The fixed beginnings of the messages that the program writes about failures."""
    found = set()
    for path in sorted((SOURCE / "src").rglob("*.cpp")):
        elsewhere = "scope" in path.parts or path.name in ("usage.cpp", "audio_class_registry.cpp")
        if elsewhere or ("standin" in path.parts and path.name != "notice.cpp"):
            continue
        for call in re.findall(r"(?:fatalExit\(|Message\(stderr,|printf\((?:stderr|STDERR_FILENO),)"
                               r"(.*?)\);", path.read_text(), re.DOTALL):
            joined = re.sub(r'"\s*"', "", call)
            for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', joined):
                for line in literal.split("\\n"):
                    fixed = re.split(r"%\w", line)
                    found.add(max(fixed, key=len).strip("' "))
    return found - {"", ":"}


def test_every_failures_message_is_explained():
    text = rendered(PAGE)
    known = messages()
    assert {"must be run as root.", "Can't open file!", "Argument parsing error",
            "was cut short while in use; what it held is lost"} <= known
    assert [message for message in sorted(known) if message not in text] == []


def test_the_simulators_commands_and_options_are_explained():
    text = rendered(SOURCE / "man/sonaprobe-sim.8")
    shown = run_program("help", program="sonaprobe-sim").stdout
    words = re.findall(r"^  (\w+)", shown.partition("Scenarios:")[0], re.MULTILINE)
    words += re.findall(r"--\w+|KERN_\w+|debug\.Audio[.\w]*", shown)
    assert {"play", "--rate", "KERN_KDSETREG"} <= set(words)
    assert [word for word in words if word not in text] == []


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_a_page_refers_to_all_others(page):
    [see_also] = re.findall(r"^\.Sh SEE ALSO\n(.*?)(?=^\.Sh|\Z)", page.read_text(),
                            re.MULTILINE | re.DOTALL)
    referred = {".".join(found) for found in re.findall(r"^\.Xr (sona\S*) (\d)", see_also,
                                                        re.MULTILINE)}
    assert referred == {other.name for other in PAGES} - {page.name}


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_a_page_refers_to_no_page_that_is_missing(page):
    own = re.findall(r"^\.Xr (sona\S*) (\d)", page.read_text(), re.MULTILINE)
    assert {".".join(found) for found in own} <= {other.name for other in PAGES}
