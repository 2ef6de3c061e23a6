"""The same bytes in any environment and on a small stack."""

import resource

import pytest

from conftest import run_program
from records import pack
from test_files import slots_and_lines


@pytest.fixture(scope="module")
def trace(tmp_path_factory):
    """A record of every class, every event number, every qualifier."""
    path = tmp_path_factory.mktemp("trace") / "trace.raw"
    path.write_bytes(b"".join(
        pack(0x05240000 | code, t=24_000_000 + code, a1=code, a2=2**63 + code, a3=3, a4=4, a5=5)
        for code in range(0, 0x10000)))
    return path


def printed(trace, *options, **settings):
    result = run_program("-k", "-a", "-A", "-c", "-C", *options, "-r", trace, text=False,
                         errors=None, **settings)
    assert (result.stderr, result.returncode) == (b"", 0)
    return result.stdout


@pytest.fixture(scope="module")
def usual(trace):
    return printed(trace)


@pytest.mark.parametrize("environment", [
    {},
    {"LANG": "tr_TR.UTF-8", "LANGUAGE": "tr"},
    {"LC_ALL": "de_DE.UTF-8", "LC_NUMERIC": "de_DE"},
    {"LC_ALL": "C.UTF-8"},
    {"LC_ALL": "no_such_LOCALE", "NLSPATH": "/tmp", "LOCPATH": "/tmp"},
    {"TZ": ":/etc/passwd"},
    {"POSIXLY_CORRECT": "1", "COLUMNS": "10", "TERM": "dumb", "MALLOC_PERTURB_": "165"},
], ids=str)
def test_any_environment_gives_the_same_bytes(trace, usual, environment):
    assert printed(trace, env=environment) == usual


@pytest.mark.parametrize("kilobytes", [128, 256])
def test_a_small_stack_is_enough(trace, usual, tmp_path, kilobytes):
    def small_stack():
        resource.setrlimit(resource.RLIMIT_STACK, (kilobytes << 10, kilobytes << 10))

    assert printed(trace, preexec_fn=small_stack) == usual
    (tmp_path / "codes").write_bytes(b"4 name\n")
    slots, _ = slots_and_lines(5)
    (tmp_path / "short").write_bytes(slots)
    options = (tmp_path / "short", f"-d{tmp_path}/codes", "-B")
    assert printed(*options, preexec_fn=small_stack) == printed(*options)
