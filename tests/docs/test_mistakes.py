"""Sixty mistakes and more at sonascope, sonaprobe-sim and the scripts: each message says what is
wrong, where, and, where that is not plain, what to do; nothing is printed or written besides."""

import os
import pathlib
import subprocess

import pytest

from conftest import needs_root, run_program

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
TROUBLE = 2  # sonascope's exit status

NO_TIME = "is no time; give a number and a unit, such as 12.345s, 20ms or 412us"
NO_NUMBER = "is no number, decimal or after 0x hexadecimal"
TWO_TRACES = "two traces are compared, or two windows of one: give B, or --a and --b"

# What is given to sonascope: what it says. trace.raw and other.txt are there.
SONASCOPE = [
    ([], "a command is missing; see sonascope --help"),
    (["lnies", "trace.raw"],
     "there is no command 'lnies'; the nearest is 'lines'; see sonascope --help"),
    (["lines"], "FILE is required; see sonascope lines --help"),
    (["lines", "none.raw"], "could not open none.raw: No such file or directory"),
    (["lines", "."], "could not read .: Is a directory"),
    (["lines", "trace.raw", "--form", "1s"],
     "The following arguments were not expected: 1s --form; the nearest is '--from'; "
     "see sonascope lines --help"),
    (["lines", "trace.raw", "more.raw"],
     "The following argument was not expected: more.raw; see sonascope lines --help"),
    (["lines", "trace.raw", "--from", "10"], f"--from: '10' {NO_TIME}"),
    (["lines", "trace.raw", "--from", "5s", "--to", "2s"], "--to: 2s is not after --from, 5s"),
    (["lines", "trace.raw", "--longer", "fast"], f"--longer: 'fast' {NO_TIME}"),
    (["lines", "trace.raw", "--driver", "OrvelHDAControler"],
     "--driver: no driver is called 'OrvelHDAControler'; the nearest are 'OrvelHDAController', "
     "'OrvelPDMController' and 'OrvelHDANode'"),
    (["lines", "trace.raw", "--method", "enabel"],
     "--method: no method is called 'enabel'; the nearest are 'enable' and 'enabled'"),
    (["lines", "trace.raw", "--cpu", "x"], f"--cpu: 'x' {NO_NUMBER}"),
    (["lines", "trace.raw", "--thread", "zz"], f"--thread: 'zz' {NO_NUMBER}"),
    (["lines", "trace.raw", "--object", "zz"], f"--object: 'zz' {NO_NUMBER}"),
    (["lines", "trace.raw", "--around", "dropout"],
     "--around: 'dropout' is not dropout=TIME, such as dropout=20ms"),
    (["lines", "trace.raw", "--where", "pin == "],
     "--where: a number or a text is missing\n  pin == \n         ^"),
    (["lines", "trace.raw", "--where", "jitter > 50us"],
     "--where: '50us' is no number; a text stands in quotation marks\n  jitter > 50us\n"
     "           ^"),
    (["lines", "trace.raw", "--where", "(result == 0"],
     "--where: the parenthesis is not closed\n  (result == 0\n  ^"),
    (["lines", "trace.raw", "--names", "none"], "could not open none: No such file or directory"),
    (["lines", "trace.raw", "--plain", "--json"],
     "--plain and --json do not go together; give one of them"),
    (["stats", "trace.raw", "--top", "x"],
     "--top: 'x' is no number that fits; see sonascope stats --help"),
    (["timeline", "trace.raw", "--most", "-1"],
     "--most: '-1' is no number that fits; see sonascope timeline --help"),
    (["stats", "trace.raw", "--histogram", "nothing"],
     "--histogram: no event is called 'nothing'; the nearest is 'Notify'"),
    (["tree", "trace.raw", "--depth", "-1"],
     "--depth: '-1' is no number that fits; see sonascope tree --help"),
    (["tree", "trace.raw", "--path", "nothing"],
     "--path: no event is called 'nothing'; the nearest is 'Notify'"),
    (["diff", "trace.raw"], TWO_TRACES),
    (["diff", "trace.raw", "--a", "0s..1s"], TWO_TRACES),
    (["diff", "trace.raw", "--a", "0s", "--b", "1s"],
     "--a: '0s' is no window; give two times, such as 10s..20s"),
    (["cut", "trace.raw"], "--output is required; see sonascope cut --help"),
    (["cut", "trace.raw", "-o", "trace.raw"],
     "trace.raw is the input itself; give another name to write to"),
    (["cut", "trace.raw", "-o", "other.txt"], "other.txt exists; give --force to write over it"),
    (["cut", "trace.raw", "-o", "none/new.raw"],
     "could not write none/new.raw: No such file or directory"),
    (["repair", "other.txt", "-o", "new.raw"],
     "other.txt: no trace: this is a text; traces are what sonaprobe -w keeps, not what it prints; "
     "nothing is written"),
    (["events", "nosuchthing"], "no event fits 'nosuchthing'"),
    (["completion"], "SHELL is required; see sonascope completion --help"),
]

ROOT_ONLY = [
    (["catch"], "--on is required; see sonascope catch --help"),
    (["catch", "--on", "dropout", "--keep", "10"],
     "--keep: '10' is no time; give a number and a unit, such as 10s or 200ms"),
    (["catch", "--on", "thunder"], "--on: no method is called 'thunder'"),
]

HELP = "see sonaprobe-sim --help"
SIMULATOR = [
    ([], f"a command is missing; {HELP}"),
    (["plya"], f"unknown command 'plya'; {HELP}"),
    (["play"], f"SCENARIO is missing; {HELP}"),
    (["play", "opera"], "unknown scenario 'opera'; sonaprobe-sim scenarios lists them"),
    (["play", "usb", "--rate"],
     "--rate takes a number from 1 to 1000000000, and none follows"),
    (["play", "usb", "--rate", "x"], "--rate takes a number from 1 to 1000000000, not 'x'"),
    (["play", "usb", "--threads", "65"], "--threads takes a number from 1 to 64, not '65'"),
    (["play", "usb", "--secs", "3"], f"unknown option '--secs'; {HELP}"),
    (["write"], f"SCENARIO is missing; {HELP}"),
    (["write", "playback"], f"FILE is missing; {HELP}"),
    (["write", "opera", "new.raw"], "unknown scenario 'opera'; sonaprobe-sim scenarios lists them"),
    (["write", "playback", "none/new.raw"],
     "cannot open none/new.raw: No such file or directory"),
    (["write", "playback", "."], "cannot open .: Is a directory"),
    (["write", "playback", "/dev/full"], "cannot write /dev/full: No space left on device"),
    (["write", "playback", "new.raw", "--records", "0"],
     "--records takes a number from 1 to 18446744073709551615, not '0'"),
    (["write", "dropouts", "new.raw", "--cause", "rain"],
     "'rain' is no cause; they are client, driver-call, blocked-by, preempted, late-wake, clock, "
     "engine-change, lost-records, unknown"),
    (["write", "dropouts", "new.raw", "--level", "hell"],
     "--level is easy, medium or hard, not 'hell'"),
    (["post"], f"FILE is missing; {HELP}"),
    (["fail"], f"OPERATION is missing; {HELP}"),
    (["fail", "KERN_X", "EBUSY"], "unknown operation 'KERN_X'; sonaprobe-sim --help lists them"),
    (["fail", "KERN_KDSETUP", "EFOO"],
     "unknown error 'EFOO'; give a name such as EBUSY or a number from 1 to 4095"),
    (["fail", "KERN_KDSETUP", "ENOMEM", "--times", "-1"],
     "--times takes a number from 0 to 4294967295, not '-1'"),
    (["status", "now"], f"one argument too many: 'now'; {HELP}"),
    (["reset", "--all"], f"unknown option '--all'; {HELP}"),
]

MAKES_IT = "cmake --build --preset release makes it"
SCRIPTS = [
    ("demo", ["--seconds"], "--seconds wants a value; see script/demo --help"),
    ("demo", ["--lines", "--seconds", "x"],
     "--seconds takes a number from 1 to 999999, not 'x'"),
    ("demo", ["-k"], "unknown argument '-k'; options of sonaprobe stand after '--lines --', "
                     "see script/demo --help"),
    ("demo", ["--scenario", "usb"], "--scenario, --seconds and options of sonaprobe go with "
                                    "--lines; see script/demo --help"),
    ("demo", ["--lines", "--scenario", "opera"],
     "unknown scenario 'opera'; there are playback, usb, displayport, headset, voice, all"),
    ("demo", ["--build", "/nowhere"],
     "there is no /nowhere/sonaprobe; without --build the demo builds it"),
    ("test", ["--all"], "unknown argument '--all'; see script/test --help"),
    ("bench", ["--quick"], "unknown argument '--quick'; see script/bench --help"),
    ("coverage", ["src"], "unknown argument 'src'; see script/coverage --help"),
    ("torture", ["--quick"], "unknown argument '--quick'; see script/torture --help"),
    ("try-packages", ["sonaprobe"],
     "unknown argument 'sonaprobe'; see script/try-packages --help"),
    ("make-images", ["all"], "unknown argument 'all'; see script/make-images --help"),
    ("make-sample", ["--force"], "unknown argument '--force'; see script/make-sample --help"),
    ("make-sample", ["/nowhere"], f"there is no /nowhere/sonaprobe-sim; {MAKES_IT}"),
    ("update-generated", ["--force"],
     "unknown argument '--force'; see script/update-generated --help"),
    ("update-generated", ["/nowhere"],
     "there is no /nowhere/sonaprobe; cmake --preset release -DSONAPROBE_TESTS=ON && " + MAKES_IT),
]


def name_of(case):
    return " ".join(case) if isinstance(case, list) else None


@pytest.fixture(name="folder")
def fixture_folder(tmp_path):
    run_program("write", "playback", tmp_path / "trace.raw", program="sonaprobe-sim")
    (tmp_path / "other.txt").write_text("12:00:00 a text, and no trace\n" * 50)
    return tmp_path


def said(program, arguments, folder):
    """What a program says of a mistake, and its status; nothing is printed or made."""
    result = run_program(*arguments, program=program, cwd=folder)
    assert result.stdout == ""
    assert sorted(os.listdir(folder)) == ["other.txt", "trace.raw"]
    return result.stderr, result.returncode


@pytest.mark.parametrize("arguments, message", SONASCOPE, ids=name_of)
def test_sonascope_tells_of_a_mistake(arguments, message, folder):
    assert said("sonascope", arguments, folder) == (f"sonascope: {message}\n", TROUBLE)


@needs_root
@pytest.mark.parametrize("arguments, message", ROOT_ONLY, ids=name_of)
def test_sonascope_tells_root_of_a_mistake(arguments, message, folder):
    assert said("sonascope", arguments, folder) == (f"sonascope: {message}\n", TROUBLE)


@needs_root
@pytest.mark.parametrize("arguments, message", SIMULATOR, ids=name_of)
def test_the_simulator_tells_of_a_mistake(arguments, message, folder):
    assert said("sonaprobe-sim", arguments, folder) == (f"sonaprobe-sim: {message}\n", 1)


@pytest.mark.parametrize("script, arguments, message", SCRIPTS)
def test_a_script_tells_of_a_mistake(script, arguments, message):
    result = subprocess.run([SOURCE / "script" / script, *arguments], check=False, text=True,
                            capture_output=True, stdin=subprocess.DEVNULL, timeout=60)
    assert (result.stderr, result.stdout, result.returncode) == (f"{script}: {message}\n", "", 1)


def test_there_are_sixty():
    assert len(SONASCOPE) + len(ROOT_ONLY) + len(SIMULATOR) + len(SCRIPTS) >= 60
