#include "flow/urban/porous.hpp"

#include <algorithm>
#include <vector>

#include "flow/halo.hpp"
#include "flow/urban/city_rows.hpp"

namespace flow {

namespace {

/// A row of the file: the cell, its volume, its lower and upper face along each axis.
struct PorousRow {
  Triple cell{};
  std::array<double, 7> fraction{};
};

template <class... Lines>
[[noreturn]] void refuse(frame::Log& log, const frame::TextInput& file, const Lines&... lines) {
  log.line(file.line_text(file.record_line()));
  log.fail("### error : data error in Porous file", lines...);
}

void check(frame::Log& log, const frame::TextInput& file, const Box& box, const PorousRow& row) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (row.cell[a] >= 1 && row.cell[a] <= box.n[a]) continue;
    refuse(log, file, frame::items("i,j,k=", row.cell[0], row.cell[1], row.cell[2]),
           "they are out of range");
  }
  for (const double fraction : row.fraction) {
    if (fraction >= 0.0 && fraction <= 1.0) continue;
    refuse(log, file, frame::items("fraction=", fraction), "it must be >= 0 and <= 1");
  }
}

std::vector<PorousRow> read_rows(frame::Log& log, frame::TextInput& file, const Box& box) {
  std::vector<PorousRow> rows;
  for (bool told = false;;) {
    PorousRow row;
    const auto status =
        file.read(std::span<std::int32_t>(row.cell), std::span<double>(row.fraction));
    if (status == frame::ReadStatus::end) return rows;
    if (status == frame::ReadStatus::error) {
      log.read_error(file, "### error : read error in Porous file");
    }
    warn_if_ran_on(log, file, "Porous data", told);
    check(log, file, box, row);
    frame::allocating(log, "Porous data", frame::bytes_grown(rows), [&] { rows.push_back(row); });
  }
}

/// The face 0 and the last face of a periodic axis are one: both take what `merge` makes of them.
template <class Merge>
void merge_ends(const Boundary& boundary, Openings& openings, Merge&& merge) {
  if (!boundary.periodic_y()) return;
  const Box& box = openings.fluid.box();
  Field& gm = openings.gm[1];
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t i = 1; i <= box.n[0]; ++i) {
      gm(i, 0, k) = gm(i, box.n[1], k) = merge(gm(i, 0, k), gm(i, box.n[1], k));
    }
  }
}

double smaller(double a, double b) { return std::min(a, b); }

void set_fractions(const PorousRow& row, const ShortRecords& limits, Openings& openings) {
  const auto [i, j, k] = row.cell;
  const std::size_t cell = openings.fluid.box().at(i, j, k);
  const double volume = row.fraction[0];
  openings.gmc[cell] = volume < kClosedFace ? 0.0 : std::max(volume, std::min(limits.clim, 1.0));
  for (std::size_t side = 0; side < 6; ++side) {
    const auto axis = static_cast<int>(side / 2);
    const std::size_t face = side % 2 == 0 ? cell - openings.fluid.box().stride(axis) : cell;
    const double fraction = row.fraction[side + 1];
    double& open = openings.gm[side / 2][face];
    open = smaller(open, fraction < limits.xlim ? 0.0 : fraction);
  }
}

}  // namespace

void kpc_read_porous(frame::Log& log, frame::TextInput& file, const ShortRecords& limits,
                     const Boundary& boundary, Openings& openings) {
  const frame::Tag tag(log, "(kpc_read_porous)");
  const Box& box = openings.fluid.box();
  file.rewind();
  const std::vector<PorousRow> rows = read_rows(log, file, box);
  FieldOf<std::size_t> last(box, 0);  // number of a cell's last row, from 1
  for (std::size_t n = 0; n < rows.size(); ++n) {
    last(rows[n].cell[0], rows[n].cell[1], rows[n].cell[2]) = n + 1;
  }
  for (std::size_t n = 0; n < rows.size(); ++n) {
    const auto [i, j, k] = rows[n].cell;
    if (last(i, j, k) == n + 1) set_fractions(rows[n], limits, openings);
  }
  merge_ends(boundary, openings, smaller);
}

void warn_of_narrow_cells(frame::Log& log, const Openings& openings) {
  const Box& box = openings.fluid.box();
  std::int64_t narrow = 0;
  for_rows(box, [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + static_cast<std::size_t>(box.n[0]); ++c) {
      double faces = 0.0;
      for (int axis = 0; axis < 3; ++axis) {
        const Field& gm = openings.gm[static_cast<std::size_t>(axis)];
        faces += gm[c] + gm[c - box.stride(axis)];
      }
      if (openings.fluid[c] > 0 && openings.gmc[c] < 0.5 * (faces / 6.0)) ++narrow;
    }
  });
  if (narrow == 0) return;
  log.warn("Porous data has cells less than half as open as their faces, clim can raise them",
           "; cells =", narrow);
}

void flw_prep_stiobs(const Boundary& boundary, Openings& openings) {
  const Box& box = openings.fluid.box();
  for_rows(box, [&](std::size_t place, auto, auto) {
    for (std::size_t c = place; c < place + static_cast<std::size_t>(box.n[0]); ++c) {
      if (openings.gmc[c] >= kClosedFace) continue;
      openings.fluid[c] = 0;
      openings.gmc[c] = 1.0;
      for (int axis = 0; axis < 3; ++axis) {
        Field& gm = openings.gm[static_cast<std::size_t>(axis)];
        gm[c] = gm[c - box.stride(axis)] = 0.0;
      }
    }
  });
  merge_ends(boundary, openings, smaller);
  fill_halos(openings.gmc, boundary.ends);
}

}  // namespace flow
