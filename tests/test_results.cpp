// The result files: numbers byte for byte, headings, the rule by which files start over. (Layouts
// and sums stand in the references of whole runs.)
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <tuple>

#include "recorded_log.hpp"
#include "results/bld_load.hpp"
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
  frame::Crew crew;

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
  for (int n = 0; n < 150000; ++n) {
    const double any = std::bit_cast<double>(random() & 0x7fffffffffffffffU);
    if (std::isfinite(any)) same_bytes(any);
    // The middle between two results, exact where the digits of a real allow.
    const double digits = static_cast<double>(100000 + random() % 900000) + 0.5;
    same_bytes(digits * std::pow(10.0, static_cast<int>(random() % 16) - 4));
    same_bytes(std::ldexp(static_cast<double>(random() >> 11), -43));  // as results are
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
  for (const int width : {3, 5, 8}) {
    for (const std::int32_t value : {0, 7, 10, 99, 100, 101, 999, 1000, 1005, 1050, 9999, 10000}) {
      row.integer(1, 3);
      row.integer(value, width);
      file.buffer().clear();
      row.end(messages.log, file);
      const std::string digits = std::to_string(value);
      const auto blanks = static_cast<std::size_t>(width) > digits.size()
                              ? static_cast<std::size_t>(width) - digits.size()
                              : 1;
      EXPECT_EQ(file.buffer(), "  1" + std::string(blanks, ' ') + digits + "\n");
    }
  }
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

/// A roof and a wall in one cell, ground below, a tree patch and a far boundary beside them.
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
    write_patchsurftemp(messages.log, crew, file, settings, when, patch,
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
    write_surftemp(messages.log, crew, file, settings, when, cells.tdrg, cells.swlr, cells);
  });
  refused("Sun & Sky", "all patches", "atmos.-long-rad", [&] {
    write_sunskyrad(messages.log, file, settings, false,
                    {3600, {1, 1, 1, 0, 0, 0}, {1, 1, 1, 1, 0, 0}, 17}, {1.0, 1.0, bad[3]}, start);
  });
}

TEST_F(Results, CellsAreThoseOfThePatchesThatTakePart) {
  tsrf_module_patch::Data patch;
  patch.PID = patch.si = {0, 1, 2, 3, 4, 5, 6, 7, 8};  // a cell for each type
  for (const std::int32_t type : patch.si) patch.type.push_back(tsrf_module_patch::Type(type));
  patch.i = patch.j = patch.sj = patch.sk = std::vector<std::int32_t>(9, 1);
  patch.area = Reals(9, 2.0);
  patch.nz = Reals(9, 1.000995);
  SurfTemp surf_temp;
  BldLoad bld_load;
  prep_surftemp(messages.log, patch, {}, surf_temp);
  prep_bldload(messages.log, patch, tsrf_main01::Sizes{}, bld_load);
  EXPECT_EQ(surf_temp.cells.i, (std::vector<std::int32_t>{1, 3, 4, 5}));
  EXPECT_EQ(bld_load.cells.i, (std::vector<std::int32_t>{1}));
  EXPECT_EQ(surf_temp.swlr[0], (CellSums{0, 0, 2.0})) << "a roof";
  patch.nz[1] = 1.001005;
  prep_surftemp(messages.log, patch, {}, surf_temp);
  EXPECT_EQ(surf_temp.swlr[0], (CellSums{2.0, 0, 0})) << "a wall";
}

TEST_F(Results, BldLoadTakesItsHeadingFromTheFile) {
  tsrf_module_patch::Data patch;
  patch.PID = patch.i = patch.j = patch.si = patch.sj = patch.sk = {2};
  patch.area = {1.0};
  patch.type = {tsrf_module_patch::kBuilding};
  const std::string row =
      "   2    2   2  1    0.0000E+00    0.0000E+00    8.0000E+00   -1.0000E+00\n";
  const std::string cut = std::string(195, 'x') + "12345\n";
  const std::vector<std::pair<std::string, std::string>> headings{
      {"", "#  I    J   K Hr      VclSens      VclLant      BldSens      BldLant\n"},
      {"# mine  \r\n\n  second line", "# mine\n\n  second line\n"},
      {std::string(195, 'x') + "1234567\n" + cut, cut + cut}};
  for (const auto& [text, heading] : headings) {
    frame::TextInput stheat("StHeat", text);
    BldLoad data;
    prep_bldload(messages.log, patch, tsrf_main01::Sizes{}, data);
    for (int day = 0; day < 2; ++day) {
      sum_bldload(Reals{8}, Reals{-1}, data);
      write_bldload(messages.log, file, stheat, settings, {3600, 1}, data.released, data);
    }
    EXPECT_EQ(written(), heading + row);
  }
}

}  // namespace
