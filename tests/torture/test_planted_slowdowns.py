"""diff over the simulator's story: in short what `script/torture diff` does at length."""

from diff import torture


def test_what_is_planted_is_found_and_nothing_else(tmp_path):
    tally = torture(tmp_path, 1000, pairs=6, slowdowns=6)
    assert (tally.false, tally.found) == (0, 6)
