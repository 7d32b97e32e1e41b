#!/usr/bin/env python3
"""How much warmer is the air of the street than that of the weather station?

usage: street_air.py RUN_DIRECTORY [PROGRAMS]

Lets the surface model and the flow take turns on examples/street_air. RUN_DIRECTORY is made anew;
PROGRAMS is the folder of townskin and townskin_flow (build-release). One turn:

1. townskin computes the repeating day with the air temperature of Weather.txt.
2. townskin_flow computes, for every third hour, the flow and the air temperature that the wind and
   the air of the station become on their way over the warm surfaces of that hour.
3. The excess of the air at the surfaces over the station's air, the mean over all cells with
   surfaces by their exchange (tdrg(1) of SurfTemp), is added to the station's temperature of that
   hour, in straight lines between these hours; the relative humidity falls so that the vapour
   stays. This is the next turn's Weather.txt.

The turns end when no hour's excess changes by more than 0.02 K.
"""
import math
import shutil
import struct
import subprocess
import sys
from array import array
from pathlib import Path

from run_directory import number, rows

ROOT = Path(__file__).resolve().parent.parent
HOURS = range(3, 25, 3)
SPIN_UP = 300.0      # s of flow before the hour
STEP = 1.0           # s, of the flow
ENOUGH = 0.02        # K
MOST_TURNS = 8
ROUGHNESS = 0.3      # m, of the land before the street
STATION = 10.0       # m, height of the station's wind
STREET = (range(6, 16), range(18, 22), 1)  # cells i, j, k of the street's lowest layer
KARMAN = 0.42


def saturation(celsius):
    return 611.0 * math.exp(19.850675545287046 * (1.0 - 273.0 / (celsius + 273.15)))


class Station:
    """The weather series: hour -> fields of its line."""

    def __init__(self, path):
        self.title = path.read_text().splitlines()[0]
        self.lines = {int(row[0]): row for row in rows(path)}

    def temperature(self, hour):
        return number(self.lines[hour][1])

    def vapour(self, hour):
        """Specific humidity."""
        e = number(self.lines[hour][2]) / 100.0 * saturation(self.temperature(hour))
        return 0.622 * e / (number(self.lines[hour][3]) * 100.0 - 0.378 * e)

    def wind(self, hour):
        return number(self.lines[hour][5])

    def write(self, path, excess):
        """The series with an excess of temperature by hour."""
        text = [self.title]
        for hour, row in self.lines.items():
            warm = self.temperature(hour) + excess[hour]
            damp = number(row[2]) * saturation(self.temperature(hour)) / saturation(warm)
            text.append(" ".join([row[0], f"{warm:.5f}", f"{damp:.5f}", *row[3:]]))
        path.write_text("\n".join(text) + "\n")


def run(program, folder):
    done = subprocess.run([program], cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:
        log = (folder / "log0000").read_text().splitlines()[-12:]
        sys.exit("\n".join([f"{program} failed in {folder}:", *log]))


def nodes(folder):
    """The coordinates of the grid along x, y and z."""
    values = iter((folder / "Grid.txt").read_text().split())
    return [[float(next(values)) for _ in range(int(count))] for count in values]


def inflow(z, wind):
    """Wind, k and epsilon at a height, by the law of a rough wall."""
    friction = KARMAN * wind / math.log((STATION + ROUGHNESS) / ROUGHNESS)
    speed = friction / KARMAN * math.log((z + ROUGHNESS) / ROUGHNESS)
    return speed, friction**2 / 0.3, friction**3 / (KARMAN * (z + ROUGHNESS))


def boundary(axes, wind, kelvin, vapour):
    """The boundary file: wind along y, mirrors at both ends of the street."""
    mx, my, mz = (len(axis) - 1 for axis in axes)
    air = f"{1.0 - vapour:.6f} {vapour:.6f}"
    groups = []
    for k in range(mz):
        speed, energy, loss = inflow(0.5 * (axes[2][k] + axes[2][k + 1]), wind)
        groups.append((f"0 {mx} 0 0 {k} {k + 1} 1", "2 1 1 1 1",
                       f"0. {speed:.5f} 0. {kelvin} 0.", f"{energy:.6f} {loss:.7f}"))
    still = f"0. 0. 0. {kelvin} 0."
    groups.append((f"0 {mx} {my} {my} 0 {mz} -1", "1 2 2 2 2", still, "0.01 0.001"))
    groups.append((f"0 {mx} 0 {my} {mz} {mz} -1", "2 4 2 2 2", still, "0.01 0.001"))
    groups.append((f"0 {mx} 0 {my} 0 0 1", "2 3 2 2 3", still, "0.01 0.001"))
    groups.append((f"0 {mx} 0 {my} 0 {mz} 0", "2 3 2 2 3", still, "0.01 0.001"))
    lines = ["2 2 0 0 0 0", "2", str(len(groups))]
    for sheet, kinds, values, turbulence in groups:
        lines += [sheet, kinds, values, air, turbulence]
    return "\n".join(lines) + "\n"


def control(text, seconds, time0, wind, kelvin, vapour):
    """The control file of a flow run: its length, its clock and its air."""
    lines = text.splitlines()
    air = f"{1.0 - vapour:.6f} {vapour:.6f}"
    _, energy, loss = inflow(STATION, wind)
    for line, record in ((3, f"-1 1000000 {seconds}"), (4, "1000000. 1. 1000000. 0"),
                         (5, f"0.5 {STEP} -999. -999."),
                         (8, "-1 1 1"), (13, air), (14, f"{kelvin} 101325."),
                         (15, f"0. {wind} 0."), (16, f"{energy:.6f} {loss:.7f}"), (18, air),
                         (19, f"{kelvin}")):
        lines[line - 1] = record
    start = next(n for n, line in enumerate(lines) if line.strip().upper() == "&KPC_DATA")
    lines[start + 1] = f" TIME0 = {time0},"
    return "\n".join(lines) + "\n"


def flow_directory(folder, run_directory, hour, station):
    """A run of the flow up to an hour, in a folder of its own."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    air = (station.wind(hour), round(station.temperature(hour) + 273.15, 5), station.vapour(hour))
    text = (run_directory / "control.txt").read_text()
    time0 = 3600.0 * hour - SPIN_UP
    (folder / "control.txt").write_text(control(text, SPIN_UP, time0, *air))
    (folder / "boundary.txt").write_text(boundary(nodes(run_directory), *air))
    (folder / "flow_file_name").write_text(
        "control.txt\n../Grid.txt\nboundary.txt\n\nrestart.dat\n\n\n"
        "../Porous.txt\n../SurfTemp.txt\n../BldLoad.txt\n../LAD_flow.txt\n")


def records(path):
    """The last set of a flow's restart file: its records."""
    data = path.read_bytes()
    found, at = [], 0
    while at < len(data):
        (size,) = struct.unpack_from("i", data, at)
        found.append(data[at + 4:at + 4 + size])
        at += size + 8
    return found


class Air:
    """The air of a finished flow run: temperature and velocity by cell, cells counted from 1."""

    def __init__(self, folder):
        found = records(folder / "restart.dat")
        self.mx, self.my, self.mz = struct.unpack_from("3i", found[0])
        self.fields = [array("d", found[n]) for n in (4, 6, 7, 8)]  # t, ru, rv, rw

    def temperature(self, i, j, k):
        return self.fields[0][i - 1 + self.mx * (j - 1 + self.my * (k - 1))]

    def flux(self, axis, i, j, k):
        """Mass flux density at the centre."""
        extra = [1 if a == axis else 0 for a in range(3)]
        wide, deep = self.mx + extra[0], self.my + extra[1]

        def at(face):
            a, b, c = (v - 1 + (0 if n != axis else face) for n, v in enumerate((i, j, k)))
            return self.fields[1 + axis][a + wide * (b + deep * c)]

        return 0.5 * (at(0) + at(1))


def surface_exchange(path, hour):
    """(i, j, k, tdrg(1)) of the cells with surfaces, in the cells of the flow."""
    offset = 10  # NYF
    return [(int(r[0]), int(r[1]) + offset, int(r[2]), number(r[4]))
            for r in rows(path) if int(r[3]) == hour]


def excess_of(run_directory, hour, station):
    """Excess over the station [K]: at all surfaces, and in the lowest layer of the street."""
    air = Air(run_directory / f"flow_{hour:02d}")
    base = station.temperature(hour) + 273.15
    cells = surface_exchange(run_directory / "SurfTemp.txt", hour)
    whole = sum(weight for *_, weight in cells)
    near = sum(weight * (air.temperature(i, j, k) - base) for i, j, k, weight in cells) / whole
    along, across, layer = STREET
    street = [air.temperature(i, j, layer) - base for j in across for i in along]
    return near, sum(street) / len(street)


def every_hour(excess):
    """Straight lines between the hours that were computed, round the day."""
    step = HOURS.step
    between = {}
    for hour in range(1, 25):
        before = (hour // step) * step or 24
        after = before % 24 + step
        part = hour % step / step
        between[hour] = (1.0 - part) * excess[before] + part * excess[after]
    return between


def turn(run_directory, programs, station):
    """One turn: hour -> (excess at the surfaces, excess in the street)."""
    run(programs / "townskin", run_directory)
    found = {}
    for hour in HOURS:
        folder = run_directory / f"flow_{hour:02d}"
        flow_directory(folder, run_directory, hour, station)
        run(programs / "townskin_flow", folder)
        found[hour] = excess_of(run_directory, hour, station)
    return found


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    run_directory = Path(sys.argv[1]).resolve()
    programs = Path(sys.argv[2] if len(sys.argv) == 3 else ROOT / "build-release").resolve()
    if run_directory.exists():
        sys.exit(f"{run_directory} is there already")
    shutil.copytree(ROOT / "examples/canyon", run_directory)
    shutil.copytree(ROOT / "examples/street_air", run_directory, dirs_exist_ok=True)
    shutil.copy(run_directory / "Weather.txt", run_directory / "Weather_station.txt")
    station = Station(run_directory / "Weather.txt")
    last = {hour: (0.0, 0.0) for hour in HOURS}
    print("excess over the weather station, K: air at all surfaces (air in the street)\n")
    print("turn |" + "".join(f"{hour:>11d} h" for hour in HOURS) + "   largest change")
    for number_of_turn in range(1, MOST_TURNS + 1):
        found = turn(run_directory, programs, station)
        change = max(abs(found[h][0] - last[h][0]) for h in HOURS)
        print(f"{number_of_turn:4d} |" + "".join(f"{a:6.2f}({b:5.2f})" for a, b in found.values())
              + f"{change:12.3f}", flush=True)
        station.write(run_directory / "Weather.txt",
                      every_hour({h: near for h, (near, _) in found.items()}))
        last = found
        if change <= ENOUGH:
            break
    print("\nall files are in", run_directory)


if __name__ == "__main__":
    main()
