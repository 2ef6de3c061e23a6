"""script/update-generated shows what changes, and writes it once a person has accepted that."""

import os
import pathlib
import shutil
import subprocess

import pytest

from conftest import BUILD, needs_root

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
ROWS = "tests/golden/rows/31-FRAMEBUFFER.golden"
LINE = "End: fCRTCIndex(7) BeefCheck: cafe0009\n"
FILES = ["script/update-generated", "docs/events.md", "tests/golden/accepted.txt"]

pytestmark = pytest.mark.skipif(not (BUILD / "sonaprobe-sim").exists(), reason="needs a simulator")


@pytest.fixture(name="tree")
def fixture_tree(tmp_path):
    """A copy of the generated files in which one line of the golden file is another."""
    for name in FILES:
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(SOURCE / name, tmp_path / name)
    for folder in ("tests/golden/rows", "tests/sim", "tests/support"):
        shutil.copytree(SOURCE / folder, tmp_path / folder)
    text = (tmp_path / ROWS).read_text()
    assert LINE in text
    (tmp_path / ROWS).write_text(text.replace(LINE, "End: an old text\n"))
    (tmp_path / "tests/golden/rows/99-Gone.golden").write_text("0x0524FC00\n> gone\n")
    return tmp_path


def update(tree, *arguments):
    return subprocess.run([tree / "script/update-generated", *arguments, BUILD], text=True,
                          capture_output=True, check=False)


@needs_root
def test_changes_are_shown_and_not_written(tree):
    before = {path: path.read_bytes() for path in tree.rglob("*") if path.is_file()}
    result = update(tree)
    lines = result.stdout.splitlines()
    assert lines[0] == ROWS
    assert [line[:3] for line in lines[1:3]] == ["  -", "  +"]
    assert lines[1].endswith("End: an old text") and lines[2].endswith(LINE.rstrip())
    assert lines[3:] == ["tests/golden/rows/99-Gone.golden", "  -0x0524FC00", "  -> gone"]
    assert "nothing written" in result.stderr and result.returncode == 1
    assert {path: path.read_bytes() for path in before} == before


@needs_root
def test_accepted_changes_are_written(tree):
    (tree / "tests/golden/accepted.txt").unlink()
    result = update(tree, "--accept")
    assert LINE.rstrip() in result.stdout
    assert (result.stderr, result.returncode) == ("", 0)
    for name in (ROWS, *FILES):
        assert (tree / name).read_bytes() == (SOURCE / name).read_bytes()
    assert not (tree / "tests/golden/rows/99-Gone.golden").exists()
    assert update(tree).stdout == ""
