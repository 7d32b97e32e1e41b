#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "why/why.hpp"

namespace townskin_view {

namespace {

__attribute__((format(printf, 1, 2))) std::string text(const char* form, ...) {
  std::array<char, 256> line{};
  va_list values;
  va_start(values, form);
  std::vsnprintf(line.data(), line.size(), form, values);
  va_end(values);
  return line.data();
}

/// "a wall of building 12", "ground".
std::string kind_of(const RunModel& run, std::size_t p) {
  std::string words(name_of(run.patches.kind[p]));
  if (run.patches.building[p] >= 0) words += " of building " + std::to_string(run.patches.BldID[p]);
  return words;
}

/// Where a normal looks, to the eighth of a turn.
std::string looks(const std::array<double, 3>& n) {
  constexpr double kEighth = 0.78539816339744831;
  constexpr std::array<const char*, 8> kWinds{"north", "north-east", "east", "south-east",
                                              "south", "south-west", "west", "north-west"};
  if (n[2] > 0.95) return "up";
  if (n[2] < -0.95) return "down";
  const auto eighth =
      static_cast<std::size_t>(std::lround(std::atan2(n[0], n[1]) / kEighth) + 8) % 8;
  return std::string(n[2] > 0.05 ? "up and " : n[2] < -0.05 ? "down and " : "") + kWinds[eighth];
}

double flux(const Why& why, std::string_view name) {
  const auto found = std::ranges::find(why.terms, name, &Term::name);
  return found == why.terms.end() ? 0.0 : found->flux;
}

std::string heading(const RunModel& run, const Why& why) {
  const std::size_t p = why.patch;
  std::string words = "patch " + std::to_string(run.patches.PID[p]) + " at " +
                      run.hours[why.hour].text + ": " + kind_of(run, p) +
                      text(", %.6g m2, looks ", run.patches.area[p]) + looks(run.patches.normal[p]);
  if (const Field* view = run.field("sky_view_factor"); view != nullptr) {
    words += text(", sees %.3f of the sky", view->exact[p]);
  }
  words += text("\n%.2f deg C, the air %.2f deg C", why.temperature, why.air);
  return words + "\n";
}

/// The same in one sentence: what the sun gives, and by which ways it goes.
std::string sentence(const RunModel& run, const Why& why) {
  const double sun = flux(why, "absorbed beam") + flux(why, "scattered sky") +
                     flux(why, "reflected from neighbours");
  const double longwave = flux(why, "long wave from the sky") +
                          flux(why, "long wave from neighbours") + flux(why, "emission");
  std::string words = text("It absorbs %.0f W/m2 of sunlight", sun);
  if (const Field* lit = run.field("sunlit_fraction"); lit != nullptr && sun > 0.5) {
    words += text(" (%.0f %% of it lies in the sun)",
                  100.0 * static_cast<double>(lit->stored(why.hour)[why.patch]));
  }
  const auto way = [&](double value, const char* gains, const char* loses) {
    if (std::abs(value) < 0.5) return;
    words += text("; %s %.0f W/m2", value > 0.0 ? gains : loses, std::abs(value));
  };
  way(longwave, "long wave leaves it a gain of", "it loses by long wave");
  way(flux(why, "convection"), "the air gives it", "the air takes");
  way(flux(why, "evaporation"), "dew gives it", "evaporation takes");
  way(flux(why, "conduction"), "what lies behind gives it", "what lies behind takes");
  return words + ".\n";
}

std::string balance(const RunModel& run, const Why& why) {
  std::string words = "\nterm                           W/m2\n";
  for (const Term& term : why.terms) {
    words += text("  %-25s %8.2f\n", std::string(term.name).c_str(), term.flux + 0.0);
  }
  return words + text("  %-25s %8.2f  (in the model 0: %s)\n", "sum", why.sum + 0.0,
                      run.dated ? "means of a month, temperatures a step before the fluxes"
                                : "the rest is what the digits of the files leave");
}

std::string partners(const RunModel& run, const Why& why) {
  if (why.givers.empty()) return "\nit sees no other patch, or the view factors are not known\n";
  std::string words = text("\n%-34s %6s %7s %7s %8s\n", "what it absorbs from", "view", "deg C",
                           "long", "short wave, W/m2");
  double longwave = why.all_gifts.longwave, shortwave = why.all_gifts.shortwave;
  for (const Giver& giver : why.givers) {
    const auto p = static_cast<std::size_t>(giver.partner.patch);
    const std::string name = std::to_string(run.patches.PID[p]) + " " + kind_of(run, p);
    words += text("  %-32s %6.4f %7.2f %7.2f %8.2f\n", name.c_str(), giver.partner.view_factor,
                  giver.temperature, giver.gift.longwave, giver.gift.shortwave);
    longwave -= giver.gift.longwave;
    shortwave -= giver.gift.shortwave;
  }
  const std::size_t others = why.all_givers - why.givers.size();
  if (others > 0) {
    words += text("  %-32s                %7.2f %8.2f\n",
                  (std::to_string(others) + " others").c_str(), longwave, shortwave);
  }
  return words;
}

}  // namespace

std::string in_words(const RunModel& run, const Why& why) {
  std::string words = heading(run, why);
  if (why.balanced) {
    words += sentence(run, why) + balance(run, why);
  } else {
    words += "No balance is solved for it: its temperature is given, or that of its leaves.\n";
  }
  words += partners(run, why);
  for (const std::string& remark : why.remarks) words += "note: " + remark + "\n";
  return words;
}

}  // namespace townskin_view
