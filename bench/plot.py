#!/usr/bin/env python3
"""Turns the results of tools/bench --json FILE into a page's tables and plot.

  bench/plot.py table FILE...           the rows of all files as a Markdown table, a missed reach in bold
  bench/plot.py parts FILE...           the rows that time a part of another row
  bench/plot.py levels FILE FILE FILE   ours / limit of the best, AVX2 and portable variants
  bench/plot.py svg OUT.svg FILE...     a bar for each row with a limit: ours / limit; the fastest peer as a mark
"""
import html
import json
import math
import sys

BAR, GAP, LEFT, WIDTH = 12, 5, 330, 900


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)["rows"]


def fastest(row, *kinds):
    """The fastest of the first of the kinds that the row has."""
    for kind in kinds:
        found = [other for other in row["others"] if other["kind"] == kind]
        if found:
            return min(found, key=lambda other: other["ms"])
    return None


def time(milliseconds):
    if milliseconds < 0.1:
        return f"{1000 * milliseconds:.2f} µs"
    return f"{milliseconds:.2f} ms" if milliseconds < 1000 else f"{milliseconds:.0f}"


def cells(other):
    return f"{other['name']}, {time(other['ms'])} | {other['ratio']:.2f}" if other else "|"


def missed(row):
    other = fastest(row, row["against"])
    return row["reach"] and other and other["ratio"] > row["reach"]


def is_part(row):
    return row["work"].startswith("part: ")


def reach(row):
    """What a row is to reach, in bold where it does not."""
    if not row["reach"] or not fastest(row, row["against"]):
        return ""
    text = f"{row['reach']:g} × {row['against'].replace('own', 'other form')}"
    return f"**{text}**" if missed(row) else text


def table(rows):
    print("| work | ours | limit, or other form of ours | ours / limit | fastest peer | ours / peer | reach |")
    print("|---|--:|---|--:|---|--:|---|")
    for row in rows:
        if not is_part(row):
            print(f"| {row['work']} | {time(row['ours_ms'])} | {cells(fastest(row, 'limit', 'own'))} | "
                  f"{cells(fastest(row, 'peer'))} | {reach(row)} |")


def parts(rows):
    print("| part | time | beside | part / that |")
    print("|---|--:|---|--:|")
    for row in rows:
        if is_part(row):
            print(f"| {row['work'].removeprefix('part: ')} | {time(row['ours_ms'])} | "
                  f"{cells(fastest(row, 'limit', 'own'))} |")


def levels(files):
    print("| work | AVX-512 | AVX2 | portable |")
    print("|---|--:|--:|--:|")
    runs = [{row["work"]: fastest(row, "limit") for row in rows} for rows in files]
    for work in runs[0]:
        ratios = [run.get(work) for run in runs]
        if all(ratios):
            print(f"| {work} | " + " | ".join(f"{other['ratio']:.2f}" for other in ratios) + " |")


def plot(rows, path):
    """Bars on a logarithmic axis from 0.2 to 20; 1 is the limit."""
    def x(ratio):
        span = math.log(100)
        clamped = min(max(ratio, 0.2), 20)
        return LEFT + (WIDTH - LEFT - 20) * math.log(clamped / 0.2) / span

    rows = [row for row in rows if fastest(row, "limit") and not is_part(row)]
    height = 60 + len(rows) * (BAR + GAP)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="{WIDTH}" height="{height}" fill="white"/>',
           '<text x="10" y="18" font-size="14">time / time of the limit; the mark is the fastest '
           "peer</text>"]
    for tick in (0.5, 1, 2, 5, 10):
        out.append(f'<line x1="{x(tick):.0f}" x2="{x(tick):.0f}" y1="30" y2="{height - 20}" '
                   f'stroke="{"#888" if tick == 1 else "#ddd"}"/>'
                   f'<text x="{x(tick):.0f}" y="{height - 6}" text-anchor="middle">{tick}</text>')
    for i, row in enumerate(rows):
        y = 34 + i * (BAR + GAP)
        limit, peer = fastest(row, "limit"), fastest(row, "peer")
        out.append(f'<text x="{LEFT - 6}" y="{y + 10}" text-anchor="end">{html.escape(row["work"])}</text>'
                   f'<rect x="{LEFT}" y="{y}" width="{x(limit["ratio"]) - LEFT:.1f}" height="{BAR}" '
                   'fill="#3a7d44"/>')
        if peer:
            out.append(f'<rect x="{x(peer["ms"] / limit["ms"]) - 1:.1f}" y="{y - 2}" width="3" '
                       f'height="{BAR + 4}" fill="#c8553d"/>')
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(out + ["</svg>", ""]))


def main():
    arguments = sys.argv[1:]
    if len(arguments) < 2 or (arguments[0] == "svg" and len(arguments) < 3):
        sys.exit(__doc__)
    if arguments[0] == "levels":
        levels([load(path) for path in arguments[1:]])
    elif arguments[0] in ("table", "parts"):
        rows = [row for path in arguments[1:] for row in load(path)]
        table(rows) if arguments[0] == "table" else parts(rows)
    else:
        plot([row for path in arguments[2:] for row in load(path)], arguments[1])


if __name__ == "__main__":
    main()
