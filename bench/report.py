#!/usr/bin/env python3
"""bench/report.py [FILE] - makes docs/performance.md and its plots from a file of figures (default docs/performance.json).

The file is what scripts/bench --json wrote. Nothing else goes in: the same file gives the same pages.
"""

import collections
import math
import statistics
import sys
from pathlib import Path

sys.dont_write_bytecode = True
import figures  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent
DOCS = ROOT / "docs"
PLOTS = DOCS / "performance"

INK, SOFT, GRID = "#1f2430", "#5b6270", "#dfe3ea"
COLOURS = {"ours": "#0b62d6", "std": "#d9730d", "hand": "#d9730d", "absl": "#3f8f4f", "lmdb": "#8a4fbf", "set": "#128a8a",
           "scan": "#8c8f96"}
VERDICT_COLOURS = {"met": "#2e8b57", "near": "#c9a227", "missed": "#c93c37"}


class Svg:
    """Shapes on a white sheet."""

    def __init__(self, width, height, title):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
            f'font-family="sans-serif" font-size="11" fill="{INK}">',
            f"<title>{escaped(title)}</title>",
            f'<rect width="{width}" height="{height}" fill="#ffffff"/>',
        ]

    def text(self, x, y, text, anchor="start", colour=INK, size=11, weight="normal"):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}" font-size="{size}" '
                          f'font-weight="{weight}">{escaped(text)}</text>')

    def line(self, x1, y1, x2, y2, colour=GRID, width=1.0, dash=""):
        dashes = f' stroke-dasharray="{dash}"' if dash else ""
        self.parts.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
                          f'stroke-width="{width}"{dashes}/>')

    def curve(self, points, colour, dash=""):
        dashes = f' stroke-dasharray="{dash}"' if dash else ""
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="1.8"{dashes}/>')
        for x, y in points:
            self.dot(x, y, colour, 2.6)

    def dot(self, x, y, colour, radius=4.0, hollow=False):
        fill = "#ffffff" if hollow else colour
        self.parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{fill}" stroke="{colour}" '
                          f'stroke-width="1.6"/>')

    def write(self, name):
        PLOTS.mkdir(parents=True, exist_ok=True)
        (PLOTS / name).write_text("\n".join(self.parts + ["</svg>"]) + "\n", encoding="utf-8")


def escaped(text):
    return str(text).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def number(value):
    return f"{value:,.0f}".replace(",", " ") if value >= 100 else f"{value:.3g}"


def value_of(runs, topic, bits, what, who):
    for run in runs:
        if (run["topic"], run["bits"]) == (topic, bits):
            for figure in run["figures"]:
                if (figure["what"], figure["who"]) == (what, who):
                    return figure["value"]
    return None


def by_size(runs, name, title, topic, panels, whos, unit, sizes=(1000, 100000, 1000000)):
    """Small multiples, a row for each word size: a curve for each who over the size, both axes by decades."""
    width, height, left, top = 232, 190, 46, 54
    bits_found = [bits for bits in (64, 32) if any((run["topic"], run["bits"]) == (topic, bits) for run in runs)]
    if not bits_found:
        return False
    svg = Svg(left + width * len(panels), top + (height + 34) * len(bits_found), title)
    svg.text(12, 20, title, size=14, weight="bold")
    at = 12
    for who in whos:
        svg.dot(at + 4, 36, COLOURS[who], 3)
        svg.text(at + 12, 40, who, colour=COLOURS[who], weight="bold")
        at += 34 + 7 * len(who)
    curves = {}
    for bits in bits_found:
        for panel, pattern in panels:
            for who in whos:
                points = [(size, value_of(runs, topic, bits, pattern.format(size), who)) for size in sizes]
                curves[bits, panel, who] = [(size, value) for size, value in points if value]
    values = [value for points in curves.values() for _, value in points]
    if not values:
        return False
    low, high = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))
    for row, bits in enumerate(bits_found):
        for column, (panel, _) in enumerate(panels):
            x0, y0 = left + column * width, top + 18 + row * (height + 34)
            w, h = width - 34, height - 30

            def place(size, value):
                return (x0 + w * (math.log10(size) - math.log10(sizes[0])) / (math.log10(sizes[-1]) - math.log10(sizes[0])),
                        y0 + h - h * (math.log10(value) - low) / max(high - low, 1))

            svg.text(x0, y0 - 6, f"{panel}, {bits}-bit", weight="bold")
            for decade in range(low, high + 1):
                _, y = place(sizes[0], 10**decade)
                svg.line(x0, y, x0 + w, y)
                if column == 0:
                    svg.text(x0 - 5, y + 4, number(10**decade), "end", SOFT, 10)
            for size in sizes:
                x, _ = place(size, 10**low)
                svg.line(x, y0, x, y0 + h)
                svg.text(x, y0 + h + 14, f"1e{round(math.log10(size))}", "middle", SOFT, 10)
            for who in whos:
                points = curves[bits, panel, who]
                if points:
                    svg.curve([place(*point) for point in points], COLOURS[who])
        svg.text(10, top + 18 + row * (height + 34) - 6, unit, colour=SOFT, size=10)
    svg.write(name)
    return True


def groups(lines):
    """{(row, part, peer): {bits: [lines]}} of the judged lines, in the order of the goals."""
    found = collections.OrderedDict()
    for line in sorted((line for line in lines if line.verdict), key=lambda line: int(line.row)):
        peer = "itself" if "/" in line.peer else line.peer
        found.setdefault((line.row, line.part, peer), {}).setdefault(line.bits, []).append(line)
    return found


def against_goals(lines):
    """Each group's worst ratio over its goal, beside the line that it should stay left of."""
    found = groups(lines)
    left, width, step, top = 320, 480, 17, 62
    svg = Svg(left + width + 30, top + step * len(found) + 34, "Our worst figure over the goal")
    svg.text(12, 20, "Our worst figure over the goal", size=14, weight="bold")
    svg.text(12, 38, "Left of the line is met. Filled: 64-bit, hollow: 32-bit. Green met, yellow missed by less than a quarter.",
             colour=SOFT)
    low, high = -1.0, 1.0

    def place(over):
        return left + width * (min(max(math.log10(over), low), high) - low) / (high - low)

    bottom = top + step * len(found)
    for over in (0.1, 0.2, 0.5, 1, 2, 5, 10):
        svg.line(place(over), top - 8, place(over), bottom, INK if over == 1 else GRID, 1.4 if over == 1 else 1)
        svg.text(place(over), bottom + 14, f"{over:g}x" + {0.1: " or less", 10: " or more"}.get(over, ""), "middle", SOFT, 10)
    for index, ((row, part, peer), by_bits) in enumerate(found.items()):
        y = top + step * index + 4
        svg.text(22, y + 4, row, "end", SOFT)
        svg.text(28, y + 4, f"{part} / {peer}")
        for bits, judged in sorted(by_bits.items()):
            worst = max(judged, key=lambda line: line.ratio / line.goal)
            svg.dot(place(worst.ratio / worst.goal), y, VERDICT_COLOURS[worst.verdict], 4, hollow=bits == 32)
    svg.write("goals.svg")


def span(judged):
    """The ratios of some lines, from the best to the worst."""
    if not judged:
        return ""
    low, high = min(line.ratio for line in judged), max(line.ratio for line in judged)
    return f"{low:.2f}" if f"{low:.2f}" == f"{high:.2f}" else f"{low:.2f} – {high:.2f}"


def score(judged):
    counts = collections.Counter(line.verdict for line in judged)
    return ", ".join(f"{counts[verdict]} {verdict}" for verdict in ("met", "near", "missed") if counts[verdict])


def goal_of(by_bits):
    """The goal, or the goals, of a group."""
    goals = {bits: sorted({line.goal for line in judged}) for bits, judged in by_bits.items()}
    texts = {bits: " / ".join(f"{goal:g}" for goal in limits) for bits, limits in goals.items()}
    if len(set(texts.values())) == 1:
        return next(iter(texts.values()))
    return ", ".join(f"{text} ({bits}-bit)" for bits, text in sorted(texts.items(), reverse=True))


def circumstances(runs):
    """What the figures depend on beside the code, one bullet each."""
    dates = sorted(run["date"] for run in runs)
    bullets = [f"- Machine: {' / '.join(sorted({run['machine'] for run in runs}))}."]
    compilers = collections.defaultdict(set)
    for run in runs:
        compilers[run["compiler"]].add(run["bits"])
    for compiler, bits in compilers.items():
        bullets.append(f"- Compiler: {compiler}, `-O2`, no `-march` beyond i686 with SSE2 in 32-bit "
                       f"({' and '.join(f'{size}-bit' for size in sorted(bits, reverse=True))}).")
    spreads = [figure.get("spread", 0) for run in runs for figure in run["figures"] if figure["unit"] == "ns"]
    tenths = statistics.quantiles(spreads, n=10)
    loads = [float(run["load"]) for run in runs]
    bullets += [
        f"- Measured: {dates[0]} to {dates[-1]}, commits {', '.join(sorted({run['commit'] for run in runs}))}.",
        f"- Spread of {runs[0]['repetitions']} interleaved repetitions (standard deviation over mean): "
        f"{100 * statistics.median(spreads):.0f} % at the median, {100 * tenths[8]:.0f} % at the ninth tenth. "
        f"Load of the machine meanwhile: {min(loads):.1f} to {max(loads):.1f}.",
    ]
    return bullets


def page(runs, lines, plots):
    out = [
        "# Speed",
        "",
        "Our hot parts beside their peers: ratios of medians in one run of one binary, CPU time; below 1 means that ours takes",
        "less. `scripts/bench --json docs/performance.json` measures, `bench/report.py` makes this page and its plots from that",
        "file; edit neither by hand. The goals are those of [bench/goals.json](../bench/goals.json). `near` is a miss by less",
        "than a quarter: machines are shared, so two ratios closer than that are equal.",
        "",
    ]
    if (DOCS / "performance-ideas").exists():
        out += ["What was tried, and what failed: [performance-ideas](performance-ideas/README.md).", ""]
    out += circumstances(runs)
    out += ["", "## Goals", "", "![Our worst figure over the goal](performance/goals.svg)", ""]
    out += ["Several sizes and key families share a line: the ratios run from the best to the worst of them.", ""]
    out += ["| row | hot part | beside | goal | 64-bit | | 32-bit | |", "| --- | --- | --- | --- | --- | --- | --- | --- |"]
    for (row, part, peer), by_bits in groups(lines).items():
        cells = [row, part, peer, goal_of(by_bits)]
        for bits in (64, 32):
            cells += [span(by_bits.get(bits, [])), score(by_bits.get(bits, []))]
        out.append(f"| {' | '.join(cells)} |")
    measured = {line.row for line in lines}
    missing = {f"{goal['row']} ({goal['part']})": None for goal in figures.load(figures.GOALS) if goal["row"] not in measured}
    if missing:
        out += ["", f"Not measured: {', '.join(missing)}."]
    for title, name, text in plots:
        out += ["", f"## {title}", "", text, "", f"![{title}](performance/{name})"]
    out += ["", "Every figure, with its spread, is in [performance.json](performance.json)."]
    (DOCS / "performance.md").write_text("\n".join(out) + "\n", encoding="utf-8")


def main(arguments):
    runs = figures.load(arguments[0] if arguments else DOCS / "performance.json")
    if not runs:
        sys.exit("report: no figures")
    lines = [line for run in runs for line in figures.judge(run)]
    against_goals(lines)
    plots = []
    random = [(what, what + "/u32/random/{}") for what in ("Insert", "Hit", "Miss", "EraseInsert", "Iterate", "Teardown")]
    if by_size(runs, "map.svg", "Map with nodes, random 32-bit keys", "map", random, ("ours", "std", "absl"), "ns"):
        plots.append(("Maps by size", "map.svg", "Nanoseconds for one operation on a map of random keys, by the number of members."))
    tables = [(what, what + "/8/random/{}") for what in ("Lookup", "Overwrite", "Fill", "DeleteInsert", "Recover", "RecoverEmpty")]
    if by_size(runs, "cachetable.svg", "Cache table, entries of 8 bytes, random keys", "cachetable", tables,
               ("ours", "hand", "lmdb", "set", "scan"), "ns"):
        plots.append(("Tables by size", "cachetable.svg",
                      "Nanoseconds for one slot. `hand` is a table by hand, `scan` reads the key words alone, `set` fills a\n"
                      "`std::unordered_set` with the slot numbers."))
    decades = (1000, 10000, 100000, 1000000, 10000000)
    growth = [(what, what + "/{}") for what in ("Grow", "GrownHit", "TableFill", "TableLookup")]
    if by_size(runs, "growth.svg", "From a thousand to ten million", "growth", growth, ("ours", "std", "absl"), "ns", decades):
        plots.append(("Growth", "growth.svg", "Nanoseconds for one insert of a growth from empty, and for one look-up after it."))
    memory = [("MapMember", "MapMember/u32/{}"), ("TableSlot, full", "TableSlot/full/{}"), ("TableSlot, empty", "TableSlot/empty/{}")]
    if by_size(runs, "memory.svg", "Heap for each member and slot", "sizes", memory, ("ours", "std", "absl", "hand"), "bytes",
               decades[1:]):
        plots.append(("Memory", "memory.svg", "Bytes of heap for each member of a map and each slot of a table, its region not counted."))
    page(runs, lines, plots)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
