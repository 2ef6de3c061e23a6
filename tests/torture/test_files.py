"""cut and repair write whole files or none: in short what `script/torture files` does at length."""

import pytest

from files import torture
from setting import take_private_shm


def test_new_files_are_whole_or_not_there(tmp_path):
    if not take_private_shm():
        pytest.skip("needs root")
    tally = torture(tmp_path, 0, rounds=60)
    assert tally.faults == []
    assert tally.whole > 0 and tally.none > 0 and tally.kept > 0 and tally.full > 0
