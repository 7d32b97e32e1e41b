#include "inputs/srfprp.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace tsrf_module_srfprp {

namespace {

using frame::items;
using frame::ReadStatus;

/// The real columns of a line, in the order of the file.
enum Column : std::size_t { kAlb, kEms, kBeta, kRho, kCp, kAlf, kWext, kColumns };
using Values = std::array<double, kColumns>;

struct Rule {
  std::string_view name;
  bool (*good)(double);
  std::string_view words;
};
bool fraction(double v) { return v >= 0.0 && v <= 1.0; }
bool positive(double v) { return v > 0.0; }
bool not_negative(double v) { return v >= 0.0; }
constexpr std::array<Rule, kColumns> kRules{{
    {"alb", fraction, "it must be >=0 and <=1"},
    {"ems", fraction, "it must be >=0 and <=1"},
    {"beta", fraction, "it must be >= 0 and <= 1"},
    {"rho", positive, "it must be > 0"},
    {"cp", positive, "it must be > 0"},
    {"alf", not_negative, "it must be >= 0"},
    {"wext", not_negative, "it must be >= 0"},
}};

/// What stands for a value that breaks its rule where the reader goes on.
constexpr Values kHarmless{0.2, 0.9, 0.0, 1000.0, 1000.0, 1e-6, 0.0};

void check_line(frame::Log& log, const frame::TextInput& file, std::int32_t code, Values& values) {
  for (std::size_t column = 0; column < kColumns; ++column) {
    const Rule& rule = kRules[column];
    if (rule.good(values[column])) continue;
    frame::attempt(log, &file, [&] {
      log.data_error(items(std::string(rule.name) + " in SurfProp data =", values[column]),
                     rule.words, items("surfcd =", code));
    });
    values[column] = kHarmless[column];
  }
}

void enter(const Values& v, Data& data) {
  data.alb.push_back(v[kAlb]);
  data.ems.push_back(v[kEms]);
  data.beta.push_back(v[kBeta]);
  data.wext.push_back(v[kWext]);
  data.heat_capacity.push_back(v[kRho] * v[kCp]);
  data.conductivity.push_back(v[kRho] * v[kCp] * v[kAlf]);
}

void read_lines(frame::Log& log, frame::TextInput& file, Data& data) {
  file.pass_title(log, 1 + kColumns);
  for (;;) {
    std::int32_t code = 0;
    Values values{};
    const ReadStatus status = file.read(code, std::span<double>(values));
    if (status == ReadStatus::end) return;
    if (status == ReadStatus::error) {
      log.lost_record(file, "### read error : SurfProp data");
      continue;
    }
    check_line(log, file, code, values);
    frame::allocating(log, "surface properties", frame::bytes_grown(data.alb), [&] {
      data.SurfCD.push_back(code);
      enter(values, data);
    });
    ++data.n;
  }
}

/// The rows of the tree patches, which absorb all that comes, and of the mirrors.
void enter_extra_rows(Data& data) {
  for (const double albedo : {0.0, 1.0}) {
    data.alb.push_back(albedo);
    data.ems.push_back(1.0 - albedo);
    data.beta.push_back(0.0);
    data.wext.push_back(0.0);
    data.heat_capacity.push_back(0.0);
    data.conductivity.push_back(0.0);
  }
}

}  // namespace

void read_srfprp(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_srfprp)(read_srfprp)");
  Data read;
  read_lines(log, file, read);
  if (read.n == 0) log.fail("### error : lack of SurfProp data");
  frame::allocating(log, "SurfCD", frame::bytes_of<std::int32_t>(read.SurfCD.size(), 2), [&] {
    read.by_code = frame::CodeIndex(read.SurfCD);
    enter_extra_rows(read);
  });
  const auto report = [&](std::size_t first, std::size_t second) {
    log.data_error(items("SurfCD in SurfProp data =", read.SurfCD[second]),
                   "it is specified redundantly in line no. n1 & n2",
                   items("n1,n2 =", first + 1, second + 1));
  };
  frame::report_repeats(log, read.by_code, read.SurfCD, report);
  const bool is_reread = data.n > 0;
  if (is_reread && read.SurfCD != data.SurfCD) log.fail("### error : invalid multi-day data");
  data = std::move(read);
}

}  // namespace tsrf_module_srfprp
