"""Raw files in KernelShark: what its library says of them, and its window."""

import re
import shutil
import subprocess

import pytest

from conftest import BUILD
from kernelshark_window import colours, take_picture
from plugin_traces import DIVISOR, END, INVALID, SAMPLE, START, expected, traces
from records import SLOT, pack

PLUGIN = BUILD / "plugins/kernelshark/plugin-sonaprobe.so"
ARROWS = {"none": "", "start": "-> ", "end": "<- ", "both": ""}


def dump(*files):
    """The entries as KernelShark's views show them: each a list of fields."""
    done = subprocess.run([BUILD / "kshark_dump", PLUGIN, *map(str, files)], check=False, text=True,
                          capture_output=True, timeout=60)
    assert done.returncode == 0, done.stderr
    lines = [line.split("\t") for line in done.stdout.splitlines()]
    return [line for line in lines if line[0].isdigit()]


def wanted_of(fact):
    """What the columns are to show of a record that sonascope describes."""
    fields = fact["fields"]
    text = fields.get("text") or ", ".join(f"{fields[f'arg{n}']:#x}" for n in (1, 2, 3, 4))
    return (fact["time"], fact["cpu"], f"thread {fact['thread']:#x}", fact["name"],
            ARROWS[fact["qualifier"]] + text, fact["object"])


def shown_of(entry):
    _, time, cpu, _, task, name, info, *_ = entry
    text, _, address = info.partition("  object: ")
    return int(time), int(cpu), task, name, text, int(address or "0", 16)


def numbers_of(fact):
    """The values that are numbers, as they stand in 64 bits with a sign."""
    words = [str(value) for name, value in fact["fields"].items() if name != "text"]
    numbers = [int(word, 16 if word.startswith("0x") else 10) for word in words
               if re.fullmatch(r"-?\d+|0x[0-9a-f]+", word)]
    return {number - 2**64 if number >= 2**63 else number for number in numbers}


def differences(entries, path):
    """The slots whose entries are not what sonascope says of the file."""
    wanted = expected(path)
    found = {int(entry[7].removeprefix("slot ")): entry for entry in entries if entry[7]}
    different = sorted(wanted.keys() ^ found.keys())
    for slot in wanted.keys() & found.keys():
        fact, entry = wanted[slot], found[slot]
        numbers = {int(field.rpartition("=")[2]) for field in entry[8:]}
        has_numbers = "text" not in fact["fields"] or numbers_of(fact) <= numbers
        if wanted_of(fact) != shown_of(entry) or not has_numbers:
            different.append(slot)
    return different


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    return traces(tmp_path_factory.mktemp("traces"))


NAMES = ["sample.raw", "texts.raw", "random.raw", "playback.raw"]


@pytest.mark.parametrize("name", NAMES)
def test_the_columns_are_what_sonascope_tells(made, name):
    entries = dump(made[name])
    assert len(entries) > 1500
    assert differences(entries, made[name]) == []
    times = [int(entry[1]) for entry in entries]
    assert times == sorted(times)


@pytest.mark.parametrize("damage", ["a value", "a thread", "a record"])
def test_damage_is_found(tmp_path, damage):
    content = bytearray(SAMPLE.read_bytes())
    at = 900 * SLOT.size
    if damage == "a record":
        del content[at:at + SLOT.size]
    else:
        content[at + {"a value": 16, "a thread": 40}[damage]] ^= 1
    damaged = tmp_path / "damaged.raw"
    damaged.write_bytes(content)
    assert differences(dump(damaged), SAMPLE) != []


def test_missing_records_stand_between_the_others(tmp_path):
    path = tmp_path / "losses.raw"
    path.write_bytes(DIVISOR + pack(START, t=2400, a5=1) + 3 * INVALID + bytes(64) +
                     pack(END, t=4800, a5=1) + INVALID)
    shown = [(int(time), name, info) for _, time, _, _, _, name, info, *_ in dump(path)]
    assert [entry for entry in shown if entry[1] == "missed_events"] == [
        (200_000, "missed_events", "records missing: 4"),
        (200_000, "missed_events", "records missing: 1")]
    assert [name for _, name, _ in shown] == ["OrvelHDAPath::enable", "missed_events",
                                              "OrvelHDAPath::enable", "missed_events"]


def test_two_files_are_two_streams_in_one_order(made):
    entries = dump(SAMPLE, made["playback.raw"])
    times = [int(entry[1]) for entry in entries]
    assert times == sorted(times)
    for number, name in enumerate(("sample.raw", "playback.raw")):
        of_stream = [entry for entry in entries if entry[0] == str(number)]
        assert differences(of_stream, made[name]) == []


def test_threads_too_large_for_its_numbers_stay_apart(tmp_path):
    threads = [1, 2**31 - 1, 2**31, 2**32 + 1, 2**64 - 1, 2**64 - 2]
    path = tmp_path / "threads.raw"
    path.write_bytes(DIVISOR + b"".join(pack(START, t=n, a5=thread, cpu=2**32 - 1 - n)
                                        for n, thread in enumerate(threads)))
    entries = dump(path)
    assert [entry[4] for entry in entries] == [f"thread {thread:#x}" for thread in threads]
    assert len({entry[3] for entry in entries}) == len(threads)
    assert {entry[2] for entry in entries} == {"255"}


@pytest.fixture
def window(tmp_path):
    """Opens the sample in the program, with the plugin or without: the title, and the colours."""
    picture = tmp_path / "window.png"

    def open_with(*options):
        title = take_picture(picture, *options, SAMPLE, "--cpu", "2,4", "--pid", "7250,158")
        return title, colours(picture) if picture.exists() else {}

    return open_with


needs_screen = pytest.mark.skipif(
    not all(map(shutil.which, ("kernelshark", "xvfb-run", "xdotool", "import"))),
    reason="needs KernelShark, Xvfb, xdotool and ImageMagick")


@needs_screen
def test_the_program_draws_the_sample(window):
    title, seen = window("-p", PLUGIN)
    assert title == f"Kernel Shark ({SAMPLE})"
    # Bars on four rows: each thread has a colour, and each processor those of its threads.
    assert len(seen) >= 3 and sum(seen.values()) > 10_000


@needs_screen
def test_without_the_plugin_nothing_is_drawn(window):
    title, seen = window()
    assert (title, seen) == ("Kernel Shark", {})
