"""Signals at random moments under load: nothing hangs, nothing is torn or doubled, and the harness
would notice."""

import pytest

import setting
from signals import Round, torture

SEED = 1


@pytest.fixture(scope="module", autouse=True)
def loaded():
    if not setting.take_private_shm():
        pytest.skip("no right to a /dev/shm of its own")
    with setting.load():
        yield


def test_signals_at_random_moments_under_load_end_the_program_in_order(tmp_path):
    tally = torture(tmp_path, SEED, rounds=120)
    assert tally.faults == []
    assert tally.sent > 120
    assert tally.lines > 10_000
    assert tally.slots > 10_000


@pytest.mark.parametrize("mutant, scenes", [
    ("sonaprobe-acts-at-once", [Round.into_a_raw_file, Round.into_a_pipe]),
    ("sonaprobe-without-timer", [Round.into_a_pipe_that_nobody_reads]),
])
def test_the_harness_finds_out_a_handler_that(mutant, scenes, tmp_path):
    program = setting.BUILD / "tests" / mutant
    tally = None
    for seed in range(100):
        tally = torture(tmp_path, seed, rounds=2, program=program, scenes=scenes, tally=tally)
        if tally.faults:
            return
    pytest.fail(f"no fault in {tally.rounds} rounds")
