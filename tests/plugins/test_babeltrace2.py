"""Raw files in Babeltrace 2: what its library, its program and the CTF it writes say of them."""

import os
import pathlib
import re
import subprocess

import pytest

from conftest import BUILD, needs_root, run_program
from plugin_traces import (DIVISOR, END, INVALID, SAMPLE, START, expected, traces)
from records import SLOT, pack

os.environ["BABELTRACE_PLUGIN_PATH"] = str(BUILD / "plugins/babeltrace2")
bt2 = pytest.importorskip("bt2")


def babeltrace2(*arguments):
    done = subprocess.run(["babeltrace2", *map(str, arguments)], check=False, text=True,
                          capture_output=True, timeout=60)
    assert done.returncode == 0, done.stderr
    return done.stdout


def messages(*paths):
    return list(bt2.TraceCollectionMessageIterator([str(path) for path in paths]))


def events(said):
    return [message for message in said if isinstance(message, bt2._EventMessageConst)]


def gaps(said):
    """(count, begin, end) of each stretch without events."""
    return [(message.count, message.beginning_default_clock_snapshot.ns_from_origin,
             message.end_default_clock_snapshot.ns_from_origin)
            for message in said if isinstance(message, bt2._DiscardedEventsMessageConst)]


def plain(field):
    return str(field) if isinstance(field, bt2._StringFieldConst) else int(field)


def shown(message):
    """An event as plugin_traces.expected() describes it."""
    context = message.event.common_context_field
    [qualifier] = context["qualifier"].labels
    # Babeltrace's own nanoseconds are made of doubles.
    clock = message.default_clock_snapshot
    return {"time": clock.value * 10**9 // clock.clock_class.frequency, "name": message.event.name,
            "qualifier": qualifier, "failure": bool(context["failure"]),
            **{name: int(context[name]) for name in ("thread", "cpu", "code", "object")},
            "fields": {name: plain(field) for name, field in message.event.payload_field.items()}}


def number_of(text):
    """A number as its text tells it: decimal, hexadecimal, seconds and their thousandths down to
    nanoseconds, or microseconds of a clock of 24 MHz."""
    if re.fullmatch(r"\d+(\.\d{3}){3}", text):
        return int(text.replace(".", ""))
    if "." in text:
        return round(float(text) * 24)
    return int(text, 16 if text.startswith("0x") else 10)


def differences(said, path):
    """Where the events differ from what sonascope says of the file, by slot."""
    wanted = expected(path)
    found = {int(message.event.common_context_field["slot"]): shown(message)
             for message in events(said)}
    different = sorted(wanted.keys() ^ found.keys())
    for slot in wanted.keys() & found.keys():
        want, have = wanted[slot], found[slot]
        for name, value in have["fields"].items():
            told = want["fields"].get(name)
            if isinstance(value, int) and isinstance(told, str):
                want["fields"][name] = number_of(told)
        if want != have:
            different.append(slot)
    return different


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    return traces(tmp_path_factory.mktemp("traces"))


NAMES = ["sample.raw", "texts.raw", "random.raw", "playback.raw"]


@pytest.mark.parametrize("name", NAMES)
def test_all_fields_of_all_events_are_those_that_sonascope_tells(made, name):
    said = messages(made[name])
    assert len(events(said)) > 1500
    assert differences(said, made[name]) == []


@pytest.mark.parametrize("name", NAMES)
def test_events_come_in_the_order_of_time_and_each_threads_in_its_own(made, name):
    said = events(messages(made[name]))
    times = [message.default_clock_snapshot.value for message in said]
    assert times == sorted(times)
    slots = {}
    for message in said:
        context = message.event.common_context_field
        slots.setdefault(int(context["thread"]), []).append(int(context["slot"]))
    assert all(of_thread == sorted(of_thread) for of_thread in slots.values())
    is_disordered = name in ("random.raw", "playback.raw")
    in_file = [int(message.event.common_context_field["slot"]) for message in said]
    assert (in_file != sorted(in_file)) == is_disordered


@pytest.mark.parametrize("damage", ["a value", "a thread", "a record"])
def test_damage_is_found(tmp_path, damage):
    content = bytearray(SAMPLE.read_bytes())
    at = 900 * SLOT.size
    if damage == "a record":
        del content[at:at + SLOT.size]
    else:
        content[at + {"a value": 16, "a thread": 40}[damage]] ^= 1
    damaged = tmp_path / "damaged.raw"
    damaged.write_bytes(content)
    assert differences(messages(damaged), SAMPLE) != []


@needs_root
def test_the_program_prints_the_texts_of_sonaprobes_lines():
    lines = run_program("-v", "-A", "-s", "-r", SAMPLE).stdout.splitlines()
    lines = [line for line in lines if "::" in line]
    printed = babeltrace2(SAMPLE).splitlines()
    texts = [re.search(r'\{ text = "((?:[^"\\]|\\.)*)"', line)[1] for line in printed]
    texts = [text.replace(r"\\t", "\t") for text in texts]
    assert len(texts) == len(lines) == 1782
    assert [(text, line) for text, line in zip(texts, lines) if not line.endswith(text)] == []


@pytest.mark.parametrize("name", NAMES)
def test_a_ctf_trace_reads_back_the_same(made, tmp_path, name):
    babeltrace2(made[name], "-o", "ctf", "-w", tmp_path / "ctf")
    assert babeltrace2(tmp_path / "ctf") == babeltrace2(made[name])
    assert differences(messages(tmp_path / "ctf"), made[name]) == []


def test_a_damaged_ctf_trace_does_not(tmp_path):
    babeltrace2(SAMPLE, "-o", "ctf", "-w", tmp_path / "ctf")
    [stream] = (tmp_path / "ctf").rglob("stream")
    content = stream.read_bytes()
    stream.write_bytes(content.replace(b"Start - ", b"Start _ ", 1))
    assert len(differences(messages(tmp_path / "ctf"), SAMPLE)) == 1


# Records lost before the first, within, between threads out of order, and after the last.
LOSSES = (DIVISOR + 2 * INVALID + pack(START, t=2400, a5=1) + pack(END, t=4800, a5=1) +
          3 * INVALID + bytes(64) + pack(START, t=7200, a5=1) + pack(START, t=10000, a5=2) +
          pack(START, t=9990, a5=3) + INVALID + b"cut")


def test_missing_records_are_told_where_they_are_missing(raw, tmp_path):
    path = raw("", "losses.raw")
    path.write_bytes(LOSSES)
    told = [(2, 100_000, 100_000), (4, 200_000, 300_000), (2, 416_666, 416_666)]
    assert gaps(messages(path)) == told
    babeltrace2(path, "-o", "ctf", "-w", tmp_path / "ctf")
    # CTF counts from packet to packet, so nothing can be missing before the first event.
    assert gaps(messages(tmp_path / "ctf")) == told
    assert differences(messages(tmp_path / "ctf"), path) == []


# Two divisors, and a clock that begins anew on a thread.
STEPS = [pack(0xFEEDFACE, t=24), pack(START, t=24_000_000, a5=1), pack(END, t=24_024_000, a5=1),
         pack(START, t=12, a5=1), pack(START, t=0, a5=2), pack(END, t=2412, a5=1),
         pack(0xFEEDFACE, t=1), pack(START, t=5, a5=1), pack(END, t=17, a5=1)]


def test_time_goes_on_after_a_step_back_and_another_divisor(tmp_path):
    path = tmp_path / "steps.raw"
    path.write_bytes(b"".join(STEPS))
    said = events(messages(path))
    times = [message.default_clock_snapshot.ns_from_origin for message in said]
    slots = [int(message.event.common_context_field["slot"]) for message in said]
    assert slots == [1, 2, 4, 3, 5, 7, 8]
    step = 1_001_000_000
    assert times[:5] == [step - 1_000_000, step, step, step + 500, step + 100_500]
    assert 0 < times[5] - times[4] <= 1000 and times[6] - times[5] == 12_000
    frequencies = [message.default_clock_snapshot.clock_class.frequency for message in said]
    assert frequencies == 5 * [24_000_000] + 2 * [1_000_000]
    babeltrace2(path, "-o", "ctf", "-w", tmp_path / "ctf")
    assert babeltrace2(tmp_path / "ctf") == babeltrace2(path)


SECOND = 24_000_000  # ticks


@pytest.mark.parametrize("times, late, is_step", [
    ((SECOND, 2 * SECOND), SECOND, False), ((SECOND, 2 * SECOND + 1), SECOND, True),
    (range(1, 65_536), 0, False), (range(1, 65_537), 0, True)])
def test_order_waits_for_a_second_and_for_65536_records(tmp_path, times, late, is_step):
    """The record of another thread stands last; one that is too late stays there."""
    path = tmp_path / "late.raw"
    path.write_bytes(DIVISOR + b"".join(pack(START, t=time, a5=1) for time in times) +
                     pack(START, t=late, a5=2))
    said = events(messages(path))
    values = [message.default_clock_snapshot.value for message in said]
    assert len(said) == len(times) + 1 and values == sorted(values)
    assert (int(said[-1].event.common_context_field["thread"]) == 2) == is_step


@pytest.mark.parametrize("options, wanted", [
    (["--begin=3602.5"], lambda time: time >= 3_602_500_000_000),
    (["--end=3601"], lambda time: time <= 3_601_000_000_000),
    (["--begin=3602.5", "--end=3602.6"],
     lambda time: 3_602_500_000_000 <= time <= 3_602_600_000_000)])
def test_trimming_keeps_what_lies_between(options, wanted):
    kept = babeltrace2(SAMPLE, "--clock-gmt", *options).splitlines()
    told = [fact["time"] for fact in expected(SAMPLE).values()]
    assert len(kept) == sum(map(wanted, told)) and 0 < len(kept) < len(told)


def test_two_files_and_a_ctf_trace_are_merged(made, tmp_path):
    babeltrace2(made["texts.raw"], "-o", "ctf", "-w", tmp_path / "ctf")
    said = events(messages(SAMPLE, made["playback.raw"], tmp_path / "ctf"))
    times = [message.default_clock_snapshot.ns_from_origin for message in said]
    assert times == sorted(times)
    counts = {}
    for message in said:
        counts[message.event.stream.trace.name] = counts.get(message.event.stream.trace.name, 0) + 1
    each = {name: len(expected(made[name])) for name in ("sample.raw", "playback.raw", "texts.raw")}
    assert sorted(counts.values()) == sorted(each.values())


def test_times_can_be_put_beside_those_of_traces_that_count_from_1970(tmp_path):
    component = ["-c", "source.sonaprobe.raw", "-p",
                 f'inputs=["{SAMPLE}"], clock-class-offset-s=1600000000,\n'
                 "    clock-class-offset-ns=-305264625, force-clock-class-origin-unix-epoch=yes"]
    babeltrace2(*component, "-o", "ctf", "-w", tmp_path / "ctf")
    lines = babeltrace2("--clock-seconds", tmp_path / "ctf", *component).splitlines()
    assert len(lines) == 2 * 1782
    assert all(line.startswith("[1600003600.000000000]") for line in lines[:2])


def test_an_iterator_goes_back_to_the_beginning():
    """A trimmer that begins late seeks, from the beginning on."""
    plugin = bt2.find_plugin("sonaprobe").source_component_classes["raw"]
    seen = []

    class Sink(bt2._UserSinkComponent):
        def __init__(self, config, params, obj):
            self._add_input_port("in")

        def _user_graph_is_configured(self):
            self._iterator = self._create_message_iterator(self._input_ports["in"])

        def _user_consume(self):
            first = [type(next(self._iterator)) for _ in range(100)]
            assert self._iterator.can_seek_beginning()
            self._iterator.seek_beginning()
            seen.append((first, [type(next(self._iterator)) for _ in range(100)]))
            raise bt2.Stop

    graph = bt2.Graph()
    source = graph.add_component(plugin, "source", {"inputs": [str(SAMPLE)]})
    sink = graph.add_component(Sink, "sink")
    graph.connect_ports(source.output_ports["out0"], sink.input_ports["in"])
    graph.run()
    [(first, again)] = seen
    assert first == again and len(set(first)) == 3


def weight(path):
    executor = bt2.QueryExecutor(bt2.find_plugin("sonaprobe").source_component_classes["raw"],
                                 "babeltrace.support-info", {"input": str(path), "type": "file"})
    return float(executor.query())


def test_the_weight_says_how_surely_a_file_is_a_trace(tmp_path):
    def of(content):
        (tmp_path / "file").write_bytes(content)
        return weight(tmp_path / "file")

    whole = SAMPLE.read_bytes()
    assert of(whole) == pytest.approx(0.95)
    assert of(whole[64:]) == pytest.approx(0.8)  # no divisor
    assert 0.5 <= of(DIVISOR + pack(0x01400004, t=1)) < 0.6  # another kind of trace
    assert of(whole[10:]) == of(b"") == of(bytes(6400)) == of(b"a text\n" * 100) == 0
    assert weight(tmp_path) == weight(tmp_path / "missing") == 0
