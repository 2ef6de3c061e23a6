"""What is different where standard output is a terminal: colour, width, pager; and standard error:
progress."""

import os
import pty
import subprocess

import pytest

from conftest import BUILD
from scope import ENABLE, OVERLOAD, POINT, at_terminal, divisor, nested_calls, record, scope
from terminal import read_to_the_end

RED, AMBER, BLUE = "\x1b[1;38;5;160m", "\x1b[38;5;172m", "\x1b[38;5;68m"


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace.raw"
    path.write_bytes(nested_calls() + record(OVERLOAD, 1, 2000))
    return path


def test_colours_tell_driver_failure_and_dropout(trace):
    first, _, failed, _, _, dropout = at_terminal("lines", trace, columns=200)[0].splitlines()
    assert BLUE in first and AMBER not in first and RED not in first
    assert AMBER in failed and RED not in failed
    assert RED in dropout


@pytest.mark.parametrize("options, variables, colored", [
    ([], {}, True),
    ([], {"NO_COLOR": "1"}, False),
    ([], {"TERM": "dumb"}, False),
    (["--color=never"], {}, False),
    (["--color=always"], {"NO_COLOR": "1"}, True),
])
def test_colour_is_a_choice(options, variables, colored, trace):
    assert ("\x1b[" in at_terminal("lines", trace, *options, variables=variables)[0]) == colored


def test_a_pipe_has_no_colour_unless_asked(trace):
    assert "\x1b" not in scope("lines", trace).stdout
    assert "\x1b" in scope("lines", trace, "--color", "always").stdout


@pytest.mark.parametrize("columns", [40, 80, 132])
def test_lines_are_cut_at_the_terminals_width(columns, trace):
    text = at_terminal("lines", trace, "--color=never", columns=columns)[0]
    whole = scope("lines", trace).stdout.splitlines()
    for line, full in zip(text.splitlines(), whole, strict=True):
        assert len(line) <= columns
        assert line == full or line.endswith("…") or columns < 150


@pytest.mark.parametrize("column", ["max", "p99", "points"])
def test_the_column_that_sorts_is_shown_at_any_width(column, trace):
    text = at_terminal("stats", trace, "--sort", column, "--color=never", columns=60)[0]
    assert column in text.splitlines()[0].split()
    assert max(map(len, text.splitlines())) <= 60


def test_a_line_is_not_cut_inside_a_method_while_its_driver_can_give_way(trace):
    text = at_terminal("lines", trace, "--color=never", columns=64)[0]
    assert "…::setPathFormat" in text and "OrvelHDAPath::setP" not in text


def test_wrapped_lines_break_at_blanks(trace):
    text = at_terminal("lines", trace, "--wrap", "--color=never", columns=80)[0]
    assert text.count("\n") > 6
    assert set(text.split()) <= set(scope("lines", trace).stdout.split())


def test_wrapped_lines_lose_nothing(trace):
    cut = at_terminal("lines", trace, "--color=never", columns=4000)[0]
    text = at_terminal("lines", trace, "--wrap", "--color=never", columns=160)[0]
    assert max(map(len, text.splitlines())) <= 160
    assert "".join(text.split()) == "".join(cut.split())


def test_the_pager_gets_the_output(trace, tmp_path):
    text, status = at_terminal("lines", trace, keep_pager=True,
                               variables={"PAGER": f"cat >{tmp_path}/paged; echo read"})
    assert (text, status) == ("read\n", 0)
    assert (tmp_path / "paged").read_text().count("\n") == 6


def test_a_pager_that_is_left_early_is_no_failure(trace):
    trace.write_bytes(nested_calls() * 20_000)
    text, status = at_terminal("lines", trace, keep_pager=True, variables={"PAGER": "head -n 1"})
    assert (text.count("\n"), status) == (1, 0)


def test_no_pager_is_a_choice_and_a_pipe_has_none(trace):
    variables = {"PAGER": "echo paged"}
    assert "paged" not in at_terminal("lines", trace, "--no-pager", keep_pager=True,
                                      variables=variables)[0]
    assert "paged" not in scope("lines", trace, env=os.environ | variables).stdout


def slow_trace(terminal, seconds):
    """sonascope cut over a pipe that is fed for some seconds; what standard error gets."""
    feed = (f"import sys, time\nsys.stdout.buffer.write({divisor()!r})\n"
            f"for _ in range({int(seconds * 10)}):\n"
            f"    sys.stdout.buffer.write({record(ENABLE, POINT, 0)!r} * 5000)\n"
            "    sys.stdout.flush()\n    time.sleep(0.1)\n")
    feeder = subprocess.Popen(["python3", "-c", feed], stdout=subprocess.PIPE)
    subprocess.run([BUILD / "sonascope", "lines", "-"], stdin=feeder.stdout, stderr=terminal,
                   stdout=subprocess.DEVNULL, check=True)
    feeder.wait()


@pytest.mark.parametrize("seconds, shown", [(0.5, False), (1.5, True)])
def test_progress_is_shown_after_a_second_and_cleared(seconds, shown):
    terminal, end = pty.openpty()
    slow_trace(end, seconds)
    os.close(end)
    text = read_to_the_end(terminal).decode()
    assert ("MiB read" in text) == shown
    assert not shown or text.endswith("\r\x1b[K")
