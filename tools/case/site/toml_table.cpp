#include "site/toml_table.hpp"

#include <cmath>
#include <fstream>
#include <iterator>

#include "weather/epw_header.hpp"

namespace townskin_case {
namespace {

std::string line_of(const toml::source_region& source) {
  return "line " + std::to_string(source.begin.line);
}

std::string rule_of(const Bounds& bounds) {
  std::string rule = (bounds.open ? "> " : ">= ") + epw::shortest(bounds.least);
  if (bounds.most < 1e300) rule += " and <= " + epw::shortest(bounds.most);
  return rule;
}

}  // namespace

TomlTable::TomlTable(const toml::table& table, std::string file, std::string name)
    : table_(&table), file_(std::move(file)), name_(std::move(name)) {}

std::string TomlTable::of(const std::string& key) const {
  return name_.empty() ? key : key + " of " + name_;
}

const toml::node* TomlTable::find(const std::string& key) {
  asked_.insert(key);
  return table_->get(key);
}

void TomlTable::fault(const std::string& key, const std::string& text) const {
  const toml::node* node = key.empty() ? table_ : table_->get(key);
  Report::fault(text, {file_, line_of(node == nullptr ? table_->source() : node->source())});
}

double TomlTable::number_of(const toml::node& node, const std::string& key,
                            const Bounds& bounds) const {
  const std::optional<double> value = node.is_number() ? node.value<double>() : std::nullopt;
  if (!value || !std::isfinite(*value)) fault(key, of(key) + " must be a number");
  const bool low = bounds.open ? *value <= bounds.least : *value < bounds.least;
  if (low || *value > bounds.most) {
    fault(key, key + " = " + epw::shortest(*value) + of("") + " must be " + rule_of(bounds));
  }
  return *value;
}

std::string TomlTable::text_of(const toml::node& node, const std::string& key) const {
  const auto value = node.value_exact<std::string>();
  if (!value) fault(key, of(key) + " must be a text in quotes");
  return *value;
}

std::optional<double> TomlTable::number(const std::string& key, const Bounds& bounds) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  return number_of(*node, key, bounds);
}

std::optional<std::int64_t> TomlTable::integer(const std::string& key, const Bounds& bounds) {
  const std::optional<double> value = number(key, bounds);
  if (!value) return std::nullopt;
  if (!table_->get(key)->is_integer()) fault(key, of(key) + " must be a whole number");
  return table_->get(key)->value<std::int64_t>();
}

std::optional<std::string> TomlTable::text(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  return text_of(*node, key);
}

std::optional<std::string> TomlTable::text_or_number(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  if (!node->is_number()) return text_of(*node, key);
  return epw::shortest(number_of(*node, key, {.least = -1e300}));
}

std::optional<bool> TomlTable::truth(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  const auto value = node->value_exact<bool>();
  if (!value) fault(key, of(key) + " must be true or false");
  return value;
}

std::optional<std::vector<double>> TomlTable::numbers(const std::string& key,
                                                      const Bounds& bounds) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  std::vector<double> values;
  if (const toml::array* list = node->as_array()) {
    for (const toml::node& item : *list) values.push_back(number_of(item, key, bounds));
  } else {
    values.push_back(number_of(*node, key, bounds));
  }
  return values;
}

std::optional<std::vector<std::string>> TomlTable::texts(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  std::vector<std::string> values;
  if (const toml::array* list = node->as_array()) {
    for (const toml::node& item : *list) values.push_back(text_of(item, key));
  } else {
    values.push_back(text_of(*node, key));
  }
  return values;
}

std::optional<TomlTable> TomlTable::table(const std::string& key) {
  const toml::node* node = find(key);
  if (node == nullptr) return std::nullopt;
  if (!node->is_table()) fault(key, of(key) + " must be a table");
  const std::string outer = name_.empty() ? "" : name_.substr(1, name_.size() - 2) + ".";
  return TomlTable(*node->as_table(), file_, "[" + outer + key + "]");
}

std::vector<TomlTable> TomlTable::tables(const std::string& key) {
  const toml::node* node = find(key);
  std::vector<TomlTable> list;
  if (node == nullptr) return list;
  const toml::array* array = node->as_array();
  if (array == nullptr) fault(key, of(key) + " must be a list of tables");
  for (const toml::node& item : *array) {
    if (!item.is_table()) fault(key, of(key) + " must be a list of tables");
    list.emplace_back(*item.as_table(), file_,
                      name_ + " " + key + " " + std::to_string(list.size() + 1));
  }
  return list;
}

std::map<std::string, TomlTable> TomlTable::named(const std::string& key) {
  std::map<std::string, TomlTable> all;
  std::optional<TomlTable> outer = table(key);
  if (!outer) return all;
  for (const auto& [name, node] : *outer->table_) {
    const std::string text(name.str());
    all.emplace(text, outer->needed(outer->table(text), text));
  }
  return all;
}

std::map<std::string, std::string> TomlTable::named_texts(const std::string& key) {
  std::map<std::string, std::string> all;
  std::optional<TomlTable> outer = table(key);
  if (!outer) return all;
  for (const auto& [name, node] : *outer->table_) {
    const std::string text(name.str());
    all.emplace(text, outer->needed(outer->text(text), text));
  }
  return all;
}

void TomlTable::finish() const {
  for (const auto& [key, node] : *table_) {
    const std::string name(key.str());
    if (asked_.contains(name)) continue;
    std::string known;
    for (const std::string& other : asked_) known += (known.empty() ? "" : ", ") + other;
    fault(name, "unknown key " + of(name) + "; known are " + known);
  }
}

toml::table parse_toml(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream.is_open() || stream.bad()) Report::fault("cannot be read", {file, {}});
  try {
    return toml::parse(text, file);
  } catch (const toml::parse_error& error) {
    Report::fault(std::string(error.description()), {file, line_of(error.source())});
  }
}

}  // namespace townskin_case
