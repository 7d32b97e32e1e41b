// Mean days of a dated run: which hour a step counts into, means, empty hours, the next month.
#include <gtest/gtest.h>

#include <sstream>

#include "recorded_log.hpp"
#include "results/monthly.hpp"
#include "temp_folder.hpp"

namespace {

using namespace tsrf_module_io;
using Reals = std::vector<double>;

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

  /// Closes a month into fresh files; the rows of one hour in the four files, as numbers behind
  /// the hour.
  std::vector<Reals> close(int hour, bool with_buildings = true) {
    const TempFolder folder;
    {
      frame::TextOutput cells(folder.path("cells"));
      frame::TextOutput patches(folder.path("patches"));
      frame::TextOutput heat(folder.path("heat"));
      frame::TextOutput load(folder.path("load"));
      const BuildingColumns names{ids, floors, areas, {}, {}, {}};
      write_month(messages.log, settings, {cells, patches, heat, load, nullptr}, patch,
                  with_buildings ? &names : nullptr, surf_temp, bld_load, monthly);
    }
    std::vector<Reals> rows;
    const std::vector<std::pair<std::string, int>> files{
        {"cells", 3}, {"patches", 4}, {"heat", 0}, {"load", 3}};
    for (const auto& [name, place] : files) {
      std::istringstream text(folder.content(name));
      std::string line;
      int lines = 0;
      for (; std::getline(text, line); ++lines) {
        std::istringstream fields(line[0] == '#' ? "" : line);
        const Reals values{std::istream_iterator<double>(fields), {}};
        if (values.empty() || values[static_cast<std::size_t>(place)] != hour) continue;
        rows.emplace_back(values.begin() + place + 1, values.end());
      }
      const bool written = with_buildings || name == "cells" || name == "patches";
      EXPECT_EQ(lines, written ? 1 + 24 * (name == "patches" ? 2 : 1) : 0) << name;
    }
    return rows;
  }

  RecordedLog messages;
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
  step(7200, 10.0);
  step(7201, 100.0);
  // Mean 5 in hour 2. Patches: Temp, JRl, JRs, latent, conductive, area.
  const std::vector<Reals> expected{
      {5, 10, 15, 2, 3, 0},    {5, 5, 15, 25, 35, 2},
      {-5, 10, 20, 30, 40, 3}, {7, 0.5, 0.5, 0.5, 0.5, 0.5, 1, 0.5, 0.5, 5, 10, 1},
      {0, 0, 5, -5},
  };
  EXPECT_EQ(close(2), expected);
  const std::vector<Reals> nothing{
      Reals(6), Reals(6), Reals(6), {7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Reals(4)};
  EXPECT_EQ(close(2), nothing) << "a month starts from nothing, and its files with their headings";
  step(7200, 5.0);
  EXPECT_EQ(close(2), expected);
}

TEST_F(MonthlyMeans, BuildingsOffAndNoRadiosities) {
  add_temperatures(messages.log, 86400, Reals{280.0, 281.0}, {}, {}, monthly);
  add_fluxes(messages.log, 86400, Reals{1, 2}, Reals{3, 4}, monthly);
  const std::vector<Reals> expected{Reals(6), {6.85, 0, 0, 1, 3, 2}, {7.85, 0, 0, 2, 4, 3}};
  EXPECT_EQ(close(24, false), expected);
}

}  // namespace
