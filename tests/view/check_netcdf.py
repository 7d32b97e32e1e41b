#!/usr/bin/env python3
"""Opens a NetCDF file of townskin_view in xarray and holds it against the run's own files.

usage: check_netcdf.py RUN FILE

Every value must print to the digits that the text file has. Status 77 (skipped) where xarray is not
there.
"""
import sys
from pathlib import Path

try:
    import numpy as np
    import xarray as xr
except ImportError as lacking:
    print(lacking)
    sys.exit(77)

run, path = Path(sys.argv[1]), sys.argv[2]
dataset = xr.open_dataset(path)


def rows(name):
    for line in (run / name).read_text().splitlines():
        if line.strip() and not line.lstrip().startswith("#"):
            yield line.split()


def blocks(name, hour_at):
    """The rows of a result file, hour by hour."""
    found = []
    for row in rows(name):
        if not found or found[-1][0][hour_at] != row[hour_at]:
            found.append([])
        found[-1].append(row)
    return found


def same(variable, column, name, skip=None):
    """A list of texts and the values of a variable, which print alike."""
    values = dataset[variable].values.ravel()
    assert len(values) == len(column), (variable, len(values), len(column))
    for n, (text, value) in enumerate(zip(column, values)):
        if skip is not None and skip[n % len(skip)]:
            assert np.isnan(value), (variable, n, value)
        elif float(text) != 0.0 and abs(float(text)) < 1e-37:
            assert abs(value) < 1e-37
        else:
            assert f"{value:.5E}" == f"{float(text):.5E}", (name, variable, n, text, value)


patches = [row for name in ("Patch.txt", "TreePatch.txt") for row in rows(name)]
assert [int(row[0]) for row in patches] == list(dataset.PID.values)
for column, variable in ((4, "patch_area"), (5, "normal_x"), (6, "normal_y"), (7, "normal_z")):
    assert [float(row[column]) for row in patches] == list(dataset[variable].values), variable
no_surface = [row[8] in ("2", "6") for row in patches]

hours = blocks("PatchSurfTemp.txt", 4)
assert len(hours) == dataset.sizes["time"]
for column, variable in enumerate(
    ("surface_temperature", "longwave_radiosity", "shortwave_radiosity", "latent_heat",
     "conducted_heat"), 5):
    same(variable, [row[column] for hour in hours for row in hour], "PatchSurfTemp",
         no_surface if variable == "surface_temperature" else None)
heat = [row for hour in blocks("heat.txt", 0) for row in hour] if "building" in dataset.sizes else []
if heat:
    same("room_temperature", [row[10] for row in heat], "heat")
    same("room_load", [row[7] for row in heat], "heat")

# The mesh: faces enclose the areas of their patches.
corners = dataset.face_nodes.values
points = np.stack([dataset[name].values for name in ("node_x", "node_y", "node_z")], 1)
for face, area, kind in zip(corners, dataset.patch_area.values, dataset.kind.values):
    face = face[face >= 0].astype(int)
    if len(face) == 0:
        continue
    ring = points[face]
    found = 0.5 * np.linalg.norm(np.cross(ring, np.roll(ring, -1, 0)).sum(0))
    assert abs(found - area) < 1e-6 * area, (found, area, kind)

for name, variable in dataset.variables.items():
    assert "long_name" in variable.attrs or name in ("mesh", "climatology_bounds"), name
for name in ("Conventions", "source", "command", "inputs_hash"):
    assert dataset.attrs[name], name
print(f"{len(patches)} patches, {len(hours)} hours: as in the text files")
