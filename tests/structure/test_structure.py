"""Arrows between the rooms of src/ point down, and the library keeps quiet; see rooms.py."""

import os
import pathlib

import pytest
import rooms
from conftest import BUILD

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])


def test_each_source_includes_and_names_what_its_room_may():
    faults = []
    for path in rooms.sources_below(SOURCE / "src"):
        source = path.relative_to(SOURCE / "src").as_posix()
        faults += rooms.faults_of_source(source, path.read_text())
    assert "\n".join(faults) == ""


def test_each_library_links_what_its_room_may():
    links = (BUILD / "tests/structure/links.txt").read_text()
    assert "lines sonaprobe_options sonaprobe_events" in links
    assert "\n".join(rooms.faults_of_links(links)) == ""


@pytest.mark.parametrize("folder", ["tools", "tests", "fuzz", "bench", "examples"])
def test_no_source_is_included(folder):
    including = [path for path in rooms.sources_below(SOURCE / folder)
                 if any("includes a source" in fault
                        for fault in rooms.faults_of_source("probe/x.cpp", path.read_text()))]
    assert including == []


PLANTED = {
    "an arrow up": ("record/x.h", '#include "events/event.h"',
                    "may not include events/event.h"),
    "an arrow up to a program": ("rawfile/x.cpp", '#include "probe/settings.h"',
                                 "may not include probe/settings.h"),
    "an arrow sideways": ("events/x.h", '#  include "rawfile/slot_reader.h"',
                          "may not include rawfile/slot_reader.h"),
    "an arrow between programs": ("scope/x.cpp", '#include "probe/settings.h"',
                                  "may not include probe/settings.h"),
    "a facility in another command than catch": ("scope/lines.cpp",
                                                 '#include "trace/trace_facility.h"',
                                                 "may not include trace/trace_facility.h"),
    "a header without a room": ("lines/x.cpp", '#include "calls.h"', "may not include calls.h"),
    "a source": ("lines/x.cpp", '#include "lines/prefix.cpp"',
                 "includes a source, lines/prefix.cpp"),
    "standard output": ("lines/x.cpp", "std::fputs(text, stdout);", "may not name fputs"),
    "an end": ("rawfile/x.cpp", "if (bad) ::exit(1);", "may not name exit"),
    "a signal": ("capi/x.cpp", "std::signal(SIGPIPE, SIG_IGN);", "may not name signal"),
    "the environment": ("events/x.cpp", 'return getenv("TZ");', "may not name getenv"),
    "an unknown room": ("cellar/x.cpp", "", "no room of this name"),
}


@pytest.mark.parametrize("source, text, fault", PLANTED.values(), ids=PLANTED)
def test_a_planted_fault_is_found(source, text, fault):
    assert f"{source}: {fault}" in rooms.faults_of_source(source, text)


@pytest.mark.parametrize("links, fault", [
    ("events sonaprobe_options sonaprobe_lines", "events: may not link sonaprobe_lines"),
    ("trace sonaprobe_platform sonaprobe_probe", "trace: may not link sonaprobe_probe"),
    ("lines sonaprobe_events Threads::Threads", "lines: may not link Threads::Threads"),
])
def test_a_planted_link_is_found(links, fault):
    assert rooms.faults_of_links(links) == [fault]


@pytest.mark.parametrize("source, text", [
    ("events/x.cpp", '#include "record/trace_record.h"'),
    ("scope/catch.cpp", '#include "trace/trace_facility.h"'),
    ("probe/x.cpp", "std::exit(1);"),
    ("lines/x.cpp", '// exit, stdout\nchar text[] = "exit";\nline.exit(); decoders::signal::x();'),
])
def test_what_is_allowed_is_no_fault(source, text):
    assert rooms.faults_of_source(source, text) == []
