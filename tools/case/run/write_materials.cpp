// The files of what things are made of: SurfProp and MatEleProp; of leaves LAD and LAD_simple.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

/// Albedo, emissivity, evaporation, density, heat capacity, conductivity and extinction of a layer;
/// those of the skin count where it is the outer one.
using Properties = std::array<double, 7>;

/// All lines of SurfProp, each under its code.
class Codes {
 public:
  Codes() {
    // The model takes the first line for whatever has no build-up: water and the far boundary. As
    // a whole, cities have an albedo of 0.10 to 0.27, 0.15 in the mean, and an emissivity of 0.85
    // to 0.96 (Oke 1987, table 8.2).
    code({0.15, 0.95, 0.0, 1000.0, 4180.0, 0.57, 1000.0});
  }
  std::int32_t code(const Properties& properties) {
    const auto next = static_cast<std::int32_t>(lines.size()) + 1;
    const auto [known, is_new] = known_.try_emplace(properties, next);
    if (is_new) lines.push_back(properties);
    return known->second;
  }
  std::vector<Properties> lines;

 private:
  std::map<Properties, std::int32_t> known_;
};

void write_lines(const std::vector<Properties>& lines, const std::string& path) {
  TextFile out(path);
  out.line("# SurfCD alb ems beta rho cp alf wext");
  for (std::size_t n = 0; n < lines.size(); ++n) {
    const auto& [albedo, emissivity, evaporation, density, heat, conductivity, extinction] =
        lines[n];
    out.line(n + 1, albedo, emissivity, evaporation, density, heat, conductivity / (density * heat),
             extinction);
  }
  out.close();
}

std::int32_t hundredths(double density) {
  return std::max(1, static_cast<std::int32_t>(std::lround(density * 100.0)));
}

/// Kinds of trees: densities to a hundredth, and the number of each.
std::map<std::int32_t, std::int32_t> kinds_of(const std::vector<LeafCell>& leaves) {
  std::map<std::int32_t, std::int32_t> kinds;
  for (const LeafCell& leaf : leaves) kinds.try_emplace(hundredths(leaf.density), 0);
  std::int32_t number = 0;
  for (auto& [density, kind] : kinds) kind = ++number;
  return kinds;
}

}  // namespace

void write_materials(const RunData& run, const RunFolder& folder) {
  TextFile out(folder.path(file::kMatEleProp));
  out.line("# surfid pos strct - - nolyr thick SurfCD");
  Codes codes;
  for (const Material& material : run.stock.materials) {
    const BuildUp& of = material.build_up;
    for (const Layer& layer : of.layers) {
      const std::int32_t code =
          codes.code({of.albedo, of.emissivity, of.evaporation, layer.density, layer.heat_capacity,
                      layer.conductivity, of.extinction});
      out.line(material.surface, static_cast<std::int32_t>(material.position),
               material.construction, 0, 0, of.layers.size(), layer.thickness, code);
    }
  }
  out.close();
  for (const std::string& path : folder.monthly(file::kSurfProp)) write_lines(codes.lines, path);
}

void write_trees(const RunData& run, const RunFolder& folder) {
  const std::map<std::int32_t, std::int32_t> kinds = kinds_of(run.scene.leaves);
  TextFile cells(folder.path(file::kLad));
  cells.line("# i j k TreeID");
  for (const LeafCell& leaf : run.scene.leaves) {
    cells.line(leaf.cell[0], leaf.cell[1], leaf.cell[2] - 1, kinds.at(hundredths(leaf.density)));
  }
  cells.close();
  for (const std::string& path : folder.monthly(file::kLadSimple)) {
    TextFile out(path);
    out.line("# TreeID LAD");
    for (const auto& [density, kind] : kinds) out.line(kind, density / 100.0);
    out.close();
  }
}

}  // namespace townskin_case
