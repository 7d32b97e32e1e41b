// The threads that a run shares its loops among.
//
// A crew is the calling thread and a fixed number of helpers, who sleep between loops. A loop over
// the rows of a result is cut into stretches of a fixed length, which the hands take one after the
// other as they get free; each row is formed by one hand alone, in the order in which one thread
// would form it, so that results are the same bits for any number of hands. A loop of one stretch
// stays on the caller: small districts never start a thread. Owned by the run; the kernels of the
// surface model and of the flow receive it.
#pragma once

#include <cstddef>
#include <memory>

#include "frame/function_ref.hpp"

namespace frame {

class Log;

/// How a crew works.
struct Hands {
  std::size_t count = 1;  ///< threads in all, the caller's among them
  std::size_t finer = 1;  ///< stretches are this many times shorter, for tests on small districts
};

class Crew {
 public:
  /// Helpers start with the first loop that needs them.
  explicit Crew(Hands hands = {});
  ~Crew();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  [[nodiscard]] std::size_t hands() const { return hands_.count; }
  /// Rows of a stretch of `rows`, with the finer cut that a test may want; at least 1.
  [[nodiscard]] std::size_t stretch(std::size_t rows) const {
    return rows <= hands_.finer ? 1 : rows / hands_.finer;
  }

  /// Rows `first` up to, not including, `last` of a loop, and which hand has them, from 0: parts
  /// that run at the same time have different hands.
  struct Stretch {
    std::size_t first;
    std::size_t last;
    std::size_t hand;
  };
  using Part = FunctionRef<void(Stretch)>;
  /// Does `part` for stretches of `stretch` rows that together are 0 .. count-1, and returns when
  /// all are done. What a part throws is thrown here, once no hand is at work any more. Parts run
  /// at the same time: they write rows of their own and leave the log alone. No part may share
  /// again.
  void share(std::size_t count, std::size_t stretch, Part part);
  /// The same for `one` row at a time.
  template <class One>
  void each(std::size_t count, std::size_t stretch, One&& one) {
    share(count, stretch, [&](Stretch part) {
      for (std::size_t row = part.first; row < part.last; ++row) one(row);
    });
  }

 private:
  class Helpers;
  Hands hands_;
  std::unique_ptr<Helpers> helpers_;
};

/// The hands that a run takes: as many as TOWNSKIN_THREADS says, else as the processors that this
/// process may use, with stretches as much finer as TOWNSKIN_FINER says. A text that is no number
/// from 1 to 1,024 ends the run.
Hands hands_wanted(Log& log);

}  // namespace frame
