// The pressure equation of a district, 64 and 128 cells a side, against the plain form, and against
// Eigen's conjugate gradient with incomplete Cholesky where Eigen is installed.
//
// Argument `set` is the set of instructions: 0 the common one, 2 the widest that is known; a set
// that the processor does not have is left out. The larger box is stopped after 40 iterations, in
// both forms. Counter `ratio` is the time of the other form over that of the fast one, turn by turn
// in this process.
#include <benchmark/benchmark.h>

#include <iostream>

#include "flow/linear/amgcg.hpp"
#include "flow/linear/iccg.hpp"
#include "flow/linear/imdqdt.hpp"
#include "plain_bcgstb.hpp"
#include "ratio.hpp"
#include "sample_pressure.hpp"
#include "sample_stretched.hpp"
#ifdef TOWNSKIN_EIGEN
#include <Eigen/IterativeLinearSolvers>
#include <Eigen/SparseCore>
#endif

namespace {

constexpr double kGsfcg = 0.95;

flow::SolveLimits limits_of(std::int32_t cells) {
  flow::SolveLimits limits;
  limits.epsrel = 1e-8;
  limits.nnorm = static_cast<double>(cells) * cells * cells;
  limits.itmax = cells > 64 ? 40 : 1000;
  return limits;
}

/// The right side of the plain form.
template <class Plain>
std::vector<double> right_side(const Plain& s, const flow::Field& right) {
  std::vector<double> b(s.h.size());
  flow::for_rows(right.box(), [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= right.box().n[0]; ++i, ++place) {
      const auto l = static_cast<std::size_t>(s.h.at(i, j, k));
      b[l] = right[place] * s.scale[l];
    }
  });
  return b;
}

bool lacks(benchmark::State& state, flow::InstructionSet set) {
  if (flow::has(set)) return false;
  state.SkipWithError("the processor does not have this set of instructions");
  return true;
}

void all_sets(benchmark::internal::Benchmark* of) {
  of->ArgNames({"cells", "set"})
      ->ArgsProduct({{64, 128}, {0, 1, 2}})
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
}

/// The equation, and the plain form set up for it.
struct PlainSide {
  explicit PlainSide(std::int32_t cells)
      : e(sample::pressure_equation(cells)),
        slow(plain::flw_iccg_pre(e.blocks, e.fluid, kGsfcg)),
        b(right_side(slow, e.right)),
        vectors(b.size()) {}

  /// Turn by turn with `fast`, and the counts of both.
  template <class Fast>
  void beside(benchmark::State& state, const flow::SolveLimits& limits, Fast&& fast) {
    compare(
        state, [] {}, [&] { of_plain = plain::flw_iccg(slow, limits, b, vectors); },
        [&] { of_fast = fast(); });
    state.counters["count"] = of_fast.iterations;
    state.counters["plain_count"] = of_plain.iterations;
  }

  sample::PressureEquation e;
  plain::Iccg slow;
  std::vector<double> b;
  plain::IccgVectors vectors;
  flow::SolveResult of_plain, of_fast;
};

void iccg(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const auto set = static_cast<flow::InstructionSet>(state.range(1));
  if (lacks(state, set)) return;
  PlainSide x(cells);
  frame::Log log(std::cout, std::cerr);
  flow::IccgSystem fast;
  flow::flw_iccg_pre(log, x.e.blocks, x.e.fluid, false, kGsfcg, fast, set);
  flow::gather_scaled(fast.points, x.e.right, fast.scale, fast.b);
  const flow::SolveLimits limits = limits_of(cells);
  x.beside(state, limits, [&] { return flow::flw_iccg(log, limits, fast); });
  state.counters["norm_to_plain"] = x.of_fast.norm / x.of_plain.norm;
}
BENCHMARK(iccg)->Apply(all_sets);

/// The multigrid against the plain form, to the same tolerance; both go on until they are there.
void amgcg(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const auto set = static_cast<flow::InstructionSet>(state.range(1));
  if (lacks(state, set)) return;
  PlainSide x(cells);
  frame::Log log(std::cout, std::cerr);
  frame::Crew crew;
  flow::AmgSystem fast;
  flow::flw_amgcg_pre(log, x.e.blocks, x.e.fluid, sample::geometry_of(x.e), fast, set);
  flow::gather_rows(crew, x.e.right, fast);
  flow::SolveLimits limits = limits_of(cells);
  limits.itmax = 1000;
  x.beside(state, limits, [&] { return flow::flw_amgcg(log, crew, limits, fast); });
  state.counters["ns"] = 1e6 * state.counters["plain_ms"] / state.counters["ratio"] /
                         static_cast<double>(x.e.fluid.box().cells());
}
BENCHMARK(amgcg)->Apply(all_sets);

/// Iterations of the multigrid on grids of all sorts: argument `kind` is the place in kStretched.
void amgcg_count(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const sample::Stretched& kind = sample::kStretched[static_cast<std::size_t>(state.range(1))];
  const sample::StretchedEquation e = sample::stretched_equation(cells, kind);
  frame::Log log(std::cout, std::cerr);
  frame::Crew crew;
  flow::AmgSystem s;
  flow::flw_amgcg_pre(log, e.blocks, e.fluid, e.geometry, s);
  flow::gather_rows(crew, e.right, s);
  flow::SolveResult result;
  for ([[maybe_unused]] auto turn : state) result = flow::flw_amgcg(log, crew, limits_of(cells), s);
  state.SetLabel(kind.name);
  state.counters["count"] = result.iterations;
}
BENCHMARK(amgcg_count)
    ->ArgNames({"cells", "kind"})
    ->ArgsProduct({{32, 64, 96, 128, 192}, {0, 1, 2, 3, 4, 5, 6}})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

/// Rows of a variable that is carried and diffuses.
void bcgstb(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const auto set = static_cast<flow::InstructionSet>(state.range(1));
  if (lacks(state, set)) return;
  const sample::PressureEquation e = sample::pressure_equation(cells);
  flow::SevenPoint rows(e.fluid.box());
  for (std::size_t a = 0; a < 3; ++a) {
    const double carried = 0.4 * static_cast<double>(a);
    for (double& value : rows.lower[a].all()) value = -2.0 - carried;
    for (double& value : rows.upper[a].all()) value = -2.0 + carried;
  }
  for (double& value : rows.diagonal.all()) value = 12.1;
  frame::Log log(std::cout, std::cerr);
  const plain::Bcgstb slow = plain::flw_bcgstb_pre(rows, e.fluid, false);
  const std::vector<double> b = right_side(slow, e.right);
  std::vector<double> x(b.size());
  flow::BcgstbSystem fast;
  flow::flw_bcgstb_size(log, e.fluid, false, fast, set);
  flow::flw_bcgstb_pre(log, rows, fast);
  flow::gather_scaled(fast.points, e.right, fast.scale, fast.b);
  flow::SolveResult of_plain;
  flow::SolveResult of_fast;
  const flow::SolveLimits limits = limits_of(cells);
  compare(
      state, [] {}, [&] { of_plain = plain::flw_bcgstb(slow, limits, b, x); },
      [&] { of_fast = flow::flw_bcgstb(log, limits, fast); });
  state.counters["count"] = of_fast.iterations;
  state.counters["plain_count"] = of_plain.iterations;
}
BENCHMARK(bcgstb)
    ->ArgNames({"cells", "set"})
    ->ArgsProduct({{64}, {0, 2}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);

#ifdef TOWNSKIN_EIGEN
using Sparse = Eigen::SparseMatrix<double>;

/// The scaled matrix of the plain form, rows of the fluid points alone.
Sparse eigen_matrix(const plain::Iccg& s) {
  std::vector<int> number(s.h.size(), -1);
  std::vector<std::int32_t> points = s.h.index;
  std::ranges::sort(points);
  for (std::size_t n = 0; n < points.size(); ++n) {
    number[static_cast<std::size_t>(points[n])] = static_cast<int>(n);
  }
  std::vector<Eigen::Triplet<double>> entries;
  const std::array<std::ptrdiff_t, 4> step{0, 1, s.h.sy, s.h.sz};
  for (const std::int32_t point : points) {
    const int row = number[static_cast<std::size_t>(point)];
    entries.emplace_back(row, row, 1.0);
    for (std::size_t n = 1; n < 4; ++n) {
      const double a = s.a[n][static_cast<std::size_t>(point)];
      const int column = number[static_cast<std::size_t>(point - step[n])];
      if (a == 0.0 || column < 0) continue;
      entries.emplace_back(row, column, a);
      entries.emplace_back(column, row, a);
    }
  }
  const auto count = static_cast<Eigen::Index>(points.size());
  Sparse matrix(count, count);
  matrix.setFromTriplets(entries.begin(), entries.end());
  return matrix;
}

void against_eigen(benchmark::State& state) {
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const sample::PressureEquation e = sample::pressure_equation(cells);
  frame::Log log(std::cout, std::cerr);
  const plain::Iccg slow = plain::flw_iccg_pre(e.blocks, e.fluid, kGsfcg);
  const std::vector<double> b = right_side(slow, e.right);
  const Sparse matrix = eigen_matrix(slow);
  Eigen::VectorXd right(matrix.rows());
  std::vector<std::int32_t> points = slow.h.index;
  std::ranges::sort(points);
  for (Eigen::Index n = 0; n < right.size(); ++n) {
    right[n] = b[static_cast<std::size_t>(points[static_cast<std::size_t>(n)])];
  }
  using Factor = Eigen::IncompleteCholesky<double, Eigen::Lower, Eigen::NaturalOrdering<int>>;
  Eigen::ConjugateGradient<Sparse, Eigen::Lower | Eigen::Upper, Factor> solver;
  solver.setTolerance(1e-8);
  solver.compute(matrix);
  flow::IccgSystem fast;
  flow::flw_iccg_pre(log, e.blocks, e.fluid, false, kGsfcg, fast);
  flow::gather_scaled(fast.points, e.right, fast.scale, fast.b);
  flow::SolveLimits limits = limits_of(cells);
  limits.itmax = 1000;
  flow::SolveResult result;
  Eigen::VectorXd x;
  compare(
      state, [] {}, [&] { x = solver.solve(right); },
      [&] { result = flow::flw_iccg(log, limits, fast); });
  state.counters["count"] = result.iterations;
  state.counters["eigen_count"] = static_cast<double>(solver.iterations());
  state.counters["eigen_ratio_per_iteration"] =
      state.counters["ratio"] * result.iterations / static_cast<double>(solver.iterations());
}
BENCHMARK(against_eigen)
    ->ArgName("cells")
    ->Arg(64)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);
#endif

}  // namespace
