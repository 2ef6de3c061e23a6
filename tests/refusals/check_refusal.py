"""Compiles a case of refusals.cpp, faulty and repaired; or checks that each refusal has a case.

usage: check_refusal.py SOURCE_DIR cover           every refusal of rows.h has a case
       check_refusal.py SOURCE_DIR NAME COMPILER   NAME is refused, and compiles repaired
"""

import pathlib
import re
import subprocess
import sys

CASES = pathlib.Path(__file__).with_name("refusals.cpp")
SOURCE = pathlib.Path(sys.argv[1])


def cases():
    """The message of each case."""
    return dict(re.findall(r"^#ifdef (\w+)  // (.+)$", CASES.read_text(), re.MULTILINE))


def refusals():
    """The messages of rows.h: what it gives to refuse(), and to expect(), which passes it on."""
    text = (SOURCE / "src/events/row_vocabulary.h").read_text()
    messages = re.findall(r'\brefuse\(\s*(?!const char\*|reason\))(?:"([^"]*)")?', text)
    messages += re.findall(r'\bexpect\([\w:]+,\s*(?:"([^"]*)")?', text)
    if "" in messages:
        sys.exit("a refusal in rows.h without a literal message")
    return set(messages)


def compile_case(name, compiler, *options):
    return subprocess.run(
        [compiler, "-std=c++20", "-fsyntax-only", "-fmessage-length=0", "-I", SOURCE / "src",
         f"-D{name}", *options, CASES], check=False, capture_output=True, text=True)


def check_case(name, compiler):
    message = cases()[name]
    repaired = compile_case(name, compiler, "-DREPAIRED")
    if repaired.returncode != 0 or repaired.stderr:
        sys.exit(f"{name}: the repaired case must compile\n{repaired.stderr}")
    faulty = compile_case(name, compiler)
    if faulty.returncode == 0:
        sys.exit(f"{name}: compiles, and must be refused: {message}")
    shown = {text for text in refusals() if f'"{text}"' in faulty.stderr}
    if shown != {message}:
        sys.exit(f"{name}: must be refused with '{message}', not {shown}\n{faulty.stderr}")


def check_cover():
    missing = refusals() - set(cases().values())
    unknown = set(cases().values()) - refusals()
    if missing or unknown:
        sys.exit(f"refusals without a case: {missing}; cases of no refusal: {unknown}")


def main():
    match sys.argv[2:]:
        case ["cover"]:
            check_cover()
        case [name, compiler]:
            check_case(name, compiler)
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    main()
