#include "site/site.hpp"

#include <cmath>
#include <filesystem>

#include "frame/numbers.hpp"
#include "site/toml_table.hpp"

namespace townskin_case {
namespace {

constexpr Bounds kLength{.least = 0.0, .most = 1e5};
constexpr Bounds kSize{.least = 0.0, .most = 1e5, .open = true};

/// Takes the value of a key where it is there.
template <class Value, class Given>
void take(Value& value, std::optional<Given> given) {
  if (given) value = static_cast<Value>(std::move(*given));
}

std::string beside(const std::string& site_file, const std::string& name) {
  return (std::filesystem::path(site_file).parent_path() / name).string();
}

void read_input(TomlTable table, const std::string& file, Site& site) {
  for (const auto& [key, files] :
       {std::pair{"buildings", &site.city.buildings}, std::pair{"ground", &site.city.ground},
        std::pair{"trees", &site.city.trees}}) {
    take(*files, table.texts(key));
    for (std::string& name : *files) name = beside(file, name);
  }
  if (const auto name = table.text("weather")) site.weather = beside(file, *name);
  take(site.city.crs, table.text("crs"));
  take(site.latitude, table.number("latitude", {.least = -90.0, .most = 90.0}));
  take(site.longitude, table.number("longitude", {.least = -180.0, .most = 180.0}));
  take(site.city.lod, table.number("lod", {.least = 0.0, .most = 9.0}));
  table.finish();
}

void read_attributes(TomlTable table, AttributeNames& names) {
  for (const auto& [key, list] :
       {std::pair{"height", &names.height}, std::pair{"ground_level", &names.ground_level},
        std::pair{"storeys", &names.storeys}, std::pair{"ground_kind", &names.ground_kind},
        std::pair{"tree_height", &names.tree_height}, std::pair{"crown_base", &names.crown_base},
        std::pair{"crown_radius", &names.crown_radius},
        std::pair{"crown_diameter", &names.crown_diameter},
        std::pair{"leaf_area", &names.leaf_area}}) {
    take(*list, table.texts(key));
  }
  table.finish();
}

void read_heights(TomlTable table, CityInput& city) {
  take(city.storey_height, table.number("storey", {.least = 1.0, .most = 20.0}));
  take(city.default_height, table.number("default", kSize));
  table.finish();
}

void read_trees(TomlTable table, Site& site) {
  TreeDefaults& tree = site.city.tree;
  take(tree.height, table.number("height", {.least = 0.0, .most = 150.0, .open = true}));
  take(tree.radius_of_height, table.number("radius_of_height", {.least = 0.01, .most = 5.0}));
  take(tree.base_of_height, table.number("base_of_height", {.least = 0.0, .most = 0.95}));
  take(tree.leaf_area_density,
       table.number("leaf_area_density", {.least = 0.0, .most = 100.0, .open = true}));
  take(site.grid.tree_division, table.integer("division", {.least = 1, .most = 16}));
  table.finish();
}

void read_clip(TomlTable table, CityInput& city) {
  constexpr Bounds kAny{.least = -1e9, .most = 1e9};
  if (const auto sides = table.numbers("rectangle", kAny)) {
    if (sides->size() != 4 || (*sides)[0] >= (*sides)[2] || (*sides)[1] >= (*sides)[3]) {
      table.fault("rectangle", "rectangle of [clip] is west, south, east, north");
    }
    city.clip_rectangle = {(*sides)[0], (*sides)[1], (*sides)[2], (*sides)[3]};
  }
  take(city.clip_radius, table.number("radius", kSize));
  if (const auto centre = table.numbers("centre", kAny)) {
    if (centre->size() != 2) table.fault("centre", "centre of [clip] is x, y");
    city.clip_centre = {(*centre)[0], (*centre)[1]};
  }
  table.finish();
}

void read_ground(TomlTable table, SiteGround& ground) {
  take(ground.fallback, table.text("default"));
  ground.kinds = table.named_texts("kinds");
  table.finish();
}

void read_grid(TomlTable table, SiteGrid& grid) {
  if (const auto cell = table.numbers("cell", kSize)) {
    if (cell->size() > 3) table.fault("cell", "cell of [grid] has 1 to 3 sizes: dx, dy, dz");
    set_cell(*cell, grid);
  }
  take(grid.margin, table.number("margin", kLength));
  take(grid.above, table.number("above", kLength));
  if (const auto angle = table.text_or_number("rotate")) {
    if (!set_rotation(*angle, grid)) {
      table.fault("rotate", "rotate of [grid] must be \"auto\" or an angle in degrees");
    }
  }
  take(grid.far_boundary, table.truth("far_boundary"));
  take(grid.sliver, table.number("sliver", {.least = 0.0, .most = 0.5}));
  table.finish();
}

void read_rays(TomlTable table, SiteRays& rays) {
  take(rays.rays, table.integer("rays", {.least = 16, .most = 1 << 24}));
  take(rays.partners, table.integer("partners", {.least = 1, .most = 1 << 24}));
  take(rays.sun_points, table.integer("sun_points", {.least = 1, .most = 1 << 20}));
  take(rays.seed, table.integer("seed", {.least = 0, .most = 9e15}));
  take(rays.threads, table.integer("threads", {.least = 0, .most = 4096}));
  table.finish();
}

void read_run(TomlTable table, SiteRun& run) {
  take(run.days.day, table.text("day"));
  take(run.days.from, table.text("from"));
  take(run.days.to, table.text("to"));
  take(run.step, table.number("step", {.least = 1.0, .most = 3600.0}));
  if (!fits_hour(run.step)) table.fault("step", "step of [run] must divide an hour");
  take(run.most_days, table.integer("most_days", {.least = 1, .most = 10000}));
  take(run.convection, table.number("convection", {.least = 0.0, .most = 1000.0}));
  table.finish();
}

void read_flow(TomlTable table, SiteFlow& flow) {
  take(flow.hour, table.integer("hour", {.least = 1, .most = 24}));
  take(flow.wind, table.number("wind", {.least = 0.1, .most = 60.0}));
  take(flow.direction, table.number("direction", {.least = 0.0, .most = 360.0}));
  take(flow.roughness, table.number("roughness", {.least = 1e-4, .most = 3.0}));
  take(flow.seconds, table.number("seconds", {.least = 1.0, .most = 86400.0}));
  take(flow.step, table.number("step", {.least = 0.01, .most = 3600.0}));
  table.finish();
}

void read_choice(TomlTable table, Choice& choice) {
  take(choice.attribute, table.text("attribute"));
  take(choice.fallback, table.text("default"));
  choice.table = table.named_texts("table");
  for (TomlTable& row : table.tables("up_to")) {
    const double limit = row.needed(row.number("value", {.least = -1e9, .most = 1e9}), "value");
    const std::string entry = row.needed(row.text("take"), "take");
    if (!choice.up_to.empty() && limit <= choice.up_to.back().first) {
      row.fault("value", "the values of up_to must rise");
    }
    row.finish();
    choice.up_to.emplace_back(limit, entry);
  }
  if (choice.attribute.empty() && (!choice.table.empty() || !choice.up_to.empty())) {
    table.fault("", table.name() + " names no attribute to choose by");
  }
  table.finish();
}

}  // namespace

void set_cell(std::span<const double> sizes, SiteGrid& grid) {
  grid.cell[0] = sizes[0];
  grid.cell[1] = sizes.size() > 1 ? sizes[1] : sizes[0];
  if (sizes.size() > 2) grid.cell[2] = sizes[2];
}

bool set_rotation(const std::string& text, SiteGrid& grid) {
  grid.rotate_along_streets = text == "auto";
  grid.rotate = 0.0;
  if (grid.rotate_along_streets) return true;
  return frame::parse_number(text, grid.rotate) && std::abs(grid.rotate) <= 360.0;
}

bool fits_hour(double step) {
  return step > 0.0 && step == std::floor(step) && std::fmod(3600.0, step) == 0.0;
}

Site read_site(const std::string& file) {
  const toml::table root = parse_toml(file);
  TomlTable top(root, file, "");
  Site site;
  const auto part = [&](const std::string& key, auto&& read) {
    if (std::optional<TomlTable> table = top.table(key)) read(*table);
  };
  part("input", [&](TomlTable& table) { read_input(table, file, site); });
  part("attributes", [&](TomlTable& table) { read_attributes(table, site.city.names); });
  part("heights", [&](TomlTable& table) { read_heights(table, site.city); });
  part("trees", [&](TomlTable& table) { read_trees(table, site); });
  part("clip", [&](TomlTable& table) { read_clip(table, site.city); });
  part("ground", [&](TomlTable& table) { read_ground(table, site.ground); });
  part("grid", [&](TomlTable& table) { read_grid(table, site.grid); });
  part("rays", [&](TomlTable& table) { read_rays(table, site.rays); });
  part("run", [&](TomlTable& table) { read_run(table, site.run); });
  part("flow", [&](TomlTable& table) { read_flow(table, site.flow); });
  part("construction", [&](TomlTable& table) { read_choice(table, site.construction); });
  part("use", [&](TomlTable& table) { read_choice(table, site.use); });
  part("library", [&](TomlTable& table) {
    if (const auto name = table.text("constructions")) site.constructions = beside(file, *name);
    if (const auto name = table.text("uses")) site.uses = beside(file, *name);
    table.finish();
  });
  top.finish();
  return site;
}

}  // namespace townskin_case
