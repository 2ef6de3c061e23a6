"""Commands that write make whole files or none: in short what `script/torture files` does at length."""

import pytest

from files import COMMANDS, torture
from setting import take_private_shm


def test_new_files_are_whole_or_not_there(tmp_path):
    if not take_private_shm():
        pytest.skip("needs root")
    tally = torture(tmp_path, 0, rounds=5)
    assert tally.faults == []
    assert tally.rounds == 5 * len(COMMANDS)
    assert min(tally.whole, tally.none, tally.kept, tally.full, tally.left) > 0
