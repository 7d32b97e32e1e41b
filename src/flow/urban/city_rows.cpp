#include "flow/urban/city_rows.hpp"

#include <string>

namespace flow {

namespace {

constexpr double kLeafDrag = 0.2;
constexpr double kHighest = 1000.0;  ///< of the leaf area densities that the surface model takes

/// The records of a file behind its title, with what it says when one makes no sense.
class Rows {
 public:
  Rows(frame::Log& log, frame::TextInput& file, std::string_view title, std::size_t fields)
      : log_(log), file_(file), title_(title) {
    file_.pass_title(log_, fields);
  }

  /// Reads the next record; false behind the last one.
  template <class... Fields>
  bool next(Fields&&... fields) {
    const frame::ReadStatus status = file_.read(fields...);
    if (status == frame::ReadStatus::error) log_.read_error(file_, "### read error : " + title_);
    if (status == frame::ReadStatus::end) return false;
    warn_if_ran_on(log_, file_, title_, told_);
    return true;
  }
  /// Passes over lines that begin with #.
  void pass_remarks() {
    const std::string_view text = file_.content();
    for (;;) {
      const std::size_t at = text.find_first_not_of(" \t\r\n", file_.tell());
      if (at == std::string_view::npos || text[at] != '#') return;
      file_.seek(at);
      file_.skip_line();
    }
  }
  void check_cell(const Box& box, const Triple& cell) {
    for (std::size_t a = 0; a < 3; ++a) {
      if (cell[a] < 1 || cell[a] > box.n[a]) refuse(cell, "they are out of range");
    }
  }
  void check(bool good, const Triple& cell, std::string_view what, double value,
             std::string_view rule) {
    if (!good) refuse(cell, frame::items(what, value), rule);
  }

 private:
  template <class... Lines>
  [[noreturn]] void refuse(const Triple& cell, const Lines&... lines) {
    log_.line(file_.line_text(file_.record_line()));
    log_.data_error(title_, frame::items("i,j,k=", cell[0], cell[1], cell[2]), lines...);
  }

  frame::Log& log_;
  frame::TextInput& file_;
  std::string title_;
  bool told_ = false;
};

void append(frame::Log& log, const CityRow& row, CityRows& rows) {
  frame::allocating(log, "city data", frame::bytes_grown(rows), [&] { rows.push_back(row); });
}

}  // namespace

void warn_if_ran_on(frame::Log& log, const frame::TextInput& file, std::string_view title,
                    bool& told) {
  if (told || !file.ran_on()) return;
  log.warn("a record of", title, "takes more than one line, file", file.name() + ",", "line",
           file.record_line());
  told = true;
}

CityRows kpc_read_surftemp(frame::Log& log, frame::TextInput& file, const Box& box,
                           const std::array<std::int32_t, 2>& offset) {
  const frame::Tag tag(log, "(kpc_read_surftemp)");
  Rows file_rows(log, file, "SurfTemp data", 10);
  CityRows rows;
  CityRow row;
  auto& [i, j, k] = row.cell;
  while (file_rows.next(i, j, k, row.hour, std::span<double>(row.value))) {
    const auto& [exchange, warmth, wetness] = row.value;
    for (std::size_t a = 0; a < 2; ++a) {
      // An index that far out is no cell, with any offset.
      if (row.cell[a] <= box.n[a]) row.cell[a] += offset[a];
    }
    file_rows.check_cell(box, row.cell);
    file_rows.check(row.hour >= 0, row.cell, "hour =", row.hour, "it must be >= 0");
    file_rows.check(exchange >= 0.0, row.cell, "tdrg(1) =", exchange, "it must be >= 0");
    file_rows.check(exchange > 0.0 ? warmth > 0.0 : warmth == 0.0, row.cell, "tdrg(2) =", warmth,
                    "tdrg(2)/tdrg(1) is a temperature [K] and must be > 0");
    file_rows.check(wetness >= 0.0, row.cell, "tdrg(3) =", wetness, "it must be >= 0");
    append(log, row, rows);
  }
  return rows;
}

CityRows kpc_read_heat(frame::Log& log, frame::TextInput& file, const Box& box) {
  const frame::Tag tag(log, "(kpc_read_heat)");
  Rows file_rows(log, file, "BldLoad data", 8);
  CityRows rows;
  CityRow row;
  auto& [i, j, k] = row.cell;
  std::array<double, 4> heat{};  // VclSens, VclLant, BldSens, BldLant
  for (file_rows.pass_remarks(); file_rows.next(i, j, k, row.hour, std::span<double>(heat));
       file_rows.pass_remarks()) {
    file_rows.check_cell(box, row.cell);
    file_rows.check(row.hour >= 0, row.cell, "hour =", row.hour, "it must be >= 0");
    row.value = {heat[0] + heat[2], heat[1] + heat[3], 0.0};
    append(log, row, rows);
  }
  return rows;
}

Field kpc_read_lad(frame::Log& log, frame::TextInput& file, const Box& box) {
  const frame::Tag tag(log, "(kpc_read_lad)");
  Rows rows(log, file, "LAD data", 4);
  Field adrg;
  frame::allocating(log, "adrg", frame::bytes_of<double>(box.size()), [&] { adrg = Field(box); });
  Triple cell{};
  double density = 0.0;
  while (rows.next(cell[0], cell[1], cell[2], density)) {
    rows.check_cell(box, cell);
    rows.check(density >= 0.0 && density <= kHighest, cell, "leaf area density =", density,
               "it must be >= 0 and <= 1000");
    adrg(cell[0], cell[1], cell[2]) += 0.5 * kLeafDrag * density;
  }
  return adrg;
}

}  // namespace flow
