#include "radiation/phydat.hpp"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "frame/namelist.hpp"
#include "inputs/moist_air.hpp"

namespace tsrf_module_phydat {

namespace {

constexpr double kRadian = 0.017453292519943295;
constexpr float kRadianSingle = 0.017453292F;
constexpr double kSolarConstant = 1365.0;  // [W/m2]
constexpr double kClockMeridian = 135.0;   // the meridian that the clock of dated runs keeps [deg]
constexpr double kMmHgPerPascal = 0.007500616827041697;

/// Rule of a member that the user has to give.
frame::Check given(std::string_view name, const double& value) {
  return [name, &value]() -> std::vector<std::string> {
    if (value != kNotGiven) return {};
    return {"lack of data : " + std::string(name)};
  };
}

frame::Check ppa_is_good(const double& value) {
  return [&value] {
    auto lines = given("ppa", value)();
    if (lines.empty()) lines = frame::positive("ppa =", value)();
    return lines;
  };
}

frame::Check months_are_good(const std::array<double, 12>& values) {
  return [&values]() -> std::vector<std::string> {
    for (std::size_t m = 0; m < values.size(); ++m) {
      if (values[m] > 0.0) continue;
      return {frame::items("m,ppa_month(m) =", m + 1, values[m]), "it must be > 0"};
    }
    return {};
  };
}

/// The rules hold for an absent group as well: its members are then not given.
void read_group(frame::Log& log, frame::TextInput& control, frame::Group group) {
  if (!group.read(log, control)) group.check(log);
}

std::int32_t nearest(double value) {
  return static_cast<std::int32_t>(value + std::copysign(0.5, value));
}

/// Day of a leap year, from 1 on 1 January.
std::int32_t day_number(std::int32_t month, std::int32_t day) {
  return day + 30 * month + (month + month / 8) / 2 - (month + 7) / 10 - 30;
}

struct SolarDay {
  float declination;       // [rad]
  float equation_of_time;  // [h]
};

/// Fourier series of the sun's course through the year. What is kept of them is single precision.
SolarDay solar_day(std::int32_t day) {
  const double w = static_cast<float>(day * 0.01716717);
  const double degrees = 0.3622133 - 23.24763 * std::cos(w + 0.153231) -
                         0.3368908 * std::cos(2.0 * w + 0.2070988) -
                         0.1852646 * std::cos(3.0 * w + 0.6201293);
  const double hours = -0.0002786409 + 0.1227715 * std::cos(w + 1.498311) -
                       0.1654575 * std::cos(2.0 * w - 1.261546) -
                       0.00535383 * std::cos(3.0 * w - 1.1571);
  return {static_cast<float>(degrees) * kRadianSingle, static_cast<float>(hours)};
}

/// Sine and cosine rounded once from double precision, so that they are the same with every
/// mathematics library.
struct SineCosine {
  explicit SineCosine(float angle)
      : sine(static_cast<float>(std::sin(static_cast<double>(angle)))),
        cosine(static_cast<float>(std::cos(static_cast<double>(angle)))) {}
  float sine;
  float cosine;
};

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_phydat)\n(inputdata)");
  read_group(log, control,
             {"DATE_AND_PLACE",
              {{"DATE", data.DATE},
               {"SDECL", data.SDECL, given("sdecl", data.SDECL)},
               {"LAT", data.LAT, given("lat", data.LAT)},
               {"LNG", data.LNG, given("lng", data.LNG)},
               {"RANGLE", data.RANGLE, given("rangle", data.RANGLE)},
               {"SHANGLE", data.SHANGLE}}});
  read_group(log, control,
             {"JMK_RADSKY",
              {{"PPA", data.PPA, ppa_is_good(data.PPA)},
               {"EVAP", data.EVAP},
               {"TA", data.TA},
               {"PPA_MONTH", data.PPA_MONTH, months_are_good(data.PPA_MONTH)}}});
}

SunVector sunvec_oneday(const Data& data, double hour) {
  const double sin_lat = std::sin(data.LAT * kRadian);
  const double cos_lat = std::cos(data.LAT * kRadian);
  const double sin_decl = std::sin(data.SDECL * kRadian);
  const double cos_decl = std::cos(data.SDECL * kRadian);

  const double h = ((std::fmod(hour, 24.0) - 12.0) * 15.0 + data.SHANGLE) * kRadian;
  // At noon rounding can carry sine and cosine beyond 1; the sun must not vanish then.
  const double sin_alt =
      std::clamp(std::cos(h) * (cos_lat * cos_decl) + sin_decl * sin_lat, -1.0, 1.0);
  const double cos_alt = std::cos(std::asin(sin_alt));
  const double cos_azimuth =
      std::clamp((cos_lat * sin_decl - sin_lat * cos_decl * std::cos(h)) / cos_alt, -1.0, 1.0);
  const double side = -cos_decl * std::sin(h) >= 0.0 ? 1.0 : -1.0;
  // The rotation is added before the side is applied: it turns the sun one way before noon and
  // the other way after it. Runs rely on this.
  const double azimuth = side * (std::acos(cos_azimuth) + data.RANGLE * kRadian);
  return {std::sin(azimuth) * cos_alt, std::cos(azimuth) * cos_alt, sin_alt};
}

SunVector sunvec_mltday(frame::Log& log, tsrf_module_calendar::Data& calendar, const Data& data,
                        double time) {
  static_assert(FLT_EVAL_METHOD == 0, "single-precision steps must round to single precision");
  const tsrf_module_calendar::Date date = tsrf_module_calendar::sec2date(log, calendar, time);
  const SolarDay day = solar_day(day_number(nearest(date[1]), nearest(date[2])));
  const auto clock = static_cast<float>(date[3] + date[4] / 60.0 + date[5] / 3600.0);
  const double solar_hours = static_cast<double>(day.equation_of_time) + clock - 12.0;
  const auto hour_angle = static_cast<float>((data.LNG - kClockMeridian) + solar_hours * 15.0);

  const SineCosine lat(static_cast<float>(data.LAT) * kRadianSingle);
  const SineCosine decl(day.declination);
  const SineCosine h(hour_angle * kRadianSingle);
  const float x = -h.sine * decl.cosine;
  const float y = lat.cosine * decl.sine - lat.sine * decl.cosine * h.cosine;
  const float z = decl.sine * lat.sine + lat.cosine * decl.cosine * h.cosine;
  return {x, y, z};
}

SkyFluxes solar_split(const Data& data, double sinalt) {
  if (sinalt < 1e-20) return {};
  const double transmitted = std::pow(data.PPA, 1.0 / sinalt);
  return {kSolarConstant * transmitted,
          0.5 * kSolarConstant * sinalt * (1.0 - transmitted) / (1.0 - 1.4 * std::log(data.PPA)),
          0.0};
}

SkyFluxes sky_fluxes(const Data& data, double sinalt, const MeasuredSky& measured) {
  SkyFluxes sky = solar_split(data, sinalt);
  const double total = sinalt * sky.direct + sky.scattered;
  if (total > 1e-6) {
    const double ratio = measured.SunRad / total;
    sky.direct *= ratio;
    sky.scattered *= ratio;
  } else {
    sky.direct = 0.0;
    sky.scattered = measured.SunRad;
  }
  if (measured.SunJdn >= 0.0) {
    sky.direct = measured.SunJdn;
    sky.scattered = measured.SunJsh;
  }
  sky.longwave = measured.AtmJsh > 0.0
                     ? measured.AtmJsh
                     : atm_longrad(measured.temperature, measured.vapour_pressure);
  return sky;
}

double atm_longrad(double T, double e) {
  return (0.526 + 0.076 * std::sqrt(kMmHgPerPascal * e)) * moist_air::kStefanBoltzmann *
         ((T * T) * (T * T));
}

void set_ppa(Data& data, std::int32_t month) {
  data.PPA = data.PPA_MONTH.at(static_cast<std::size_t>(month - 1));
}

}  // namespace tsrf_module_phydat
