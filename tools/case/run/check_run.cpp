#include "run/check_run.hpp"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "driver/flw_main00.hpp"
#include "frame/numbers.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

constexpr std::int64_t kTrialSteps = 6;
constexpr int kRefused = 99;

double seconds_of(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

/// Memory that a process started now begins with: what this one holds but for files [bytes].
double held() {
  std::ifstream file("/proc/self/statm");
  double all = 0.0, resident = 0.0, of_files = 0.0;
  file >> all >> resident >> of_files;
  return (resident - of_files) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

struct Child {
  int status = 0;
  double seconds = 0.0, memory = 0.0;
};

/// Runs the model in a process of its own, whose memory can be told apart from the tool's.
Child run_model(const std::string& directory) {
  ::malloc_trim(0);  // what the tool has freed is not to be taken up unseen
  const double before = held();
  const pid_t child = ::fork();
  if (child < 0) throw Fault("cannot start a process for the trial");
  if (child == 0) {
    int status = kRefused;
    try {
      std::ostringstream screen, errors;
      status = flw_main00::run({.directory = directory, .screen = screen, .errors = errors});
    } catch (...) {  // of memory that is not to be had: the log tells
    }
    ::_exit(status);
  }
  int status = 0;
  rusage used{};
  ::wait4(child, &status, 0, &used);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
          seconds_of(used.ru_utime) + seconds_of(used.ru_stime),
          std::max(0.0, static_cast<double>(used.ru_maxrss) * 1024.0 - before)};
}

std::vector<std::string> lines_of(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> words_of(const std::string& line) {
  std::istringstream text(line);
  return {std::istream_iterator<std::string>(text), {}};
}

double number_of(const std::string& word) {
  double value = 0.0;
  frame::parse_number(word, value);
  return value;
}

/// Processor seconds of a step's work: the rows "< 2> rad_admin : 0.25( 26.2) ..." of the log's
/// table; 0 for any other line.
double accounted(const std::string& line) {
  static constexpr std::array<std::string_view, 5> kSteps{"rad_admin", "therm1d", "window",
                                                          "solid1d", "building"};
  const std::vector<std::string> words = words_of(line);
  if (words.size() < 5 || words[0] != "<" || words[3] != ":") return 0.0;
  if (std::ranges::find(kSteps, words[2]) == kSteps.end()) return 0.0;
  return number_of(words[4].substr(0, words[4].find('(')));
}

/// What the log says of a run that went through.
void take_log(const std::vector<std::string>& log, Trial& trial, double& in_steps) {
  constexpr std::string_view kCorrection = "%%% correction factor for view area =";
  for (const std::string& line : log) {
    if (line.starts_with("%%% warning")) trial.warnings.push_back(line);
    if (line.starts_with(kCorrection)) {
      const std::vector<std::string> factors = words_of(line.substr(kCorrection.size()));
      trial.least_correction = number_of(factors.at(0));
      trial.largest_correction = number_of(factors.at(1));
    }
    in_steps += accounted(line);
  }
}

[[noreturn]] void refused(const std::vector<std::string>& log, int status) {
  constexpr std::size_t kShown = 8;
  std::string text = "the surface model refuses the run (status " + std::to_string(status) + "):";
  for (std::size_t n = log.size() > kShown ? log.size() - kShown : 0; n < log.size(); ++n) {
    text += "\n    " + log[n];
  }
  throw Fault(text);
}

void remove_results(const std::string& directory, const RunData& run) {
  const RunFolder folder(directory, run.days);
  for (const char* name : {"SurfTemp.txt", "PatchSurfTemp.txt", "heat.txt", "BldLoad.txt"}) {
    for (const std::string& path : folder.monthly(name)) std::filesystem::remove(path);
  }
  for (const char* name : {"ProgressLog.txt", "SunSky.txt", "log0000"}) {
    std::filesystem::remove(folder.path(name));
  }
  TextFile(folder.path(file::kRestart)).close();
}

}  // namespace

Trial try_run(const RunData& run, const std::string& directory) {
  const RunFolder folder(directory, run.days);
  write_control(run, folder, kTrialSteps);
  const Child child = run_model(directory);
  const std::vector<std::string> log = lines_of(folder.path("log0000"));
  if (child.status != 0) refused(log, child.status);
  Trial trial;
  double in_steps = 0.0;
  take_log(log, trial, in_steps);
  const double a_step = in_steps / static_cast<double>(kTrialSteps);
  trial.memory = child.memory;
  trial.seconds = child.seconds - in_steps + a_step * static_cast<double>(steps_of(run));
  remove_results(directory, run);
  write_control(run, folder, steps_of(run));
  return trial;
}

}  // namespace townskin_case
