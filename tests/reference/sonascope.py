"""Answers of sonascope as JSON, each valid by its documented schema."""

import os
import pathlib
import subprocess

from schemas import valid

SONASCOPE = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"]) / "sonascope"


def ask(command, *arguments, status=0):
    """What `sonascope COMMAND ARGUMENTS --json` answers."""
    done = subprocess.run([SONASCOPE, command, *map(str, arguments), "--json"],
                          capture_output=True, check=False, timeout=300)
    assert done.returncode == status, done.stderr.decode()
    return valid(command, done.stdout)
