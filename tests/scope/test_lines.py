"""lines: time from the first record, time since the last, depth, duration, selection."""

import json

import pytest

from records import pack
from schemas import valid
from scope import ENABLE, END, FORMAT, OVERLOAD, POINT, START, divisor, nested_calls, record, scope


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace.raw"
    path.write_bytes(nested_calls())
    return path


def lines(*arguments):
    result = scope("lines", *arguments)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout.splitlines()


def test_a_line_says_when_where_and_how_long(trace):
    assert lines(trace) == [
        "   0.000 000                 0xa5  0  -> OrvelHDAPath::enable (0x10)  "
        "Start - stream: 0x0 channelID: 0 channelConfig: 0",
        "   0.000 100   +100 µs       0xa5  0    -> OrvelHDAPath::setPathFormat (0x10)  Start - "
        "sampleRate: 0 bitsPerSample: 0 channelCount: 0 sampleFormat: 0x00000000 channelConfig: "
        "0x00000000 context: 0x00000000",
        "   0.000 500   +400 µs       0xa5  0    <- OrvelHDAPath::setPathFormat (0x10)  [400 µs]  "
        "End - result: 0xe00002bc",
        "   0.001 000   +500 µs       0xa5  0  <- OrvelHDAPath::enable (0x10)  [1.00 ms]  "
        "End - stream: 0x0 channelID: 0 result: 0x00000000",
        "   0.001 500                 0xb6  0     OrvelHDAPath::enable (0x10)  "
        "sampleRate: 0 bitsPerSample: 0 channelCount: 0 sampleFormat: 0x00000000",
    ]


def test_time_never_wraps(trace):
    hour = 3_600_000_000
    trace.write_bytes(divisor() + b"".join(record(ENABLE, POINT, n * hour) for n in range(3)))
    assert [line.split()[0] for line in lines(trace)] == ["0.000", "3600.000", "7200.000"]


def test_kernel_time_is_the_clocks_own(trace):
    assert [line[:12] for line in lines(trace, "--kernel-time", "--from", "1.0005s")] == [
        "   1.000 500", "   1.001 000", "   1.001 500"]


def test_an_event_without_decoder_has_its_number_or_its_name(trace, tmp_path):
    trace.write_bytes(divisor() + record(0x01400004, POINT, 0, a2=0xFF, a3=1))
    assert lines(trace)[0].endswith("     code 0x01400004  0x10 0xff 0x1 0x0")
    (tmp_path / "codes").write_text("0x01400004 MACH_\x1b[31mfault\n")
    named = lines(trace, "--names", tmp_path / "codes")
    assert named[0].endswith("     MACH_\\x1b[31mfault  0x10 0xff 0x1 0x0")


def test_control_characters_of_a_file_are_escaped(trace):
    # Four characters of a text: the bytes of an argument.
    listed = json.loads(scope("events", "%c%c%c%c", "--json").stdout)["events"]
    assert listed
    words = {f"a{n}": 0x1B5B324A_1B5B324A for n in (2, 3, 4)}
    data = [record(int(event["code"], 16), qualifier, 0, **words)
            for event in listed for qualifier in range(4)]
    trace.write_bytes(divisor() + b"".join(data))
    text = scope("lines", trace).stdout
    assert "\\x1b[2J" in text
    assert not [c for c in text if c < " " and c != "\n"]
    assert "\x1b" not in scope("lines", trace, "--json").stdout


@pytest.mark.parametrize("options, times", [
    (["--from", "100us", "--to", "1ms"], [100, 500]),
    (["--thread", "0xb6"], [1500]),
    (["--failed"], [500]),
    (["--where", "result != 0"], [500]),
    (["--longer", "500us"], [0, 1000]),
    (["--method", "setPathFormat"], [100, 500]),
    (["--driver", "OrvelHDAPath", "--to", "50us"], [0]),
    (["--method", "enable", "--method", "setPathFormat", "--longer", "1us"], [0, 100, 500, 1000]),
    (["--cpu", "3"], []),
])
def test_selection(options, times, trace):
    found = [valid("lines", line) for line in lines(trace, "--json", *options)[1:]]
    assert [one["time_ns"] // 1000 for one in found] == times


def test_selection_reads_a_pipe_twice_where_it_must(trace):
    with trace.open() as stream:
        result = scope("lines", "-", "--longer", "500us", stdin=stream)
    assert result.stdout.count("OrvelHDAPath::enable") == 2
    assert result.stdout.count("\n") == 2


def test_json_says_all_that_a_line_says(trace):
    header, *documents = [valid("lines", line) for line in lines(trace, "--json")]
    assert header == {"schema": "sonascope/lines/1", "file": str(trace)}
    assert documents[2] == {
        "slot": 3, "time_ns": 500_000, "thread": "0x00000000000000a5", "cpu": 0,
        "code": "0x05245C1C", "qualifier": "end", "depth": 1, "driver": "OrvelHDAPath",
        "method": "setPathFormat", "object": "0x0000000000000010", "since_last_ns": 400_000,
        "duration_ns": 400_000, "failure": True, "text": "End - result: 0xe00002bc",
        "values": {"result": 0xE00002BC}}


def test_values_of_64_bits_are_strings(trace):
    trace.write_bytes(divisor() + record(0x05240C18, START, 0, a2=(1 << 64) - 1, a3=1 << 63))
    [document] = [valid("lines", line) for line in lines(trace, "--json")[1:]]
    assert document["values"]["powerStateOrdinal"] == "-1"
    assert document["values"]["device"] == "0x0000000000000010"
    assert document["values"]["currentPowerState"] == str(-(1 << 63))


@pytest.mark.parametrize("option, value, message", [
    ("--from", "12", "--from: '12' is no time; give a number and a unit, such as 12.345s, 20ms or "
     "412us"),
    ("--around", "20ms", "--around: '20ms' is not dropout=TIME, such as dropout=20ms"),
    ("--cpu", "two", "--cpu: 'two' is no number, decimal or after 0x hexadecimal"),
    ("--driver", "OrvelHDAPth", "--driver: no driver is called 'OrvelHDAPth'; the nearest are "
     "'OrvelHDAPath', 'OrvelHDATDM' and 'OrvelHDANode'"),
    ("--where", "result = 3", "--where: write == to compare\n  result = 3\n         ^"),
    ("--color", "red", "--color: 'red' is none of auto, always, never; see sonascope lines "
     "--help"),
    ("--names", "nowhere", "could not open nowhere: No such file or directory"),
])
def test_what_an_option_cannot_be_is_said(option, value, message, trace):
    result = scope("lines", trace, option, value)
    assert (result.stdout, result.stderr, result.returncode) == ("", f"sonascope: {message}\n", 2)


def test_an_overload_is_inside_the_calls_around_it(trace):
    trace.write_bytes(b"".join([
        divisor(), record(0x21040008, START, 0), record(OVERLOAD, START, 10),
        record(0x21040008, END, 20), record(ENABLE, END, 30)]))
    found = [valid("lines", line) for line in lines(trace, "--json")[1:]]
    assert [one["depth"] for one in found] == [0, 1, 0, 0]
    assert ["duration_ns" in one for one in found] == [False, False, True, False]


def test_a_step_back_cuts_calls_off(trace):
    trace.write_bytes(b"".join([divisor(), record(ENABLE, START, 500), record(FORMAT, POINT, 0),
                                pack(ENABLE | END, t=24_000_024, a1=0x10, a5=0xA5)]))
    found = [valid("lines", line) for line in lines(trace, "--json")[1:]]
    assert [one["depth"] for one in found] == [0, 0, 0]
    assert [one["time_ns"] for one in found] == [0, 0, 1000]
    assert "duration_ns" not in found[2]
