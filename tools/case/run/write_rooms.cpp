// The files of buildings and their rooms: Building and RmHeat; StHeat and the restart file, empty.
#include <algorithm>
#include <cmath>

#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

constexpr double kHeatingLimit = 15.0;  // mean air temperature below which rooms are heated [deg C]
constexpr int kHour = 60, kDay = 24 * kHour;

/// What RmHeat tells of a plant in an hour: its start (1) or its stop (2).
struct Flag {
  int flag = 0, minute = 0, reached = 0;
};

/// The plant's flags of hour 1 to 24. The model has no plant from 0 to 1 o'clock: what runs then
/// starts at one.
Flag flag_of(const Use& use, int hour) {
  if (!use.plant) return {};
  const int start = std::max(use.plant->start, kHour);
  const int reached = std::max(use.plant->reached, start);
  const int stop = std::min(use.plant->stop, kDay);
  if (start / kHour == hour) return {1, start % kHour, reached - hour * kHour};
  if (stop / kHour == hour) return {2, stop % kHour, 0};
  return {};
}

void write_building(const RunData& run, std::size_t b, TextFile& out) {
  const Building& building = run.city.buildings[b];
  const auto profile = static_cast<std::size_t>(run.stock.profile[b]);
  const Profile& of = run.stock.profiles[profile];
  const double floors = std::max(1.0, std::round(building.storeys));
  out.line(b + 1, of.rooms.code, of.number, static_cast<std::int64_t>(floors),
           std::max(1.0, building.floor_area), of.rooms.conditioned, of.rooms.sensible_share,
           of.rooms.cop, of.rooms.releases ? 0 : 1);
}

void write_schedule(const RunData& run, const std::string& path) {
  const bool cooling = run.days.mean_temperature >= kHeatingLimit;
  TextFile out(path);
  out.line("# hour BCD Strct rmsens rmlat rmtmp rmhum vent - ACflag ACSEMin ACPrT");
  for (int hour = 1; hour <= 24; ++hour) {
    const auto h = static_cast<std::size_t>(hour - 1);
    for (const Profile& profile : run.stock.profiles) {
      const Use& use = profile.rooms;
      const Flag plant = flag_of(use, hour);
      out.line(hour, use.code, profile.number, use.sensible[h], use.latent[h],
               cooling ? use.cooled_to : use.heated_to, use.humidity, use.ventilation[h], 0,
               plant.flag, plant.minute, plant.reached);
    }
  }
  out.close();
}

}  // namespace

void write_rooms(const RunData& run, const RunFolder& folder) {
  std::vector<char> has_patch(run.city.buildings.size());
  for (const Group& group : run.scene.groups) {
    if (group.building >= 0) has_patch[static_cast<std::size_t>(group.building)] = 1;
  }
  for (const std::string& path : folder.monthly(file::kBuilding)) {
    TextFile out(path);
    out.line("# BldID BldCD Strct floor area acflr shf cop norelease");
    for (std::size_t b = 0; b < has_patch.size(); ++b) {
      if (has_patch[b] != 0) write_building(run, b, out);
    }
    out.close();
  }
  for (const std::string& path : folder.monthly(file::kRmHeat)) write_schedule(run, path);
  for (const std::string& path : folder.monthly(file::kStHeat)) TextFile(path).close();
  TextFile(folder.path(file::kRestart)).close();
}

}  // namespace townskin_case
