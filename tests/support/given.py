"""Settled texts, written down a second time by hand, and a plain renderer of them.

The decoder tables of the program and tests/given/*.given must agree on the events' names and on the
texts that may not change. A file has a stanza for each class:

    == class 23: nothing else

    05245C0C OrvelHDAPath::enable
      1                    | Start - stream: %p channelID: %d channelConfig: %d
                           = arg2, arg3 low, arg4 low
      0 3, byte 0          | sampleRate: %d bitsPerSample: %d
                           = arg2 high, arg2 low

Below a code and the name that its lines bear stand texts, each with the qualifiers that it answers
and its conditions ("byte 0": the low byte of arg4 is 0; "arg2 5"; "verbose"), and what fills its
conversions. The first text that fits a record is printed, "(nothing)" is silence, "..." is any
text. A code with two names stands there twice, and names that have no text are all that is settled
of an event. Words of the heading:

    nothing else    records that no text fits print nothing, where it is open otherwise
    historic        printed by sonaprobe-historic alone
    no object       arg1 is a value like the others
"""

import pathlib
import re
from dataclasses import dataclass, field

FILES = sorted(pathlib.Path(__file__).parent.parent.glob("given/*.given"))
OPEN = "..."
NOTHING = "(nothing)"
MARKS = {0: "  ", 1: "->", 2: "<-", 3: "  "}

CONVERSION = re.compile(r"%([#\d]*)(ll)?([duxpcsf])")
VALUE = re.compile(r"(?:(\w+)/(\w+) |(time|letters) )?"
                   r"arg(\d)(?: (low|high)| byte (\d))?( / 24\.0)?$")


@dataclass
class Text:
    """One text: when it answers, what it says and with which values."""

    name: str
    qualifiers: set
    conditions: dict
    verbose: bool
    text: str
    values: list = field(default_factory=list)

    def fits(self, qualifier, words):
        return qualifier in self.qualifiers and all(
            (words[4] & 0xFF if what == "byte" else words[int(what[3])]) == number
            for what, number in self.conditions.items())

    def render(self, words):
        if self.text == NOTHING:
            return None
        values = iter([part for value in self.values for part in parts_of(value, words)])
        line = CONVERSION.sub(lambda found: convert(*found.groups(), next(values)), self.text)
        assert next(values, None) is None, f"more values than conversions in: {self.text}"
        return line


@dataclass
class Stanza:
    """The events of a class: the names of each code, and its texts."""

    title: str
    marks: list
    names: dict = field(default_factory=dict)
    texts: dict = field(default_factory=dict)

    def prefix(self, name, qualifier, words):
        """What stands before a text under -s -H -i."""
        with_object = words[1] != 0 and "no object" not in self.marks
        return f"{MARKS[qualifier]} {name:<30} " + (f"(0x{words[1]:016x}) " if with_object else "")

    def line(self, code, qualifier, words, verbose):
        """The line of a record, None for silence, OPEN where it is not settled."""
        for text in self.texts.get(code, ()):
            if text.text == OPEN or not text.fits(qualifier, words):
                continue
            rendered = text.render(words)
            if rendered is None or text.verbose and not verbose:
                return None
            return self.prefix(text.name, qualifier, words) + rendered
        return None if "nothing else" in self.marks else OPEN

    def names_of(self, code, qualifier):
        """The names that a record may bear."""
        bound = {text.name for text in self.texts.get(code, ()) if qualifier in text.qualifiers}
        return bound or set(self.names.get(code, ()))


def parts_of(value, words):
    """The numbers and words that a value fills conversions with."""
    truth, untruth, reading, number, half, byte, ticks = VALUE.match(value).groups()
    word = words[int(number)]
    if half:
        word = word >> 32 if half == "high" else word & 0xFFFFFFFF
    if byte:
        word = word >> 8 * int(byte) & 0xFF
    if truth:
        return [truth if word else untruth]
    if reading == "time":
        return [word // 10**9, word // 10**6 % 1000, word // 1000 % 1000, word % 1000]
    if reading == "letters":
        return [word >> shift & 0xFF for shift in (24, 16, 8, 0)]
    return [word / 24.0] if ticks else [word]


def convert(flags, long, letter, value):
    """The text of one conversion of printf."""
    bits = 64 if long else 32
    if letter == "p":
        return f"0x{value:x}"
    if letter in "dux":
        value %= 1 << bits
        if letter == "d" and value >> bits - 1:
            value -= 1 << bits
        if value == 0:
            flags = flags.replace("#", "")
    return f"%{flags}{letter}" % value


def read(path):
    """The stanzas of a file."""
    stanzas = []
    for number, line in enumerate(path.read_text(encoding="ascii").splitlines(), 1):
        if line.startswith("== "):
            title, _, marks = line[3:].partition(": ")
            stanzas.append(Stanza(title, marks.split(", ")))
        elif re.match(r"[0-9A-F]{8} ", line):
            code, name = int(line[:8], 16), line[9:]
            stanzas[-1].names.setdefault(code, []).append(name)
            texts = stanzas[-1].texts.setdefault(code, [])
        elif line.startswith("  ") and "| " in line:
            texts.append(read_text(name, *line.split("| ", 1)))
        elif line.startswith("  ") and line.lstrip().startswith("= "):
            texts[-1].values = line.lstrip()[2:].split(", ")
        elif line and not line.startswith("#"):
            raise ValueError(f"{path}:{number}: {line}")
    return stanzas


def read_text(name, when, text):
    qualifiers, *conditions = when.strip().split(", ")
    verbose = "verbose" in conditions
    pairs = [condition.split() for condition in conditions if condition != "verbose"]
    return Text(name, set(range(4)) if qualifiers == "any" else set(map(int, qualifiers.split())),
                {what: int(number) for what, number in pairs}, verbose, text.replace(r"\t", "\t"))


STANZAS = [stanza for path in FILES for stanza in read(path)]


def settled_texts():
    """Each class, as docs/events.md numbers it, with each text that it has."""
    return {(stanza.title.removeprefix("class ").removeprefix("audio "), text.text)
            for stanza in STANZAS for texts in stanza.texts.values() for text in texts
            if text.text not in (OPEN, NOTHING)}
