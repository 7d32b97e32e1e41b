// The files that tell what changes through the day: Weather, Sun and WaterTemp.
#include <algorithm>
#include <set>

#include "inputs/calendar.hpp"
#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

/// Shares of the sun for patches, block by block.
class SunBlocks {
 public:
  explicit SunBlocks(const RunData& run) : run_(run), groups_(run.scene.groups.size()) {}

  /// The block of hour `h` of the list.
  void write(std::size_t h, TextFile& out) const {
    const SunHour& hour = run_.sunlit.hours[h];
    for (std::size_t p = 0; p < run_.scene.patches.size(); ++p) {
      line(hour.hour, p, share(h, static_cast<std::size_t>(run_.scene.patches[p].group)), out);
    }
  }
  /// A block without sun.
  void write_dark(TextFile& out) const {
    constexpr int kNoon = 12;
    for (std::size_t p = 0; p < run_.scene.patches.size(); ++p) line(kNoon, p, 0.0, out);
  }

 private:
  static void line(int hour, std::size_t p, double share, TextFile& out) {
    const auto id = static_cast<std::int64_t>(p) + 1;
    out.put(std::int64_t{hour}).put(" ").put(id).put(" ").put(id).put(" ").share(share, 4);
    out.end_line();
  }
  [[nodiscard]] bool faces(std::size_t h, std::size_t g) const {
    if (h >= run_.sunlit.hours.size()) return false;
    const SunHour& hour = run_.sunlit.hours[h];
    return hour.sun.z > 0.0 && dot(hour.sun, run_.scene.groups[g].normal) > 0.0;
  }
  [[nodiscard]] double at(std::size_t h, std::size_t g) const {
    return static_cast<double>(run_.sunlit.fraction[h * groups_ + g]);
  }
  /// While the sun stands behind a face its share has no weight, but the model draws a straight
  /// line to it: it is that of the next hour which counts, so that the sun comes and goes whole.
  [[nodiscard]] double share(std::size_t h, std::size_t g) const {
    if (faces(h, g) || run_.sunlit.hours[h].sun.z <= 0.0) return at(h, g);
    if (faces(h + 1, g)) return at(h + 1, g);
    return h > 0 && faces(h - 1, g) ? at(h - 1, g) : 0.0;
  }

  const RunData& run_;
  std::size_t groups_;
};

constexpr const char* kSunTitle = "# date, index, PID, sunlit fraction";

}  // namespace

void write_weather(const RunData& run, const RunFolder& folder) {
  TextFile out(folder.path(file::kWeather));
  out.line("# date, Temp, Rhum, Press, SunRad, Wind, SunJdn, SunJsh, AtmJsh");
  for (const WeatherLine& line : run.weather) {
    if (run.days.dated)
      out.put(std::int64_t{line.month}).put(" ").put(std::int64_t{line.day}).put(" ");
    out.line(line.hour, line.minute, line.Temp, line.Rhum, line.Press, line.SunRad, line.Wind,
             line.SunJdn, line.SunJsh, line.AtmJsh);
  }
  out.close();
}

void write_sun(const RunData& run, const RunFolder& folder) {
  const SunBlocks blocks(run);
  const std::vector<SunHour>& hours = run.sunlit.hours;
  if (!run.days.dated) {
    TextFile out(folder.path(file::kSun));
    out.line(kSunTitle);
    for (std::size_t h = 0; h < hours.size(); ++h) blocks.write(h, out);
    out.close();
    return;
  }
  std::size_t next = 0;
  for (const int month : folder.months()) {
    const SunDays days = sun_days(run.days);
    const int last = std::min(days.last, tsrf_module_calendar::days_in(month));
    for (int day = days.first; day <= last; ++day) {
      TextFile out(folder.daily(month, day, file::kSun));
      out.line(kSunTitle);
      const std::size_t before = next;
      for (; next < hours.size() && hours[next].month == month && hours[next].day == day; ++next) {
        blocks.write(next, out);
      }
      // The model reads the files of days outside the run too.
      if (next == before) blocks.write_dark(out);
      out.close();
    }
  }
}

void write_water(const RunData& run, const RunFolder& folder) {
  TextFile out(folder.monthly(file::kWaterTemp).front());
  out.line("# hour PID bid temperature");
  for (const int hour : {12, 24}) {
    for (std::size_t p = 0; p < run.scene.patches.size(); ++p) {
      const auto g = static_cast<std::size_t>(run.scene.patches[p].group);
      if (run.scene.groups[g].kind != PatchKind::water) continue;
      out.line(hour, p + 1, 1, run.days.mean_temperature);
    }
  }
  out.close();
}

}  // namespace townskin_case
