"""figures.py - the figures of a run, and how goals.json judges them. Used by scripts/bench and report.py.

A file of figures is a list of runs, one for each topic and word size, the newest of each alone:
    {"topic": "map", "bits": 64, "date": ..., "machine": ..., "compiler": ..., "repetitions": 5, "figures": [
        {"what": "Find/u32/random/1000", "who": "ours", "unit": "ns", "value": 4.5, "spread": 0.02}, ...]}
value is the median of the repetitions, of CPU time for one operation; spread their standard deviation over their mean.

A goal holds for what its regular expression matches as a whole: ours / the peer's is at most so much. With "itself" the
peer is another figure of ours: the expression's replacement. For the peer "limit", ours is at most so much in its unit.
"""

import collections
import json
import re
from pathlib import Path

GOALS = Path(__file__).resolve().parent / "goals.json"

# One line of the table: the row is "" where no goal is set, and so is the goal.
Line = collections.namedtuple("Line", "row part topic bits what ours unit peer theirs ratio goal verdict")


def load(path):
    return json.loads(Path(path).read_text(encoding="utf-8")) if Path(path).exists() else []


def save(path, runs):
    """One line for each figure, so that changes are seen; four digits are more than any of them is worth."""
    texts = []
    for run in runs:
        rest = json.dumps({key: value for key, value in run.items() if key != "figures"})
        rounded = [{key: float(f"{value:.4g}") if isinstance(value, float) else value for key, value in figure.items()}
                   for figure in run["figures"]]
        rows = ",\n".join("  " + json.dumps(figure) for figure in rounded)
        texts.append(rest[:-1] + ', "figures": [\n' + rows + "\n]}")
    Path(path).write_text("[\n" + ",\n".join(texts) + "\n]\n", encoding="utf-8")


def merge(old, new):
    """The new runs, and of the old ones those that were not made again."""
    made = {(run["topic"], run["bits"]) for run in new}
    return sorted(
        [run for run in old if (run["topic"], run["bits"]) not in made] + new,
        key=lambda run: (run["topic"], -run["bits"]),
    )


def verdict(ratio, goal):
    """Two ratios closer than a quarter are equal: the machine is shared."""
    if goal is None:
        return ""
    return "met" if ratio <= goal else "near" if ratio <= goal * 1.25 else "missed"


def by_size(what):
    """Sorts what is measured, numbers by their size."""
    return [(len(part), part) if part.isdigit() else (0, part) for part in what.split("/")]


def judge(run, goals=None):
    """The lines of one run: first those with a goal, in the order of the goals, then the others."""
    goals = load(GOALS) if goals is None else goals
    values = collections.defaultdict(dict)
    units = {}
    for figure in run["figures"]:
        values[figure["what"]][figure["who"]] = figure["value"]
        units[figure["what"]] = figure["unit"]

    def line(row, part, what, peer, theirs, goal):
        ours = values[what]["ours"]
        ratio = ours / theirs if theirs else float("inf")
        return Line(row, part, run["topic"], run["bits"], what, ours, units[what], peer, theirs, ratio, goal,
                    verdict(ratio, goal))

    lines = []
    judged = set()
    whats = sorted((what for what in values if "ours" in values[what]), key=by_size)
    for goal in goals:
        if goal["topic"] != run["topic"]:
            continue
        for what in whats:
            found = re.fullmatch(goal["match"], what)
            if not found:
                continue
            for peer, limit in goal["at_most"].items():
                limit = limit.get(str(run["bits"])) if isinstance(limit, dict) else limit
                if peer == "limit":
                    theirs, name, limit = limit, peer, limit and 1
                elif "itself" in goal:
                    other = found.expand(goal["itself"])
                    theirs, name = values.get(other, {}).get("ours"), other
                else:
                    theirs, name = values[what].get(peer), peer
                    judged.add((what, peer))
                if theirs is not None:
                    lines.append(line(goal["row"], goal["part"], what, name, theirs, limit))
    for what in whats:
        for peer, theirs in sorted(values[what].items()):
            if peer != "ours" and (what, peer) not in judged:
                lines.append(line("", "", what, peer, theirs, None))
    return lines


def amount(value, unit):
    """A figure for people: 4.51 ns, 65.1 bytes."""
    return f"{value:.3g} {unit}" if value < 1000 else f"{value:.0f} {unit}"


def summary(lines):
    """{row: (part, how many were met, near, missed)} of the judged lines."""
    rows = {}
    for line in lines:
        if line.verdict:
            part, counts = rows.setdefault(line.row, (line.part, collections.Counter()))
            counts[line.verdict] += 1
    return {row: (part, counts["met"], counts["near"], counts["missed"])
            for row, (part, counts) in sorted(rows.items(), key=lambda item: int(item[0]))}
