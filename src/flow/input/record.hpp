// Records of the flow solver's inputs as tables: what a record holds, how it stands on the log and
// what it must keep.
//
//     RecordReader reader(log, file, "(flw_read_cntdat)", "control data");
//     reader.take({.items = {&c.itercg, &c.epscg},
//                  .echo = {{"max. iteration counts of iccg : itercg = ", {&c.itercg}},
//                           {"tolerance of convergence for iccg : epscg = ", {&c.epscg}}},
//                  .rules = {{"itercg < 1", [&] { return c.itercg >= 1; }},
//                            {"epscg <= 0", [&] { return c.epscg > 0.0; }}}});
//
// reads the record, writes both lines and holds the rules in their order. Used by all readers of
// control and boundary data.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Where an item of a record goes.
using Item = std::variant<std::int32_t*, double*, std::span<std::int32_t>, std::span<double>>;

/// A line on the log: the label and the values behind it. Where `when` is false the words of
/// `otherwise` stand in its place, if there are any.
struct Echo {
  std::string_view label;
  std::vector<Item> values{};
  std::function<bool()> when{};
  std::string_view otherwise{};
};

/// What a record must keep, and the words when it does not.
struct Rule {
  std::string words;
  std::function<bool()> holds;
};

struct Record {
  std::vector<Item> items;
  std::vector<Echo> echo{};
  std::vector<Rule> rules{};
};

class RecordReader {
 public:
  /// `routine` is the reader's name in brackets, `title` what the file is called on the log.
  RecordReader(frame::Log& log, frame::TextInput& file, std::string_view routine,
               std::string_view title)
      : log_(log), file_(file), routine_(routine), title_(title) {}

  /// Reads, tells and checks one record. One that runs on to a further line is taken with a
  /// warning: as a short record swallows the next one, that is mostly a value left out. False when
  /// it cannot be read, which only a log that collects faults passes over: the items are then as
  /// they were or in part those of the record.
  bool take(const Record& record);
  /// The parts of `take`. All broken rules are told to a log that collects.
  bool read(std::span<const Item> items);
  void tell(std::span<const Echo> echo);
  void check(std::span<const Rule> rules);

  /// A list of values over as many lines as it takes, without a warning.
  bool read_list(std::span<double> values);
  /// A record that stands on one line, or is not there: false at the end of the file and in front
  /// of a namelist group.
  bool read_if_there(std::span<const Item> items);

  /// Ends the run with the reader's heading and the words, naming the line of the last record.
  template <class... Lines>
  [[noreturn]] void fail(const Lines&... lines) {
    mark_record();
    log_.read_error(file_, "### data error " + routine_, lines...);
  }
  /// Does the checks of `work`, which may fail; a log that collects then goes on behind what was
  /// read. True when there was no fault.
  template <class Work>
  bool attempt(Work&& work) {
    const std::size_t behind = file_.tell();
    const bool good = frame::attempt(log_, work);
    if (!good) file_.seek(behind);
    return good;
  }
  /// Where the last record stands; `blame` makes it that of the checks that follow.
  [[nodiscard]] std::size_t place() const { return place_; }
  void blame(std::size_t place) { place_ = place; }
  /// Whether nothing is left in the file.
  [[nodiscard]] bool at_end() const {
    return file_.content().find_first_not_of(" \t\r\n", file_.tell()) == std::string_view::npos;
  }
  /// Ends the run because the next record is not there or cannot be read.
  [[noreturn]] void fail_read();

 private:
  bool take_items(std::span<const Item> items);
  void go_to_record();
  [[nodiscard]] bool runs_on() const;
  void mark_record();

  frame::Log& log_;
  frame::TextInput& file_;
  std::string routine_;
  std::string title_;
  std::size_t place_ = 0;  // where the last record begins
};

}  // namespace flow
