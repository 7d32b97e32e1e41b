#!/usr/bin/env python3
"""Makes a run directory of a large district: parallel streets between rows of buildings.

    python3 bench/make_district.py DIRECTORY [--streets 50] [--slices 143] [--window 11] [--steps 6]
        [--buildings 20]

A slice is 4 m of a street: 4 road cells, walls 3 cells high on both sides, 4 roof cells. Each road
and wall patch sees the patches it faces up to `window` slices away; view factors are those between
small discs, scaled so that no hemisphere overflows, and the sky is what they leave. As given: 100,100
patches, each a group of its own, and 10.4 million view factors. With --buildings the walls and roofs
of each street belong to that many air-conditioned buildings. Needs nothing but Python.
"""

import argparse
import math
import pathlib

CELL = 4.0  # edge of a patch [m]
AREA = CELL * CELL
ROAD, ROOF = 4, 4
LEVELS = 3

FILES = """control Grid Weather Patch PatchIndex TreePatch FormFactor Sun BldSurf SurfProp LAD_simple
LAD WaterTemp MatEleProp Building RmHeat StHeat SurfTemp PatchSurfTemp ProgressLog SunSky heat PgidPrd
restart.dat Porous BldLoad""".split()

CONTROL = """{mx} {my} {mz}
2
-1 {steps} {duration}
-999. 1. -999. 0
0.9 600.0 -999. -999.
1 1
1 1 1
1 1 0
1. 1. 1. 1.
200 1.0e-8 0.0
200 1.0e-8
2
0.99 0.01
300. 101325.
0. 0. 0.
0.01 0.001
2
0.99 0.01
300.
0. 0. -9.8
0.9 0.9
0
1.8e-5 300. 110.
0.71 0.71
2
0.028964 1005. 0. 0. 0. 0.
0.018015 1900. 0. 0. 0. 0.
0
0 0. 1.e-20
1 1 1
2 2 0
0. 0.
&TSRF_DATA LCNVRG = 1, DZG = 0.04, ZLG = 0.4 /
&DATE_AND_PLACE LAT = 35.69, LNG = 139.77, RANGLE = 0.0, SDECL = 21.0, SHANGLE = 0.0 /
&JMK_RADSKY PPA = 0.61 /
&TSRF_BLDNG LCBLD = {lcbld} /
&TSRF_RADDAT LCRADL = 1, LCRADS = 1, LOPREF = 10, LVFSKY = 1, LVFSWP = 0 /
&TSRF_SHADE NSTRDT = 2, LDATE = 4, 4, NCYCL = 100 /
&TSRF_WEATHER NSTRDT = 24, LDATE = 4, 4, NCYCL = 100 /
"""

SURFPROP = """# SurfCD alb ems beta rho cp alf wext
1 0.15 0.95 0 2000 1000 5.0000000E-07 1000
10 0.12 0.95 0 2110 920 3.8120750E-07 1000
14 0.4 0.92 0 1900 840 5.6390977E-07 1000
15 0.18 0.93 0 1800 900 4.9382716E-07 1000
"""
MATELEPROP = """# surfid pos strct - - nolyr thick SurfCD
101 2 1 0 0 1 0.75 10
105 2 1 0 0 1 0.4 14
106 1 1 0 0 1 0.4 15
"""


def section():
    """The patches of a slice: (x, z, normal, material, column of cells, layer), x across."""
    patches = [((c + 0.5) * CELL, 0.0, (0, 1), 101, c + 1, 0) for c in range(ROAD)]
    width = ROAD * CELL
    for level in range(LEVELS):
        z = (level + 0.5) * CELL
        patches.append((0.0, z, (1, 0), 105, 1, level))
        patches.append((width, z, (-1, 0), 105, ROAD, level))
    height = LEVELS * CELL
    patches += [(width + (c + 0.5) * CELL, height, (0, 1), 106, ROAD + c + 1, LEVELS)
                for c in range(ROOF)]
    return patches


def disc_factor(a, b, dy):
    """View factor from a to b, dy apart along the street; 0 where they do not face each other."""
    dx, dz = b[0] - a[0], b[1] - a[1]
    r2 = dx * dx + dy * dy + dz * dz
    towards = dx * a[2][0] + dz * a[2][1]
    back = -(dx * b[2][0] + dz * b[2][1])
    in_street = a[3] != 106 and b[3] != 106
    if towards <= 1e-9 or back <= 1e-9 or not in_street:
        return 0.0
    return towards * back / r2 * AREA / (math.pi * r2 + AREA)


def neighbours(patches, window):
    """For each patch of a slice what it sees: (slices away, patch there, factor)."""
    table = []
    for a in patches:
        seen = [(d, j, disc_factor(a, b, d * CELL))
                for d in range(-window, window + 1) for j, b in enumerate(patches)]
        table.append([s for s in seen if s[2] > 0.0])
    most = max(sum(f for _, _, f in seen) for seen in table)
    scale = min(1.0, 0.98 / most)
    return [[(d, j, f * scale) for d, j, f in seen] for seen in table]


def write_buildings(folder, buildings):
    """Buildings of two uses, and rooms of one kind each that are cooled from 8 to 18 h."""
    with open(folder / "Building.txt", "w") as out:
        out.write("# BldID BldCD Strct floor area acflr shf cop norelease\n")
        for b in range(1, buildings + 1):
            out.write(f"{b} {1 + 4 * (b % 2)} 1 3 400 0.8 0.8 3 0\n")
    with open(folder / "RmHeat.txt", "w") as out:
        out.write("# hour BCD Strct rmsens rmlat rmtmp rmhum vent item6 ACflag ACSEMin ACPrT\n")
        for hour in range(1, 25):
            flag = {8: "1 0 30", 18: "2 0 0"}.get(hour, "0 0 0")
            for use in (1, 5):
                out.write(f"{hour} {use} 1 6 1 26 55 0.5 0 {flag}\n")


def write_patches(folder, patches, streets, slices, buildings):
    with open(folder / "Patch.txt", "w") as out, open(folder / "PatchIndex.txt", "w") as index:
        out.write("# PID i j k area nx ny nz type SurfID BldID\n")
        index.write("# PE PID PgID PE\n")
        pid = 0
        for street in range(streets):
            for s in range(slices):
                for _, _, normal, material, column, layer in patches:
                    pid += 1
                    i = street * (ROAD + ROOF) + column
                    inside = buildings > 0 and material != 101
                    kind = 1 if inside else 3
                    building = street * buildings + s * buildings // slices + 1 if inside else 0
                    out.write(f"{pid} {i} {s + 1} {layer} {AREA} {normal[0]} 0 {normal[1]} {kind} "
                              f"{material} {building}\n")
                    index.write(f"0 {pid} {pid} 0\n")
    return pid


def write_factors(folder, patches, streets, slices, window):
    n = len(patches)
    table = neighbours(patches, window)
    with open(folder / "FormFactor.txt", "w", buffering=1 << 22) as out:
        out.write("# PE SrcPgID PE DstPgID FormFct\n")
        count = 0
        for street in range(streets):
            for s in range(slices):
                base = (street * slices + s) * n + 1
                for p, seen in enumerate(table):
                    rows = [(base + d * n + j, f) for d, j, f in seen if 0 <= s + d < slices]
                    sky = 1.0 - sum(f for _, f in rows)
                    head = f"0 {base + p} 0 "
                    out.write(f"{head}0 {sky:.8g}\n")
                    out.write("".join(f"{head}{q} {f:.8g}\n" for q, f in rows))
                    count += len(rows)
    return count


def write_sun(folder, patches, count):
    """Sunlit fractions every three hours: sun from the east in the morning, west later."""
    with open(folder / "Sun.txt", "w", buffering=1 << 22) as out:
        out.write("# hour index PID fsun\n")
        for hour in range(3, 25, 3):
            up = 6 <= hour <= 18
            east = 1 if hour < 12 else -1 if hour > 12 else 0
            shares = []
            for _, _, normal, material, _, layer in patches:
                lit = up and (normal == (0, 1) or normal[0] == east)
                low = material != 106 and hour != 12
                shares.append(0.0 if not lit else 0.25 * (layer + 1) if low else 1.0)
            out.write("".join(f"{hour} {p + 1} {p + 1} {shares[p % len(shares)]:g}\n"
                              for p in range(count)))


def write_weather(folder):
    with open(folder / "Weather.txt", "w") as out:
        out.write("# hour Temp Rhum Press SunRad Wind SunJdn SunJsh AtmJsh\n")
        for hour in range(1, 25):
            swing = math.cos((hour - 14.5) * math.pi / 12)
            height = max(0.0, math.cos((hour - 12.5) * math.pi / 14))
            out.write(f"{hour} {28.5 + 4.5 * swing:.5f} {57 - 14 * swing:.5f} 1007 "
                      f"{3.4 * height:.6f} {2.5 + swing:.5f} 0 0 0\n")


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("directory", type=pathlib.Path)
    options.add_argument("--streets", type=int, default=50)
    options.add_argument("--slices", type=int, default=143)
    options.add_argument("--window", type=int, default=11)
    options.add_argument("--steps", type=int, default=6)
    options.add_argument("--buildings", type=int, default=0, help="a street")
    args = options.parse_args()

    folder = args.directory
    folder.mkdir(parents=True, exist_ok=True)
    names = [name if "." in name else name + ".txt" for name in FILES]
    (folder / "file_name").write_text("".join(name + "\n" for name in names))
    for name in names:
        if not name.startswith(("SurfTemp", "PatchSurfTemp", "Progress", "SunSky", "heat", "BldLoad")):
            (folder / name).write_text("")
    patches = section()
    (folder / "control.txt").write_text(CONTROL.format(
        mx=args.streets * (ROAD + ROOF), my=args.slices, mz=LEVELS + 2, steps=args.steps,
        duration=600.0 * args.steps,
        lcbld=min(args.buildings, 1)))
    (folder / "SurfProp.txt").write_text(SURFPROP)
    (folder / "MatEleProp.txt").write_text(MATELEPROP)
    write_weather(folder)
    count = write_patches(folder, patches, args.streets, args.slices, args.buildings)
    if args.buildings > 0:
        write_buildings(folder, args.streets * args.buildings)
    write_sun(folder, patches, count)
    factors = write_factors(folder, patches, args.streets, args.slices, args.window)
    print(f"{folder}: {count} patches, {factors} view factors")


if __name__ == "__main__":
    main()
