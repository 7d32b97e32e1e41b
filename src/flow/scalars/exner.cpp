#include "flow/scalars/exner.hpp"

#include <cmath>

#include "flow/density.hpp"
#include "flow/halo.hpp"
#include "flow/properties.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// The Exner function over the column of the ambient air.
struct Profile {
  AirColumn column;
  double pp0;
  double exponent;  ///< R/cp

  [[nodiscard]] double at(frame::Log& log, const Vector& x) const {
    const double p = pp0 + column.at(x);
    if (!(p > 0.0)) {
      log.data_error(frame::items("x,y,z =", x[0], x[1], x[2]),
                     frame::items("pressure of the ambient column =", p, "must be > 0"));
    }
    return std::pow(p / pp0, exponent);
  }
};

Profile profile_of(const Domain& domain) {
  const Settings& settings = domain.settings;
  const Air& ambient = settings.control.ambient;
  double moles = 0.0;
  double cp = 0.0;
  for (std::size_t s = 0; s < ambient.ys.size(); ++s) {
    moles += ambient.ys[s] / settings.species.wm[s];
    cp += ambient.ys[s] * specific_heat(settings.species, s, ambient.t);
  }
  return {state_column(settings, domain.grid), settings.control.pp0, kGasConstant * moles / cp};
}

}  // namespace

Exner flw_init_exner(frame::Log& log, const Domain& domain) {
  Exner exner;
  if (domain.settings.records.itmpt != 2) return exner;
  const frame::Tag tag(log, "(flw_init_exner)");
  const GridTables& grid = domain.grid;
  const Profile profile = profile_of(domain);
  exner.theta = exner.function = Field(grid.box, 1.0);
  for (std::int32_t k = 1; k <= grid.box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= grid.box.n[1]; ++j) {
      for (std::int32_t i = 1; i <= grid.box.n[0]; ++i) {
        exner.function(i, j, k) =
            profile.at(log, {grid.axis[0].xc(i), grid.axis[1].xc(j), grid.axis[2].xc(k)});
      }
    }
  }
  fill_halos(exner.function, domain.boundary.ends);
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    for (const BoundaryFace& at : domain.rim.faces[a]) {
      exner.to_theta[a].push_back(1.0 / profile.at(log, face_centre(grid, axis, at)));
    }
  }
  return exner;
}

void set_potential(frame::Crew& crew, const Field& t, Exner& exner) {
  share_wide_rows(crew, t.box(), [&](std::size_t place, std::size_t count, auto, auto) {
    for (std::size_t c = place; c < place + count; ++c) {
      exner.theta[c] = t[c] / exner.function[c];
    }
  });
}

}  // namespace flow
