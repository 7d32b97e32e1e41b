#!/usr/bin/env python3
"""Cost of a run by the size of the district: a table, and a plot of it.

    python3 bench/growth.py TOWNSKIN DIRECTORY [--streets 5 15 50 150] [--plot docs/growth.svg]

Makes the districts of bench/make_district.py in DIRECTORY, where they are kept, runs TOWNSKIN in each
by one hand, and prints what its log tells: start, step and exchange by the piece, and memory. Needs
nothing but Python.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import time

STEPS = 24
SWEEPS = 10
HERE = pathlib.Path(__file__).parent


def made(place, streets):
    """The run directory of a district of so many streets."""
    run = place / f"streets_{streets}"
    if not (run / "FormFactor.txt").exists():
        subprocess.run([sys.executable, HERE / "make_district.py", run, "--streets", str(streets),
                        "--steps", str(STEPS)], check=True, stdout=subprocess.DEVNULL)
    return run


def lines_of(path):
    """Lines of a file behind its title."""
    with open(path, "rb") as file:
        return sum(piece.count(b"\n") for piece in iter(lambda: file.read(1 << 20), b"")) - 1


def measure(townskin, run):
    """One run: what it took, by the piece."""
    (run / "restart.dat").unlink(missing_ok=True)
    begun = time.perf_counter()
    subprocess.run([townskin], cwd=run, check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "TOWNSKIN_THREADS": "1"})
    wall = time.perf_counter() - begun
    log = (run / "log0000").read_text()
    steps = float(re.search(r"> total +: +([\d.]+)", log)[1])
    exchange = float(re.search(r"> radref +: +([\d.]+)", log)[1])
    most, arrays = map(float, re.search(r"at most ([\d.]+) MB, arrays ([\d.]+) MB", log).groups())
    patches = lines_of(run / "Patch.txt")
    entries = lines_of(run / "FormFactor.txt")
    return {"patches": patches, "view factors": entries,
            "start [ns a view factor]": 1e9 * (wall - steps) / entries,
            "step [ns a patch]": 1e9 * steps / STEPS / patches,
            "without the exchange": 1e9 * (steps - exchange) / STEPS / patches,
            "sweep [ns a view factor]": 1e9 * exchange / STEPS / SWEEPS / entries,
            "memory [bytes a view factor]": 1e6 * most / entries,
            "memory / arrays": most / arrays}


def table(rows):
    """The rows as a table of Markdown."""
    text = ["| " + " | ".join(rows[0]) + " |", "|" + "---|" * len(rows[0])]
    for row in rows:
        fields = [f"{v:,}" if isinstance(v, int) else f"{v:.3g}" if v < 100 else f"{v:.0f}"
                  for v in row.values()]
        text.append("| " + " | ".join(fields) + " |")
    return "\n".join(text)


COLOURS = {"start [ns a view factor]": "#1b6ca8", "step [ns a patch]": "#b3541e",
           "sweep [ns a view factor]": "#3a7d44"}


def plot(rows, colours, note, ticks, value_of):
    """Values over the sizes, which are the first of a row; `ticks` are those of the level lines."""
    import math
    width, height, left, base = 640, 300, 60, 250
    size = next(iter(rows[0]))
    low, high = math.log(rows[0][size]), math.log(rows[-1][size])
    x_of = lambda n: left + (math.log(n) - low) / max(high - low, 1e-9) * 380
    y_of = lambda value: base - value * 180 / ticks[-1]
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="12">',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for tick in ticks:
        y = y_of(tick)
        parts.append(f'<path d="M{left} {y:.0f}H440" stroke="#ccc"/>'
                     f'<text x="{left - 8}" y="{y + 4:.0f}" text-anchor="end">{tick}</text>')
    for row in rows:
        parts.append(f'<text x="{x_of(row[size]):.0f}" y="{base + 18}" text-anchor="middle">'
                     f'{row[size]:,}</text>')
    parts.append(f'<text x="250" y="{base + 38}" text-anchor="middle">{size}</text>'
                 f'<text x="{left - 40}" y="24">{note}</text>')
    for n, (name, colour) in enumerate(colours.items()):
        points = [(x_of(row[size]), y_of(value_of(row, name))) for row in rows]
        line = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in points]
        parts.append(f'<text x="455" y="{100 + 20 * n}" fill="{colour}">{name}</text>')
    return "\n".join(parts + ["</svg>", ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("townskin")
    parser.add_argument("directory", type=pathlib.Path)
    parser.add_argument("--streets", type=int, nargs="+", default=[5, 15, 50, 150])
    parser.add_argument("--plot", type=pathlib.Path)
    given = parser.parse_args()
    townskin = os.path.abspath(given.townskin)
    rows = [measure(townskin, made(given.directory, streets)) for streets in given.streets]
    print(table(rows))
    if given.plot:
        # Level lines mean linear growth.
        given.plot.write_text(plot(rows, COLOURS, "cost by the piece, the smallest district as 1",
                                   (0, 1, 2), lambda row, name: row[name] / rows[0][name]))


if __name__ == "__main__":
    main()
