"""The option table of src/probe/options.cpp, for tests that hold other texts against it."""

import os
import pathlib
import re
from dataclasses import dataclass

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "src/probe/options.cpp"
ROW = re.compile(r"^ *\{'(\w)', \{([^}]+)\}, +k(None|Required|Optional),", re.MULTILINE)


@dataclass
class Option:
    letter: str
    argument: str  # none, required or optional
    names: list


def options():
    """The options, each with its long names."""
    table = [Option(letter, argument.lower(), re.findall(r"[\w-]+", names))
             for letter, names, argument in ROW.findall(SOURCE.read_text())]
    assert sum(len(option.names) for option in table) == 34
    return table
