"""What holds of any trace: sound ones have no findings, one planted damage is found and put right."""

import itertools
import json
import random

import pytest

from broken_files import swapped
from conftest import run_program

STORIES = ("playback", "usb", "displayport", "headset", "voice", "all")
SLOT = 64


def write_story(path, story, seed):
    result = run_program("write", story, path, "--seed", seed, program="sonaprobe-sim")
    assert result.returncode == 0
    return path


def slots_of(data):
    return [data[begin:begin + SLOT] for begin in range(0, len(data), SLOT)]


def info(*paths):
    """What info says of each file, and its status."""
    result = run_program("info", "--json", *paths, program="sonascope")
    return json.loads(result.stdout)["files"], result.returncode


def repaired(path, new):
    result = run_program("repair", path, "-o", new, "--force", program="sonascope")
    assert (result.stderr, result.returncode) == ("", 0)
    return new.read_bytes()


@pytest.fixture(scope="module")
def traces(tmp_path_factory):
    """Two traces of each story, as their slots."""
    folder = tmp_path_factory.mktemp("traces")
    return [slots_of(write_story(folder / "trace", story, seed).read_bytes())
            for story in STORIES for seed in (1, 2)]


def test_200_sound_traces_have_no_findings(tmp_path):
    paths = [write_story(tmp_path / f"{seed}.raw", story, seed)
             for seed, story in zip(range(1, 201), itertools.cycle(STORIES))]
    files, status = info(*paths)
    assert [file for file in files if file["state"] != "sound"] == []
    assert (len(files), status) == (200, 0)


def test_a_part_of_a_sound_trace_is_sound(traces, tmp_path):
    dice = random.Random(1)
    paths = []
    for number in range(100):
        slots = dice.choice(traces)
        begin = dice.randrange(1, len(slots) - 10)
        end = dice.randrange(begin + 1, len(slots))
        paths.append(tmp_path / f"{number}.raw")
        paths[-1].write_bytes(b"".join([slots[0], *slots[begin:end]]))
    files, status = info(*paths)
    assert [file for file in files if file["state"] != "sound"] == []
    assert status == 0


# One damage each: given the slots and a place, the broken file, the slots that it spares, and the
# kinds of findings that may name it.

def bytes_between(dice, slots, at):
    return b"".join(slots[:at]) + dice.randbytes(dice.randrange(1, 64)) + b"".join(slots[at:]), \
        slots, {"misaligned"}


def bytes_inside(dice, slots, at):
    data, place = b"".join(slots), at * SLOT + dice.randrange(8, 48)
    return data[:place] + dice.randbytes(dice.randrange(1, 64)) + data[place:], \
        slots[:at] + slots[at + 1:], {"misaligned"}


def bytes_gone(dice, slots, at):
    data, place, gone = b"".join(slots), at * SLOT + dice.randrange(0, 30), dice.randrange(1, 30)
    return data[:place] + data[place + gone:], slots[:at] + slots[at + 1:], {"misaligned"}


def garbage(dice, slots, at):
    count = dice.randrange(1, 6)
    return b"".join(slots[:at]) + dice.randbytes(count * SLOT) + b"".join(slots[at + count:]), \
        slots[:at] + slots[at + count:], {"garbage"}


def text(dice, slots, at):
    words = b"Nov 21 23:15:01 kernel: out of memory, killed a process\n" * 5
    return b"".join(slots[:at]) + words + b"".join(slots[at:]), slots, {"garbage", "misaligned"}


def zeros(dice, slots, at):
    count = dice.randrange(1, 6)
    return b"".join(slots[:at]) + bytes(count * SLOT) + b"".join(slots[at + count:]), \
        slots[:at] + slots[at + count:], {"empty_slots"}


def divisor_again(dice, slots, at):
    return b"".join(slots[:at]) + slots[0] + b"".join(slots[at:]), slots, {"repeated_divisor"}


def other_order(dice, slots, at):
    return b"".join(slots[:at]) + b"".join(swapped(slot) for slot in slots[at:]), slots, \
        {"other_byte_order"}


def cut(dice, slots, at):
    return b"".join(slots[:at]) + slots[at][:dice.randrange(1, SLOT)], slots[:at], {"cut_slot"}


DAMAGES = (bytes_between, bytes_inside, bytes_gone, garbage, text, zeros, divisor_again, other_order,
           cut)


@pytest.mark.parametrize("damage", DAMAGES, ids=lambda damage: damage.__name__)
def test_one_damage_is_named_at_its_slot_and_repaired(damage, traces, tmp_path):
    dice = random.Random(damage.__name__)
    path, new = tmp_path / "broken.raw", tmp_path / "new.raw"
    for _ in range(25):
        slots = dice.choice(traces)
        at = dice.randrange(8, len(slots) - 8)
        data, spared, kinds = damage(dice, slots, at)
        path.write_bytes(data)
        (file,), status = info(path)
        named = {finding["kind"] for finding in file["findings"] if finding["slot"] == at}
        assert named & kinds and status == 1, f"{kinds} at slot {at}: {file['findings']}"
        assert {finding["slot"] for finding in file["findings"]} == {at}
        assert repaired(path, new) == b"".join(spared)
        # Whether calls show that the lost records are missing depends on what they were.
        (file,), _ = info(new)
        for finding in file["findings"]:
            assert finding["kind"] == "missing_records" and spared != slots
            assert finding["slot"] < at <= finding["last_slot"]
        assert repaired(new, tmp_path / "again.raw") == new.read_bytes()


@pytest.mark.parametrize("story, least", [("playback", 0.9), ("usb", 0.8), ("displayport", 0.8),
                                          ("all", 0.85)])
def test_a_lost_stretch_is_named_where_it_is(story, least, tmp_path):
    dice = random.Random(story)
    slots = slots_of(write_story(tmp_path / "trace", story, 5).read_bytes())
    gaps = [(dice.randrange(10, len(slots) - 120), dice.choice((5, 10, 30, 100)))
            for _ in range(60)]
    paths = []
    for number, (at, count) in enumerate(gaps):
        paths.append(tmp_path / f"{number}.raw")
        paths[-1].write_bytes(b"".join(slots[:at] + slots[at + count:]))
    named = 0
    for (at, count), file in zip(gaps, info(*paths)[0]):
        for finding in file["findings"]:
            assert finding["kind"] == "missing_records", f"{count} slots gone at {at}"
            assert finding["slot"] < at <= finding["last_slot"], f"{count} slots gone at {at}"
        named += len(file["findings"]) == 1
    assert named / len(gaps) >= least
