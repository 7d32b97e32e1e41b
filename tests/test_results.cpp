// The result files: layout byte for byte, the rule by which they start over, sums over cells.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <tuple>

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
using Reals = std::vector<double>;

class Results : public testing::Test {
 protected:
  std::string written() {
    file.flush(messages.log);
    return folder.content("out");
  }

  /// Holds the writer's form of a number, its negative and its neighbours against the plain form.
  void same_bytes(double middle) {
    for (const double v :
         {middle, -middle, std::nextafter(middle, 0.0), std::nextafter(middle, 1e308)}) {
      for (const int decimals : {4, 5}) {
        std::string plain = " ";
        frame::append_e13(plain, v, decimals);
        Row row;
        row.real(v, decimals);
        file.buffer().clear();
        row.end(messages.log, file);
        ASSERT_EQ(file.buffer(), plain + "\n") << std::hexfloat << v;
      }
    }
  }

  TempFolder folder;
  RecordedLog messages;
  frame::TextOutput file{folder.path("out")};
  Settings settings;
  FileStart start;
};

TEST_F(Results, RealsHaveTheBytesOfThePlainForm) {
  for (const double value : {0.0, 9.999995, 999999.5, 1.000005, 100000.5, 2.5e-320,
                             std::numeric_limits<double>::infinity()}) {
    same_bytes(value);
  }
  // The ends of every binade and of every decade, where the number of digits is decided.
  for (int e = -1074; e < 1024; ++e) same_bytes(std::ldexp(1.0, e));
  for (int e = -323; e <= 308; ++e)
    same_bytes(std::strtod(frame::items("1e", e).erase(2, 1).c_str(), nullptr));
  std::mt19937_64 random(1);
  for (int n = 0; n < 100000; ++n) {
    const double any = std::bit_cast<double>(random() & 0x7fffffffffffffffU);
    if (std::isfinite(any)) same_bytes(any);
    // The middle between two results, exact where the digits of a real allow.
    const double digits = static_cast<double>(100000 + random() % 900000) + 0.5;
    same_bytes(digits * std::pow(10.0, static_cast<int>(random() % 16) - 4));
  }
}

TEST_F(Results, IntegersWidenTheirFieldAndNeverTouch) {
  Row row;
  row.integer(std::numeric_limits<std::int32_t>::max(), 8);
  row.integer(1234, 5);
  row.integer(-1234, 5);
  row.integer(std::numeric_limits<std::int32_t>::min(), 8);
  row.end(messages.log, file);
  EXPECT_EQ(written(), "2147483647 1234 -1234 -2147483648\n");
}

TEST_F(Results, FilesStartOver) {
  using Hours = std::vector<std::int32_t>;
  const std::vector<std::tuple<std::int32_t, Hours, std::string>> cases{
      {1, {5, 6}, "head\n5\n6\n"},
      {1, {23, 24, 1, 2}, "head\n1\n2\n"},
      {2, {1, 24, 1}, "head\n1\n"},
      {0, {24, 1, 2}, "head\n24\n1\n2\n"}};
  for (const auto& [rewind, hours, content] : cases) {
    settings.REWIND_OUTFILE = rewind;
    FileStart fresh;
    for (const std::int32_t hour : hours) {
      start_file(messages.log, file, "head", settings, hour, fresh);
      file.line(messages.log, std::to_string(hour));
    }
    EXPECT_EQ(written(), content) << rewind;
  }
}

/// A roof and a wall in one cell, ground below, a tree patch and a far boundary beside them; the
/// area starts at (3, 2) of the grid.
tsrf_module_patch::Data some_patches() {
  tsrf_module_patch::Data patch;
  patch.PID = {31, 32, 33, 34, 35, 36};
  patch.i = {2, 2, 2, 1, 1, 1};
  patch.j = {1, 1, 1, 1, 1, 3};
  patch.k = {1, 1, 0, 0, 0, 0};
  patch.si = {5, 5, 5, 4, 4, 4};
  patch.sj = {3, 3, 3, 3, 3, 5};
  patch.sk = {2, 2, 1, 1, 1, 1};
  patch.area = {16.0, 12.0, 16.0, 1.0, 2.0, 4.0};
  patch.nz = {1.0009, 0, 1, 1, 1, 1};
  patch.type = {1, 1, 3, 2, 7, 4};
  return patch;
}

TEST_F(Results, PatchSurfTempLayout) {
  tsrf_module_patch::Data patch = some_patches();
  patch.PID = {18, 7};
  patch.k = {1, 0};
  const Reals degC{300.5136, 272.65};
  const Reals JRl{456.397, 434.0171};
  const Reals JRs{1.793163e-224, 0.0};
  const Reals latent{-0.0, -21.5};
  PatchColumns columns{degC, kCelsius, JRl, JRs, latent, latent, patch.area};
  write_patchsurftemp(messages.log, file, settings, 3599, patch, columns, start);
  EXPECT_TRUE(start.first_call) << "between whole hours nothing happens";
  write_patchsurftemp(messages.log, file, settings, 3600, patch, columns, start);
  patch.PID.resize(1);
  columns.JRl = columns.JRs = {};
  write_patchsurftemp(messages.log, file, settings, 86400, patch, columns, start);
  EXPECT_EQ(written(), R"(# PID, i, j, k, hour, Temp, Rad_L, Rad_S
      18    2    1    1  1   2.73636E+01   4.56397E+02  1.79316E-224   0.00000E+00   0.00000E+00   1.60000E+01
       7    2    1    0  1  -5.00000E-01   4.34017E+02   0.00000E+00  -2.15000E+01  -2.15000E+01   1.20000E+01
      18    2    1    1 24   2.73636E+01   0.00000E+00   0.00000E+00   0.00000E+00   0.00000E+00   1.60000E+01
)");
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
  prep_surftemp(messages.log, patch, {.ox = 3, .oy = 2}, data);
  sum_surftemp(patch, srfprp, state, data);
  sum_surftemp(patch, srfprp, state, data);  // formed anew: a second sum changes nothing
  write_surftemp(messages.log, file, settings, 7200, data.tdrg, data.swlr, data);
  EXPECT_EQ(written(), R"(# i,j,k,hour,tdrg(1:3),swlr(1:3)
     2     1     1  2   1.85600E+02   5.56800E+04   4.64000E+01   0.00000E+00   1.60000E+01   0.00000E+00
     1     3     1  2   8.00000E+00   2.40000E+03   2.00000E+00   0.00000E+00   4.00000E+00   0.00000E+00
     2     1     2  2   2.20000E+02   6.66000E+04   0.00000E+00   1.20000E+01   0.00000E+00   1.60000E+01
)");
}

TEST_F(Results, SunSkyRows) {
  const StepDates midnight{86400, {1, 7, 31, 23, 50, 0}, {1, 8, 1, 0, 0, 0}};
  const StepDates one{3600, {1, 8, 1, 0, 50, 0}, {1, 8, 1, 1, 0, 0}};
  write_sunskyrad(messages.log, file, settings, false, one, {701.25, 0.162932, 370.49}, start);
  write_sunskyrad(messages.log, file, settings, false, midnight, {}, start);
  EXPECT_EQ(written(), R"(### hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad
  1   7.01250E+02   1.62932E-01   3.70490E+02
 24   0.00000E+00   0.00000E+00   0.00000E+00
)");
  FileStart again;
  file.rewind(messages.log);
  write_sunskyrad(messages.log, file, settings, true, midnight, {}, again);
  write_sunskyrad(messages.log, file, settings, true, one, {}, again);  // runs on over hour 1
  EXPECT_EQ(written(),
            R"(### mn, dy, hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad
  7 31 24   0.00000E+00   0.00000E+00   0.00000E+00
  8  1  1   0.00000E+00   0.00000E+00   0.00000E+00
)");
  const StepDates torn{3600, one.date0, midnight.date1};
  EXPECT_THROW(write_sunskyrad(messages.log, file, settings, true, torn, {}, again), frame::Stop);
  EXPECT_EQ(messages.screen.str(), "### program error -1- (tsrf_admin)(write_sunskyrad)\n");
}

TEST_F(Results, HeatLayout) {
  const std::vector<std::int32_t> ids{11};
  const std::vector<std::int32_t> floors{4};
  const std::vector<Budget> bldat{{10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120, 130, 140}};
  const Reals area{2.5};
  const Reals Tr{299.65};
  const Reals Tm{298.4};
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
  tsrf_main01::Axes grid;
  grid.fill({5, {9, 9, 1, 1, 1, 2, 4, 9, 9}, {}});
  BldLoad unplaced;
  prep_bldload(messages.log, patch, tsrf_main01::Sizes{5, 5, 5}, unplaced);
  EXPECT_EQ(unplaced.volume, Reals(4, 1.0));
  const std::string rows =
      "   4    3   1  1    0.0000E+00    0.0000E+00    8.0000E+00    1.0000E+00\n"
      "   4    5   1  1    0.0000E+00    0.0000E+00    5.0000E-01    0.0000E+00\n"
      "   5    3   1  1    0.0000E+00    0.0000E+00    2.0000E+00    0.0000E+00\n"
      "   5    3   2  1    0.0000E+00    0.0000E+00    7.5000E-01   -2.5000E-01\n";
  const std::string cut = std::string(195, 'x') + "12345\n";
  const std::vector<std::pair<std::string, std::string>> headings{
      {"", "#  I    J   K Hr      VclSens      VclLant      BldSens      BldLant\n"},
      {"# mine  \r\n\n  second line", "# mine\n\n  second line\n"},
      {std::string(195, 'x') + "1234567\n" + cut, cut + cut}};
  for (const auto& [text, heading] : headings) {
    frame::TextInput stheat("StHeat", text);
    BldLoad data;
    prep_bldload(messages.log, patch, grid, data);
    for (int day = 0; day < 2; ++day) {
      sum_bldload(Reals{1, 2, 8, 99, 16, 4}, Reals{-1, 0, 0, 99, 2, 0}, data);
      write_bldload(messages.log, file, stheat, settings, 3600, data.released, data);
    }
    EXPECT_EQ(written(), heading + rows);
  }
}

TEST_F(Results, NothingIsWrittenThatIsNotFinite) {
  const tsrf_module_patch::Data patch = some_patches();
  const Reals good(6, 1.0);
  Reals bad = good;
  bad[3] = -std::numeric_limits<double>::infinity();
  const When when{3600, 17};
  const auto refused = [&](const std::string& name, const std::string& owner,
                           const std::string& term, auto&& write) {
    EXPECT_EQ(messages.lines_of(write), "### error : result not finite in " + name +
                                            "\niter = 17\n" + owner + "\nterm = " + term + "\n");
  };
  refused("PatchSurfTemp", "PID = 34", "latent heat", [&] {
    write_patchsurftemp(messages.log, file, settings, when, patch,
                        {.temperature = good,
                         .JRl = good,
                         .JRs = good,
                         .latent = bad,
                         .conductive = good,
                         .area = good},
                        start);
  });
  BldLoad load;
  prep_bldload(messages.log, patch, tsrf_main01::Sizes{}, load);
  load.released[0][1] = std::nan("");
  frame::TextInput stheat("StHeat", "");
  refused("BldLoad", "PID = 31", "latent heat released",
          [&] { write_bldload(messages.log, file, stheat, settings, when, load.released, load); });
  SurfTemp cells;
  prep_surftemp(messages.log, patch, {}, cells);
  cells.swlr[0][2] = 1e39;  // the file keeps single precision
  refused("SurfTemp", "PID = 33", "area of roofs", [&] {
    write_surftemp(messages.log, file, settings, when, cells.tdrg, cells.swlr, cells);
  });
  refused("Sun & Sky", "all patches", "atmos.-long-rad", [&] {
    write_sunskyrad(messages.log, file, settings, false,
                    {3600, {1, 1, 1, 0, 0, 0}, {1, 1, 1, 1, 0, 0}, 17}, {1.0, 1.0, bad[3]}, start);
  });
}

}  // namespace
