#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets, corpus/*/seed-*, from the golden records. Findings stand
beside them under other names and are left alone."""

import gzip
import pathlib
import struct
import subprocess
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


def options(flags=0, filters=(0, 0), divisor=24, end=0, pipe=0):
    """The 64 bytes before a raw file, as raw_file.cpp reads them."""
    head = struct.pack("<IQQQH", flags, *filters, divisor, end)
    return head.ljust(63, b"\0") + bytes([pipe])


# Local time, thread, group, method, pointer, indentation: what the program starts with.
DEFAULTS = 0b1111_1010
GATHERED = 1 << 18
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
    most = 2**64 - 1
    longest = pack(0x05249850, t=most, a1=most, a2=most, a3=most, a4=most - 0xFD, a5=most)
    for end in (0xFF00, 0xFF90, 0xFFA0, 0xFFB8):
        write("raw_file", f"buffer-end-{end & 0xFF:02x}",
              options(EVERYTHING | GATHERED, end=end) + 2 * longest + mixed)
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


def raw_writers():
    """How many bytes say what the writes meet, those bytes, then steps."""
    record, held, divisor, block = b"\x20", b"\1", b"\0", b"\xff"
    fails, broken_off, cut = b"\2", b"\1", b"\x4d"
    for name, (outcomes, steps) in {
            "blocks": (b"", divisor + 3 * block + held),
            "held": (b"", divisor + 2 * record + held + record + divisor + record),
            "full-disk": (fails + b"\0" + fails, 4 * record + held + record),
            "cut": (cut + fails + b"\0" + cut, 3 * record + held + block + record),
            "broken-off": (broken_off + b"\1" + cut + 3 * b"\1", block + record + held + record),
            "given-up": (cut + b"\0", 2 * block)}.items():
        write("raw_writer", name, bytes([len(outcomes)]) + outcomes + steps)


def command_lines():
    for name, arguments in {
            "none": [], "operand": ["operand"], "short": ["-ckgmuiHSvCABa"],
            "long": ["--codes", "--cpu", "--verbose", "--kernel"],
            "numbers": ["-b", "0x40", "-I", "010", "-1", "7x", "-2", ""], "no-room": ["-b", "0"],
            "classes": ["-X", "hdap", "-F23", "-XkAudioTPlexoPort", "-F", "nosuch"],
            "paths": ["-r", "trace", "-w", "-wtrace", "-d", "-dcodes", "-dcode"],
            "long-path": ["-v", "-r", 256 * "x"], "longest-path": ["-w" + 255 * "x"],
            "shows": ["-v", "-V", "-l"], "help": ["-h"], "unknown": ["--unknown"],
            "short-form": ["--filter-a", "hdap", "--filter", "x"],
            "after-operands": ["operand", "-c", "--", "-k"], "missing": ["-c", "-b"],
            "modes": ["-L", "-D", "-T", "-f", "-R", "-s", "-t"]}.items():
        write("options", name, "\0".join(arguments).encode())


def collections():
    printing, writing, dumping, not_logging, verbose = 0, 1, 2, 0x20, 0x80
    records = pack_lines("0x05245C0D a1=1\n0x05245C0E\n0x21040001 a1=2\n0x01300004\n")
    records += pack(INVALID_MARKER) + pack(DIVISOR_MARKER)
    wrapped = 8

    def one(kind, entries=48, flags=0, count=6, failing=0):
        return struct.pack("<BhBhB", kind | failing << 2, entries, flags, count, 6) + records

    for name, data in {
            "print": one(printing) + one(printing, flags=wrapped) + one(printing | verbose),
            "write": one(writing) + one(writing, flags=wrapped) + one(writing | verbose),
            "dump": one(dumping) + one(dumping | not_logging) + one(dumping | verbose),
            "room": one(printing, entries=3) + one(writing, entries=-1) + one(dumping, entries=2),
            "counts": one(printing, count=32767) + one(writing, count=-1) + one(dumping, count=0),
            "no-memory": one(dumping, entries=-1),
            "failures": b"".join(one(kind, flags=wrapped, failing=call)
                                 for kind in (printing, writing, dumping)
                                 for call in (1, 2, 3, 4))}.items():
        write("collection", name, data)


def number_texts():
    for name, value in {"zero": 0, "eight": 99_999_999, "nine": 100_000_000, "most": 2**64 - 1,
                        "least": 2**63, "seventeen": 10**16}.items():
        for width in (0, 10, 24):
            write("number_text", f"{name}-{width}", struct.pack("<QBBd", value, width, width % 10,
                                                           value / 7) + b"some text" * (width // 4))


def standin_states():
    def patch(offset, data):
        return b"\0" + struct.pack("<HB", offset, len(data) - 1) + data

    use = bytes([0xF3, 0x84, 0xB0, 0x70, 0x71, 0xC0, 0x9F, 0xB0])
    every = 0xFF.to_bytes() * 8
    control = 64 - 16  # offsets count after the header of 16 bytes
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


def playback(records):
    """The first records of the sample, a divisor before them."""
    sample = HERE.parent / "docs/sample/playback-dropout.raw"
    return sample.read_bytes()[:64 * records]


def damaged_files():
    """A byte for the size of pieces, then the file."""
    slots = playback(20)
    swapped = b"".join(
        struct.pack(">6QIIQ", *struct.unpack("<6QIIQ", slots[at:at + 64]))
        for at in range(0, len(slots), 64))
    for name, data in {
            "sound": slots, "cut": slots[:-30], "misaligned": slots[:200] + slots[207:],
            "bytes-between": slots[:640] + b"\xff" * 100 + slots[640:], "swapped": swapped,
            "swapped-from-there": slots + swapped, "empty-slots": slots[:640] + bytes(640) + slots,
            "divisors": slots[:64] + pack(DIVISOR_MARKER) + slots + slots[:64],
            "invalid": slots + pack(INVALID_MARKER) + slots, "text": b"no trace at all\n" * 40,
            "zeros": bytes(1000), "nothing": b""}.items():
        write("damaged_file", name, b"\x3f" + data)


def step(code, qualifier=0, thread=0, cpu=0, later=100, extra=b""):
    """One of calls.cpp; `code` is a place in its table."""
    return struct.pack("<BBh", code << 2 | qualifier, thread << 2 | cpu << 5, later) + extra


def calls():
    overload, io_thread, cycle, client, stamp, method, other, _, _, _, divisor = range(11)
    words = b"\x40\0\2\x10\x27"  # of the audio server's records
    period = (step(cycle, 1, extra=words) + step(client, 1, extra=words) + step(method, 1)
              + step(method, 2) + step(client, 2, extra=words) + step(cycle, 2, extra=words))
    late = (step(cycle, 1, extra=words) + step(method, 1, later=30000) + step(overload, extra=words)
            + step(method, 2) + step(cycle, 2, extra=words))
    started = step(io_thread, 1, extra=words) + step(stamp, extra=words)
    for name, data in {
            "periods": started + 20 * period, "dropout": started + 9 * period + late + 3 * period,
            "nested": 30 * step(method, 1) + 30 * step(method, 2),
            "threads": b"".join(step(method, 1, thread) + step(other, 1, thread)
                                for thread in range(8)) + step(method, 2, 3) + step(other, 2, 5),
            "steps-back": 10 * (step(method, 1, later=-30000) + step(other, 1)),
            "divisors": 5 * (step(method, 1) + step(divisor, extra=b"\x18") + step(method, 2)),
            "orphans": 20 * step(method, 2) + period + 20 * step(cycle, 2, extra=words),
            "any": b"\xff" + playback(2)[64:] + step(method, 2)}.items():
        for by in range(6):
            write("calls", f"{name}-{by}", struct.pack("<BI", by, 1000) + data)


CONDITIONS = {
    "pin": (b"OrvelHDAWidget", b"pin nodeID == 21 && result != 0"),
    "either": (b"hdad", b"(result == 0xe00002d6 || !(state > 1)) && \"a name\" <= 0x10"),
    "unknown": (b"nosuch", b"nosuch == 1"), "texts": (b"enable", b"direction == 'output'"),
    "nested": (b"21", 40 * b"(" + b"result == 0" + 40 * b")"), "nots": (b"", 40 * b"!" + b"x"),
    "open": (b"OrvelHDAPath::enable", b"(result == "), "large": (b"0x05245C0C", b"x > " + 30 * b"9"),
    "bytes": (b"\xff\0", b"\xfe \0 == \x80"), "empty": (b"", b"")}


def selections():
    """A record, the length of a name, the name, a condition."""
    record = playback(2)[64:]
    for name, (word, where) in CONDITIONS.items():
        write("selection", name, record + bytes([len(word)]) + word + where)


def expressions():
    """What comparisons come to, a condition."""
    for name, (_, where) in CONDITIONS.items():
        write("expression", name, b"\x1b" + where)


def selected():
    """Which condition, which event, its qualifier, a record."""
    for condition in range(24):
        write("selected", str(condition), struct.pack("<BHB", condition, 20 * condition, condition)
              + pack(0, t=24, a1=1, a2=condition << 32 | 0xE00002C7, a3=21 << 32 | 1, a4=2))


def packed_files():
    slots = playback(12)

    def zstd(data):
        return subprocess.run(["zstd", "-c"], input=data, capture_output=True, check=True).stdout

    zipped, pressed = gzip.compress(slots, mtime=0), zstd(slots)
    for name, data in {
            "gzip": zipped, "zstd": pressed, "members": zipped + zipped, "frames": 2 * pressed,
            "cut-gzip": zipped[:-20], "cut-zstd": pressed[:-20], "gzip-rest": zipped + b"rest",
            "zstd-rest": pressed + b"rest", "gzip-head": zipped[:10], "zstd-head": pressed[:4],
            "plain": slots[:200], "empty": b""}.items():
        write("packed", name, data)


NAMES = {"plain": b"a name", "markup": b"</script><b>&amp;\"'", "formula": b"=cmd()|'x'!A1",
         "sql": b"'); DROP TABLE records; --", "separators": b";;,\t; 12\r",
         "bytes": bytes(byte for byte in range(1, 64) if byte != 10),
         "high": bytes(range(192, 255))}


def exports():
    """The format, its options, the length of a name, the name, then slots."""
    named = (pack(0x01400005, t=24, a1=1, a5=7) + pack(0x0524C82C, t=48, a3=0x3C2F0A22, a5=7)
             + pack(0x01400006, t=72, a1=1, a5=7))
    for number, (name, text) in enumerate(NAMES.items()):
        slots = bytes([len(text)]) + text + named + playback(8)[64:]
        for form in range(6):
            write("exports", f"{name}-{form}", bytes([form, number]) + slots)
        write("database", name, slots)


def rows():
    """The length of a name, the name, ticks, a time, a record."""
    for name, text in NAMES.items():
        for code in (0x01400004, 0x0524C82C, 0x05245C0E):
            write("rows", f"{name}-{code:08x}", bytes([len(text)]) + text + struct.pack("<Bq", 24, -5)
                  + pack(code, t=48, a1=1, a2=2**63, a3=0x3C2F0A22, a5=7))


def escapes():
    for name, text in NAMES.items():
        write("escape", name, text)


def pages():
    """How many records the page may have, then slots."""
    period = playback(40)[64:]
    nested = b"".join(pack(0x05245C0C | (1 if n < 8 else 2), t=24 * n, a1=min(n, 15 - n), a5=7)
                      for n in range(16))
    for name, most, slots in (("whole", 255, period), ("thinned", 3, period), ("nested", 255, nested),
                              ("divisors", 255, nested + pack(DIVISOR_MARKER, t=2**64 - 1) + nested),
                              ("back", 255, b"".join(nested[at:at + 64] for at in
                                                     range(len(nested) - 64, -1, -64)))):
        write("page", name, bytes([most]) + slots)


def columns():
    """Numbers, each after a byte of its length and count."""
    for name, numbers in {"small": range(0, 256, 5), "long": [1 << 8 * n - 1 for n in range(1, 9)],
                          "edges": [247, 248, 2**63, 2**64 - 1, 0]}.items():
        data = b""
        for place, number in enumerate(numbers):
            length = (number.bit_length() + 7) // 8
            # Length is the rest of 9, count bits 4 and 5.
            how = next(byte for byte in range(256) if byte % 9 == length
                       and byte >> 4 & 3 == place % 4)
            data += bytes([how]) + number.to_bytes(length)
        write("columns", name, data)


def record_blocks():
    """How many records and kinds, then slots."""
    for name, data in {
            "playback": playback(20)[64:], "one": playback(2)[64:], "zeros": bytes(64),
            "alike": 8 * pack(0x05245C0D, t=24, a1=1), "high": b"\xff" * 64,
            "misaligned": playback(20)[70:1200], "slope": b"".join(
                pack(0x05245C0D, t=100 * n, a1=7 * n, a2=100 * n + 5, cpu=n % 3)
                for n in range(30))}.items():
        write("record_block", name, b"\x20\x07" + data)


if __name__ == "__main__":
    exports()
    rows()
    escapes()
    columns()
    pages()
    record_blocks()
    damaged_files()
    calls()
    selections()
    expressions()
    selected()
    packed_files()
    raw_files()
    code_names()
    class_arguments()
    raw_writers()
    command_lines()
    collections()
    number_texts()
    standin_states()
