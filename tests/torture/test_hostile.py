"""Hostile traces, in short what `script/torture hostile` does with each of them at length."""

import resource

import hostile

LIMIT = 48 << 20
GROWING = ("stats --by thread", "why", "diff", "timeline", "export sqlite", "export chrome")


def test_each_kind_of_trace_has_an_answer(tmp_path):
    tally = hostile.Tally()
    for kind in hostile.kinds():
        hostile.check_answers(kind, 2_000, tmp_path, tally,
                              ["info", "why", "timeline", "export sqlite"])
    assert tally.faults == []


def test_too_little_memory_is_told(tmp_path):
    def limit():
        resource.setrlimit(resource.RLIMIT_DATA, (LIMIT, LIMIT))

    tally = hostile.Tally()
    hostile.check_answers("threads", 100_000, tmp_path, tally, GROWING, limit)
    assert tally.faults == []
    assert tally.refused > 0
