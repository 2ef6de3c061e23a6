"""What the program prints about itself: usage, version, class list."""

import pathlib
import subprocess

import pytest

from conftest import BUILD, run_program

FOLDER = pathlib.Path(__file__).parent
VERSION = "sonaprobe version:  100.45\n"
CLASS_LIST = (FOLDER / "class_list.txt").read_text()


def usage(name=BUILD / "sonaprobe"):
    return (FOLDER / "usage.txt").read_text().replace("%s", str(name))


@pytest.mark.parametrize("option", ["-h", "--help", "-?"])
def test_the_usage_is_printed_whole_on_standard_error_with_status_0(option):
    result = run_program(option)
    assert (result.returncode, result.stdout, result.stderr) == (0, "", usage())


def test_the_usage_names_the_program_as_it_was_called():
    result = subprocess.run(["any name", "-h"], executable=BUILD / "sonaprobe",
                            capture_output=True, text=True, check=False)
    assert result.stderr == usage("any name")


@pytest.mark.parametrize("option, complaint", [
    ("-Z", "invalid option -- 'Z'"),
    ("--nosuch", "unrecognized option '--nosuch'"),
    ("--indentoff", "unrecognized option '--indentoff'"),  # the usage text notwithstanding
    ("--indentOff=1", "option '--indentOff' doesn't allow an argument"),
    ("-b", "option requires an argument -- 'b'"),
    ("-X", "option requires an argument -- 'X'"),
    ("--read", "option '--read' requires an argument"),
])
def test_the_usage_follows_a_complaint_about_the_options_with_status_0(option, complaint):
    result = run_program("-k", option)
    assert (result.returncode, result.stdout) == (0, "")
    assert result.stderr == f"{BUILD / 'sonaprobe'}: {complaint}\n{usage()}"


def test_help_ends_the_program_before_what_follows():
    result = run_program("-v", "-h", "-k", "-b", "0")
    assert (result.returncode, result.stdout, result.stderr) == (0, "Verbose mode ON\n", usage())


@pytest.mark.parametrize("option", ["-V", "--version"])
def test_the_version_prints_verbose_or_not_and_parsing_goes_on(option, raw):
    trace = raw("")
    result = run_program(option, "-v", option, "-k", "-r", trace)
    assert result.stdout == (
        f"{VERSION}Verbose mode ON\n{VERSION}Will display kernel time\n"
        f"Will read raw data from file {trace}\n"
    )
    assert (result.returncode, result.stderr) == (0, "")


@pytest.mark.parametrize("option", ["-l", "--listclasses"])
def test_the_class_list_prints_on_standard_error_and_parsing_goes_on(option, raw):
    trace = raw("")
    result = run_program(option, "-v", option, "-r", trace)
    assert result.stderr == CLASS_LIST + CLASS_LIST
    assert result.stdout == f"Verbose mode ON\nWill read raw data from file {trace}\n"
    assert result.returncode == 0
