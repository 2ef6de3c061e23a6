"""why: what belongs to a dropout, who is blamed and how surely; each trace is made for one rule."""

import json
import os
import pathlib
import re
import subprocess

import jsonschema
import pytest

from conftest import BUILD, run_program
from io_trace import (BUDGET, CLIENT, CODEC_COMMAND, CONVERT, DRIVER, END, IO, IO_THREAD, MS, OTHER,
                      PIN_SENSE, POLL_REGISTER, START, STOP_AUDIO, ZERO_TIME_STAMP, Trace)
from records import unpack
from schemas import valid

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SCHEMA = json.loads((SOURCE / "docs/schema/why.schema.json").read_text())
SAMPLE = SOURCE / "docs/sample/playback-dropout.raw"
SLOW = 12 * MS  # longer than the budget


@pytest.fixture
def why(tmp_path):
    """The answer for a trace, its slots beside it."""

    def ask(trace):
        path = tmp_path / "trace.raw"
        path.write_bytes(trace.bytes())
        result = run_program("why", "--json", path, program="sonascope")
        assert result.stderr == ""
        answer = json.loads(result.stdout)
        jsonschema.validate(answer, SCHEMA)
        assert result.returncode == (1 if answer["dropouts"] else 0)
        return answer

    return ask


def one(answer):
    [dropout] = answer["dropouts"]
    return dropout


def blamed(dropout):
    culprit = dropout["culprit"]
    return culprit and (int(culprit["code"], 0), int(culprit["thread"], 0))


def trace_with(client=SLOW, overload=200, host=0, **options):
    """Healthy cycles, one with a dropout, healthy cycles; and when the dropout's client began."""
    trace = Trace(host)
    trace.healthy()
    begin = trace.cycle(client=client, overload=overload, **options)
    return trace, begin


def test_a_slow_client_that_nobody_held_up_is_shown(why):
    trace, _ = trace_with()
    trace.healthy()
    dropout = one(why(trace))
    assert (dropout["cause"], dropout["certainty"], blamed(dropout)) == ("client", "shown",
                                                                         (CLIENT, IO))
    assert dropout["budget_ns"] == pytest.approx(BUDGET / 0.024, abs=2)
    # 12 ms and what the cycle does besides, less the budget.
    assert dropout["lacking_ns"] == pytest.approx((SLOW + 900 - BUDGET) / 0.024, abs=2)


@pytest.mark.parametrize("host", [0, 10**9, -10**8])
@pytest.mark.parametrize("words", [True, False])
def test_the_host_clock_and_the_words_of_the_overload_change_nothing(why, host, words):
    trace, begin = trace_with(host=host, words=words)
    trace.call(begin - 2 * MS, begin + SLOW - 5_000)
    trace.healthy()
    answer = why(trace)
    dropout = one(answer)
    assert (dropout["cause"], blamed(dropout)) == ("blocked-by", (PIN_SENSE, DRIVER))
    assert dropout["lacking_ns"] == pytest.approx((SLOW + 900 - BUDGET) / 0.024, abs=20_000)
    assert bool(answer["limits"]) == (host != 0)


def test_the_innermost_call_is_blamed_though_it_prints_nothing_without_v(why):
    trace, begin = trace_with()
    released = begin + SLOW - 5_000
    trace.call(begin - 2 * MS, released + 300)
    trace.call(begin - 2 * MS + 100, released + 200, CODEC_COMMAND)
    trace.call(begin - 2 * MS + 200, released + 100, POLL_REGISTER)
    trace.healthy()
    dropout = one(why(trace))
    assert (dropout["cause"], dropout["certainty"], blamed(dropout)) == ("blocked-by", "likely",
                                                                         (POLL_REGISTER, DRIVER))


def test_with_two_candidates_nothing_is_more_than_possible(why):
    trace, begin = trace_with()
    trace.call(begin - MS, begin + SLOW - 5_000)
    trace.call(begin - MS, begin + SLOW - 6_000, CONVERT, OTHER, 6)
    trace.healthy()
    dropout = one(why(trace))
    assert (dropout["cause"], dropout["certainty"]) == ("blocked-by", "possible")


def test_who_waits_for_a_third_one_is_not_to_blame(why):
    trace, begin = trace_with()
    trace.call(begin - 3 * MS, begin + SLOW - 6_000, POLL_REGISTER, OTHER, 6)
    trace.call(begin - 2 * MS, begin + SLOW - 5_500)
    trace.healthy()
    assert blamed(one(why(trace))) == (POLL_REGISTER, OTHER)


@pytest.mark.parametrize("begin, end", [
    (-MS, SLOW - 4 * MS),  # ends long before
    (-MS, SLOW + 4 * MS),  # goes on long after
    (5 * MS, SLOW - 2_000),  # begins long after
    (-MS, None),  # never ends: its end is lost
])
def test_a_call_that_overlaps_blocks_nobody(why, begin, end):
    trace, client = trace_with()
    trace.call(client + begin, end and client + end)
    trace.healthy()
    assert one(why(trace))["cause"] == "client"


def test_one_who_stops_the_engine_has_changed_it_and_not_held_a_lock(why):
    trace, begin = trace_with()
    trace.call(begin - MS, begin + SLOW - 5_000, STOP_AUDIO)
    trace.healthy()
    dropout = one(why(trace))
    assert (dropout["cause"], blamed(dropout)) == ("engine-change", (STOP_AUDIO, DRIVER))


def test_work_on_the_threads_own_processor_preempts_it_and_elsewhere_does_not(why):
    for cpu, cause in ((3, "preempted"), (4, "client")):
        trace, begin = trace_with(cpu=3)
        for i in range(60):
            trace.call(begin + 4_000 + 4_500 * i, begin + 8_000 + 4_500 * i, cpu=cpu)
        trace.healthy()
        dropout = one(why(trace))
        assert dropout["cause"] == cause
        if cause == "preempted":
            assert dropout["culprit"]["cpu"] == 3
            assert blamed(dropout) == (PIN_SENSE, DRIVER)


def test_a_cycle_that_begins_late_has_no_culprit(why):
    trace, _ = trace_with(client=9_600, late=SLOW)
    trace.healthy()
    dropout = one(why(trace))
    assert (dropout["cause"], dropout["culprit"]) == ("late-wake", None)


def test_a_cycle_that_keeps_its_deadline_is_unknown_unless_a_stamp_has_moved_it(why):
    for moved, cause in ((0, "unknown"), (10 * MS, "clock")):
        trace = Trace()
        for _ in range(4):
            trace.put(trace.due + 100, ZERO_TIME_STAMP | START, a1=trace.sample, a2=trace.due)
            trace.healthy(6)
        trace.put(trace.due + 100, ZERO_TIME_STAMP | START, a1=trace.sample, a2=trace.due - moved)
        trace.cycle(overload=200, words=False)
        trace.healthy()
        dropout = one(why(trace))
        assert (dropout["cause"], blamed(dropout)) == (
            cause, (ZERO_TIME_STAMP, IO) if cause == "clock" else None)


def test_the_driver_call_on_the_io_thread_that_took_the_time_is_blamed(why):
    trace, begin = trace_with()
    trace.call(begin + 3_000, begin + SLOW - 3_000, CONVERT, IO, 0)
    trace.healthy()
    assert blamed(one(why(trace))) == (CONVERT, IO)


def test_what_is_late_because_the_cycle_before_was_has_its_cause(why):
    trace = Trace()
    trace.healthy()
    begin = trace.cycle(client=22 * MS, overload=200)
    trace.call(begin - MS, begin + 22 * MS - 5_000)
    trace.cycle(overload=200)
    trace.healthy()
    first, second = why(trace)["dropouts"]
    assert blamed(first) == blamed(second) == (PIN_SENSE, DRIVER)
    assert (first["carried"], second["carried"]) == (False, True)


@pytest.mark.parametrize("budgets, cause", [(0.2, "client"), (0.3, "lost-records")])
def test_an_overload_belongs_to_a_cycle_that_ended_a_quarter_budget_before(why, budgets, cause):
    trace, _ = trace_with(overload=400 + int(budgets * BUDGET))
    trace.healthy()
    assert one(why(trace))["cause"] == cause


def test_ends_without_starts_are_lost_records_and_the_slot_after_the_gap_is_named(why):
    trace, begin = trace_with(start=False)
    trace.healthy()
    dropout = one(why(trace))
    assert dropout["cause"] == "lost-records"
    slots = unpack(trace.bytes())
    first = next(i for i, slot in enumerate(slots) if slot["debugid"] == (CLIENT | END)
                 and slot["t"] == begin + SLOW)
    assert dropout["culprit"] == {"slot": first}


@pytest.mark.parametrize("at, cause", [(SLOW // 2, "lost-records"), (-40 * MS, "blocked-by")])
def test_no_cause_rests_on_records_across_an_invalid_slot(why, at, cause):
    """A call covers the silence; where records were lost in it, it may have ended and begun anew."""
    trace, begin = trace_with()
    trace.call(begin + 500, begin + SLOW - 300)
    trace.lose(begin + at)
    trace.healthy()
    assert one(why(trace))["cause"] == cause


def test_a_trace_that_begins_inside_the_io_thread_has_lost_nothing(why):
    trace, begin = trace_with()
    trace.put(begin + SLOW - 100, IO_THREAD | END)
    trace.healthy()
    assert one(why(trace))["cause"] == "client"


def test_near_misses_are_counted_and_no_dropouts(why):
    trace, _ = trace_with(overload=None)
    trace.healthy()
    answer = why(trace)
    assert answer["dropouts"] == answer["findings"] == []
    [thread] = answer["io_threads"]
    assert (thread["cycles"], thread["near_misses"], thread["overloaded"]) == (41, 1, 0)
    assert thread["max_ns"] < BUDGET / 0.024
    # The first cycle's due time is not known.
    assert thread["healthy"] == 39


def test_a_thread_that_starts_anew_is_not_late_for_what_it_was_told_before(why):
    trace = Trace()
    trace.healthy()
    trace.put(trace.free, IO_THREAD | END)
    trace.due += 200 * BUDGET
    trace.put(trace.due, IO_THREAD | START, a1=412, a2=48000)
    trace.healthy()
    [thread] = why(trace)["io_threads"]
    assert (thread["cycles"], thread["near_misses"], thread["healthy"]) == (40, 0, 38)


def test_dropouts_with_one_culprit_are_one_finding(why):
    trace = Trace()
    for _ in range(3):
        trace.healthy()
        begin = trace.cycle(client=SLOW, overload=200)
        trace.call(begin - MS, begin + SLOW - 5_000)
    trace.healthy()
    answer = why(trace)
    [finding] = answer["findings"]
    assert finding["dropouts"] == [dropout["slot"] for dropout in answer["dropouts"]]
    assert len(finding["dropouts"]) == 3


def test_the_sample_is_explained_as_readme_does_from_a_pipe_too():
    asked = [BUILD / "sonascope", "why", "--color=never"]
    result = subprocess.run([*asked, SAMPLE], capture_output=True, text=True, check=False)
    assert (result.stderr, result.returncode) == ("", 1)
    head, _, finding = result.stdout.partition("\n\n")
    assert head == "1 dropout, 1 finding"
    assert finding.partition("\n")[0] == (
        "blocked-by  OrvelHDAController::pollRegister on thread 0x9e  likely")
    lines = result.stdout.splitlines()
    assert len(lines) < 24
    [dropout] = [line for line in lines if "QuorraHAL::OVERLOAD" in line]
    assert "  slot 944  " in dropout
    piped = subprocess.run([*asked, "-"], input=SAMPLE.read_bytes(), capture_output=True,
                           check=False)
    assert piped.stdout.decode() == result.stdout


@pytest.fixture(scope="module")
def dropouts(tmp_path_factory):
    """A trace with nine dropouts of known causes, and what why says of it."""
    trace = tmp_path_factory.mktemp("dropouts") / "dropouts.raw"
    run_program("write", "dropouts", trace, "--seed", "3", "--level", "easy", program="sonaprobe-sim")
    return trace, valid("why", run_program("why", "--json", trace, program="sonascope").stdout)


def selected(trace, *options):
    result = run_program("why", "--json", trace, *options, program="sonascope")
    answer = valid("why", result.stdout)
    assert result.returncode == (1 if answer["dropouts"] else 0)
    return answer


def test_a_selection_tells_the_dropouts_of_whose_evidence_a_record_is_selected(dropouts):
    trace, whole = dropouts
    assert len(whole["dropouts"]) == 9
    for dropout in whole["dropouts"]:
        begin, end = f"{dropout['time_ns']}ns", f"{dropout['time_ns'] + 1}ns"
        answer = selected(trace, "--from", begin, "--to", end)
        # The cause is that of the whole trace.
        assert answer["dropouts"] == [dropout]
        assert [finding["dropouts"] for finding in answer["findings"]] == [[dropout["slot"]]]
        assert answer["io_threads"] == whole["io_threads"]
        if dropout["culprit"] and "method" in dropout["culprit"]:
            method = selected(trace, "--method", dropout["culprit"]["method"])
            assert dropout in method["dropouts"]
    assert selected(trace, "--thread", "0xDEAD")["dropouts"] == []
    result = run_program("why", trace, "--from", "10h", program="sonascope")
    assert result.stdout.startswith("No dropout of the 9 in this trace is selected.\n")


def test_findings_name_their_culprit(dropouts):
    _, whole = dropouts
    by_slot = {dropout["slot"]: dropout for dropout in whole["dropouts"]}
    for finding in whole["findings"]:
        assert finding["culprit"] == by_slot[finding["dropouts"][0]]["culprit"]
    assert any(finding["culprit"] for finding in whole["findings"])


def test_a_trace_of_no_records_is_told_in_few_lines(tmp_path):
    trace = tmp_path / "divisor.raw"
    trace.write_bytes(SAMPLE.read_bytes()[:64])
    assert run_program("why", trace, program="sonascope").stdout == (
        "No dropout in this trace.\n\nWhat this trace cannot show\n  The trace has no records.\n")


def test_without_a_dropout_it_says_so_and_what_is_missing(tmp_path):
    trace = tmp_path / "voice.raw"
    run_program("write", "voice", trace, program="sonaprobe-sim")
    result = run_program("why", trace, program="sonascope")
    assert (result.stderr, result.returncode) == ("", 0)
    assert result.stdout.startswith("No dropout in this trace.\n")
    assert "The audio server has left no records" in result.stdout


PAGE = (SOURCE / "docs/why.md").read_text()
EXAMPLES = re.findall(r"^```\n\$ sonaprobe-sim ([^\n]*)\n\$ sonascope why one.raw\n(.*?)^```", PAGE,
                      re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("command, finding", EXAMPLES)
def test_the_pages_examples_are_what_the_program_prints(command, finding, tmp_path):
    trace = tmp_path / "one.raw"
    arguments = [trace if word == "one.raw" else word for word in command.split()]
    run_program(*arguments, program="sonaprobe-sim")
    result = run_program("why", trace, program="sonascope")
    printed = result.stdout.split("\n\n")[1].splitlines()
    cut = [line if len(line) <= 100 else line[:99] + "…" for line in printed]
    assert cut == finding.splitlines()


def test_the_page_has_an_example_of_each_cause():
    causes = SCHEMA["definitions"]["cause"]["enum"]
    assert re.findall(r"--cause (\S+)", " ".join(command for command, _ in EXAMPLES)) == causes
