"""Answers of sonascope as JSON, each validated against its documented schema."""

import functools
import json
import os
import pathlib
import subprocess

import jsonschema

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SONASCOPE = pathlib.Path(os.environ["SONAPROBE_BUILD_DIR"]) / "sonascope"


@functools.cache
def validator(command):
    schema = json.loads((SOURCE / f"docs/schema/{command}.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def ask(command, *arguments, status=0):
    """What `sonascope COMMAND ARGUMENTS --json` answers."""
    done = subprocess.run([SONASCOPE, command, *map(str, arguments), "--json"],
                          capture_output=True, check=False, timeout=300)
    assert done.returncode == status, done.stderr.decode()
    answer = json.loads(done.stdout)
    validator(command).validate(answer)
    return answer
