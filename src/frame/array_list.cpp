#include "frame/array_list.hpp"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "frame/log.hpp"

namespace frame {

namespace {

constexpr double kMegabyte = 1e6;

std::string megabytes(double bytes) {
  char text[32];
  const int length = std::snprintf(text, sizeof text, "%.1f MB", bytes / kMegabyte);
  return {text, static_cast<std::size_t>(length)};
}

double most_resident() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

}  // namespace

std::size_t ArrayList::total() const {
  return std::accumulate(entries_.begin(), entries_.end(), std::size_t{0},
                         [](std::size_t sum, const Entry& entry) { return sum + entry.bytes; });
}

void report_memory(Log& log, const ArrayList& list) {
  const auto total = static_cast<double>(list.total());
  log.line("%%% memory: at most " + megabytes(most_resident()) + ", arrays " + megabytes(total));
  std::vector<ArrayList::Entry> entries = list.entries();
  std::ranges::stable_sort(entries, std::greater<>{}, &ArrayList::Entry::bytes);
  for (const ArrayList::Entry& entry : entries) {
    const auto bytes = static_cast<double>(entry.bytes);
    if (bytes < std::max(0.01 * total, 0.05 * kMegabyte)) break;
    log.line("%%%   " + entry.name + " " + megabytes(bytes));
  }
}

}  // namespace frame
