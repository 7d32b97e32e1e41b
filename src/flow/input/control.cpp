#include "flow/input/control.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "flow/input/record.hpp"
#include "flow/input/schedule.hpp"
#include "flow/input/unsteady.hpp"
#include "frame/whole_run.hpp"

namespace flow {

namespace {

constexpr double kSameAsFirst = -999.0;  // a value of the second column that takes the first's
constexpr double kNear = 1e-5;

/// Two columns of one quantity: momentum and pressure, temperature and species.
using Columns = std::array<double, 2>;

/// Reads the records of one Control; what a later record decides is kept until then.
class Reader {
 public:
  Reader(frame::Log& log, frame::TextInput& file, std::int32_t ns)
      : log_(log), file_(file), records_(log, file, "(flw_read_cntdat)", "control data"), ns_(ns) {}

  Control read() {
    read_run();
    knows_steps_ =
        records_.read(std::array<Item, 4>{&dtsafe_[0], &dtmax_[0], &dtsafe_[1], &dtmax_[1]});
    steps_place_ = records_.place();
    read_switches();
    settle_steps();
    read_schemes();
    read_solvers();
    read_start();
    read_ambient();
    return c_;
  }

 private:
  void read_run();
  void read_switches();
  void settle_steps();
  void settle_columns();
  void read_schemes();
  void read_solvers();
  void read_start();
  void read_ambient();
  void take(const Record& record, bool told);
  void take_fractions(std::string_view name, std::vector<double>& ys, bool told);

  frame::Log& log_;
  frame::TextInput& file_;
  RecordReader records_;
  std::int32_t ns_;
  Control c_;
  Columns dtsafe_{};
  Columns dtmax_{};
  std::size_t steps_place_ = 0;
  bool knows_steps_ = false;
};

void Reader::read_run() {
  records_.take({.items = {&c_.iters, &c_.itere, &c_.timee},
                 .echo = {{"iteration no. start & end : iters,itere = ", {&c_.iters, &c_.itere}},
                          {"end time : timee = ", {&c_.timee}}},
                 .rules = {{"iters > itere", [&] { return c_.iters <= c_.itere; }}}});
  const Schedule& restart = c_.restart;
  take_schedule(records_, c_.restart,
                {"iteration no. when output restart file", "time no. when output restart file",
                 "start, end & interval : trstps,trstpe,trstpd = "});
  records_.check(std::array<Rule, 2>{
      {{"trstps > trstpe", [&] { return restart.none() || restart.start <= restart.end; }},
       {"trstpe <= 0", [&] { return restart.none() || restart.end > 0.0; }}}});
}

void Reader::read_switches() {
  std::int32_t itemp = 0;
  std::int32_t iturb = 0;
  records_.read(std::array<Item, 2>{&itemp, &iturb});
  c_.itemp = itemp > 0;
  c_.iturb = iturb == 1 ? Turbulence::k_epsilon : iturb == 2 ? Turbulence::les : Turbulence::none;
  records_.tell(std::array<Echo, 4>{
      {{"calculate temp. & conc.", {}, [&] { return c_.itemp; }, "not calculate temp. & conc."},
       {"calculate k-eps. turbulent model", {}, [&] { return iturb == 1; }},
       {"calculate LES turbulent model", {}, [&] { return iturb == 2; }},
       {"calculate no turbulent model", {}, [&] { return c_.iturb == Turbulence::none; }}}});
  std::int32_t ivisc = 0;
  std::int32_t idift = 0;
  std::int32_t idifk = 0;
  records_.read(std::array<Item, 3>{&ivisc, &idift, &idifk});
  c_.ivisc = ivisc > 0;
  c_.idift = idift > 0;
  c_.idifk = idifk > 0 && c_.iturb != Turbulence::none;
  const auto on = [](const bool& flag) { return [&flag] { return flag; }; };
  records_.tell(std::array<Echo, 3>{{{"calculate viscous term of momentum",
                                      {},
                                      on(c_.ivisc),
                                      "not calculate viscous term of momentum"},
                                     {"calculate diffusion term of temp. & conc.",
                                      {},
                                      on(c_.idift),
                                      "not calculate diffusion term of temp. & conc."},
                                     {"calculate diffusion term of k-eps",
                                      {},
                                      on(c_.idifk),
                                      "not calculate diffusion term of k-eps"}}});
}

/// The method of integration, which rules how the record of time steps is taken.
void Reader::settle_steps() {
  const auto is = [](const std::int32_t& value, std::int32_t one) {
    return [&value, one] { return value == one; };
  };
  std::int32_t intprs = 0;
  records_.take(
      {.items = {&c_.intstp, &c_.intacr, &intprs},
       .echo = {{"method of time integration : intstp = ", {&c_.intstp}},
                {"SMAC method", {}, is(c_.intstp, 1)},
                {"predictor-corrector method", {}, is(c_.intstp, 2)},
                {"implicit operator", {}, is(c_.intstp, -1)},
                {"accuracy of time integration : intacr = ", {&c_.intacr}},
                {"accuracy is Euler explicit", {}, is(c_.intacr, 1)},
                {"accuracy is Abams-Bashforth", {}, is(c_.intacr, 2)},
                {"flag of pressure integration : intprs = ", {&intprs}},
                {"clear pressure field at every time level",
                 {},
                 [&] { return intprs < 1; },
                 "accumulate pressure field"}},
       .rules = {{"intstp must be 1, 2, or -1",
                  [&] { return c_.intstp == 1 || c_.intstp == 2 || c_.implicit(); }},
                 {"intacr < 1 or intacr > 2", [&] { return c_.intacr == 1 || c_.intacr == 2; }}}});
  c_.keeps_pressure = intprs >= 1;
  settle_columns();
}

void Reader::settle_columns() {
  for (Columns* columns : {&dtsafe_, &dtmax_}) {
    auto& [first, second] = *columns;
    if (!c_.implicit() || std::abs(second - kSameAsFirst) < kNear) second = first;
  }
  records_.tell(
      std::array<Echo, 2>{{{"safety factor of delta-t : dtsafe = ", {&dtsafe_[0], &dtsafe_[1]}},
                           {"maximal delta-t : dtmax = ", {&dtmax_[0], &dtmax_[1]}}}});
  if (!knows_steps_) return;
  records_.blame(steps_place_);
  const std::size_t columns = c_.implicit() ? 2 : 1;  // else both are the first
  for (std::size_t column = 0; column < columns; ++column) {
    records_.check(std::array<Rule, 3>{
        {{"dtsafe > 1", [&] { return c_.implicit() || dtsafe_[column] <= 1.0; }},
         {"dtsafe <= 0", [&] { return dtsafe_[column] > 0.0; }},
         {"dtmax <= 0", [&] { return dtmax_[column] > 0.0; }}}});
  }
  records_.attempt([&] { unst_chk_deltt(log_, file_, dtmax_[0], dtmax_[1]); });
  c_.momentum = {dtsafe_[0], dtmax_[0]};
  c_.scalar = {dtsafe_[1], dtmax_[1]};
  c_.smaller = {std::min(dtsafe_[0], dtsafe_[1]), std::min(dtmax_[0], dtmax_[1])};
}

void Reader::read_schemes() {
  const auto scalars = [&] { return c_.itemp; };
  const auto turbulent = [&] { return c_.iturb != Turbulence::none; };
  records_.take({.items = {&c_.acrkv, &c_.acrkt, &c_.acrky, &c_.acrke},
                 .echo = {{"accuracy of spacial descritization of"},
                          {"advective term in momentum eq. : acrkv = ", {&c_.acrkv}},
                          {"advective term in temp. eq. : acrkt = ", {&c_.acrkt}, scalars},
                          {"advective term in conc. eq. : acrky = ", {&c_.acrky}, scalars},
                          {"advective term in k-eps eq. : acrke = ", {&c_.acrke}, turbulent}}});
}

void Reader::read_solvers() {
  records_.take({.items = {&c_.itercg, &c_.epscg, &c_.gsfcg},
                 .echo = {{"max. iteration counts of iccg : itercg = ", {&c_.itercg}},
                          {"tolerance of convergence for iccg : epscg = ", {&c_.epscg}},
                          {"parameter of Gustafsson modification : gsfcg = ",
                           {&c_.gsfcg},
                           [&] { return c_.gsfcg > 0.0; },
                           "not apply Gustafsson modification"}},
                 .rules = {{"itercg < 1", [&] { return c_.itercg >= 1; }},
                           {"epscg <= 0", [&] { return c_.epscg > 0.0; }}}});
  records_.take({.items = {&c_.itrbcg, &c_.epsbcg},
                 .echo = {{"max. iteration counts of bi-cgstab : itrbcg = ", {&c_.itrbcg}},
                          {"tolerance of convergence for bi-cgstab : epsbcg = ", {&c_.epsbcg}}},
                 .rules = {{"itrbcg < 1", [&] { return c_.itrbcg >= 1; }},
                           {"epsbcg <= 0", [&] { return c_.epsbcg > 0.0; }}}});
}

void Reader::take(const Record& record, bool told) {
  if (!records_.read(record.items) || !told) return;
  records_.tell(record.echo);
  records_.check(record.rules);
}

/// The number of species and as many mass fractions.
void Reader::take_fractions(std::string_view name, std::vector<double>& ys, bool told) {
  std::int32_t nsx = 0;
  const std::string words = frame::items("nsx != ns(=", ns_, ")");
  take({.items = {&nsx},
        .echo = {{"  no. of species : nsx = ", {&nsx}}},
        .rules = {{words, [&] { return nsx == ns_; }}}},
       told);
  // What is not checked is read all the same, so its number must have sense.
  if (nsx < 1 || nsx > frame::kMostSpecies) {
    if (!log_.collects()) records_.fail(words);
    nsx = ns_;
  }
  ys.resize(static_cast<std::size_t>(nsx));
  const std::string label = "  mass fraciton ; " + std::string(name);
  const std::string values(name);
  take({.items = {std::span(ys)},
        .echo = {{label, {std::span(ys)}}},
        .rules = {{values + " < 0",
                   [&] { return std::ranges::all_of(ys, [](double y) { return y >= 0.0; }); }},
                  {"summation of " + values + " <= 0",
                   [&] { return std::accumulate(ys.begin(), ys.end(), 0.0) > 0.0; }}}},
       told);
}

/// The uniform field; a run that starts from a file passes over it.
void Reader::read_start() {
  const bool uniform = c_.iters < 0;
  const bool turbulent = uniform && c_.iturb != Turbulence::none;
  records_.tell(std::array<Echo, 2>{
      {{"initial condition : uniform flow field", {}, [&] { return uniform; }},
       {"initial condition : restart file, iter = ", {&c_.iters}, [&] { return !uniform; }}}});
  take_fractions("ys0", c_.start.ys, uniform);
  take({.items = {&c_.start.t, &c_.pp0},
        .echo = {{"  temperature [K]  = ", {&c_.start.t}}, {"  pressure [Pa]    = ", {&c_.pp0}}},
        .rules = {{"t0 <= 0", [&] { return c_.start.t > 0.0; }},
                  {"pp0 <= 0", [&] { return c_.pp0 > 0.0; }}}},
       uniform);
  auto& [u0, v0, w0] = c_.velocity0;
  take({.items = {&u0, &v0, &w0},
        .echo = {{"  x-velocity [m/s] = ", {&u0}},
                 {"  y-velocity [m/s] = ", {&v0}},
                 {"  z-velocity [m/s] = ", {&w0}}}},
       uniform);
  take({.items = {&c_.k0, &c_.eps0},
        .echo = {{"  turb. energy [m^2/s^2]     = ", {&c_.k0}},
                 {"  dissipation of k [m^2/s^3] = ", {&c_.eps0}}}},
       turbulent);
}

void Reader::read_ambient() {
  records_.tell(std::array<Echo, 1>{{{"ambient condition"}}});
  take_fractions("ysamb", c_.ambient.ys, true);
  records_.take({.items = {&c_.ambient.t},
                 .echo = {{"  temperature [K]  = ", {&c_.ambient.t}}},
                 .rules = {{"tamb <= 0", [&] { return c_.ambient.t > 0.0; }}}});
  const std::span<double> gravity(c_.gravity);
  records_.take(
      {.items = {gravity}, .echo = {{"gravity component [m/s^2] : gx,gy,gz = ", {gravity}}}});
  records_.take({.items = {&c_.prturb, &c_.scturb},
                 .echo = {{"turbulent Prandtl no. : prturb = ", {&c_.prturb}},
                          {"turbulent Schmidt no. : scturb = ", {&c_.scturb}}}});
}

}  // namespace

Control flw_read_cntdat(frame::Log& log, frame::TextInput& file, std::int32_t ns) {
  const frame::Tag tag(log, "(flw_read_cntdat)");
  return Reader(log, file, ns).read();
}

}  // namespace flow
