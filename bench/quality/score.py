"""Compares what was recognised with what was said."""

from dataclasses import dataclass, field

# Spellings of one and the same words, as they are compared: without case, marks and blanks.
SAME = {
    "alright": "all right",
    "gonna": "going to",
    "kinda": "kind of",
    "yknow": "you know",
    "mister": "mr",
    "ok": "okay",
    "2020": "twenty twenty",
    "4": "four",
}
# Left out on both sides: whether a recogniser writes hesitations down is its style.
HESITATIONS = {"uh", "um", "er", "uhm", "hmm", "mm", "ah"}


def comparable(words):
    """[(word, what belongs to it)], from pairs of the same kind."""
    result = []
    for word, belonging in words:
        plain = "".join(c for c in word.lower() if c.isalnum())
        if plain not in HESITATIONS:
            result += [(part, belonging) for part in SAME.get(plain, plain).split()]
    return result


@dataclass
class Comparison:
    said: int = 0
    wrong: int = 0
    right: list = field(default_factory=list)  # pairs: what belongs to the word said, and recognised


def compare(said, recognised):
    """The fewest words put in, left out and changed. Two words that are written as one are right."""
    a, b = comparable(said), comparable(recognised)

    def steps(i, j):
        if i and j:
            yield i - 1, j - 1, a[i - 1][0] != b[j - 1][0]
        if i:
            yield i - 1, j, 1
        if j:
            yield i, j - 1, 1
        if i and j > 1 and a[i - 1][0] == b[j - 2][0] + b[j - 1][0]:
            yield i - 1, j - 2, 0
        if i > 1 and j and a[i - 2][0] + a[i - 1][0] == b[j - 1][0]:
            yield i - 2, j - 1, 0

    cost, came = {(0, 0): 0}, {}
    for i in range(len(a) + 1):
        for j in range(len(b) + 1):
            if i or j:
                cost[i, j], came[i, j] = min((cost[p, q] + step, (p, q)) for p, q, step in steps(i, j))
    result = Comparison(len(a), cost[len(a), len(b)])
    at = (len(a), len(b))
    while at != (0, 0):
        before = came[at]
        if cost[at] == cost[before]:
            result.right.append((a[at[0] - 1][1], b[at[1] - 1][1]))
        at = before
    result.right.reverse()
    return result


def percentile(values, share):
    """The smallest value that at least this share of the values do not exceed."""
    ordered = sorted(values)
    return ordered[max(0, -(-len(ordered) * share // 100) - 1)] if ordered else None
