#include "csv/write_csv.hpp"

#include "out_file.hpp"
#include "run/outlines.hpp"

namespace townskin_view {

namespace {

std::string head_of(const Quantity& q) {
  std::string head(1, ',');
  head.append(q.name).append(" [").append(q.units).append("]");
  return head;
}

/// A table whose rows begin with fixed columns, by which an earlier one is known again.
OutFile begin(Stage& stage, const std::string& path, const std::string& fixed,
              const std::string& more) {
  OutFile out(stage.file(path, fixed));
  out.put(fixed + more + "\n");
  return out;
}

void put_exact(const RunModel& run, Place place, std::size_t n, OutFile& out) {
  for (const Field& field : run.fields) {
    if (field.quantity->place != place || field.exact.empty()) continue;
    out.put(",").number(field.exact[n]);
  }
}

std::string heads(const RunModel& run, Place place, bool exact) {
  std::string text;
  for (const Field& field : run.fields) {
    if (field.quantity->place == place && field.exact.empty() != exact) {
      text += head_of(*field.quantity);
    }
  }
  return text;
}

void write_patches(const RunModel& run, const std::string& path, Stage& stage) {
  OutFile out = begin(stage, path, "PID,kind,BldID,SurfID,group,x [m],y [m],z [m]",
                      heads(run, Place::patch, true));
  const Patches& patches = run.patches;
  for (std::size_t p = 0; p < patches.size(); ++p) {
    out.number(std::int64_t{patches.PID[p]}).put(",").put(name_of(patches.kind[p])).put(",");
    if (patches.building[p] >= 0) out.number(std::int64_t{patches.BldID[p]});
    out.put(",").number(std::int64_t{patches.SurfID[p]}).put(",");
    out.number(std::int64_t{patches.group[p]});
    for (const double x : middle_of(run.shapes, p)) out.put(",").number(x);
    put_exact(run, Place::patch, p, out);
    out.put("\n");
  }
  out.close();
}

void write_buildings(const RunModel& run, const std::string& path, Stage& stage) {
  if (run.buildings.empty()) return;
  OutFile out = begin(stage, path,
                      "BldID,use,construction,floors,floor_area [m2],conditioned [1],cop [1]", "");
  for (const Building& b : run.buildings) {
    out.number(std::int64_t{b.BldID}).put(",").number(std::int64_t{b.use}).put(",");
    out.number(std::int64_t{b.construction}).put(",").number(std::int64_t{b.floors}).put(",");
    out.number(b.floor_area).put(",").number(b.conditioned).put(",").number(b.cop).put("\n");
  }
  out.close();
}

void write_leaf_cells(const RunModel& run, const std::string& path, Stage& stage) {
  if (run.leaf_cells.empty()) return;
  OutFile out = begin(stage, path, "i,j,k", heads(run, Place::leaf_cell, true));
  for (std::size_t c = 0; c < run.leaf_cells.size(); ++c) {
    const Cell& cell = run.leaf_cells[c];
    out.number(std::int64_t{cell.i}).put(",").number(std::int64_t{cell.j}).put(",");
    out.number(std::int64_t{cell.k});
    put_exact(run, Place::leaf_cell, c, out);
    out.put("\n");
  }
  out.close();
}

/// Rows of all hours of a place; `key` puts what tells the place.
template <class Key>
void write_hours(const RunModel& run, Place place, std::size_t size, const std::string& keys,
                 const std::string& path, Stage& stage, Key&& key) {
  std::vector<const Field*> fields;
  for (const Field& field : run.fields) {
    if (field.quantity->place == place && field.exact.empty()) fields.push_back(&field);
  }
  if (fields.empty() || run.hours.empty() || size == 0) return;
  OutFile out = begin(stage, path, "month,day,hour [h]" + keys, heads(run, place, false));
  std::vector<std::vector<float>> values(fields.size(), std::vector<float>(size));
  for (std::size_t h = 0; h < run.hours.size(); ++h) {
    for (std::size_t f = 0; f < fields.size(); ++f) fields[f]->take(run, h, values[f]);
    const Hour& hour = run.hours[h];
    const std::string month = hour.month > 0 ? std::to_string(hour.month) : "";
    const std::string head = month + "," + (hour.month > 0 ? "" : std::to_string(hour.day)) + "," +
                             std::to_string(hour.hour);
    for (std::size_t n = 0; n < size; ++n) {
      out.put(head);
      key(out, n);
      for (const std::vector<float>& column : values) out.put(",").number(column[n]);
      out.put("\n");
    }
  }
  out.close();
}

}  // namespace

void write_csv(const RunModel& run, const std::string& folder, Stage& stage) {
  write_patches(run, folder + "/patches.csv", stage);
  write_buildings(run, folder + "/buildings.csv", stage);
  write_leaf_cells(run, folder + "/leaf_cells.csv", stage);
  write_hours(
      run, Place::patch, run.patches.size(), ",PID", folder + "/patch_hours.csv", stage,
      [&](OutFile& out, std::size_t n) { out.put(",").number(std::int64_t{run.patches.PID[n]}); });
  write_hours(run, Place::building, run.buildings.size(), ",BldID", folder + "/building_hours.csv",
              stage, [&](OutFile& out, std::size_t n) {
                out.put(",").number(std::int64_t{run.buildings[n].BldID});
              });
  write_hours(run, Place::cell, run.cells.size(), ",i,j,k", folder + "/cell_hours.csv", stage,
              [&](OutFile& out, std::size_t n) {
                const Cell& cell = run.cells[n];
                for (const std::int32_t index : {cell.i, cell.j, cell.k}) {
                  out.put(",").number(std::int64_t{index});
                }
              });
  write_hours(run, Place::run, 1, "", folder + "/weather.csv", stage, [](OutFile&, std::size_t) {});
}

}  // namespace townskin_view
