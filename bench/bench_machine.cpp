// What the machine gives to two: two processes that share nothing, each on a processor of its own,
// alone and together.
//
//   bench_machine [ROUNDS]
//
// No program can gain more from a second processor than this. Additions that wait for each other
// leave the most of a core idle, additions side by side fill it: where two virtual processors are
// the two threads of one core, the first kind goes twice as fast by two and the second no faster.
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr double kSeconds = 0.3;
using Clock = std::chrono::steady_clock;
using Four [[gnu::vector_size(32), gnu::aligned(8), gnu::may_alias]] = double;

double elapsed(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Keeps a value in a register, as if someone looked at it.
void keep(double& value) { asm volatile("" : "+x"(value)); }
[[gnu::target("avx2")]] void keep(Four& value) { asm volatile("" : "+x"(value)); }

/// Additions in registers: each waits for the last one.
double wait_in_registers() {
  double sum = 0.0;
  for (int n = 0; n < 1'000'000; ++n) {
    sum += 1.0;
    keep(sum);
  }
  return 1e6;
}

/// Additions in registers: twelve side by side.
[[gnu::target("avx2")]] double fill_registers() {
  Four sums[12]{};
  const Four one = {1.0, 1.0, 1.0, 1.0};
  for (int n = 0; n < 300'000; ++n) {
    for (Four& sum : sums) {
      sum += one;
      keep(sum);
    }
  }
  return 300e3 * 12;
}

/// Sums over so many bytes, again and again.
template <std::size_t Bytes>
[[gnu::target("avx2")]] double read() {
  static const std::vector<double> table(Bytes / sizeof(double), 1.0);
  constexpr std::size_t kSums = 8;
  Four sums[kSums]{};
  constexpr std::size_t kAtOnce = kSums * sizeof(Four) / sizeof(double);
  constexpr std::size_t kTurns = std::max<std::size_t>(1, (std::size_t{1} << 24) / Bytes);
  for (std::size_t turn = 0; turn < kTurns; ++turn) {
    for (std::size_t n = 0; n < table.size(); n += kAtOnce) {
      const auto* const numbers = reinterpret_cast<const Four*>(table.data() + n);
      for (std::size_t k = 0; k < kSums; ++k) sums[k] += numbers[k];
    }
    for (Four& sum : sums) keep(sum);
  }
  return static_cast<double>(kTurns * Bytes);
}

struct Work {
  const char* name;
  double (*turn)();
};
constexpr std::array kWorks{
    Work{"additions, each waits for the last", wait_in_registers},
    Work{"additions, twelve side by side", fill_registers}, Work{"reading 16 KB", read<1 << 14>},
    Work{"reading 1 MB", read<1 << 20>}, Work{"reading 256 MB", read<1 << 28>}};

/// What the processes tell each other.
struct Shared {
  std::atomic<int> ready{0};
  std::array<double, 2> rate{};
};

/// A process on one processor: all `count` start together and work for the same time.
void work_alone(const Work& work, int processor, int count, Shared& shared) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processor, &set);
  sched_setaffinity(0, sizeof(set), &set);
  work.turn();  // what it reads is there
  shared.ready.fetch_add(1);
  while (shared.ready.load() < count) {
  }
  double done = 0.0;
  const auto start = Clock::now();
  double took = 0.0;
  for (; took < kSeconds; took = elapsed(start)) done += work.turn();
  shared.rate[static_cast<std::size_t>(processor)] = done / took;
}

/// Work a second of the processors first .. last at the same time.
double rate_of(const Work& work, int first, int last) {
  void* const place =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) std::abort();
  auto& shared = *new (place) Shared;
  for (int processor = first; processor <= last; ++processor) {
    if (fork() == 0) {
      work_alone(work, processor, last - first + 1, shared);
      _exit(0);
    }
  }
  while (wait(nullptr) > 0) {
  }
  const double rate = shared.rate[0] + shared.rate[1];
  munmap(place, sizeof(Shared));
  return rate;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::stoi(argv[1]) : 7;
  std::puts("| work | one, G/s | the other | both | both beside one, median | least | most |");
  std::puts("|---|---|---|---|---|---|---|");
  for (const Work& work : kWorks) {
    std::vector<double> ratios;
    std::array<double, 3> rates{};
    for (int n = 0; n < rounds; ++n) {
      rates = {rate_of(work, 0, 0), rate_of(work, 1, 1), rate_of(work, 0, 1)};
      ratios.push_back(2.0 * rates[2] / (rates[0] + rates[1]));
    }
    std::ranges::sort(ratios);
    std::printf("| %s | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f |\n", work.name, rates[0] / 1e9,
                rates[1] / 1e9, rates[2] / 1e9, ratios[ratios.size() / 2], ratios.front(),
                ratios.back());
    std::fflush(stdout);
  }
}
