// Tables of TOML files, read so that every fault names file and line, and so does every key that
// nobody asked for.
#pragma once

#include <toml++/toml.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "report.hpp"

namespace townskin_case {

/// What a number must keep to.
struct Bounds {
  double least = 0.0, most = 1e300;
  bool open = false;  ///< the least one itself is refused
};

class TomlTable {
 public:
  /// `name` is the table's own, such as "[grid]"; the TOML stays with the caller.
  TomlTable(const toml::table& table, std::string file, std::string name);

  /// The value of a key where it is there; one of another type or out of bounds is a fault.
  std::optional<double> number(const std::string& key, const Bounds& bounds);
  std::optional<std::int64_t> integer(const std::string& key, const Bounds& bounds);
  std::optional<std::string> text(const std::string& key);
  /// Either of them, as text.
  std::optional<std::string> text_or_number(const std::string& key);
  std::optional<bool> truth(const std::string& key);
  /// A list, or a single value as a list of one.
  std::optional<std::vector<double>> numbers(const std::string& key, const Bounds& bounds);
  std::optional<std::vector<std::string>> texts(const std::string& key);
  std::optional<TomlTable> table(const std::string& key);
  /// A list of tables, such as [[layer]] or layers = [{...}, {...}].
  std::vector<TomlTable> tables(const std::string& key);
  /// A table of tables whose keys are names.
  std::map<std::string, TomlTable> named(const std::string& key);
  /// A table of texts whose keys are names.
  std::map<std::string, std::string> named_texts(const std::string& key);

  /// The same, and a fault where the key lacks.
  template <class Value>
  Value needed(std::optional<Value> value, const std::string& key) const {
    if (!value) fault("", name_ + " lacks " + key);
    return *value;
  }

  /// Faults for keys that were not asked for. To be called behind the last question.
  void finish() const;
  /// A fault at a key, or at the table itself where the key is empty.
  [[noreturn]] void fault(const std::string& key, const std::string& text) const;
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] bool has(const std::string& key) const { return table_->contains(key); }

 private:
  /// "margin of [grid]".
  [[nodiscard]] std::string of(const std::string& key) const;
  const toml::node* find(const std::string& key);
  double number_of(const toml::node& node, const std::string& key, const Bounds& bounds) const;
  std::string text_of(const toml::node& node, const std::string& key) const;

  const toml::table* table_;
  std::string file_, name_;
  std::set<std::string> asked_;
};

/// Parses a file; what is no TOML is a fault with its line.
toml::table parse_toml(const std::string& file);

}  // namespace townskin_case
