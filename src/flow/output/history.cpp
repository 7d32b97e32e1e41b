#include "flow/output/history.hpp"

#include <cstring>

#include "flow/output/velocity.hpp"
#include "frame/record_stream.hpp"

namespace flow {

namespace {

void begin(std::string& buffer, const HistoryPoints& history, std::size_t ns) {
  const std::array<std::int32_t, 2> counts{static_cast<std::int32_t>(history.points.size()),
                                           static_cast<std::int32_t>(ns)};
  frame::append_record(buffer, std::as_bytes(std::span(counts)));
  frame::append_record(buffer, std::as_bytes(std::span(history.points)));
}

}  // namespace

void write_history(frame::Log& log, frame::TextOutput& file, const HistoryPoints& history,
                   const State& state, HistoryFile& begun) {
  std::string& buffer = file.buffer();
  if (!begun.begun) begin(buffer, history, state.ys.size());
  begun.begun = true;
  std::array<std::byte, sizeof state.time + sizeof state.iter> clock;
  std::memcpy(clock.data(), &state.time, sizeof state.time);
  std::memcpy(clock.data() + sizeof state.time, &state.iter, sizeof state.iter);
  frame::append_record(buffer, clock);
  std::vector<double> values;
  for (const auto& [i, j, k] : history.points) values.push_back(state.t(i, j, k));
  for (const auto& [i, j, k] : history.points) values.push_back(state.p(i, j, k));
  for (const auto& [i, j, k] : history.points) {
    for (const Field& y : state.ys) values.push_back(y(i, j, k));
  }
  for (const auto& [i, j, k] : history.points) {
    for (const double u : velocity_at(state, state.p.box().at(i, j, k))) values.push_back(u);
  }
  frame::append_record(buffer, std::as_bytes(std::span(values)));
  file.flush(log);
}

}  // namespace flow
