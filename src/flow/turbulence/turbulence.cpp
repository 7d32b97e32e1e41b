#include "flow/turbulence/turbulence.hpp"

#include "flow/turbulence/eddy_viscosity.hpp"

namespace flow {

namespace {

std::vector<RimPlace> list_giving_walls(const Rim& rim) {
  std::vector<RimPlace> places;
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::size_t f = 0; f < rim.faces[a].size(); ++f) {
      const Group& group = rim.groups[static_cast<std::size_t>(rim.faces[a][f].group)];
      const bool gives = group.ik == TurbulenceAt::given && is_wall(group, static_cast<int>(a));
      if (gives) places.push_back({a, f});
    }
  }
  return places;
}

}  // namespace

TurbulenceWork make_turbulence(frame::Log& log, const Domain& domain) {
  const Box& box = domain.grid.box;
  const Turbulence model = domain.settings.control.iturb;
  TurbulenceWork work;
  if (model == Turbulence::none) return work;
  frame::allocating(log, "turbulence fields", frame::bytes_of<double>(box.size(), 2), [&] {
    work.strain = make_strain(domain);
    if (model == Turbulence::les) {
      work.length2 = mixing_length_squares(domain);
      return;
    }
    work.wall_cells = list_wall_cells(domain, work.strain);
    work.giving_walls = list_giving_walls(domain.rim);
    work.sources.assign(domain.crew.hands(), SourceRows(box));
    for (Field& dqdt : work.dqdt) dqdt = Field(box);
    for (RimFactors& transfer : work.transfer) {
      for (std::size_t a = 0; a < 3; ++a) transfer[a].assign(domain.rim.faces[a].size(), 0.0);
    }
    if (!domain.settings.control.implicit()) return;
    for (Field& sink : work.sink) sink = Field(box);
  });
  return work;
}

void set_eddy_viscosity(const Domain& domain, Velocities& velocities, TurbulenceWork& work,
                        State& state) {
  if (domain.settings.control.iturb == Turbulence::k_epsilon) {
    set_k_epsilon_viscosity(domain, state);
  } else if (domain.settings.control.iturb == Turbulence::les) {
    set_les_viscosity(domain, work.length2, velocities, work.strain, state);
  }
}

}  // namespace flow
