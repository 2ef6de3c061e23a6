"""Fingerprints of the golden lines of each event: what a person has accepted.

A line of the file is an event's code, the number of its texts, and the start of a hash of its
records and lines.
"""

import hashlib
import re


def fingerprints(goldens):
    """The file's text for the texts of the golden files of the decoder rows."""
    events = {}
    for text in goldens:
        for record, line in re.findall(r"^(0x.*)\n> (.*)$", text, re.MULTILINE):
            code = int(record.split()[0], 16) & ~3
            events.setdefault(code, []).append(f"{record}\n{line}\n")
    return "".join(f"{code:08X} {len(lines)} {hashed(lines)}\n"
                   for code, lines in sorted(events.items()))


def hashed(lines):
    return hashlib.sha256("".join(lines).encode()).hexdigest()[:12]
