// The file `account` of a run, as a script would read it.
#pragma once

#include <cmath>
#include <map>
#include <string>

#include "run_case.hpp"

namespace read_account {

/// A balance of one day: its terms and its remainder [kWh].
struct Balance {
  std::map<std::string, double> terms;
  double remainder = 0.0;

  [[nodiscard]] double largest() const {
    double size = 0.0;
    for (const auto& [name, value] : terms) size = std::max(size, std::abs(value));
    return size;
  }
  /// The remainder against the largest term; 0 where all is 0.
  [[nodiscard]] double open() const {
    return remainder == 0.0 ? 0.0 : std::abs(remainder) / largest();
  }
  [[nodiscard]] double sum() const {
    double sum = 0.0;
    for (const auto& [name, value] : terms) sum += value;
    return sum;
  }
};

struct Day {
  double seconds = 0.0;
  std::map<std::string, Balance> balances;  ///< by name and whose, as "surface ground"

  [[nodiscard]] double of(const std::string& balance, const std::string& term) const {
    return balances.at(balance).terms.at(term);
  }
};

/// The days of an account, by number.
inline std::map<int, Day> days_of(const std::filesystem::path& file) {
  std::map<int, Day> days;
  for (const std::string& line : run_case::lines_of(file)) {
    if (line[0] == '#') continue;
    const run_case::Lines fields = run_case::fields_of(line);
    if (fields.size() != 7) throw std::runtime_error("no row: " + line);
    Day& day = days[std::stoi(fields[0])];
    day.seconds = std::stod(fields[1]);
    Balance& balance = day.balances[fields[2] + " " + fields[3]];
    const double value = std::stod(fields[5]);
    if (fields[4] == "remainder") {
      balance.remainder = value;
    } else {
      balance.terms[fields[4]] = value;
    }
  }
  return days;
}

/// The balances that do not close to `tolerance` of their largest term.
inline std::string open_balances(const std::map<int, Day>& days, double tolerance) {
  std::ostringstream text;
  for (const auto& [number, day] : days) {
    for (const auto& [name, balance] : day.balances) {
      if (balance.open() <= tolerance) continue;
      text << "day " << number << ", " << name << ": " << balance.remainder << " of "
           << balance.largest() << " kWh\n";
    }
  }
  return text.str();
}

}  // namespace read_account
