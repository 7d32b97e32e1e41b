// Group TSRF_SHADE.
#include "radiation/shade.hpp"

namespace tsrf_module_shade {

namespace {

using frame::items;
using Lines = std::vector<std::string>;
using Range = std::array<std::int32_t, 2>;

bool given(const Range& range) { return range != Range{0, 0}; }
bool in_order(const Range& range, std::int32_t most) {
  return range[0] >= 1 && range[1] <= most && range[0] <= range[1];
}

Lines check_months(const Range& months, bool dated_run) {
  if (!dated_run) return given(months) ? Lines{"months can not be specified"} : Lines{};
  if (!given(months)) return {"lack of months"};
  if (in_order(months, 12)) return {};
  return {items("months(1:2) =", months[0], months[1]),
          "it must be >=1 and <=12 and months(1)<=months(2)"};
}

Lines check_days(const Range& days, const Range& LDATE, bool dated_run) {
  if (!dated_run) return given(days) ? Lines{"days can not be specified"} : Lines{};
  if (given(days) && !in_order(days, 31)) {
    return {items("days(1:2) =", days[0], days[1]), "it must be >=1 and <=31 and days(1)<=days(2)"};
  }
  if (given(days) && days[0] == days[1]) return {items("no. of days =", 1), "it must be > 1"};
  if (LDATE[1] != 4) return {items("ldate =", LDATE[0], LDATE[1]), "it must be = 4"};
  return {};
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, bool dated_run, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_shade)(inputdata)");
  Settings own = data.settings;
  dated_series::Settings common = data.series.settings;
  std::vector<frame::Member> members = dated_series::members(common, dated_series::Hour::required);
  members.emplace_back("NITEM", own.NITEM, frame::positive("nitem =", own.NITEM));
  members.emplace_back("NBIT", own.NBIT,
                       frame::holds<std::int32_t>(
                           "nbit =", own.NBIT, [](std::int32_t v) { return v > 0 && v <= 30; },
                           "it must be > 0 and <= 30"));
  members.emplace_back("MONTHS", std::span<std::int32_t>(own.MONTHS),
                       [&] { return check_months(own.MONTHS, dated_run); });
  members.emplace_back("DAYS", std::span<std::int32_t>(own.DAYS),
                       [&] { return check_days(own.DAYS, common.LDATE, dated_run); });
  frame::Group group("TSRF_SHADE", std::move(members));
  // A dated run needs MONTHS, so there the rules hold for an absent group too.
  if (!group.read(log, control) && dated_run) group.check(log);
  data.settings = own;
  data.settings_place = group.place();
  data.dated_run = dated_run;
  data.series.settings = common;
}

}  // namespace tsrf_module_shade
