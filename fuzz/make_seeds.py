#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets, corpus/*/seed-*, from the golden records. Findings stand
beside them under other names and are left alone."""

import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
GOLDEN = HERE.parent / "tests/golden"
sys.path.insert(0, str(HERE.parent / "tests/support"))

from records import DIVISOR_MARKER, INVALID_MARKER, pack, pack_lines, read_cases  # noqa: E402

SLOTS = 8  # of a raw file seed: small, so that mutations are quick


def write(target, name, data):
    folder = HERE / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"seed-{name}").write_bytes(data)


def options(flags=0, filters=(0, 0), divisor=24, depth=0, pipe=0):
    """The 64 bytes before a raw file, as raw_file.cpp reads them."""
    head = struct.pack("<IQQQH", flags, *filters, divisor, depth)
    return head.ljust(63, b"\0") + bytes([pipe])


# Local time, thread, group, method, pointer, indentation: what the program starts with.
DEFAULTS = 0b1111_1010
EVERYTHING = 0x0003_FBFF & ~(1 << 10)


def raw_files():
    for path in sorted(GOLDEN.glob("rows/*.golden")):
        records = [record for case in read_cases(path) for record in case.records]
        step = max(1, len(records) // SLOTS)
        slots = pack(DIVISOR_MARKER, t=24) + pack_lines("\n".join(records[::step][:SLOTS]))
        write("raw_file", path.stem, options(DEFAULTS | 4) + slots)
    for number, case in enumerate(read_cases(GOLDEN / "unclassified.golden")):
        slots = pack_lines("\n".join(case.records[:SLOTS]))
        write("raw_file", f"unclassified-{number}", options(EVERYTHING) + slots)
    mixed = pack_lines("0x05245C0D t=24000000 a1=1\n0x01300004 a1=2\n0x05245C0E t=24000100\n")
    write("raw_file", "basic", options(DEFAULTS | 1 << 10) + mixed)
    write("raw_file", "basic-named", options(DEFAULTS | 1 << 10 | 1 << 15) + mixed)
    write("raw_file", "filtered", options(DEFAULTS | 3 << 16, (1 << 23, 1 << 23)) + mixed)
    write("raw_file", "deep", options(DEFAULTS, depth=0xFF80) + mixed)
    write("raw_file", "markers", options(DEFAULTS | 4) + pack(INVALID_MARKER)
          + pack(DIVISOR_MARKER) + mixed)
    write("raw_file", "cut-pipe", options(DEFAULTS, pipe=1) + mixed[:-30])
    write("raw_file", "no-options", b"\xff" * 20)


def code_names():
    write("code_names", "file", (GOLDEN / "trace.codes").read_bytes()[:600])
    write("code_names", "numbers", b"0x01300004\tname\n010 octal\n10 decimal\n0x10\n-1 below\n")
    write("code_names", "long", b"4 " + 61 * b"x" + b"0x8 in a piece of its own\n" + 80 * b" ")
    write("code_names", "bytes", b"0x4 with\0zero\n\0\n0x8\xff \xfe\xfd\n\t\t\n\n4 no line end")


def class_arguments():
    for name, text in {"code": b"hdap", "name": b"kAudioTOrvelHDAPath", "number": b"23",
                       "octal": b"010", "four": b"0042", "high": b"h\xe4ap", "empty": b"",
                       "large": b"18446744073709551616"}.items():
        write("class_argument", name, text)


def digits():
    for name, value in {"zero": 0, "eight": 99_999_999, "nine": 100_000_000, "most": 2**64 - 1,
                        "least": 2**63, "seventeen": 10**16}.items():
        for width in (0, 10, 24):
            write("digits", f"{name}-{width}", struct.pack("<QBBd", value, width, width % 10,
                                                           value / 7) + b"some text" * (width // 4))


def standin_states():
    def patch(offset, data):
        return b"\0" + struct.pack("<HB", offset, len(data) - 1) + data

    use = bytes([0xF3, 0x84, 0xB0, 0x70, 0x71, 0xC0, 0x9F, 0xB0])
    every = 0xFF.to_bytes() * 8
    control = 64 - 16  # offsets count behind the header of 16 bytes
    for name, data in {
            "use": use,
            "set-up": b"\x41\x40\0\0\0\x60\x71" + use,
            "control": patch(control, every) + use,
            "more-tickets": patch(control, (100).to_bytes(8, "little")) + use,
            "changing": patch(192 + 48, b"\1\0\0\0") + use,
            "progress": patch(192 + 80, every + every) + use,
            "slot": patch(0x8000 + 30, every) + use,
            "ring-header": patch(0x8000 + 16, every) + use,
            "failures": patch(192 + 130, every + every) + use}.items():
        write("standin_state", name, data)


if __name__ == "__main__":
    raw_files()
    code_names()
    class_arguments()
    digits()
    standin_states()
