// Which quantities the page shows, under which heading, and their codes.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "page/payload.hpp"

namespace townskin_view {

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr std::uint16_t kMissing = 65535;
constexpr double kGreatestCode = 65534.0;

/// A quantity of the page. A term of the balance is one only with, or without, another quantity:
/// what is known as parts does not count again as their sum.
struct Shown {
  std::string_view name, role;
  std::string_view with{};
  std::string_view without{};
};

constexpr std::array kShown = std::to_array<Shown>({
    {"surface_temperature", "temperature"},
    {"room_temperature", "temperature"},
    {"slab_temperature", "temperature"},
    {"absorbed_beam", "balance"},
    {"absorbed_sky_light", "balance", "absorbed_beam"},
    {"absorbed_reflected_light", "balance"},
    {"absorbed_shortwave", "balance", {}, "absorbed_beam"},
    {"absorbed_sky_longwave", "balance"},
    {"absorbed_neighbour_longwave", "balance"},
    {"absorbed_longwave", "balance", {}, "absorbed_sky_longwave"},
    {"emitted_longwave", "balance"},
    {"convected_heat", "balance"},
    {"latent_heat", "balance"},
    {"conducted_heat", "balance"},
    {"longwave_radiosity", "radiation"},
    {"shortwave_radiosity", "radiation"},
    {"sunlit_fraction", "share"},
    {"sky_view_factor", "share"},
    {"room_load", "building"},
    {"plant_load", "building"},
    {"room_wall_heat", "building"},
    {"room_sunlight", "building"},
    {"room_internal_heat", "building"},
    {"room_ventilation_sensible", "building"},
    {"room_ventilation_latent", "building"},
    {"released_sensible", "building"},
    {"released_latent", "building"},
});

/// All values of a field; one field at a time is formed.
std::vector<float> values_of(const RunModel& run, const Field& field) {
  std::vector<float> values(field.size * field.hours);
  for (std::size_t h = 0; h < field.hours; ++h) {
    field.take(run, h, std::span(values).subspan(h * field.size, field.size));
  }
  return values;
}

struct Coding {
  double offset = 0.0, scale = 0.0, high = 0.0;
  bool any = false;
};

Coding coding_of(std::span<const float> values) {
  float low = std::numeric_limits<float>::infinity(), high = -low;
  for (const float value : values) {
    if (!std::isfinite(value)) continue;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  if (low > high) return {};
  const double offset = low;
  return {offset, (static_cast<double>(high) - offset) / kGreatestCode, high, true};
}

std::vector<std::uint16_t> codes_of(std::span<const float> values, const Coding& coding) {
  std::vector<std::uint16_t> codes(values.size(), kMissing);
  const double factor = coding.scale > 0.0 ? 1.0 / coding.scale : 0.0;
  for (std::size_t n = 0; n < values.size(); ++n) {
    if (!std::isfinite(values[n])) continue;
    const double code = (static_cast<double>(values[n]) - coding.offset) * factor;
    codes[n] = static_cast<std::uint16_t>(std::clamp(code + 0.5, 0.0, kGreatestCode));
  }
  return codes;
}

/// Words before and behind a colon: what the choice shows, and what the legend adds.
std::pair<std::string, std::string> name_and_rest(std::string_view long_name) {
  const std::size_t colon = long_name.find(": ");
  if (colon == std::string_view::npos) return {std::string(long_name), {}};
  return {std::string(long_name.substr(0, colon)), std::string(long_name.substr(colon + 2))};
}

struct Words {
  std::string id, name, note;
};

Words words_of(const Quantity& quantity) {
  auto [name, rest] = name_and_rest(quantity.long_name);
  std::string note(quantity.sign);
  if (!rest.empty()) note = note.empty() ? rest : rest + "; " + note;
  if (quantity.place == Place::building && quantity.units == "W m-2") {
    note += note.empty() ? "per m² of floor" : "; per m² of floor";
  }
  return {std::string(quantity.name), std::move(name), std::move(note)};
}

void add_field(const Field& field, std::vector<float>&& values, const Words& words,
               std::string_view role, BlockSink& sink, nlohmann::json& list) {
  const Coding coding = coding_of(values);
  if (!coding.any) return;
  sink.add("field-" + words.id, codes_of(values, coding), field.hours > 1 ? field.size : 1);
  // What is below zero by rounding alone has no sign to show.
  const bool signed_flux = role != "temperature" && coding.offset < -0.02 * coding.high &&
                           coding.high > -0.02 * coding.offset;
  list.push_back({{"id", words.id},
                  {"name", words.name},
                  {"unit", with_signs(field.quantity->shown_units)},
                  {"note", words.note},
                  {"on", std::string(name_of(field.quantity->place))},
                  {"role", std::string(role)},
                  {"steady", field.quantity->span == Span::steady},
                  {"signed", signed_flux},
                  {"scale", coding.scale},
                  {"offset", coding.offset},
                  {"error", 0.5 * coding.scale},
                  {"low", coding.offset},
                  {"high", coding.high}});
}

/// Leaves have no temperature in the results; their long-wave radiosity tells it, as they are
/// black.
void add_leaf_temperature(const RunModel& run, BlockSink& sink, nlohmann::json& list) {
  const Field* field = run.field("radiant_temperature");
  const auto& kind = run.patches.kind;
  if (field == nullptr || std::ranges::find(kind, Kind::leaves) == kind.end()) return;
  std::vector<float> values = values_of(run, *field);
  for (std::size_t n = 0; n < values.size(); ++n) {
    if (kind[n % kind.size()] != Kind::leaves) values[n] = kNone;
  }
  add_field(*field, std::move(values),
            {"leaf_temperature", "leaf temperature", "of the leaves behind each outer face"},
            "temperature", sink, list);
}

}  // namespace

void add_fields(const RunModel& run, BlockSink& sink, nlohmann::json& head) {
  nlohmann::json list = nlohmann::json::array();
  for (const Shown& shown : kShown) {
    const Field* field = run.field(shown.name);
    if (field == nullptr) continue;
    const bool counts = (shown.with.empty() || run.field(shown.with) != nullptr) &&
                        (shown.without.empty() || run.field(shown.without) == nullptr);
    add_field(*field, values_of(run, *field), words_of(*field->quantity),
              counts ? shown.role : "radiation", sink, list);
    if (shown.name == "surface_temperature") add_leaf_temperature(run, sink, list);
  }
  head["fields"] = std::move(list);
}

}  // namespace townskin_view
