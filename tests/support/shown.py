"""Pages that show commands and what they print: their blocks, and whether an excerpt fits."""

import re


def blocks(page):
    """The fenced blocks of a page: (language, text) of each, in their order."""
    return re.findall(r"^```(\w*)\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)


def commands(block):
    """The commands of a shell block, without their comments."""
    return [re.sub(r"\s+#.*", "", line) for line in block.splitlines()]


def shown_runs(page):
    """Each shell block's commands, with the excerpt that follows, or None."""
    all_blocks = [*blocks(page), ("sh", "")]
    return [(commands(text), after if language == "" else None)
            for (kind, text), (language, after) in zip(all_blocks, all_blocks[1:])
            if kind == "sh"]


def fits(shown, line):
    """Whether a shown line is a printed one; three dots stand for any part of it."""
    return re.fullmatch(".*".join(map(re.escape, shown.split("…"))), line) is not None


def misfit(excerpt, printed):
    """The first shown line that is not printed where it should be; None where the excerpt fits.

    Lines follow one another as printed; a line of three dots stands for any lines between.
    """
    at, gap = None, True
    for shown in excerpt.splitlines():
        if shown == "…":
            gap = True
            continue
        begin = 0 if at is None else at + 1
        places = range(begin, len(printed)) if gap else range(begin, begin + 1)
        at = next((place for place in places
                   if place < len(printed) and fits(shown, printed[place])), None)
        if at is None:
            return shown
        gap = False
    return None
