"""The commands of sonaprobe(8) and sonaprobe-sim(8) are run as a reader would run them.

Live runs are ended after some seconds, as by Ctrl-C. sonascope(1)'s are run in tests/install.
"""

import os
import pathlib
import re
import subprocess

import pytest

from conftest import BUILD, needs_root

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
LIVE_SECONDS = 2
ENDED_BY_LIMIT = 124

ENDED = f"""\
#!/bin/sh
exec timeout --foreground --signal=INT {LIVE_SECONDS} {BUILD}/$(basename $0) "$@"
"""

LIVE = (ENDED_BY_LIMIT, "sonaprobe version")
# In the pages' order: status, and what is said.
EXPECTED = {
    "sonaprobe.8": {
        "sonaprobe -k -A -X hdae": LIVE,
        "sonaprobe -A -w/tmp/trace.raw >/dev/null": (ENDED_BY_LIMIT, ""),
        # Nobody has played, so there is no dropout to find.
        "sonaprobe -k -A -r /tmp/trace.raw | grep -B 12 OVERLOAD": (1, ""),
        "sonaprobe -b 100000 -1 0x05240000 -2 0x0524FFFF": LIVE,
        "sonaprobe -L": (0, "sonaprobe version"),
        "sonaprobe -D": (1, "KERN_KDREADTR (no data)"),
        "sonaprobe -b 0": (1, "An invalid buffer of size 0 was requested!"),
        "sonaprobe -k -r untrusted.raw | cat -v | less": (0, "pollRegister"),
        "(umask 077; sonaprobe -w/tmp/trace.raw)": LIVE,
    },
    "sonaprobe-sim.8": {
        "sonaprobe-sim play usb --seconds 30": (ENDED_BY_LIMIT, "records logged"),
        "sonaprobe-sim fail KERN_KDSETUP ENOMEM": (0, ""),
        "sonaprobe": (1, "trace facility failure, KERN_KDSETUP"),
    },
}


def commands_of(page):
    """What a page shows as commands: its single lines, and the indented displays of several."""
    text = (SOURCE / "man" / page).read_text()
    found = re.findall(r"^\.Dl ([^\n]*)$|^\.Bd -literal -offset indent\n(.*?)^\.Ed$", text,
                       re.MULTILINE | re.DOTALL)
    return [line for single, several in found for line in (single or several).splitlines()]


@needs_root
@pytest.mark.parametrize("page", EXPECTED)
def test_each_command_of_the_page_does_what_it_says(page, tmp_path, facility):
    assert commands_of(page) == list(EXPECTED[page])
    (tmp_path / "untrusted.raw").write_bytes(
        (SOURCE / "docs/sample/playback-dropout.raw").read_bytes())
    (tmp_path / "bin").mkdir()
    for program in ("sonaprobe", "sonaprobe-sim"):
        (tmp_path / "bin" / program).write_text(ENDED)
        (tmp_path / "bin" / program).chmod(0o755)
    environment = os.environ | {"PATH": f"{tmp_path}/bin:{os.environ['PATH']}"}
    for command, (status, text) in EXPECTED[page].items():
        result = subprocess.run(["bash", "-c", command.replace("/tmp/", f"{tmp_path}/")],
                                cwd=tmp_path, env=environment, check=False, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, timeout=60)
        assert result.returncode == status, f"{command}\n{result.stdout[-2000:]}"
        assert text in result.stdout, f"{command}\n{result.stdout[-2000:]}"
