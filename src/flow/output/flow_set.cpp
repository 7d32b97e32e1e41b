#include "flow/output/flow_set.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace flow {

namespace {

using Next = frame::RecordStream::Next;
using Head = std::array<std::int32_t, 10>;

constexpr std::size_t kClock = sizeof(std::int32_t) + sizeof(double);  // iter and time, unpadded
constexpr std::size_t kPressure = 2 * sizeof(double);
constexpr double kMostReals = 2147483647.0 / sizeof(double);  // a record's length is 32-bit

double count_of(const Triple& n) { return static_cast<double>(n[0]) * n[1] * n[2]; }

/// Faces of an axis.
double faces_of(Triple n, std::size_t axis) {
  return count_of(n) / n[axis] * (static_cast<double>(n[axis]) + 1.0);
}

/// Cells of a field from `first` (0 or 1 along each axis) on, i fastest.
void append_cells(std::vector<double>& values, const Field& field, const Triple& first) {
  const Triple& n = field.box().n;
  for (std::int32_t k = first[2]; k <= n[2]; ++k) {
    for (std::int32_t j = first[1]; j <= n[1]; ++j) {
      const double* row = &field(first[0], j, k);
      values.insert(values.end(), row, row + (n[0] - first[0] + 1));
    }
  }
}

void write_reals(frame::RecordWriter& writer, std::span<const double> values) {
  writer.write(std::as_bytes(values));
}

void write_head(frame::RecordWriter& writer, const State& state) {
  const Triple& n = state.p.box().n;
  const Head head{n[0], n[1], n[2], static_cast<std::int32_t>(state.ys.size()),
                  state.ak[0].empty() ? 0 : 1};
  writer.write(std::as_bytes(std::span(head)));
  std::array<std::byte, kClock> clock;
  std::memcpy(clock.data(), &state.iter, sizeof state.iter);
  std::memcpy(clock.data() + sizeof state.iter, &state.time, sizeof state.time);
  writer.write(clock);
  write_reals(writer, {&state.dt, 1});
}

}  // namespace

void write_set(frame::RecordWriter& writer, const State& state, bool with_pressure) {
  write_head(writer, state);
  std::vector<double> values;
  const auto write = [&] {
    write_reals(writer, values);
    values.clear();
  };
  append_cells(values, state.p, {1, 1, 1});
  write();
  append_cells(values, state.t, {1, 1, 1});
  write();
  for (const Field& y : state.ys) append_cells(values, y, {1, 1, 1});
  write();
  for (std::size_t axis = 0; axis < 3; ++axis) {
    Triple first{1, 1, 1};
    first[axis] = 0;
    append_cells(values, state.ru[axis], first);
    write();
  }
  if (!state.ak[0].empty()) {
    for (const Field& k : state.ak) append_cells(values, k, {1, 1, 1});
    write();
  }
  if (with_pressure) {
    values = {state.pt, state.reference_mass};
    write();
  }
}

Next SetReader::step() {
  if (!looked_ahead_) return stream_.next();
  looked_ahead_ = false;
  return ahead_;
}

/// Goes to the next record, which has `bytes` bytes.
SetReader::Found SetReader::go(std::size_t bytes) {
  const Next next = step();
  if (next != Next::record) return Found::cut;
  if (stream_.size() == bytes) return Found::set;
  misfit_ = {stream_.number(), stream_.size(), bytes};
  return Found::misfit;
}

SetReader::Found SetReader::next(SetHead& head) {
  const Next first = step();
  if (first == Next::end) return Found::end;
  if (first == Next::record) {
    ahead_ = first;
    looked_ahead_ = true;
  }
  Head numbers{};
  Found found = go(sizeof numbers);
  if (found != Found::set) return found;
  if (!stream_.read(std::as_writable_bytes(std::span(numbers)))) return Found::cut;
  std::array<std::byte, kClock> clock;
  found = go(kClock);
  if (found != Found::set) return found;
  if (!stream_.read(clock)) return Found::cut;
  found = go(sizeof head.dt);
  if (found != Found::set) return found;
  if (!stream_.read(std::as_writable_bytes(std::span(&head.dt, 1)))) return Found::cut;
  std::copy_n(numbers.begin(), 3, head.cells.begin());
  head.ns = numbers[3];
  head.k_epsilon = numbers[4] == 1;
  std::memcpy(&head.iter, clock.data(), sizeof head.iter);
  std::memcpy(&head.time, clock.data() + sizeof head.iter, sizeof head.time);
  const bool known = (numbers[4] == 0 || numbers[4] == 1) &&
                     std::all_of(numbers.begin() + 5, numbers.end(), [](auto f) { return f == 0; });
  return known ? Found::set : Found::other_models;
}

/// A record of `count` reals, or passes over it.
SetReader::Found SetReader::take(std::vector<double>* values, double count) {
  const double most = std::min(count, kMostReals);
  const Found found = go(static_cast<std::size_t>(most) * sizeof(double));
  if (found != Found::set || values == nullptr) return found;
  values->resize(static_cast<std::size_t>(most));
  return stream_.read(std::as_writable_bytes(std::span(*values))) ? Found::set : Found::cut;
}

/// The record of the thermodynamic pressure, told from the head of another set by its size.
SetReader::Found SetReader::take_pressure(FlowSet* set) {
  behind_ = stream_.behind();
  ahead_ = stream_.next();
  looked_ahead_ = true;
  if (ahead_ != Next::record || stream_.size() != kPressure) return Found::set;
  looked_ahead_ = false;
  behind_ = stream_.behind();
  if (set == nullptr) return Found::set;
  set->has_pressure = true;
  return stream_.read(std::as_writable_bytes(std::span(set->pressure))) ? Found::set : Found::cut;
}

SetReader::Found SetReader::rest(const SetHead& head, FlowSet* set) {
  const double cells = count_of(head.cells);
  if (set != nullptr) set->head = head;
  const auto part = [&](auto member) { return set == nullptr ? nullptr : &(set->*member); };
  Found found = take(part(&FlowSet::p), cells);
  if (found == Found::set) found = take(part(&FlowSet::t), cells);
  if (found == Found::set) found = take(part(&FlowSet::ys), cells * head.ns);
  for (std::size_t axis = 0; axis < 3 && found == Found::set; ++axis) {
    found = take(set == nullptr ? nullptr : &set->ru[axis], faces_of(head.cells, axis));
  }
  if (found == Found::set && head.k_epsilon) found = take(part(&FlowSet::ak), 2.0 * cells);
  return found == Found::set ? take_pressure(set) : found;
}

std::size_t first_not_finite(const std::vector<double>& values) {
  const auto at = std::ranges::find_if(values, [](double x) { return !std::isfinite(x); });
  return at == values.end() ? 0 : static_cast<std::size_t>(at - values.begin()) + 1;
}

}  // namespace flow
