// tsrf_io_restart: the state of a run in its restart file.
//
// The file holds one state as unformatted records, all of native reals:
//   1     iteration (int32), time [s] (real), mpatch (int32), mzg (int32)
//   2     tlyr of the nodes 0 to mzg-1 [K], patch number fastest
//   3, 4  JRl and JRs [W/m2], where the radiosities are stored
//   last  Tr and Tm of the buildings [K], with the building model on
// Read by the preparation of a run, written by the driver at each day's end and at the run's end.
#pragma once

#include <cstdint>
#include <span>

#include "frame/log.hpp"
#include "frame/record_file.hpp"
#include "results/io.hpp"

namespace tsrf_io_restart {

/// The arrays of a state, where they stand in their modules.
struct State {
  std::int32_t mpatch;
  std::int32_t mzg;
  std::span<double> tlyr;  ///< at least mpatch * mzg values
  std::span<double> JRl;   ///< mpatch values; empty when there is no radiosity store
  std::span<double> JRs;
  std::span<double> Tr;  ///< per building; empty when the building model is off
  std::span<double> Tm;
  std::span<const std::int32_t> PID;    ///< of the patches, for messages
  std::span<const std::int32_t> BldID;  ///< of the buildings, for messages
};

/// Where a run starts.
struct Start {
  std::int64_t next_iteration;
  double time;  ///< [s]
};

/// Restores the state that `requested` iterations left. A negative number or an empty file is a
/// cold start: iteration 1, time 0, the state untouched. `settings.TIMES`, where given, replaces
/// the time of a restored state. Fails on a file that is not whole, of another model, of another
/// iteration or not finite; the state and the file are then as before.
Start restore(frame::Log& log, frame::RecordFile& file, std::int64_t requested,
              const tsrf_module_io::Settings& settings, const State& state);

/// Saves the state after `iteration` steps, at `time` [s]. One that is not finite ends the run and
/// leaves the file as it was.
void save(frame::Log& log, frame::RecordFile& file, std::int64_t iteration, double time,
          const State& state);

}  // namespace tsrf_io_restart
