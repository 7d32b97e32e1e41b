// Steps of a whole run beside the same steps with the plain forms put together, one thread.
//
//   bench_whole_run DIRECTORY [STEPS]
//
// DIRECTORY is a run directory without trees and buildings, as bench/make_district.py makes it; the
// plain steps go in a second one beside it, DIRECTORY.plain. Both runs go in turns, step by step,
// in this process and count processor time. At the end all temperatures must be the same bits and
// the result files the same bytes.
#include <algorithm>
#include <ctime>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

#include "driver/file_table.hpp"
#include "driver/start_up.hpp"
#include "driver/tsrf_admin.hpp"
#include "driver/tsrf_main01.hpp"
#include "frame/whole_run.hpp"
#include "plain_step.hpp"

namespace {

namespace fs = std::filesystem;
using tsrf_main01::Run;
using Seconds = std::map<std::string, double>;

/// Processor seconds of `work`.
template <class Work>
double seconds_of(Work&& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

constexpr std::array kResults{"SurfTemp.txt", "PatchSurfTemp.txt", "ProgressLog.txt", "SunSky.txt",
                              "heat.txt",     "BldLoad.txt",       "restart.dat"};

/// A directory of links to the inputs.
fs::path second_directory(const fs::path& first) {
  fs::path second = first.string() + ".plain";
  fs::remove_all(second);
  fs::create_directory(second);
  for (const auto& entry : fs::directory_iterator(first)) {
    const std::string name = entry.path().filename().string();
    const bool result = std::ranges::find(kResults, name) != kResults.end();
    if (result || name.starts_with("log")) continue;
    fs::create_symlink(fs::absolute(entry.path()), second / name);
  }
  return second;
}

/// Starts a run in `directory` and hands it to `use`.
void with_run(const fs::path& directory, std::ostream& screen,
              const std::function<void(Run&)>& use) {
  const frame::Place place{.directory = directory.string(), .screen = screen, .errors = screen};
  const int status = frame::whole_run(
      place, [&](frame::Log& log, frame::UnitTable& units, frame::ProcessLayer& layer) {
        frame::Crew crew;
        const auto run =
            std::make_unique<Run>(tsrf_main01::Desk{log, units, layer, crew, frame::Accounts{}});
        units.open_input(log, frame::kUnitFileName, "file_name");
        frame::read_file_table(log, units, run->inputs.filnam);
        run->inputs.size = frame::read_grid_size(log, units.input(frame::kUnitControl));
        tsrf_main01::tsrf_read_cntdat(run->desk, run->inputs, run->trees);
        tsrf_main01::tsrf_prep_init(*run);
        tsrf_main01::read_canopy(*run);
        use(*run);
        units.flush_outputs(log);
      });
  if (status != 0) throw std::runtime_error("the run in " + directory.string() + " failed");
}

/// The step of the program.
void step(Run& run, std::int64_t iter, double time, double dt) {
  tsrf_set_tqair::tsrf_set_tqair(run.desk.log, run.desk.units.input(frame::kUnitWeather), time, dt,
                                 run.inputs.calendar, run.inputs.weather, run.surface.data);
  tsrf_main01::tsrf_admin(run, iter, time, dt);
}

/// The program's accounts; what they leave is not split, the plain form's "rest" and "results".
Seconds accounts_of(const Run& run, double total) {
  Seconds seconds;
  double rest = total;
  for (const char* name : {"radref", "therm1d", "solid1d"}) {
    seconds[name] = run.desk.accounts.seconds(name);
    rest -= seconds[name];
  }
  seconds["rest and results"] = rest;
  seconds["step"] = total;
  return seconds;
}

/// Both forms side by side, in nanoseconds a patch and step.
void print(const Seconds& fast, const Seconds& plain, double patch_steps) {
  std::cout << "| ns a patch and step | program | share | plain forms | times |\n"
            << "|---|---|---|---|---|\n";
  for (const auto& [name, seconds] : fast) {
    std::cout << "| " << name << " | " << 1e9 * seconds / patch_steps << " | "
              << 100.0 * seconds / fast.at("step") << " % | " << 1e9 * plain.at(name) / patch_steps
              << " | " << plain.at(name) / seconds << " |\n";
  }
}

std::string content_of(const fs::path& name) {
  std::ostringstream text;
  text << std::ifstream(name).rdbuf();
  return text.str();
}

void check_plain_enough(const Run& run) {
  if (!run.trees.cells.CALJMK && !run.buildings.on() && !run.inputs.filnam.dated) return;
  throw std::runtime_error("the plain forms know no trees, buildings and dates");
}

/// All steps of both runs, in turns.
void march(Run& fast, Run& plain_run, const fs::path& plain_directory, int steps) {
  check_plain_enough(fast);
  Seconds plain_seconds;
  double reading = 0.0;
  std::unique_ptr<plain::Steps> plain;
  reading = seconds_of(
      [&] { plain = std::make_unique<plain::Steps>(plain_run, plain_directory.string()); });
  const double dt = fast.inputs.control.dtmax;
  double total = 0.0;
  for (int n = 0; n < steps; ++n) {
    const double time = n * dt;
    total += seconds_of([&] { step(fast, n + 1, time, dt); });
    plain->step(time, dt, [&](const char* name, auto&& work) {
      const double seconds = seconds_of(work);
      const std::string key = name;
      plain_seconds[key == "results" || key == "rest" ? "rest and results" : key] += seconds;
      plain_seconds["step"] += seconds;
    });
  }
  const auto a = fast.surface.data.tlyr.all();
  const auto b = plain_run.surface.data.tlyr.all();
  if (!std::ranges::equal(a, b)) throw std::runtime_error("the two forms differ");
  print(accounts_of(fast, total), plain_seconds,
        static_cast<double>(fast.surface.data.mpatch) * steps);
  std::cout << "view factors by a stream: " << reading << " s\n";
}

int run_both(const fs::path& directory, int steps) {
  const fs::path second = second_directory(directory);
  std::ostringstream screen;
  with_run(directory, screen, [&](Run& fast) {
    with_run(second, screen, [&](Run& plain) { march(fast, plain, second, steps); });
  });
  for (const std::string name : {"PatchSurfTemp", "SurfTemp"}) {
    if (content_of(directory / (name + ".txt")) != content_of(second / (name + ".plain"))) {
      throw std::runtime_error("the two forms of " + name + " differ");
    }
  }
  fs::remove_all(second);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 2) throw std::runtime_error("bench_whole_run DIRECTORY [STEPS]");
    return run_both(argv[1], argc > 2 ? std::stoi(argv[2]) : 24);
  } catch (const std::exception& fault) {
    std::cerr << fault.what() << '\n';
    return 1;
  }
}
