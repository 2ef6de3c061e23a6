"""The code-name file of --decode: several, missing ones, pipes. Its lines are in decode.golden."""

import subprocess
import time

import pytest

from conftest import BUILD, PATIENCE, run_program
from processes import read_line, started
from records import pack_lines

CODES = "0x01300004 first\n"
UNNAMED = "::U-0x0130|00|001"


@pytest.fixture
def trace(raw):
    return raw("0x01300004\n0x01300005\n0x05241C19\n")


def names(*options):
    """The second word of each line, which is the name where neither time nor thread stands."""
    result = run_program("-s", "-H", "-i", *options)
    assert result.returncode == 0
    return [line[3:].split()[0] for line in result.stdout.splitlines()], result.stderr


def complaint(path):
    return f"There was a problem opening the file at '{path}'\n"


def test_the_last_code_name_file_counts(trace, tmp_path):
    (tmp_path / "one").write_text(CODES)
    (tmp_path / "two").write_text("0x01300004 second\n")
    listed, errors = names(f"-d{tmp_path}/one", f"--decode={tmp_path}/two", "-r", trace)
    assert listed == ["::second", "::second", "PlexoPort::Start"]
    assert errors == ""


def test_a_missing_file_alone_leaves_other_codes_unprinted(trace):
    assert names("-dmissing", "-r", trace) == (["PlexoPort::Start"], complaint("missing"))


def test_a_missing_file_with_all_complains_at_each_lookup_and_leaves_the_name_empty(trace):
    listed, errors = names("-a", "-dmissing", "-r", trace)
    assert listed == ["::", "::", "PlexoPort::Start"]
    assert errors == complaint("missing") + 2 * "Error opening file 'missing'\n"


def test_a_missing_file_in_the_basic_layout_too(trace):
    result = run_program("-B", "-dmissing", "-r", trace)
    words = f"{0:16x}  " * 4 + f"0x{0:016x}   0\n"
    assert result.stdout == 3 * f"{0:10.1f} {0:5.1f}  {'':30} {words}"
    assert result.stderr == complaint("missing") + 3 * "Error opening file 'missing'\n"


def test_a_missing_file_takes_the_place_of_one_given_before(trace, tmp_path):
    (tmp_path / "codes").write_text(CODES)
    listed, errors = names(f"-d{tmp_path}/codes", "-dmissing", "-r", trace)
    assert listed == ["::", "::", "PlexoPort::Start"]
    assert errors == complaint("missing") + 2 * "Error opening file 'missing'\n"


def test_a_file_takes_the_place_of_a_missing_one_given_before(trace, tmp_path):
    (tmp_path / "codes").write_text(CODES)
    listed, errors = names("-dmissing", f"-d{tmp_path}/codes", "-r", trace)
    assert listed == ["::first", "::first", "PlexoPort::Start"]
    assert errors == complaint("missing")


@pytest.mark.parametrize("path", ["/dev/null", "/"])
def test_a_file_without_lines_names_nothing(trace, path):
    assert names(f"-d{path}", "-r", trace) == ([UNNAMED, UNNAMED, "PlexoPort::Start"], "")


def test_the_names_of_a_pipe_hold_for_every_lookup(trace):
    result = subprocess.run([BUILD / "sonaprobe", "-s", "-H", "-d/dev/stdin", "-r", trace],
                            input=CODES, capture_output=True, text=True, timeout=PATIENCE,
                            check=True)
    assert result.stdout.count("::first ") == 2


def test_lines_are_out_before_the_names_of_a_pipe_are_waited_for(raw):
    with started(BUILD / "sonaprobe", "-s", "-H", "-S", "-d/dev/stdin",
                 "-r", raw("0x05241C19\n0x01300004\n"), stdin=subprocess.PIPE) as process:
        assert read_line(process.stdout).split()[1] == b"PlexoPort::Start"
        process.stdin.write(CODES.encode())
        process.stdin.close()
        assert read_line(process.stdout).split()[0] == b"::first"
        assert process.wait(PATIENCE) == 0


def test_a_file_may_change_while_records_come(tmp_path):
    codes = tmp_path / "codes"
    codes.write_text(CODES)
    with started(BUILD / "sonaprobe", "-s", "-H", "-S", f"-d{codes}", "-r", "/dev/stdin",
                 stdin=subprocess.PIPE) as process:
        def name():
            process.stdin.write(pack_lines("0x01300004"))
            process.stdin.flush()
            return read_line(process.stdout).split()[0]

        assert name() == b"::first"
        codes.write_text("0x01300004 another\n")
        time.sleep(0.1)
        assert name() == b"::another"
        codes.write_text("")
        time.sleep(0.1)
        assert name() == UNNAMED.encode()
        (tmp_path / "new").write_text(CODES)
        (tmp_path / "new").rename(codes)  # the open file is what counts
        time.sleep(0.1)
        assert name() == UNNAMED.encode()
        process.stdin.close()
        assert process.wait(PATIENCE) == 0
