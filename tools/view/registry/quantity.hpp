// The quantities of a run, told once: name, unit, sign, formula and where each comes from.
//
// NetCDF, VTK, CSV, the page and the table in docs/results.md all take names, units and words from
// here. A quantity that is derived has its formula in run/balance.cpp; all others are columns of a
// file of the run.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace townskin_view {

/// What a value belongs to, in all forms a dimension of that name.
enum class Place { patch, building, cell, leaf_cell, run, flow_cell };

/// How a value stands in time.
enum class Span {
  steady,   ///< does not change
  instant,  ///< at the full hour; in a dated run the mean over the steps of that hour in the month
};

struct Quantity {
  std::string_view name;           ///< of the variable: small letters and underscores
  std::string_view long_name;      ///< in words, without unit
  std::string_view standard_name;  ///< of the CF conventions; empty where they have none
  std::string_view units;          ///< as udunits reads them; "1" for a share
  std::string_view shown_units;    ///< as people read them; "" for a share
  std::string_view sign;           ///< what a positive value means; empty where none is needed
  std::string_view formula;        ///< of derived quantities
  std::string_view source;         ///< file and column, or "derived"
  Place place = Place::patch;
  Span span = Span::instant;
};

/// All quantities; those of a place stand together.
[[nodiscard]] std::span<const Quantity> quantities();
/// The quantity of a name; asking for one that is not there is a fault of the program.
[[nodiscard]] const Quantity& quantity(std::string_view name);

[[nodiscard]] std::string_view name_of(Place place);
[[nodiscard]] std::string_view name_of(Span span);

/// The table of docs/results.md, between its markers.
[[nodiscard]] std::string quantities_table();

}  // namespace townskin_view
