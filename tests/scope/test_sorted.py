"""--sorted: a search gives what a look at each record gives, where the file keeps the promise; and
says so where it sees that it does not."""

import random

import pytest

from records import INVALID_MARKER, pack
from scope import ENABLE, OVERLOAD, divisor, record, scope

RECORDS = 60_000
SLACK = 1_000_000  # microseconds by which no record may be late


def sorted_trace(seed):
    """A trace whose threads are out of order by up to a second, each by itself in order; with empty
    and invalid slots, and stretches without any record. And its records' times, in microseconds."""
    chance = random.Random(seed)
    slots = [bytes(64)] * chance.choice([0, 3, 5000]) + [divisor()]
    latest, last, times = 0, {}, []
    while len(times) < RECORDS:
        if chance.random() < 0.001:
            filler = chance.choice([bytes(64), pack(INVALID_MARKER), divisor()])
            slots += [filler] * chance.choice([1, 1, 9000])
        latest += chance.choice([0, 1, 100, 1000]) + (chance.random() < 0.0005) * 30_000_000
        thread = chance.randrange(4)
        late = chance.choice([0, 0, 500, SLACK - 1]) if times else 0
        time = max(latest - late, last.get(thread, 0))
        last[thread] = time
        code = OVERLOAD if chance.random() < 0.1 else ENABLE
        slots.append(record(code, chance.choice([0, 1, 2]), time, thread=0xA0 + thread,
                            cpu=thread))
        times.append(time)
    return b"".join(slots), times


def windows(times, seed):
    """Stretches long and short, within the trace, at its ends and outside."""
    chance = random.Random(seed)
    end = max(times)
    for _ in range(6):
        begin = chance.randrange(end)
        yield begin, begin + chance.choice([1, 1000, end // 1000 + 1, end // 3])
    yield 0, end // 50
    yield end - 5, end + 5
    yield None, end // 3
    yield end // 2, None


def options(window, shift):
    for name, time in zip(("--from", "--to"), window):
        if time is not None:
            yield from (name, f"{time + shift}us")


WAYS = {"json": ("export", "--to", "json"), "csv": ("export", "--to", "csv", "--jobs", "3"),
        "plain": ("lines", "--plain", "-k", "-v", "-A")}


@pytest.mark.parametrize("seed", range(4))
def test_a_search_gives_what_a_scan_gives(tmp_path, seed):
    data, times = sorted_trace(seed)
    trace = tmp_path / "trace.raw"
    trace.write_bytes(data)
    new = tmp_path / "new.raw"
    chance = random.Random(seed)
    for window in windows(times, seed):
        kernel = chance.choice([(), ("--kernel-time",)])
        chosen = [trace, *options(window, 1_000_000 if kernel else 0), *kernel]
        found = []
        for sorted_option in ((), ("--sorted",)):
            result = scope("cut", *chosen, *sorted_option, "-o", new, "--force")
            kept = new.read_bytes() if result.returncode == 0 else None
            found.append((kept, result.returncode))
            new.unlink(missing_ok=True)
        assert found[0] == found[1], window
        command, *rest = WAYS[chance.choice(list(WAYS))]
        alike = [scope(command, *chosen, *rest, *more) for more in ((), ("--sorted",))]
        assert alike[0].stdout == alike[1].stdout, window
        assert (alike[1].stderr, alike[1].returncode) == ("", 0)


def broken(middle):
    """Slots enough to be searched, with these in their midst."""
    before = [record(ENABLE, 0, 1000 * n) for n in range(10_000)]
    after = [record(ENABLE, 0, 10_000_000 + 1000 * n) for n in range(10_000)]
    return b"".join([divisor(), *before, *middle, *after])


def test_what_lies_before_is_not_read(tmp_path):
    """Or the other divisor would be found, and the file's times be others."""
    trace = tmp_path / "trace.raw"
    slots = broken([])
    trace.write_bytes(slots[:64 * 3000] + divisor(48) + divisor() + slots[64 * 3000:])
    chosen = (trace, "--to", "json", "--from", "15s", "--to", "15.01s")
    found = scope("export", *chosen, "--sorted")
    assert (found.stdout.count("\n"), found.stderr, found.returncode) == (10, "", 0)


@pytest.mark.parametrize("middle, what", [
    ([divisor(48)], "another divisor takes over"),
    ([divisor(48), divisor(24)], "another divisor takes over"),
    ([record(ENABLE, 0, 8_000_000)], "time steps back"),
])
def test_a_broken_promise_that_is_seen_is_told(tmp_path, middle, what):
    trace = tmp_path / "trace.raw"
    trace.write_bytes(broken(middle))
    new = tmp_path / "new.raw"
    window = ("--from", "9.999s", "--to", "10.001s", "--sorted")
    message = f"sonascope: {trace}: {what}, so it cannot be searched; leave out --sorted\n"
    result = scope("cut", trace, *window, "-o", new)
    assert (result.stderr, result.returncode, new.exists()) == (message, 2, False)
    result = scope("export", trace, "--to", "csv", *window)
    assert (result.stderr, result.returncode) == (message, 2)


def test_a_pipe_is_read_whole(tmp_path):
    """Though the promise is broken: nothing is left out."""
    trace = tmp_path / "trace.raw"
    trace.write_bytes(broken([record(ENABLE, 0, 8_000_000)]))
    chosen = ("--to", "json", "--from", "9.999s", "--to", "10.001s")
    with trace.open() as stream:
        piped = scope("export", "-", *chosen, "--sorted", stdin=stream)
    assert (piped.stderr, piped.returncode) == ("", 0)
    assert piped.stdout == scope("export", trace, *chosen).stdout != ""


def test_calls_cannot_be_searched_for(tmp_path):
    trace = tmp_path / "trace.raw"
    trace.write_bytes(broken([]))
    result = scope("export", trace, "--to", "json", "--what", "calls", "--sorted")
    assert result.stderr == ("sonascope: --sorted is for json and csv of records: calls may begin "
                             "long before --from\n")
    assert result.returncode == 2
