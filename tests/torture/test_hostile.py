"""Hostile traces, in short what `script/torture hostile` does with each of them at length."""

import resource

import hostile

LIMIT = 48 << 20
GROWING = ("stats --by thread", "why", "diff", "timeline", "export sqlite", "export chrome")
COUNTED = ("info", "lines", "stats --by thread", "tree", "why", "diff", "timeline",
           "export sqlite", "export speedscope", "export folded")


def some(names):
    return {name: hostile.COMMANDS[name] for name in names}


def test_each_kind_of_trace_has_an_answer(tmp_path):
    tally = hostile.Tally()
    for kind in hostile.kinds():
        hostile.check_answers([kind], 2_000, tmp_path, tally,
                              some(["info", "why", "timeline", "export sqlite"]))
    assert tally.faults == []


def test_steps_grow_in_proportion(tmp_path):
    tally = hostile.Tally()
    kinds = ["nested-ended", "threads-in-turn", "objects", "back", "divisors", "dropouts"]
    hostile.check_growth(kinds, 500, tmp_path, tally, some(COUNTED))
    assert tally.faults == []


def test_what_is_quadratic_is_found_out(tmp_path):
    assert hostile.growth(hostile.QUADRATIC, ["nested"], 1_000, tmp_path) > hostile.MOST_GROWTH


def test_too_little_memory_is_told(tmp_path):
    def limit():
        resource.setrlimit(resource.RLIMIT_DATA, (LIMIT, LIMIT))

    tally = hostile.Tally()
    hostile.check_answers(["threads"], 100_000, tmp_path, tally, some(GROWING), limit)
    assert tally.faults == []
    assert tally.refused > 0
