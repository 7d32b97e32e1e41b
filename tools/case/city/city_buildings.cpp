#include "city/city_buildings.hpp"

#include <algorithm>

#include "city/arrangement.hpp"
#include "city/bodies.hpp"
#include "city/faces.hpp"
#include "city/footprint_heights.hpp"
#include "city/snap.hpp"

namespace townskin_case {
namespace {

constexpr double worth_telling = 0.1;  // [m2] of overlap

/// All faces at one height: an outline, whatever the data call it.
bool is_flat(const Feature& feature) {
  double low = HUGE_VAL, high = -HUGE_VAL;
  for (const RawPolygon& polygon : feature.polygons) {
    for (const Ring3& ring : polygon.rings) {
      for (const Vector3& p : ring) {
        low = std::min(low, p.z);
        high = std::max(high, p.z);
      }
    }
  }
  return high - low < near_enough;
}

std::vector<Draft> drafts_of(const Geos& geos, const Layer& layer, const CityInput& input,
                             Report& report) {
  std::vector<Feature> outlines, bodies;
  for (const Feature& feature : layer.features) {
    if (feature.polygons.empty()) {
      report.leave_out("no polygon", feature.origin);
    } else {
      (feature.solid && !is_flat(feature) ? bodies : outlines).push_back(feature);
    }
  }
  std::vector<Draft> drafts;
  const auto heights = footprint_heights(outlines, input, report);
  for (std::size_t i = 0; i < outlines.size(); ++i) {
    drafts.push_back(draft_of_footprint(geos, outlines[i], heights[i], report));
  }
  for (const Feature& body : bodies) drafts.push_back(draft_of_body(geos, body, input, report));
  return drafts;
}

/// One warning that counts what stands without a height of its own.
void warn_of_defaults(const std::vector<Layer>& layers, std::size_t building_layers,
                      const CityInput& input, Report& report) {
  const std::size_t count = report.count("no height: the default taken");
  if (count == 0) return;
  std::size_t all = 0;
  for (std::size_t i = 0; i < building_layers; ++i) all += layers[i].features.size();
  std::string metres = std::to_string(input.default_height);
  metres.erase(metres.find('.') + 2);
  report.warning(std::to_string(count) + " of " + std::to_string(all) +
                 " buildings tell neither height nor storeys: " + metres + " m are taken");
}

void tell_overlaps(const Arrangement& arrangement, const std::vector<Draft>& drafts,
                   Report& report) {
  for (const auto& [pair, size] : arrangement.overlaps) {
    if (size < worth_telling) continue;
    const Origin& lower = drafts[static_cast<std::size_t>(pair.first)].building.origin;
    const Origin& higher = drafts[static_cast<std::size_t>(pair.second)].building.origin;
    report.repair("overlap given to the higher building",
                  {lower.file, lower.feature + " in " + higher.feature});
  }
}

/// Storeys as told, else from the mean height.
void count_storeys(Building& building, const CityInput& input) {
  if (const auto told = told_storeys(building.attributes, input)) {
    building.storeys = *told;
  } else if (building.floor_area > 0.0) {
    const double height = building.volume / building.floor_area;
    building.storeys = std::max(1.0, std::round(height / input.storey_height));
  }
}

void tell_filled(const Draft& draft, double own_volume, Report& report) {
  if (draft.body_volume && own_volume > 1.02 * *draft.body_volume + 1.0) {
    report.repair("space under overhangs or raised floors filled to the ground",
                  draft.building.origin);
  }
}

}  // namespace

std::vector<Building> city_buildings(const std::vector<Layer>& layers, std::size_t building_layers,
                                     const CityInput& input, Report& report) {
  const Geos geos;
  std::vector<Draft> drafts;
  for (std::size_t i = 0; i < building_layers; ++i) {
    auto some = drafts_of(geos, layers[i], input, report);
    std::move(some.begin(), some.end(), std::back_inserter(drafts));
  }
  warn_of_defaults(layers, building_layers, input, report);
  std::erase_if(drafts, [](const Draft& draft) { return draft.pieces.empty(); });
  std::vector<RoofPiece> pieces;
  for (std::size_t i = 0; i < drafts.size(); ++i) {
    for (RoofPiece& piece : drafts[i].pieces) {
      piece.building = static_cast<std::int32_t>(i);
      pieces.push_back(std::move(piece));
    }
  }
  snap_pieces(geos, pieces, drafts, report);
  const Arrangement arrangement = arrange(geos, pieces, drafts.size());
  tell_overlaps(arrangement, drafts, report);
  add_faces(geos, arrangement, pieces, drafts);
  std::vector<Building> buildings;
  for (std::size_t i = 0; i < drafts.size(); ++i) {
    Building& building = drafts[i].building;
    tell_filled(drafts[i], arrangement.own_volume[i], report);
    if (building.faces.empty()) {
      report.leave_out("nothing left of it beside the others", building.origin);
      continue;
    }
    count_storeys(building, input);
    buildings.push_back(std::move(building));
  }
  return buildings;
}

}  // namespace townskin_case
