// Mean days of a dated run: which hour a step counts into, means, empty hours, the next month.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "driver/month_files.hpp"
#include "recorded_log.hpp"
#include "temp_folder.hpp"

namespace {

using namespace tsrf_module_io;
using Reals = std::vector<double>;
/// By file: number of lines, and the numbers behind the hour in the rows of one hour.
using Written = std::map<std::string, std::pair<int, std::vector<Reals>>>;

constexpr double kDay = 86400.0;

class MonthlyMeans : public testing::Test {
 protected:
  MonthlyMeans() {
    patch.PID = {1, 2};
    patch.i = patch.j = patch.si = patch.sj = patch.sk = {1, 1};
    patch.k = {0, 0};
    patch.area = {2.0, 3.0};
    patch.nz = {0.0, 0.0};
    patch.type = {tsrf_module_patch::kBuilding, tsrf_module_patch::kLand};
    prep_surftemp(messages.log, patch, {}, surf_temp);
    prep_bldload(messages.log, patch, {}, bld_load);
    filnam.BASE = folder.path();
    filnam.MON = 'm';
    for (const std::string month : {"m01", "m02", "m12"}) {
      std::filesystem::create_directory(folder.path(month));
    }
    folder.write("m01/steady", "# two\n# lines\n");
    const std::vector<std::string> names{"steady", "cells", "patches", "load", "heat"};
    for (std::int32_t n = 0; n < 5; ++n) {
      ubx_module_filnam::set_file(filnam, ubx_module_filnam::kStHeat + n, 0,
                                  names[static_cast<std::size_t>(n)]);
    }
  }

  /// One step that ends at `sod` with all values derived from `x`.
  void step(std::int32_t sod, double x) {
    add_temperatures(messages.log, sod, Reals{273.15 + x, 273.15 - x}, Reals{x, 2 * x},
                     Reals{3 * x, 4 * x}, monthly);
    bldat[0].fill(x);
    const Reals Tr{273.15 + x};
    const Reals Tm{273.15 + 2 * x};
    add_buildings(messages.log, sod, {ids, floors, areas, bldat, Tr, Tm},
                  std::vector<CellHeat>{{x, -x}}, monthly);
    add_cells(messages.log, sod, std::vector<CellSums>{{x, 2 * x, 3 * x}}, monthly);
    add_fluxes(messages.log, sod, Reals{5 * x, 6 * x}, Reals{7 * x, 8 * x}, monthly);
  }

  /// What stands in the files of `month` about one hour after the step that ends at `time`.
  Written output(double time, bool lend, const std::string& month, int hour, bool on = true) {
    const BuildingColumns names{ids, floors, areas, {}, {}, {}};
    const MonthRows rows{settings, patch, on ? &names : nullptr, surf_temp, bld_load};
    output_month(messages.log, units, filnam, calendar, time, lend, rows, monthly);
    Written written;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path(month))) {
      const std::string name = entry.path().filename();
      const std::size_t place = name == "heat" ? 0 : name == "patches" ? 4 : 3;
      auto& [lines, found] = written[name];
      std::istringstream text(folder.content(month + "/" + name));
      for (std::string line; std::getline(text, line); ++lines) {
        std::istringstream fields(line[0] == '#' ? "" : line);
        const Reals values{std::istream_iterator<double>(fields), {}};
        if (values.size() <= place || values[place] != hour) continue;
        found.emplace_back(values.begin() + static_cast<std::ptrdiff_t>(place) + 1, values.end());
      }
    }
    return written;
  }

  TempFolder folder;
  RecordedLog messages;
  frame::UnitTable units;
  ubx_module_filnam::Data filnam;
  tsrf_module_calendar::Data calendar;
  tsrf_module_patch::Data patch;
  Settings settings{.REWIND_OUTFILE = 0};
  SurfTemp surf_temp;
  BldLoad bld_load;
  Monthly monthly;
  const std::vector<std::int32_t> ids{7};
  const std::vector<std::int32_t> floors{2};
  const Reals areas{5.0};
  std::vector<Budget> bldat{1};
};

TEST_F(MonthlyMeans, MeansOfAnHour) {
  step(3600, 100.0);
  step(3601, 1.0);
  step(5400, 4.0);
  EXPECT_TRUE(output(30 * kDay, false, "m01", 2)["cells"].second.empty());
  step(7200, 10.0);
  step(7201, 100.0);
  // Mean 5 in hour 2. Patches: Temp, JRl, JRs, latent, conductive, area.
  Written expected{{"steady", {2, {}}},
                   {"cells", {25, {{5, 10, 15, 2, 3, 0}}}},
                   {"patches", {49, {{5, 5, 15, 25, 35, 2}, {-5, 10, 20, 30, 40, 3}}}},
                   {"heat", {25, {{7, 0.5, 0.5, 0.5, 0.5, 0.5, 1, 0.5, 0.5, 5, 10, 1}}}},
                   {"load", {26, {{0, 0, 5, -5}}}}};
  EXPECT_EQ(output(31 * kDay, false, "m01", 2), expected);
  // The next month starts from nothing, and its files with their headings.
  step(10800, 5.0);
  const Written february = output(31 * kDay + 7200, true, "m02", 2);
  const Written nothing{{"cells", {25, {Reals(6)}}},
                        {"patches", {49, {Reals(6), Reals(6)}}},
                        {"heat", {25, {{7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}}}},
                        {"load", {25, {Reals(4)}}}};
  EXPECT_EQ(february, nothing);
}

TEST_F(MonthlyMeans, BuildingsOffAndNoRadiosities) {
  add_temperatures(messages.log, 86400, Reals{280.0, 281.0}, {}, {}, monthly);
  add_fluxes(messages.log, 86400, Reals{1, 2}, Reals{3, 4}, monthly);
  const Written expected{{"cells", {25, {Reals(6)}}},
                         {"patches", {49, {{6.85, 0, 0, 1, 3, 2}, {7.85, 0, 0, 2, 4, 3}}}},
                         {"heat", {0, {}}},
                         {"load", {0, {}}}};
  EXPECT_EQ(output(365 * kDay, false, "m12", 24, false), expected);
}

}  // namespace
