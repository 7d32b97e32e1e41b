// The pressure equation of a district by the multigrid beside PETSc's conjugate gradient with its
// own algebraic multigrid (GAMG) and with hypre's BoomerAMG, both at their usual settings. Built
// only where PETSc is installed.
//
// Set-up is left out on both sides: the matrix stays. The peers solve the fluid cells' rows of the
// same matrix to the same reduction of the residual, in their own norm (unpreconditioned). Counter
// `ratio` is the peer's time over ours, turn by turn in this process, on one core.
#include <benchmark/benchmark.h>
#include <petscksp.h>

#include <iostream>

#include "flow/linear/amgcg.hpp"
#include "ratio.hpp"
#include "sample_pressure.hpp"

namespace {

/// The rows of the fluid cells in PETSc's form.
struct Peer {
  Peer(const sample::PressureEquation& e, const char* preconditioner) {
    const flow::Box& box = e.fluid.box();
    std::vector<PetscInt> number(box.size(), -1);
    PetscInt rows = 0;
    each(e, [&](std::size_t place) { number[place] = rows++; });
    MatCreateSeqAIJ(PETSC_COMM_SELF, rows, rows, 7, nullptr, &matrix);
    VecCreateSeq(PETSC_COMM_SELF, rows, &right);
    VecDuplicate(right, &solution);
    each(e, [&](std::size_t place) {
      const PetscInt row = number[place];
      MatSetValue(matrix, row, row, e.blocks.diagonal[place], INSERT_VALUES);
      VecSetValue(right, row, e.right[place], INSERT_VALUES);
      for (std::size_t a = 0; a < 3; ++a) {
        const double c = e.blocks.lower[a][place];
        const PetscInt column = number[place - box.stride(static_cast<int>(a))];
        if (c == 0.0 || column < 0) continue;
        MatSetValue(matrix, row, column, c, INSERT_VALUES);
        MatSetValue(matrix, column, row, c, INSERT_VALUES);
      }
    });
    MatAssemblyBegin(matrix, MAT_FINAL_ASSEMBLY);
    MatAssemblyEnd(matrix, MAT_FINAL_ASSEMBLY);
    MatSetOption(matrix, MAT_SPD, PETSC_TRUE);
    VecAssemblyBegin(right);
    VecAssemblyEnd(right);
    KSPCreate(PETSC_COMM_SELF, &solver);
    KSPSetOperators(solver, matrix, matrix);
    KSPSetType(solver, KSPCG);
    KSPSetNormType(solver, KSP_NORM_UNPRECONDITIONED);
    KSPSetTolerances(solver, 1e-8, PETSC_DEFAULT, PETSC_DEFAULT, 1000);
    PC pc = nullptr;
    KSPGetPC(solver, &pc);
    PCSetType(pc, preconditioner);
    KSPSetFromOptions(solver);
    KSPSetUp(solver);
  }
  ~Peer() {
    KSPDestroy(&solver);
    VecDestroy(&solution);
    VecDestroy(&right);
    MatDestroy(&matrix);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  template <class Work>
  static void each(const sample::PressureEquation& e, Work&& work) {
    flow::for_rows(e.fluid.box(), [&](std::size_t place, std::int32_t, std::int32_t) {
      for (std::int32_t i = 0; i < e.fluid.box().n[0]; ++i, ++place) {
        if (e.fluid[place] > 0) work(place);
      }
    });
  }
  void solve() const { KSPSolve(solver, right, solution); }
  [[nodiscard]] PetscInt count() const {
    PetscInt count = 0;
    KSPGetIterationNumber(solver, &count);
    return count;
  }

  Mat matrix = nullptr;
  Vec right = nullptr, solution = nullptr;
  KSP solver = nullptr;
};

void against(benchmark::State& state, const char* preconditioner) {
  static const bool begun = PetscInitializeNoArguments() == 0;
  if (!begun) return state.SkipWithError("PETSc does not start");
  const auto cells = static_cast<std::int32_t>(state.range(0));
  const sample::PressureEquation e = sample::pressure_equation(cells);
  const Peer peer(e, preconditioner);
  frame::Log log(std::cout, std::cerr);
  frame::Crew crew;
  flow::AmgSystem ours;
  flow::flw_amgcg_pre(log, e.blocks, e.fluid, sample::geometry_of(e), ours);
  flow::gather_rows(crew, e.right, ours);
  flow::SolveLimits limits;
  limits.epsrel = 1e-8;
  limits.nnorm = static_cast<double>(e.fluid.box().cells());
  limits.itmax = 1000;
  flow::SolveResult result;
  compare(
      state, [] {}, [&] { peer.solve(); },
      [&] { result = flow::flw_amgcg(log, crew, limits, ours); });
  state.counters["count"] = result.iterations;
  state.counters["peer_count"] = static_cast<double>(peer.count());
}
void both_boxes(benchmark::internal::Benchmark* of) {
  of->ArgName("cells")->Arg(64)->Arg(128);
  of->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
}
BENCHMARK_CAPTURE(against, gamg, PCGAMG)->Apply(both_boxes);
BENCHMARK_CAPTURE(against, boomeramg, PCHYPRE)->Apply(both_boxes);

}  // namespace
