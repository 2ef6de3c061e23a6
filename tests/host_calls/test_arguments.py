"""Random argument vectors against a model of the parser: what it says, how the program ends, and
that what was set up is taken down. SONAPROBE_ARGUMENT_VECTORS asks for more of them."""

import os
import random
import re
from dataclasses import dataclass, field

from host import DISABLE, ENABLE, READTR, REEXEC, REMOVE, SET_FLAGS, host, info, stop_at

VECTORS = int(os.environ.get("SONAPROBE_ARGUMENT_VECTORS", "600"))

NONE, REQUIRED, OPTIONAL = range(3)

# Letter, long names, argument, what it says under --verbose ({} a number, {path} a path).
OPTIONS = [
    ("b", ["bufsize", "buffer", "size"], REQUIRED, "Setting trace buffer size to {}\n"),
    ("a", ["all"], NONE, "Setting print mask to 0xffffffff\n"),
    ("d", ["decode"], OPTIONAL, "Using '{path}' file to decode other tracepoints\n"),
    ("c", ["codes"], NONE, "Will display codes\n"),
    ("t", ["time"], NONE, "Will display local time\n"),
    ("k", ["kernel"], NONE, "Will display kernel time\n"),
    ("s", ["nostamp"], NONE, "Will NOT display time stamps\n"),
    ("g", ["nogroup"], NONE, "Will NOT display group name\n"),
    ("m", ["nomethod"], NONE, "Will NOT display method name\n"),
    ("u", ["noptr"], NONE, "Will NOT display Audio pointer\n"),
    ("f", ["timers"], NONE, "Will print the RootHubTimer fired messages\n"),
    ("i", ["indentOff"], NONE, "Will NOT indent\n"),
    ("T", ["notrace"], NONE, "Will NOT enable Audio tracing\n"),
    ("L", ["nolog"], NONE, "Will disable printing of Audio tracepoint logging\n"),
    ("w", ["write"], OPTIONAL, "Got w flag\nWill output raw format file to '{path}'\n"),
    ("r", ["read"], REQUIRED, "Will read raw data from file {path}\n"),
    ("C", ["cpu"], NONE, "Will display CPU number\n"),
    ("A", ["HAL"], NONE, "Setting HAL LOG to 0x00000001\n"),
    ("H", ["thread"], NONE, "Will NOT display thread\n"),
    ("I", ["interest"], REQUIRED, "Setting interest to 0x{:x}\n"),
    ("1", ["value1"], REQUIRED, "Setting interest value 1 to {}\n"),
    ("2", ["value2"], REQUIRED, "Setting interest value 2 to {}\n"),
    ("B", ["basic"], NONE, "Will using basic formatting\n"),
    ("S", ["nosep"], NONE, "Will NOT separate LOG from method during formatting.\n"),
    ("D", ["dump"], NONE, "Will dump trace buffer and exit.\n"),
    ("R", ["register"], NONE, "Will output ReadReg tracepoints"),
    ("F", ["filter-out"], REQUIRED, "Filtering out audioclass {}\n"),
    ("X", ["filter-all-except"], REQUIRED, "Filtering all audioclass except {}\n"),
    ("v", ["verbose"], NONE, "Verbose mode ON\n"),
    ("V", ["version"], NONE, ""),
    ("l", ["listclasses"], NONE, ""),
    ("h", ["help"], NONE, ""),
]
BY_LETTER = {letter: (argument, says) for letter, _, argument, says in OPTIONS}
BY_NAME = {name: (letter, argument) for letter, names, argument, _ in OPTIONS for name in names}
VERSION = "sonaprobe version:  100.45\n"

# Arguments of each kind; classes with their number.
NUMBERS = ["1", "64", "0x40", "010", "7x", "0", "", "x"]
CLASSES = {"23": 23, "hdap": 23, "kAudioTPlexoPort": 7, "010": 8, "0x12": 51, "nosuch": 51, "": 0}
PATHS = ["trace", "missing/trace", "x" * 256]


def number(text):
    """A number in base 0, in 32 bits."""
    found = re.match(r"\s*([+-]?)(?:0[xX]([0-9a-fA-F]+)|0([0-7]*)|([1-9][0-9]*))", text)
    if found is None:
        return 0
    sign, hexadecimal, octal, decimal = found.groups()
    value = int(hexadecimal or decimal or octal or "0", 16 if hexadecimal else 10 if decimal else 8)
    return (-value if sign == "-" else value) % 2**32


def matching(name):
    """The long option that a name or its beginning stands for, if it is one."""
    if name in BY_NAME:
        return BY_NAME[name]
    found = {BY_NAME[known] for known in BY_NAME if known.startswith(name)}
    return found.pop() if len(found) == 1 else None


def parsed(words):
    """Letter and argument of each option; "?" where the parser gives up."""
    words = iter(words)
    for word in words:
        if word == "--":
            return
        if word.startswith("--"):
            name, equals, argument = word[2:].partition("=")
            letter, takes = matching(name) or ("?", NONE)
            if equals and takes == NONE:
                letter = "?"
            argument = argument if equals else None
            if takes == REQUIRED and argument is None:
                argument = next(words, None)
            yield (letter if takes != REQUIRED or argument is not None else "?"), argument
        elif word.startswith("-") and word != "-":
            rest = word[1:]
            while rest:
                letter, rest = rest[0], rest[1:]
                takes = BY_LETTER.get(letter, (NONE, ""))[0]
                argument = None
                if takes != NONE and rest:
                    argument, rest = rest, ""
                elif takes == REQUIRED:
                    argument = next(words, None)
                    letter = letter if argument is not None else "?"
                yield (letter if letter in BY_LETTER else "?"), argument


@dataclass
class Model:
    """What the options come to."""

    said: str = ""
    verbose: bool = False
    usage: bool = False
    fatal: str = ""
    given: set = field(default_factory=set)
    path: str = ""

    def say(self, text):
        self.said += text if self.verbose else ""

    def take(self, letter, argument):
        """Takes an option; whether it ends the program."""
        if letter in "?h":
            self.usage = True
            return True
        self.given.add(letter)
        says = BY_LETTER[letter][1]
        if letter == "v":
            self.verbose = True
        if letter == "V":
            self.said += VERSION
        if letter == "b" and number(argument) == 0:
            self.fatal = "Argument parsing error\n"
            return True
        if letter == "w":
            self.say("Got w flag\n")
            says = says.removeprefix("Got w flag\n")
        if letter in "wrd" and len(argument) > 255:
            kind = {"w": "The path length of raw file", "r": "File path length of raw data file",
                    "d": "File path length of decode file"}[letter]
            self.fatal = f"{kind} is too long\n"
            return True
        if letter == "d" and argument != "trace":
            return False  # it cannot be opened
        if letter in "wr":
            self.path = argument
        value = CLASSES.get(argument, 51) if letter in "FX" else number(argument or "")
        self.say(says.format(value, path=argument))
        return False


def random_words(source):
    words = []
    for _ in range(source.randrange(1, 9)):
        letter, names, takes, _ = source.choice(OPTIONS)
        if letter in "h" and source.random() < 0.8:
            continue
        kind = CLASSES if letter in "FX" else PATHS if letter in "dwr" else NUMBERS
        argument = source.choice(list(kind))
        if letter in "dwr" and source.random() < 0.7:
            argument = "trace"
        if letter == "b" and source.random() < 0.8:
            argument = "64"
        name = source.choice(names)
        if source.random() < 0.3:
            name = name[:source.randrange(1, len(name) + 1)]
        attached = takes != NONE and (takes == OPTIONAL or source.random() < 0.5)
        if source.random() < 0.5:
            words.append(f"--{name}={argument}" if attached else f"--{name}")
        elif attached and argument:
            group = source.choice(["", "v", "ck"])
            words.append(f"-{group}{letter}{argument}")
        elif takes == OPTIONAL:
            words.append(f"--{names[0]}={argument}")
        else:
            words.append(f"-{letter}")
        if takes == REQUIRED and not (attached and (argument or words[-1].startswith("--"))):
            words.append(argument)
        if source.random() < 0.04:
            words.append(source.choice(["--", "-", "operand", "-Z", "--nosuch", "--kernel=1", "-?",
                                        "--i", "--v", "-\x01", "--=", "-I", "-F"]))
    return words


def expected(words):
    model = Model()
    for letter, argument in parsed(words):
        if model.take(letter, argument):
            break
    return model


def check_end(words, model, result):
    calls, context = result.calls, f"{words}: {result}"
    assert result.returncode in (0, 1), context
    assert result.stdout.startswith(model.said), f"expected {model.said!r}, {context}"
    undone = [line.startswith(SET_FLAGS) for line in calls].count(True)
    if model.usage:
        assert (calls, result.returncode) == ([REEXEC], 0), context
        assert "\nUsage: sudo sonaprobe [OPTIONS]\n" in result.stderr, context
    elif model.fatal:
        assert calls == [REEXEC, REMOVE, f"{SET_FLAGS} 0"], context
        assert result.stderr.endswith(f"sonaprobe: {model.fatal}\n"), context
        assert result.returncode == 1, context
    elif "D" in model.given:
        assert calls[-2:] == [REMOVE, f"{SET_FLAGS} 0"] and result.returncode == 1, context
    elif "r" in model.given:
        readable = model.path == "trace"
        assert calls == [REEXEC] + ([] if readable else [REMOVE, f"{SET_FLAGS} 0"]), context
        assert result.returncode == (0 if readable else 1), context
    elif "L" in model.given:
        assert calls[-1] == ENABLE and result.returncode == 0, context
    else:
        assert calls[-3:-1] == [DISABLE, REMOVE], context
        assert calls[-1] == f"{SET_FLAGS} {'0' if 'T' in model.given else '0x6'}", context
        assert undone == (1 if "T" in model.given else 2), context
        unwritable = "w" in model.given and model.path != "trace"
        assert result.returncode == (1 if unwritable else 0), context


def test_random_argument_vectors_do_what_the_model_of_the_parser_says(host):
    source = random.Random(2026)
    ends = {"usage": 0, "fatal": 0, "run": 0}
    for _ in range(VECTORS):
        words = random_words(source)
        (host.folder / "trace").write_bytes(b"")
        model = expected(words)
        ending = [] if "D" in model.given else [stop_at(READTR)]  # a dump has no handlers
        result = host.run(words, "flags 6", info(64), *ending)
        check_end(words, model, result)
        ends["usage" if model.usage else "fatal" if model.fatal else "run"] += 1
    assert min(ends.values()) > VECTORS // 50, ends
