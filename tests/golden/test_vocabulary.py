"""The texts of the decoder tables speak one language: one shape, one word and one form per thing.

A text is `[Start - |End - |ERROR: ][phrase - ]name: value name: value`, and RULES says the rest.
The texts in given_texts.txt are the drivers' own and exempt, but for the order of their arguments.
"""

import collections
import os
import pathlib
import re
import typing

import pytest

from conftest import run_program

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])

RULES = {
    "shape": "a text is an optional beginning, phrases and `name: value` pairs; names have one or "
             "two words; starts begin with Start, ends with End",
    "names": "the names of a text's values differ",
    "phrase": "a phrase has at most six words, none of which speaks of people or guesses",
    "error": "what fails begins with ERROR, and only there is something `returned`",
    "form": "a field that FORMS knows has the form that stands there",
    "one form": "a field has one form and one unit in all texts of a driver family",
    "duration": "a duration is elapsed, waited or a timeout, or a field of the driver",
    "change": "a change is written with the family's arrow",
    "unit": "a quantity has its unit in its name: `boost(mV): %d`",
    "synonym": "a thing has one word",
    "span": "start and end differ, and only a point answers every qualifier",
    "order": "values fill whole words from arg2 onward, in order, and pairs of halves only where "
             "there are more values than words; what departs has a comment",
}

# What a field looks like, by the last word of its name. `d` prints any decimal, `x` hexadecimal
# digits without leading zeros, `08x` eight of them.
FORMS = {
    r"result|returned": "0x08x", r"returning": "s", r"returnCode": "d",
    r"\w*[nN]odeID|\w*[cC]ount(?<!incrementLoopCount)|attempts?|index|channel|bus": "d",
    r"sampleRate|bitsPerSample|channelCount|slotCount|bitsPerSlot": "d",
    r"enable|\w+Enabled(?<!xspEnabled)|is[A-Z]\w+|\w+(Running|Locked)": "s",
    r"flags|_\w+Flags|options|capabilities": "0xx",
}
FORMS_OF_FAMILY = {
    "HDA": {r"\w+(Status|Control|Register)(?<!pimletRegister)(?<!startRegister)": "0x08x",
            r"SD(STS)": "0x02x", r"SDCTL": "0x06x", r"GCTL|INT(CTL|STS)": "0x08x"},
    "USB": {r"status|type": "0x08x", r"(feedback )?endpoint": "0x02x", r"wIndex|wValue": "0x04x"},
    "embedded": {r"\w+(Status|Control)|PowerCtl\d": "0x08x", r"\w+Mask(?<!interruptMask)": "0xx"},
}

# How long something took, was waited for, may take or is put off; and the drivers' own fields.
DURATIONS = {"elapsed", "waited", "timeout"}
TIMES = re.compile(r"(f|m|_)[A-Z]\w+|_\w+|time|last time|\w+Time|first timeStamp|timeStamp"
                   r"|(plug|unplug|button)Debounce|interval")

ARROWS = {"USB": "--->"}  # all other families: ->

UNITS = {
    r"(?i)\w*(clk|clock|pll|lpadc|dmic)\w*rate|(pixel|bit|f?bus)clock|\w*mclk|\w*frequency|crossover":
        ["Hz"],
    r"(?i)\w*(volume|gain|attenuation)": ["1/100 dB", "steps"],
    r"GET_M(IN|AX)": ["1/256 dB"],
    r"(?i)boost|supply|bias": ["mV"],
    r"(?i)\w*(peakcurrent|currentlimit)": ["mA"],
    r"(?i)\w*temperature(limit)?": ["C"],
    r"(?i)\w*(impedance|resistance)|load": ["mOhm", "Ohm"],
    r"latency|(filter|fifo)Delay|late": ["frames"],
}

SYNONYMS = {
    "bitDepth": "bitsPerSample", "numChannels": "channelCount", "slotWidth": "bitsPerSlot",
    "pll": "PLL", "microphone": "mic", "micro": "mic", "took": "elapsed", "slept": "waited",
    "lasted": "elapsed", "ms": "nanos()", "clients left": "userClients",
}

FAILURES = re.compile(
    r"\b(fail(s|ed)?|timed out|not ready|no answer|no acknowledge|overrun|underrun|refused"
    r"|unexpected|over (current|temperature)|(lock|clock) lost|did not|cannot|unbalanced|gone back"
    r"|not allowed|missing|wrong|incomplete|out of range|still (running|set)|gap|error)\b")
PROSE = re.compile(
    r"\b(we|our|ours|us|you|it|its|they|them|their|those|who|whose|nobody|anybody|somebody|what"
    r"|expect|hope|maybe|perhaps|please|alas|unfortunately|never mind|lets|wants|tells|telling)\b",
    re.IGNORECASE)

NANOS = r"%d\.%03d\.%03d\.%03d"
VALUE = rf"(?:(?:0x)?(?:{NANOS}|%c%c%c%c|%\w+?[dux]|%[duxps])(?:\[%c\])?)"


def family(text):
    """The drivers that share fields; the headset remote behind HDA has a style of its own."""
    number = int(text.number) if text.number.isdigit() else 99
    if text.number == "44" and text.code >= "0524B258":
        return "headset behind HDA"
    for name, numbers in {"generic": (1, 7, 3, 4), "HDA": (0, *range(20, 33)),
                          "USB": range(35, 42), "headset": (44, 48),
                          "embedded": (42, 43, 45, 46, 47, 49, 50)}.items():
        if number in numbers:
            return name
    return "server"


class Text(typing.NamedTuple):
    number: str     # of the class
    code: str
    on: str         # start, end, other or any
    condition: str
    text: str
    arguments: str  # as docs/events.md spells them

    def beginning(self):
        """What a start or an end begins with."""
        word = self.on.capitalize()
        return word + {"35": ": ", "44": " "}.get(self.number, " - ")

    def colon(self):
        return ":" if self.number == "45" or family(self) == "headset behind HDA" else ": "


class Value(typing.NamedTuple):
    name: str
    unit: str
    conversion: str
    arrow: str  # before it, or empty

    def field(self):
        """What forms are compared by: `pin nodeID` is a nodeID, `open clients` is itself."""
        last = self.name.split()[-1]
        return last if re.search(r"[A-Z_]", last) else self.name

    def form(self):
        """0x08x, d, s, p, time: what a reader sees. The width of the word makes no difference."""
        if re.fullmatch(NANOS, self.conversion):
            return "time"
        return re.sub(r"%|ll|\[.*\]", "", self.conversion).replace("0xx", "0xx")


def body(text):
    """The text without its beginning; None where it begins as its qualifier does not."""
    if text.on in ("start", "end"):
        if text.text == text.on.capitalize():
            return ""
        beginning = text.beginning()
        return text.text[len(beginning):] if text.text.startswith(beginning) else None
    return None if re.match("(Start|End|Begin)\\b", text.text) else text.text.removeprefix("ERROR: ")


def parse(text):
    """Phrases and values of a text; None where it has another shape."""
    rest = body(text)
    if rest is None:
        return None
    *phrases, pairs = rest.split(" - ")
    if not re.search(VALUE, pairs):
        return None if ":" in rest or "," in rest else ([*phrases, pairs], [])
    if any(re.search("[:,%]", phrase) for phrase in phrases):
        return None
    word = r"[A-Za-z_][\w/>-]*"
    pattern = re.compile(rf"(?:(?P<name>{word}(?: {word})?)(?:\((?P<unit>[^)]+)\))?{text.colon()}"
                         rf"|(?P<returning>returning) )(?P<value>{VALUE})"
                         rf"(?: (?P<arrow>-+>) (?P<new>{VALUE}))?(?: |$)")
    values = []
    at = 0
    while at < len(pairs):
        found = pattern.match(pairs, at)
        if not found:
            # "queueing silence returned: ..." is a phrase and `returned`.
            found = re.compile(r"[\w ]+ (?P<name>returned): (?P<value>0x%08x)(?: |$)").match(pairs)
            if at != 0 or not found:
                return None
            values.append(Value("returned", "", found["value"], ""))
        else:
            name = (found["name"] or found["returning"])
            name = "returned" if name.endswith(" returned") else name
            values.append(Value(name, found["unit"] or "", found["value"], ""))
            if found["arrow"]:
                values.append(Value("new " + name, found["unit"] or "", found["new"],
                                    found["arrow"]))
        at = found.end()
    return None if pairs.endswith(" ") else (phrases, values)


def problems_of_shape(text, parsed):
    """The rules that one text keeps or breaks alone."""
    if parsed is None:
        yield "shape"
        return
    phrases, values = parsed
    if len({value.name for value in values}) != len(values):
        yield "names"
    if any(len(phrase.split()) > 6 or PROSE.search(phrase) for phrase in phrases):
        yield "phrase"
    is_error = text.text.startswith("ERROR: ")
    if not is_error and any(FAILURES.search(phrase) for phrase in phrases):
        yield "error"
    if not is_error and any(value.name == "returned" for value in values):
        yield "error"
    for value in values:
        if not keeps_form(text, value):
            yield "form"
        if value.form() == "time" and not (value.name.removeprefix("new ") in DURATIONS
                                           or TIMES.fullmatch(value.name.removeprefix("new "))):
            yield "duration"
        if value.arrow and value.arrow != ARROWS.get(family(text), "->"):
            yield "change"
        for pattern, units in UNITS.items():
            if (value.form() in "du" and re.fullmatch(pattern, value.name.split()[-1])
                    and value.unit not in units):
                yield "unit"
    if any(re.search(rf"\b{word}\b", text.text) for word in SYNONYMS):
        yield "synonym"


def keeps_form(text, value):
    for pattern, form in (FORMS_OF_FAMILY.get(family(text), {}) | FORMS).items():
        if re.fullmatch(pattern, value.field()):
            return value.form() == form
    return True


def problems_between(texts):
    """The rules about several texts: one form of a field, start and end of an event."""
    forms = collections.defaultdict(lambda: collections.defaultdict(list))
    events = collections.defaultdict(dict)
    for text in texts:
        for value in (parse(text) or ([], []))[1]:
            forms[family(text), value.field()][value.form(), value.unit].append(text)
        events[text.code][text.on] = text
    for uses in forms.values():
        usual = max(uses, key=lambda form: len(uses[form]))
        for form, users in uses.items():
            if form != usual:
                yield from (("one form", text) for text in users)
    for event in events.values():
        if "any" in event:
            yield "span", event["any"]
        if "start" in event and "end" in event and event["start"].text == event["end"].text:
            yield "span", event["end"]


def problems_of_order(text):
    """Which words the arguments take."""
    arguments = re.findall(r"(hi|lo|byte)?\((?:\d, )?arg(\d)|(?<!\w)arg(\d)", text.arguments)
    taken = [(part, int(inner or whole)) for part, inner, whole in arguments]
    words = [2, 3] if "byte(0, arg4)" in text.condition else [2, 3, 4]
    if len(taken) <= len(words):
        if [word for _, word in taken] != words[:len(taken)] or any(p == "hi" for p, _ in taken):
            yield "order"
        return
    places = [word * 2 + (part == "lo") for part, word in taken]
    if places != sorted(places) or taken[0][1] != 2:
        yield "order"
    flags = re.findall(r"(?:boolean|yesNo|either)\((hi|lo|byte)?", text.arguments)
    if any(flags):
        yield "order"


def has_comment(text):
    """Whether the row, the line above it or the lines of its event say why."""
    for path in (SOURCE / "src/events/decoders").glob("*.cpp"):
        lines = path.read_text().splitlines()
        for at, line in enumerate(lines):
            if f"(0x{text.code}," in line:
                row = next(i for i in range(at, len(lines)) if f'"{text.text}"' in lines[i])
                places = lines[at - 1], line, lines[row - 1], lines[row]
                return any("//" in place for place in places)
    return False


@pytest.fixture(name="texts", scope="module")
def fixture_texts():
    page = run_program("markdown", program="sonaprobe-events").stdout
    texts = []
    for part in page.split("\n## ")[1:]:
        number = part.split(" ", 1)[0]
        for row in re.findall(r"^\| `0x([0-9A-F]{8})` \| (.*) \|$", part, re.MULTILINE):
            code, cells = row
            on, condition, _, text, arguments = cells.split(" | ")
            texts.append(Text(number, code, on, condition, text.strip("`"), arguments))
    return texts


@pytest.fixture(name="given", scope="module")
def fixture_given():
    lines = (SOURCE / "tests/golden/given_texts.txt").read_text().splitlines()
    pairs = [tuple(line.split(" ", 1)) for line in lines if line and not line.startswith("#")]
    assert len(pairs) == len(set(pairs)), "a given text stands there twice"
    return set(pairs)


# Classes whose rows are given as a whole: the order of their arguments, too.
GIVEN_CLASSES = {"0", "1", "3", "4", "7", "23", "24", "25", "26", "30", "31", "42", "server"}


def check(texts, given):
    """All broken rules, each with its text."""
    own = [text for text in texts if (text.number, text.text) not in given]
    found = [(rule, text) for text in own for rule in problems_of_shape(text, parse(text))]
    found += problems_between(own)
    found += [(rule, text) for text in texts if text.number not in GIVEN_CLASSES
              for rule in problems_of_order(text) if not has_comment(text)]
    return found


def test_texts_keep_the_rules(texts, given):
    assert len(texts) > 1800
    assert [f"{rule}: {text.code} {text.on} {text.text}" for rule, text in check(texts, given)] == []


def test_given_texts_are_printed(texts, given):
    assert given - {(text.number, text.text) for text in texts} == set()
