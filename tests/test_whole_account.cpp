// The energy account of whole runs: cases whose terms are known, all cases closed, faults seen.
#include <gtest/gtest.h>

#include <functional>
#include <numbers>
#include <sstream>

#include "driver/account_step.hpp"
#include "driver/file_table.hpp"
#include "driver/flw_main00.hpp"
#include "driver/start_up.hpp"
#include "driver/tsrf_admin.hpp"
#include "driver/tsrf_main01.hpp"
#include "read_account.hpp"
#include "recorded_log.hpp"
#include "results/bld_load.hpp"
#include "surface/air_state.hpp"

namespace {

using read_account::Balance;
using read_account::Day;
using run_case::RunCase;
namespace fs = std::filesystem;

constexpr double kClosed = 1e-9;

/// A case whose control data ask for the account, and its number of steps. Of some only what
/// differs from an example stands with the tests.
struct Asking : RunCase {
  Asking(const std::string& name, int steps, const std::string& example = {})
      : RunCase(run_case::inputs_of(example.empty() ? name : example)) {
    if (!example.empty()) copy_in(fs::path(TOWNSKIN_SOURCE_DIR) / "tests/cases" / name);
    run_case::set_steps(*this, -1, steps);
    run_case::ask_for_account(*this);
  }
};

std::map<int, Day> account_of(const RunCase& run) {
  std::ostringstream screen;
  EXPECT_EQ(flw_main00::run({.directory = run.path().string(), .screen = screen, .errors = screen}),
            0)
      << screen.str() << run.content("log0000");
  return read_account::days_of(run.path("account"));
}

// ---- terms that are known

/// A weather of one hour for ever: 300 K, light and long wave in W/m2. No file may be without sun.
void set_weather(const RunCase& run, double direct, double scattered, double longwave) {
  std::ostringstream text;
  text.precision(15);
  text << "# date, Temp, Rhum, Press, SunRad, Wind, SunJdn, SunJsh, AtmJsh\n";
  for (int hour = 1; hour <= 24; ++hour) {
    text << hour << " 26.85 50 1000 0 2 " << std::max(direct, 1e-30) * 0.0036 << ' '
         << std::max(scattered, 1e-30) * 0.0036 << ' ' << longwave * 0.0036 << '\n';
  }
  run.write("Weather.txt", text.str());
}

/// Replaces a column (from 0) of all lines but the title; those of which `choose` is false stay.
void set_column(const RunCase& run, const std::string& file, std::size_t column,
                const std::string& value) {
  std::string text;
  bool title = true;
  for (const std::string& line : run_case::lines_of(run.path(file))) {
    run_case::Lines fields = run_case::fields_of(line);
    if (!title && column < fields.size()) fields[column] = value;
    std::string joined;
    for (const std::string& field : fields) joined += field + " ";
    text += (title ? line : joined) + "\n";
    title = false;
  }
  run.write(file, text);
}

constexpr double kBlack300 = 5.6704e-8 * 300.0 * 300.0 * 300.0 * 300.0;  // [W/m2]

/// A term of a balance that is known [kWh], to a part of the largest of the district.
struct Known {
  std::string balance, term;
  double value;
};
struct Case {
  std::string name;
  int steps;
  std::function<void(const RunCase&)> edit;
  std::vector<Known> known;
};

/// Sum over a day of the sine of the sun's height above the horizon, of steps of an hour.
double sines_of_a_day() {
  constexpr double kDegree = std::numbers::pi / 180.0;
  double sum = 0.0;
  for (int hour = 0; hour < 24; ++hour) {
    const double angle = 15.0 * (hour - 12) * kDegree;
    sum +=
        std::max(0.0, std::sin(35.69 * kDegree) * std::sin(21.0 * kDegree) +
                          std::cos(35.69 * kDegree) * std::cos(21.0 * kDegree) * std::cos(angle));
  }
  return sum;
}

std::vector<Known> none_of(const std::string& balance, const std::vector<std::string>& terms) {
  std::vector<Known> known;
  for (const std::string& term : terms) known.push_back({balance, term, 0.0});
  return known;
}

TEST(Account, HasTheTermsThatAreKnown) {
  const double plate = 12 * 30.0;  // m2
  const double day = 24.0 / 1000.0;
  const auto isothermal = [](const RunCase& run) {
    set_weather(run, 0.0, 0.0, kBlack300);
    set_column(run, "SurfProp.txt", 3, "0");
  };
  const auto closed_rooms = [&](const RunCase& run) {
    isothermal(run);
    set_column(run, "RmHeat.txt", 3, "0");
    set_column(run, "RmHeat.txt", 5, "26.85");
  };
  const auto lit = [](const RunCase& run) {
    set_weather(run, 500.0, 100.0, kBlack300);
    set_column(run, "Sun.txt", 3, "1");
  };
  const auto black = [&](const RunCase& run) {
    lit(run);
    set_column(run, "SurfProp.txt", 1, "0");
    set_column(run, "SurfProp.txt", 2, "1");
  };
  std::vector<Case> cases{
      {"flat_empty", 24, isothermal,
       none_of("all district", {"beam", "sky_light", "convection", "evaporation", "stored_ground",
                                "view_factors", "sweeps", "late_emission"})},
      {"flat_empty",
       24,
       lit,
       {{"all district", "beam", plate * 0.5 * sines_of_a_day()},
        {"all district", "sky_light", plate * 100.0 * day},
        {"all district", "sky_longwave", plate * kBlack300 * day},
        {"all district", "sweeps", 0.0}}},
      {"canyon", 144, isothermal,
       none_of("all district", {"convection", "evaporation", "stored_ground", "late_emission"})},
      {"block", 288, closed_rooms,
       none_of("rooms buildings", {"walls", "sun", "internal", "ventilation", "to_slabs", "cooling",
                                   "stored", "set_point", "walls_untaken", "transmission"})},
      {"block", 288, closed_rooms,
       none_of("slabs buildings", {"rooms", "sun", "outside", "stored"})},
      {"canyon", 144, black, none_of("light district", {"to_sky", "view_factors", "sweeps"})},
      {"canyon", 144, black, none_of("longwave district", {"sweeps"})},
      {"canyon", 144, black, none_of("surface ground", {"reflected_light", "reflected_longwave"})},
  };
  for (const Case& one : cases) {
    const Asking run(one.name, one.steps);
    one.edit(run);
    const Day found = account_of(run).at(1);
    EXPECT_EQ(found.seconds, 86400.0);
    for (const Known& known : one.known) {
      const double all = found.balances.at("all district").largest();
      EXPECT_NEAR(found.of(known.balance, known.term), known.value, 1e-9 * all)
          << one.name << ", " << known.balance << ", " << known.term;
    }
  }
}

// ---- all cases close

struct Closing {
  std::string name;
  int steps;
  std::string kept;       ///< a term that the case must have, with its balance behind a slash
  std::string example{};  ///< whose inputs the case takes, all or part of them
  bool closed_leaves = false;
};

TEST(Account, OfAllCasesCloses) {
  const std::vector<Closing> cases{
      {"flat", 200, "conduction/surface ground"},
      {"flat_empty", 60, "stored/column ground"},
      {"canyon", 200, "sweeps/light district"},
      {"canyon_t1", 100, "view_factors/longwave district"},
      {"periodic", 300, "walls/rooms buildings"},
      {"mixed", 450, "given_up/held water"},
      {"block", 300, "beam_in_glass/column windows", "block"},
      {"dated", 160, "released/plant buildings", "two_months"},
      {"trees", 100, "evaporation/leaves trees", "street_trees"},
      {"trees", 100, "search/leaves trees", "street_trees", true},
      {"lone_tree", 150, "late_leaves/all district"},
      {"random_4", 120, "sweeps_of_cells/longwave trees"},
      {"random_4", 120, "other_faces/light trees", "", true},
  };
  for (const Closing& one : cases) {
    const Asking run(one.name, one.steps, one.example);
    if (one.closed_leaves) {
      ASSERT_TRUE(run.replace("control.txt", "&JMK_RADIAT", "&JMK_RADIAT MDLSCT = 1,"));
    }
    const auto days = account_of(run);
    ASSERT_FALSE(days.empty()) << one.name;
    EXPECT_EQ(read_account::open_balances(days, kClosed), "") << one.name;
    const std::size_t slash = one.kept.find('/');
    const std::string term = one.kept.substr(0, slash);
    for (const auto& [number, day] : days) {
      EXPECT_TRUE(day.balances.at(one.kept.substr(slash + 1)).terms.contains(term)) << one.name;
      for (const auto& [name, balance] : day.balances) {
        EXPECT_NEAR(balance.sum(), balance.remainder, 1e-9 * balance.largest())
            << one.name << ' ' << name;
      }
    }
  }
}

// ---- its place in a run

void run_in(const RunCase& run) {
  std::ostringstream screen;
  ASSERT_EQ(flw_main00::run({.directory = run.path().string(), .screen = screen, .errors = screen}),
            0);
}

TEST(Account, TakesPartInNothing) {
  const RunCase without(run_case::inputs_of("mixed"));
  run_case::set_steps(without, -1, 450);
  const Asking with("mixed", 450);
  run_in(without);
  run_in(with);
  auto files = run_case::left_by(with);
  EXPECT_EQ(files.erase("account"), 1U);
  EXPECT_EQ(files, run_case::left_by(without));
}

TEST(Account, OfPartsOfADayAddsUpToTheDay) {
  const Asking whole("mixed", 864);
  run_in(whole);
  const Asking parts("mixed", 500);
  run_in(parts);
  const auto first = read_account::days_of(parts.path("account"));
  run_case::set_steps(parts, 500, 864);
  run_in(parts);
  const auto second = read_account::days_of(parts.path("account"));
  EXPECT_EQ(first.size() + second.size(), 3U);
  EXPECT_EQ(first.at(2).seconds + second.at(2).seconds, 86400.0);
  EXPECT_NE(parts.content("account").find("no whole day"), std::string::npos);
  const Day day = read_account::days_of(whole.path("account")).at(2);
  EXPECT_EQ(day.seconds, 86400.0);
  for (const auto& [name, balance] : day.balances) {
    for (const auto& [term, value] : balance.terms) {
      EXPECT_NEAR(first.at(2).of(name, term) + second.at(2).of(name, term), value,
                  1e-9 * balance.largest())
          << name << ' ' << term;
    }
  }
}

// ---- faults are seen

using District = tsrf_main01::Run;

/// A run that is led step by step, so that a fault can be put into what a step works with and be
/// taken out again before the account looks at what the step has left.
class Led {
 public:
  explicit Led(const std::string& name)
      : files_(name, 1),
        units_(files_.path().string()),
        recorded_{},
        run_(std::make_unique<District>(
            tsrf_main01::Desk{recorded_.log, units_, layer_, crew_, frame::Accounts{}})) {
    frame::Log& log = recorded_.log;
    units_.open_input(log, frame::kUnitFileName, "file_name");
    frame::read_file_table(log, units_, run_->inputs.filnam);
    run_->inputs.size = frame::read_grid_size(log, units_.input(frame::kUnitControl));
    tsrf_main01::tsrf_read_cntdat(run_->desk, run_->inputs, run_->trees);
    tsrf_main01::tsrf_prep_init(*run_);
    tsrf_main01::read_canopy(*run_);
    if (run_->buildings.on()) {
      tsrf_module_io::prep_bldload(log, run_->inputs.patch, run_->inputs.grid,
                                   run_->results.bld_load);
    }
    tsrf_main01::prepare_account(*run_);
  }

  using Edit = std::function<void(District&)>;
  /// Steps of the first day, with `spoil` before and `mend` behind the physics of each.
  Day steps(int count, const Edit& spoil, const Edit& mend) {
    const double dt = run_->inputs.control.dtmax;
    for (int n = 0; n < count; ++n) {
      const double time = n * dt;
      tsrf_set_tqair::tsrf_set_tqair(recorded_.log, units_.input(frame::kUnitWeather), time, dt,
                                     run_->inputs.calendar, run_->inputs.weather,
                                     run_->surface.data);
      const tsrf_module_weather::Weather& air = run_->inputs.weather.now;
      if (run_->trees.cells.CALJMK) {
        tsrf_module_jumoku::storetqair(air.pressure, air.temperature, air.humidity, air.wind,
                                       run_->trees.canopy);
      }
      spoil(*run_);
      tsrf_main01::tsrf_admin(*run_, n + 1, time, dt);
      mend(*run_);
      tsrf_main01::add_to_account(*run_, time, dt, n + 1 == count);
    }
    return read_account::days_of(files_.path("account")).at(1);
  }

 private:
  Asking files_;
  frame::UnitTable units_;
  frame::ProcessLayer layer_;
  frame::Crew crew_;
  RecordedLog recorded_;
  std::unique_ptr<District> run_;
};

/// What a step works with, of which a value is spoiled.
struct Fault {
  std::string what;
  std::string name;     ///< of the case
  std::string balance;  ///< that sees it
  std::function<double&(District&)> value;
  double factor;
  bool copy = false;  ///< the conduction's own copy, spoiled for good before the first step
};

std::size_t first_balanced(const District& run, tsrf_module_patch::Type type) {
  std::size_t p = 0;
  while (run.surface.data.lcal[p] < 1 || !(run.inputs.patch.type[p] == type)) ++p;
  return p;
}
std::size_t surface_row(const District& run, std::size_t p) {
  return static_cast<std::size_t>(run.surface.data.isrf[p]);
}
/// The kind of column of the first land patch.
solid1d::Kind& ground_kind(District& run) {
  const std::size_t p = first_balanced(run, tsrf_module_patch::kLand);
  for (const solid1d::ColumnBlock& block : run.surface.columns.blocks) {
    for (std::size_t n = 0; n < block.count; ++n) {
      if (run.surface.columns.order[block.first + n] == p) {
        return run.surface.columns.kinds[block.kind];
      }
    }
  }
  throw std::runtime_error("no ground");
}
std::size_t wet_patch(const District& run) {
  std::size_t p = 0;
  while (run.surface.data.lcal[p] < 1 || !(run.inputs.srfprp.beta[surface_row(run, p)] > 0.0)) ++p;
  return p;
}
std::size_t first_roof(const District& run) {
  for (const auto& surface : run.buildings.rooms.surfaces) {
    if (surface.pos == 1) return surface.patch;
  }
  throw std::runtime_error("no roof");
}

const std::vector<Fault>& faults() {
  using tsrf_module_patch::kLand;
  static const std::vector<Fault> table{
      {"heat capacity of a layer of the ground", "mixed", "column ground",
       [](District& r) -> double& {
         return r.surface.columns.cells[ground_kind(r).first_cell].capa;
       },
       1.01, true},
      {"conductance from the surface to the first cell", "mixed", "column ground",
       [](District& r) -> double& { return ground_kind(r).surface_gcond; }, 1.01, true},
      {"conductance from the last cell to the room", "mixed", "column walls",
       [](District& r) -> double& {
         const auto& kinds = r.surface.columns.kinds;
         for (const solid1d::Kind& kind : kinds) {
           auto& cell =
               r.surface.columns.cells[kind.first_cell + static_cast<std::size_t>(kind.cells) - 1];
           if (cell.gcond > 0.0) return cell.gcond;
         }
         throw std::runtime_error("no wall");
       },
       1.01, true},
      {"convection of a patch", "canyon", "surface ground",
       [](District& r) -> double& { return r.surface.data.hc[first_balanced(r, kLand)]; }, 0.0},
      {"evaporation of a patch", "mixed", "surface ground",
       [](District& r) -> double& { return r.surface.data.hm[wet_patch(r)]; }, 0.0},
      {"albedo in the balance and the exchange", "canyon", "surface ground",
       [](District& r) -> double& {
         return r.inputs.srfprp.alb[surface_row(r, first_balanced(r, kLand))];
       },
       1.01},
      {"what a group receives in the exchange", "canyon", "longwave district",
       [](District& r) -> double& { return r.radiation.raddat.c[0]; }, 0.99},
      {"sky view factor of a patch", "canyon", "longwave district",
       [](District& r) -> double& { return r.surface.data.skyvf0[0]; }, 1.01},
      {"area of a patch in the exchange", "canyon", "longwave district",
       [](District& r) -> double& { return r.inputs.patch.area[0]; }, 1.01},
      {"beam that a cell of glass lets pass", "block", "column windows",
       [](District& r) -> double& { return r.surface.glass.passes[0]; }, 0.99},
      {"heat capacity of the slabs", "mixed", "slabs buildings",
       [](District& r) -> double& { return r.surface.data.uval(first_roof(r), 1); }, 1.01},
      {"transmission of a wall in free rooms", "mixed", "rooms buildings",
       [](District& r) -> double& { return r.surface.data.uval(first_roof(r), 0); }, 1.01},
      {"drive of a plant", "mixed", "plant buildings",
       [](District& r) -> double& { return r.buildings.bldng.cop[0]; }, 1.01},
      {"leaves of a cell", "lone_tree", "leaves trees",
       [](District& r) -> double& { return r.trees.canopy.leaves.volume[0]; }, 1.01},
      {"long wave that a cell of leaves keeps", "lone_tree", "longwave trees",
       [](District& r) -> double& { return r.trees.canopy.bands[2].weights.back().kept[2]; }, 0.99},
  };
  return table;
}

constexpr double kSeen = 1e-7;  // of the largest term

TEST(Account, SeesAFaultInEachPlace) {
  for (const Fault& fault : faults()) {
    double kept = 0.0;
    const auto spoil = [&](District& run) {
      double& value = fault.value(run);
      kept = value;
      value *= fault.factor;
    };
    const auto mend = [&](District& run) { fault.value(run) = kept; };
    bool spoiled = false;
    const auto spoil_copy = [&](District& run) {
      if (!spoiled) fault.value(run) *= fault.factor;
      spoiled = true;
    };
    const auto nothing = [](District&) {};
    const int steps = fault.name == "mixed" || fault.name == "block" ? 200 : 80;
    const Day sound = Led(fault.name).steps(steps, nothing, nothing);
    EXPECT_LT(sound.balances.at(fault.balance).open(), kClosed) << fault.what;
    Led led(fault.name);
    const Day day =
        fault.copy ? led.steps(steps, spoil_copy, nothing) : led.steps(steps, spoil, mend);
    EXPECT_GT(day.balances.at(fault.balance).open(), kSeen) << fault.what;
  }
}

}  // namespace
