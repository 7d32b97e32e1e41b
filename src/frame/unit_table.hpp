// The table of open files by unit number.
//
// A run's files have fixed unit numbers; everything above the frame gets at its files through
// this table (or is handed one file of it). Owned by the run, filled by the main program from the
// list of file names and, in a dated run, month by month.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "frame/log.hpp"
#include "frame/record_file.hpp"
#include "frame/text_input.hpp"
#include "frame/text_output.hpp"

namespace frame {

/// Unit numbers of a run's files.
enum Unit : int {
  kUnitFileName = 10,
  kUnitControl = 11,
  kUnitWeather = 12,
  kUnitPatch = 13,
  kUnitPatchIndex = 14,
  kUnitFormFactor = 15,
  kUnitSun = 16,
  kUnitBldSurf = 17,
  kUnitLadSimple = 19,
  kUnitWaterTemp = 20,
  kUnitSurfTemp = 21,
  kUnitPatchSurfTemp = 22,
  kUnitProgressLog = 23,
  kUnitSunSky = 24,
  kUnitBuilding = 25,
  kUnitMatEleProp = 26,
  kUnitGrid = 27,
  kUnitPgidPrd = 28,
  kUnitRmHeat = 29,
  kUnitTreePatch = 30,
  kUnitLad = 31,
  kUnitStHeat = 32,
  kUnitHeat = 33,
  kUnitRestart = 34,
  kUnitSurfProp = 35,
  kUnitPorous = 36,
  kUnitBldLoad = 37,
  kUnitBoundary = 38,
  kUnitDomain = 39,
  kUnitHistory = 40,
};

inline constexpr int kUnits = 100;

class UnitTable {
 public:
  /// Names of files are taken from `directory` unless they are absolute.
  explicit UnitTable(std::string directory = ".");
  ~UnitTable();
  UnitTable(const UnitTable&) = delete;
  UnitTable& operator=(const UnitTable&) = delete;

  /// Opens an existing file for reading; what the unit held is closed. A file that cannot be
  /// opened ends the run on the spot (Stop) with one line on standard error and the log.
  TextInput& open_input(Log& log, int unit, const std::string& name);
  /// The same, but a file that is not there is read as an empty one.
  TextInput& open_input_if_any(Log& log, int unit, const std::string& name);
  /// Ends the run in the same way where `name` cannot be read; for files that a reader opens
  /// itself.
  void check_input(Log& log, const std::string& name) const;
  /// The same where it is there and is no file that can be read to its end.
  void check_plain(Log& log, const std::string& name) const;
  /// The same where a file `name` could not be opened for writing, or made; nothing is made.
  void check_output(Log& log, const std::string& name) const;
  /// Puts an empty file of that name into a unit.
  void put_empty(int unit, const std::string& name);
  /// Opens a file for writing, made where it is not there, as it is where it is. The table keeps
  /// what was written to it when it is closed.
  TextOutput& open_output(Log& log, int unit, const std::string& name);
  /// Opens the restart file, made empty where it is not there.
  RecordFile& open_records(Log& log, int unit, const std::string& name);
  void close(int unit);

  /// What this run has written to an output file, or has not.
  struct Written {
    int unit;
    std::string name;
    std::int64_t rows;
    bool holds_earlier;  ///< the file holds what an earlier run left
  };
  /// The output files that were closed, each name once, in the order of closing, then the open
  /// ones.
  [[nodiscard]] std::vector<Written> written() const;

  [[nodiscard]] bool has_input(int unit) const { return at(unit).input != nullptr; }
  [[nodiscard]] bool has_output(int unit) const { return at(unit).output != nullptr; }
  [[nodiscard]] TextInput& input(int unit) { return *at(unit).input; }
  [[nodiscard]] TextOutput& output(int unit) { return *at(unit).output; }
  [[nodiscard]] RecordFile& records(int unit) { return *at(unit).records; }

  /// The path of a file of this run.
  [[nodiscard]] std::string path_of(const std::string& name) const;

  /// Writes out every output file. Fails when one cannot take its text.
  void flush_outputs(Log& log);

 private:
  struct Slot {
    std::unique_ptr<TextInput> input;
    std::unique_ptr<TextOutput> output;
    std::unique_ptr<RecordFile> records;
  };
  [[nodiscard]] static Written written_to(int unit, const TextOutput& file);
  [[nodiscard]] Slot& at(int unit) { return slots_.at(static_cast<std::size_t>(unit)); }
  [[nodiscard]] const Slot& at(int unit) const { return slots_.at(static_cast<std::size_t>(unit)); }

  std::string directory_;
  std::array<Slot, kUnits + 1> slots_;
  std::vector<Written> closed_;
};

}  // namespace frame
