#!/usr/bin/env python3
"""Compare a finished run of townskin_case with a thermal image from the air.

usage: thermal_image.py RUN_DIRECTORY IMAGE.asc [FIRST_HOUR LAST_HOUR]

IMAGE.asc is an ESRI grid of surface temperatures (deg C) in the system that IMAGE.prj names. The run
is looked at from straight above, every metre, and brought to the cells of the image: roofs, walkable
ground and the tops of crowns, whichever stands highest. A cell belongs to a kind that fills at least
three quarters of it. Roofs and ground have their surface temperature, crowns that of a black body
which radiates as the crown does upwards, as leaves let some of the ground through.

For each hour and kind: mean and spread (standard deviation) over the cells, here and in the image,
and how both go together from cell to cell (correlation); then the same of all cells.
"""
import math
import re
import sys
from pathlib import Path

import pyproj  # python3-pyproj

from run_directory import RunDirectory, brightness, number, rows

KINDS = ("roof", "crown", "road")
SHARE = 0.75


class Image:
    def __init__(self, path):
        words = path.read_text().split()
        head = {words[n].lower(): float(words[n + 1]) for n in range(0, 12, 2)}
        self.columns, self.lines = int(head["ncols"]), int(head["nrows"])
        self.x, self.y, self.size = head["xllcorner"], head["yllcorner"], head["cellsize"]
        values = [float(word) for word in words[12:]]
        self.values = [None if v == head["nodata_value"] else v for v in values]
        self.system = pyproj.CRS.from_wkt(path.with_suffix(".prj").read_text())

    def cell(self, east, north):
        column = math.floor((east - self.x) / self.size)
        line = self.lines - 1 - math.floor((north - self.y) / self.size)
        if 0 <= column < self.columns and 0 <= line < self.lines:
            return line * self.columns + column
        return None


def inside(x, y, ring):
    odd = False
    for (x1, y1, _), (x2, y2, _) in zip(ring, ring[1:] + ring[:1]):
        if (y1 > y) != (y2 > y) and x < x1 + (y - y1) * (x2 - x1) / (y2 - y1):
            odd = not odd
    return odd


def shapes(run):
    """PID, rings of each piece."""
    piece = None
    for fields in rows(run.folder / "geometry.txt"):
        values = [float(f) for f in fields[4:]]
        ring = list(zip(values[0::3], values[1::3], values[2::3]))
        if fields[2] == "0":
            if piece:
                yield piece
            piece = (int(fields[0]), [ring])
        else:
            piece[1].append(ring)
    if piece:
        yield piece


def seen_from_above(run, kinds, slopes):
    """(x, y) in whole metres -> PID of the highest surface."""
    seen = {}
    for pid, rings in shapes(run):
        nx, ny, nz = slopes[pid]
        if kinds[pid] not in KINDS or nz < 0.01:
            continue
        xs, ys = [p[0] for p in rings[0]], [p[1] for p in rings[0]]
        for column in range(math.floor(min(xs)), math.ceil(max(xs))):
            for line in range(math.floor(min(ys)), math.ceil(max(ys))):
                x, y = column + 0.5, line + 0.5
                if not inside(x, y, rings[0]) or any(inside(x, y, hole) for hole in rings[1:]):
                    continue
                x0, y0, z0 = rings[0][0]
                z = z0 - (nx * (x - x0) + ny * (y - y0)) / nz
                if z > seen.get((column, line), (-1.0, 0))[0]:
                    seen[column, line] = (z, pid)
    return {at: pid for at, (_, pid) in seen.items()}


def centre(run):
    text = (run.folder / "case.log").read_text()
    found = re.search(r"^centre: ([-.\d]+) degrees north, ([-.\d]+) east", text, re.M)
    if not found:
        sys.exit("the data of this run did not tell where they lie")
    return float(found.group(1)), float(found.group(2))


def cells_of(run, image, seen):
    """Cell of the image -> PIDs seen in it."""
    latitude, longitude = centre(run)
    plan = f"+proj=aeqd +lat_0={latitude} +lon_0={longitude} +ellps=GRS80"
    to_image = pyproj.Transformer.from_crs(plan, image.system, always_xy=True)
    cells = {}
    for (column, line), pid in seen.items():
        cell = image.cell(*to_image.transform(column + 0.5, line + 0.5))
        if cell is not None and image.values[cell] is not None:
            cells.setdefault(cell, []).append(pid)
    return cells


def temperatures(path, kinds):
    """hour -> PID -> deg C"""
    hours = {}
    for row in rows(path):
        pid = int(row[0])
        value = brightness(number(row[6])) if kinds[pid] == "crown" else number(row[5])
        hours.setdefault(int(row[4]), {})[pid] = value
    return hours


def moments(values):
    mean = sum(values) / len(values)
    return mean, math.sqrt(sum((v - mean) ** 2 for v in values) / len(values))


def correlation(pairs):
    (a, sa), (b, sb) = (moments(side) for side in zip(*pairs))
    if sa * sb == 0.0:
        return float("nan")
    return sum((x - a) * (y - b) for x, y in pairs) / len(pairs) / (sa * sb)


def main():
    if len(sys.argv) not in (3, 5):
        sys.exit(__doc__)
    run, image = RunDirectory(sys.argv[1]), Image(Path(sys.argv[2]))
    first, last = (int(v) for v in sys.argv[3:5] or (8, 18))
    kinds = {pid: kind for pid, (kind, _) in (run.patches() | run.crowns()).items()}
    slopes = {int(row[0]): [number(v) for v in row[5:8]]
              for kind in ("Patch", "TreePatch") for row in rows(run.path(kind))}
    cells = cells_of(run, image, seen_from_above(run, kinds, slopes))
    of_kind = {kind: [cell for cell, pids in cells.items()
                      if sum(kinds[pid] == kind for pid in pids) >= SHARE * len(pids)]
               for kind in KINDS}
    of_kind = {kind: members for kind, members in of_kind.items() if members}
    of_kind["all"] = list(cells)
    print("deg C: mean and spread here, mean and spread in the image, correlation\n")
    print("hour |" + "|".join(f"{f'{kind}, {len(of_kind[kind])} cells':^37}" for kind in of_kind))
    for _, _, path in run.days("PatchSurfTemp"):
        for hour, values in sorted(temperatures(path, kinds).items()):
            if not first <= hour <= last:
                continue
            line = f"{hour:4d} |"
            for members in of_kind.values():
                pairs = [(sum(values[pid] for pid in cells[c]) / len(cells[c]), image.values[c])
                         for c in members]
                (a, sa), (b, sb) = (moments(side) for side in zip(*pairs))
                line += f"{a:8.1f}{sa:6.1f}{b:9.1f}{sb:6.1f}{correlation(pairs):7.2f} |"
            print(line)


main()
