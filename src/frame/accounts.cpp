#include "frame/accounts.hpp"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "frame/log.hpp"

namespace frame {

namespace {

constexpr std::size_t kRows = 50;
constexpr std::size_t kNameLength = 25;
constexpr double kFloor = 1e-6;
constexpr int kTableWidth = 3;

CpuTimes process_times() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  };
  const double user = seconds(usage.ru_utime);
  return {user + seconds(usage.ru_stime), user};
}

[[noreturn]] void stop(Log& log, const std::string& line) {
  log.screen("### program error (acpuct)");
  log.screen(line);
  log.flush();
  throw Stop{kStatusAccounts};
}

[[noreturn]] void stop_process(Log& log, std::string_view name) {
  stop(log, "### process name = (" + std::string(name) + ")");
}

/// A name as the table tells it: cut to its length, without the blanks that fill it up.
std::string_view told(std::string_view name) {
  name = name.substr(0, kNameLength);
  return name.substr(0, name.find_last_not_of(' ') + 1);
}

}  // namespace

Accounts::Accounts(std::function<CpuTimes()> clock)
    : clock_(clock ? std::move(clock) : process_times) {
  rows_.reserve(kRows);
}

Accounts::Row* Accounts::find(std::string_view process) {
  const auto found = std::ranges::find(rows_, told(process), &Row::name);
  return found == rows_.end() ? nullptr : &*found;
}

double Accounts::seconds(std::string_view process) const {
  const auto found = std::ranges::find(rows_, told(process), &Row::name);
  return found == rows_.end() ? 0.0 : found->sum.total;
}

void Accounts::start(Log& log, std::string_view process) {
  Row* row = find(process);
  if (row == nullptr) {
    if (rows_.size() == kRows) stop_process(log, process);
    row = &rows_.emplace_back();
    row->name = told(process);
  }
  if (row->running) stop_process(log, process);
  row->running = true;
  row->begun = clock_();
}

void Accounts::end(Log& log, std::string_view process) {
  Row* row = find(process);
  if (row == nullptr || !row->running) stop_process(log, process);
  const CpuTimes now = clock_();
  row->running = false;
  row->sum.total += now.total - row->begun.total;
  row->sum.user += now.user - row->begun.user;
}

void Accounts::print(Log& log) const {
  if (rows_.empty()) return;
  std::array<double, 3> most = {kFloor, kFloor, kFloor};
  const auto columns = [](const Row& row) {
    return std::array<double, 3>{row.sum.total, row.sum.user, row.sum.total - row.sum.user};
  };
  for (const Row& row : rows_) {
    for (std::size_t c = 0; c < most.size(); ++c) most[c] = std::max(most[c], columns(row)[c]);
  }
  std::string dashes;
  for (int i = 0; i < kTableWidth; ++i) dashes += "-----------------------------------";
  log.line("");
  log.line("");
  log.line("          ***** Accouunting table of the CPU-time *****");
  log.line("");
  log.line(dashes);
  log.line(
      "        Process                        Total time        User time         System time");
  log.line(dashes);
  std::array<char, 128> text;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    std::snprintf(text.data(), text.size(), "   <%3zu> %-25s : ", i + 1, rows_[i].name.c_str());
    std::string line = text.data();
    const auto values = columns(rows_[i]);
    for (std::size_t c = 0; c < values.size(); ++c) {
      std::snprintf(text.data(), text.size(), "%s%9.2f(%5.1f)", c == 0 ? "" : "  ", values[c],
                    100.0 * values[c] / most[c]);
      line += text.data();
    }
    log.line(line);
  }
  log.line(dashes);
}

}  // namespace frame
