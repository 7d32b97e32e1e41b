// The law of the wall for heat and vapour.
#pragma once

namespace flow {

/// Profile of a scalar beside a wall, in wall units: Prt (u+ + P) with the momentum's u+ =
/// ln(y+)/0.42 + 5.5, and Pr y+ below the crossing of both. P is the resistance that the layer
/// beneath the logarithm adds where Pr is not Prt (Jayatilleke 1969):
/// P = 9.24 ((Pr/Prt)^0.75 - 1)(1 + 0.28 exp(-0.007 Pr/Prt)).
class WallLaw {
 public:
  /// Molecular and turbulent Prandtl (or Schmidt) number; without a turbulent one (<= 0) the
  /// linear profile holds everywhere.
  explicit WallLaw(double molecular = 1.0, double turbulent = 0.0);

  /// Exchange of a wall with air at the distance y, by the difference of their values [kg/m2 s];
  /// `speed` is that of the air along the wall, r its density and mu its viscosity.
  [[nodiscard]] double exchange(double speed, double y, double r, double mu) const;
  /// The same for a friction velocity that is known.
  [[nodiscard]] double exchange_by(double friction, double y, double r, double mu) const;
  /// The profile at y+.
  [[nodiscard]] double at(double y_plus) const;

 private:
  double molecular_, turbulent_;
  double resistance_ = 0.0;
  double crossing_;  // y+ where both parts meet
};

}  // namespace flow
