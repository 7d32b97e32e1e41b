// tsrf_module_srfprp: surface properties by code SurfCD (SurfProp file).
//
// Read once at the start and again for each month of a dated run, when the values may change but
// the codes and their order may not.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_srfprp {

/// n rows of the file and two more: of tree patches, which absorb all (row n), and of mirrors (row
/// n+1).
struct Data {
  std::int32_t n = 0;
  std::vector<std::int32_t> SurfCD;   ///< n codes
  std::vector<double> alb;            ///< solar albedo
  std::vector<double> ems;            ///< long-wave emissivity
  std::vector<double> beta;           ///< surface wetness
  std::vector<double> wext;           ///< extinction coefficient [1/m]
  std::vector<double> heat_capacity;  ///< rho cp [J/m3 K]
  std::vector<double> conductivity;   ///< rho cp alf [W/m K]
  frame::CodeIndex by_code;           ///< SurfCD -> row
};

/// Reads the file. Called again with filled `data` it takes the new values, and fails when codes or
/// their order differ from what `data` holds.
void read_srfprp(frame::Log& log, frame::TextInput& file, Data& data);

}  // namespace tsrf_module_srfprp
