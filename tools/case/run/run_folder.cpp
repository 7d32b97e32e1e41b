#include <algorithm>
#include <cmath>

#include "inputs/calendar.hpp"
#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

std::string two_digits(int number) {
  return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

}  // namespace

std::vector<std::string> RunFolder::monthly(const std::string& name) const {
  std::vector<std::string> paths;
  for (const int month : months_) paths.push_back(path(of_month(month) + name));
  if (paths.empty()) paths.push_back(path(name));
  return paths;
}

std::string RunFolder::of_month(int month) const {
  return months_.empty() ? "" : "data/m" + two_digits(month) + "/";
}

std::string RunFolder::daily(int month, int day, const std::string& name) const {
  return path(of_month(month) + "d" + two_digits(day) + "/" + name);
}

SunDays sun_days(const Days& days) {
  // The days hold in every month, so a run through several takes all of them; the model wants two
  // days at least.
  if (days.first.month != days.last.month) return {};
  const int length = tsrf_module_calendar::days_in(days.first.month);
  const int first = std::min(days.first.day, length - 1);
  return {first, std::max(days.last.day, first + 1)};
}

std::int64_t steps_of(const RunData& run) {
  const auto a_day = static_cast<std::int64_t>(std::lround(86400.0 / run.site.run.step));
  if (!run.days.dated) return a_day * run.site.run.most_days;
  return a_day * static_cast<std::int64_t>(run.days.hours.size() / 24);
}

void write_file_names(const RunData& run, const RunFolder& folder) {
  TextFile out(folder.path("file_name"));
  for (const char* name :
       {file::kControl,    file::kGrid,       file::kWeather,      file::kPatch,
        file::kPatchIndex, file::kTreePatch,  file::kFormFactor,   file::kSun,
        file::kBldSurf,    file::kSurfProp,   file::kLadSimple,    file::kLad,
        file::kWaterTemp,  file::kMatEleProp, file::kBuilding,     file::kRmHeat,
        file::kStHeat,     "SurfTemp.txt",    "PatchSurfTemp.txt", "ProgressLog.txt",
        "SunSky.txt",      "heat.txt",        file::kPgidPrd,      file::kRestart,
        file::kPorous,     "BldLoad.txt"}) {
    out.line(name);
  }
  if (run.days.dated) out.put("&DIR_NAME\n BASE = 'data',\n MON = 'm',\n DAY = 'd',\n/\n");
  out.close();
}

void write_run(const RunData& run, const std::string& directory) {
  const RunFolder folder(directory, run.days);
  write_file_names(run, folder);
  write_control(run, folder, steps_of(run));
  write_grid(run, folder);
  write_weather(run, folder);
  write_patches(run, folder);
  write_factors(run, folder);
  write_sun(run, folder);
  write_water(run, folder);
  write_trees(run, folder);
  write_materials(run, folder);
  write_rooms(run, folder);
  write_geometry(run, folder);
  write_flow(run, folder);
}

}  // namespace townskin_case
