"""why finds what was planted: causes, culprits, and no dropout where there is none. In short what
`script/torture why` does at length."""

import pytest

from why import LEVELS, confusion_table, healthy, score


@pytest.mark.parametrize("level", LEVELS)
def test_causes_and_culprits_are_those_that_were_planted(level, tmp_path):
    tally = score(tmp_path, level, seed=101, count=90)
    assert tally.dropouts >= 90
    assert len({planted for planted, _ in tally.confusion}) == 9
    assert tally.keeps(level), (tally.faults, confusion_table(tally.confusion))


@pytest.mark.parametrize("seed", range(6))
def test_healthy_traces_have_no_findings(seed, tmp_path):
    assert healthy(tmp_path, seed).faults == []
