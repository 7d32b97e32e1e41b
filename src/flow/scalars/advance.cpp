#include "flow/scalars/advance.hpp"

#include <cmath>

#include "flow/halo.hpp"
#include "flow/row_kernel.hpp"
#include "flow/scalars/scalar_rows.hpp"
#include "flow/terms/seven_rows.hpp"

namespace flow {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

/// A row of cells.
struct Row {
  const double* r;
  const double* gmc;
  const double* rate;
  const double* sink;
  const double* factor;
  double dt, least_fraction, least;
  bool raises;
};

/// Adds `change(i)` to a row of q; tells whether a value is out of its range.
template <class Change>
FLOW_INLINE bool add_row(std::size_t count, const Row& row, double* __restrict q, Change&& change) {
  const double floor = row.raises ? row.least : -std::numeric_limits<double>::infinity();
  std::uint64_t bad = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double next = q[i] + change(i);
    const double held = next < floor ? floor : next;
    q[i] = held;
    bad |= held >= row.least && held <= kLargest ? 0U : 1U;
  }
  return bad != 0;
}

FLOW_INLINE double explicit_change(const Row& row, std::size_t i) {
  const double open = row.gmc[i] < row.least_fraction ? row.least_fraction : row.gmc[i];
  return row.dt * row.rate[i] / (row.r[i] * open);
}

FLOW_INLINE double sinking_change(const Row& row, std::size_t i) {
  const double open = row.gmc[i] < row.least_fraction ? row.least_fraction : row.gmc[i];
  return row.dt * row.rate[i] / (row.r[i] * open + row.dt * row.sink[i]);
}

FLOW_CLONES bool advance_row(std::size_t count, const Row& row, double* q) {
  return add_row(count, row, q, [&](std::size_t i) { return explicit_change(row, i); });
}

FLOW_CLONES bool advance_sinking_row(std::size_t count, const Row& row, double* q) {
  return add_row(count, row, q, [&](std::size_t i) { return sinking_change(row, i); });
}

FLOW_CLONES bool advance_scaled_row(std::size_t count, const Row& row, double* q) {
  return add_row(count, row, q,
                 [&](std::size_t i) { return row.factor[i] * explicit_change(row, i); });
}

/// The change is solved for already.
FLOW_CLONES bool add_change_row(std::size_t count, const Row& row, double* q) {
  return add_row(count, row, q, [&](std::size_t i) {
    return row.factor == nullptr ? row.rate[i] : row.factor[i] * row.rate[i];
  });
}

bool bring_forward(std::size_t count, const Row& row, bool solved, double* q) {
  if (solved) return add_change_row(count, row, q);
  if (row.factor != nullptr) return advance_scaled_row(count, row, q);
  return row.sink == nullptr ? advance_row(count, row, q) : advance_sinking_row(count, row, q);
}

const double* row_of(const Field* field, std::size_t place) {
  return field == nullptr ? nullptr : field->data() + place;
}

}  // namespace

ScalarSystem make_scalar_system(frame::Log& log, const Domain& domain) {
  if (!domain.settings.control.implicit()) return {};
  return {SevenPoint(domain.grid.box),
          make_implicit_work(log, domain.openings.fluid, domain.boundary.periodic_y())};
}

bool advance_scalar(frame::Log& log, const Domain& domain, const State& state, double dt,
                    const ScalarStep& step, ScalarSystem& implicit) {
  const bool solved = domain.settings.control.implicit();
  if (solved) solve_scalar(log, domain, state, dt, step, implicit);
  const Box& box = step.q->box();
  bool bad = false;
  for_rows(box, [&](std::size_t place, auto, auto) {
    const Row row{state.r[0].data() + place,
                  domain.openings.gmc.data() + place,
                  step.by.advected.dqdt->data() + place,
                  row_of(step.sink, place),
                  row_of(step.factor, place),
                  dt,
                  held_fraction(domain),
                  step.least,
                  step.raises};
    bad |= bring_forward(static_cast<std::size_t>(box.n[0]), row, solved, step.q->data() + place);
  });
  fill_halos(*step.q, domain.boundary.ends);
  return !bad;
}

void fail_at_first(frame::Log& log, std::string_view what, const Flags& fluid, const Field& q,
                   double least) {
  Triple cell{};
  double value = 0.0;
  for_rows(q.box(), [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= q.box().n[0] && cell[0] == 0; ++i, ++place) {
      if (fluid[place] <= 0 || (q[place] >= least && q[place] <= kLargest)) continue;
      cell = {i, j, k};
      value = q[place];
    }
  });
  log.fail("### error : " + std::string(what),
           frame::items("index (i,j,k) =", cell[0], cell[1], cell[2]),
           frame::items("value =", value));
}

}  // namespace flow
