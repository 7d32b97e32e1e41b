#include "buildings/wall_structure.hpp"

#include <algorithm>
#include <cmath>

namespace tsrf_module_lyrstrct {

namespace {

using frame::items;
using tsrf_module_matprp::Material;

constexpr std::int32_t kCarriesHeat = 1;  // position class of what stores a building's heat

double cells_of(double thickness, double dz) { return std::max(std::round(thickness / dz), 1.0); }

/// Thin cells in thick layers would ask for more memory than there is.
void check_wall(frame::Log& log, const Material& material, double dz) {
  double cells = 0.0;
  for (const double thickness : material.thick) cells += cells_of(thickness, dz);
  const auto thickest = std::ranges::max_element(material.thick);
  check_cells(log, cells,
              items("surfid,i,thick(i) in MatEleProp data =", material.surfid,
                    thickest - material.thick.begin() + 1, *thickest, "; dzw =", dz));
}

Structure wall_of(const Material& material, double dz) {
  Structure wall{Kind::building, {}};
  for (std::size_t layer = 0; layer < material.thick.size(); ++layer) {
    const double thickness = material.thick[layer];
    wall.parts.push_back({material.SurfCD[layer], thickness,
                          static_cast<std::int32_t>(cells_of(thickness, dz)), -1.0, 1.0});
  }
  return wall;
}

/// Rooms sum their surfaces by position class.
void check_pos(frame::Log& log, const Material& material) {
  if (material.pos >= 1 && material.pos <= 3) return;
  log.data_error(items("pos in MatEleProp data =", material.pos), "it must be >= 1 and <= 3",
                 items("surfid =", material.surfid));
}

std::int32_t find_building(frame::Log& log, std::int32_t BldID,
                           const tsrf_module_bldng::Data& bldng) {
  const std::int32_t b = bldng.by_bldid.find(BldID);
  if (b < 0) {
    log.data_error(items("BldID in BldSurf data =", BldID), "it is not defined in Building data");
  }
  return b;
}

/// What a building has among the surfaces.
struct Found {
  bool surface = false;
  bool heat_capacity = false;
};

void check_buildings(frame::Log& log, const tsrf_module_bldng::Data& bldng,
                     const std::vector<Found>& found) {
  for (std::size_t b = 0; b < found.size(); ++b) {
    if (bldng.by_bldid.find(bldng.BldID[b]) != static_cast<std::int32_t>(b)) continue;  // a repeat
    const std::string id = items("BldID in Building data =", bldng.BldID[b]);
    frame::attempt(log, [&] {
      if (!found[b].surface) log.data_error(id, "it has no Patch");
      if (!found[b].heat_capacity)
        log.data_error(id, items("it has no Patch of pos", kCarriesHeat));
    });
  }
}

}  // namespace

void lyrstrct_set_bldng(frame::Log& log, double dz, const tsrf_module_patch::Data& patch,
                        const tsrf_module_matprp::Data& matprp,
                        const tsrf_module_bldng::Data& bldng, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_lyrstrct)(lyrstrct_set_bldng)");
  std::vector<std::int32_t> shared(matprp.materials.size(), -1);  // per material
  std::vector<Found> found(bldng.BldID.size());
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kBuilding) continue;
    std::int32_t m = -1;
    std::int32_t b = -1;
    frame::attempt(log, [&] { m = find_material(log, patch.SurfID[p], matprp); });
    frame::attempt(log, [&] { b = find_building(log, patch.BldID[p], bldng); });
    if (m < 0 || b < 0) {
      if (b >= 0) found[static_cast<std::size_t>(b)] = {true, true};
      continue;
    }
    const Material& material = matprp.materials[static_cast<std::size_t>(m)];
    if (!frame::attempt(log, [&] { check_pos(log, material); })) {
      found[static_cast<std::size_t>(b)] = {true, true};
      continue;
    }
    std::int32_t& position = shared[static_cast<std::size_t>(m)];
    if (position < 0) {
      if (!frame::attempt(log, [&] { check_wall(log, material, dz); })) {
        found[static_cast<std::size_t>(b)] = {true, true};
        continue;
      }
      position = static_cast<std::int32_t>(data.structures.size());
      frame::allocating(log, "layers of walls", frame::bytes_of<Part>(material.thick.size()),
                        [&] { data.structures.push_back(wall_of(material, dz)); });
    }
    data.structure[p] = position;
    data.material[p] = m;
    data.building[p] = b;
    Found& of_building = found[static_cast<std::size_t>(b)];
    of_building.surface = true;
    of_building.heat_capacity = of_building.heat_capacity || material.pos == kCarriesHeat;
  }
  check_buildings(log, bldng, found);
}

}  // namespace tsrf_module_lyrstrct
