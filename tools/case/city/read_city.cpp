#include "city/read_city.hpp"

#include "city/city_buildings.hpp"
#include "city/ground_data.hpp"
#include "city/layers.hpp"
#include "city/placement.hpp"
#include "city/tree_data.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {
namespace {

/// Ground and plants of city models first, so that files of ground lie over them.
void add_surroundings(const std::vector<Layer>& layers, const CityInput& input, City& city,
                      Report& report) {
  const Geos geos;
  const std::size_t first_ground = input.buildings.size();
  const std::size_t first_trees = first_ground + input.ground.size();
  const auto all_ground = [&](const std::vector<Feature>& features) {
    for (const Feature& feature : features) add_ground(geos, feature, input, city.ground, report);
  };
  const auto all_trees = [&](const std::vector<Feature>& features) {
    for (const Feature& feature : features) add_trees(feature, input, city.trees, report);
  };
  for (std::size_t i = 0; i < layers.size(); ++i) {
    if (i < first_trees) all_ground(layers[i].ground);
    if (i >= first_ground && i < first_trees) all_ground(layers[i].features);
    if (i < first_ground || i >= first_trees) all_trees(layers[i].plants);
    if (i >= first_trees) all_trees(layers[i].features);
  }
}

City read(const CityInput& input, Report& report) {
  std::vector<Layer> layers;
  for (const auto* files : {&input.buildings, &input.ground, &input.trees}) {
    for (const std::string& file : *files) layers.push_back(read_layer(file, input, report));
  }
  City city;
  if (const auto place = place_layers(layers, input.buildings.size(), input, report)) {
    city.placed = true;
    city.latitude = place->latitude;
    city.longitude = place->longitude;
  }
  city.buildings = city_buildings(layers, input.buildings.size(), input, report);
  if (city.buildings.empty()) {
    Report::fault("no building can be used", {input.buildings.front(), ""});
  }
  add_surroundings(layers, input, city, report);
  return city;
}

}  // namespace

City read_city(const CityInput& input, Report& report) {
  if (input.buildings.empty()) Report::fault("no file with buildings is given", {});
  try {
    return read(input, report);
  } catch (const GeosFailure& failure) {
    Report::fault(std::string("the plan of the city cannot be made: ") + failure.what(),
                  {input.buildings.front(), ""});
  }
}

}  // namespace townskin_case
