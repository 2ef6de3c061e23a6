"""The pages hold together: links lead somewhere, and the raw file's page reads the sample."""

import os
import pathlib
import re
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"
PAGES = [*sorted(SOURCE.glob("*.md")), *sorted((SOURCE / "docs").glob("*.md"))]


def anchors(page):
    """The anchors of a page's headings, as its readers make them."""
    for heading in re.findall(r"^#+ (.*)$", page.read_text(), re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_each_link_leads_to_a_file_and_heading_that_is_there(page):
    for file, anchor in re.findall(r"\]\(([^)#\s]*)(?:#([^)\s]*))?\)", page.read_text()):
        target = page.parent / file if file else page
        assert target.exists(), file
        assert not anchor or anchor in anchors(target), anchor


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_each_file_that_a_page_names_is_there(page):
    named = re.findall(r"`((?:src|tests|tools|docs|script|man|cmake|completion)/[\w/.-]+)`",
                       page.read_text())
    assert [name for name in named if not (SOURCE / name).exists()] == []


# Offset and width of what a slot holds.
SLOT = [(0, 8), (8, 8), (16, 8), (24, 8), (32, 8), (40, 8), (48, 4), (52, 4), (56, 8)]


def test_the_raw_files_page_tells_the_layout_of_a_slot():
    rows = re.findall(r"^\| (\d+) \| (\d+) \| ([\w ]+?) \|",
                      (SOURCE / "docs/raw-file.md").read_text(), re.MULTILINE)
    assert [(int(offset), int(width)) for offset, width, _ in rows] == SLOT
    assert [field for _, _, field in rows] == [
        "time stamp", "arg1", "arg2", "arg3", "arg4", "arg5", "debug id", "processor", "reserved"]


def test_the_manual_tells_the_layout_of_a_slot():
    rows = re.findall(r"^\.It (\d+) Ta (\d+) Ta ", (SOURCE / "man/sonaprobe.8").read_text(),
                      re.MULTILINE)
    told = [(int(offset), int(width)) for offset, width in rows]
    assert told == [*SLOT[:2], (16, 24), *SLOT[5:]]  # arguments 2 to 4 in one row


def test_the_raw_files_page_has_a_reader_that_reads_the_sample():
    [reader] = re.findall(r"^```python\n(.*?)^```$", (SOURCE / "docs/raw-file.md").read_text(),
                          re.MULTILINE | re.DOTALL)
    lines = subprocess.run([sys.executable, "-c", reader, SAMPLE], check=True, text=True,
                           capture_output=True).stdout.splitlines()
    assert len(lines) == SAMPLE.stat().st_size // 64
    assert lines[0] == "24 0xfeedface 0x0 0x0 0x0 0x0"
