#include "driver/filnam.hpp"

#include <algorithm>
#include <vector>

#include "frame/findings.hpp"
#include "frame/namelist.hpp"
#include "inputs/calendar.hpp"

namespace ubx_module_filnam {

namespace {

std::string two_digits(std::int32_t value) {
  std::string digits = std::to_string(value);
  if (value < 10) digits.insert(digits.begin(), '0');
  return digits;
}

/// Replaces each "//" by "/", going on behind the place just closed: three slashes leave two.
std::string closed(const std::string& name) {
  std::string result;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name.compare(i, 2, "//") == 0) ++i;
    result += name[i];
  }
  return result;
}

void trim(std::string& text) {
  text.erase(text.find_last_not_of(' ') + 1);
  if (!text.empty() && text.back() == '/') text.pop_back();
}

std::vector<std::string> check_months(const std::array<std::int32_t, 2>& months) {
  const std::string line = frame::items("months =", months[0], months[1]);
  if (months[0] < 1 || months[1] > 12) return {line, "it must be >=1 and <=12"};
  if (months[0] > months[1]) return {line, "months(1) must be <= months(2)"};
  return {};
}

std::vector<std::string> check_date0(const std::array<std::int32_t, 6>& d) {
  const std::string line = frame::items("date0 =", d[0], d[1], d[2], d[3], d[4], d[5]);
  if (d[1] < 1 || d[1] > 12 || d[2] < 1 || d[2] > tsrf_module_calendar::days_in(d[1])) {
    return {line, "out of range"};
  }
  if (d[3] != 0 || d[4] != 0 || d[5] != 0) return {line, "hour, minute and second must be 0"};
  return {};
}

/// BASE/, and the month's directory.
std::string month_folder(const Data& data, std::int32_t month) {
  std::string folder;
  if (!data.BASE.empty()) folder = data.BASE + "/";
  if (!data.MON.empty()) folder += data.MON + two_digits(month) + "/";
  return folder;
}

const std::string& name_of(const Data& data, std::int32_t index) {
  return data.rows.at(static_cast<std::size_t>(index - 1)).name;
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& file_name, frame::TextInput& control,
               Data& data) {
  const frame::Tag tag(log, "(ubx_module_filnam)(inputdata)");
  frame::Group names("DIR_NAME", {{"BASE", data.BASE}, {"MON", data.MON}, {"DAY", data.DAY}});
  data.dated = names.read(log, file_name);
  if (data.dated) {
    for (std::string* text : {&data.BASE, &data.MON, &data.DAY}) trim(*text);
    frame::Group monthly("TSRF_MONTHLY",
                         {{"MONTHS", data.MONTHS, [&] { return check_months(data.MONTHS); }},
                          {"DATE0", data.DATE0, [&] { return check_date0(data.DATE0); }}});
    monthly.read(log, control);
  }
  control.rewind();
}

void set_file(Data& data, std::int32_t index, int unit, const std::string& name) {
  data.rows.at(static_cast<std::size_t>(index - 1)) = {unit, name};
}

void open_first_month(frame::Log& log, frame::UnitTable& units, const Data& data) {
  for (const std::int32_t index : {kSurfProp, kLadSimple, kWaterTemp, kBuilding, kRmHeat}) {
    const int unit = data.rows.at(static_cast<std::size_t>(index - 1)).unit;
    const std::string name = make_month_name(data, index, data.MONTHS[0]);
    if (frame::attempt(log, [&] { units.open_input(log, unit, name); })) continue;
    units.put_empty(unit, name);
    log.findings().lose(units.input(unit).name(), {});
  }
}

std::string make_month_name(const Data& data, std::int32_t index, std::int32_t month) {
  return closed(month_folder(data, month) + name_of(data, index));
}

std::string make_day_name(const Data& data, std::int32_t index, std::int32_t month,
                          std::int32_t day) {
  std::string folder = month_folder(data, month);
  if (!data.DAY.empty()) folder += data.DAY + two_digits(day) + "/";
  return closed(folder + name_of(data, index));
}

}  // namespace ubx_module_filnam
