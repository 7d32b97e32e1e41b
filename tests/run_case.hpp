// Whole runs: a copy of a run directory, the program run in it, its results held against
// reference files.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "temp_folder.hpp"

namespace run_case {

using Lines = std::vector<std::string>;

/// The lines of a file that are not blank; of the text inside when its name ends in ".gz".
inline Lines lines_of(const std::filesystem::path& path) {
  std::ifstream plain(path, std::ios::binary);
  std::istringstream unpacked;
  if (path.extension() == ".gz") {
    const std::string command = "gzip -dc '" + path.string() + "'";
    std::string text;
    FILE* pipe = ::popen(command.c_str(), "r");
    for (int c = 0; pipe != nullptr && (c = std::getc(pipe)) != EOF;) {
      text += static_cast<char>(c);
    }
    if (pipe == nullptr || ::pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
    unpacked.str(text);
  }
  std::istream& file = path.extension() == ".gz" ? static_cast<std::istream&>(unpacked) : plain;
  Lines lines;
  for (std::string line; std::getline(file, line);) {
    if (line.find_first_not_of(" \t\r") != std::string::npos) lines.push_back(line);
  }
  return lines;
}

inline Lines fields_of(const std::string& line) {
  std::istringstream text(line);
  return {std::istream_iterator<std::string>(text), {}};
}

/// A printed number and the size of one unit of its last digit (0 for an integer).
struct Printed {
  double value;
  double unit;
};

inline std::optional<Printed> printed(const std::string& field) {
  Printed number{};
  const char* last = field.data() + field.size();
  const auto [end, status] = std::from_chars(field.data(), last, number.value);
  if (status != std::errc() || end != last) return std::nullopt;
  if (std::abs(number.value) < 1e-9) number.value = 0.0;  // what a night has left of the light
  const std::size_t point = field.find('.');
  if (point == std::string::npos) return number;
  const std::size_t letter = std::min(field.find_first_of("eE"), field.size());
  const int exponent = letter < field.size() ? std::atoi(field.c_str() + letter + 1) : 0;
  number.unit = std::pow(10.0, exponent - static_cast<int>(letter - point - 1));
  return number;
}

struct Tolerance {
  double relative = 2e-5;
  double units = 2.0;     ///< of the last printed digit
  double absolute = 0.0;  ///< small differences of large numbers carry their roundings
  bool columns = false;   ///< fields must end at the same places of the line
};

/// Where the fields of a line end.
inline std::vector<std::size_t> ends_of(const std::string& line) {
  std::vector<std::size_t> ends;
  for (std::size_t at = 0; (at = line.find_first_not_of(" \t\r", at)) != line.npos;) {
    ends.push_back(at = std::min(line.find_first_of(" \t\r", at), line.size()));
  }
  return ends;
}

inline bool agree(const std::string& a, const std::string& b, const Tolerance& tolerance) {
  const auto x = printed(a);
  const auto y = printed(b);
  if (!x || !y) return a == b;
  const double size = std::max(std::abs(x->value), std::abs(y->value));
  return std::abs(x->value - y->value) <=
         std::max({tolerance.relative * size, tolerance.units * std::max(x->unit, y->unit),
                   tolerance.absolute});
}

/// What differs between two texts, field by field; empty when nothing does. Headings ('#') must
/// have the same words.
inline std::string differences(const Lines& reference, const Lines& result,
                               const Tolerance& tolerance = {}) {
  constexpr int kShown = 5;
  std::ostringstream text;
  int count = 0;
  if (reference.size() != result.size()) {
    text << ++count << ": " << result.size() << " lines, not " << reference.size() << '\n';
  }
  for (std::size_t n = 0; n < std::min(reference.size(), result.size()); ++n) {
    const Lines wanted = fields_of(reference[n]);
    const Lines found = fields_of(result[n]);
    const bool heading = reference[n][0] == '#';
    const bool same = heading
                          ? wanted == found
                          : std::ranges::equal(wanted, found, [&](const auto& a, const auto& b) {
                              return agree(a, b, tolerance);
                            });
    const bool placed = !tolerance.columns || ends_of(reference[n]) == ends_of(result[n]);
    if ((same && placed) || ++count > kShown) continue;
    text << "line " << n + 1 << ":\n  wanted " << reference[n] << "\n  found  " << result[n]
         << '\n';
  }
  if (count > kShown) text << count << " lines differ\n";
  return text.str();
}

struct Outcome {
  int status;  ///< of the process; 128 + its number when a signal ended it
  std::string out, err;
  Lines log;
};

/// A run directory of its own.
class RunCase {
 public:
  /// Copies `source` without its references (`expected`, `expected_closed`).
  explicit RunCase(const std::filesystem::path& source) { copy_in(source); }

  /// Copies the files of another directory over its own.
  void copy_in(const std::filesystem::path& source) const {
    namespace fs = std::filesystem;
    for (const auto& entry : fs::directory_iterator(source)) {
      if (entry.path().filename().string().starts_with("expected")) continue;
      fs::copy(entry.path(), path(entry.path().filename()),
               fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    for (const auto& entry : fs::recursive_directory_iterator(path())) {
      fs::permissions(entry, fs::perms::owner_write, fs::perm_options::add);
    }
  }

  [[nodiscard]] std::filesystem::path path(const std::filesystem::path& name = {}) const {
    return folder_.path(name.string());
  }
  void write(const std::string& name, const std::string& text) const { folder_.write(name, text); }
  [[nodiscard]] std::string content(const std::string& name) const { return folder_.content(name); }
  /// Replaces the first `old_text` of a file; false when it is not there.
  [[nodiscard]] bool replace(const std::string& name, std::string_view old_text,
                             std::string_view new_text) const {
    std::string text = content(name);
    const std::size_t at = text.find(old_text);
    if (at == std::string::npos) return false;
    write(name, text.replace(at, old_text.size(), new_text));
    return true;
  }
  /// Puts `text` in the place of line `n`, counted from 1; false when the file has fewer.
  [[nodiscard]] bool set_line(const std::string& name, std::size_t n, std::string_view text) const {
    std::string all = content(name);
    std::size_t at = 0;
    for (; n > 1 && at < all.size(); --n) at = std::min(all.find('\n', at), all.size()) + 1;
    if (at >= all.size()) return false;
    write(name, all.replace(at, std::min(all.find('\n', at), all.size()) - at, text));
    return true;
  }

#ifdef TOWNSKIN_PROGRAM
  /// Starts the program in the directory, its output in the files "out" and "err" of `streams`.
  [[nodiscard]] pid_t start(const TempFolder& streams, const char* program) const {
    const pid_t child = ::fork();
    if (child != 0) return child;
    const auto stream = [&](const char* name, int fd) {
      return ::dup2(::open(streams.path(name).c_str(), O_WRONLY | O_CREAT, 0600), fd) == fd;
    };
    if (::chdir(path().c_str()) == 0 && stream("out", STDOUT_FILENO) &&
        stream("err", STDERR_FILENO)) {
      ::execl(program, program, static_cast<char*>(nullptr));
    }
    ::_exit(127);
  }
  /// Runs the program in the directory, to its end.
  [[nodiscard]] Outcome run(const char* program = TOWNSKIN_PROGRAM) const {
    const TempFolder streams;
    const pid_t child = start(streams, program);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return {-1, "", "cannot run", {}};
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            streams.content("out"), streams.content("err"), lines_of(path("log0000"))};
  }
#endif

  /// What differs between the results and the files below `expected`, by file name; `log_lines`
  /// there is not a result.
  [[nodiscard]] std::string differences_from(const std::filesystem::path& expected) const {
    constexpr Tolerance kLastDigit{1e-12, 1.01, 1e-6, true};
    std::string text;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(expected)) {
      if (!entry.is_regular_file() || entry.path().filename() == "log_lines") continue;
      auto name = std::filesystem::relative(entry.path(), expected);
      if (name.extension() == ".gz") name.replace_extension();
      const std::string found =
          differences(lines_of(entry.path()), lines_of(path(name)), kLastDigit);
      if (!found.empty()) text += name.string() + "\n" + found;
    }
    return text;
  }

 private:
  TempFolder folder_;
};

/// A case's run directory: an example of its name, or what stands with the references.
inline std::filesystem::path inputs_of(const std::string& name) {
  const std::filesystem::path source = TOWNSKIN_SOURCE_DIR;
  const std::filesystem::path example = source / "examples" / name;
  return std::filesystem::exists(example) ? example : source / "tests/cases" / name;
}

/// Sets the first and the last step of a run.
inline void set_steps(const RunCase& run, int first, int last) {
  const std::string steps = std::to_string(first) + " " + std::to_string(last);
  if (!run.set_line("control.txt", 3, steps)) throw std::runtime_error("no steps in control.txt");
}

/// Has a run write its energy account too.
inline void ask_for_account(const RunCase& run) {
  run.write("control.txt", run.content("control.txt") + "&ACCOUNT LACCOUNT = 1 /\n");
}

/// What a run left, by name: the bytes of each file but the log and the wall-clock record.
inline std::map<std::string, std::string> left_by(const RunCase& run) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(run.path())) {
    const std::string name = std::filesystem::relative(entry.path(), run.path()).string();
    if (!entry.is_regular_file() || name == "log0000" || name == "ProgressLog.txt") continue;
    if (name != "control.txt") files[name] = run.content(name);
  }
  return files;
}

}  // namespace run_case
