"""Which of the possible changes are tried."""

import random
import re

from . import Fault


def choose(possible, count, seed):
    """Chooses `count` of the changes, all for 0, spread over the files in proportion to how many
    each has, at least one for each file. The same changes, count and seed give the same choice."""
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
    """(file, line before, line after) -> the reason, read from entries of four lines: the file,
    "- " and the line, "+ " and the changed line, "= " and the reason, which may have more lines.
    Without the changed line, None, the entry stands for every change of the line."""
    equivalents = {}
    text = path.read_text(encoding="utf-8") if path.is_file() else ""
    text = re.sub(r"^#.*\n", "", text, flags=re.MULTILINE)
    for entry in re.split(r"\n\s*\n", text.strip()):
        if not entry:
            continue
        match = re.fullmatch(r"(\S+)\n- (.*)\n(?:\+ (.*)\n)?= ((?s:.+))", entry)
        if not match:
            raise Fault(f"{path.name}: not an entry of a file, then -, + and = lines:\n{entry}")
        equivalents[match[1], match[2], match[3]] = " ".join(match[4].split())
    return equivalents
