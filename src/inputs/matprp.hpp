// tsrf_module_matprp: surface materials, each a stack of layers (MatEleProp file).
#pragma once

#include <cstdint>
#include <vector>

#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_matprp {

struct Material {
  std::int32_t surfid = 0;
  std::int32_t pos = 0;              ///< position class: 1, 2, or 3 for a window
  std::int32_t strct = 0;            ///< structure code
  std::vector<double> thick;         ///< per layer [m], from outside to inside
  std::vector<std::int32_t> SurfCD;  ///< per layer
  [[nodiscard]] std::int32_t nolyr() const { return static_cast<std::int32_t>(thick.size()); }
};

struct Data {
  std::vector<Material> materials;
  frame::CodeIndex by_surfid;  ///< surfid -> material
};

/// Reads the file: blocks of as many lines as the material has layers.
void read_matprp(frame::Log& log, frame::TextInput& file, Data& data);

}  // namespace tsrf_module_matprp
