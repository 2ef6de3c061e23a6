"""Watches of sonascope catch that end at any moment, under load; and the harness would notice."""

import pytest

import catch
import setting
from records import pack

HEAD = pack(catch.DIVISOR, t=24)
MARKED = pack(catch.INVALID)


@pytest.fixture(scope="module")
def load():
    if not setting.take_private_shm():
        pytest.skip("no right to a /dev/shm of its own")
    with catch.loaded() as load:
        yield load


def test_watches_under_load_end_in_order_with_whole_files(tmp_path, load):
    tally = catch.torture(tmp_path, 1, 60, load)
    assert tally.faults == []
    assert tally.files > 10
    assert tally.slots > 10_000


def test_what_is_posted_is_seen_or_lost(tmp_path, load):
    tally = catch.torture(tmp_path, 2, 8, load, scenes=(catch.Round.counted,))
    assert tally.faults == []
    assert tally.posted > 100_000
    assert tally.killed > 0


def event(number):
    return pack(catch.EVENT, t=number, a2=number)


@pytest.mark.parametrize("data, faults", [
    (HEAD + event(7) + event(8) + MARKED + event(20) + event(1), []),
    (HEAD + event(7) + event(9) + event(10) + event(11), ["lost records without a mark"]),
    (HEAD + event(7) + event(7) + event(8) + event(9), ["lost records without a mark"]),
    (HEAD + event(7) + event(9) + MARKED + event(20) + event(21) + event(22), []),
    (HEAD + event(7)[:32], ["a torn file"]),
    (b"", ["a torn file"]),
    (event(7) + event(8), ["a slot of garbage"]),
    (HEAD + pack(5), ["a slot of garbage"]),
])
def test_a_file_is_judged(data, faults):
    assert catch.faults_of(data, buffer=2) == faults
