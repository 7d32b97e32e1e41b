#include <algorithm>

#include "flow/input/control.hpp"
#include "flow/input/record.hpp"
#include "flow/input/schedule.hpp"

namespace flow {

namespace {

constexpr std::int32_t kMostPoints = 100;

void check_point(RecordReader& records, const Triple& point, const Triple& cells) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (point[axis] >= 1 && point[axis] <= cells[axis]) continue;
    records.fail("specified point is out of bounds",
                 frame::items("index (i,j,k) =", point[0], point[1], point[2]));
  }
}

}  // namespace

HistoryPoints flw_read_hstpnt(frame::Log& log, frame::TextInput& file, const Triple& cells) {
  const frame::Tag tag(log, "(flw_read_hstpnt)");
  RecordReader records(log, file, "(flw_read_hstpnt)", "control data");
  HistoryPoints history;
  std::int32_t nhpnt = 0;
  records.read(std::array<Item, 1>{&nhpnt});
  if (nhpnt <= 0) return history;
  take_schedule(records, history.schedule,
                {"iteration no. when output history file", "time when output history file",
                 "start, end & interval : thstps,thstpe,thstpd = "});
  history.points.resize(static_cast<std::size_t>(std::min(nhpnt, kMostPoints)));
  std::vector<Item> items;
  for (Triple& point : history.points) items.emplace_back(std::span<std::int32_t>(point));
  const bool read = records.take({.items = items,
                                  .echo = {{"no. of output history points : nhpnt = ", {&nhpnt}}},
                                  .rules = {{frame::items("nhpnt > mhpnt(=", kMostPoints, ")"),
                                             [&] { return nhpnt <= kMostPoints; }}}});
  for (const Triple& point : history.points) {
    if (read) records.attempt([&] { check_point(records, point, cells); });
  }
  return history;
}

}  // namespace flow
