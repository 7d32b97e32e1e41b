#include "make_case.hpp"

#include <cmath>
#include <numbers>
#include <ostream>

#include "city/read_city.hpp"
#include "progress_line.hpp"
#include "rays/sunlit.hpp"
#include "run/check_run.hpp"
#include "run/run_directory.hpp"
#include "run/summary.hpp"
#include "run/text_file.hpp"
#include "weather/epw.hpp"

namespace townskin_case {
namespace {

Library library_of(const Site& site) {
  const auto or_shipped = [](const std::string& named, const char* name) {
    return named.empty() ? shipped_library(name) : named;
  };
  return read_library(or_shipped(site.constructions, "constructions.toml"),
                      or_shipped(site.uses, "uses.toml"));
}

/// Kilometres between two places on the globe.
double distance(const PlaceAndClock& a, const Epw& b) {
  constexpr double kRadian = std::numbers::pi / 180.0;
  constexpr double kEarth = 6371.0;
  const double north = (a.latitude - b.latitude) * kRadian;
  const double east = std::remainder(a.longitude - b.longitude, 360.0) * kRadian *
                      std::cos(0.5 * (a.latitude + b.latitude) * kRadian);
  return kEarth * std::hypot(north, east);
}

/// Where the city stands: as its data tell, else as the user says, else where the weather is from.
PlaceAndClock place_of(const City& city, const Site& site, const Epw& epw, Report& report) {
  constexpr double kFar = 100.0;
  if (site.latitude.has_value() != site.longitude.has_value()) {
    throw Fault("a place needs both latitude and longitude");
  }
  PlaceAndClock place{epw.latitude, epw.longitude, epw.zone};
  if (city.placed) {
    place.latitude = city.latitude;
    place.longitude = city.longitude;
  } else if (site.latitude) {
    place.latitude = *site.latitude;
    place.longitude = *site.longitude;
  }
  const double away = distance(place, epw);
  if (away > kFar) {
    report.warning("the weather is from " + epw.place + ", " + std::to_string(std::lround(away)) +
                   " km away");
  }
  return place;
}

void check_rotation(const City& city, const Site& site) {
  const bool turned = site.grid.rotate_along_streets || site.grid.rotate != 0.0;
  if (turned && !city.trees.empty()) {
    throw Fault("cells cannot be turned where there are trees: their beams follow the cells");
  }
}

ViewFactors follow_rays(const Site& site, const Scene& scene, const RayScene& ray_scene,
                        const Voices& voices) {
  RaySettings settings;
  settings.rays = static_cast<std::uint32_t>(site.rays.rays);
  settings.seed = static_cast<std::uint64_t>(site.rays.seed);
  settings.partners = static_cast<std::size_t>(site.rays.partners);
  settings.threads = static_cast<unsigned>(site.rays.threads);
  ProgressLine line(voices.terminal, "view factors");
  return view_factors(scene, ray_scene, settings, line.progress());
}

Sunlit follow_sun(const Site& site, const Scene& scene, const RayScene& ray_scene,
                  std::vector<SunHour> hours, const Voices& voices) {
  SunSettings settings;
  settings.points = static_cast<std::uint32_t>(site.rays.sun_points);
  settings.seed = static_cast<std::uint64_t>(site.rays.seed);
  settings.threads = static_cast<unsigned>(site.rays.threads);
  std::vector<Vector3> suns;
  suns.reserve(hours.size());
  for (const SunHour& hour : hours) suns.push_back(hour.sun);
  ProgressLine line(voices.terminal, "sunlit fractions");
  return {std::move(hours), sunlit_fractions(scene, ray_scene, suns, settings, line.progress())};
}

/// All that was told, for whoever looks at the run later.
void write_log(const std::string& path, const Report& report,
               const std::vector<std::string>& summary) {
  TextFile out(path);
  for (const std::string& line : report.lines()) out.line(line);
  for (const std::string& line : summary) out.line(line);
  out.close();
}

}  // namespace

void make_case(const Options& options, const Cut& cut, Report& report, const Voices& voices) {
  const Site& site = options.site;
  RunDirectory::check_target(options.output, options.force);
  RunDirectory::tidy(options.output, report);
  const Library library = library_of(site);
  const Epw epw = read_epw(site.weather, report);
  const Days days = choose_days(epw, site.run.days);
  const City city = read_city(site.city, report);
  check_rotation(city, site);
  const SunMembers sun = sun_members(place_of(city, site, epw, report), days);
  Scene scene = cut(city, site, report);
  const Stock stock = furnish(city, library, site, scene, report);
  const FlowSetup flow = flow_setup(site, scene, days, report);
  const RayScene ray_scene(scene);
  const ViewFactors factors = follow_rays(site, scene, ray_scene, voices);
  const Sunlit sunlit = follow_sun(site, scene, ray_scene, sun_hours(sun, days), voices);
  const std::vector<WeatherLine> weather = weather_lines(days, epw.has_direct, epw.has_infrared);

  const RunData run{site, city, scene, stock, factors, sunlit, days, weather, sun, flow};
  RunDirectory directory(options.output, options.force);
  write_run(run, directory.path());
  const std::vector<std::string> summary = summary_of(run, try_run(run, directory.path()));
  write_log(directory.path() + "/case.log", report, summary);
  directory.finish();
  for (const std::string& line : summary) voices.screen << line << '\n';
}

}  // namespace townskin_case
