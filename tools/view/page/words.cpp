// What a page holds in words and in few numbers: times, weather, buildings, materials.
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "page/payload.hpp"

namespace townskin_view {

namespace {

using nlohmann::json;

/// JSON has no NaN: null stands for a value that is not there.
json number(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

json times_of(const RunModel& run) {
  json times = json::array();
  double start = 0.0;  // days of the axis of curves follow each other, whatever lies between them
  const Hour* before = nullptr;
  for (const Hour& hour : run.hours) {
    if (before != nullptr && (hour.month != before->month || hour.day != before->day))
      start += 24.0;
    before = &hour;
    std::size_t row = 0;
    for (std::size_t n = 0; n < run.properties.size(); ++n) {
      if (run.properties[n].month == hour.month) row = n;
    }
    times.push_back({{"label", hour.text},
                     {"hour", hour.hour},
                     {"at", start + hour.hour},
                     {"properties", row}});
  }
  return times;
}

/// The series of the whole run, a chart for each unit.
json charts_of(const RunModel& run) {
  static const std::map<std::string_view, std::string_view> kTitles{
      {"W/m2", "Sun and sky"}, {"%", "Relative humidity"}, {"m/s", "Wind"}};
  std::vector<std::pair<std::string_view, json>> charts;
  for (const Field& field : run.fields) {
    if (field.quantity->place != Place::run || field.hours != run.hours.size()) continue;
    const std::string_view unit = field.quantity->shown_units;
    const auto title = kTitles.find(unit);
    if (title == kTitles.end()) continue;
    auto chart = std::ranges::find(charts, unit, &std::pair<std::string_view, json>::first);
    if (chart == charts.end()) {
      charts.emplace_back(unit, json{{"title", std::string(title->second)},
                                     {"unit", with_signs(unit)},
                                     {"lines", json::array()}});
      chart = charts.end() - 1;
    }
    json values = json::array();
    for (std::size_t h = 0; h < field.hours; ++h) {
      values.push_back(number(static_cast<double>(field.stored(h)[0])));
    }
    chart->second["lines"].push_back(
        {{"name", std::string(field.quantity->long_name)}, {"values", std::move(values)}});
  }
  json list = json::array();
  for (auto& [unit, chart] : charts) list.push_back(std::move(chart));
  return list;
}

json materials_of(const RunModel& run) {
  json list = json::array();
  for (const Material& material : run.materials) {
    json layers = json::array();
    for (const Layer& layer : material.layers) {
      layers.push_back({{"code", layer.SurfCD},
                        {"thickness", number(layer.thickness)},
                        {"conductivity", number(layer.conductivity)},
                        {"capacity", number(layer.heat_capacity)}});
    }
    list.push_back({{"code", material.surfid}, {"layers", std::move(layers)}});
  }
  return list;
}

json properties_of(const RunModel& run) {
  json list = json::array();
  for (const Properties& properties : run.properties) {
    json albedo = json::array(), emissivity = json::array();
    for (const double value : properties.albedo) albedo.push_back(number(value));
    for (const double value : properties.emissivity) emissivity.push_back(number(value));
    list.push_back({{"albedo", std::move(albedo)}, {"emissivity", std::move(emissivity)}});
  }
  return list;
}

}  // namespace

void add_words(const RunModel& run, json& head) {
  head["format"] = 1;
  head["title"] = run.name;
  head["notes"] = run.notes;
  head["times"] = times_of(run);
  head["charts"] = charts_of(run);
  head["materials"] = materials_of(run);
  head["properties"] = properties_of(run);
  head["north"] = run.north;
  json air = json::array(), buildings = json::array(), areas = json::array(), kinds = json::array();
  for (const Sky& sky : run.sky) air.push_back(number(sky.air));
  for (const Building& building : run.buildings) {
    buildings.push_back(building.BldID);
    areas.push_back(number(building.floors * building.floor_area));
  }
  for (std::size_t k = 0; k < kKinds; ++k) kinds.push_back(name_of(static_cast<Kind>(k)));
  head["air"] = std::move(air);
  head["buildings"] = std::move(buildings);
  head["floor_areas"] = std::move(areas);
  head["kinds"] = std::move(kinds);
}

std::string with_signs(std::string_view units) {
  static const std::vector<std::pair<std::string_view, std::string_view>> kSigns{
      {"deg C", "°C"}, {"m2", "m²"}, {"m3", "m³"}};
  std::string text(units);
  for (const auto& [plain, sign] : kSigns) {
    for (std::size_t at = text.find(plain); at != std::string::npos;
         at = text.find(plain, at + sign.size())) {
      text.replace(at, plain.size(), sign);
    }
  }
  return text;
}

}  // namespace townskin_view
