#!/usr/bin/env python3
"""Cost of a step of the flow by the size of the box: a table, and a plot of it.

    bench_flow_growth --benchmark_filter=^city --benchmark_out=growth.json
    python3 bench/flow_growth.py growth.json [--plot docs/pictures/flow_growth.svg]

Needs nothing but Python.
"""

import argparse
import json
import pathlib

from growth import plot, table

PARTS = {"ns": "whole step", "pressure": "pressure", "momentum": "momentum",
         "turbulence": "turbulence", "temperature": "temperature"}
COLOURS = dict(zip(PARTS.values(), ("#222222", "#1b6ca8", "#b3541e", "#3a7d44", "#8a5a9e")))


def rows_of(path):
    """The steps over a district, from the smallest box on."""
    rows = []
    for run in json.loads(path.read_text())["benchmarks"]:
        name = run["name"].split("/")
        if name[0] != "city":
            continue
        row = {"cells a side": int(name[1].removeprefix("cells:"))}
        rows.append(row | {PARTS[part]: run[part] for part in PARTS})
    return sorted(rows, key=lambda row: row["cells a side"])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("json", type=pathlib.Path)
    parser.add_argument("--plot", type=pathlib.Path)
    given = parser.parse_args()
    rows = rows_of(given.json)
    print(table(rows))
    if not given.plot:
        return
    most = max(row["whole step"] for row in rows)
    top = 100 * (int(most / 100) + 1)
    given.plot.write_text(plot(rows, COLOURS, "time of a step [ns a cell], one core",
                               tuple(range(0, top + 1, 100)), lambda row, name: row[name]))


if __name__ == "__main__":
    main()
