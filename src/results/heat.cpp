#include "results/heat.hpp"

#include <array>
#include <string_view>

#include "results/row.hpp"

namespace tsrf_module_io {

namespace {

constexpr std::array<std::string_view, 11> kTerms{"trans.",
                                                  "insol.",
                                                  "source",
                                                  "vent.(sens.)",
                                                  "vent.(lat.)",
                                                  "total",
                                                  "rel.(sens.)",
                                                  "rel.(lat.)",
                                                  "room temp.",
                                                  "slab temp.",
                                                  "total while the plant runs"};

}  // namespace

void write_heat(frame::Log& log, frame::TextOutput& file, const Settings& settings, When when,
                const BuildingColumns& buildings, FileStart& start) {
  if (!is_whole_hour(when.sod)) return;
  const std::int32_t hour = hour_slot(when.sod);
  start_file(log, file,
             "# Hr Bldid trans. insol. source vent.(sens.) vent.(lat.) total rel.(sens.) "
             "rel.(lat.) room temp. ",
             settings, hour, start);
  Row row;
  for (std::size_t b = 0; b < buildings.BldID.size(); ++b) {
    const Budget& q = buildings.bldat[b];
    const double floors = buildings.floor[b] * buildings.area[b];
    row.integer(hour, 3);
    row.integer(buildings.BldID[b], 10);
    row.real(q[0] / floors);
    row.real(q[1] / floors);
    row.real(q[2] / floors);
    row.real(q[3] / floors);
    row.real(q[10] / floors);
    row.real((q[4] + q[11]) / floors);
    row.real(q[5] / floors);
    row.real(q[12] / floors);
    row.real(buildings.Tr[b] - kCelsius);
    row.real(buildings.Tm[b] - kCelsius);
    row.real((q[6] + q[13]) / floors);
    if (!row.finite()) {
      refuse_result(log, "heat", when.iter, frame::items("BldID =", buildings.BldID[b]),
                    kTerms[row.unsound()]);
    }
    row.end(log, file);
  }
  file.flush(log);
}

}  // namespace tsrf_module_io
