// What a run of these files takes.
#include <unistd.h>

#include <cmath>

#include "check/doubts.hpp"

namespace check {

namespace {

/// Bytes of the arrays of a run; of what is small against them nothing is counted.
std::int64_t estimate(const tsrf_main01::Run& run) {
  const auto patches = static_cast<std::int64_t>(run.inputs.patch.mpatch);
  const std::int64_t cells = run.surface.data.mzg;
  const auto groups = static_cast<std::int64_t>(run.radiation.raddat.NPGID);
  const auto table = static_cast<std::int64_t>(run.radiation.raddat.view_factors.bytes());
  const std::int64_t list = 11 * 4 + 4 * 8;                    // the list of patches
  const std::int64_t state = (4 + 6 + 3 + 8 + 2) * 8 + 2 * 4;  // per patch, whatever its column
  const std::int64_t columns = 7 * (cells + 1) * 8;            // tlyr, tprev, gcond, ...
  const std::int64_t radiation = (5 + 5 + 4) * 8 + 2 * 4;      // fluxes, work, two Sun blocks
  const std::int64_t account = run.account.on() ? (cells + 3) * 8 : 0;
  const std::int64_t exchange = groups * 12 * 8 + table * 5 / 4;  // while it is gathered
  return patches * (list + state + columns + radiation + account) + exchange;
}

}  // namespace

void doubt_memory(const Parts& parts, tsrf_main01::Run& run) {
  if (!parts.exchange) return;
  const double bytes = static_cast<double>(estimate(run));
  const double there =
      static_cast<double>(::sysconf(_SC_PHYS_PAGES)) * static_cast<double>(::sysconf(_SC_PAGESIZE));
  run.desk.log.findings().memory = static_cast<std::int64_t>(bytes);
  if (bytes < 0.9 * there) return;
  run.desk.log.findings().add(
      {.fault = false,
       .lines = {frame::items("memory that the run will take [MB] =", std::ceil(bytes / 1e6)),
                 frame::items("there are", std::floor(there / 1e6))}});
}

}  // namespace check
