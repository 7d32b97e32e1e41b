#!/usr/bin/env python3
"""Print the loads of the day that a finished run with buildings left.

usage: load_table.py RUN_DIRECTORY

One row an hour and, for each building use, the room temperature (deg C, mean by floor area), the
load of the rooms and the heat that the buildings give to the air outside (both W per m2 of floor,
latent heat included); at the end of the row what all plants together take out (kW). A dated run
gives one such table, its mean day, for each month.
"""
import sys

from run_directory import RunDirectory, number, rows


def floors(run, month):
    """BldID -> (use, total floor area)"""
    path = run.month_path("Building", month) if month else run.path("Building")
    return {int(row[0]): (int(row[1]), number(row[3]) * number(row[4])) for row in rows(path)}


def loads(path, buildings):
    """hour -> use -> sums of (floor area, and by floor area: room, load, outside, plant)"""
    hours = {}
    last = None
    for hour, bldid, *fields in rows(path):
        hour = int(hour)
        if hour != last:  # the last day of several stays
            hours[hour] = {}
            last = hour
        *_, load, released, damp, room, _, plant = map(number, fields)
        use, area = buildings[int(bldid)]
        values = (room, load, released + damp, plant)
        old = hours[hour].get(use, (0.0,) * 5)
        hours[hour][use] = tuple(a + b for a, b in zip(old, (area, *(area * v for v in values))))
    return hours


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    run = RunDirectory(sys.argv[1])
    for title, month, path in run.days("heat"):
        buildings = floors(run, month)
        uses = sorted({use for use, _ in buildings.values()})
        print(f"{title} (deg C; W per m2 of floor; kW)\n")
        print("     |" + "|".join(f"{f'use {use}':^23}" for use in uses) + "|")
        print("hour |" + f"{'room':>6}{'load':>7}{'outside':>9} |" * len(uses) + "  plants")
        for hour, by_use in sorted(loads(path, buildings).items()):
            line = f"{hour:4d} |"
            power = 0.0
            for use in uses:
                area, *sums = by_use.get(use, (1.0,) + (float("nan"),) * 4)
                room, load, outside, _ = (v / area for v in sums)
                line += f"{room:6.1f}{load:7.1f}{outside:9.1f} |"
                power += sums[3] / 1000.0
            print(f"{line}{power:8.1f}")
        print()


main()
