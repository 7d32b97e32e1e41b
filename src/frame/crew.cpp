#include "frame/crew.hpp"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "frame/log.hpp"

namespace frame {

namespace {

constexpr std::int32_t kMost = 1024;
/// Looks at the gate, of some 10 microseconds in all, before a helper lies down: loops follow each
/// other closely within a step, and waking one takes longer.
constexpr int kLooks = 200;

void pause_briefly() {
#if defined(__SSE2__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

void set_from_environment(Log& log, const char* variable, std::size_t& value) {
  const char* const text = std::getenv(variable);
  if (text == nullptr || *text == '\0') return;
  std::int32_t number = 0;
  if (!parse_number(std::string_view(text), number) || number < 1 || number > kMost) {
    log.fail("### error : environment variable", items(variable, "=", text),
             items("it must be >= 1 and <=", kMost));
  }
  value = static_cast<std::size_t>(number);
}

}  // namespace

/// The gate tells helpers of a loop: its number above, whether it is open, and how many helpers are
/// inside. Who comes late finds it closed and lies down again, so that nobody waits for a helper
/// that the system has not woken yet.
class Crew::Helpers {
 public:
  explicit Helpers(std::size_t count) {
    std::fegetenv(&arithmetic_);
    try {
      for (std::size_t n = 1; n <= count; ++n) threads_.emplace_back([this, n] { live(n); });
    } catch (const std::system_error&) {
      // The system gives no more threads: the loops go on with those that there are.
    }
  }
  ~Helpers() {
    leave_.store(true);
    open();
    for (std::thread& thread : threads_) thread.join();
  }
  Helpers(const Helpers&) = delete;
  Helpers& operator=(const Helpers&) = delete;

  void share(std::size_t count, std::size_t stretch, Part part) {
    part_ = &part;
    count_ = count;
    stretch_ = stretch;
    next_.store(0, std::memory_order_relaxed);
    open();
    work(0);
    close();
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  }

 private:
  static constexpr std::uint32_t kInside = 0x7fff;
  static constexpr std::uint32_t kOpen = 0x8000;
  static constexpr std::uint32_t kLoop = 0x10000;

  void open() {
    const std::uint32_t before = gate_.load(std::memory_order_relaxed);
    gate_.store(((before & ~(kInside | kOpen)) + kLoop) | kOpen);
    gate_.notify_all();
  }

  void close() {
    std::uint32_t gate = gate_.fetch_and(~kOpen) & ~kOpen;
    for (int look = 0; (gate & kInside) != 0; gate = gate_.load()) {
      if (++look < kLooks) {
        pause_briefly();
      } else {
        gate_.wait(gate);
      }
    }
  }

  /// Takes stretches until none is left.
  void work(std::size_t hand) {
    try {
      for (;;) {
        const std::size_t first = next_.fetch_add(stretch_, std::memory_order_relaxed);
        if (first >= count_) return;
        (*part_)({first, std::min(first + stretch_, count_), hand});
      }
    } catch (...) {
      next_.store(count_, std::memory_order_relaxed);
      const std::lock_guard lock(throwing_);
      if (!thrown_) thrown_ = std::current_exception();
    }
  }

  void live(std::size_t hand) {
    std::fesetenv(&arithmetic_);
    std::uint32_t last_loop = 0;
    int look = 0;
    for (;;) {
      std::uint32_t gate = gate_.load();
      const std::uint32_t loop = gate & ~(kInside | kOpen);
      if (leave_.load()) return;
      if ((gate & kOpen) == 0 || loop == last_loop) {
        if (++look < kLooks) {
          pause_briefly();
        } else {
          gate_.wait(gate);
          look = 0;
        }
        continue;
      }
      if (!gate_.compare_exchange_weak(gate, gate + 1)) continue;
      work(hand);
      last_loop = loop;
      look = 0;
      if ((gate_.fetch_sub(1) & (kOpen | kInside)) == 1) gate_.notify_all();
    }
  }

  std::atomic<std::uint32_t> gate_{0};
  std::atomic<std::size_t> next_{0};
  std::atomic<bool> leave_{false};
  const Part* part_ = nullptr;
  std::size_t count_ = 0;
  std::size_t stretch_ = 1;
  std::mutex throwing_;
  std::exception_ptr thrown_;
  std::fenv_t arithmetic_{};
  std::vector<std::thread> threads_;
};

Crew::Crew(Hands hands)
    : hands_{std::clamp<std::size_t>(hands.count, 1, kMost),
             std::max<std::size_t>(hands.finer, 1)} {}

Crew::~Crew() = default;

void Crew::share(std::size_t count, std::size_t stretch, Part part) {
  if (count == 0) return;
  stretch = this->stretch(stretch);
  if (hands_.count == 1 || count <= stretch) {
    part({0, count, 0});
    return;
  }
  if (!helpers_) helpers_ = std::make_unique<Helpers>(hands_.count - 1);
  helpers_->share(count, stretch, part);
}

Hands hands_wanted(Log& log) {
  Hands hands;
  cpu_set_t processors;
  if (::sched_getaffinity(0, sizeof processors, &processors) == 0) {
    hands.count = static_cast<std::size_t>(std::max(1, CPU_COUNT(&processors)));
  }
  set_from_environment(log, "TOWNSKIN_THREADS", hands.count);
  set_from_environment(log, "TOWNSKIN_FINER", hands.finer);
  return hands;
}

}  // namespace frame
