// The process layer: a message-passing interface for one process.
//
// The program is written for ranks but runs as one process. The wrappers below keep each place
// where ranks would meet, with the result that one process gets: reductions leave their vector as
// it is, gathers copy within the process. A distributed run is a second implementation of this
// interface, not a second form of its callers. Owned by the run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace frame {

class Log;

struct ProcessLayer {
  std::int32_t nprocs = 1;
  std::int32_t myrank = 0;
};

/// Starts the layer. On a negative status "### mpi initializing error (flw_m_init)" and a stop.
void flw_m_init(Log& log, ProcessLayer& layer);
/// Ends the layer.
void flw_m_final(Log& log, ProcessLayer& layer);
/// Reports the abort on standard output. The caller ends the process.
void flw_m_abort(Log& log, const ProcessLayer& layer, std::int32_t code);

/// Number of processes, and the rank of this one from 0.
inline std::int32_t flw_m_size(const ProcessLayer& layer) { return layer.nprocs; }
inline std::int32_t flw_m_rank(const ProcessLayer& layer) { return layer.myrank; }

/// Combine a vector over all ranks, element by element; the input is the result of one process.
template <class T>
void flw_m_reduce_max(const ProcessLayer&, std::span<T>) {}
template <class T>
void flw_m_reduce_min(const ProcessLayer&, std::span<T>) {}
template <class T>
void flw_m_reduce_sum(const ProcessLayer&, std::span<T>) {}
/// Send a vector from rank 0 to all.
template <class T>
void flw_m_bcast(const ProcessLayer&, std::span<T>) {}

/// Gather and scatter within the process: as many entries as both sides have.
template <class T>
void flw_m_gather(const ProcessLayer&, std::span<const T> source, std::span<T> target) {
  const std::size_t count = std::min(source.size(), target.size());
  std::copy_n(source.begin(), count, target.begin());
}

/// Reals that go to, or come from, another process.
struct Message {
  std::int32_t rank;
  std::vector<double> values;
};
/// Sends all of `send` and fills all of `receive`, whose sizes the receiver knows. One process has
/// no partner.
inline void flw_m_exchange(const ProcessLayer&, std::span<const Message>, std::span<Message>) {}

}  // namespace frame
