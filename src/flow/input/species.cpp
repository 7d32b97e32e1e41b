#include "flow/input/control.hpp"
#include "flow/input/record.hpp"

namespace flow {

namespace {

void read_viscosity(RecordReader& records, Species& species) {
  std::int32_t isuth = 0;
  records.read(std::array<Item, 1>{&isuth});
  species.sutherland = isuth > 0;
  const auto by_formula = [&] { return species.sutherland; };
  records.take(
      {.items = {&species.mu, &species.T, &species.C},
       .echo = {{"Sutherland formula is applied for viscosity", {}, by_formula},
                {"  viscosity       : mu = ", {&species.mu}, by_formula},
                {"  reference temp. : T  = ", {&species.T}, by_formula},
                {"  coeffcient      : C  = ", {&species.C}, by_formula},
                {"Constant viscosity : mu = ", {&species.mu}, [&] { return !by_formula(); }}},
       .rules = {{"T <= 0", [&] { return !by_formula() || species.T > 0.0; }},
                 {"C <= 0", [&] { return !by_formula() || species.C > 0.0; }},
                 {"mu < 0", [&] { return species.mu >= 0.0; }}}});
}

/// Molar mass and specific heat of species `n`, from 1.
void read_component(RecordReader& records, std::int32_t n, double& wm, std::span<double> acpk) {
  records.take({.items = {&wm, acpk},
                .echo = {{"no. of component : n = ", {&n}}, {" ", {&wm, acpk}}},
                .rules = {{"wm <= 0", [&] { return wm > 0.0; }}}});
}

}  // namespace

Species flw_read_spcies(frame::Log& log, frame::TextInput& file, std::int32_t ns) {
  const frame::Tag tag(log, "(flw_read_spcies)");
  RecordReader records(log, file, "(flw_read_spcies)", "control data");
  Species species;
  read_viscosity(records, species);
  records.take({.items = {&species.prlmnr, &species.sclmnr},
                .echo = {{"Prandtl no. : prlmnr = ", {&species.prlmnr}},
                         {"Schmidt no. : sclmnr = ", {&species.sclmnr}}},
                .rules = {{"prlmnr <= 0", [&] { return species.prlmnr > 0.0; }},
                          {"sclmnr <= 0", [&] { return species.sclmnr > 0.0; }}}});
  std::int32_t nsx = 0;
  records.take({.items = {&nsx},
                .echo = {{"no. of species : nsx = ", {&nsx}},
                         {"molecular weight [kg/mol] & "},
                         {"Cp [J/kg/K] ; wm, acpk(1-5)"}},
                .rules = {{frame::items("nsx != ns(=", ns, ")"), [&] { return nsx == ns; }}}});
  species.wm.resize(static_cast<std::size_t>(ns));
  species.acpk.resize(species.wm.size());
  for (std::size_t i = 0; i < species.wm.size(); ++i) {
    read_component(records, static_cast<std::int32_t>(i) + 1, species.wm[i], species.acpk[i]);
  }
  return species;
}

}  // namespace flow
