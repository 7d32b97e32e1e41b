#!/usr/bin/env python3
"""Centre lines of a lid-driven cavity beside the published ones: centre_line.py RUN_DIRECTORY.

Reads the last set of the run's restart file. Published values: Ghia, Ghia and Shin (1982), tables I
and II, at the Reynolds number (100, 400 or 1000) that the viscosity of the run gives.
"""
import pathlib
import struct
import sys

REYNOLDS = [100, 400, 1000]
U = """0.9766 0.84123 0.75837 0.65928; 0.9688 0.78871 0.68439 0.57492; 0.9609 0.73722 0.61756 0.51117
0.9531 0.68717 0.55892 0.46604; 0.8516 0.23151 0.29093 0.33304; 0.7344 0.00332 0.16256 0.18719
0.6172 -0.13641 0.02135 0.05702; 0.5000 -0.20581 -0.11477 -0.06080; 0.4531 -0.21090 -0.17119 -0.10648
0.2813 -0.15662 -0.32726 -0.27805; 0.1719 -0.10150 -0.24299 -0.38289; 0.1016 -0.06434 -0.14612 -0.29730
0.0703 -0.04775 -0.10338 -0.22220; 0.0625 -0.04192 -0.09266 -0.20196; 0.0547 -0.03717 -0.08186 -0.18109"""
# At 0.9063 the value for 400 is left out: it breaks the curve, probably a misprint.
V = """0.9688 -0.05906 -0.12146 -0.21388; 0.9609 -0.07391 -0.15663 -0.27669
0.9531 -0.08864 -0.19254 -0.33714; 0.9453 -0.10313 -0.22847 -0.39188; 0.9063 -0.16914 nan -0.51550
0.8594 -0.22445 -0.44993 -0.42665; 0.8047 -0.24533 -0.38598 -0.31966; 0.5000 0.05454 0.05186 0.02526
0.2344 0.17527 0.30174 0.32235; 0.2266 0.17507 0.30203 0.33075; 0.1563 0.16077 0.28124 0.37095
0.0938 0.12317 0.22965 0.32627; 0.0781 0.10890 0.20920 0.30353; 0.0703 0.10091 0.19713 0.29012
0.0625 0.09233 0.18360 0.27485"""


def records(path):
    data = path.read_bytes()
    at = 0
    while at < len(data):
        (length,) = struct.unpack_from("<i", data, at)
        yield data[at + 4 : at + 4 + length]
        at += length + 8


def last_fluxes(path):
    """Cells in x and y, and the fluxes on the x and y faces, of the last set."""
    all_records = list(records(path))
    heads = [i for i, record in enumerate(all_records) if len(record) == 40]
    head = heads[-1]
    mx, my = struct.unpack_from("<2i", all_records[head])
    reals = [struct.unpack(f"<{len(r) // 8}d", r) for r in all_records[head + 6 : head + 8]]
    return mx, my, *reals


def between(places, values, at):
    """Lagrange's cubic through the four values around a place."""
    first = 0
    while first + 4 < len(places) and places[first + 2] < at:
        first += 1
    total = 0.0
    for i in range(first, first + 4):
        weight = values[i]
        for j in range(first, first + 4):
            if j != i:
                weight *= (at - places[j]) / (places[i] - places[j])
        total += weight
    return total


def show(name, along, table, column, places, values):
    print(f"{along:>8} {name + ' here':>10} {'published':>10} {'difference':>11}")
    worst = 0.0
    for row in table.replace("\n", ";").split(";"):
        numbers = [float(word) for word in row.split()]
        published = numbers[1 + column]
        if published != published:
            continue
        here = between(places, values, numbers[0])
        worst = max(worst, abs(here - published))
        print(f"{numbers[0]:8.4f} {here:10.5f} {published:10.5f} {here - published:11.5f}")
    print(f"largest difference of {name}: {100 * worst:.2f} % of the lid's speed\n")


def main():
    run = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    names = (run / "flow_file_name").read_text().splitlines()
    viscosity = float((run / names[0]).read_text().splitlines()[22].split()[0])
    column = min(range(3), key=lambda i: abs(1 / viscosity / REYNOLDS[i] - 1))
    nx, ny, ru, rv = last_fluxes(run / names[4])
    if nx != ny or nx % 2:
        sys.exit("centre_line.py: an even number of cells, the same in x and y, is needed")
    centres = [0.0] + [(i + 0.5) / nx for i in range(nx)] + [1.0]
    u = [0.0] + [ru[nx // 2 + (nx + 1) * j] for j in range(ny)] + [1.0]
    v = [0.0] + [rv[i + nx * (ny // 2)] for i in range(nx)] + [0.0]
    print(f"{nx} cells a side, Reynolds number {1 / viscosity:.0f}\n")
    show("u", "y", U, column, centres, u)
    show("v", "x", V, column, centres, v)


if __name__ == "__main__":
    main()
