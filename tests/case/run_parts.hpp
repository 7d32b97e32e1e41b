// All that a run is written from, of the block on its plate; for tests of whole runs.
#pragma once

#include "block_scene.hpp"
#include "make_epw.hpp"
#include "rays/sunlit.hpp"
#include "run/run_data.hpp"
#include "temp_folder.hpp"
#include "weather/epw.hpp"

namespace townskin_case {

struct Parts {
  explicit Parts(const DayChoice& choice, Scene made = block_scene::scene(),
                 const Site& of = Site())
      : site(of), scene(std::move(made)) {
    site.run.days = choice;
    const TempFolder folder;
    folder.write("a.epw", make_epw::text());
    epw = read_epw(folder.path("a.epw"), report);
    days = choose_days(epw, choice);
    weather = weather_lines(days, epw.has_direct, epw.has_infrared);
    flow = flow_setup(site, scene, days, report);
    sun = sun_members({epw.latitude, epw.longitude, epw.zone}, days);
    stock = furnish(
        city, read_library(shipped_library("constructions.toml"), shipped_library("uses.toml")),
        site, scene, report);
    const RayScene ray_scene(scene);
    factors = view_factors(scene, ray_scene, {.rays = 256});
    sunlit.hours = sun_hours(sun, days);
    std::vector<Vector3> suns;
    for (const SunHour& hour : sunlit.hours) suns.push_back(hour.sun);
    sunlit.fraction = sunlit_fractions(scene, ray_scene, suns, {});
  }
  [[nodiscard]] RunData run() const {
    return {site, city, scene, stock, factors, sunlit, days, weather, sun, flow};
  }

  Report report;
  Site site;
  City city = block_scene::city();
  Scene scene;
  Epw epw;
  Days days;
  std::vector<WeatherLine> weather;
  SunMembers sun;
  FlowSetup flow;
  Stock stock;
  ViewFactors factors;
  Sunlit sunlit;
};

/// A crown of one cell over the corner of the plate, with patches on all its faces.
inline void add_tree(Scene& scene) {
  using block_scene::add;
  using block_scene::kCell;
  using block_scene::kLayer;
  const Vector3 x{kCell, 0, 0}, y{0, kCell, 0}, z{0, 0, kLayer}, low{0, 5 * kCell, kLayer};
  Group face;
  face.kind = PatchKind::tree;
  face.cell = {1, 6, 2};
  scene.leaves.push_back({face.cell, 1.234});
  const Vector3 back = -1.0 * x;
  add(scene, face, low, z, y);
  add(scene, face, low + x, y, z);
  add(scene, face, low, x, z);
  add(scene, face, low + x + y, back, z);
  add(scene, face, low, y, x);
  add(scene, face, low + z, x, y);
}

}  // namespace townskin_case
