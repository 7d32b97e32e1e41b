// Tables of faulty inputs and the lines that they lead to (tests/faults), one case a row:
//
//     # WaterTemp files
//     $ := (tsrf_module_wtrtmp)(read_wtrtmp)|
//     1 5 1 9|2 8 1 => E|PID in WaterTemp data = 8|it is not defined in Patch data|$
//
// A bar ends a line, E is the heading of a data error; a sign that `:=` gives a text stands for it.
#pragma once

#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct FaultCase {
  std::string input;
  std::string lines;
};
using Shorthand = std::map<char, std::string>;

inline std::string written_out(std::string_view text, const Shorthand& signs = {}) {
  std::string result;
  for (const char c : text) {
    if (const auto sign = signs.find(c); sign != signs.end()) {
      result += written_out(sign->second, signs);
    } else {
      result += c == '|' ? '\n' : c;
    }
  }
  return result.starts_with("E\n") ? "### error : data error" + result.substr(1) : result;
}

inline std::vector<FaultCase> fault_table(const std::string& name, Shorthand signs = {}) {
  std::ifstream file(TOWNSKIN_SOURCE_DIR "/tests/faults/" + name + ".txt");
  std::vector<FaultCase> cases;
  for (std::string row; std::getline(file, row);) {
    if (row.starts_with("# ")) continue;
    const std::size_t arrow = row.find(" =>");
    if (row.substr(1, 4) == " := ") {
      signs[row[0]] = row.substr(5);
    } else if (arrow != std::string::npos) {
      const std::size_t lines = std::min(row.find_first_not_of(' ', arrow + 3), row.size());
      cases.push_back(
          {written_out(row.substr(0, arrow), signs), written_out(row.substr(lines), signs)});
    }
  }
  if (cases.empty()) throw std::runtime_error("no cases in " + name);
  return cases;
}
