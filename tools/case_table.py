#!/usr/bin/env python3
"""Print a line of a table for each finished run: case_table.py RUN_DIRECTORY...

Patches; days that the run went through and processor time (s) by its log; warnings of the model; mean
temperatures of roofs, walls and ground at noon and at midnight, the coolest and the hottest patch of
all hours (deg C). Of a dated run the mean day of its last month.
"""
import re
import sys
from pathlib import Path

from run_directory import RunDirectory, rows

KINDS = ("roof", "wall", "road")
NOON, MIDNIGHT = 12, 24


def of_log(run):
    """Days, processor seconds, warnings."""
    log = (run.folder / "log0000").read_text()
    days = re.findall(r"^iter=\s+\d+\s+(\S+)", log, re.M)
    seconds = re.findall(r"<\s*1>\s+total\s*:\s*([\d.]+)", log)
    return (round(float(days[-1])) if days else 0, seconds[0] if seconds else "-",
            log.count("%%% warning"))


def temperatures(path, patches):
    """(kind, hour) -> mean by area; coolest and hottest of all."""
    sums, low, high = {}, float("inf"), float("-inf")
    for row in rows(path):
        kind, area = patches.get(int(row[0]), (None, 0.0))
        if kind not in KINDS:
            continue
        value, hour = float(row[5]), int(row[4])
        low, high = min(low, value), max(high, value)
        if hour in (NOON, MIDNIGHT):
            total, covered = sums.get((kind, hour), (0.0, 0.0))
            sums[kind, hour] = (total + area * value, covered + area)
    return {at: total / covered for at, (total, covered) in sums.items()}, low, high


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    print(f"{'':20}{'patches':>8}{'days':>6}{'time':>8}{'warned':>7}" +
          "".join(f"{kind:>14}" for kind in KINDS) + f"{'extremes':>14}")
    for folder in sys.argv[1:]:
        run = RunDirectory(folder)
        patches = run.patches()
        days, seconds, warnings = of_log(run)
        *_, (_, _, path) = run.days("PatchSurfTemp")
        mean, low, high = temperatures(path, patches)
        line = f"{Path(folder).name:20}{len(patches) + len(run.crowns()):8d}{days:6d}{seconds:>8}"
        line += f"{warnings:7d}"
        for kind in KINDS:
            pair = (f"{mean[kind, hour]:.1f}" if (kind, hour) in mean else "-"
                    for hour in (NOON, MIDNIGHT))
            line += f"{', '.join(pair):>14}"
        print(line + f"{low:8.1f}{high:6.1f}")


main()
