"""The texts of the decoder tables speak one language: one shape, one word and one form per thing.

A text is an optional beginning ("Start - ", "End - ", "ERROR: "), phrases, each followed by " - ",
and `name: value` pairs. RULES says the rest. Exempt are the texts in tests/given, but for the order
of their arguments.
"""

import collections
import functools
import os
import pathlib
import re
import typing

import pytest

from conftest import run_program
from given import settled_texts

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])

RULES = {
    "shape": "a beginning, phrases, `name: value` pairs; a name has one or two words, a start "
             "begins with Start, an end with End",
    "names": "the values of a text have different names",
    "phrase": "a phrase has at most six words, and none of PROSE",
    "error": "what tells of a failure begins with ERROR, and `returned` stands nowhere else",
    "form": "a field that FORMS knows is printed as it says",
    "one form": "a field has one form and one unit in all texts of a driver family",
    "duration": "a duration is elapsed, waited or timeout, or a field of the driver",
    "change": "a change is written with the arrow of the driver family",
    "unit": "a quantity has its unit after its name: `boost(mV): %d`",
    "synonym": "a thing has one word: the right one of SYNONYMS",
    "span": "start and end differ, and no text answers every qualifier",
    "order": "values fill arg2, arg3, arg4 in order, each a whole word, or halves of words where "
             "there are more values than words; a row that departs has a comment",
}

# How a field is printed, by the last word of its name. `ll` is left out, since a reader does not
# see it, and a time is "time".
FORMS = {
    "result|returned": "0x%08x", "returning": "%s", "returnCode": "%d",
    r"\w*[nN]odeID|\w*[cC]ount(?<!incrementLoopCount)|attempts?|index|channel|bus": "%d",
    "sampleRate|bitsPerSample|channelCount|slotCount|bitsPerSlot": "%d",
    r"enable|\w+Enabled(?<!xspEnabled)|is[A-Z]\w+|\w+(Running|Locked)": "%s",
    r"flags|_\w+Flags|options|capabilities": "0x%x",
}
FORMS_OF_FAMILY = {
    "HDA": {r"\w+(Status|Control)|controlRegister|GCTL|INTCTL|INTSTS": "0x%08x",
            "SDSTS|CORBCTL|RIRBCTL|RIRBSTS": "0x%02x", "SDCTL": "0x%06x",
            "SDFMT|STATESTS|GCAP": "0x%04x"},
    "USB": {"status|type": "0x%08x", "endpoint": "0x%02x", "wIndex|wValue": "0x%04x"},
    "headset": {r"detect(Ctl|I)\w+|\w+Ctl|wake\w+": "0x%02x"},
    "embedded": {r"\w+(Status|Control)|PowerCtl\d|interruptMask": "0x%08x",
                 r"\w+(?<!interrupt)Mask": "0x%x"},
}

# How long something took, how long it was waited for, how long it may take or is put off; and the
# drivers' fields that are times.
DURATIONS = {"elapsed", "waited", "timeout"}
TIMES = re.compile(
    r"(f|m|_)[A-Z]\w+|_\w+|(last )?\w*[tT]ime|(first )?timeStamp|\w+Debounce|interval")

ARROWS = {"USB": "--->"}  # the other families: ->

UNITS = {
    r"(?i)\w*(clk|clock|pll|lpadc|dmic)\w*rate|(pixel|bit|f?bus)clock|\w*mclk|\w*frequency": ["Hz"],
    r"(?i)\w*(volume|gain|attenuation)": ["1/100 dB", "steps"],
    r"GET_M(IN|AX)": ["1/256 dB"],
    r"boost|supply|bias": ["mV"],
    r"peakCurrent|\w+CurrentLimit": ["mA"],
    r"(?i)\w*temperature(limit)?": ["C"],
    r"impedance|\w+Resistance|load": ["mOhm", "Ohm"],
    r"latency|(filter|fifo)Delay|late": ["frames"],
}

SYNONYMS = {"bitDepth": "bitsPerSample", "numChannels": "channelCount", "slotWidth": "bitsPerSlot",
            "pll": "PLL", "microphone": "mic", "took": "elapsed", "slept": "waited"}

FAILURES = re.compile(
    r"\b(fail(s|ed)?|timed out|not ready|no answer|no acknowledge|overrun|underrun|refused"
    r"|unexpected|over (current|temperature)|(lock|clock) lost|did not|cannot|unbalanced|gap"
    r"|not allowed|missing|wrong|incomplete|out of range|still (running|set)|stays \w+ed|error)\b")
PROSE = re.compile(
    r"\b(we|our|ours|us|you|it|its|they|them|their|those|who|whose|nobody|somebody|what|expect"
    r"|hope|maybe|perhaps|please|alas|lets|wants|tells|telling)\b", re.IGNORECASE)

NANOS = r"%d\.%03d\.%03d\.%03d"
VALUE = rf"(?:0x)?(?:{NANOS}|%c%c%c%c|%\d*(?:ll)?[duxps])(?:\[%c\])?"

FAMILIES = {"generic": (1, 3, 4, 7), "HDA": (0, *range(20, 33)), "USB": range(35, 42),
            "headset": (44, 48), "embedded": (42, 43, 45, 46, 47, 49, 50)}

# Classes whose rows are given as a whole, with the order of their arguments.
GIVEN_CLASSES = {"0", "1", "3", "4", "7", "23", "24", "25", "26", "30", "31", "42", "server"}


class Value(typing.NamedTuple):
    name: str
    unit: str
    form: str   # as FORMS has it
    arrow: str  # before it, or empty

    def field(self):
        """What forms are compared by: a "pin nodeID" is a nodeID, "open clients" are themselves."""
        last = self.name.split()[-1]
        return last if re.search("[A-Z_]", last) else self.name


class Text(typing.NamedTuple):
    number: str     # of the class
    code: str
    on: str         # start, end, other or any
    condition: str
    text: str
    arguments: str  # as docs/events.md spells them

    def behind_hda(self):
        """The headset remote behind HDA, whose texts have no blank after the colon."""
        return self.number == "44" and self.code >= "0524B258"

    def family(self):
        if self.behind_hda():
            return "headset behind HDA"
        return next((name for name, numbers in FAMILIES.items() if int(self.number) in numbers))

    def body(self):
        """The text without its beginning; None where it has not the beginning that it should."""
        if self.on not in ("start", "end"):
            wrong = re.match("(Start|End)\\b", self.text)
            return None if wrong else self.text.removeprefix("ERROR: ")
        word = self.on.capitalize()
        beginning = word + {"35": ": ", "44": " "}.get(self.number, " - ")
        if self.text.startswith(beginning):
            return self.text.removeprefix(beginning)
        return "" if self.text == word else None

    @functools.cache
    def parse(self):
        """Phrases and values; None where the text has another shape."""
        body = self.body()
        if body is None:
            return None
        *phrases, pairs = body.split(" - ")
        if "%" not in pairs:
            phrases, pairs = [*phrases, pairs], ""
        if any(re.search("[:,%]", phrase) for phrase in phrases):
            return None
        colon = ":" if self.number == "45" or self.behind_hda() else ": "
        word = r"[A-Za-z_][\w/>-]*"
        named = rf"(?P<name>{word}(?: {word})?)(?:\((?P<unit>[^)]+)\))?{colon}"
        change = rf"(?: (?P<arrow>-+>) (?P<new>{VALUE}))?"
        pair = re.compile(rf"(?:{named}|returning )(?P<value>{VALUE}){change}(?: (?!$)|$)")
        values = []
        at = 0
        while at < len(pairs):
            found = pair.match(pairs, at)
            if not found:
                return None
            name, unit = found["name"] or "returning", found["unit"] or ""
            values.append(Value(name, unit, form_of(found["value"]), ""))
            if found["arrow"]:
                new = f"new {name.split()[-1]}"
                values.append(Value(new, unit, form_of(found["new"]), found["arrow"]))
            at = found.end()
        return phrases, values


def form_of(conversion):
    return "time" if re.fullmatch(NANOS, conversion) else re.sub(r"ll|\[.*\]", "", conversion)


def problems_of(text):
    """The rules that a text breaks alone."""
    parsed = text.parse()
    if parsed is None:
        yield "shape"
        return
    phrases, values = parsed
    if len({value.name for value in values}) != len(values):
        yield "names"
    if any(len(phrase.split()) > 6 or PROSE.search(phrase) for phrase in phrases):
        yield "phrase"
    tells_failure = (any(FAILURES.search(phrase) for phrase in phrases)
                     or any(value.field().endswith("returned") for value in values))
    if tells_failure and not text.text.startswith("ERROR: "):
        yield "error"
    if any(re.search(rf"\b{word}\b", text.text) for word in SYNONYMS):
        yield "synonym"
    for value in values:
        yield from problems_of_value(text, value)


def problems_of_value(text, value):
    forms = FORMS_OF_FAMILY.get(text.family(), {}) | FORMS
    known = [form for pattern, form in forms.items() if re.fullmatch(pattern, value.field())]
    if known and value.form != known[-1]:
        yield "form"
    name = value.name.removeprefix("new ")
    if value.form == "time" and name not in DURATIONS and not TIMES.fullmatch(name):
        yield "duration"
    if value.arrow and value.arrow != ARROWS.get(text.family(), "->"):
        yield "change"
    for pattern, units in UNITS.items():
        if value.form in ("%d", "%u") and re.fullmatch(pattern, name.split()[-1]):
            if value.unit not in units:
                yield "unit"


def problems_between(texts):
    """The rules about texts together, each with a text that breaks it."""
    uses = collections.defaultdict(lambda: collections.defaultdict(list))
    events = collections.defaultdict(dict)
    for text in texts:
        _, values = text.parse() or ([], [])
        for value in values:
            uses[text.family(), value.field()][value.form, value.unit].append(text)
        events[text.code][text.on] = text
    for forms in uses.values():
        usual = max(forms.values(), key=len)
        yield from (("one form", text) for users in forms.values() if users is not usual
                    for text in users)
    for event in events.values():
        if "any" in event:
            yield "span", event["any"]
        if "start" in event and "end" in event and event["start"].text == event["end"].text:
            yield "span", event["end"]


def is_out_of_order(text):
    taken = [(int(word), part) for part, word in
             re.findall(r"(?:(hi|lo|byte)\((?:\d, )?)?arg(\d)", text.arguments)]
    words = [2, 3] if "byte(0, arg4)" in text.condition else [2, 3, 4]
    if len(taken) <= len(words):
        return [word for word, _ in taken] != words[:len(taken)] or "hi" in dict(taken).values()
    return (taken[0][0] != 2 or taken != sorted(taken)  # "hi" before "lo"
            or re.search(r"(boolean|yesNo|either)\((hi|lo|byte)", text.arguments))


def has_comment(text):
    """Whether the row, its event or the line above one of them has a comment."""
    for path in (SOURCE / "src/events/decoders").glob("*.cpp"):
        lines = path.read_text().splitlines()
        for event, line in enumerate(lines):
            if f"(0x{text.code}," in line:
                row = next(i for i in range(event, len(lines)) if f'"{text.text}"' in lines[i])
                return any("//" in lines[i] for i in (event - 1, event, row - 1, row))
    return False


def check(texts, given):
    """All broken rules, each with a text that breaks it."""
    open_texts = [text for text in texts if (text.number, text.text) not in given]
    yield from ((rule, text) for text in open_texts for rule in problems_of(text))
    yield from problems_between(open_texts)
    yield from (("order", text) for text in texts if text.number not in GIVEN_CLASSES
                and is_out_of_order(text) and not has_comment(text))


@pytest.fixture(name="texts", scope="module")
def fixture_texts():
    texts = []
    page = run_program("markdown", program="sonaprobe-events").stdout
    for section in page.split("\n## ")[1:]:
        number = section.split()[0]
        for code, cells in re.findall(r"^\| `0x([0-9A-F]{8})` \| (.*) \|$", section, re.MULTILINE):
            on, condition, _, text, arguments = cells.split(" | ")
            texts.append(Text(number, code, on, condition, text.strip("`"), arguments))
    return texts


@pytest.fixture(name="given", scope="module")
def fixture_given():
    return {(number, text.replace("\t", r"\t")) for number, text in settled_texts()}


def test_texts_keep_the_rules(texts, given):
    assert len(texts) > 1800
    broken = [f"{rule}: 0x{text.code} {text.on} {text.text}" for rule, text in check(texts, given)]
    assert broken == [], "\n".join(f"{rule}: {RULES[rule]}" for rule in RULES)


# A row of a class without event 255: the rule that it breaks, its qualifier, text and arguments.
FAULTS = [
    ("shape", "20", "start", "count: %lld", "arg2"),
    ("shape", "20", "end", "End - %lld streams left", "arg2"),
    ("shape", "20", "other", "fCRTCIndex(%d)", "lo(arg2)"),
    ("shape", "20", "other", "stopping stream at offset: 0x%x", "lo(arg2)"),
    ("shape", "21", "other", "idle, powerState: %lld", "arg2"),
    ("shape", "45", "other", "adc: %lld", "arg2"),
    ("names", "38", "other", "frame: %lld frame: %lld", "arg2, arg3"),
    ("phrase", "43", "other", "a client came back while ramping down - flags: 0x%llx", "arg2"),
    ("phrase", "20", "other", "nobody waits - fPMPowerState: %lld", "arg2"),
    ("error", "48", "other", "timed out - fBusState: %lld", "arg2"),
    ("error", "41", "other", "writing control - returned: 0x%08x", "lo(arg2)"),
    ("form", "20", "end", "End - result: 0x%llx", "arg2"),
    ("form", "50", "other", "pllStatus: 0x%02llx", "arg2"),
    ("form", "21", "other", "pin nodeID: 0x%llx", "arg2"),
    ("one form", "48", "other", "fPowerMode: 0x%x", "lo(arg2)"),
    ("one form", "28", "other", "pixelClock(Hz): %lld", "arg2"),
    ("duration", "49", "other", "coldStart: %d.%03d.%03d.%03d", "nanos(arg2)"),
    ("change", "38", "other", "mBufferOffset: %lld -> %lld", "arg2, arg3"),
    ("change", "22", "other", "state: %lld ---> %lld", "arg2, arg3"),
    ("unit", "47", "other", "mclkRate: %lld", "arg2"),
    ("unit", "49", "other", "boost(uV): %lld", "arg2"),
    ("synonym", "47", "other", "bitDepth: %lld", "arg2"),
    ("span", "32", "any", "bus: %lld", "arg2"),
    ("order", "32", "end", "End - bus: %lld result: 0x%08x", "arg2, lo(arg4)"),
    ("order", "48", "other", "fHeadsetType: %d fPowerMode: %d", "hi(arg2), lo(arg2)"),
    ("order", "46", "other", "fIndex: %d fMicCount: %d", "lo(arg3), lo(arg2)"),
    ("order", "38", "end", "End - bytes: %d frames: %d lists: %d isInactive: %s",
     "hi(arg2), lo(arg2), hi(arg3), boolean(lo(arg3))"),
]


@pytest.mark.parametrize("fault", FAULTS, ids=lambda fault: f"{fault[0]}: {fault[3]}")
def test_a_broken_rule_is_found(texts, given, fault):
    rule, number, on, text, arguments = fault
    base = next(text.code for text in texts if text.number == number)
    planted = Text(number, f"{int(base, 16) & ~0x3FF | 255 << 2:08X}", on, "", text, arguments)
    assert rule in [broken for broken, found in check([*texts, planted], given) if found == planted]


def test_every_rule_has_a_fault():
    assert {fault[0] for fault in FAULTS} == set(RULES)
