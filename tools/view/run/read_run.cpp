#include <algorithm>
#include <filesystem>
#include <limits>

#include "run/balance.hpp"
#include "run/inputs.hpp"
#include "run/radiation.hpp"
#include "run/results.hpp"
#include "run/run_model.hpp"
#include "run/shapes.hpp"
#include "run/sky.hpp"

namespace townskin_view {

namespace {

/// Last part of the full path of a directory, which may be given as "." or with a slash behind it.
std::string name_of_directory(const std::string& directory) {
  std::error_code error;
  const std::filesystem::path full = std::filesystem::weakly_canonical(directory, error);
  const std::string name = full.filename().string();
  return name.empty() ? directory : name;
}

const Properties* properties_at(const RunModel& run, std::size_t hour) {
  if (run.properties.empty()) return nullptr;
  const std::int32_t month = hour < run.hours.size() ? run.hours[hour].month : 0;
  for (const Properties& properties : run.properties) {
    if (properties.month == month) return &properties;
  }
  return &run.properties.front();
}

double property(const RunModel& run, std::size_t patch, std::size_t hour,
                std::vector<double> Properties::*list) {
  const Properties* properties = properties_at(run, hour);
  const auto row = static_cast<std::size_t>(run.patches.surface_row[patch]);
  if (properties == nullptr || row >= (properties->*list).size()) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return (properties->*list)[row];
}

}  // namespace

std::string_view name_of(Kind kind) {
  static constexpr std::array<std::string_view, kKinds> kNames{
      "roof",   "wall",        "window", "ground",       "water",
      "leaves", "solar panel", "mirror", "far boundary", "other"};
  return kNames[static_cast<std::size_t>(kind)];
}

const Field* RunModel::field(std::string_view wanted) const {
  const auto found = std::ranges::find_if(
      fields, [&](const Field& field) { return field.quantity->name == wanted; });
  return found == fields.end() ? nullptr : &*found;
}

std::int64_t RunModel::find_patch(std::int64_t PID) const {
  if (PID < std::numeric_limits<std::int32_t>::min() ||
      PID > std::numeric_limits<std::int32_t>::max()) {
    return -1;
  }
  return by_PID.find(static_cast<std::int32_t>(PID));
}

double RunModel::albedo(std::size_t patch, std::size_t hour) const {
  return property(*this, patch, hour, &Properties::albedo);
}
double RunModel::emissivity(std::size_t patch, std::size_t hour) const {
  return property(*this, patch, hour, &Properties::emissivity);
}
double RunModel::wetness(std::size_t patch, std::size_t hour) const {
  return property(*this, patch, hour, &Properties::wetness);
}

RunModel read_run(const std::string& directory, const Wanted& wanted) {
  QuietLog quiet;
  const RunFiles files = read_file_name(directory, quiet);
  RunModel run;
  run.directory = directory;
  run.name = name_of_directory(directory);
  run.inputs = files.inputs();
  CoreInputs core = read_inputs(files, quiet, run);
  run.by_PID = core.patch.by_pid;
  tsrf_module_raddat::Data raddat;
  read_groups(files, quiet, core, raddat, run);
  read_shapes(files.path_of("geometry.txt"), run);
  if (wanted.radiation || wanted.partners || wanted.all_partners_of) {
    read_exchange(files, quiet, core, wanted, raddat, run);
  }
  if (wanted.results) {
    read_results(files, wanted, run);
    read_sky(files, quiet, run);
    if (wanted.radiation) read_sunlit(files, quiet, core, run);
  }
  add_derived(run);
  return run;
}

Gift gift_of(const RunModel& run, std::size_t patch, const Partner& partner, std::size_t hour) {
  const Field* longwave = run.field("longwave_radiosity");
  const Field* shortwave = run.field("shortwave_radiosity");
  if (longwave == nullptr || shortwave == nullptr) return {};
  double area = 0.0, long_power = 0.0, short_power = 0.0;
  for (const std::int32_t member : run.group_of(static_cast<std::size_t>(partner.patch))) {
    const auto from = static_cast<std::size_t>(member);
    area += run.patches.area[from];
    long_power += run.patches.area[from] * static_cast<double>(longwave->stored(hour)[from]);
    short_power += run.patches.area[from] * static_cast<double>(shortwave->stored(hour)[from]);
  }
  return {run.emissivity(patch, hour) * partner.view_factor * long_power / area,
          (1.0 - run.albedo(patch, hour)) * partner.view_factor * short_power / area};
}

}  // namespace townskin_view
