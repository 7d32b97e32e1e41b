#include "site.hpp"

#include <cmath>
#include <filesystem>

#include "frame/numbers.hpp"
#include "toml_table.hpp"

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
Names beside(const std::string& site_file, Names names) {
  for (std::string& name : names) name = beside(site_file, name);
  return names;
}

void read_input(TomlTable table, const std::string& file, SiteInput& input) {
  for (const auto& [key, files] :
       {std::pair{"buildings", &input.buildings}, std::pair{"ground", &input.ground},
        std::pair{"trees", &input.trees}}) {
    if (const auto names = table.texts(key)) *files = beside(file, *names);
  }
  if (const auto name = table.text("weather")) input.weather = beside(file, *name);
  take(input.crs, table.text("crs"));
  take(input.latitude, table.number("latitude", {.least = -90.0, .most = 90.0}));
  take(input.longitude, table.number("longitude", {.least = -180.0, .most = 180.0}));
  take(input.lod, table.number("lod", {.least = 0.0, .most = 4.0}));
  table.finish();
}

void read_heights(TomlTable table, SiteHeights& heights) {
  take(heights.attributes, table.texts("attributes"));
  take(heights.above, table.text("above"));
  if (heights.above != "auto" && heights.above != "ground" && heights.above != "sea") {
    table.fault("above", "above of [heights] must be auto, ground or sea");
  }
  take(heights.storey, table.number("storey", {.least = 1.0, .most = 20.0}));
  take(heights.fallback, table.number("default", kSize));
  table.finish();
}

void read_trees(TomlTable table, SiteTrees& trees) {
  take(trees.height, table.texts("height"));
  take(trees.crown_base, table.texts("crown_base"));
  take(trees.crown_radius, table.texts("crown_radius"));
  take(trees.crown_diameter, table.texts("crown_diameter"));
  take(trees.leaf_area, table.texts("leaf_area"));
  take(trees.leaf_area_density,
       table.number("leaf_area_density", {.least = 0.0, .most = 100.0, .open = true}));
  take(trees.division, table.integer("division", {.least = 1, .most = 16}));
  table.finish();
}

void read_ground(TomlTable table, SiteGround& ground) {
  take(ground.attributes, table.texts("attributes"));
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
  if (const auto sides = table.numbers("rectangle", {.least = -1e5, .most = 1e5})) {
    if (sides->size() != 4 || (*sides)[0] >= (*sides)[2] || (*sides)[1] >= (*sides)[3]) {
      table.fault("rectangle", "rectangle of [grid] is west, south, east and north of the centre");
    }
    grid.rectangle = {(*sides)[0], (*sides)[1], (*sides)[2], (*sides)[3]};
  }
  take(grid.radius, table.number("radius", kSize));
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
  part("input", [&](TomlTable& table) { read_input(table, file, site.input); });
  part("heights", [&](TomlTable& table) { read_heights(table, site.heights); });
  part("trees", [&](TomlTable& table) { read_trees(table, site.trees); });
  part("ground", [&](TomlTable& table) { read_ground(table, site.ground); });
  part("grid", [&](TomlTable& table) { read_grid(table, site.grid); });
  part("rays", [&](TomlTable& table) { read_rays(table, site.rays); });
  part("run", [&](TomlTable& table) { read_run(table, site.run); });
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
