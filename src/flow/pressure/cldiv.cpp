#include "flow/pressure/cldiv.hpp"

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// The upper faces of a row of cells along one axis; the lower ones are `s` before them.
struct Faces {
  const double* ru;
  const double* open;
  const double* open_below;
  std::size_t s;

  [[nodiscard]] FLOW_INLINE double balance(std::size_t i) const {
    return open[i] * ru[i] - open_below[i] * ru[i - s];
  }
};

/// What a row of cells has in common and what each of its cells has.
struct Row {
  std::array<Faces, 3> faces;
  const double* dx;
  double dy, dz, rate;  ///< rate: 1/dt
  const double* gmc;
  const double* r1;
  const double* r2;
  const std::int32_t* fluid;
};

FLOW_CLONES void set_row(std::size_t count, const Row& row, double* div) {
  for (std::size_t i = 0; i < count; ++i) {
    const double sum = row.faces[0].balance(i) / row.dx[i] + row.faces[1].balance(i) / row.dy +
                       row.faces[2].balance(i) / row.dz +
                       row.rate * row.gmc[i] * (row.r1[i] - row.r2[i]);
    div[i] = row.fluid[i] > 0 ? -sum * (row.dx[i] * row.dy * row.dz) : 0.0;
  }
}

}  // namespace

void flw_cldiv(frame::Crew& crew, const GridTables& grid, const Openings& openings,
               const State& state, double dt, const Field* source, Field& div) {
  const Box& box = grid.box;
  const auto n = static_cast<std::size_t>(box.n[0]);
  const double* dx = &grid.axis[0].width[kHalo];
  share_rows(crew, box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    Row row{};
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t s = box.stride(static_cast<int>(a));
      row.faces[a] = {&state.ru[a][place], openings.gm_from(a, place),
                      openings.gm_from(a, place - s), s};
    }
    row.dx = dx;
    row.dy = grid.axis[1].dx(j);
    row.dz = grid.axis[2].dx(k);
    row.rate = 1.0 / dt;
    row.gmc = openings.gmc_from(place);
    row.r1 = &state.r[0][place];
    row.r2 = &state.r[1][place];
    row.fluid = openings.fluid_from(place);
    set_row(n, row, &div[place]);
    if (source == nullptr) return;
    for (std::size_t i = 0; i < n; ++i) {
      if (row.fluid[i] > 0) div[place + i] -= (*source)[place + i] * (dx[i] * row.dy * row.dz);
    }
  });
}

}  // namespace flow
