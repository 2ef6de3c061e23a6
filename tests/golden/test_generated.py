"""What is generated from the decoder tables is current, and the tables are complete."""

import collections
import os
import pathlib
import re

import pytest

from conftest import run_program
from fingerprints import fingerprints
from records import read_cases

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
ROWS = SOURCE / "tests/golden/rows"
RENEW = "run script/update-generated, read what changes, and accept it"

EVENTS_OF_CLASS = {
    "0": 5, "1": 1, "3": 8, "4": 7, "7": 1,
    "20": 34, "21": 30, "22": 18, "23": 3, "24": 3, "25": 2, "26": 1, "27": 7, "28": 12, "29": 5,
    "30": 3, "31": 1, "32": 54, "35": 15, "37": 15, "38": 42, "40": 5, "41": 17, "42": 5, "43": 29,
    "44": 72, "45": 44, "46": 28, "47": 29, "48": 31, "49": 26, "50": 27, "server": 5,
}
SILENT_CLASSES = ["2", "5", "6", "8", "9", "10", "11", "36", "39"]

# The events that have texts for --verbose alone, and those of them that have no others.
VERBOSE_EVENTS = """
    052410D8
    05245028 05245080 0524508C 05245094 05245120 05245128 05245254 05245278 052454D4
    0524643C 05246440 0524686C 05246C04 05246CA4
    05248C48 05248DE4 05249428 05249430 05249434
    05249834 0524984C 05249854 05249880 05249884 05249888 05249894 05249898 0524989C 052498A0
    052498A8 052498CC 052498D4 052498DC 0524990C 05249910 05249920 05249924 0524992C
    0524A044 0524A048 0524A408 0524A414 0524A418
""".split()
WHOLLY_VERBOSE_EVENTS = "052410D8 0524643C 05246440 0524686C 05246C04 05246CA4".split()


def events(what):
    return run_program(what, program="sonaprobe-events").stdout


@pytest.fixture(name="texts", scope="module")
def fixture_texts():
    """The rows of the reference's tables: code, qualifier, condition, name, text, arguments."""
    rows = re.findall(r"^\| `0x([0-9A-F]{8})` (\|.*)$", events("markdown"), re.MULTILINE)
    return [(code, *rest.split(" | ")) for code, rest in rows]


def test_events_md_is_current():
    assert (SOURCE / "docs/events.md").read_text() == events("markdown"), RENEW


def test_every_text_has_its_golden_line():
    records = {}
    for part in events("records").split("# ")[1:]:
        title, *lines = part.splitlines()
        number, group = title.split(" ", 1)
        records[f"{number.zfill(2)}-{group}.golden"] = [line for line in lines if line]
    golden = {path.name: [record for case in read_cases(path) for record in case.records]
              for path in ROWS.glob("*.golden")}
    assert golden == records, RENEW


def test_every_golden_line_was_accepted():
    goldens = [path.read_text() for path in ROWS.glob("*.golden")]
    assert (SOURCE / "tests/golden/accepted.txt").read_text() == fingerprints(goldens), RENEW


def test_classes_have_their_events():
    counts = dict(line.split() for line in events("counts").splitlines())
    expected = EVENTS_OF_CLASS | dict.fromkeys(SILENT_CLASSES, 0)
    assert {number: int(count) for number, count in counts.items()} == expected
    assert sum(expected.values()) == 585


def test_every_event_has_a_text(texts):
    assert len({code for code, *_ in texts}) == 585


def test_only_frequent_events_have_texts_for_verbose_alone(texts):
    gates = collections.defaultdict(set)
    for code, _, condition, *_ in texts:
        gates[code].add("*verbose*" in condition)
    assert sorted(code for code, gate in gates.items() if True in gate) == VERBOSE_EVENTS
    assert [code for code in WHOLLY_VERBOSE_EVENTS if gates[code] != {True}] == []
