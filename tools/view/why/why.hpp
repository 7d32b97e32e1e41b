// Why a patch is as hot as it is: the terms of its balance at an hour, and who gives it what.
//
// Every term is formed for itself, by the model's formulas, from results and inputs; so their sum
// tells how well they account for the patch. In the model it is 0; what remains here comes from the
// digits of the files, from the exchange of radiation, which the model ends after LOPREF sweeps and
// lets leaves enter one step late, and in a dated run from the means (that of Ts^4 is not the
// fourth power of the mean). Where something is not known for itself a remark says what it was
// taken from.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "run/run_model.hpp"

namespace townskin_view {

struct Term {
  std::string_view name;
  double flux = 0.0;  ///< into the surface [W/m2], rounded as it is printed
};

/// Someone who gives radiation to the patch.
struct Giver {
  Partner partner;
  double temperature = 0.0;  ///< of its surface, of leaves its radiant one [deg C]
  Gift gift;
};

struct Why {
  std::size_t patch = 0, hour = 0;
  double temperature = 0.0, air = 0.0;  ///< [deg C]
  bool balanced = false;                ///< a balance is solved; else only the radiation is told
  std::vector<Term> terms;              ///< in the order of the balance
  double sum = 0.0;                     ///< of the printed terms
  std::vector<Giver> givers;            ///< the five that give most, the first the most
  std::size_t all_givers = 0;           ///< how many there are
  Gift all_gifts;                       ///< of all of them
  std::vector<std::string> remarks;
};

/// The patch and hour of "PID@HOUR", in a run of several days or months "PID@DAY:HOUR" or
/// "PID@MONTH:HOUR" (without it the last). A Fault says what is wrong with it.
struct Question {
  std::int32_t PID = 0;
  std::int32_t day = 0;  ///< day or month; 0: the last
  std::int32_t hour = 0;
};
[[nodiscard]] Question read_question(std::string_view text);

/// Answers from a run that was read with `Wanted::all_partners_of` the patch. Without results of
/// that hour, or of the patch, a Fault.
[[nodiscard]] Why explain(const RunModel& run, const Question& question);

/// The answer in words and numbers.
[[nodiscard]] std::string in_words(const RunModel& run, const Why& why);

}  // namespace townskin_view
