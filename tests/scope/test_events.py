"""events: the reference in the terminal."""

import pytest

from schemas import valid
from scope import scope


def found(*words):
    result = scope("events", *words)
    assert (result.stderr, result.returncode) == ("", 0)
    return result.stdout.splitlines()


@pytest.mark.parametrize("words", [["0x05245C0C"], ["0x05245c0d"], ["OrvelHDAPath::enable"],
                                   ["hdap", "channelConfig", "stream:"],
                                   ["widget by widget"]])
def test_an_event_is_found_by_code_name_text_and_value(words):
    printed = found(*words)
    assert printed[5] == ("    values  stream, channelID, channelConfig, result, sampleRate, "
                          "bitsPerSample, channelCount, sampleFormat")
    assert printed[:4] == [
        "0x05245C0C  OrvelHDAPath::enable",
        "    Connects a stream through the codec, widget by widget, with its format.",
        "    start   Start - stream: %p channelID: %d channelConfig: %d",
        "    end     End - stream: %p channelID: %d result: 0x%08x",
    ]


def test_all_words_must_be_there():
    both = [line for line in found("timed", "OUT", "hdad") if line.startswith("0x")]
    assert both and all("OrvelHDADriver::" in line for line in both)
    assert len(both) < sum(line.startswith("0x") for line in found("hdad"))


def test_without_words_all_events_are_listed():
    assert sum(line.startswith("0x") for line in found()) == 585
    assert len(valid("events", scope("events", "--json").stdout)["events"]) == 585


def test_json_has_the_texts_with_their_values():
    [event] = valid("events", scope("events", "0x05245C0C", "--json").stdout)["events"]
    assert (event["code"], event["name"], event["class"]) == (
        "0x05245C0C", "OrvelHDAPath::enable", "23")
    assert event["does"].startswith("Connects a stream through the codec")
    assert event["texts"][0] == {
        "on": "start", "if": "", "verbose": False, "name": "OrvelHDAPath::enable",
        "text": "Start - stream: %p channelID: %d channelConfig: %d",
        "values": ["stream", "channelID", "channelConfig"]}


def test_nothing_found_names_the_nearest():
    result = scope("events", "setPathFromat")
    assert (result.stdout, result.returncode) == ("", 2)
    assert result.stderr == ("sonascope: no event fits 'setPathFromat'; the nearest are "
                             "'setPathFormat' and 'setPathSetFormat'\n")
