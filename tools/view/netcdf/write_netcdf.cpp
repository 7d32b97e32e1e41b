#include "netcdf/write_netcdf.hpp"

#include <netcdf.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>
#include <utility>

#include "inputs/calendar.hpp"
#include "netcdf/nc_file.hpp"
#include "run/input_files.hpp"
#include "run/outlines.hpp"
#include "stage.hpp"

namespace townskin_view {

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr std::int32_t kNoNode = -1;
constexpr std::size_t kRowsAtOnce = 4096;

/// Dimensions of the file; -1 where the run has none of the kind.
struct Dimensions {
  int time = -1, ends = -1, patch = -1, building = -1, cell = -1, leaf_cell = -1;
  int node = -1, corner = -1;

  [[nodiscard]] int of(Place place) const {
    switch (place) {
      case Place::patch:
        return patch;
      case Place::building:
        return building;
      case Place::cell:
        return cell;
      case Place::leaf_cell:
        return leaf_cell;
      default:
        return -1;
    }
  }
};

std::string now() {
  const std::time_t time = std::time(nullptr);
  std::tm utc{};
  ::gmtime_r(&time, &utc);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text.data();
}

/// A list of integers or reals to be written when the definitions are done.
class Writer {
 public:
  Writer(const RunModel& run, const std::string& path) : run_(run), file_(path) {}

  void write(const Origin& origin);

 private:
  void define_dimensions();
  void define_globals(const Origin& origin);
  void define_time();
  void define_mesh();
  void define_patches();
  void define_others();
  void define_fields();
  void write_mesh();
  void write_fields();

  int described(const std::string& name, int type, const std::vector<int>& dimensions,
                std::string_view long_name, std::string_view units = {});
  /// A steady list with its variable.
  void integers(const std::string& name, int dimension, std::string_view long_name,
                std::vector<std::int32_t> values);
  void reals(const std::string& name, int dimension, std::string_view long_name,
             std::string_view units, std::vector<double> values);

  const RunModel& run_;
  NcFile file_;
  Dimensions dims_;
  std::size_t corners_ = 0;
  int face_nodes_ = -1, bounds_ = -1, kind_ = -1;
  std::array<int, 3> node_xyz_{};
  std::vector<std::pair<int, std::vector<std::int32_t>>> integers_;
  std::vector<std::pair<int, std::vector<double>>> reals_;
  std::vector<int> fields_;
};

int Writer::described(const std::string& name, int type, const std::vector<int>& dimensions,
                      std::string_view long_name, std::string_view units) {
  const int id = file_.variable(name, type, dimensions);
  file_.text(id, "long_name", long_name);
  file_.text(id, "units", units);
  return id;
}

void Writer::integers(const std::string& name, int dimension, std::string_view long_name,
                      std::vector<std::int32_t> values) {
  if (dimension < 0) return;
  integers_.emplace_back(described(name, NC_INT, {dimension}, long_name), std::move(values));
}

void Writer::reals(const std::string& name, int dimension, std::string_view long_name,
                   std::string_view units, std::vector<double> values) {
  if (dimension < 0) return;
  reals_.emplace_back(described(name, NC_DOUBLE, {dimension}, long_name, units), std::move(values));
}

void Writer::define_dimensions() {
  const auto define = [&](const char* name, std::size_t size) {
    return size > 0 ? file_.dimension(name, size) : -1;
  };
  dims_.time = define("time", run_.hours.size());
  dims_.patch = define("patch", run_.patches.size());
  dims_.building = define("building", run_.buildings.size());
  dims_.cell = define("cell", run_.cells.size());
  dims_.leaf_cell = define("leaf_cell", run_.leaf_cells.size());
  dims_.node = define("node", run_.shapes.xyz.size() / 3);
  for (std::size_t p = 0; p < run_.patches.size(); ++p) {
    corners_ = std::max(corners_, joined_ring(run_.shapes, p).size());
  }
  dims_.corner = define("face_corner", corners_);
  if (run_.dated) dims_.ends = define("two", 2);
}

void Writer::define_globals(const Origin& origin) {
  const std::string commit = origin.commit.empty() ? "" : " (commit " + origin.commit + ")";
  file_.text(NC_GLOBAL, "Conventions", "CF-1.10 UGRID-1.0");
  file_.text(NC_GLOBAL, "title", "surfaces of the run " + run_.name);
  file_.text(NC_GLOBAL, "source", "townskin " + origin.version + commit);
  file_.text(NC_GLOBAL, "program", std::string(kMark) + " " + origin.version);
  file_.text(NC_GLOBAL, "commit", origin.commit);
  file_.text(NC_GLOBAL, "command", origin.command);
  file_.text(NC_GLOBAL, "history", now() + " " + origin.command);
  file_.text(NC_GLOBAL, "inputs_hash", "fnv1a64:" + hash_of(run_.inputs));
  std::string notes;
  for (const std::string& note : run_.notes) notes += (notes.empty() ? "" : "\n") + note;
  file_.text(NC_GLOBAL, "comment", notes);
  file_.number(NC_GLOBAL, "latitude", run_.latitude);
  file_.number(NC_GLOBAL, "longitude", run_.longitude);
}

/// Hours of the day that repeats; of months the hours of the year, with the days that the means
/// are over.
void Writer::define_time() {
  if (dims_.time < 0) return;
  std::vector<double> times;
  std::vector<std::int32_t> hours, months;
  for (const Hour& hour : run_.hours) {
    times.push_back(hour.hours);
    hours.push_back(hour.hour);
    months.push_back(hour.month);
  }
  const int id = run_.dated
                     ? described("time", NC_DOUBLE, {dims_.time}, "middle of the month, hour",
                                 "hours since " + std::to_string(run_.year) + "-01-01 00:00:00")
                     : described("time", NC_DOUBLE, {dims_.time},
                                 "time since the start of the day that repeats", "h");
  file_.text(id, "axis", "T");
  reals_.emplace_back(id, times);
  integers("hour", dims_.time, "hour of the day, 1 to 24: its end", hours);
  if (!run_.dated) return;
  file_.text(id, "standard_name", "time");
  file_.text(id, "calendar", "noleap");
  file_.text(id, "climatology", "climatology_bounds");
  bounds_ = file_.variable("climatology_bounds", NC_DOUBLE, {dims_.time, dims_.ends});
  std::vector<double> bounds;
  for (std::size_t h = 0; h < run_.hours.size(); ++h) {
    double first = 0.0;
    for (std::int32_t m = 1; m < months[h]; ++m) first += tsrf_module_calendar::days_in(m);
    const double days = tsrf_module_calendar::days_in(months[h]) - 1;
    bounds.push_back(first * 24.0 + hours[h] - 1.0);
    bounds.push_back((first + days) * 24.0 + hours[h]);
  }
  reals_.emplace_back(bounds_, bounds);
  integers("month", dims_.time, "month whose mean day this is", months);
}

void Writer::define_mesh() {
  if (dims_.node < 0) return;
  const int mesh = described("mesh", NC_INT, {}, "patches as faces of a mesh");
  integers_.emplace_back(mesh, std::vector<std::int32_t>{0});
  file_.text(mesh, "cf_role", "mesh_topology");
  file_.number(mesh, "topology_dimension", 2);
  file_.text(mesh, "node_coordinates", "node_x node_y node_z");
  file_.text(mesh, "face_node_connectivity", "face_nodes");
  file_.text(mesh, "face_dimension", "patch");
  file_.text(mesh, "face_coordinates", "patch_x patch_y patch_z");
  file_.text(mesh, "comment",
             std::string(run_.shapes.true_shapes
                             ? "true outlines"
                             : "rectangles of the patches' areas at the faces of their cells") +
                 "; a face with holes or several pieces is one line through all its rings, with "
                 "an edge there and back between each two");
  face_nodes_ = described("face_nodes", NC_INT, {dims_.patch, dims_.corner},
                          "corners of each patch, turning left seen from where its normal points");
  file_.text(face_nodes_, "cf_role", "face_node_connectivity");
  file_.number(face_nodes_, "start_index", 0);
  file_.fill(face_nodes_, kNoNode);
  constexpr std::array<std::pair<const char*, const char*>, 3> kAxes{
      {{"node_x", "east"}, {"node_y", "north"}, {"node_z", "up"}}};
  for (std::size_t a = 0; a < 3; ++a) {
    std::vector<double> values;
    for (std::size_t n = a; n < run_.shapes.xyz.size(); n += 3) {
      values.push_back(run_.shapes.xyz[n]);
    }
    const std::string words = std::string("place of a corner, ") + kAxes[a].second;
    reals(kAxes[a].first, dims_.node, words, "m", std::move(values));
  }
}

void Writer::define_patches() {
  const Patches& patches = run_.patches;
  integers("PID", dims_.patch, "code of the patch", patches.PID);
  integers("patch_BldID", dims_.patch, "code of the building", patches.BldID);
  integers("patch_SurfID", dims_.patch, "material; of leaves the number of the face",
           patches.SurfID);
  integers("patch_building", dims_.patch, "place in the dimension building, -1 for none",
           patches.building);
  integers("patch_group", dims_.patch, "group of the exchange of radiation, from 0", patches.group);
  std::array<std::vector<double>, 3> middles;
  for (std::size_t p = 0; p < patches.size(); ++p) {
    const std::array<double, 3> middle = middle_of(run_.shapes, p);
    for (std::size_t a = 0; a < 3; ++a) middles[a].push_back(middle[a]);
  }
  reals("patch_x", dims_.patch, "middle of the patch, east", "m", std::move(middles[0]));
  reals("patch_y", dims_.patch, "middle of the patch, north", "m", std::move(middles[1]));
  reals("patch_z", dims_.patch, "middle of the patch, up", "m", std::move(middles[2]));
  kind_ = described("kind", NC_BYTE, {dims_.patch}, "what the patch is");
  std::array<signed char, kKinds> values{};
  std::string words;
  for (std::size_t k = 0; k < kKinds; ++k) {
    values[k] = static_cast<signed char>(k);
    std::string name(name_of(static_cast<Kind>(k)));
    std::ranges::replace(name, ' ', '_');
    words += (k == 0 ? "" : " ") + name;
  }
  file_.bytes(kind_, "flag_values", values);
  file_.text(kind_, "flag_meanings", words);
}

void Writer::define_others() {
  std::vector<std::int32_t> ids, uses, floors;
  std::vector<double> areas;
  for (const Building& building : run_.buildings) {
    ids.push_back(building.BldID);
    uses.push_back(building.use);
    floors.push_back(building.floors);
    areas.push_back(building.floor_area);
  }
  integers("BldID", dims_.building, "code of the building", ids);
  integers("building_use", dims_.building, "use, 1 to 8; 0: not known", uses);
  integers("building_floors", dims_.building, "number of floors; 0: not known", floors);
  reals("building_floor_area", dims_.building, "floor area of a storey; 0: not known", "m2", areas);
  for (const auto& [prefix, cells, dimension] :
       {std::tuple{"cell_", &run_.cells, dims_.cell},
        std::tuple{"leaf_cell_", &run_.leaf_cells, dims_.leaf_cell}}) {
    std::array<std::vector<std::int32_t>, 3> ijk;
    for (const Cell& cell : *cells) {
      ijk[0].push_back(cell.i);
      ijk[1].push_back(cell.j);
      ijk[2].push_back(cell.k);
    }
    constexpr std::array<const char*, 3> kNames{"i", "j", "k"};
    for (std::size_t a = 0; a < 3; ++a) {
      integers(prefix + std::string(kNames[a]), dimension,
               "place in the grid, from 1, along " + std::string(1, "xyz"[a]), ijk[a]);
    }
  }
}

void Writer::define_fields() {
  for (const Field& field : run_.fields) {
    const Quantity& q = *field.quantity;
    const int place = dims_.of(q.place);
    fields_.push_back(-1);
    if ((place < 0 && q.place != Place::run) || (q.span != Span::steady && dims_.time < 0))
      continue;
    std::vector<int> dimensions;
    if (q.span != Span::steady) dimensions.push_back(dims_.time);
    if (place >= 0) dimensions.push_back(place);
    const int id = described(std::string(q.name), field.exact.empty() ? NC_FLOAT : NC_DOUBLE,
                             dimensions, q.long_name, q.units);
    fields_.back() = id;
    file_.text(id, "standard_name", q.standard_name);
    file_.text(id, "comment", q.sign);
    file_.text(id, "formula", q.formula);
    file_.text(id, "origin", q.source);
    if (field.exact.empty()) file_.fill(id, kNone);
    if (q.span != Span::steady) {
      file_.text(id, "cell_methods",
                 run_.dated ? "time: mean within days time: mean over days" : "time: point");
    }
    if (q.place != Place::patch || dims_.node < 0) continue;
    file_.text(id, "mesh", "mesh");
    file_.text(id, "location", "face");
    file_.text(id, "coordinates", "patch_x patch_y patch_z");
  }
}

void Writer::write_mesh() {
  std::vector<signed char> kinds;
  for (const Kind kind : run_.patches.kind) kinds.push_back(static_cast<signed char>(kind));
  file_.put(kind_, kinds);
  for (const auto& [id, values] : integers_) file_.put(id, values);
  for (const auto& [id, values] : reals_) file_.put(id, values);
  if (face_nodes_ < 0) return;
  std::vector<std::int32_t> rows;
  for (std::size_t first = 0; first < run_.patches.size(); first += kRowsAtOnce) {
    const std::size_t end = std::min(first + kRowsAtOnce, run_.patches.size());
    rows.assign((end - first) * corners_, kNoNode);
    for (std::size_t p = first; p < end; ++p) {
      const std::vector<std::uint32_t> line = joined_ring(run_.shapes, p);
      std::ranges::copy(line, rows.begin() + static_cast<std::ptrdiff_t>((p - first) * corners_));
    }
    file_.put_rows(face_nodes_, first, corners_, rows);
  }
}

void Writer::write_fields() {
  std::vector<float> values;
  for (std::size_t f = 0; f < run_.fields.size(); ++f) {
    const Field& field = run_.fields[f];
    if (fields_[f] < 0) continue;
    values.resize(field.size);
    if (!field.exact.empty()) {
      file_.put(fields_[f], field.exact);
      continue;
    }
    if (field.quantity->place == Place::run) {
      file_.put(fields_[f], field.values);
      continue;
    }
    if (field.quantity->span == Span::steady) {
      field.take(run_, 0, values);
      file_.put(fields_[f], values);
      continue;
    }
    for (std::size_t h = 0; h < field.hours; ++h) {
      field.take(run_, h, values);
      file_.put_hour(fields_[f], h, values);
    }
  }
}

void Writer::write(const Origin& origin) {
  define_dimensions();
  define_globals(origin);
  define_time();
  define_mesh();
  define_patches();
  define_others();
  define_fields();
  file_.end_definitions();
  write_mesh();
  write_fields();
  file_.close();
}

}  // namespace

bool is_own_netcdf(const std::string& path) {
  int id = 0;
  if (nc_open(path.c_str(), NC_NOWRITE, &id) != NC_NOERR) return false;
  std::size_t length = 0;
  bool own = nc_inq_attlen(id, NC_GLOBAL, "program", &length) == NC_NOERR;
  std::string text(length, '\0');
  own = own && nc_get_att_text(id, NC_GLOBAL, "program", text.data()) == NC_NOERR &&
        text.starts_with(kMark);
  nc_close(id);
  return own;
}

void write_netcdf(const RunModel& run, const Origin& origin, const std::string& path) {
  Writer(run, path).write(origin);
}

}  // namespace townskin_view
