"""Completion in bash and zsh offers what the programs know."""

import re

import pytest

import shells
from conftest import needs_root, run_program
from option_table import options

UNNAMED = [str(number) for number in range(46, 51)]


@pytest.fixture(scope="module", params=["bash", "zsh"])
def shell(request, tmp_path_factory):
    folder = tmp_path_factory.mktemp(request.param)
    (folder / "kept.raw").touch()
    (folder / "folder").mkdir()
    shell = getattr(shells, request.param)(folder)
    yield shell
    shell.close()


def scenarios():
    listed = run_program("scenarios", program="sonaprobe-sim").stdout.splitlines()
    return [line.split()[0] for line in listed]


def same(offered, known):
    assert sorted(offered) == sorted(known)


@needs_root
@pytest.mark.parametrize("option", ["-X ", "-F ", "-k -X hdac -F "])
def test_classes_are_those_of_the_class_list(shell, option):
    listed = re.findall(r"'(....)'\t\|\t(\w+)", run_program("-l", "-h").stderr)
    assert len(listed) == 36
    named = [word for row in listed for word in row]
    same(shell.complete(f"sonaprobe {option}"), [*UNNAMED, *named])


@pytest.mark.parametrize("typed, completed", [
    ("sonaprobe -X hda", ["hdac", "hdad", "hdae", "hdap", "hdan", "hdaf", "hdaw"]),
    ("sonaprobe -kX nim", ["nimb"]),
    ("sonaprobe -Fnim", ["-Fnimb"]),
    ("sonaprobe -kFnim", ["-kFnimb"]),
    ("sonaprobe --filter-all-except=aeae", ["--filter-all-except=aeae"]),
    ("sonaprobe -X kAudioTOrvelPim", ["kAudioTOrvelPimlet"]),
    ("sonaprobe -r kep", ["kept.raw"]),
    ("sonaprobe -Ar kep", ["kept.raw"]),
    ("sonaprobe -wkep", ["-wkept.raw"]),
    ("sonaprobe -wfol", ["-wfolder/"]),
    ("sonaprobe --write=kep", ["--write=kept.raw"]),
    ("sonaprobe --indent", ["--indentOff"]),
    ("sonaprobe -I 0x20", ["0x20000", "0x200000"]),
    ("sonaprobe-sim fail KERN_KDSE", ["KERN_KDSETBUF", "KERN_KDSETREG", "KERN_KDSETUP"]),
    ("sonaprobe-sim fail KERN_KDSETUP EBU", ["EBUSY"]),
    ("sonaprobe-sim post kep", ["kept.raw"]),
    ("sonaprobe-sim write usb kep", ["kept.raw"]),
    ("sonaprobe-sim stat", ["status"]),
])
def test_a_word_is_completed(shell, typed, completed):
    offered = shell.complete(typed)
    # bash takes the "=" of a long option for the end of a word, zsh does not.
    same([word.rpartition("=")[2] for word in offered],
         [word.rpartition("=")[2] for word in completed])


@pytest.mark.parametrize("option", ["-I ", "--interest="])
def test_types_of_interest_are_those_of_the_kernel(shell, option):
    same([word.rpartition("=")[2] for word in shell.complete(f"sonaprobe {option}")],
         ["0x40000", "0x20000", "0x200000"])


# What zsh says of each option.
TEXTS = {
    "b": "size of the trace buffer", "a": "show codes that are not audio too",
    "d": "name codes by a file", "c": "print codes",
    "t": "changes nothing: local time is the default", "k": "print kernel time",
    "s": "print no local time", "g": "leave out the group", "m": "leave out the method",
    "u": "leave out the object", "f": "changes nothing", "i": "do not indent",
    "T": "do not switch the drivers' tracing on", "L": "switch tracing on and leave",
    "w": "keep the records in a raw file", "r": "print a raw file", "C": "print the processor",
    "A": "show the audio server too", "H": "leave out the thread",
    "I": "what the kernel puts into the buffer", "1": "value 1 of the filter",
    "2": "value 2 of the filter", "B": "basic layout", "S": "do not pad names",
    "D": "print what the buffer holds, and end", "R": "changes nothing", "F": "leave out a class",
    "X": "show a class alone", "v": "more texts, and messages", "V": "print the version",
    "l": "list the classes", "h": "print the usage",
}


def test_zsh_says_what_each_option_does():
    source = (shells.SOURCE / "completion/zsh/_sonaprobe").read_text().replace("'\\''", "\N{PRIME}")
    rows = re.findall(r"^    \S*?(--?[^\[]*)\[([^\]]+)\]", source, re.MULTILINE)
    names = {name: option.letter for option in options() for name in option.names}
    said = {}
    for spellings, text in rows:
        for spelling in re.findall(r"--?[\w-]*\w", spellings):
            word = spelling.lstrip("-")
            letter = names[word] if spelling.startswith("--") else word
            said.setdefault(letter, set()).add(text.replace("\N{PRIME}", "'"))
    assert said == {letter: {text} for letter, text in TEXTS.items()}


def test_an_optional_argument_is_not_looked_for_in_the_next_word(shell):
    assert "kept.raw" not in shell.complete("sonaprobe -w kep")


def test_every_long_option_is_offered(shell):
    offered = {word.rstrip("=-") for word in shell.complete("sonaprobe --")}
    assert offered == {f"--{name}" for option in options() for name in option.names}


def test_every_letter_is_offered(shell):
    offered = {word for word in shell.complete("sonaprobe -") if re.fullmatch("-[^-]", word)}
    assert offered == {f"-{option.letter}" for option in options()}


@pytest.mark.parametrize("command", ["play", "write"])
def test_scenarios_are_those_of_the_simulator(shell, command):
    same(shell.complete(f"sonaprobe-sim {command} "), scenarios())


def test_commands_are_those_of_the_simulators_help(shell):
    known = re.findall(r"^  (\w+)", run_program("help", program="sonaprobe-sim").stdout.partition(
        "Scenarios:")[0], re.MULTILINE)
    same([word for word in shell.complete("sonaprobe-sim ") if word != "--help"], known)


@pytest.mark.parametrize("command", ["play", "write", "fail"])
def test_the_simulators_options_are_those_of_its_help(shell, command):
    text = run_program("help", program="sonaprobe-sim").stdout
    [operands] = re.findall(rf"^  {command} (.*)", text, re.MULTILINE)
    offered = shell.complete(f"sonaprobe-sim {command} --")
    same([word.rstrip("=") for word in offered], re.findall(r"--\w+", operands))
