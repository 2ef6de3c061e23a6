"""What sonascope says to programs, held against its documented schemas."""

import functools
import json
import os
import pathlib

import jsonschema

FOLDER = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"]) / "docs/schema"


@functools.cache
def validator(command):
    schema = json.loads((FOLDER / f"{command}.schema.json").read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    return jsonschema.Draft7Validator(schema)


def valid(command, text):
    """The document that a command has printed, which its schema describes."""
    document = json.loads(text)
    validator(command).validate(document)
    return document
