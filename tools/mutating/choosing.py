"""Which of the possible changes are tried."""

import random
import re

from . import Fault


def choose(possible, count, seed):
    """`count` of the changes, 0 for all: spread over the files by how many each has, at least one
    in each that has any. The same changes, count and seed make the same choice."""
    sizes = {path: len(changes) for path, changes in sorted(possible.items()) if changes}
    total = sum(sizes.values())
    if count == 0 or count >= total:
        shares = sizes
    else:
        shares = {path: max(1, size * count // total) for path, size in sizes.items()}
        by_rest = sorted(sizes, key=lambda path: (-(sizes[path] * count % total), path))
        for path in by_rest:
            if sum(shares.values()) < count and shares[path] < sizes[path]:
                shares[path] += 1
    chosen = []
    for path, share in shares.items():
        picked = random.Random(f"{seed} {path}").sample(possible[path], share)
        chosen += sorted(picked, key=lambda change: (change.start, change.replacement))
    return chosen


def read_equivalents(path):
    """(file, line before, line after) -> the reason, from a list of entries of four lines: the
    file, "- " and the line, "+ " and the line changed, "= " and the reason, which may go on."""
    equivalents = {}
    text = path.read_text(encoding="utf-8") if path.is_file() else ""
    text = re.sub(r"^#.*\n", "", text, flags=re.MULTILINE)
    for entry in re.split(r"\n\s*\n", text.strip()):
        if not entry:
            continue
        match = re.fullmatch(r"(\S+)\n- (.*)\n\+ (.*)\n= (.+)", entry, re.DOTALL)
        if not match or "\n" in match[2] + match[3]:
            raise Fault(f"{path.name}: not an entry of a file, then -, + and = lines:\n{entry}")
        equivalents[match[1], match[2], match[3]] = " ".join(match[4].split())
    return equivalents
