"""A disk that is full for a moment at each misalignment: whole slots, and a message for each record
that is not stored."""

import pytest

import setting
from disk import SLOT, torture


def test_a_disk_full_for_moments_costs_what_has_its_message_and_nothing_else(tmp_path):
    if not setting.take_private_shm():
        pytest.skip("no right to a /dev/shm of its own")
    with setting.load(burst=200):
        tally = torture(tmp_path, seed=1)
    assert tally.faults == []
    assert tally.moments == SLOT
    assert tally.messages > 1000
    assert tally.stored > 1000
