// Everything that goes into the files of a run, gathered for its writers.
#pragma once

#include "city/city.hpp"
#include "library/furnish.hpp"
#include "rays/view_factors.hpp"
#include "run/flow_setup.hpp"
#include "scene/scene.hpp"
#include "site/site.hpp"
#include "weather/days.hpp"
#include "weather/sun_course.hpp"
#include "weather/weather_lines.hpp"

namespace townskin_case {

struct RunData {
  const Site& site;
  const City& city;
  const Scene& scene;
  const Stock& stock;
  const ViewFactors& factors;
  const Sunlit& sunlit;
  const Days& days;
  const std::vector<WeatherLine>& weather;
  SunMembers sun;
  const FlowSetup& flow;
};

/// Names of the files of a run, by their line in `file_name`.
namespace file {
inline constexpr const char* kControl = "control.txt";
inline constexpr const char* kGrid = "Grid.txt";
inline constexpr const char* kWeather = "Weather.txt";
inline constexpr const char* kPatch = "Patch.txt";
inline constexpr const char* kPatchIndex = "PatchIndex.txt";
inline constexpr const char* kTreePatch = "TreePatch.txt";
inline constexpr const char* kFormFactor = "FormFactor.txt";
inline constexpr const char* kSun = "Sun.txt";
inline constexpr const char* kBldSurf = "BldSurf.txt";
inline constexpr const char* kSurfProp = "SurfProp.txt";
inline constexpr const char* kLadSimple = "LAD_simple.txt";
inline constexpr const char* kLad = "LAD.txt";
inline constexpr const char* kWaterTemp = "WaterTemp.txt";
inline constexpr const char* kMatEleProp = "MatEleProp.txt";
inline constexpr const char* kBuilding = "Building.txt";
inline constexpr const char* kRmHeat = "RmHeat.txt";
inline constexpr const char* kStHeat = "StHeat.txt";
inline constexpr const char* kPgidPrd = "PgidPrd.txt";
inline constexpr const char* kRestart = "restart.dat";
inline constexpr const char* kPorous = "Porous.txt";
inline constexpr const char* kGeometry = "geometry.txt";  ///< beside the 26
// Of townskin_flow alone.
inline constexpr const char* kFlowControl = "flow_control.txt";
inline constexpr const char* kFlowBoundary = "flow_boundary.txt";
inline constexpr const char* kFlowRestart = "flow_restart.dat";
inline constexpr const char* kFlowPorous = "flow_Porous.txt";
inline constexpr const char* kFlowLad = "flow_LAD.txt";
}  // namespace file

/// Where a run stands while it is written, and its files of each month.
class RunFolder {
 public:
  RunFolder(std::string directory, const Days& days) : directory_(std::move(directory)) {
    if (!days.dated) return;
    for (int month = days.first.month; month <= days.last.month; ++month) months_.push_back(month);
  }
  [[nodiscard]] std::string path(const std::string& name) const { return directory_ + "/" + name; }
  /// The paths of a file that each month has of its own; of a day that repeats a single one.
  [[nodiscard]] std::vector<std::string> monthly(const std::string& name) const;
  /// Where the results of a month stand, from the run's directory; with a stroke behind it.
  [[nodiscard]] std::string of_month(int month) const;
  /// The file of a day of real dates.
  [[nodiscard]] std::string daily(int month, int day, const std::string& name) const;
  [[nodiscard]] const std::vector<int>& months() const { return months_; }

 private:
  std::string directory_;
  std::vector<int> months_;  ///< none of a day that repeats
};

/// First and last day that have a Sun file in each month of a dated run.
struct SunDays {
  int first = 1, last = 31;
};
SunDays sun_days(const Days& days);

/// Steps of a whole run; of a day that repeats the most.
std::int64_t steps_of(const RunData& run);

/// Second of the day at which the flow begins; before midnight where it ends soon after it.
double flow_start(const RunData& run);

// The writers; each makes its files whole.
void write_control(const RunData& run, const RunFolder& folder, std::int64_t steps);
void write_file_names(const RunData& run, const RunFolder& folder);
void write_weather(const RunData& run, const RunFolder& folder);
void write_sun(const RunData& run, const RunFolder& folder);
void write_water(const RunData& run, const RunFolder& folder);
void write_patches(const RunData& run, const RunFolder& folder);
void write_grid(const RunData& run, const RunFolder& folder);
void write_trees(const RunData& run, const RunFolder& folder);
void write_factors(const RunData& run, const RunFolder& folder);
void write_materials(const RunData& run, const RunFolder& folder);
void write_rooms(const RunData& run, const RunFolder& folder);
void write_geometry(const RunData& run, const RunFolder& folder);
void write_flow(const RunData& run, const RunFolder& folder);

/// All files of the run, in a directory that is there.
void write_run(const RunData& run, const std::string& directory);

}  // namespace townskin_case
