#!/usr/bin/env python3
"""Turns the results of tools/bench --json FILE into a page's table or plot.

  bench/plot.py FILE            the rows as a Markdown table, on standard output
  bench/plot.py FILE OUT.svg    a bar for each row: its ratio, and its target as a mark
"""
import html
import json
import math
import sys

BAR, GAP, LEFT, WIDTH = 12, 5, 330, 900


def table(rows):
    judged = any(row["target"] for row in rows)
    print("| work | ours, ms | other, ms | other | ratio |" + (" target | |" if judged else ""))
    print("|---|--:|--:|---|--:|" + ("--:|---|" if judged else ""))
    for row in rows:
        line = (f"| {row['work'].strip()} | {row['ours_ms']:.2f} | {row['yardstick_ms']:.2f} | "
                f"{row['yardstick']} | {row['ratio']:.3f} |")
        verdict = f"{row['target']:.3g} | {'met' if row['met'] else 'missed'}" if row["target"] else "|"
        print(line + (f" {verdict} |" if judged else ""))


def plot(rows, title, path):
    """Bars on a logarithmic axis from 0.005 to 5; 1 is the other side's time."""
    def x(ratio):
        span = math.log(5) - math.log(0.005)
        clamped = min(max(ratio, 0.005), 5)
        return LEFT + (WIDTH - LEFT - 20) * (math.log(clamped) - math.log(0.005)) / span

    height = 60 + len(rows) * (BAR + GAP)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="{WIDTH}" height="{height}" fill="white"/>',
           f'<text x="10" y="18" font-size="14">{html.escape(title)}: time as a share of the '
           "other side's</text>"]
    for tick in (0.01, 0.03, 0.1, 0.3, 1, 3):
        out.append(f'<line x1="{x(tick):.0f}" x2="{x(tick):.0f}" y1="30" y2="{height - 20}" '
                   f'stroke="{"#888" if tick == 1 else "#ddd"}"/>'
                   f'<text x="{x(tick):.0f}" y="{height - 6}" text-anchor="middle">{tick}</text>')
    for i, row in enumerate(rows):
        y = 34 + i * (BAR + GAP)
        limit = row["work"].startswith("limit")
        colour = "#999" if limit else "#3a7d44" if row["met"] else "#c8553d"
        name = row["work"].strip() + ("" if row["target"] else f" / {row['yardstick']}")
        out.append(f'<text x="{LEFT - 6}" y="{y + 10}" text-anchor="end">{html.escape(name)}</text>'
                   f'<rect x="{LEFT}" y="{y}" width="{x(row["ratio"]) - LEFT:.1f}" height="{BAR}" '
                   f'fill="{colour}"/>')
        if row["target"]:
            out.append(f'<rect x="{x(row["target"]) - 1:.1f}" y="{y - 2}" width="2" '
                       f'height="{BAR + 4}" fill="black"/>')
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(out + ["</svg>", ""]))


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as file:
        results = json.load(file)
    if len(sys.argv) == 2:
        table(results["rows"])
    else:
        plot(results["rows"], results["title"], sys.argv[2])


if __name__ == "__main__":
    main()
