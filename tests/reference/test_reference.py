"""The reference against calls and percentiles worked out by hand."""

import pytest

import calls
from call_statistics import Row
from cases import POINT_CODES, lines_of, read_cases


@pytest.mark.parametrize("case", read_cases(), ids=lambda case: case.title)
def test_case(case):
    assert list(lines_of(calls.read(case.slots, POINT_CODES))) == case.expected


@pytest.mark.parametrize("percent, count, rank", [
    (50, 1, 1), (50, 2, 1), (50, 3, 2), (50, 4, 2), (90, 9, 9), (90, 10, 9), (90, 11, 10),
    (99, 99, 99), (99, 100, 99), (99, 101, 100), (99, 200, 198), (99, 201, 199)])
def test_nearest_rank(percent, count, rank):
    times = list(range(count, 0, -1))  # so that a time is its rank
    assert Row(times=times).percentile(percent) == rank
