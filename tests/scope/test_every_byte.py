"""Every byte that a name or a text may have, through every output: none reaches a terminal, a query
or a page as anything but its characters."""

import html
import json
import os
import pathlib
import re
import sqlite3

import pytest

from scope import START, END, POINT, at_terminal, divisor, record, scope
from test_export import csv_rows
from test_timeline import head

FIRST = 0x01400004
# A NUL ends a name, a line feed its line, and blanks and tabs cost its first characters.
BYTES = [byte for byte in range(1, 256) if byte not in b"\n\t "]
FOUR_CHARACTERS = 0x0524C82C  # four characters of its start's text are whatever arg3 says
STYLE = re.compile(r"\x1b\[[0-9;]*m")


def shown(byte):
    plain = " " <= chr(byte) <= "~"
    return chr(byte) if plain else {9: "\\t", 10: "\\n", 13: "\\r"}.get(byte, f"\\x{byte:02x}")


NAMES = {f"a{shown(byte)}{byte}" for byte in BYTES}
WORDS = {"".join(map(shown, range(first, first + 4))) for first in range(4, 256, 4)}


@pytest.fixture(scope="module")
def hostile(tmp_path_factory):
    """A trace with a code for each byte, named by it, and a text for each four of them."""
    folder = tmp_path_factory.mktemp("bytes")
    names, slots = [], [divisor()]
    for byte in BYTES:
        code = FIRST + 4 * byte
        names.append(b"%#x a%c%d\n" % (code, byte, byte))
        slots += [record(code, START, 100 * byte), record(code, END, 100 * byte + 50)]
    for first in range(0, 256, 4):
        word = int.from_bytes(bytes(range(first, first + 4)), "big")
        slots += [record(FOUR_CHARACTERS, START, 10**6 + first, a3=word),
                  record(FOUR_CHARACTERS, END, 10**6 + first + 1),
                  record(FIRST, POINT, 10**6 + first + 2)]
    (folder / "trace").write_bytes(b"".join(slots))
    (folder / "names").write_bytes(b"".join(names))
    return folder / "trace", "--names", folder / "names"


def export(hostile, name, *arguments):
    result = scope("export", *hostile, "--to", name, *arguments, text=False, errors=None)
    assert (result.stderr, result.returncode) == (b"", 0)
    return result.stdout


@pytest.mark.parametrize("command", [["lines"], ["stats", "--top", "0"], ["stats", "--longest", "300"],
                                     ["tree", "--depth", "9"], ["why"], ["diff"]])
def test_a_terminal_gets_characters_alone(command, hostile):
    text, _ = at_terminal(command[0], *hostile, *command[1:], "--color", "always", columns=400)
    assert re.fullmatch(r"[ -~\n\u2500-\u25ff\u2026\u00b5]*", STYLE.sub("", text).replace("\r", ""))


def test_lines_and_statistics_have_every_name_whole(hostile):
    lines = scope("lines", *hostile).stdout
    assert all(f" {name} " in lines or f"{name}\n" in lines for name in NAMES)
    assert all(f"'{word}'" in lines or word in lines for word in WORDS)
    rows = json.loads(scope("stats", *hostile, "--json").stdout)["rows"]
    assert NAMES <= {row["name"] for row in rows if "name" in row}


def test_exports_have_every_name_whole(hostile, tmp_path):
    rows = [json.loads(line) for line in export(hostile, "json").decode("ascii").splitlines()]
    assert NAMES <= {row["method"] for row in rows}
    assert WORDS <= {word for row in rows for word in row["values"].values()}
    assert NAMES <= {row["method"] for row in csv_rows(export(hostile, "csv").decode("ascii"))}
    events = json.loads(export(hostile, "chrome"))["traceEvents"]
    assert NAMES <= {event["name"] for event in events}
    frames = json.loads(export(hostile, "speedscope"))["shared"]["frames"]
    assert NAMES <= {frame["name"] for frame in frames}
    paths = export(hostile, "folded").decode("ascii").splitlines()
    assert {name.replace(";", "\\x3b") for name in NAMES} <= {
        re.fullmatch(r"[^;]+;([^;]+) \d+", path)[1] for path in paths}
    assert NAMES <= set(re.findall(r"^fn=(.*)$", export(hostile, "callgrind").decode("ascii"), re.M))
    export(hostile, "sqlite", "-o", tmp_path / "trace.db")
    with sqlite3.connect(tmp_path / "trace.db") as database:
        assert NAMES <= {method for (method,) in database.execute("SELECT method FROM events")}


def test_a_page_has_every_name_whole(hostile, tmp_path):
    page = tmp_path / "page.html"
    assert scope("timeline", *hostile, "-o", page).returncode == 0
    assert NAMES <= {event["method"] for event in head(page.read_bytes())["events"]}


@pytest.mark.parametrize("first, end", [(1, ord("/")), (ord("/") + 1, 160), (160, 256)])
def test_a_path_is_characters_alone(first, end, hostile, tmp_path):
    path = tmp_path / os.fsdecode(bytes(range(first, end)))
    path.hardlink_to(hostile[0])
    page = f"{path}.html"
    for command, *options in (["info"], ["lines"], ["stats"], ["tree"], ["why"], ["diff", path],
                              ["cut", "-o", f"{path}.cut"], ["repair", "-o", f"{path}.repaired"],
                              ["timeline", "-o", page], ["export", "--to", "chrome"],
                              ["export", "--to", "speedscope"], ["export", "--to", "callgrind"],
                              ["export", "--to", "sqlite", "-o", f"{path}.db"]):
        for file, statuses in ((path, (0, 1)), (f"{path}.gone", (2,))):
            result = scope(command, file, *options, text=False, errors=None)
            assert result.returncode in statuses
            assert re.fullmatch(r"[ -~\n\u00b5]*", (result.stdout + result.stderr).decode())
    title = re.search(rb"<title>([^<]*)</title>", pathlib.Path(page).read_bytes())[1]
    assert html.unescape(title.decode("ascii")).startswith("".join(map(shown, range(first, end))))
