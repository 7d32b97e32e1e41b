// What the user states: site files, libraries, flags; and the whole way to a run directory.
#include <gtest/gtest.h>

#include <sstream>

#include "block_scene.hpp"
#include "library/furnish.hpp"
#include "make_case.hpp"
#include "make_epw.hpp"
#include "run_case.hpp"

namespace {

using namespace townskin_case;

using Faults = std::vector<std::pair<std::string, std::string>>;

/// What `work` says when it reads a file of this text: the message without the folder.
template <class Work>
std::string fault_of(const std::string& text, Work&& work) {
  const TempFolder folder;
  folder.write("a.toml", text);
  try {
    work(folder.path("a.toml"));
  } catch (const Fault& fault) {
    const std::string message = fault.what();
    const std::size_t at = message.find("a.toml");
    return at == std::string::npos ? message : message.substr(at);
  }
  return "no fault";
}

TEST(CaseSite, FaultsNameFileAndLine) {
  const Faults faults{
      {"[grid]\ncell = [4, 4, 3]\nmargn = 5",
       "a.toml, line 3: unknown key margn of [grid]; known are above, cell, far_boundary, margin, "
       "rotate, sliver"},
      {"[gird]\n", "a.toml, line 1: unknown key gird; known are attributes, clip,"},
      {"[grid]\ncell = [4, 0]", "a.toml, line 2: cell = 0 of [grid] must be > 0 and <= 1e+05"},
      {"[grid]\ncell = [4, 4, 3, 2]", "a.toml, line 2: cell of [grid] has 1 to 3 sizes"},
      {"[grid]\ncell = \"big\"", "a.toml, line 2: cell of [grid] must be a number"},
      {"[grid]\nmargin = nan", "a.toml, line 2: margin of [grid] must be a number"},
      {"[grid]\nrotate = \"left\"",
       "a.toml, line 2: rotate of [grid] must be \"auto\" or an angle"},
      {"[rays]\nrays = 100.5", "a.toml, line 2: rays of [rays] must be a whole number"},
      {"[run]\nstep = 700", "a.toml, line 2: step of [run] must divide an hour"},
      {"[run]\nday = 7", "a.toml, line 2: day of [run] must be a text in quotes"},
      {"[input]\nbuildings = [1]", "a.toml, line 2: buildings of [input] must be a text in quotes"},
      {"[clip]\nrectangle = [0, 0, -5, 5]", "a.toml, line 2: rectangle of [clip] is west,"},
      {"input = 5", "a.toml, line 1: input must be a table"},
      {"[use]\ntable = {a = \"house\"}", "a.toml, line 1: [use] names no attribute to choose by"},
      {"[use]\nattribute = \"year\"\nup_to = [{value = 5, take = \"a\"}, {value = 5, take = "
       "\"b\"}]",
       "a.toml, line 3: the values of up_to must rise"},
      {"[run\n", "a.toml, line 1: "},
      {"[run]\nday = \"hottest\"\nday = \"x\"", "a.toml, line 3: "},
  };
  for (const auto& [text, wanted] : faults) {
    EXPECT_NE(fault_of(text, read_site).find(wanted), std::string::npos)
        << text << "\n"
        << fault_of(text, read_site);
  }
  EXPECT_EQ(fault_of("", [](const std::string& file) { read_site(file + "x"); }),
            "a.tomlx: cannot be read");
}

TEST(CaseSite, DocumentationTellsEveryKey) {
  std::ifstream file(TOWNSKIN_SOURCE_DIR "/docs/case.md");
  const std::string docs{std::istreambuf_iterator<char>(file), {}};
  std::size_t keys = 0;
  const std::string tables = fault_of("[nothing]", read_site);
  for (std::string table : run_case::fields_of(tables.substr(tables.find("known are ") + 10))) {
    if (table.ends_with(',')) table.pop_back();
    EXPECT_NE(docs.find("`[" + table + "]`"), std::string::npos) << table;
    const std::string fault = fault_of("[" + table + "]\nnothing = 1", read_site);
    for (std::string key : run_case::fields_of(fault.substr(fault.find("known are ") + 10))) {
      if (key.ends_with(',')) key.pop_back();
      EXPECT_NE(docs.find("`" + key + "`"), std::string::npos) << table << ' ' << key;
      ++keys;
    }
  }
  EXPECT_GT(keys, 40U);
}

constexpr const char* kLibrary =
    "[material.stone]\ndensity = 2000\nheat_capacity = 1000\nconductivity = 2\nsource = \"x\"\n"
    "[build_up.wall]\nlayers = [{material = \"stone\", thickness = 0.2}]\nalbedo = 0.3\n"
    "emissivity = 0.9\nsources = {layers = \"x\", albedo = \"x\", emissivity = \"x\"}\n";

TEST(CaseLibrary, FaultsNameFileAndLine) {
  const std::string base = kLibrary;
  const Faults faults{
      {base + "evaporation = 0.5",
       "line 11: evaporation of [build_up.wall] has no source: sources.evaporation is not there"},
      {base + "[building.a]\nwall = \"wall\"\nroof = \"roof\"",
       "line 13: there is no build_up roof"},
      {base + "[building.a]\nwall = \"wall\"\nroof = \"wall\"\nwindow_share = 0.2",
       "line 11: [building.a] lacks window"},
      {base + "[building.a]\nwall = \"wall\"\nroof = \"wall\"\nwindow_share = 0",
       "line 14: window_share of [building.a] has no source: sources.window_share is not there"},
      {base + "[ground]\nsand = \"beach\"", "line 12: there is no build_up beach"},
      {"[build_up.a]\nlayers = [{material = \"gold\", thickness = 1}]",
       "there is no material gold"},
      {"[build_up.a]\nalbedo = 0.3", "line 1: [build_up.a] has no layers"},
      {"[material.a]\ndensity = 0", "line 2: density = 0 of [material.a] must be > 0"},
      {"[material.a]\ndensity = 5", "line 1: [material.a] lacks heat_capacity"},
  };
  const TempFolder folder;
  folder.write("uses.toml", "");
  for (const auto& [text, wanted] : faults) {
    const auto read = [&](const std::string& file) {
      read_library(file, shipped_library("uses.toml"));
    };
    EXPECT_NE(fault_of(text, read).find(wanted), std::string::npos) << text << "\n"
                                                                    << fault_of(text, read);
  }
  // Every number of the shipped files must have its source: without one they are refused.
  for (const char* name : {"constructions.toml", "uses.toml"}) {
    std::ifstream file(shipped_library(name));
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    std::size_t tried = 0;
    for (std::size_t at = 0; (at = whole.find("\nsources.", at)) != whole.npos; ++at) {
      if (++tried % 7 != 0) continue;
      std::string without = whole;
      without.erase(at, whole.find('\n', at + 1) - at);
      const auto read = [&](const std::string& text) {
        const bool uses = name[0] == 'u';
        read_library(uses ? shipped_library("constructions.toml") : text,
                     uses ? text : shipped_library("uses.toml"));
      };
      EXPECT_NE(fault_of(without, read).find("has no source"), std::string::npos);
    }
    EXPECT_GT(tried, 20U);
  }
}

TEST(CaseLibrary, EndsInOrderWhereverItIsCut) {
  std::ifstream file(shipped_library("constructions.toml"));
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  const TempFolder folder;
  for (std::size_t end = 0; end < whole.size(); end += 97) {
    folder.write("a.toml", whole.substr(0, end));
    try {
      read_library(folder.path("a.toml"), shipped_library("uses.toml"));
    } catch (const Fault& fault) {
      EXPECT_NE(std::string(fault.what()).find("a.toml, line "), std::string::npos) << fault.what();
    }
  }
}

TEST(CaseLibrary, UsesMustMakeSense) {
  std::ifstream file(shipped_library("uses.toml"));
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  const auto with = [&](const std::string& old_text, const std::string& new_text) {
    std::string text = whole;
    text.replace(text.find(old_text), old_text.size(), new_text);
    return fault_of(text, [](const std::string& name) {
      read_library(shipped_library("constructions.toml"), name);
    });
  };
  EXPECT_EQ(with("code = 5", "code = 5"), "no fault");
  EXPECT_NE(with("code = 5", "code = 9").find("code = 9 of [use.house] must be >= 1 and <= 8"),
            std::string::npos);
  EXPECT_NE(with("sensible = 1.9", "sensible = [1, 2]").find("must have 1 or 24 values"),
            std::string::npos);
  EXPECT_NE(with("start = \"00:00\"", "start = \"0:00\"").find("must be a time of the day"),
            std::string::npos);
  EXPECT_NE(with("reached = \"00:00\"", "reached = \"24:00\"").find("in this order"),
            std::string::npos);
}

TEST(CaseFurnish, ChoosesByAttributesAndDividesWalls) {
  Choice choice{"year", "new", {{"unknown", "odd"}}, {{1945, "old"}, {1980, "middle"}}};
  const auto chosen = [&](std::map<std::string, std::string> attributes, bool by_default) {
    bool fell_back = !by_default;
    std::string name = choose(choice, attributes, fell_back);
    EXPECT_EQ(fell_back, by_default) << name;
    return name;
  };
  EXPECT_EQ(chosen({{"year", "1900"}}, false), "old");
  EXPECT_EQ(chosen({{"year", "1945"}}, false), "old");
  EXPECT_EQ(chosen({{"year", "1945.5"}}, false), "middle");
  EXPECT_EQ(chosen({{"year", "1999"}}, true), "new");
  EXPECT_EQ(chosen({{"year", "unknown"}}, false), "odd");
  EXPECT_EQ(chosen({{"age", "1900"}}, true), "new");

  const Library library =
      read_library(shipped_library("constructions.toml"), shipped_library("uses.toml"));
  Site site;
  site.construction = {"year", "concrete", {}, {{1970, "brick_solid"}}};
  site.use = {"kind", "house", {{"office", "office"}}, {}};
  Scene scene = block_scene::scene("grass", "moss");
  Report report;
  const Stock stock = furnish(block_scene::city(), library, site, scene, report);
  ASSERT_EQ(stock.profiles.size(), 1U);
  EXPECT_EQ(stock.profiles[0].construction, "brick_solid");
  EXPECT_EQ(stock.profiles[0].use, "office");
  double glass = 0.0, walls = 0.0, all = 0.0, groups = 0.0;
  for (const Patch& patch : scene.patches) {
    all += patch.area;
    for (const Material& material : stock.materials) {
      if (material.surface != patch.surface) continue;
      const bool is_glass = material.position == Position::window;
      const bool is_wall = material.build_up.name == "wall_brick_solid";
      (is_glass ? glass : walls) += is_glass || is_wall ? patch.area : 0.0;
    }
  }
  for (const Group& group : scene.groups) groups += group.area;
  EXPECT_NEAR(all, groups, 1e-9);
  EXPECT_NEAR(glass, 0.18 * 192.0, 1e-9);
  EXPECT_NEAR(walls, 0.82 * 192.0, 1e-9);
  EXPECT_EQ(report.lines().back(), "%%% kinds of ground without an entry, taken as asphalt: moss");
  site.use.fallback = "palace";
  EXPECT_THROW(furnish(block_scene::city(), library, site, scene, report), Fault);
  // A building of which only walls stand within the district has something that stores heat.
  site.use.fallback = "house";
  std::erase_if(scene.groups, [](const Group& group) {
    return group.kind == PatchKind::building && group.face == FaceKind::roof;
  });
  for (const Material& material :
       furnish(block_scene::city(), library, site, scene, report).materials) {
    if (material.build_up.name == "wall_brick_solid") {
      EXPECT_EQ(material.position, Position::roof);
    }
  }
}

/// Reads a command line of words.
Options command(const std::string& line) {
  std::vector<std::string> words = run_case::fields_of(line);
  std::vector<const char*> arguments{"townskin_case"};
  for (const std::string& word : words) arguments.push_back(word.c_str());
  return read_options(static_cast<int>(arguments.size()), arguments.data(), "");
}

TEST(CaseOptions, WinOverTheSiteFile) {
  const TempFolder folder;
  folder.write("site/site.toml",
               "[input]\nbuildings = \"b.json\"\nweather = \"w.epw\"\n[run]\nday = \"coldest\"\n"
               "[grid]\ncell = [5, 6, 7]\nmargin = 1\n[rays]\nseed = 3\nrays = 64\n");
  const std::string file = folder.path("site/site.toml");
  const Options plain = command(file + " -o x");
  EXPECT_EQ(plain.site.city.buildings.front(), folder.path("site/b.json"));
  EXPECT_EQ(plain.site.weather, folder.path("site/w.epw"));
  EXPECT_EQ(plain.site.run.days.day, "coldest");
  EXPECT_EQ(plain.site.grid.cell, (std::array<double, 3>{5.0, 6.0, 7.0}));
  const Options flagged =
      command(file + " -o x --cell 2,3 --margin 0 --seed 9 --from 07-01 --to " +
              "07-02 --buildings c.json --buildings d.json --rotate auto --strict");
  EXPECT_EQ(flagged.site.grid.cell, (std::array<double, 3>{2.0, 3.0, 7.0}));
  EXPECT_EQ(flagged.site.grid.margin, 0.0);
  EXPECT_EQ(flagged.site.rays.seed, 9);
  EXPECT_EQ(flagged.site.rays.rays, 64);
  EXPECT_EQ(flagged.site.run.days.to, "07-02");
  EXPECT_EQ(flagged.site.city.buildings.size(), 2U);
  EXPECT_TRUE(flagged.site.grid.rotate_along_streets && flagged.strict && !flagged.force);
  for (const char* line :
       {"-o x", "-o x --buildings b", "--weather w", "--buildings b --weather w --cell 1,2,3,4",
        "--buildings b --weather w --cell big", "--buildings b --weather w --rays 3.5",
        "--buildings b --weather w --lat 95", "--buildings b --weather w --what",
        "--buildings b --weather w --rotate left", "--buildings b --weather w --step 700",
        "--buildings b --weather w --day hottest --from 07-01", "no_such_site.toml"}) {
    EXPECT_THROW(command(line), Fault) << line;
  }
  EXPECT_NE(command("--help").to_print.find("--strict"), std::string::npos);
}

TEST(CaseMake, MakesARunOrNothing) {
  const TempFolder folder;
  folder.write(
      "b.geojson",
      R"({"type":"FeatureCollection","features":[{"type":"Feature","id":"one","properties":)"
      R"({"height":6},"geometry":{"type":"Polygon","coordinates":[[[-111.98,33.45],)"
      R"([-111.9799,33.45],[-111.9799,33.4501],[-111.98,33.4501],[-111.98,33.45]]]}}]})");
  folder.write("w.epw", make_epw::text());
  const auto make = [&](const std::string& flags) {
    const Options options =
        command("--buildings " + folder.path("b.geojson") + " --weather " + folder.path("w.epw") +
                " --rays 64 -o " + folder.path("run") + flags);
    Report report(options.strict);
    std::ostringstream screen;
    const auto cut = [](const City& city, const Site&, Report&) {
      EXPECT_EQ(city.buildings.size(), 1U);
      return block_scene::scene();
    };
    make_case(options, cut, report, {screen});
    return screen.str();
  };
  const std::string summary = make(" --day 07-21");
  EXPECT_NE(summary.find("days: 07-21"), std::string::npos);
  EXPECT_NE(folder.content("run/case.log").find(summary), std::string::npos);
  const std::string control = folder.content("run/control.txt");
  EXPECT_THROW(make(" --day 07-22"), Fault);
  EXPECT_THROW(make(" --day 02-29 --force"), Fault);
  EXPECT_THROW(make(" --lat 10 --force"), Fault);
  EXPECT_EQ(folder.content("run/control.txt"), control);
  make(" --day 07-22 --force");
  EXPECT_NE(folder.content("run/control.txt"), control);
  std::size_t names = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    names += entry.exists() ? 1 : 0;
  }
  EXPECT_EQ(names, 3U);
  EXPECT_EQ(run_case::RunCase(folder.path("run")).run().status, 0);
}

}  // namespace
