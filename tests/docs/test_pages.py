"""The pages hold together: links lead somewhere, and each page can be found."""

import os
import pathlib
import re

import pytest

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
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


def test_the_index_leads_to_every_page():
    index = (SOURCE / "docs/index.md").read_text()
    linked = set(re.findall(r"\]\(([\w.-]+\.md)\)", index))
    assert linked == {page.name for page in (SOURCE / "docs").glob("*.md")} - {"index.md"}
    manual = {f"{page.stem}({page.suffix[1:]})" for page in (SOURCE / "man").iterdir()}
    assert set(re.findall(r"^\| (sona[\w.-]+\(\d\))", index, re.MULTILINE)) == manual
