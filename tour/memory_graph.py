#!/usr/bin/env python3
"""memory_graph.py TABLE PICTURE: draws the table of a load run as an SVG picture.

Panels over the minutes of the run: memory of the program, memory of the web engine's
processes, points and rows held. Dots mark the ends of the rounds, when no row is held.
"""

import csv
import sys

WIDTH, LEFT, RIGHT = 900, 70, 20
PANEL, GAP, TOP = 140, 46, 34
MIB = 1024.0


def nice_top(value):
    """The least of 1, 2, 2.5, 5 times a power of ten that is not below."""
    power = 1.0
    while power * 10 < value:
        power *= 10
    return next((f * power for f in (1, 2, 2.5, 5, 10) if f * power >= value), power * 10)


def main(table, picture):
    with open(table, encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    minutes = [float(row["seconds"]) / 60 for row in rows]
    column = lambda name, unit=1.0: [float(row[name]) / unit for row in rows]
    ends = [i for i, row in enumerate(rows)
            if row["doing"] == "rest" and (i + 1 == len(rows) or rows[i + 1]["doing"] != "rest")]
    panels = [
        ("Program, MiB", [("resident", "#1d4ed8", column("resident_kib", MIB)),
                          ("allocated", "#dc2626", column("in_use_kib", MIB))], True),
        ("Web engine's processes, MiB", [("", "#047857", column("web_kib", MIB))], True),
        ("Points held, thousands", [("", "#6b7280", column("points", 1000.0))], False),
        ("Rows held", [("", "#6b7280", column("rows"))], False),
    ]
    end = max(minutes[-1], 0.1)
    x = lambda minute: LEFT + minute / end * (WIDTH - LEFT - RIGHT)
    height = TOP + len(panels) * (PANEL + GAP)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
           f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>']
    step = next(s for s in (1, 2, 5, 10, 20, 60, 120) if end / s <= 12 or s == 120)
    for number, (title, curves, dots) in enumerate(panels):
        low = TOP + number * (PANEL + GAP) + PANEL
        top = nice_top(max(max(values) for _, _, values in curves) or 1)
        y = lambda value: low - value / top * PANEL
        out.append(f'<text x="{LEFT}" y="{low - PANEL - 10}" font-weight="bold">{title}</text>')
        for place, (name, colour, _) in enumerate(curves):
            out.append(f'<text x="{LEFT + 160 + 90 * place}" y="{low - PANEL - 10}" fill="{colour}">{name}</text>')
        for part in range(5):
            value = top * part / 4
            out.append(f'<path d="M{LEFT} {y(value):.0f}H{WIDTH - RIGHT}" stroke="#e5e7eb"/>'
                       f'<text x="{LEFT - 6}" y="{y(value) + 4:.0f}" text-anchor="end">{value:g}</text>')
        for minute in range(0, int(end) + 1, step):
            out.append(f'<text x="{x(minute):.0f}" y="{low + 16}" text-anchor="middle">{minute}</text>')
        for _, colour, values in curves:
            points = " ".join(f"{x(m):.1f},{y(v):.1f}" for m, v in zip(minutes, values))
            out.append(f'<polyline points="{points}" fill="none" stroke="{colour}"/>')
            if dots:
                out += [f'<circle cx="{x(minutes[i]):.1f}" cy="{y(values[i]):.1f}" r="3" fill="{colour}"/>'
                        for i in ends]
    out.append(f'<text x="{WIDTH - RIGHT}" y="{height - 6}" text-anchor="end">minutes</text></svg>')
    with open(picture, "w", encoding="utf-8") as file:
        file.write("\n".join(out) + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
