"""The options: what each says, before and after --verbose, and how their arguments are read."""

import os

import pytest

from conftest import run_program
from processes import local_times

VERBOSE = "Verbose mode ON\n"

# Long name, short option, argument, message.
OPTIONS = [
    ("bufsize", "b", "1000", "Setting trace buffer size to 1000\n"),
    ("buffer", "b", "1000", "Setting trace buffer size to 1000\n"),
    ("size", "b", "1000", "Setting trace buffer size to 1000\n"),
    ("all", "a", None, "Setting print mask to 0xffffffff\n"),
    ("codes", "c", None, "Will display codes\n"),
    ("time", "t", None, "Will display local time\n"),
    ("kernel", "k", None, "Will display kernel time\n"),
    ("nostamp", "s", None, "Will NOT display time stamps\n"),
    ("nogroup", "g", None, "Will NOT display group name\n"),
    ("nomethod", "m", None, "Will NOT display method name\n"),
    ("noptr", "u", None, "Will NOT display Audio pointer\n"),
    ("timers", "f", None, "Will print the RootHubTimer fired messages\n"),
    ("indentOff", "i", None, "Will NOT indent\n"),
    ("notrace", "T", None, "Will NOT enable Audio tracing\n"),
    ("nolog", "L", None, "Will disable printing of Audio tracepoint logging\n"),
    ("read", "r", "some/path", "Will read raw data from file some/path\n"),
    ("cpu", "C", None, "Will display CPU number\n"),
    ("HAL", "A", None, "Setting HAL LOG to 0x00000001\n"),
    ("thread", "H", None, "Will NOT display thread\n"),
    ("interest", "I", "0x20000", "Setting interest to 0x20000\n"),
    ("value1", "1", "17", "Setting interest value 1 to 17\n"),
    ("value2", "2", "18", "Setting interest value 2 to 18\n"),
    ("basic", "B", None, "Will using basic formatting\n"),
    ("nosep", "S", None, "Will NOT separate LOG from method during formatting.\n"),
    ("dump", "D", None, "Will dump trace buffer and exit.\n"),
    ("register", "R", None, "Will output ReadReg tracepoints"),
    ("filter-out", "F", "42", "Filtering out audioclass 42\n"),
    ("filter-all-except", "X", "42", "Filtering all audioclass except 42\n"),
    ("verbose", "v", None, VERBOSE),
]
# Those whose argument is taken only when it is attached.
OPTIONAL = [
    ("write", "w", "some/path",
     "Got w flag\nWill output raw format file to 'some/path'\n"),
    ("decode", "d", "/dev/null", "Using '/dev/null' file to decode other tracepoints\n"),
]


def spellings():
    """Every way to write every option, with its message."""
    for long, short, argument, message in OPTIONS:
        words = [] if argument is None else [argument]
        yield [f"--{long}", *words], message
        yield [f"-{short}", *words], message
        if argument is not None:
            yield [f"--{long}={argument}"], message
            yield [f"-{short}{argument}"], message
    for long, short, argument, message in OPTIONAL:
        yield [f"--{long}={argument}"], message
        yield [f"-{short}{argument}"], message


def said(*options, **settings):
    """What options say on standard output; -h after them ends the program."""
    result = run_program(*options, "-h", **settings)
    assert result.returncode == 0
    assert "\nUsage: sudo " in result.stderr
    return result.stdout


@pytest.mark.parametrize("option, message", spellings(), ids=lambda value: str(value))
def test_an_option_speaks_behind_verbose_only(option, message):
    assert said("-v", *option) == VERBOSE + message
    assert said("--verbose", *option) == VERBOSE + message
    before = [] if message == VERBOSE else option
    assert said(*before, "-v") == VERBOSE


def test_options_speak_in_their_order():
    assert said("-c", "-v", "-k", "-b", "1000", "-a", "-v", "-i") == (
        VERBOSE
        + "Will display kernel time\n"
        + "Setting trace buffer size to 1000\n"
        + "Setting print mask to 0xffffffff\n"
        + VERBOSE
        + "Will NOT indent\n"
    )


def test_short_options_may_be_joined():
    assert said("-vkib12") == (
        VERBOSE + "Will display kernel time\nWill NOT indent\nSetting trace buffer size to 12\n"
    )


def test_a_long_option_may_be_cut_where_it_stays_unique():
    assert said("--verb", "--filter-o=7", "--kern") == (
        VERBOSE + "Filtering out audioclass 7\nWill display kernel time\n"
    )


@pytest.mark.parametrize("text, value", [
    ("1000", 1000),
    ("0x10", 16),
    ("0X1f", 31),
    ("010", 8),
    ("08", 0),
    ("10abc", 10),
    (" 7", 7),
    ("-1", 4294967295),
    ("-4294967295", 1),
    ("4294967295", 4294967295),
    ("0x100000001", 1),
    ("99999999999999999999999", 4294967295),
])
def test_numbers_are_read_in_base_0_into_32_bits(text, value):
    assert said("-v", f"-1{text}", f"--value2={text}", f"-I{text}") == (
        f"{VERBOSE}Setting interest value 1 to {value}\nSetting interest value 2 to {value}\n"
        f"Setting interest to 0x{value:x}\n"
    )
    if value != 0:
        assert said("-v", "-b", text) == f"{VERBOSE}Setting trace buffer size to {value}\n"


@pytest.mark.parametrize("text", ["abc", "", "0", "0x100000000"])
def test_interest_values_may_be_zero_or_no_number(text):
    assert said("-v", "-1", text, "-2", text) == (
        VERBOSE + "Setting interest value 1 to 0\nSetting interest value 2 to 0\n"
    )


# Those of the registry itself are in the unit tests.
@pytest.mark.parametrize("text, class_id", [
    ("hdac", 20),
    ("kAudioTOrvelHDAController", 20),
    ("20", 20),
    ("piml", 44),
    ("usbD", 36),
    ("usbd", 35),
    ("7", 7),
    ("010", 8),
    ("020", 16),
    ("042", 34),
    ("99", 99),
    ("", 0),
    ("0020", 51),
    ("1234", 51),
    ("12x", 51),
    ("0x12a", 51),
    ("hddp", 51),
    ("kAudioTOrvelHDAEngineOutputDP", 51),
    ("nosuch", 51),
    (os.fsdecode(b"h\xe4ac"), 51),
])
def test_a_class_is_given_by_code_number_or_name(text, class_id):
    assert said("-v", "-F", text, "-X", text) == (
        f"{VERBOSE}Filtering out audioclass {class_id}\n"
        f"Filtering all audioclass except {class_id}\n"
    )


@pytest.mark.parametrize("option", ["-d", "--decode"])
def test_the_code_name_file_has_a_default(option):
    default = "/usr/share/misc/trace.codes"
    result = run_program("-v", option, "/dev/null", "-h")  # the next word is no argument
    if os.access(default, os.R_OK):
        assert result.stdout == f"{VERBOSE}Using '{default}' file to decode other tracepoints\n"
    else:
        assert result.stdout == VERBOSE
        assert result.stderr.startswith(f"There was a problem opening the file at '{default}'\n\n")


def test_a_missing_code_name_file_is_reported_and_leaves_the_mask_alone():
    result = run_program("-v", "-dno/such/file", "-k", "-h")
    assert result.stdout == VERBOSE + "Will display kernel time\n"
    complaint = "There was a problem opening the file at 'no/such/file'\n"
    assert result.stderr.startswith(f"{complaint}\nUsage: ")


def test_a_code_name_file_implies_all():
    assert said("-v", "-d/dev/null", "-a").endswith("Setting print mask to 0xffffffff\n")


@pytest.mark.parametrize("option", ["-w", "--write"])
@pytest.mark.parametrize("zone, hours", [("UTC", 0), ("PST8", -8), ("JST-9", 9)])
def test_a_raw_file_is_named_after_the_local_time_year_then_day_then_month(option, zone, hours):
    environment = os.environ | {"TZ": zone}
    output, names = local_times(lambda: said("-v", option, "ignored", env=environment),
                                "./raw-%y%d%m%H%M%S", hours)
    assert output in [f"{VERBOSE}Got w flag\nWill output raw format file to '{name}'\n"
                      for name in names]


@pytest.mark.parametrize("option, message", [
    ("-d", "Using '{}' file to decode other tracepoints\n"),
    ("-w", "Got w flag\nWill output raw format file to '{}'\n"),
    ("-r", "Will read raw data from file {}\n"),
])
def test_a_path_may_have_255_characters(option, message, tmp_path):
    path = f"{tmp_path}/".ljust(253, "/") + "xy"
    (tmp_path / "xy").touch()
    assert len(path) == 255
    assert said("-v", option + path) == VERBOSE + message.format(path)


def test_operands_are_passed_over_wherever_they_stand():
    assert said("one", "-v", "two", "-k", "three") == VERBOSE + "Will display kernel time\n"
    environment = os.environ | {"POSIXLY_CORRECT": "1"}
    assert said("one", "-v", "two", "-k", env=environment) == VERBOSE + "Will display kernel time\n"


def test_two_dashes_end_the_options(raw):
    trace = raw("0x05245C0E")
    result = run_program("-s", "-r", trace, "--", "-v", "-h")
    assert (result.returncode, result.stderr) == (0, "")
    assert VERBOSE not in result.stdout
