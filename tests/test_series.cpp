// The series of weather, room heat, sunlit fractions and water: every fault of their files and of
// the group of the sunlit fractions. (Their values stand in the references of whole runs.)
#include <gtest/gtest.h>

#include <functional>

#include "buildings/rmheat.hpp"
#include "fault_table.hpp"
#include "inputs/weather.hpp"
#include "inputs/wtrtmp.hpp"
#include "radiation/shade.hpp"
#include "recorded_log.hpp"

namespace {

/// Faults of a file: its table, its name, and how a run gets at the values of hour 1.
struct Reader {
  std::string table, file;
  std::function<void(frame::Log&, frame::TextInput&, tsrf_module_calendar::Data&)> read;
};

tsrf_module_patch::Data patches(std::vector<std::int32_t> PID) {
  tsrf_module_patch::Data patch;
  patch.PID = std::move(PID);
  patch.mpatch = 3;
  patch.type = {4, 3, 4};
  patch.by_pid = frame::CodeIndex(patch.PID);
  return patch;
}

TEST(Series, ReportEveryFaultOfTheirFiles) {
  const Reader readers[] = {
      {"weather", "Weather",
       [](auto& log, auto& file, auto& calendar) {
         tsrf_module_weather::Data data;
         set_weather(log, file, 0.0, calendar, data);
       }},
      {"rmheat", "RmHeat",
       [](auto& log, auto& file, auto& calendar) {
         tsrf_module_rmheat::Data data;
         read_rmheat(log, file, data);
         set_rmheat(log, file, 3600.0, calendar, data);
       }},
      {"shade", "Sun",
       [](auto& log, auto& file, auto& calendar) {
         tsrf_module_shade::Data data;
         std::vector<double> fsun(3);
         frame::Crew crew;
         set_shade(log, crew, &file, 3600.0, patches({7, 2000000000, -3}), calendar, data, fsun);
       }},
      {"wtrtmp", "WaterTemp", [](auto& log, auto& file, auto& calendar) {
         tsrf_module_wtrtmp::Data data;
         data.settings.NITEM = 1;
         const auto patch = patches({5, 6, 8});
         read_wtrtmp(log, file, patch, data);
         set_wtrtmp(log, file, 3600.0, patch, calendar, data);
       }}};
  for (const Reader& reader : readers) {
    for (const FaultCase& c : fault_table(reader.table)) {
      RecordedLog recorded;
      tsrf_module_calendar::Data calendar;
      frame::TextInput file(reader.file + ".txt", "title\n" + c.input);
      EXPECT_EQ(recorded.lines_of([&] { reader.read(recorded.log, file, calendar); }), c.lines)
          << reader.table << ": " << c.input;
    }
  }
}

TEST(Series, ShadeChecksItsSettings) {
  for (const FaultCase& c : fault_table("shade_group")) {
    RecordedLog recorded;
    tsrf_module_shade::Data data;
    frame::TextInput control("control", "&TSRF_SHADE " + c.input.substr(2) + " /");
    const std::string log =
        recorded.lines_of([&] { inputdata(recorded.log, control, c.input[0] == '1', data); });
    EXPECT_TRUE(log.ends_with(c.lines + "(tsrf_module_shade)(inputdata)\n")) << log;
  }
}

}  // namespace
