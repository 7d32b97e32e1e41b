// A set of the restart file: the state of the flow after an iteration, as unformatted records.
//
//   1     ten int32: mx, my, mz, ns, k-epsilon flag, and the flags of five models (all 0 here)
//   2     iter (int32), time (real) [s]
//   3     dt (real) [s]
//   4     p, 5 t: cells, i fastest; 6 ys: cells, then species
//   7..9  ru, rv, rw: faces, 0..n along their own axis, cells along the others
//   10    k and epsilon: cells, then both; with the k-epsilon flag only
//   last  thermodynamic pressure and reference mass; where no pressure is held only
//
// All reals are native 64-bit ones. Sets stand one after another, each from a step of its own. The
// same form serves as initial file. Used by the start of a run and by its restart output.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/state.hpp"
#include "frame/record_stream.hpp"

namespace flow {

struct SetHead {
  Triple cells{};
  std::int32_t ns = 0;
  bool k_epsilon = false;
  std::int32_t iter = 0;
  double time = 0.0;
  double dt = 0.0;
};

/// A set in memory, each record as it stands in the file.
struct FlowSet {
  SetHead head;
  std::vector<double> p, t, ys;
  std::array<std::vector<double>, 3> ru;
  std::vector<double> ak;
  bool has_pressure = false;
  std::array<double, 2> pressure{};  ///< thermodynamic pressure [Pa], reference mass [kg]
};

/// Reads sets in their order.
class SetReader {
 public:
  explicit SetReader(const std::string& path) : stream_(path) {}

  enum class Found {
    set,
    end,           ///< no further set begins
    cut,           ///< the file ends within the set
    misfit,        ///< a record has not the size that the set's head asks for
    other_models,  ///< the set holds records of models that are not there
  };
  /// The head of the next set.
  Found next(SetHead& head);
  /// What follows the head: into `set`, or, where that is null, passed over.
  Found rest(const SetHead& head, FlowSet* set);
  /// The record at fault, and its size and the one asked for, when a set was a misfit.
  struct Misfit {
    std::int64_t record = 0;
    std::size_t found = 0, wanted = 0;
  };
  [[nodiscard]] const Misfit& misfit() const { return misfit_; }
  /// Place behind the last whole set, and the number of the record that was read last.
  [[nodiscard]] std::uint64_t behind() const { return behind_; }
  [[nodiscard]] std::int64_t record() const { return stream_.number(); }

 private:
  Found go(std::size_t bytes);
  Found take(std::vector<double>* values, double count);
  Found take_pressure(FlowSet* set);
  frame::RecordStream::Next step();

  frame::RecordStream stream_;
  bool looked_ahead_ = false;  // the record behind a set has been entered already
  frame::RecordStream::Next ahead_ = frame::RecordStream::Next::end;
  std::uint64_t behind_ = 0;
  Misfit misfit_;
};

/// Writes the state as a set. `with_pressure` adds the last record.
void write_set(frame::RecordWriter& writer, const State& state, bool with_pressure);

/// Number and place of the first value of a record that is not finite, from 1; 0: all are.
[[nodiscard]] std::size_t first_not_finite(const std::vector<double>& values);

}  // namespace flow
