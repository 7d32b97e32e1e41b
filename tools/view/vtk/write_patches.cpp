#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <limits>
#include <numeric>

#include "run/outlines.hpp"
#include "vtk/vtk_file.hpp"
#include "vtk/write_vtk.hpp"

namespace townskin_view {

namespace {

/// Polygons of all patches.
struct Mesh {
  std::vector<float> points;
  std::vector<std::int32_t> corners, ends;
  std::vector<std::int32_t> patch;  ///< of each polygon
};

Mesh mesh_of(const RunModel& run) {
  Mesh mesh;
  mesh.points.assign(run.shapes.xyz.begin(), run.shapes.xyz.end());
  const auto add = [&](auto first, auto last, std::size_t p) {
    for (; first != last; ++first) mesh.corners.push_back(static_cast<std::int32_t>(*first));
    mesh.ends.push_back(static_cast<std::int32_t>(mesh.corners.size()));
    mesh.patch.push_back(static_cast<std::int32_t>(p));
  };
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    const auto rings = run.shapes.of(p);
    if (std::ranges::any_of(rings, &Shapes::Ring::hole)) {
      for (const auto& corners : triangles_of(run.shapes, run.patches.normal[p], p)) {
        add(corners.begin(), corners.end(), p);
      }
      continue;
    }
    for (const Shapes::Ring& ring : rings) {
      std::vector<std::uint32_t> line(ring.count);
      std::iota(line.begin(), line.end(), ring.first);
      add(line.begin(), line.end(), p);
    }
  }
  return mesh;
}

/// Values of patches, given to their polygons.
template <class Value>
std::vector<Value> spread(const Mesh& mesh, std::span<const Value> of_patch) {
  std::vector<Value> values(mesh.patch.size());
  for (std::size_t n = 0; n < values.size(); ++n) {
    values[n] = of_patch[static_cast<std::size_t>(mesh.patch[n])];
  }
  return values;
}

/// What is told of buildings on their patches.
constexpr std::array<std::string_view, 3> kOfRooms{"room_temperature", "room_load",
                                                   "released_sensible"};

/// The arrays of a file, and the values that they point to.
class CellData {
 public:
  CellData(const RunModel& run, const Mesh& mesh) : run_(run), mesh_(mesh) {
    part_.element = "CellData";
    if (run.field("surface_temperature") != nullptr) {
      part_.attributes = " Scalars=\"surface_temperature\"";
    }
    codes("PID", run.patches.PID);
    codes("BldID", run.patches.BldID);
    std::vector<std::uint8_t> kinds;
    for (const Kind kind : run.patches.kind) kinds.push_back(static_cast<std::uint8_t>(kind));
    kinds_ = spread<std::uint8_t>(mesh, kinds);
    part_.arrays.push_back(vtk_array("kind", kinds_));
    normals();
    for (const Field& field : run.fields) {
      if (field.quantity->place != Place::patch || field.exact.empty()) continue;
      if (field.quantity->name.starts_with("normal_")) continue;
      exact_.push_back(spread<double>(mesh, field.exact));
      part_.arrays.push_back(vtk_array(std::string(field.quantity->name), exact_.back(), 1,
                                       field.quantity->shown_units));
    }
  }

  /// The arrays with the values of an hour.
  VtkPart at(std::size_t hour) {
    VtkPart part = part_;
    values_.clear();
    for (const Field& field : run_.fields) {
      if (field.quantity->span == Span::steady) continue;
      const bool of_rooms = std::ranges::find(kOfRooms, field.quantity->name) != kOfRooms.end();
      if (field.quantity->place != Place::patch && !of_rooms) continue;
      std::vector<float> values(field.size);
      field.take(run_, hour, values);
      if (of_rooms) values = on_patches(values);
      values_.push_back(spread<float>(mesh_, values));
      part.arrays.push_back(vtk_array(std::string(field.quantity->name), values_.back(), 1,
                                      field.quantity->shown_units));
    }
    return part;
  }

 private:
  void codes(std::string name, std::span<const std::int32_t> of_patch) {
    codes_.push_back(spread<std::int32_t>(mesh_, of_patch));
    part_.arrays.push_back(vtk_array(std::move(name), codes_.back()));
  }
  void normals() {
    std::vector<double>& values = exact_.emplace_back();
    for (const std::int32_t p : mesh_.patch) {
      const auto& normal = run_.patches.normal[static_cast<std::size_t>(p)];
      values.insert(values.end(), normal.begin(), normal.end());
    }
    part_.arrays.push_back(vtk_array("normal", values, 3));
  }
  std::vector<float> on_patches(const std::vector<float>& of_building) const {
    std::vector<float> values(run_.patches.size(), std::numeric_limits<float>::quiet_NaN());
    for (std::size_t p = 0; p < values.size(); ++p) {
      const std::int32_t b = run_.patches.building[p];
      if (b >= 0) values[p] = of_building[static_cast<std::size_t>(b)];
    }
    return values;
  }

  const RunModel& run_;
  const Mesh& mesh_;
  VtkPart part_;
  // Lists whose values do not move when another is added.
  std::deque<std::vector<std::int32_t>> codes_;
  std::vector<std::uint8_t> kinds_;
  std::deque<std::vector<double>> exact_;
  std::deque<std::vector<float>> values_;
};

std::string numbered(std::size_t n) {
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "patches_%03zu.vtp", n);
  return text.data();
}

}  // namespace

void write_vtk_patches(const RunModel& run, const std::string& folder, Stage& stage) {
  const Mesh mesh = mesh_of(run);
  CellData cells(run, mesh);
  VtkFile file;
  file.type = "PolyData";
  file.piece_attributes = " NumberOfPoints=\"" + std::to_string(mesh.points.size() / 3) +
                          "\" NumberOfVerts=\"0\" NumberOfLines=\"0\" NumberOfStrips=\"0\"" +
                          " NumberOfPolys=\"" + std::to_string(mesh.ends.size()) + "\"";
  const VtkPart points{"Points", "", {vtk_array("Points", mesh.points, 3, "m")}};
  const VtkPart polygons{
      "Polys", "", {vtk_array("connectivity", mesh.corners), vtk_array("offsets", mesh.ends)}};
  std::vector<VtkTime> times;
  for (std::size_t h = 0; h < std::max<std::size_t>(1, run.hours.size()); ++h) {
    file.time = run.hours.empty() ? 0.0 : run.hours[h].hours;
    file.parts = {points, polygons, cells.at(h)};
    times.push_back({file.time, numbered(h + 1)});
    write_vtk(file, stage.file(folder + "/" + times.back().file));
  }
  write_pvd(times, stage.file(folder + "/patches.pvd"));
}

}  // namespace townskin_view
