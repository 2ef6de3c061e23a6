"""README and the hunt by hand do what they say: each command of their sh blocks is run, each excerpt
is what is printed.

The commands run in a folder that looks like the project's, with the build at hand as build/release.
sudo ends the project's programs after some seconds, as Ctrl-C would, and what would change the
machine is replaced: see INSTEAD.
"""

import os
import pathlib
import re
import subprocess

import pytest

from conftest import BUILD

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
README = (SOURCE / "README.md").read_text()
HUNT = (SOURCE / "docs/hunt-by-hand.md").read_text()
LIVE_SECONDS = 4
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
    "script/demo": "script/demo --build build/release --seconds 2",
    "sudo dpkg -i sonaprobe_*.deb": "sudo dpkg --dry-run -i sonaprobe_*.deb",
}

# Command: status, and what its output has.
EXPECTED = {
    "script/demo": (0, "Stopped as by Ctrl-C"),
    "script/test": (0, "runs its tests"),
    "sonaprobe -r docs/sample/playback-dropout.raw": (0, "timed out - offset"),
    "sonaprobe -k -A -H -u -r docs/sample/playback-dropout.raw": (0, "QuorraHAL::OVERLOAD"),
    "sonaprobe": (ENDED_BY_LIMIT, "sonaprobe version"),
    "sonaprobe -A -w/tmp/trace.raw": (ENDED_BY_LIMIT, "sonaprobe version"),
    "sonaprobe -L": (0, "sonaprobe version"),
    "sonaprobe -D": (1, "KERN_KDREADTR (no data)"),  # nobody plays
    "sonaprobe -b 0": (1, "An invalid buffer of size 0 was requested!"),
    "sonaprobe-sim scenarios": (0, "playback"),
    "sonaprobe-sim play usb --seconds 30": (ENDED_BY_LIMIT, "records logged"),
    "sonaprobe-sim status": (0, "owner: none"),
    "sonaprobe-sim reset": (0, ""),
    "sonaprobe-sim play playback &": (0, ""),
    "sonascope catch --on dropout --then why -o /tmp/dropout.raw": (
        0, "OrvelHDAController::pollRegister on thread"),
    "sonascope why docs/sample/playback-dropout.raw": (FINDINGS, "OrvelHDAController::pollRegister"),
    "sonascope stats /tmp/dropout.raw": (0, "QuorraHAL::IOCycle"),
    "sonascope lines /tmp/dropout.raw --longer 100us": (0, "QuorraHAL::IOCycle"),
    "sonascope info docs/sample/playback-dropout.raw": (0, "audio server"),
    "cmake --install build/release --component program": (0, "sbin/sonaprobe"),
    "cpack --config build/release/CPackConfig.cmake": (0, ".deb generated"),
    "dpkg -i sonaprobe_*.deb": (0, "sonaprobe"),
}

HUNT_EXPECTED = {
    "sonaprobe-sim play playback &": (0, ""),
    "sonaprobe -A -w/tmp/dropout.raw >/dev/null": (ENDED_BY_LIMIT, ""),
    "sonaprobe -k -A -u -r docs/sample/playback-dropout.raw | grep -B 12 OVERLOAD": (0, "OVERLOAD"),
    "sonaprobe -k -H -u -X hdac -r docs/sample/playback-dropout.raw": (0, "timed out - offset"),
}


def blocks(language, page=README):
    found = re.findall(r"^```(\w*)\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    return [text for name, text in found if name == language]


def commands_of(page):
    return [re.sub(r"\s+#.*", "", line)
            for block in blocks("sh", page) for line in block.splitlines()]


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
    """Runs a command of README; its status and output."""
    command = INSTEAD.get(command, command).replace("/tmp/", f"{project}/tmp/")
    environment = os.environ | {"PATH": f"{project}/bin:{os.environ['PATH']}",
                                "DESTDIR": f"{project}/installed"}
    with (project / "output").open("w+") as output:
        result = subprocess.run(["bash", "-c", command], cwd=project, env=environment, check=False,
                                stdin=subprocess.DEVNULL, stdout=output, stderr=output, timeout=60)
        output.seek(0)
        return result.returncode, output.read()


@pytest.mark.parametrize("page, expected", [(README, EXPECTED), (HUNT, HUNT_EXPECTED)],
                         ids=["README", "hunt"])
class TestCommands:
    """The commands of a page."""

    def test_each_has_its_expectation(self, page, expected):
        assert [known_as(command) for command in commands_of(page)] == list(expected)

    def test_each_does_what_it_says(self, page, expected, project, facility):
        for command in commands_of(page):
            status, text = expected[known_as(command)]
            found, output = run(project, command)
            assert found == status, f"{command}\n{output[-2000:]}"
            assert text in output, f"{command}\n{output[-2000:]}"
        # The hunt's own recording: drivers and server, in whole slots behind the divisor.
        assert (project / "tmp/dropout.raw").stat().st_size > 100 * 64


def test_the_install_command_installs(project):
    run(project, next(command for command in commands_of(README) if "--install" in command))
    assert (project / "installed/usr/local/sbin/sonaprobe").exists()


@pytest.mark.parametrize("page, excerpt, command", [
    (page, *pair) for page, commands in [
        (README, ["sonaprobe -k -A -H -u -r docs/sample/playback-dropout.raw",
                  "sonascope why docs/sample/playback-dropout.raw"]),
        (HUNT, ["sonaprobe -k -A -u -r docs/sample/playback-dropout.raw",
                "sonaprobe -k -H -u -X hdac -r docs/sample/playback-dropout.raw"]),
    ] for pair in zip(blocks("", page), commands, strict=True)
], ids=["first screen", "why", "hunt", "cause"])
def test_each_excerpt_is_what_the_command_prints(page, excerpt, command, project):
    assert f"build/release/{command}" in page
    printed = run(project, f"sudo build/release/{command}")[1].splitlines()
    shown = excerpt.splitlines()
    [start] = [at for at, line in enumerate(printed) if fits(shown[0], line)]
    assert all(map(fits, shown, printed[start:start + len(shown)]))


def fits(shown, line):
    """Whether a shown line is a printed one, cut where it ends in three dots."""
    return line.startswith(shown[:-1]) if shown.endswith("…") else line == shown


def test_every_short_option_is_in_the_table():
    table = README.partition("## Options")[2].partition("\nThe manual page")[0]
    shown = set(re.findall(r"`-(\w)", table)) | set(re.findall(r" -(\w)", table))
    letters = set("baADckstgmuiTLwrCHI12BSFXvVlh")
    assert letters - shown == {"t"}  # which changes nothing
