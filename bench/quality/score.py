"""Compares recognised words with the words that were said."""

from dataclasses import dataclass, field

# A spelling, without case and punctuation, and the words that are compared instead.
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
# Ignored on both sides: writing hesitations down is a matter of style.
HESITATIONS = {"uh", "um", "er", "uhm", "hmm", "mm", "ah"}


def comparable(words):
    """The pairs (word, its data) with the words in comparable form, without hesitations."""
    result = []
    for word, data in words:
        plain = "".join(c for c in word.lower() if c.isalnum())
        if plain not in HESITATIONS:
            result += [(part, data) for part in SAME.get(plain, plain).split()]
    return result


@dataclass
class Comparison:
    said: int = 0
    wrong: int = 0
    right: list = field(default_factory=list)  # (data of the said word, data of the recognised word)


def compare(said, recognised):
    """Minimises inserted, missing and changed words. Two words written as one, or one as two, are
    right."""
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
    """The nearest-rank percentile: `share` percent of the values, or more, are at most this value."""
    ordered = sorted(values)
    return ordered[max(0, -(-len(ordered) * share // 100) - 1)] if ordered else None
