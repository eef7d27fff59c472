"""Makes the table and the plot of runs."""

from statistics import mean

from score import percentile

WANTED_SHOWN_P90 = 1.0  # seconds
HEAD = (("", ""), ("words wrong %", "live"), ("", "batch"), ("shown after s", "p50"), ("", "p90"),
        ("", "p95"), ("committed s", "p50"), ("", "p90"), ("", "UPWR"), ("", "NE"), ("of a", "core"))


def ratio(runs, part, base):
    total = sum(run[base] for run in runs)
    return sum(run[part] for run in runs) / total if total else None


def measures(runs):
    """One number per column, over all these runs together."""
    times = {key: [t for run in runs for t in run[key]] for key in ("shown", "settled")}
    wrong = [ratio(runs, part, base) for part, base in (("wrong", "said"), ("batchWrong", "said"))]
    return ([100 * share for share in wrong] + [percentile(times["shown"], p) for p in (50, 90, 95)]
            + [percentile(times["settled"], p) for p in (50, 90)]
            + [ratio(runs, "unstable", "words"), ratio(runs, "erased", "words"),
               ratio(runs, "processor", "seconds")])


def rows(runs):
    """[(name, measures of each round)], for each kind of speech and noise."""
    groups = {}
    for run in runs:
        name = run["kind"] + (f", {run['noise']} {run['decibels']} dB" if run["noise"] else "")
        groups.setdefault(name, {}).setdefault((run["leadIn"], run["round"]), []).append(run)
    return [(name, [measures(of_one) for of_one in group.values()]) for name, group in groups.items()]


def cell(values, digits):
    present = [value for value in values if value is not None]
    if not present:
        return "–"
    text = f"{mean(present):.{digits}f}"
    half = (max(present) - min(present)) / 2
    return text if len(present) == 1 else f"{text} ±{half:.{digits}f}"


def table(runs):
    digits = (1, 1, 2, 2, 2, 2, 2, 2, 2, 2)
    lines = [[top for top, _ in HEAD], [name for _, name in HEAD]]
    for name, of_each in rows(runs):
        lines.append([name] + [cell(column, d) for column, d in zip(zip(*of_each), digits)])
    widths = [max(len(line[i]) for line in lines) for i in range(len(HEAD))]
    text = "\n".join("  ".join(part.rjust(width) if i else part.ljust(width)
                               for i, (part, width) in enumerate(zip(line, widths))).rstrip()
                     for line in lines)
    loads = [run["load"] for run in runs]
    said = sum(run["said"] for run in runs if run["leadIn"] == runs[0]["leadIn"] and run["round"] == 0)
    text += (f"\n\n{len(runs)} runs, {said} words a round; mean over rounds ± half of their range; other "
             f"load of the computer {min(loads):.1f} to {max(loads):.1f} processes")
    if any(run["simulated"] for run in runs):
        text += "\nThe recogniser alone, on simulated time."
    return text + "\n"


def svg(runs):
    """Draws the wrong words and the delay of shown words. "Batch" means that the engine gets the
    whole recording at once. Whiskers show the range of the rounds."""
    found = rows(runs)
    left, wide, gap, high = 210, 330, 60, 26
    height = 70 + high * len(found)
    maximum = max([value for _, each in found for one in each for value in one[:2]] + [10])
    latest = max([one[4] for _, each in found for one in each if one[4] is not None] + [1.5])
    parts = []

    def text(x, y, words, anchor="start"):
        escaped = words.replace("&", "&amp;").replace("<", "&lt;")
        parts.append(f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{escaped}</text>')

    def scale(x, greatest, unit):
        for step in range(5):
            at = x + wide * step / 4
            parts.append(f'<line x1="{at}" x2="{at}" y1="40" y2="{height - 25}" stroke="#ddd"/>')
            text(at, height - 8, f"{greatest * step / 4:.3g} {unit}", "middle")

    def mark(x, greatest, y, values, colour):
        present = [value for value in values if value is not None]
        if not present:
            return
        low, middle, top = (x + wide * value / greatest
                            for value in (min(present), mean(present), max(present)))
        parts.append(f'<line x1="{low:.1f}" x2="{top:.1f}" y1="{y}" y2="{y}" stroke="{colour}"/>'
                     f'<circle cx="{middle:.1f}" cy="{y}" r="4" fill="{colour}"/>')

    second = left + wide + gap
    text(left, 15, "words wrong: live (blue), the engine's batch (orange)")
    text(second, 15, "shown after: p50 green, p90 blue, p95 red; dashed: wanted p90")
    scale(left, maximum, "%")
    scale(second, latest, "s")
    at = second + wide * WANTED_SHOWN_P90 / latest
    parts.append(f'<line x1="{at}" x2="{at}" y1="40" y2="{height - 25}" stroke="#888" stroke-dasharray="4"/>')
    for i, (name, of_each) in enumerate(found):
        y = 55 + high * i
        text(left - 10, y + 4, name, "end")
        columns = list(zip(*of_each))
        mark(left, maximum, y - 3, columns[0], "#36c")
        mark(left, maximum, y + 5, columns[1], "#e80")
        for offset, column, colour in ((-4, 2, "#2a2"), (0, 3, "#36c"), (4, 4, "#c33")):
            mark(second, latest, y + offset, columns[column], colour)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{second + wide + 40}" height="{height}" '
            'font-family="sans-serif" font-size="12"><rect width="100%" height="100%" fill="white"/>'
            + "".join(parts) + "</svg>\n")
