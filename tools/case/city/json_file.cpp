#include "city/json_file.hpp"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace townskin_case {
namespace {

constexpr int deepest = 64;

}  // namespace

std::string read_text(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  if (!in || !(text << in.rdbuf())) Report::fault("cannot be read, or is empty", {file, ""});
  return std::move(text).str();
}

Json parse_json(const std::string& text, const Origin& where) {
  const auto guard = [&where](int depth, Json::parse_event_t, const Json&) {
    if (depth > deepest) {
      Report::fault("is nested deeper than " + std::to_string(deepest) + " levels", where);
    }
    return true;
  };
  try {
    return Json::parse(text, guard);
  } catch (const Json::parse_error& error) {
    Report::fault("no valid JSON at byte " + std::to_string(error.byte), where);
  } catch (const Json::exception&) {
    Report::fault("holds a number beyond all range", where);
  }
}

const Json* member(const Json& value, const std::string& name) {
  if (!value.is_object()) return nullptr;
  const auto found = value.find(name);
  return found == value.end() || found->is_null() ? nullptr : &*found;
}

const Json* array_member(const Json& value, const std::string& name) {
  const Json* found = member(value, name);
  return found != nullptr && found->is_array() ? found : nullptr;
}

const Json* object_member(const Json& value, const std::string& name) {
  const Json* found = member(value, name);
  return found != nullptr && found->is_object() ? found : nullptr;
}

std::optional<std::string> text_member(const Json& value, const std::string& name) {
  const Json* found = member(value, name);
  if (found == nullptr || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

std::optional<std::string> as_text(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number() || value.is_boolean()) return value.dump();
  return std::nullopt;
}

}  // namespace townskin_case
