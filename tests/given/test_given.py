"""The program prints the settled names and texts, each value in its place."""

import itertools
import re

import pytest

from conftest import run_program
from given import OPEN, STANZAS
from records import pack, pack_line

OPTIONS = ["-s", "-H", "-i", "-A"]

# arg1 to arg4. No two bytes of the first two are the same, so a word, a half or a byte in another's
# place shows; the others have words and halves that are 0.
WORDS = [
    (0x1112131415161718, 0x2122232425262728, 0x3132333435363738, 0x4142434445464748),
    (0xF1E1D1C1B1A19181, 0xF2E2D2C2B2A29282, 0xF3E3D3C3B3A39383, 0xF4E4D4C4B4A49484),
    (0x0000000000000001, 0x0000000200000000, 0x0000000000000003, 0x0000000400000000),
    (0x0000000100000000, 0x0000000000000002, 0x0000000300000000, 0x0000000000000400),
    (0x0000000000000000, 0x0000000000000000, 0x0000000000000003, 0x0000000000000000),
    (0x0000000000000001, 0x0000000000000002, 0x0000000000000000, 0x0000000000000004),
]
SELECTORS = (*range(17), 0xFE, 0xFF)


@pytest.fixture(name="print_records")
def fixture_print_records(tmp_path):
    """Prints packed records as a stanza asks for; the lines, without their indentation."""

    def print_records(stanza, records, *options):
        (tmp_path / "trace.raw").write_bytes(b"".join(records))
        program, before = (("sonaprobe-historic", ()) if "historic" in stanza.marks
                           else ("sonaprobe", OPTIONS))
        result = run_program(*before, "-r", "trace.raw", *options, program=program, cwd=tmp_path,
                             text=False, errors=None)
        lines = result.stdout.decode("latin-1").split("\n")[:-1]
        return [re.sub("^(..) +", r"\1 ", line) for line in lines]

    return print_records


def variants(texts):
    """Words under which each of an event's texts can be asked, and those that none answers."""
    asked = {what for text in texts for what in text.conditions}
    for words in WORDS:
        yield words
        for number in SELECTORS:
            if "byte" in asked:
                yield (*words[:3], words[3] & ~0xFF | number)
            if "arg2" in asked:
                yield (words[0], number, *words[2:])


EVENTS = [(stanza, code) for stanza in STANZAS for code, texts in stanza.texts.items()
          if any(text.text != OPEN for text in texts)]


@pytest.mark.parametrize("stanza, code", EVENTS,
                         ids=[f"{code:08X} {stanza.names[code][0]}" for stanza, code in EVENTS])
def test_texts(stanza, code, print_records):
    for options in [[]] if "historic" in stanza.marks else [[], ["-v"]]:
        records, expected = [], ["Verbose mode ON"] * len(options)
        for qualifier, words in itertools.product(range(4), variants(stanza.texts[code])):
            line = stanza.line(code, qualifier, (None, *words), verbose=bool(options))
            if line == OPEN:
                continue
            records.append(pack(code | qualifier, **dict(zip(("a1", "a2", "a3", "a4"), words))))
            expected += [] if line is None else [line]
        assert print_records(stanza, records, *options) == expected


@pytest.fixture(name="samples", scope="module")
def fixture_samples():
    """Records that make the program print each of its texts, by class."""
    samples = {}
    for part in run_program("records", program="sonaprobe-events").stdout.split("# ")[1:]:
        title, *lines = part.splitlines()
        number = title.split(" ")[0]
        name = "audio server" if number == "server" else f"class {number}"
        samples[name] = [line for line in lines if line]
    return samples


def test_every_class_with_texts_is_there(samples):
    assert sorted(stanza.title for stanza in STANZAS) == sorted(samples)


@pytest.mark.parametrize("stanza", STANZAS, ids=lambda stanza: stanza.title)
def test_names(stanza, samples, print_records):
    records = samples[stanza.title]
    options = [] if "historic" in stanza.marks else ["-v"]
    lines = print_records(stanza, map(pack_line, records), *options)[len(options):]
    assert len(lines) == len(records)
    wrong, seen = [], {code: set() for code in stanza.names}
    for record, line in zip(records, lines):
        debugid = int(record.split()[0], 16)
        object_word = int(dict(pair.split("=") for pair in record.split()[1:]).get("a1", "0"), 0)
        code, qualifier = debugid & ~3, debugid & 3
        for name in stanza.names_of(code, qualifier):
            if line.startswith(stanza.prefix(name, qualifier, (None, object_word))):
                seen[code].add(name)
                break
        else:
            wrong.append(line)
    assert wrong == []
    assert seen == {code: set(names) for code, names in stanza.names.items()}
