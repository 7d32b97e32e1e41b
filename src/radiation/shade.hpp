// tsrf_module_shade: the sunlit fraction of each patch through time (Sun data).
//
// The fractions are made before the run, for its sun positions; here they are a dated series of
// blocks, one line a patch. A repeating-day run has one file of them; a dated run one a day, and
// whole months of them are kept packed. Queried once a step at the step's start.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/dated_series.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_shade {

/// Group TSRF_SHADE beyond the members of every series.
struct Settings {
  std::int32_t NITEM = 2;  ///< months kept packed (dated runs)
  std::int32_t NBIT = 1;   ///< bits a fraction (dated runs)
  std::array<std::int32_t, 2> MONTHS{0,
                                     0};   ///< months with Sun files (dated runs); 0, 0: none given
  std::array<std::int32_t, 2> DAYS{0, 0};  ///< days of a month with Sun files; 0, 0: all
};

/// The blocks of one month of a dated run, packed (see bit_planes.hpp).
struct PackedMonth {
  std::int32_t month = 0;
  std::vector<double> times;        ///< of the blocks, from the month's start [s]
  std::size_t packed = 0;           ///< blocks in `words`, which serve in turn
  std::vector<std::int32_t> words;  ///< NBIT planes for each 30 blocks
};

/// A block of a packed month as numbers.
struct UnpackedBlock {
  std::int32_t month = 0;  ///< 0: none
  std::size_t block = 0;
  std::vector<double> values;  ///< per patch
};

struct Data {
  Settings settings;
  std::string settings_place;  ///< where their group stands, for the log
  bool dated_run = false;
  std::vector<std::int32_t> seen;  ///< scratch: per patch, number of the block that gave it last
  std::int32_t blocks_read = 0;

  // Repeating day.
  dated_series::Series series{dated_series::Settings{.NSTRDT = 2}};
  frame::PatchTable<float> fractions;  ///< a row per stored block

  // Dated run.
  std::function<std::string(std::int32_t month, std::int32_t day)> day_name;  ///< set by the driver
  std::vector<PackedMonth> months;  ///< at most NITEM, the oldest first
  UnpackedBlock lower, upper;       ///< round the last time asked for
  std::vector<double> block;        ///< scratch: the block that is read
};

/// Reads group TSRF_SHADE; `dated_run` tells which of its rules hold.
void inputdata(frame::Log& log, frame::TextInput& control, bool dated_run, Data& data);

/// Sunlit fraction of every patch at `time` [s], the entry of both forms. `file` is the Sun file of
/// a repeating-day run; a dated run opens its own files.
void set_shade(frame::Log& log, frame::Crew& crew, frame::TextInput* file, double time,
               const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
               Data& data, std::span<double> fsun);

/// The check pass of the repeating-day form, run by the first query.
void check_data(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                const tsrf_module_patch::Data& patch, Data& data);
/// What a block of the Sun data says of its hour.
struct LitBlock {
  dated_series::IntDate date;
  bool lit;           ///< some patch has sun
  std::size_t place;  ///< in the file
};
/// The check pass with a look at the fractions as well, for a check of all files.
std::vector<LitBlock> survey(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                             const tsrf_module_patch::Data& patch, Data& data);
/// The repeating-day form: interpolates between the blocks round `time`. A block has one line for
/// every patch; fractions beyond 0..1 are taken as 0 or 1.
void set_shade_oneday(frame::Log& log, frame::Crew& crew, frame::TextInput& file, double time,
                      const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                      Data& data, std::span<double> fsun);

/// Reads and packs the day files of a month.
void read_mltday(frame::Log& log, frame::Crew& crew, std::int32_t month,
                 const tsrf_module_patch::Data& patch, Data& data, PackedMonth& packed);
/// Of each packed block of a month: whether some patch has sun in it.
std::vector<bool> lit_blocks(const PackedMonth& packed);
/// The form of dated runs: interpolates between the blocks of the month of `time` round it. Before
/// the month's first and behind its last block that block holds. A date beyond MONTHS and DAYS
/// stops the run.
void set_shade_mltday(frame::Log& log, frame::Crew& crew, double time,
                      const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                      Data& data, std::span<double> fsun);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_shade
