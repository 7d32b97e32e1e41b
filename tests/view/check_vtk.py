#!/usr/bin/env python3
"""Opens the files of townskin_view --vtk in VTK and holds them against the run's own files.

usage: check_vtk.py RUN FOLDER

Status 77 (skipped) where VTK's Python is not there.
"""
import sys
from pathlib import Path
from xml.etree import ElementTree

try:
    from vtkmodules.util.numpy_support import vtk_to_numpy
    from vtkmodules.vtkFiltersCore import vtkTriangleFilter
    from vtkmodules.vtkFiltersVerdict import vtkMeshQuality
    from vtkmodules.vtkIOXML import vtkXMLPolyDataReader, vtkXMLRectilinearGridReader
except ImportError as lacking:
    print(lacking)
    sys.exit(77)

run, folder = Path(sys.argv[1]), Path(sys.argv[2])


def opened(reader, name):
    reader.SetFileName(str(folder / name))
    reader.Update()
    assert reader.GetErrorCode() == 0, name
    return reader.GetOutput()


def files(series):
    return [(float(at.get("timestep")), at.get("file"))
            for at in ElementTree.parse(folder / series).iter("DataSet")]


def values(data, name):
    return vtk_to_numpy(data.GetCellData().GetArray(name))


def check_patches():
    rows = [line.split() for line in (run / "PatchSurfTemp.txt").read_text().splitlines()[1:]]
    areas = {int(row[0]): float(row[4]) for name in ("Patch.txt", "TreePatch.txt")
             for row in map(str.split, (run / name).read_text().splitlines()) if row[0][0] != "#"}
    per_hour = len(areas)
    series = files("patches.pvd")
    assert len(series) == len(rows) // per_hour
    for n in sorted({0, len(series) // 2, len(series) - 1}):
        data = opened(vtkXMLPolyDataReader(), series[n][1])
        text = {int(row[0]): row for row in rows[n * per_hour:(n + 1) * per_hour]}
        columns = {name: values(data, name)
                   for name in ("surface_temperature", "longwave_radiosity", "conducted_heat")}
        for place, (PID, area) in enumerate(zip(values(data, "PID"), values(data, "patch_area"))):
            assert area == areas[PID]
            for name, column in (("surface_temperature", 5), ("longwave_radiosity", 6),
                                 ("conducted_heat", 9)):
                value = columns[name][place]
                if value == value:
                    assert f"{value:.5E}" == f"{float(text[PID][column]):.5E}", (PID, name, value)
        check_areas(data, areas)
    print(f"{per_hour} patches, {len(series)} hours: as in the text files")


def check_areas(data, areas):
    """The triangles that VTK draws a patch with have its area."""
    triangles = vtkTriangleFilter()
    triangles.SetInputData(data)
    quality = vtkMeshQuality()
    quality.SetInputConnection(triangles.GetOutputPort())
    quality.SetTriangleQualityMeasureToArea()
    quality.Update()
    drawn = {}
    for PID, area in zip(values(quality.GetOutput(), "PID"), values(quality.GetOutput(), "Quality")):
        drawn[PID] = drawn.get(PID, 0.0) + area
    for PID, area in drawn.items():
        assert abs(area - areas[PID]) < 1e-3 * areas[PID] + 1e-3, (PID, area, areas[PID])


def check_flow():
    series = files("flow.pvd")
    for _, name in series:
        data = opened(vtkXMLRectilinearGridReader(), name)
        assert data.GetCellData().GetArray("air_velocity").GetNumberOfComponents() == 3
        assert values(data, "flow_air_temperature").min() > -100.0
    print(f"{len(series)} sets of the flow")


if (folder / "patches.pvd").exists():
    check_patches()
if (folder / "flow.pvd").exists():
    check_flow()
