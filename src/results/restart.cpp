#include "results/restart.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace tsrf_io_restart {

namespace {

using Bytes = std::span<const std::byte>;

constexpr std::string_view kTag = "(tsrf_io_restart)";
// A start time this large is the default: not given.
constexpr double kTimeGiven = 0.9 * std::numeric_limits<double>::max();

/// Record 1, without the padding that a compiler would put behind the first number.
struct Head {
  static constexpr std::size_t kSize = 20;
  std::int32_t iteration;
  double time;
  std::int32_t mpatch;
  std::int32_t mzg;
};

std::array<std::byte, Head::kSize> pack(const Head& head) {
  std::array<std::byte, Head::kSize> bytes;
  std::memcpy(bytes.data(), &head.iteration, 4);
  std::memcpy(bytes.data() + 4, &head.time, 8);
  std::memcpy(bytes.data() + 12, &head.mpatch, 4);
  std::memcpy(bytes.data() + 16, &head.mzg, 4);
  return bytes;
}

Head unpack(Bytes bytes) {
  Head head{};
  std::memcpy(&head.iteration, bytes.data(), 4);
  std::memcpy(&head.time, bytes.data() + 4, 8);
  std::memcpy(&head.mpatch, bytes.data() + 12, 4);
  std::memcpy(&head.mzg, bytes.data() + 16, 4);
  return head;
}

std::span<double> columns_of(const State& state) {
  return state.tlyr.first(static_cast<std::size_t>(state.mpatch) *
                          static_cast<std::size_t>(state.mzg));
}

/// What the records behind the first hold, each as one or two runs of reals.
std::vector<std::vector<std::span<double>>> layout(const State& state) {
  std::vector<std::vector<std::span<double>>> records{{columns_of(state)}};
  if (!state.JRl.empty()) {
    records.push_back({state.JRl});
    records.push_back({state.JRs});
  }
  if (!state.Tr.empty()) records.push_back({state.Tr, state.Tm});
  return records;
}

template <class... Lines>
[[noreturn]] void refuse(frame::Log& log, const Lines&... lines) {
  log.fail("### error : restart file (surface temp.)", lines...);
}

void check_head(frame::Log& log, Bytes record, std::int64_t requested, const State& state) {
  if (record.size() != Head::kSize) {
    refuse(log, "size not consistent",
           frame::items("bytes of record 1(restart file)=", record.size()),
           frame::items("bytes of record 1(specified)   =", Head::kSize));
  }
  const Head head = unpack(record);
  if (head.mpatch != state.mpatch || head.mzg != state.mzg) {
    refuse(log, "size not consistent",
           frame::items("mpatch,mzg(restart file)=", head.mpatch, head.mzg),
           frame::items("mpatch,mzg(specified)   =", state.mpatch, state.mzg));
  }
  if (head.iteration != requested) {
    refuse(log, "specified iteration counts not found",
           frame::items("iteration (restart file)=", head.iteration),
           frame::items("iteration (specified)   =", requested));
  }
  if (!std::isfinite(head.time)) refuse(log, "value not finite", "record no.,value no. = 1 2");
}

void check_sizes(frame::Log& log, std::span<const Bytes> found,
                 std::span<const std::vector<std::span<double>>> wanted) {
  if (found.size() != wanted.size() + 1) {
    refuse(log, "size not consistent", frame::items("records(restart file)=", found.size()),
           frame::items("records(specified)   =", wanted.size() + 1));
  }
  for (std::size_t n = 0; n < wanted.size(); ++n) {
    std::size_t bytes = 0;
    for (const auto values : wanted[n]) bytes += values.size_bytes();
    if (found[n + 1].size() == bytes) continue;
    const std::string name = frame::items("bytes of record", n + 2);
    refuse(log, "size not consistent", frame::items(name + "(restart file)=", found[n + 1].size()),
           frame::items(name + "(specified)   =", bytes));
  }
}

/// A damaged value would spread over the district; it must be found before the first step.
void check_finite(frame::Log& log, std::span<const Bytes> found) {
  for (std::size_t n = 1; n < found.size(); ++n) {
    for (std::size_t i = 0; i < found[n].size() / sizeof(double); ++i) {
      double value = 0.0;
      std::memcpy(&value, found[n].data() + i * sizeof value, sizeof value);
      if (!std::isfinite(value)) {
        refuse(log, "value not finite", frame::items("record no.,value no. =", n + 1, i + 1));
      }
    }
  }
}

void take_over(std::span<const Bytes> found,
               std::span<const std::vector<std::span<double>>> wanted) {
  for (std::size_t n = 0; n < wanted.size(); ++n) {
    const std::byte* at = found[n + 1].data();
    for (const auto values : wanted[n]) {
      if (!values.empty()) std::memcpy(values.data(), at, values.size_bytes());
      at += values.size_bytes();
    }
  }
}

/// Whose a value that is not finite is, and what.
void check_whole(frame::Log& log, std::int64_t iteration, const State& state) {
  const auto check = [&](std::span<const double> values, std::span<const std::int32_t> owners,
                         std::string_view code, std::string_view term) {
    const auto found =
        std::ranges::find_if(values, [](double value) { return !std::isfinite(value); });
    if (found == values.end()) return;
    const auto n = static_cast<std::size_t>(found - values.begin());
    tsrf_module_io::refuse_result(log, "the restart file", iteration,
                                  frame::items(code, owners[n % owners.size()]), term);
  };
  check(columns_of(state), state.PID, "PID =", "temperature of the column");
  check(state.JRl, state.PID, "PID =", "long-wave radiosity");
  check(state.JRs, state.PID, "PID =", "short-wave radiosity");
  check(state.Tr, state.BldID, "BldID =", "room temperature");
  check(state.Tm, state.BldID, "BldID =", "slab temperature");
}

}  // namespace

Start restore(frame::Log& log, frame::RecordFile& file, std::int64_t requested,
              const tsrf_module_io::Settings& settings, const State& state) {
  const frame::Tag tag(log, kTag);
  const Start cold{1, 0.0};
  if (requested < 0) return cold;
  bool whole = false;
  frame::allocating(log, "records of the restart file",
                    static_cast<std::int64_t>(state.tlyr.size_bytes()),
                    [&] { whole = file.load(); });
  const std::span<const Bytes> found = file.records();
  if (!whole) {
    refuse(log, "record cut short or without its length marks",
           frame::items("record no. =", found.size() + 1));
  }
  if (found.empty()) return cold;
  check_head(log, found.front(), requested, state);
  const auto wanted = layout(state);
  check_sizes(log, found, wanted);
  check_finite(log, found);
  take_over(found, wanted);
  const double time = unpack(found.front()).time;
  file.unload();
  return {requested + 1, settings.TIMES < kTimeGiven ? settings.TIMES : time};
}

void save(frame::Log& log, frame::RecordFile& file, std::int64_t iteration, double time,
          const State& state) {
  const frame::Tag tag(log, kTag);
  check_whole(log, iteration, state);
  const auto head = pack({static_cast<std::int32_t>(iteration), time, state.mpatch, state.mzg});
  std::vector<double> rooms(state.Tr.begin(), state.Tr.end());
  rooms.insert(rooms.end(), state.Tm.begin(), state.Tm.end());
  std::vector<Bytes> records{Bytes(head), std::as_bytes(columns_of(state))};
  if (!state.JRl.empty()) {
    records.push_back(std::as_bytes(state.JRl));
    records.push_back(std::as_bytes(state.JRs));
  }
  if (!rooms.empty()) records.push_back(std::as_bytes(std::span(rooms)));
  file.replace(log, records);
}

}  // namespace tsrf_io_restart
