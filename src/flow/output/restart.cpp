#include "flow/output/restart.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "flow/prep_init.hpp"

namespace flow {

namespace {

constexpr std::string_view kHeading = "### error : restart file (flw_prep_init)";

std::string sizes_of(const Triple& cells, std::int64_t ns) {
  return frame::items(cells[0], cells[1], cells[2], ns);
}

/// Scans a restart file for the set of an iteration.
class Search {
 public:
  Search(frame::Log& log, const SetFile& file, std::int32_t iters, const Triple& cells,
         std::size_t ns)
      : log_(log), file_(file), reader_(file.path), iters_(iters), cells_(cells), ns_(ns) {}

  Restored find() {
    Restored restored;
    SetHead head;
    for (;;) {
      accept(reader_.next(head));
      check_size(head);
      const bool met = head.iter == iters_;
      SetReader::Found found = SetReader::Found::cut;
      frame::allocating(log_, "restart set", static_cast<std::int64_t>(reader_.behind()),
                        [&] { found = reader_.rest(head, met ? &restored.set : nullptr); });
      accept(found);
      if (met) break;
      if (!first_) first_ = head.iter;
      last_ = head.iter;
    }
    restored.kept = reader_.behind();
    return restored;
  }

 private:
  /// Goes on with a set, and ends the run where there is none.
  void accept(SetReader::Found found) {
    using enum SetReader::Found;
    if (found == set) return;
    if (found != end) log_.line("%%% file", file_.name + ",", "record", reader_.record());
    if (found == misfit) {
      const SetReader::Misfit& at = reader_.misfit();
      const std::string name = frame::items("bytes of record", at.record);
      log_.fail(kHeading, "size not consistent", frame::items(name + "(restart file)=", at.found),
                frame::items(name + "(specified)   =", at.wanted));
    }
    if (found == other_models) log_.fail(kHeading, "it holds records of other models");
    if (!first_) log_.fail(kHeading, "end of file detected");
    log_.fail(kHeading, "specified iteration counts not found",
              frame::items("iteration (restart file)=", *first_, "&", last_),
              frame::items("iteration (specified)   =", iters_));
  }

  void check_size(const SetHead& head) {
    if (head.cells == cells_ && head.ns == static_cast<std::int64_t>(ns_)) return;
    log_.fail(kHeading, "size not consistent",
              frame::items("mx,my,mz,ns(restart file)=", sizes_of(head.cells, head.ns)),
              frame::items("mx,my,mz,ns(specified)   =",
                           sizes_of(cells_, static_cast<std::int64_t>(ns_))));
  }

  frame::Log& log_;
  const SetFile& file_;
  SetReader reader_;
  std::int32_t iters_;
  Triple cells_;
  std::size_t ns_;
  std::optional<std::int32_t> first_;  // iteration of the first set passed over
  std::int32_t last_ = 0;
};

/// The cells of a set and the run's cells that lie in each of them.
struct Mesh {
  Triple coarse, ratio;

  /// Place of the set's cell around a cell of the run.
  [[nodiscard]] std::size_t cell(std::int32_t i, std::int32_t j, std::int32_t k) const {
    const auto c = [this](std::int32_t index, std::size_t a) {
      return static_cast<std::size_t>((index - 1) / ratio[a]);
    };
    const auto n = [this](std::size_t a) { return static_cast<std::size_t>(coarse[a]); };
    return c(i, 0) + n(0) * (c(j, 1) + n(1) * c(k, 2));
  }
};

void spread_cells(const Mesh& mesh, const double* from, Field& field) {
  const Triple& n = field.box().n;
  for (std::int32_t k = 1; k <= n[2]; ++k) {
    for (std::int32_t j = 1; j <= n[1]; ++j) {
      for (std::int32_t i = 1; i <= n[0]; ++i) field(i, j, k) = from[mesh.cell(i, j, k)];
    }
  }
}

/// One row of faces along their normal: where it lies between two faces of the set, and how far.
struct Between {
  std::size_t lower, upper;
  double weight;
};

std::vector<Between> between(const AxisTable& axis, std::int32_t ratio) {
  std::vector<Between> places;
  for (std::int32_t face = 0; face <= axis.cells; ++face) {
    const std::int32_t lower = face / ratio;
    const std::int32_t upper = face % ratio == 0 ? lower : lower + 1;
    const double from = axis.x(lower * ratio + 1);
    const double to = axis.x(upper * ratio + 1);
    places.push_back({static_cast<std::size_t>(lower), static_cast<std::size_t>(upper),
                      upper == lower ? 0.0 : (axis.x(face + 1) - from) / (to - from)});
  }
  return places;
}

void spread_faces(Mesh mesh, const AxisTable& along, std::size_t axis,
                  const std::vector<double>& from, Field& field) {
  const std::vector<Between> places = between(along, mesh.ratio[axis]);
  // The set's faces are numbered like cells, one more along their normal.
  mesh.ratio[axis] = 1;
  ++mesh.coarse[axis];
  Triple first{1, 1, 1};
  first[axis] = 0;
  const Triple& n = field.box().n;
  for (std::int32_t k = first[2]; k <= n[2]; ++k) {
    for (std::int32_t j = first[1]; j <= n[1]; ++j) {
      for (std::int32_t i = first[0]; i <= n[0]; ++i) {
        const Triple at{i, j, k};
        const Between& place = places[static_cast<std::size_t>(at[axis])];
        const auto value = [&](std::size_t face) {
          Triple index = at;
          index[axis] = static_cast<std::int32_t>(face) + 1;
          return from[mesh.cell(index[0], index[1], index[2])];
        };
        const double lower = value(place.lower);
        field(i, j, k) = place.upper == place.lower
                             ? lower
                             : lower + place.weight * (value(place.upper) - lower);
      }
    }
  }
}

}  // namespace

Restored restore(frame::Log& log, const SetFile& file, std::int32_t iters, const Triple& cells,
                 std::size_t ns) {
  Restored restored = Search(log, file, iters, cells, ns).find();
  check_values(log, kHeading, restored.set);
  return restored;
}

void check_values(frame::Log& log, std::string_view heading, const FlowSet& set) {
  const auto check = [&](std::string_view name, const std::vector<double>& values) {
    const std::size_t at = first_not_finite(values);
    if (at != 0) {
      log.fail(heading, "value not finite", frame::items("value no. of " + std::string(name), at));
    }
  };
  check("time and dt =", {set.head.time, set.head.dt});
  check("p =", set.p);
  check("t =", set.t);
  check("ys =", set.ys);
  check("ru =", set.ru[0]);
  check("rv =", set.ru[1]);
  check("rw =", set.ru[2]);
  check("k & e =", set.ak);
  check("thermodynamic pressure =", {set.pressure[0], set.pressure[1]});
  if (set.has_pressure && !(set.pressure[0] > 0.0)) {
    log.fail(heading, "thermodynamic pressure <= 0");
  }
  const auto cold = std::ranges::find_if(set.t, [](double t) { return !(t > 0.0); });
  if (cold == set.t.end()) return;
  log.fail(heading, "t <= 0", frame::items("value no. of t =", cold - set.t.begin() + 1));
}

void spread(const FlowSet& set, const GridTables& grid, State& state) {
  Mesh mesh{set.head.cells, {}};
  for (std::size_t a = 0; a < 3; ++a) mesh.ratio[a] = grid.box.n[a] / mesh.coarse[a];
  const std::size_t cells = set.p.size();
  spread_cells(mesh, set.p.data(), state.p);
  spread_cells(mesh, set.t.data(), state.t);
  for (std::size_t s = 0; s < state.ys.size(); ++s) {
    spread_cells(mesh, set.ys.data() + s * cells, state.ys[s]);
  }
  for (std::size_t axis = 0; axis < 3; ++axis) {
    spread_faces(mesh, grid.axis[axis], axis, set.ru[axis], state.ru[axis]);
  }
  if (set.has_pressure) state.pt = set.pressure[0];
  if (state.ak[0].empty() || set.ak.empty()) return;
  for (std::size_t v = 0; v < 2; ++v) {
    spread_cells(mesh, set.ak.data() + v * cells, state.ak[v]);
  }
}

void take_over(frame::Log& log, const FlowSet& set, bool closed, const GridTables& grid,
               State& state) {
  const double pp0 = state.pt;
  spread(set, grid, state);
  state.iter = set.head.iter;
  state.time = set.head.time;
  state.dt = set.head.dt;
  if (!closed) state.pt = pp0;
  if (closed && set.has_pressure) state.reference_mass = set.pressure[1];
  if (closed && !set.has_pressure) {
    log.line("%%% warning : no thermodynamic pressure in restart file : pp0 is taken");
  }
  if (!state.ak[0].empty() && set.ak.empty()) {
    log.line("%%% warning : no k & e in restart file : k0 and eps0 are taken");
  }
}

}  // namespace flow
