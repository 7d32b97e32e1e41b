#!/usr/bin/env python3
"""How fast is townskin_view on a large district, and how much memory does it take?

    python3 bench/time_view.py DIRECTORY [PROGRAMS]

Makes a district of 100,100 patches in DIRECTORY (unless it is there) and computes its day, some
minutes; then writes each form and prints processor time, text read a second, and peak memory.
PROGRAMS is the folder of townskin (build-release).
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
folder = Path(sys.argv[1]).resolve()
programs = Path(sys.argv[2] if len(sys.argv) > 2 else ROOT / "build-release").resolve()
INPUTS = ("FormFactor.txt", "Sun.txt")
RESULTS = ("PatchSurfTemp.txt", "heat.txt")
CELLS = ("SurfTemp.txt", "BldLoad.txt")

if not (folder / "PatchSurfTemp.txt").exists():
    make = [sys.executable, ROOT / "bench/make_district.py", folder, "--steps", "144",
            "--buildings", "20"]
    subprocess.run(make, check=True)
    subprocess.run([programs / "townskin"], cwd=folder, check=True, stdout=subprocess.DEVNULL)


def megabytes(names):
    return sum((folder / name).stat().st_size for name in names) / 1e6


def measured(command):
    """Processor seconds and peak memory [MB] of a command."""
    child = os.fork()
    if child == 0:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 2)
        os.dup2(2, 1)
        os.execv(command[0], command)
    _, status, used = os.wait4(child, 0)
    assert status == 0, command
    return used.ru_utime + used.ru_stime, used.ru_maxrss / 1024.0


with tempfile.TemporaryDirectory(dir=folder.parent) as out:
    for form, files in (("netcdf", RESULTS + CELLS), ("vtk", RESULTS), ("csv", RESULTS + CELLS)):
        name = f"{out}/run.nc" if form == "netcdf" else f"{out}/{form}"
        command = [str(programs / "tools/view/townskin_view"), str(folder), f"--{form}", name]
        seconds, memory = measured(command)
        text = megabytes(files + INPUTS)
        print(f"{form:7} {seconds:5.2f} s for {text:4.0f} MB of text, {text / seconds:4.0f} MB/s, "
              f"{megabytes(files) / seconds:4.0f} MB/s of results alone; {memory:4.0f} MB at most")
