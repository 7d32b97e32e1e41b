#include "rays/parallel.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace townskin_case {

unsigned threads_of(unsigned wanted) {
  return wanted > 0 ? wanted : std::max(1U, std::thread::hardware_concurrency());
}

void in_parallel(
    unsigned threads, std::size_t items, std::size_t run,
    const std::function<void(unsigned thread, std::size_t first, std::size_t end)>& work,
    const Progress& progress) {
  std::atomic<std::size_t> next{0};
  std::mutex told;
  std::size_t done = 0;
  std::exception_ptr fault;
  const auto take_runs = [&](unsigned thread) {
    try {
      for (;;) {
        const std::size_t first = next.fetch_add(run);
        if (first >= items) return;
        const std::size_t end = std::min(first + run, items);
        work(thread, first, end);
        if (!progress) continue;
        const std::scoped_lock lock(told);
        done += end - first;
        progress(done, items);
      }
    } catch (...) {
      const std::scoped_lock lock(told);
      if (!fault) fault = std::current_exception();
      next = items;
    }
  };
  {
    std::vector<std::jthread> others;
    const std::size_t runs = (items + run - 1) / run;
    const auto wanted = std::min<std::size_t>(threads_of(threads), std::max<std::size_t>(runs, 1));
    for (unsigned t = 1; t < wanted; ++t) others.emplace_back(take_runs, t);
    take_runs(0);
  }
  if (fault) std::rethrow_exception(fault);
}

}  // namespace townskin_case
