"""The rooms of src/, and what each may include: the one table that says so."""

import re

# The rooms, from the lowest floor up. A room may include itself and what its row names; a program
# includes what is below it.
_LIBRARY = ["record", "events", "lines", "rawfile"]
_BELOW_THE_PROGRAMS = ["record", "registry", "platform", "events", "rawfile", "lines", "analysis",
                       "export", "page"]

MAY_INCLUDE = {
    "record": [],
    "registry": [],
    "platform": [],
    "events": ["record", "registry"],
    "rawfile": ["record"],
    "meanings": [],
    "trace": ["record", "platform"],
    "live": ["trace", "record", "platform"],
    "lines": ["events", "record"],
    "analysis": ["events", "rawfile", "record", "registry"],
    "export": ["analysis", "events", "record"],
    "page": ["analysis", "events", "record"],
    "capi": [*_LIBRARY, "registry", "sonaprobe"],
    "probe": [*_BELOW_THE_PROGRAMS, "trace", "live"],
    "scope": [*_BELOW_THE_PROGRAMS, "meanings"],
}

# One command of a program may do what the others may not.
ALSO_IN = {"scope/catch": ["trace", "live"]}

# Headers that the include path finds without a room.
LOOSE = {"platform": ["calls.h"]}

# What a library may not do to the program that it is in. Names of functions and variables.
QUIET_ROOMS = [*_LIBRARY, "capi"]
LOUD = re.compile(r"(?<![\w.>])(?:std::|::)?(stdout|stderr|stdin|cout|cerr|clog|v?f?printf|f?puts"
                  r"|putchar|perror|_?exit|_Exit|quick_exit|abort|atexit|terminate|signal|sigaction"
                  r"|raise|kill|alarm|setitimer|getenv|setenv|unsetenv|setlocale)\b(?!::)")

_INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
_COMMENTS_AND_TEXTS = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)


def sources_below(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp", ".c"))


def allowed_to(source, room):
    """The rooms that a source, named by its path below src/, may include."""
    also = [rooms for prefix, rooms in ALSO_IN.items() if source.startswith(prefix)]
    return {room, *MAY_INCLUDE[room], *(other for rooms in also for other in rooms)}


def faults_of_source(source, text):
    """What is wrong with one source, named by its path below src/."""
    room = source.split("/")[0]
    if room not in MAY_INCLUDE:
        return [f"{source}: no room of this name"]
    faults = []
    for header in _INCLUDE.findall(text):
        if header.endswith(".cpp"):
            faults.append(f"{source}: includes a source, {header}")
        if header not in LOOSE.get(room, []) and header.split("/")[0] not in allowed_to(source,
                                                                                       room):
            faults.append(f"{source}: may not include {header}")
    if room in QUIET_ROOMS:
        code = _COMMENTS_AND_TEXTS.sub(" ", text)
        faults += [f"{source}: may not name {name}" for name in sorted(set(LOUD.findall(code)))]
    return faults


def faults_of_links(links):
    """What is wrong with the libraries; each line of the text is a room and what it links."""
    faults = []
    for room, *linked in (line.split() for line in links.splitlines()):
        also = [other for part, rooms in ALSO_IN.items() if part.startswith(f"{room}/")
                for other in rooms]
        allowed = {"sonaprobe_options", f"sonaprobe_{room}_calls",
                   *(f"sonaprobe_{other}" for other in [*MAY_INCLUDE[room], *also])}
        faults += [f"{room}: may not link {library}" for library in linked
                   if library.startswith("sonaprobe_") and library not in allowed]
        if room in QUIET_ROOMS:
            faults += [f"{room}: may not link {library}" for library in linked
                       if not library.startswith("sonaprobe_")]
    return faults
