"""README and the hunt by hand do what they say: each command of their sh blocks is run, each excerpt
is what is printed.

The commands run in a folder that looks like the project's, with the build at hand as build/release.
sudo ends the project's programs after some seconds, as Ctrl-C would, and what would change the
machine is replaced: see INSTEAD.
"""

import os
import pathlib
import subprocess
import tempfile

import pytest

from conftest import BUILD
from shown import blocks, misfit, shown_runs

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
README = (SOURCE / "README.md").read_text()
HUNT = (SOURCE / "docs/hunt-by-hand.md").read_text()
LIVE_SECONDS = 6
ENDED_BY_LIMIT = 124
FINDINGS = 1

pytestmark = pytest.mark.skipif(os.geteuid() != 0, reason="needs root")

SUDO = f"""\
#!/bin/sh
case $1 in
    build/release/*) exec timeout --foreground --signal=INT {LIVE_SECONDS} "$@" ;;
    *) exec "$@" ;;
esac
"""

INSTEAD = {
    # A test that runs all tests would run itself; the demo would build.
    "script/test": "script/test --help",
    "script/demo": "script/demo --help",
    "cmake --build --preset release": "cmake --build build/release -- -n",
    "sudo dpkg -i sonaprobe_*.deb": "sudo dpkg --dry-run -i sonaprobe_*.deb",
    "sudo xargs rm -f < build/release/install_manifest.txt":
        'sed "s|^|$DESTDIR|" build/release/install_manifest.txt | xargs rm -v',
}

# Command: status, and what its output has.
SAMPLE = "docs/sample/playback-dropout.raw"
CAUGHT = "/tmp/caught.raw"
EXPECTED = {
    f"sonascope lines {SAMPLE} --from 2.2115s --to 2.2285s": (0, "timed out - offset"),
    f"sonascope why {SAMPLE}": (FINDINGS, "OrvelHDAController::pollRegister"),
    "script/demo": (0, "catches"),
    "script/test": (0, "runs its tests"),
    "sonaprobe-sim play playback --seconds 30 &": (0, ""),
    f"sonascope catch --on dropout --then why -o {CAUGHT}": (
        0, "OrvelHDAController::pollRegister on thread"),
    f"sonascope timeline {CAUGHT} -o /tmp/caught.html": (0, "caught.html"),
    f"sonascope lines {CAUGHT} --around dropout=20ms": (0, "QuorraHAL::OVERLOAD"),
    f"sonascope lines {CAUGHT} --longer 5ms": (0, "OrvelHDAController::pollRegister"),
    f"sonascope lines {CAUGHT} --where 'pin nodeID == 21 && result != 0'": (0, "pin nodeID: 21"),
    f"sonascope stats {CAUGHT} --sort max --top 5": (0, "QuorraHAL::IOCycle"),
    f"sonascope tree {CAUGHT} --path pollRegister": (0, "handleCodecCommandAction"),
    f"sonascope info {CAUGHT}": (0, "records"),
    "sonascope events timed out": (0, "Reads a register again and again"),
    "sonaprobe -A -w/tmp/trace.raw": (ENDED_BY_LIMIT, "sonaprobe version"),
    "sonaprobe -k -A -r /tmp/trace.raw": (0, ""),
    "sonaprobe": (ENDED_BY_LIMIT, "sonaprobe version"),
    "sonaprobe -k -X hdac": (ENDED_BY_LIMIT, "sonaprobe version"),
    "sonaprobe -L": (0, "sonaprobe version"),
    "sonaprobe -D": (1, "KERN_KDREADTR (no data)"),  # nobody plays
    "sonaprobe -b 0": (1, "An invalid buffer of size 0 was requested!"),
    "sonaprobe-sim scenarios": (0, "playback"),
    "sonaprobe-sim status": (0, "owner: none"),
    "sonaprobe-sim reset": (0, ""),
    f"sonascope lines {CAUGHT} --failed --json": (0, '"schema":"sonascope/lines/1"'),
    f"sonascope export {CAUGHT} --to chrome -o /tmp/caught.json": (0, ""),
    "cmake --build --preset release": (0, ""),
    "cpack --config build/release/CPackConfig.cmake": (0, ".deb generated"),
    "dpkg -i sonaprobe_*.deb": (0, "sonaprobe"),
    "cmake --install build/release": (0, "sbin/sonaprobe"),
    "xargs rm -f < build/release/install_manifest.txt": (0, "sbin/sonaprobe"),
}

HUNT_EXPECTED = {
    "sonaprobe-sim play playback &": (0, ""),
    "sonaprobe -A -w/tmp/dropout.raw >/dev/null": (ENDED_BY_LIMIT, ""),
    f"sonaprobe -k -A -u -r {SAMPLE} | grep -B 12 OVERLOAD": (0, "OVERLOAD"),
    f"sonaprobe -k -H -u -X hdac -r {SAMPLE}": (0, "timed out - offset"),
}


def commands_of(page):
    return [command for shown, _ in shown_runs(page) for command in shown]


def known_as(command):
    return command.removeprefix("sudo ").removeprefix("build/release/")


@pytest.fixture(scope="module")
def project(tmp_path_factory):
    folder = tmp_path_factory.mktemp("project")
    for name in ("docs", "script", "man"):
        (folder / name).symlink_to(SOURCE / name)
    (folder / "build").mkdir()
    (folder / "build/release").symlink_to(BUILD)
    (folder / "bin").mkdir()
    (folder / "bin/sudo").write_text(SUDO)
    (folder / "bin/sudo").chmod(0o755)
    (folder / "tmp").mkdir()
    return folder


def run(project, command):
    """Runs a command of a page; its status and output."""
    command = INSTEAD.get(command, command).replace("/tmp/", f"{project}/tmp/")
    environment = os.environ | {"PATH": f"{project}/bin:{os.environ['PATH']}",
                                "DESTDIR": f"{project}/installed"}
    with tempfile.TemporaryFile("w+") as output:  # its own: what plays on may still write
        result = subprocess.run(["bash", "-c", command], cwd=project, env=environment, check=False,
                                stdin=subprocess.DEVNULL, stdout=output, stderr=output, timeout=60)
        output.seek(0)
        return result.returncode, output.read()


@pytest.mark.parametrize("page, expected, recording", [
    (README, EXPECTED, "tmp/caught.raw"), (HUNT, HUNT_EXPECTED, "tmp/dropout.raw")],
    ids=["README", "hunt"])
class TestCommands:
    """The commands of a page."""

    def test_each_has_its_expectation(self, page, expected, recording):
        assert [known_as(command) for command in commands_of(page)] == list(expected)

    def test_each_does_what_it_says(self, page, expected, recording, project, facility):
        for command in commands_of(page):
            status, text = expected[known_as(command)]
            found, output = run(project, command)
            assert found == status, f"{command}\n{output[-2000:]}"
            assert text in output, f"{command}\n{output[-2000:]}"
        # What the page has recorded: drivers and server, in whole slots after the divisor.
        assert (project / recording).stat().st_size > 100 * 64


@pytest.mark.parametrize("page, count", [(README, 2), (HUNT, 2)], ids=["README", "hunt"])
def test_each_excerpt_is_what_its_command_prints(page, count, project):
    shown = [(names[-1], excerpt) for names, excerpt in shown_runs(page) if excerpt]
    assert len(shown) == len(blocks(page)) - sum(kind == "sh" for kind, _ in blocks(page)) == count
    for command, excerpt in shown:
        assert misfit(excerpt, run(project, command)[1].splitlines()) is None, command


def test_readme_is_short():
    assert len(README.splitlines()) <= 200
