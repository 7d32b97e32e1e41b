// Accounts: named stopwatches of processor time.
//
// A process (a stretch of work named by its caller) is started and ended any number of times; its
// times add up, and at the end of a run one table is written. Owned by the run, called by the
// drivers around each large block of a step.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace frame {

class Log;

/// Processor seconds since the process began: user plus system, and user alone.
struct CpuTimes {
  double total = 0;
  double user = 0;
};

class Accounts {
 public:
  /// `clock` is the process's own unless a test brings another.
  explicit Accounts(std::function<CpuTimes()> clock = {});

  // A stopwatch started twice, ended without start or a 51st one stops the run (stop code 900).

  /// Starts the stopwatch `process` (at most 25 characters count), making it on first use.
  void start(Log& log, std::string_view process);
  /// Ends it and adds the time.
  void end(Log& log, std::string_view process);
  /// Processor seconds of the ended stretches of `process` so far.
  [[nodiscard]] double seconds(std::string_view process) const;
  /// Writes the table; running stopwatches show their ended stretches only.
  void print(Log& log) const;

 private:
  struct Row {
    std::string name;
    bool running = false;
    CpuTimes begun;
    CpuTimes sum;
  };
  Row* find(std::string_view process);

  std::function<CpuTimes()> clock_;
  std::vector<Row> rows_;
};

}  // namespace frame
