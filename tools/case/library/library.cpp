#include "library/library.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "site/toml_table.hpp"
#include "wall_clock.hpp"

namespace townskin_case {
namespace {

constexpr Bounds kShare{.least = 0.0, .most = 1.0};
constexpr Bounds kPositive{.least = 0.0, .most = 1e6, .open = true};

/// The sources of a table's numbers: each number that is asked for must have one.
class Sources {
 public:
  explicit Sources(TomlTable& table) : of_(table), names_(table.named_texts("sources")) {}
  void need(const std::string& key) {
    if (of_.has(key) && !names_.contains(key)) {
      of_.fault(key,
                key + " of " + of_.name() + " has no source: sources." + key + " is not there");
    }
  }

 private:
  TomlTable& of_;
  std::map<std::string, std::string> names_;
};

Layer read_material(TomlTable table) {
  Layer material;
  material.density = table.needed(table.number("density", kPositive), "density");
  material.heat_capacity = table.needed(table.number("heat_capacity", kPositive), "heat_capacity");
  material.conductivity = table.needed(table.number("conductivity", kPositive), "conductivity");
  table.needed(table.text("source"), "source");
  table.finish();
  return material;
}

BuildUp read_build_up(const std::string& name, TomlTable table,
                      const std::map<std::string, Layer>& materials) {
  BuildUp build_up{.name = name, .layers = {}};
  Sources sources(table);
  for (TomlTable& part : table.tables("layers")) {
    const std::string material = part.needed(part.text("material"), "material");
    const auto found = materials.find(material);
    if (found == materials.end()) part.fault("material", "there is no material " + material);
    Layer layer = found->second;
    layer.thickness = part.needed(
        part.number("thickness", {.least = 0.0, .most = 10.0, .open = true}), "thickness");
    part.finish();
    build_up.layers.push_back(layer);
  }
  if (build_up.layers.empty()) table.fault("", table.name() + " has no layers");
  build_up.albedo = table.needed(table.number("albedo", kShare), "albedo");
  build_up.emissivity = table.needed(table.number("emissivity", kShare), "emissivity");
  build_up.evaporation = table.number("evaporation", kShare).value_or(0.0);
  // What is opaque stops the sun in its first millimetres.
  build_up.extinction = table.number("extinction", {.least = 0.0, .most = 1e6}).value_or(1000.0);
  for (const char* key : {"layers", "albedo", "emissivity", "evaporation", "extinction"}) {
    sources.need(key);
  }
  table.finish();
  return build_up;
}

void read_constructions(const std::string& file, Library& library) {
  const toml::table root = parse_toml(file);
  TomlTable top(root, file, "");
  std::map<std::string, Layer> materials;
  for (auto& [name, table] : top.named("material")) {
    materials.emplace(name, read_material(table));
  }
  for (auto& [name, table] : top.named("build_up")) {
    library.build_ups.emplace(name, read_build_up(name, table, materials));
  }
  const auto known = [&](TomlTable& table, const std::string& key) {
    std::string name = table.needed(table.text(key), key);
    if (!library.build_ups.contains(name)) table.fault(key, "there is no build_up " + name);
    return name;
  };
  for (auto& [name, table] : top.named("building")) {
    Sources sources(table);
    BuildingKind kind;
    kind.wall = known(table, "wall");
    kind.roof = known(table, "roof");
    kind.window_share =
        table.needed(table.number("window_share", {.least = 0.0, .most = 0.95}), "window_share");
    if (kind.window_share > 0.0) kind.window = known(table, "window");
    sources.need("window_share");
    if (table.has("window")) table.text("window");
    table.finish();
    library.buildings.emplace(name, kind);
  }
  if (std::optional<TomlTable> ground = top.table("ground")) {
    for (const auto& [kind, build_up] : top.named_texts("ground")) {
      if (build_up != "water" && !library.build_ups.contains(build_up)) {
        ground->fault(kind, "there is no build_up " + build_up);
      }
      library.ground.emplace(kind, build_up);
    }
  }
  top.finish();
}

/// A value for all hours, or one for each.
Use::Course read_course(TomlTable& table, const std::string& key, const Bounds& bounds) {
  const std::vector<double> values = table.needed(table.numbers(key, bounds), key);
  Use::Course course{};
  if (values.size() != 1 && values.size() != course.size()) {
    table.fault(key, key + " of " + table.name() + " must have 1 or 24 values");
  }
  for (std::size_t h = 0; h < course.size(); ++h) course[h] = values[values.size() == 1 ? 0 : h];
  return course;
}

std::optional<Use::Plant> read_plant(TomlTable& use) {
  std::optional<TomlTable> table = use.table("plant");
  if (!table) return std::nullopt;
  const auto minutes = [&](const std::string& key) {
    const std::optional<int> time = minutes_of_clock(table->needed(table->text(key), key));
    if (!time) table->fault(key, key + " must be a time of the day such as \"07:30\"");
    return *time;
  };
  const Use::Plant plant{minutes("start"), minutes("reached"), minutes("stop")};
  if (plant.start > plant.reached || plant.reached >= plant.stop) {
    table->fault("", "the plant must start, reach its set point and stop in this order");
  }
  table->needed(table->text("source"), "source");
  table->finish();
  return plant;
}

Use read_use(TomlTable table) {
  Sources sources(table);
  Use use;
  use.code = static_cast<int>(table.needed(table.integer("code", {.least = 1, .most = 8}), "code"));
  constexpr Bounds kHeat{.least = -1000.0, .most = 10000.0};
  constexpr Bounds kAir{.least = 0.0, .most = 100.0};
  constexpr Bounds kRoom{.least = -50.0, .most = 60.0};
  use.sensible = read_course(table, "sensible", kHeat);
  use.latent = read_course(table, "latent", kHeat);
  use.ventilation = read_course(table, "ventilation", kAir);
  use.cooled_to = table.needed(table.number("cooled_to", kRoom), "cooled_to");
  use.heated_to = table.needed(table.number("heated_to", kRoom), "heated_to");
  use.humidity = table.needed(table.number("humidity", {.least = 0.0, .most = 100.0}), "humidity");
  use.conditioned = table.needed(table.number("conditioned", kShare), "conditioned");
  use.sensible_share = table.needed(table.number("sensible_share", kShare), "sensible_share");
  use.cop = table.needed(table.number("cop", kPositive), "cop");
  use.releases = table.truth("releases").value_or(true);
  use.plant = read_plant(table);
  for (const char* key : {"sensible", "latent", "ventilation", "cooled_to", "heated_to", "humidity",
                          "conditioned", "sensible_share", "cop"}) {
    sources.need(key);
  }
  table.finish();
  return use;
}

}  // namespace

Library read_library(const std::string& constructions, const std::string& uses) {
  Library library;
  read_constructions(constructions, library);
  const toml::table root = parse_toml(uses);
  TomlTable top(root, uses, "");
  for (auto& [name, table] : top.named("use")) library.uses.emplace(name, read_use(table));
  top.finish();
  return library;
}

std::string shipped_library(const std::string& name) {
  namespace fs = std::filesystem;
  std::error_code none;
  const fs::path program = fs::read_symlink("/proc/self/exe", none);
  for (const fs::path& folder :
       {program.parent_path().parent_path() / "share/townskin/library", fs::path(TOWNSKIN_LIBRARY),
        fs::path(TOWNSKIN_INSTALLED_LIBRARY)}) {
    if (fs::exists(folder / name, none)) return (folder / name).string();
  }
  return name;  // reading it tells that it is not there
}

}  // namespace townskin_case
