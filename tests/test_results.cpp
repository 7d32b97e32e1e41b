// The result files: layout byte for byte, the rule by which they start over, sums over cells.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "recorded_log.hpp"
#include "results/bld_load.hpp"
#include "results/heat.hpp"
#include "results/patch_surf_temp.hpp"
#include "results/row.hpp"
#include "results/sun_sky.hpp"
#include "results/surf_temp.hpp"
#include "temp_folder.hpp"

namespace {

using namespace tsrf_module_io;

std::string in_plain_form(double value, int decimals) {
  std::string text = " ";
  frame::append_e13(text, value, decimals);
  return text + "\n";
}

class Results : public testing::Test {
 protected:
  Results() : file(folder.path("out")) {}
  std::string written() {
    file.flush(messages.log);
    return folder.content("out");
  }
  std::string row_of(double value, int decimals) {
    Row row;
    row.real(value, decimals);
    row.end(messages.log, file);
    std::string text;
    text.swap(file.buffer());
    return text;
  }

  TempFolder folder;
  RecordedLog messages;
  frame::TextOutput file;
  Settings settings;
  FileStart start;
};

TEST_F(Results, RealsHaveTheBytesOfThePlainForm) {
  const auto same = [&](double value) {
    for (const double v : {value, -value}) {
      for (const int decimals : {4, 5}) {
        ASSERT_EQ(row_of(v, decimals), in_plain_form(v, decimals)) << std::hexfloat << v;
      }
    }
  };
  for (const double value :
       {0.0, 1.0, 0.5, 9.999995, 9.9999949999999999, 999999.5, 999998.5, 1.000005, 100000.5,
        100001.5, 2.5e-320, 0.1, 16.0, 1.79316e-224, std::numeric_limits<double>::infinity()}) {
    same(value);
  }
  // Both ends of every binade and of every decade, where the number of digits is decided.
  for (int e = -1074; e < 1024; ++e) {
    const double power = std::ldexp(1.0, e);
    for (const double v : {std::nextafter(power, 0.0), power, std::nextafter(power, 1e308)})
      same(v);
  }
  for (int e = -323; e <= 308; ++e) {
    const double power = std::strtod(("1e" + std::to_string(e)).c_str(), nullptr);
    for (const double v : {std::nextafter(power, 0.0), power, std::nextafter(power, 1e308)})
      same(v);
  }
  std::mt19937_64 random(1);
  for (int n = 0; n < 200000; ++n) {
    const double any = std::bit_cast<double>(random() & 0x7fffffffffffffffU);
    if (std::isfinite(any)) same(any);
    // Middle between two results and its neighbours: exact where the number of digits allows.
    const int scale = static_cast<int>(random() % 16) - 4;
    const double middle =
        (static_cast<double>(100000 + random() % 900000) + 0.5) * std::pow(10.0, scale);
    for (const double v : {std::nextafter(middle, 0.0), middle, std::nextafter(middle, 1e99)})
      same(v);
  }
}

TEST_F(Results, IntegersWidenTheirField) {
  Row row;
  row.integer(7, 3);
  row.integer(-12345, 5);
  row.integer(std::numeric_limits<std::int32_t>::min(), 8);
  row.end(messages.log, file);
  EXPECT_EQ(written(), "  7-12345-2147483648\n");
}

TEST_F(Results, FilesStartOver) {
  struct Case {
    std::int32_t rewind;
    std::vector<std::int32_t> hours;
    std::string content;
  };
  const std::vector<Case> cases{
      {1, {5, 6}, "head 5 6 "},
      {1, {1, 2}, "head 1 2 "},
      {1, {23, 24, 1, 2}, "head 1 2 "},
      {2, {1, 24, 1}, "head 1 "},
      {0, {23, 24, 1, 2}, "head 23 24 1 2 "},
      {-1, {1, 1}, "head 1 1 "},
  };
  for (const Case& test : cases) {
    // What an earlier run left goes with the first write.
    folder.write("over", "left by an earlier run that wrote a long file");
    frame::TextOutput over(folder.path("over"));
    settings.REWIND_OUTFILE = test.rewind;
    FileStart fresh;
    for (const std::int32_t hour : test.hours) {
      start_file(messages.log, over, "head", settings, hour, fresh);
      over.line(messages.log, std::to_string(hour));
      over.flush(messages.log);
    }
    std::string content = folder.content("over");
    std::replace(content.begin(), content.end(), '\n', ' ');
    EXPECT_EQ(content, test.content) << test.rewind;
  }
}

TEST_F(Results, HoursOfSteps) {
  for (const auto& [sod, slot] : std::vector<std::pair<int, int>>{
           {1, 1}, {3600, 1}, {3601, 2}, {7200, 2}, {86399, 24}, {86400, 24}}) {
    EXPECT_EQ(hour_slot(sod), slot) << sod;
    EXPECT_EQ(is_whole_hour(sod), sod % 100 == 0) << sod;
  }
}

/// A roof and a wall in one cell, ground below, a tree patch and a far boundary beside them; the
/// area starts at (3, 2) of the grid.
tsrf_module_patch::Data some_patches() {
  tsrf_module_patch::Data patch;
  patch.mpatch = 6;
  patch.PID = {18, 7, 1, 4, 5, 200000000};
  patch.i = {2, 2, 2, 1, 1, 1};
  patch.j = {1, 1, 1, 1, 1, 3};
  patch.k = {1, 1, 0, 0, 0, 0};
  for (std::size_t p = 0; p < 6; ++p) {
    patch.si.push_back(patch.i[p] + 3);
    patch.sj.push_back(patch.j[p] + 2);
    patch.sk.push_back(patch.k[p] + 1);
  }
  patch.area = {16.0, 12.0, 16.0, 1.0, 2.0, 4.0};
  patch.nx = {0, 1, 0, 0, 0, 0};
  patch.ny = {0, 0, 0, 0, 0, 0};
  patch.nz = {1.0009, 0, 1, 1, 1, 1};
  patch.type = {1, 1, 3, 2, 7, 4};
  return patch;
}

tsrf_module_grdindx::Data placed() {
  tsrf_module_grdindx::Data grid_index;
  grid_index.ox = 3;
  grid_index.oy = 2;
  return grid_index;
}

TEST_F(Results, PatchSurfTempLayout) {
  tsrf_module_patch::Data patch = some_patches();
  for (auto* list : {&patch.PID, &patch.i, &patch.j, &patch.k}) list->resize(2);
  const std::vector<double> temperature{300.5136, 272.65};
  const std::vector<double> JRl{456.397, 434.0171};
  const std::vector<double> JRs{1.793163e-224, 0.0};
  const std::vector<double> latent{-0.0, -21.5};
  const std::vector<double> conductive{-112.391, 0.1};
  PatchColumns columns{temperature, kCelsius, JRl, JRs, latent, conductive, patch.area};
  write_patchsurftemp(messages.log, file, settings, 3599, patch, columns, start);
  EXPECT_TRUE(start.first_call) << "between whole hours nothing happens";
  write_patchsurftemp(messages.log, file, settings, 3600, patch, columns, start);
  columns.JRl = columns.JRs = {};
  write_patchsurftemp(messages.log, file, settings, 86400, patch, columns, start);
  const std::string heading = "# PID, i, j, k, hour, Temp, Rad_L, Rad_S\n";
  EXPECT_EQ(
      written(),
      heading +
          "      18    2    1    1  1   2.73636E+01   4.56397E+02  1.79316E-224   0.00000E+00  "
          "-1.12391E+02   1.60000E+01\n"
          "       7    2    1    1  1  -5.00000E-01   4.34017E+02   0.00000E+00  -2.15000E+01   "
          "1.00000E-01   1.20000E+01\n"
          "      18    2    1    1 24   2.73636E+01   0.00000E+00   0.00000E+00   0.00000E+00  "
          "-1.12391E+02   1.60000E+01\n"
          "       7    2    1    1 24  -5.00000E-01   0.00000E+00   0.00000E+00  -2.15000E+01   "
          "1.00000E-01   1.20000E+01\n");
}

TEST_F(Results, SurfTempSumsCells) {
  const tsrf_module_patch::Data patch = some_patches();
  tsrf_module_srfprp::Data srfprp;
  srfprp.beta = {0.0, 0.25};
  tsrf_module_data::Data state;
  state.isrf = {0, 0, 1, 0, 0, 1};
  state.hc = {10.0, 5.0, 11.6, 1.0, 1.0, 2.0};
  state.tlyr = frame::PatchTable<double>(6, 1, 300.0);
  state.tlyr(1, 0) = 310.0;
  SurfTemp data;
  prep_surftemp(messages.log, patch, placed(), data);
  sum_surftemp(patch, srfprp, state, data);
  sum_surftemp(patch, srfprp, state, data);  // formed anew: a second sum changes nothing
  write_surftemp(messages.log, file, settings, 7200, data.tdrg, data.swlr, data);
  EXPECT_EQ(written(),
            "# i,j,k,hour,tdrg(1:3),swlr(1:3)\n"
            "     2     1     1  2   1.85600E+02   5.56800E+04   4.64000E+01   0.00000E+00   "
            "1.60000E+01   0.00000E+00\n"
            "     1     3     1  2   8.00000E+00   2.40000E+03   2.00000E+00   0.00000E+00   "
            "4.00000E+00   0.00000E+00\n"
            "     2     1     2  2   2.20000E+02   6.66000E+04   0.00000E+00   1.20000E+01   "
            "0.00000E+00   1.60000E+01\n");
}

TEST_F(Results, SunSkyRows) {
  const tsrf_module_phydat::SkyFluxes sky{701.25, 0.162932, 370.49};
  const StepDates noon{43200, {1, 1, 1, 11, 50, 0}, {1, 1, 1, 12, 0, 0}};
  const StepDates midnight{86400, {1, 7, 31, 23, 50, 0}, {1, 8, 1, 0, 0, 0}};
  write_sunskyrad(messages.log, file, settings, false, noon, sky, start);
  write_sunskyrad(messages.log, file, settings, false, midnight, sky, start);
  EXPECT_EQ(written(),
            "### hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad\n"
            " 12   7.01250E+02   1.62932E-01   3.70490E+02\n"
            " 24   7.01250E+02   1.62932E-01   3.70490E+02\n");
  FileStart again;
  file.rewind(messages.log);
  write_sunskyrad(messages.log, file, settings, true, midnight, {}, again);
  // The file of a dated run runs on over the hours 1.
  write_sunskyrad(messages.log, file, settings, true,
                  {3600, {1, 8, 1, 0, 50, 0}, {1, 8, 1, 1, 0, 0}}, {}, again);
  EXPECT_EQ(written(),
            "### mn, dy, hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad\n"
            "  7 31 24   0.00000E+00   0.00000E+00   0.00000E+00\n"
            "  8  1  1   0.00000E+00   0.00000E+00   0.00000E+00\n");
  EXPECT_THROW(write_sunskyrad(messages.log, file, settings, true, {3600, noon.date0, noon.date1},
                               sky, again),
               frame::Stop);
  EXPECT_EQ(messages.screen.str(), "### program error -1- (tsrf_admin)(write_sunskyrad)\n");
}

TEST_F(Results, HeatLayout) {
  const std::vector<std::int32_t> ids{11};
  const std::vector<std::int32_t> floors{4};
  const std::vector<double> area{2.5};
  const std::vector<Budget> bldat{
      Budget{10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120, 130, 140}};
  const std::vector<double> Tr{299.65};
  const std::vector<double> Tm{298.4};
  write_heat(messages.log, file, settings, 3600, {ids, floors, area, bldat, Tr, Tm}, start);
  EXPECT_EQ(written(),
            "# Hr Bldid trans. insol. source vent.(sens.) vent.(lat.) total rel.(sens.) rel.(lat.) "
            "room temp. \n"
            "  1        11   1.00000E+00   2.00000E+00   3.00000E+00   4.00000E+00   1.10000E+01   "
            "1.70000E+01   6.00000E+00   1.30000E+01   2.65000E+01   2.52500E+01   2.10000E+01\n");
}

TEST_F(Results, BldLoadLayout) {
  tsrf_module_patch::Data patch = some_patches();
  patch.type = {1, 1, 1, 3, 1, 1};
  tsrf_main01::Grid grid;
  grid.given = true;
  for (auto& axis : grid.axes) axis = {5, {9, 9, 1, 1, 1, 2, 4, 9, 9}, {}};
  const std::vector<double> sensible{1.0, 2.0, 8.0, 99.0, 16.0, 4.0};
  const std::vector<double> latent{-1.0, 0.0, 0.0, 99.0, 2.0, 0.0};
  const std::string rows =
      "   4    3   1  1    0.0000E+00    0.0000E+00    8.0000E+00    1.0000E+00\n"
      "   4    5   1  1    0.0000E+00    0.0000E+00    5.0000E-01    0.0000E+00\n"
      "   5    3   1  1    0.0000E+00    0.0000E+00    2.0000E+00    0.0000E+00\n"
      "   5    3   2  1    0.0000E+00    0.0000E+00    7.5000E-01   -2.5000E-01\n";
  const std::string heading =
      "#  I    J   K Hr      VclSens      VclLant      BldSens      BldLant\n";
  const std::string cut = std::string(195, 'x') + "12345";
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", heading},
      {"# mine  \r\n\n  second line", "# mine\n\n  second line\n"},
      {cut + "67\n" + std::string(198, 'y') + "  z", cut + "\n" + std::string(198, 'y') + "\n"},
  };
  for (const auto& [stheat_text, expected] : cases) {
    frame::TextInput stheat("StHeat", stheat_text);
    BldLoad data;
    prep_bldload(messages.log, patch, grid, data);
    for (int day = 0; day < 2; ++day) {
      sum_bldload(sensible, latent, data);
      write_bldload(messages.log, file, &stheat, settings, 3600, data.released, data);
    }
    EXPECT_EQ(written(), expected + rows);
  }
  grid.given = false;
  BldLoad data;
  prep_bldload(messages.log, patch, grid, data);
  EXPECT_EQ(data.volume, std::vector<double>(4, 1.0));
}

TEST_F(Results, FullDiskEndsTheRun) {
  frame::TextOutput full("/dev/full");
  EXPECT_THROW(write_sunskyrad(messages.log, full, settings, false,
                               {3600, {1, 1, 1, 0, 50, 0}, {1, 1, 1, 1, 0, 0}}, {}, start),
               frame::Failure);
  EXPECT_EQ(messages.screen.str(),
            "### error : write error\nfile = /dev/full\nNo space left on device\n");
}

}  // namespace
