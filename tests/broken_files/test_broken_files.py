"""Each broken file: what info says of it, and that repair makes the file of it that it should."""

import gzip
import subprocess

import pytest

from broken_files import FILES, OTHERS, SLOTS, WHOLE, joined
from conftest import BUILD, run_program
from schemas import valid


def scope(*arguments, **options):
    return run_program(*arguments, program="sonascope", **options)


def checked_json(command, *arguments):
    """What a command prints with --json, which its schema allows; and its status."""
    result = scope(command, "--json", *arguments)
    return valid(command, result.stdout), result.returncode


def file_of(folder, name, data):
    path = folder / name
    path.write_bytes(data)
    return path


def kinds_in(path):
    document, _ = checked_json("info", path)
    return [finding["kind"] for finding in document["files"][0].get("findings", [])]


@pytest.fixture
def new(tmp_path):
    return tmp_path / "new.raw"


def test_the_sound_file_is_sound_and_comes_back(tmp_path, new):
    path = file_of(tmp_path, "sound.raw", WHOLE)
    assert scope("info", path).returncode == 0
    assert scope("repair", path, "-o", new).stdout == f"{new}: 41 of 41 slots, all of a sound file\n"
    assert new.read_bytes() == WHOLE


@pytest.mark.parametrize("broken", FILES, ids=lambda broken: broken.name)
def test_info_tells_what_is_wrong_and_where(broken, tmp_path):
    path = file_of(tmp_path, "broken.raw", broken.data)
    result = scope("info", path)
    lines = [line for line in result.stdout.splitlines() if line.startswith("slot ")]
    assert [line.split() for line in lines] == [line.split() for line in broken.findings]
    assert result.returncode == 1


@pytest.mark.parametrize("broken", FILES, ids=lambda broken: broken.name)
def test_repair_leaves_out_what_is_broken_and_nothing_else(broken, tmp_path, new):
    path = file_of(tmp_path, "broken.raw", broken.data)
    document, status = checked_json("repair", path, "-o", new)
    assert (document["kept"], status) == (len(broken.repaired) // 64, 0)
    assert new.read_bytes() == broken.repaired
    assert kinds_in(new) == broken.stays
    again = tmp_path / "again.raw"
    assert scope("repair", new, "-o", again).returncode == 0
    assert again.read_bytes() == broken.repaired


@pytest.mark.parametrize("name", OTHERS)
def test_what_is_no_trace_is_named_and_not_repaired(name, tmp_path, new):
    data, kind = OTHERS[name]
    path = file_of(tmp_path, name, data)
    result = scope("info", path)
    assert (result.stdout, result.returncode) == (f"{path}: no trace: {kind}\n", 2)
    assert checked_json("info", path)[0]["files"][0]["state"] == "unreadable"
    result = scope("repair", path, "-o", new)
    assert kind in result.stderr and result.returncode == 2
    assert sorted(tmp_path.iterdir()) == [path]


def test_several_files_at_once_have_the_worst_status(tmp_path):
    paths = [file_of(tmp_path, "sound.raw", WHOLE), file_of(tmp_path, "cut.raw", WHOLE[:-1]),
             file_of(tmp_path, "none.raw", b"text"), tmp_path / "missing.raw"]
    document, status = checked_json("info", *paths)
    assert [file["state"] for file in document["files"]] == \
        ["sound", "findings", "unreadable", "unreadable"]
    assert status == 2
    assert "No such file" in document["files"][3]["trouble"]
    assert checked_json("info", *paths[:2])[1] == 1


def test_quick_counts_no_calls_and_suspects_nothing(tmp_path):
    path = file_of(tmp_path, "missing.raw", joined(SLOTS[:13], SLOTS[25:]))
    document, status = checked_json("info", "--quick", path)
    assert status == 0
    assert "calls" not in document["files"][0]
    assert checked_json("info", path)[0]["files"][0]["calls"] == \
        {"opened": 14, "finished": 14, "cut_off": 0, "unfinished": 0, "orphan_ends": 0}


def test_pipes_and_packed_files_read_alike(tmp_path, new):
    broken = next(file for file in FILES if file.name == "bytes-inside-a-slot")
    plain = file_of(tmp_path, "plain.raw", broken.data)
    packed = file_of(tmp_path, "packed.raw.gz", gzip.compress(broken.data))
    expected = checked_json("info", plain)[0]["files"][0]["findings"]
    assert checked_json("info", packed)[0]["files"][0]["findings"] == expected
    result = subprocess.run([BUILD / "sonascope", "repair", "-", "-o", new], input=broken.data,
                            capture_output=True, check=True)
    assert result.stderr == b""
    assert new.read_bytes() == broken.repaired


def test_a_packed_file_that_breaks_off_is_not_sound(tmp_path):
    path = file_of(tmp_path, "trace.raw.gz", gzip.compress(WHOLE)[:-200])
    document, status = checked_json("info", path)
    assert "packing_damage" in document["files"][0] and status == 1


def test_of_many_findings_the_first_thousand_are_listed(tmp_path):
    path = file_of(tmp_path, "holes.raw", SLOTS[0] + (bytes(64) + SLOTS[1]) * 1500)
    file = checked_json("info", path)[0]["files"][0]
    assert len(file["findings"]) == 1000
    assert file["findings_not_listed"] == {"empty_slots": 500}
    assert scope("info", path).stdout.splitlines()[-1] == "and 500 more: empty"
