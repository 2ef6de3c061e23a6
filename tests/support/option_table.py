"""The option table of src/probe/options.cpp, for tests that hold other texts against it."""

import os
import pathlib
import re
from dataclasses import dataclass, field

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "src/probe/options.cpp"
ROW = re.compile(r'^ *\{"([\w-]+)", +\'(\w)\', k(None|Required|Optional),', re.MULTILINE)


@dataclass
class Option:
    letter: str
    argument: str  # none, required or optional
    names: list = field(default_factory=list)


def options():
    """The options by their letters, each with its long names."""
    table = {}
    for name, letter, argument in ROW.findall(SOURCE.read_text()):
        table.setdefault(letter, Option(letter, argument.lower())).names.append(name)
    assert sum(len(option.names) for option in table.values()) == 34
    return list(table.values())
