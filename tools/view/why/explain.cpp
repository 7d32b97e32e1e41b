#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "inputs/moist_air.hpp"
#include "run/balance.hpp"
#include "why/why.hpp"

namespace townskin_view {

namespace {

constexpr std::size_t kTold = 5;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// As it is printed: to hundredths.
double rounded(double flux) { return std::round(flux * 100.0) / 100.0; }

std::int32_t whole_number(std::string_view text, std::string_view what) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw Fault("--why " + std::string(what) + ": PID@HOUR is wanted, as 1234@14");
  }
  return value;
}

/// The value of a quantity at a patch and hour; none where the run has not got it.
class At {
 public:
  At(const RunModel& run, std::size_t patch, std::size_t hour)
      : run_(run), patch_(patch), hour_(hour) {}
  [[nodiscard]] double of(std::string_view name, std::size_t patch) const {
    const Field* field = run_.field(name);
    if (field == nullptr) return kNone;
    if (field->derive == nullptr && !field->values.empty()) {
      return static_cast<double>(field->stored(hour_)[patch]);
    }
    std::vector<float> values(field->size);
    field->take(run_, hour_, values);
    return static_cast<double>(values[patch]);
  }
  [[nodiscard]] double of(std::string_view name) const { return of(name, patch_); }

 private:
  const RunModel& run_;
  std::size_t patch_, hour_;
};

std::size_t find_hour(const RunModel& run, const Question& question) {
  for (std::size_t h = run.hours.size(); h-- > 0;) {
    const Hour& hour = run.hours[h];
    const std::int32_t day = run.dated ? hour.month : hour.day;
    if (hour.hour == question.hour && (question.day == 0 || question.day == day)) return h;
  }
  if (run.hours.empty()) throw Fault(run.directory + " has no results of a whole hour yet");
  throw Fault("there are no results of that hour; the first are of " + run.hours.front().text +
              ", the last of " + run.hours.back().text);
}

void take_givers(const RunModel& run, Why& why) {
  const At at(run, why.patch, why.hour);
  const Field* temperature = run.field("surface_temperature");
  const Field* radiosity = run.field("longwave_radiosity");
  if (temperature == nullptr || radiosity == nullptr) return;
  for (const Partner& partner : run.all_partners) {
    const Gift gift = gift_of(run, why.patch, partner, why.hour);
    why.all_gifts.longwave += gift.longwave;
    why.all_gifts.shortwave += gift.shortwave;
    const auto from = static_cast<std::size_t>(partner.patch);
    double t = static_cast<double>(temperature->stored(why.hour)[from]);
    if (std::isnan(t)) {
      const double power = static_cast<double>(radiosity->stored(why.hour)[from]);
      t = std::pow(power / moist_air::kStefanBoltzmann, 0.25) - kZeroCelsius;
    }
    why.givers.push_back({partner, t, gift});
  }
  why.all_givers = why.givers.size();
  std::ranges::stable_sort(why.givers, std::ranges::greater{}, [](const Giver& giver) {
    return giver.gift.longwave + giver.gift.shortwave;
  });
  if (why.givers.size() > kTold) why.givers.resize(kTold);
}

/// What of the sunlight comes straight: by itself, or what sky and neighbours leave of the whole.
double beam_of(const At& at, double sky, double reflected, Why& why) {
  const double beam = at.of("absorbed_beam");
  if (!std::isnan(beam)) return beam;
  why.remarks.push_back(
      "the beam is what sky and neighbours leave of the absorbed light: leaves, or the days of a "
      "month, stand between the sun and the Sun file");
  return std::max(0.0, at.of("absorbed_shortwave") - sky - reflected);
}

}  // namespace

Question read_question(std::string_view text) {
  const std::size_t sign = text.find('@');
  if (sign == std::string_view::npos) {
    throw Fault("--why " + std::string(text) + ": PID@HOUR is wanted, as 1234@14");
  }
  Question question;
  question.PID = whole_number(text.substr(0, sign), text);
  std::string_view when = text.substr(sign + 1);
  if (const std::size_t colon = when.find(':'); colon != std::string_view::npos) {
    question.day = whole_number(when.substr(0, colon), text);
    when.remove_prefix(colon + 1);
  }
  question.hour = whole_number(when, text);
  if (question.hour < 1 || question.hour > 24) throw Fault("hours are 1 to 24");
  return question;
}

Why explain(const RunModel& run, const Question& question) {
  const std::int64_t found = run.find_patch(question.PID);
  if (found < 0) throw Fault(run.directory + " has no patch " + std::to_string(question.PID));
  Why why;
  why.patch = static_cast<std::size_t>(found);
  why.hour = find_hour(run, question);
  const At at(run, why.patch, why.hour);
  why.temperature = at.of("surface_temperature");
  if (std::isnan(why.temperature)) why.temperature = at.of("radiant_temperature");
  why.air = run.sky[why.hour].air;
  why.balanced = run.patches.balanced[why.patch] != 0 && !run.properties.empty();
  take_givers(run, why);
  if (!why.balanced) return why;
  const double T = why.temperature + kZeroCelsius;
  const double emissivity = run.emissivity(why.patch, why.hour);
  const double sky = at.of("absorbed_sky_light");
  const double reflected = why.all_gifts.shortwave;
  const double beam = beam_of(at, sky, reflected, why);
  const auto add = [&](std::string_view name, double flux) {
    why.terms.push_back({name, rounded(flux)});
    why.sum += why.terms.back().flux;
  };
  add("absorbed beam", beam);
  add("scattered sky", sky);
  add("reflected from neighbours", reflected);
  add("long wave from the sky", at.of("absorbed_sky_longwave"));
  add("long wave from neighbours", why.all_gifts.longwave);
  add("emission", -emissivity * moist_air::kStefanBoltzmann * (T * T) * (T * T));
  add("convection", run.convection * (why.air - why.temperature));
  add("evaporation", at.of("latent_heat"));
  add("conduction", -at.of("conducted_heat"));
  why.sum = rounded(why.sum);
  return why;
}

}  // namespace townskin_view
