"""timeline: a trace as one page, or no page at all. What the page reads is tried in node."""

import base64
import bisect
import hashlib
import json
import os
import re
import shlex
import signal
import struct
import subprocess
import zlib
from html.parser import HTMLParser

import pytest

from conftest import BUILD, run_program
from processes import started, wait_until
from records import DIVISOR_MARKER
from scope import (
    ENABLE, END, FORMAT, OVERLOAD, POINT, START, divisor, nested_calls, pack, record, scope)

CHUNK = re.compile(rb'<script type="application/octet-stream" id="(\w+)">([^<]*)</script>')


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace.raw"
    path.write_bytes(nested_calls())
    return path


@pytest.fixture
def page(tmp_path):
    (tmp_path / "new").mkdir()
    return tmp_path / "new/page.html"


def chunks(data):
    """The page's chunks by name, unpacked."""
    def unpack(text):
        data = bytearray()
        escaped = False
        for byte in text:
            if not escaped and byte == ord("="):
                escaped = True
                continue
            data.append((byte - 64) % 256 if escaped else byte)
            escaped = False
        return zlib.decompress(bytes(data))
    return {name.decode(): unpack(text) for name, text in CHUNK.findall(data)}


def head(data):
    return json.loads(chunks(data)["head"])


def test_the_page_has_all_records_and_its_path_is_printed(trace, page):
    result = scope("timeline", trace, "-o", page)
    assert (result.stdout, result.stderr, result.returncode) == (f"{page}\n", "", 0)
    told = head(page.read_bytes())
    assert (told["title"], told["records"], told["begin"], told["end"]) == (
        "trace.raw", 5, 0, 1_500_000)
    assert [lane["name"] for lane in told["lanes"]] == ["thread 0xa5", "thread 0xb6"]
    assert [event["method"] for event in told["events"]] == ["enable", "setPathFormat"]
    assert sorted(chunks(page.read_bytes())) == ["block0", "cycles", "head", "level0", "long"]


def test_the_same_trace_gives_the_same_page(tmp_path, page):
    trace = tmp_path / "trace.raw"
    run_program("write", "all", trace, "--records", 150000, program="sonaprobe-sim")
    scope("timeline", trace, "-o", page)
    for processors in (os.sched_getaffinity(0), {min(os.sched_getaffinity(0))}):
        again = subprocess.run(
            [BUILD / "sonascope", "timeline", trace, "-o", "-"], capture_output=True, check=True,
            preexec_fn=lambda allowed=processors: os.sched_setaffinity(0, allowed))
        assert again.stdout == page.read_bytes()


def test_a_dropout_has_its_cause_and_its_evidence(tmp_path, page):
    path = tmp_path / "dropouts.raw"
    run_program("write", "playback", path, "--seed", "3", "--records", "20000",
                program="sonaprobe-sim")
    scope("timeline", path, "-o", page)
    told = head(page.read_bytes())
    why = json.loads(scope("why", path, "--json").stdout)
    divisors = [slot for slot, (debugid,) in enumerate(
        struct.iter_unpack("<48xI12x", path.read_bytes())) if debugid == DIVISOR_MARKER]

    def record_of(slot):
        return slot - bisect.bisect(divisors, slot)

    assert [(dropout["cause"], dropout["certainty"], dropout["time"], dropout["record"],
             dropout["evidence"]) for dropout in told["dropouts"]] == [
        (dropout["cause"], dropout["certainty"], dropout["time_ns"], record_of(dropout["slot"]),
         [record_of(slot) for slot in dropout["evidence"]])
        for dropout in why["dropouts"]]
    assert any(len(dropout["evidence"]) > 1 for dropout in told["dropouts"])
    assert told["lanes"][0]["kind"] == "io"


@pytest.mark.parametrize("options, records", [
    (["--to", "400us"], 4),              # each start with its end
    (["--from", "1500us"], 1),
    (["--method", "setPathFormat"], 2),
    (["--failed"], 2),                   # the end tells of it
    (["--thread", "0xb6"], 1),
    (["--longer", "1ms"], 2),
])
def test_the_page_has_what_is_selected(trace, page, options, records):
    result = scope("timeline", trace, *options, "-o", page)
    assert result.stderr == ""
    told = head(page.read_bytes())
    assert told["records"] == records
    assert told["notes"][0] == f"A part of the trace: {records} of its 5 records."


def short_calls():
    """A thousand calls of 10 µs, one in 20 µs; one of 15 µs, one that fails, one around a point of
    its own."""
    slots = [divisor()]
    for i in range(1000):
        slots.append(record(ENABLE, START, 20 * i))
        if i == 500:
            slots.append(record(FORMAT, POINT, 20 * i + 1))
        slots.append(record(ENABLE, END, 20 * i + (15 if i == 300 else 10),
                            a4=0xE00002BC if i == 701 else 0))
    return b"".join(slots)


def test_a_long_trace_is_thinned_and_says_so(trace, page):
    trace.write_bytes(short_calls())
    scope("timeline", trace, "-o", page, "--most", "2001")
    whole = head(page.read_bytes())
    assert whole["records"] == 2001
    scope("timeline", trace, "-o", page, "--most", "2000", "--force")
    told = head(page.read_bytes())
    assert 300 < told["records"] <= 2000
    scope("timeline", trace, "-o", page, "--most", "100", "--force")
    told = head(page.read_bytes())
    assert told["records"] < 1000
    assert sum(told["overview"]["records"]) == 2001
    assert sum(told["overview"]["failures"]) == 1
    thinned, cut, *others = told["notes"]
    assert others == whole["notes"]
    assert thinned.startswith(f"Thinned: {2001 - told['records']:,} of 2,001 records are merged, "
                              "of calls shorter than 65.5 µs")
    command = re.search(r"sonascope (timeline .*) -o part.html$", cut).group(1)
    options = shlex.split(command)[2:]
    scope("timeline", trace, *options, "-o", page, "--force")
    part = head(page.read_bytes())
    assert part["records"] > 0
    assert part["notes"][0] == f"A part of the trace: {part['records']} of its 2,001 records."
    assert part["notes"][1:] == others


def test_time_is_counted_from_the_first_record(trace, page):
    result = scope("timeline", trace, "-o", page, "--kernel-time")
    assert result.returncode == 2
    assert "leave out --kernel-time" in result.stderr
    assert list(page.parent.iterdir()) == []


def test_code_names_are_those_of_the_file(trace, page, tmp_path):
    trace.write_bytes(divisor() + record(0x01400004, POINT, 0))
    names = tmp_path / "names"
    names.write_text("0x01400004 </script><b>\x1b[31m\n")
    scope("timeline", trace, "-o", page)
    assert head(page.read_bytes())["events"][0]["method"] == "code 0x01400004"
    scope("timeline", trace, "-o", page, "--force", "--names", names)
    assert head(page.read_bytes())["events"][0]["method"] == r"</script><b>\x1b[31m"


class Tags(HTMLParser):
    def __init__(self):
        super().__init__()
        self.tags = []
        self.title = ""

    def handle_starttag(self, tag, attrs):
        self.tags.append((tag, dict(attrs)))

    def handle_data(self, data):
        if self.tags and self.tags[-1][0] == "title":
            self.title += data


def tags_of(page):
    tags = Tags()
    tags.feed(page.read_bytes().decode("iso-8859-15"))
    return tags


def test_no_name_becomes_markup(tmp_path, trace, page):
    scope("timeline", trace, "-o", page)
    plain = [tag for tag, _ in tags_of(page).tags]
    hostile = tmp_path / "<script>alert(1)<&'\">\u202e.raw"
    hostile.write_bytes(nested_calls())
    scope("timeline", hostile, "-o", page, "--force")
    told = tags_of(page)
    assert [tag for tag, _ in told.tags] == plain
    assert told.title.startswith("<script>alert(1)<&'\">\\xe2")


def test_the_page_may_run_its_own_script_and_nothing_else(trace, page):
    scope("timeline", trace, "-o", page)
    policies = [attributes["content"] for tag, attributes in tags_of(page).tags
                if attributes.get("http-equiv") == "Content-Security-Policy"]
    assert len(policies) == 1
    rules = dict(rule.split(" ", 1) for rule in policies[0].split("; "))
    assert rules["default-src"] == "'none'"
    assert rules["worker-src"] == "blob:"
    data = page.read_bytes()
    for kind, tag in [("script", rb"<script>(.*?)</script>"), ("style", rb"<style>(.*?)</style>")]:
        content, = re.findall(tag, data, re.DOTALL)
        digest = base64.b64encode(hashlib.sha256(content).digest()).decode()
        assert rules[f"{kind}-src"] == f"'sha256-{digest}'"


def test_nothing_in_the_page_has_an_address(trace, page):
    scope("timeline", trace, "-o", page)
    for tag, attributes in tags_of(page).tags:
        assert not {"src", "href", "action", "data"} & set(attributes), (tag, attributes)


def test_a_file_that_exists_is_kept_unless_forced(trace, page):
    page.write_text("mine")
    result = scope("timeline", trace, "-o", page)
    assert result.returncode == 2
    assert "exists; give --force" in result.stderr
    assert page.read_text() == "mine"
    assert scope("timeline", trace, "-o", page, "--force").returncode == 0


@pytest.mark.parametrize("content, options, message", [
    (b"", [], "no trace"),
    (divisor(), [], "no record in it"),
    (nested_calls(), ["--from", "1h"], "no record is selected"),
    (nested_calls(), ["--driver", "OrvelHDAPat"], "OrvelHDAPath"),
])
def test_bad_input_leaves_no_page(trace, page, content, options, message):
    trace.write_bytes(content)
    result = scope("timeline", trace, "-o", page, *options)
    assert result.returncode == 2
    assert message in result.stderr
    assert list(page.parent.iterdir()) == []


def test_somewhere_to_put_the_page_is_asked_for(trace):
    result = scope("timeline", trace)
    assert result.returncode == 2
    assert "-o PAGE.html" in result.stderr


def test_a_full_disk_leaves_no_page(trace):
    result = subprocess.run([BUILD / "sonascope", "timeline", trace, "-o", "-"],
                            stdout=open("/dev/full", "wb"), stderr=subprocess.PIPE, check=False)
    assert result.returncode == 2
    assert b"could not write" in result.stderr


def test_a_signal_leaves_nothing(tmp_path, page):
    trace = tmp_path / "long.raw"
    run_program("write", "all", trace, "--records", "400000", program="sonaprobe-sim")
    with started(BUILD / "sonascope", "timeline", trace, "-o", page) as process:
        wait_until(lambda: list(page.parent.iterdir()))
        process.send_signal(signal.SIGINT)
        assert process.wait(30) == -signal.SIGINT
    assert list(page.parent.iterdir()) == []


def test_a_pipe_is_read_like_a_file(trace, page):
    with trace.open("rb") as standard_input:
        result = subprocess.run([BUILD / "sonascope", "timeline", "-", "-o", page],
                                stdin=standard_input, capture_output=True, check=True)
    assert result.stderr == b""
    told = head(page.read_bytes())
    assert (told["title"], told["records"]) == ("standard input", 5)


def test_open_shows_a_page_that_lasts(trace, tmp_path):
    seen = tmp_path / "seen"
    browser = tmp_path / "browser"
    browser.write_text(f"#!/bin/sh\necho \"$1\" > {seen}.part && mv {seen}.part {seen}\n")
    browser.chmod(0o755)
    environment = {**os.environ, "BROWSER": str(browser), "TMPDIR": str(tmp_path)}
    result = subprocess.run([BUILD / "sonascope", "timeline", trace, "--open"], env=environment,
                            capture_output=True, text=True, check=True)
    wait_until(seen.exists)
    shown = seen.read_text().strip()
    assert result.stdout == f"{shown}\n"
    assert shown.endswith(".html")
    assert head(open(shown, "rb").read())["records"] == 5


def test_hostile_slots_make_a_page(tmp_path, page):
    """Clocks that jump, threads without end, calls without ends, codes of all kinds."""
    slots = [divisor()]
    for i in range(3000):
        code = (ENABLE, OVERLOAD, 0x2104_0008, i * 0x0100_4004 & 0xFFFF_FFFC)[i % 4]
        time = (i, 2**63 - 1, 0, 2**64 - 1 - i)[i % 4 if i % 16 < 4 else 0]
        slots.append(pack(code | (START if i % 3 else 3), t=time, a5=i * 2**40 + i % 7))
        if i % 500 == 0:
            slots += [divisor(2**64 - 1), divisor(0), divisor(1)]
    path = tmp_path / "hostile.raw"
    path.write_bytes(b"".join(slots))
    result = scope("timeline", path, "-o", page)
    assert result.returncode == 0, result.stderr
    assert head(page.read_bytes())["records"] == 3000
