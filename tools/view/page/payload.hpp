// What a page holds of a run: a head in JSON and blocks of packed numbers, by name.
#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "run/run_model.hpp"

namespace townskin_view {

/// Takes the blocks one by one, so that one field at a time is in memory, and lists them in the
/// head.
class BlockSink {
 public:
  using Write = std::function<void(std::string_view name, const std::string& text)>;
  explicit BlockSink(Write write) : write_(std::move(write)) {}

  void add(const std::string& name, std::span<const std::uint8_t> numbers, std::size_t delta = 0);
  void add(const std::string& name, std::span<const std::uint16_t> numbers, std::size_t delta = 0);
  void add(const std::string& name, std::span<const std::int32_t> numbers, std::size_t delta = 0);
  [[nodiscard]] const nlohmann::json& list() const { return list_; }

 private:
  Write write_;
  nlohmann::json list_ = nlohmann::json::object();
};

/// Fields as 16-bit codes: value = offset + scale * code, 65535 where there is none.
void add_fields(const RunModel& run, BlockSink& sink, nlohmann::json& head);
/// Codes, kinds, areas, properties and partners of the patches.
void add_patches(const RunModel& run, BlockSink& sink, nlohmann::json& head);
/// Outlines, in millimetres about the middle of the district.
void add_shapes(const RunModel& run, BlockSink& sink, nlohmann::json& head);
/// Times, weather, buildings, materials.
void add_words(const RunModel& run, nlohmann::json& head);

/// Units as people read them, with their signs: "deg C" is "°C", "m2" is "m²".
[[nodiscard]] std::string with_signs(std::string_view units);

}  // namespace townskin_view
