#include "flow/scalars/advance.hpp"

#include <atomic>
#include <cmath>

#include "flow/halo.hpp"
#include "flow/row_kernel.hpp"
#include "flow/scalars/scalar_rows.hpp"
#include "flow/share.hpp"
#include "flow/terms/seven_rows.hpp"

namespace flow {

namespace {

/// A row of cells.
struct Row {
  const double* r;
  const double* gmc;
  const double* rate;
  const double* sink;
  const double* factor;
  double dt, least_fraction, least, most;
  bool holds;
};

/// Adds `change(i)` to a row of q; tells whether a value is out of its range.
template <class Change>
FLOW_INLINE bool add_row(std::size_t count, const Row& row, double* __restrict q, Change&& change) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  const double least = row.holds ? row.least : -kInfinite;
  const double most = row.holds ? row.most : kInfinite;
  std::uint64_t bad = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double next = q[i] + change(i);
    const double raised = next < least ? least : next;
    const double held = raised > most ? most : raised;
    q[i] = held;
    bad |= held >= row.least && held <= row.most ? 0U : 1U;
  }
  return bad != 0;
}

FLOW_INLINE double open_mass(const Row& row, std::size_t i) {
  return row.r[i] * (row.gmc[i] < row.least_fraction ? row.least_fraction : row.gmc[i]);
}

FLOW_INLINE double explicit_change(const Row& row, std::size_t i) {
  return row.dt * row.rate[i] / open_mass(row, i);
}

FLOW_INLINE double sinking_change(const Row& row, std::size_t i) {
  return row.dt * row.rate[i] / (open_mass(row, i) + row.dt * row.sink[i]);
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

void keep_first(std::size_t found, std::atomic<std::size_t>& first) {
  std::size_t before = first.load();
  while (found < before && !first.compare_exchange_weak(before, found)) {
  }
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

std::size_t advance_scalars(frame::Log& log, const Domain& domain, const State& state, double dt,
                            std::span<const ScalarStep> steps, ScalarSystem& implicit) {
  const bool solved = domain.settings.control.implicit();
  if (solved) {
    for (const ScalarStep& step : steps) solve_scalar(log, domain, state, dt, step, implicit);
  }
  const auto n = static_cast<std::size_t>(domain.grid.box.n[0]);
  const LayerCopies ends = row_ends(domain.grid.box, domain.boundary.ends, false);
  std::atomic<std::size_t> bad = steps.size();
  share_rows(domain.crew, domain.grid.box, [&](std::size_t place, std::int32_t, std::int32_t) {
    for (std::size_t v = 0; v < steps.size(); ++v) {
      const ScalarStep& step = steps[v];
      const Row row{state.r[0].data() + place,
                    domain.openings.gmc_from(place),
                    step.by.advected.dqdt->data() + place,
                    row_of(step.sink, place),
                    row_of(step.factor, place),
                    dt,
                    held_fraction(domain),
                    step.least,
                    step.most,
                    step.holds};
      double* const q = step.q->data() + place;
      if (bring_forward(n, row, solved, q)) keep_first(v, bad);
      fill_row_ends(ends, q);
    }
  });
  for (const ScalarStep& step : steps) {
    fill_halos(domain.crew, *step.q, domain.boundary.ends, -1, 1);
  }
  return bad;
}

void fail_at_first(frame::Log& log, std::string_view what, const Flags& fluid,
                   const ScalarStep& step) {
  const Field& q = *step.q;
  Triple cell{};
  double value = 0.0;
  for_rows(q.box(), [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= q.box().n[0] && cell[0] == 0; ++i, ++place) {
      if (fluid[place] <= 0 || (q[place] >= step.least && q[place] <= step.most)) continue;
      cell = {i, j, k};
      value = q[place];
    }
  });
  log.fail("### error : " + std::string(what),
           frame::items("index (i,j,k) =", cell[0], cell[1], cell[2]),
           frame::items("value =", value));
}

}  // namespace flow
