"""cut: a part of a trace as a file of its own, or no file at all."""

import os
import pathlib
import signal
import stat
import subprocess

import pytest

from conftest import BUILD
from processes import started, wait_until
from records import DIVISOR_MARKER, unpack
from schemas import valid
from scope import ENABLE, OVERLOAD, POINT, TICKS, divisor, nested_calls, pack, record, scope


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace.raw"
    path.write_bytes(nested_calls())
    return path


@pytest.fixture
def new(tmp_path):
    (tmp_path / "new").mkdir()
    return tmp_path / "new/part.raw"


def slots(path):
    return [(slot["debugid"], slot["t"] // TICKS - 1_000_000) for slot in unpack(path.read_bytes())
            if slot["debugid"] != DIVISOR_MARKER]


def test_from_is_included_and_to_is_not(trace, new):
    result = scope("cut", trace, "--from", "100us", "--to", "1ms", "-o", new)
    assert result.stdout == f"{new}: 2 records, from 0.000 100 s to 0.000 500 s\n"
    assert (result.stderr, result.returncode) == ("", 0)
    assert [time for _, time in slots(new)] == [100, 500]
    assert new.read_bytes()[:64] == divisor()


def test_json_tells_what_was_kept(trace, new):
    result = scope("cut", trace, "--from", "100us", "-o", new, "--json")
    assert valid("cut", result.stdout) == {
        "schema": "sonascope/cut/1", "file": str(new), "records": 4, "first_ns": 100_000,
        "last_ns": 1_500_000}


def test_all_of_a_sound_trace_is_that_trace(trace, new):
    assert scope("cut", trace, "-o", new).returncode == 0
    assert new.read_bytes() == trace.read_bytes()


def test_the_divisor_in_force_stands_first_and_each_other_where_it_takes_over(trace, new):
    data = [divisor(), record(ENABLE, POINT, 0), divisor(0), divisor(48), divisor(48),
            pack(ENABLE, t=48_000), pack(0xDEADBEEF), bytes(64), pack(ENABLE, t=96_000), divisor(24),
            pack(ENABLE, t=50_000)]
    trace.write_bytes(b"".join(data))
    assert scope("cut", trace, "--from", "1us", "-o", new).returncode == 0
    # Time goes on at 0 where 48 takes over, and from 1 ms on where 24 does.
    assert new.read_bytes() == b"".join([divisor(48), data[8], divisor(24), data[10]])


def test_without_a_divisor_the_assumed_one_is_written(trace, new):
    trace.write_bytes(nested_calls()[64:])
    assert scope("cut", trace, "-o", new).returncode == 0
    assert new.read_bytes() == divisor(1000) + nested_calls()[64:]


def test_a_part_reads_in_sonaprobe_as_it_did_in_the_whole(trace, new, run):
    scope("cut", trace, "--from", "100us", "-o", new)
    whole = run("-k", "-i", "-r", trace).stdout.splitlines()
    assert run("-k", "-i", "-r", new).stdout.splitlines() == whole[1:]


def test_what_is_near_a_dropout_is_kept(trace, new):
    trace.write_bytes(nested_calls() + record(OVERLOAD, 1, 2000) + record(ENABLE, POINT, 5000))
    assert scope("cut", trace, "--around", "dropout=500us", "-o", new).returncode == 0
    assert slots(new) == [(ENABLE, 1500), (OVERLOAD | 1, 2000)]
    with trace.open() as stream:
        scope("cut", "-", "--around", "dropout=500us", "-o", new, "--force", stdin=stream)
    assert len(slots(new)) == 2


def test_the_samples_dropout_is_found(new):
    sample = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "docs/sample/playback-dropout.raw"
    assert scope("cut", sample, "--around", "dropout=20ms", "-o", new).returncode == 0
    text = scope("lines", new, "--method", "OVERLOAD").stdout
    assert text.count("\n") == text.count("QuorraHAL::OVERLOAD") == 1


def test_nothing_selected_is_no_file(trace, new):
    result = scope("cut", trace, "--from", "1h", "-o", new)
    assert result.stderr == (f"sonascope: {trace}: no record is selected; {new} is not written. The "
                             "trace ends at 0.001 500 s\n")
    assert result.returncode == 2
    assert os.listdir(new.parent) == []


def test_a_file_that_exists_is_kept_unless_forced(trace, new):
    new.write_text("precious")
    result = scope("cut", trace, "-o", new)
    assert (result.stderr, result.returncode) == (
        f"sonascope: {new} exists; give --force to write over it\n", 2)
    assert new.read_text() == "precious"
    assert scope("cut", trace, "-o", new, "--force").returncode == 0
    assert new.read_bytes() == trace.read_bytes()
    assert os.listdir(new.parent) == ["part.raw"]


@pytest.mark.parametrize("name", ["same", "hard link", "symbolic link"])
def test_the_input_is_never_written_to(name, trace, new):
    before = trace.read_bytes()
    if name == "hard link":
        os.link(trace, new)
    elif name == "symbolic link":
        new.symlink_to(trace)
    target = trace if name == "same" else new
    result = scope("cut", trace, "-o", target, "--force")
    assert result.stderr == (f"sonascope: {target} is the input itself; give another name to write "
                             "to\n")
    assert result.returncode == 2
    assert trace.read_bytes() == before


def test_a_symbolic_link_keeps_pointing_to_what_is_written(trace, new):
    real = new.with_name("real.raw")
    real.write_text("old")
    new.symlink_to(real)
    assert scope("cut", trace, "-o", new, "--force").returncode == 0
    assert new.is_symlink() and real.read_bytes() == trace.read_bytes()


def test_a_device_is_not_replaced(trace):
    result = scope("cut", trace, "-o", "/dev/null", "--force")
    assert result.stderr == "sonascope: /dev/null is no regular file; give another name to write to\n"
    assert stat.S_ISCHR(os.stat("/dev/null").st_mode)


def test_a_full_disk_leaves_no_file(trace, new):
    def limit():
        import resource
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

    result = scope("cut", trace, "-o", new, preexec_fn=limit)
    assert result.stderr == f"sonascope: could not write {new}: File too large\n"
    assert (result.returncode, os.listdir(new.parent)) == (2, [])


def test_a_closed_standard_output_is_no_way_into_the_new_file(trace, new):
    command = f"{BUILD}/sonascope cut {trace} -o {new} >&-"
    result = subprocess.run(["sh", "-c", command], stderr=subprocess.PIPE, text=True, check=False)
    assert result.stderr == "sonascope: could not write to standard output: Bad file descriptor\n"
    assert new.read_bytes() == trace.read_bytes()


def test_ctrl_c_leaves_no_file(trace, new):
    with started(BUILD / "sonascope", "cut", "-", "-o", new, stdin=subprocess.PIPE) as process:
        process.stdin.write(trace.read_bytes() * 20)
        process.stdin.flush()
        wait_until(lambda: os.listdir(new.parent))
        process.send_signal(signal.SIGINT)
        assert process.wait() == -signal.SIGINT
    assert os.listdir(new.parent) == []


def test_a_new_file_has_the_usual_rights(trace, new):
    scope("cut", trace, "-o", new, umask=0o027)
    assert stat.S_IMODE(new.stat().st_mode) == 0o640
