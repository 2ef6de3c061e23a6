"""File-size limits and full disks: what is printed stays whole lines, and the run goes on."""

import resource
import time

import pytest

from live import left_behind, stage, status, until

EVENT = "0x05245C0E a2={}"
LINE = "<- enable End - stream: {:#x} channelID: 0 result: 0x00000000"
OPTIONS = ("-s", "-H", "-g", "-S")


@pytest.mark.parametrize("mode", [(), ("-w/dev/null",)])
def test_lines_that_find_no_room_are_lost_and_the_next_begin_anew(stage, mode):
    run = stage.start(*mode, *OPTIONS)
    room = 100_000  # not a whole number of lines
    _, hard = resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE, (room, hard))
    stage.post("\n".join(EVENT.format(n) for n in range(1, 5001)))
    until(lambda: status()["pending"] == "0", "the records were read")
    time.sleep(0.1)
    assert run.out.stat().st_size == room

    resource.prlimit(run.process.pid, resource.RLIMIT_FSIZE, (hard, hard))
    stage.post("\n".join(EVENT.format(n) for n in range(5001, 5101)))
    until(lambda: status()["pending"] == "0", "the records were read")
    time.sleep(0.1)
    assert run.end() == 0
    lines = [LINE.format(n) for n in range(1, 5101)]
    printed = run.printed()
    begin = next(n for n, (line, expected) in enumerate(zip(printed, lines)) if line != expected)
    cut, *rest = printed[begin:]
    assert begin > 1000
    assert lines[begin].startswith(cut)
    assert rest == lines[-len(rest):]
    assert len(rest) >= 50
    assert run.errors() == []
    assert left_behind() == {}


def test_a_limit_that_leaves_no_room_for_the_buffer_ends_the_run_in_order(stage):
    run = stage.start(tracing=False, prefix=("prlimit", "--fsize=10000"))
    assert run.process.wait() == 1
    assert run.errors() == [f"{run.process.args[-3]}: trace facility failure, KERN_KDSETUP", ""]
    assert left_behind() == {}
