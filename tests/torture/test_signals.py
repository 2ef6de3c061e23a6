"""Signals at random and at exact moments under load: nothing hangs, nothing is torn or doubled, and
the harness would notice."""

import pytest

import setting
from signals import MUTANTS, torture

SEED = 1

# Each round finds a mutant out with a chance of four tenths at least (docs/reliability.md).
MUTANT_ROUNDS = 40


@pytest.fixture(scope="module", autouse=True)
def loaded():
    if not setting.take_private_shm():
        pytest.skip("no right to a /dev/shm of its own")
    with setting.load():
        yield


def test_signals_under_load_end_the_program_in_order(tmp_path):
    tally = torture(tmp_path, SEED, rounds=120)
    assert tally.faults == []
    assert tally.sent > 120
    assert tally.lines > 10_000
    assert tally.slots > 10_000


@pytest.mark.parametrize("mutant, scenes", MUTANTS.items(), ids=MUTANTS)
def test_the_harness_finds_out_a_handler_that(mutant, scenes, tmp_path):
    program = setting.BUILD / "tests" / mutant
    tally = None
    for seed in range(MUTANT_ROUNDS):
        tally = torture(tmp_path, seed, rounds=1, program=program, scenes=scenes, tally=tally)
        if tally.faults:
            return
    pytest.fail(f"no fault in {tally.rounds} rounds")
