// What the arrays of a run take, told by the modules that own them.
//
// A module tells its arrays by a plain routine `list_arrays` beside its data, under the names that
// its readers would look for; the driver calls them all at the end of a run and prints the table.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "frame/patch_table.hpp"

namespace frame {

class Log;

class ArrayList {
 public:
  struct Entry {
    std::string name;
    std::size_t bytes;
  };

  /// Tells some arrays under one name: vectors, tables, or a number of bytes.
  template <class... Arrays>
  void add(std::string name, const Arrays&... arrays) {
    entries_.push_back({std::move(name), (bytes(arrays) + ... + 0)});
  }
  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  [[nodiscard]] std::size_t total() const;

 private:
  template <class T>
  static std::size_t bytes(const std::vector<T>& array) {
    return array.capacity() * sizeof(T);
  }
  template <class T>
  static std::size_t bytes(const PatchTable<T>& table) {
    return table.all().size_bytes();
  }
  static std::size_t bytes(std::size_t count) { return count; }

  std::vector<Entry> entries_;
};

/// Prints the memory that the process took at most beside that of its arrays, and each entry of at
/// least 1 % of them, the largest first; none that would be told as 0.0 MB.
void report_memory(Log& log, const ArrayList& list);

}  // namespace frame
