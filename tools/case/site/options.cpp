#include "site/options.hpp"

#include <CLI/CLI.hpp>
#include <optional>

namespace townskin_case {
namespace {

/// The flags as they are given; those that are not leave the site file's value.
struct Flags {
  std::string site_file;
  std::vector<std::string> buildings, ground, trees;
  std::optional<std::string> weather, crs, day, from, to, rotate;
  std::optional<double> latitude, longitude, lod, margin, radius, step;
  std::vector<double> cell;
  std::optional<std::int64_t> rays, seed, threads;
};

void declare(CLI::App& app, Flags& flags, Options& options, const std::string& version) {
  const CLI::Range angle(-90.0, 90.0);
  app.add_option("site", flags.site_file, "Site file (TOML); flags win over it");
  app.add_option("--buildings", flags.buildings,
                 "Buildings: GeoJSON or CityJSON; one file each time")
      ->allow_extra_args(false);
  app.add_option("--ground", flags.ground, "Ground by its kinds: GeoJSON; one file each time")
      ->allow_extra_args(false);
  app.add_option("--trees", flags.trees, "Trees: GeoJSON; one file each time")
      ->allow_extra_args(false);
  app.add_option("--weather", flags.weather, "Weather of a year: EPW");
  app.add_option("--day", flags.day, "Day that repeats: 07-21, hottest, coldest or mean-07");
  app.add_option("--from", flags.from, "First day of a run through real dates: 07-28");
  app.add_option("--to", flags.to, "Last day of it");
  app.add_option("-o,--output", options.output, "Run directory that is made");
  app.add_option("--crs", flags.crs, "Coordinate system of the data, such as EPSG:26912");
  app.add_option("--lat", flags.latitude, "Latitude where the data tell none [degree]")
      ->check(angle);
  app.add_option("--lon", flags.longitude, "Longitude where the data tell none [degree]")
      ->check(CLI::Range(-180.0, 180.0));
  app.add_option("--lod", flags.lod, "Highest level of detail that is taken")
      ->check(CLI::Range(0.0, 9.0));
  app.add_option("--cell", flags.cell, "Cells: DX[,DY,DZ] [m]")
      ->delimiter(',')
      ->expected(1, 3)
      ->check(CLI::Range(0.01, 1e5));
  app.add_option("--margin", flags.margin, "Open ground around the buildings [m]")
      ->check(CLI::Range(0.0, 1e5));
  app.add_option("--radius", flags.radius, "Radius about the centre that is taken [m]")
      ->check(CLI::Range(1.0, 1e5));
  app.add_option("--rotate", flags.rotate, "Turn of the cells: auto or an angle [degree]");
  app.add_option("--step", flags.step, "Time step [s]")->check(CLI::Range(1.0, 3600.0));
  app.add_option("--rays", flags.rays, "Rays of each group of patches")
      ->check(CLI::Range(16, 1 << 24));
  app.add_option("--seed", flags.seed, "Seed of the rays")->check(CLI::NonNegativeNumber);
  app.add_option("--threads", flags.threads, "Threads; 0: one for each processor")
      ->check(CLI::Range(0, 4096));
  app.add_flag("--strict", options.strict, "What cannot be repaired ends the work");
  app.add_flag("--force", options.force, "Replace an older run");
  app.set_version_flag("--version", version, "Print version, commit and compiler");
}

template <class Value, class Given>
void take(Value& value, const std::optional<Given>& given) {
  if (given) value = *given;
}

void apply_days(const Flags& flags, DayChoice& days) {
  if (flags.day && (flags.from || flags.to)) {
    throw Fault("--day repeats a day, --from and --to go through dates: give one of them");
  }
  if (flags.day) days = {*flags.day, {}, {}};
  take(days.from, flags.from);
  take(days.to, flags.to);
}

void apply(const Flags& flags, Site& site) {
  if (!flags.buildings.empty()) site.city.buildings = flags.buildings;
  if (!flags.ground.empty()) site.city.ground = flags.ground;
  if (!flags.trees.empty()) site.city.trees = flags.trees;
  take(site.weather, flags.weather);
  take(site.city.crs, flags.crs);
  take(site.latitude, flags.latitude);
  take(site.longitude, flags.longitude);
  take(site.city.lod, flags.lod);
  if (!flags.cell.empty()) set_cell(flags.cell, site.grid);
  take(site.grid.margin, flags.margin);
  if (flags.radius) site.city.clip_radius = flags.radius;
  if (flags.rotate && !set_rotation(*flags.rotate, site.grid)) {
    throw Fault("--rotate must be auto or an angle in degrees");
  }
  take(site.rays.rays, flags.rays);
  take(site.rays.seed, flags.seed);
  take(site.rays.threads, flags.threads);
  take(site.run.step, flags.step);
  if (!fits_hour(site.run.step)) throw Fault("--step must divide an hour");
  apply_days(flags, site.run.days);
}

}  // namespace

Options read_options(int argc, const char* const* argv, const std::string& version) {
  Options options;
  Flags flags;
  CLI::App app("townskin_case: from the data of a city to a run of townskin", "townskin_case");
  declare(app, flags, options, version);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    options.to_print = app.help();
    return options;
  } catch (const CLI::CallForVersion&) {
    options.to_print = version + "\n";
    return options;
  } catch (const CLI::ParseError& error) {
    throw Fault(error.what());
  }
  if (!flags.site_file.empty()) options.site = read_site(flags.site_file);
  apply(flags, options.site);
  if (options.site.city.buildings.empty()) throw Fault("no buildings: give --buildings FILE");
  if (options.site.weather.empty()) throw Fault("no weather: give --weather FILE");
  return options;
}

}  // namespace townskin_case
