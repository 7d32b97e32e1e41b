#!/usr/bin/env python3
"""Print the day that a finished run left: sun, air, and the temperatures of roofs, walls and roads.

usage: day_table.py RUN_DIRECTORY

One row an hour: direct sun on a plane that faces it and scattered sky light (W/m2), air
temperature, and of each kind of surface the coolest patch, the mean by area and the hottest
patch (deg C). Crowns of trees have the temperature of a black body that radiates as their faces do.
A dated run gives one such table, its mean day, for each month.
"""
import sys

from run_directory import RunDirectory, brightness, rows

KINDS = ("roof", "wall", "road", "crown")


def temperatures(path, patches):
    """hour -> kind -> (coolest, sum of area x temperature, sum of area, hottest)"""
    hours = {}
    last = None
    for row in rows(path):
        hour = int(row[4])
        if hour != last:  # the last day of several stays
            hours[hour] = {}
            last = hour
        kind, area = patches.get(int(row[0]), (None, 0.0))
        if kind not in KINDS:
            continue
        t = brightness(float(row[6])) if kind == "crown" else float(row[5])
        low, total, covered, high = hours[hour].get(kind, (t, 0.0, 0.0, t))
        hours[hour][kind] = (min(low, t), total + area * t, covered + area, max(high, t))
    return hours


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    run = RunDirectory(sys.argv[1])
    patches = run.patches() | run.crowns()
    kinds_there = [kind for kind in KINDS if kind in {of for of, _ in patches.values()}]
    for title, month, path in run.days("PatchSurfTemp"):
        sun, days = run.sun(month)
        air = run.air(days)
        print(f"{title} (W/m2; deg C: coolest, mean, hottest)\n")
        print("hour    sun    sky    air |" + "|".join(f"{kind:^23}" for kind in kinds_there))
        for hour, kinds in sorted(temperatures(path, patches).items()):
            direct, scattered, _ = sun.get(hour, (float("nan"),) * 3)
            line = f"{hour:4d} {direct:6.0f} {scattered:6.0f} {air.get(hour, float('nan')):6.1f} |"
            for kind in kinds_there:
                if kind in kinds:
                    low, total, covered, high = kinds[kind]
                    line += f"{low:7.1f}{total / covered:7.1f}{high:7.1f}  |"
                else:
                    line += f"{'-':>7}{'-':>7}{'-':>7}  |"
            print(line.rstrip("|").rstrip())
        print()


main()
