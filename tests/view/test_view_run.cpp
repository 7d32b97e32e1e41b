// Runs as they come: finished, cut short, of months, with trees, and directories that are none.
#include <gtest/gtest.h>

#include <set>

#include "run/outlines.hpp"
#include "run/shapes.hpp"
#include "view_case.hpp"

namespace {

using namespace townskin_view;
using view_case::FinishedRun;

const Wanted kAll{.partners = true};

void cut(const run_case::RunCase& run, const std::string& name, std::size_t bytes) {
  run.write(name, run.content(name).substr(0, bytes));
}

bool has_note(const RunModel& run, std::string_view words) {
  return std::ranges::any_of(
      run.notes, [&](const std::string& note) { return note.find(words) != std::string::npos; });
}

TEST(Quantities, HaveUnitsAndTheirTableStandsInTheDocs) {
  std::set<std::string_view> names;
  for (const Quantity& q : quantities()) {
    EXPECT_FALSE(q.units.empty()) << q.name;
    EXPECT_FALSE(q.long_name.empty() || q.source.empty()) << q.name;
    EXPECT_TRUE(q.shown_units.empty() == (q.units == "1")) << q.name;
    EXPECT_TRUE(q.source != "derived" || !q.formula.empty()) << q.name;
    EXPECT_TRUE(names.insert(q.name).second) << q.name << " twice";
  }
  std::ifstream file(std::string(TOWNSKIN_SOURCE_DIR) + "/docs/results.md");
  const std::string docs{std::istreambuf_iterator<char>(file), {}};
  EXPECT_NE(docs.find(quantities_table()), std::string::npos)
      << "put what `townskin_view --quantities` prints into docs/results.md";
}

/// A run, what is done to it, and what is left to see.
struct Odd {
  const char* what;
  const char* run;
  void (*harm)(const run_case::RunCase&);
  std::size_t hours;
  const char* note;  ///< in the notes; with no hours of a Fault where `refused`
  bool refused = false;
};

const Odd kOdd[] = {
    {"finished", "canyon", [](const auto&) {}, 24, nullptr},
    {"still going", "canyon",
     [](const auto& run) {
       cut(run, "ProgressLog.txt", 80);
       cut(run, "PatchSurfTemp.txt", run.content("PatchSurfTemp.txt").size() / 2);
     },
     11, "not finished"},
    {"no results", "canyon",
     [](const auto& run) {
       for (const char* name : {"PatchSurfTemp.txt", "SurfTemp.txt", "SunSky.txt"}) {
         std::filesystem::remove(run.path(name));
       }
     },
     0, "no results"},
    {"months", "two_months", [](const auto&) {}, 48, "Sunlit fractions"},
    {"a month not there yet", "two_months",
     [](const auto& run) { std::filesystem::remove(run.path("data/m08/PatchSurfTemp.txt")); }, 24,
     nullptr},
    {"trees", "street_trees", [](const auto&) {}, 48, nullptr},
    {"no materials", "canyon", [](const auto& run) { run.write("MatEleProp.txt", ""); }, 24,
     nullptr},
    {"no view factors", "canyon", [](const auto& run) { run.write("FormFactor.txt", ""); }, 24,
     "View factors are not known"},
    {"damaged weather", "canyon", [](const auto& run) { run.write("Weather.txt", "t\n1 x\n"); }, 24,
     "weather is not known"},
    {"results of another run", "canyon",
     [](const auto& run) { run.write("PatchSurfTemp.txt", "#\n 999 1 1 0 1 1. 1. 1. 1. 1. 1.\n"); },
     24, "is that of another place"},
    {"a title of markup", "canyon",
     [](const auto& run) {
       ASSERT_TRUE(run.set_line("Patch.txt", 1, "<script>alert(1)</script>"));
     },
     24, nullptr},
    {"no patches", "canyon", [](const auto& run) { run.write("Patch.txt", "title\n"); }, 0,
     "lack of Patch data", true},
    {"no file_name", "canyon",
     [](const auto& run) { std::filesystem::remove(run.path("file_name")); }, 0,
     "it has no file_name", true},
    {"a short file_name", "canyon", [](const auto& run) { run.write("file_name", "a\nb\n"); }, 0,
     "fewer than 26 lines", true},
    {"no control", "canyon", [](const auto& run) { run.write("control.txt", ""); }, 0, "control",
     true},
};

TEST(Runs, AreReadAsFarAsTheyGo) {
  for (const Odd& odd : kOdd) {
    SCOPED_TRACE(odd.what);
    const FinishedRun run(odd.run);
    odd.harm(run);
    if (odd.refused) {
      const view_case::Said said =
          view_case::view(run.directory() + " --csv " + run.directory() + "/out");
      EXPECT_EQ(said.status, 2);
      EXPECT_NE(said.text.find(odd.note), std::string::npos) << said.text;
      EXPECT_FALSE(std::filesystem::exists(run.path("out")));
      continue;
    }
    const RunModel model = read_run(run.directory(), kAll);
    EXPECT_EQ(model.hours.size(), odd.hours);
    if (odd.note != nullptr) {
      EXPECT_TRUE(has_note(model, odd.note)) << ::testing::PrintToString(model.notes);
    }
    std::vector<float> values;
    for (const Field& field : model.fields) {
      values.resize(field.size);
      for (std::size_t h = 0; h < field.hours; ++h) field.take(model, h, values);
    }
  }
}

TEST(Runs, CutAtAnyByteLoseNoWholeHour) {
  const FinishedRun run("mixed");
  const RunModel whole = read_run(run.directory(), kAll);
  ASSERT_FALSE(whole.buildings.empty());
  const std::string text = run.content("PatchSurfTemp.txt");
  const std::size_t rows = std::count(text.begin(), text.end(), '\n');
  ASSERT_EQ(rows, whole.hours.size() * whole.patches.size() + 1);
  const std::size_t heading = text.find('\n') + 1;
  const std::size_t line = text.find('\n', heading) + 1 - heading;
  for (const char* name :
       {"PatchSurfTemp.txt", "SurfTemp.txt", "heat.txt", "BldLoad.txt", "SunSky.txt"}) {
    const std::string content = run.content(name);
    for (std::size_t bytes = 0; bytes < content.size(); bytes += content.size() / 29 + 1) {
      run.write(name, content.substr(0, bytes));
      const RunModel model = read_run(run.directory(), kAll);
      if (name == std::string_view("PatchSurfTemp.txt") &&
          bytes > heading + line * whole.patches.size()) {
        EXPECT_EQ(model.hours.size(), (bytes - heading) / (line * whole.patches.size()));
      }
      const Field* temperature = model.field("surface_temperature");
      if (temperature != nullptr) {
        EXPECT_TRUE(std::ranges::equal(temperature->values,
                                       std::span(whole.field("surface_temperature")->values)
                                           .first(temperature->values.size())));
      }
    }
    run.write(name, content);
  }
}

TEST(Shapes, AreAsLargeAsTheirPatches) {
  for (const char* name : {"block", "street_trees", "mixed"}) {
    const run_case::RunCase run(run_case::inputs_of(name));
    const RunModel model = read_run(run.path().string(), {.results = false, .radiation = false});
    EXPECT_FALSE(model.shapes.true_shapes);
    for (std::size_t p = 0; p < model.patches.size(); ++p) {
      if (model.patches.kind[p] == Kind::far_boundary) continue;
      ASSERT_NEAR(area_of(model.shapes, p), model.patches.area[p], 1e-9 * model.patches.area[p]);
    }
  }
}

/// Twice the area of a line or triangles along a normal that looks up.
double flat_area(const Shapes& shapes, const std::vector<std::uint32_t>& line) {
  double sum = 0.0;
  for (std::size_t n = 0; n < line.size(); ++n) {
    const std::size_t a = 3 * std::size_t{line[n]};
    const std::size_t b = 3 * std::size_t{line[(n + 1) % line.size()]};
    sum += shapes.xyz[a] * shapes.xyz[b + 1] - shapes.xyz[b] * shapes.xyz[a + 1];
  }
  return 0.5 * sum;
}

TEST(Shapes, WithHolesAndPiecesKeepTheirAreas) {
  const run_case::RunCase run(run_case::inputs_of("flat"));
  const RunModel rectangles = read_run(run.path().string(), {.results = false});
  std::string text = "# geometry\n";
  // Of the first patch an L with two holes and a triangle apart from it, turned the wrong way.
  const std::string PID = std::to_string(rectangles.patches.PID[0]);
  text += PID + " 1 0 6 0 0 0 10 0 0 10 4 0 4 4 0 4 10 0 0 10 0\n";
  text += PID + " 1 1 4 1 1 0 2 1 0 2 2 0 1 2 0\n" + PID + " 1 2 3 6 1 0 8 1 0 7 3 0\n";
  text += PID + " 2 0 3 20 0 0 20 2 0 22 0 0\n";
  run.write("geometry.txt", text);
  const RunModel model = read_run(run.path().string(), {.results = false});
  ASSERT_TRUE(model.shapes.true_shapes) << ::testing::PrintToString(model.notes);
  const double area = 64.0 - 1.0 - 2.0 + 2.0;
  EXPECT_DOUBLE_EQ(area_of(model.shapes, 0), area);
  EXPECT_NEAR(flat_area(model.shapes, joined_ring(model.shapes, 0)), area, 1e-12);
  double sum = 0.0;
  for (const auto& [a, b, c] : triangles_of(model.shapes, {0.0, 0.0, 1.0}, 0)) {
    const double one = flat_area(model.shapes, {a, b, c});
    EXPECT_GT(one, 0.0);
    sum += one;
  }
  EXPECT_NEAR(sum, area, 1e-12);
}

TEST(Shapes, OfWallAndGlassLieWithinEachOther) {
  // The outlines of townskin_case are those of groups: both patches tell the same.
  const run_case::RunCase run(run_case::inputs_of("block"));
  const RunModel before = read_run(run.path().string(), {.results = false});
  std::size_t first = 0, second = 0;
  for (std::size_t p = 0; p < before.patches.size() && second == 0; ++p) {
    for (std::size_t q = p + 1; q < before.patches.size() && second == 0; ++q) {
      if (before.patches.group[p] != before.patches.group[q]) continue;
      first = p;
      second = q;
    }
  }
  ASSERT_NE(second, 0U);
  const double side = std::sqrt(before.patches.area[first] + before.patches.area[second]);
  std::ostringstream text;
  for (const std::size_t p : {first, second}) {
    text.precision(17);
    text << before.patches.PID[p] << " 1 0 4 0 0 0 " << side << " 0 0 " << side << ' ' << side
         << " 0 0 " << side << " 0\n";
  }
  run.write("geometry.txt", text.str());
  const RunModel model = read_run(run.path().string(), {.results = false});
  for (const std::size_t p : {first, second}) {
    EXPECT_NEAR(area_of(model.shapes, p), model.patches.area[p], 1e-9 * model.patches.area[p]);
  }
}

}  // namespace
