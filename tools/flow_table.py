#!/usr/bin/env python3
"""Print the air that townskin_flow left over a city: flow_table.py RUN_DIRECTORY

One row a layer of cells of the district: height of its middle (m), open share, mean wind speed (m/s),
mean and highest excess of the air temperature over that of the air that comes (K), each by volume of
air. Then what flows in and out through the sides (kg/s) and their difference.

Needs a run directory of townskin_case in which townskin and townskin_flow have come to their ends.
"""
import re
import struct
import sys
from array import array
from pathlib import Path

from run_directory import number, rows


def records(path):
    """The last set of a flow's restart file: its records."""
    data, found, at = path.read_bytes(), [], 0
    while at < len(data):
        (size,) = struct.unpack_from("i", data, at)
        found.append(data[at + 4:at + 4 + size])
        at += size + 8
    heads = [n for n, record in enumerate(found) if len(record) == 40]
    return found[heads[-1]:]


class Air:
    """Fields of the last set; cells are counted from 0."""

    def __init__(self, run):
        self.names = (run / "flow_file_name").read_text().splitlines()
        found = records(run / self.names[4])
        self.n = struct.unpack_from("3i", found[0])
        self.t = array("d", found[4])
        self.flux = [array("d", found[n]) for n in (6, 7, 8)]
        values = iter((run / self.names[1]).read_text().split())
        self.nodes = [[number(next(values)) for _ in range(int(count))] for count in values]
        self.open = {tuple(int(v) - 1 for v in row[:3]): [number(v) for v in row[3:]]
                     for row in rows(run / self.names[7], titles=0)}

    def size(self, axis, cell):
        return self.nodes[axis][cell + 1] - self.nodes[axis][cell]

    def temperature(self, i, j, k):
        return self.t[i + self.n[0] * (j + self.n[1] * k)]

    def face(self, axis, i, j, k):
        """Flux density through the lower face of a cell, or behind the last one."""
        wide = self.n[0] + (axis == 0)
        deep = self.n[1] + (axis == 1)
        return self.flux[axis][i + wide * (j + deep * k)]

    def speed(self, i, j, k, density):
        parts = (0.5 * (self.face(axis, i, j, k) + self.face(
            axis, *(v + (a == axis) for a, v in enumerate((i, j, k))))) for axis in range(3))
        return sum(v * v for v in parts) ** 0.5 / density


def member(text, name):
    return number(re.search(rf"\b{name}\s*=\s*([-+.\deE]+)", text).group(1))


def layers(air, control):
    lines = control.splitlines()
    kelvin, pressure = (number(v) for v in lines[13].split()[:2])
    density = pressure / (287.0 * kelvin)
    ox, oy, bx, by = (int(member(control, name)) for name in ("NXF", "NYF", "NXB", "NYB"))
    print(f"{'height':>8}{'open':>8}{'wind':>8}{'warmer':>9}{'most':>8}")
    for k in range(air.n[2]):
        volume = whole = wind = warm = 0.0
        most = float("-inf")
        for j in range(oy, air.n[1] - by):
            for i in range(ox, air.n[0] - bx):
                cell = air.size(0, i) * air.size(1, j)
                free = cell * air.open.get((i, j, k), [1.0])[0]
                whole += cell
                if free == 0.0:
                    continue
                excess = air.temperature(i, j, k) - kelvin
                volume += free
                wind += free * air.speed(i, j, k, density)
                warm += free * excess
                most = max(most, excess)
        z = 0.5 * (air.nodes[2][k] + air.nodes[2][k + 1])
        if volume > 0.0:
            print(f"{z:8.1f}{volume / whole:8.3f}{wind / volume:8.2f}{warm / volume:9.2f}"
                  f"{most:8.2f}")


def through_sides(air):
    """Mass that comes in and that goes out through the four sides [kg/s]."""
    coming = going = 0.0
    for axis in (0, 1):
        other = 1 - axis
        for end, sign in ((0, 1.0), (air.n[axis], -1.0)):
            for k in range(air.n[2]):
                for along in range(air.n[other]):
                    at = (end, along) if axis == 0 else (along, end)
                    mass = (sign * air.face(axis, *at, k) * air.size(other, along)
                            * air.size(2, k))
                    coming += max(mass, 0.0)
                    going += max(-mass, 0.0)
    return coming, going


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    run = Path(sys.argv[1])
    air = Air(run)
    layers(air, (run / air.names[0]).read_text())
    coming, going = through_sides(air)
    print(f"\nin {coming:.1f} kg/s, out {going:.1f} kg/s, difference {100 * (going / coming - 1):.3f} %")


main()
