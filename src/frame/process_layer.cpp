#include "frame/process_layer.hpp"

#include "frame/log.hpp"

namespace frame {

namespace {

/// The operations of the layer below, for one process: each reports success.
constexpr std::int32_t kGood = 0;

}  // namespace

void flw_m_init(Log& log, ProcessLayer& layer) {
  const std::int32_t status = kGood;
  layer = ProcessLayer{};
  if (status < 0) {
    log.screen("### mpi initializing error (flw_m_init)");
    throw Stop{kStatusAbnormal};
  }
}

void flw_m_final(Log& log, ProcessLayer& layer) {
  const std::int32_t status = kGood;
  layer = ProcessLayer{};
  if (status < 0) {
    log.screen("### mpi finalizing error (flw_m_final)");
    throw Stop{kStatusAbnormal};
  }
}

void flw_m_abort(Log& log, const ProcessLayer& layer, std::int32_t code) {
  log.screen("### mpi_abort is called by rank no.", layer.myrank, ".");
  log.screen("### error code is ", code);
}

}  // namespace frame
