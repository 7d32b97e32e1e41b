#include "flow/input/schedule.hpp"

#include <algorithm>
#include <cmath>

namespace flow {

namespace {

/// The first time of the schedule that is not before `now`.
void jump_to(Schedule& schedule, double now) {
  if (schedule.interval <= 0.0 || schedule.start >= now) return;
  schedule.start += std::ceil((now - schedule.start) / schedule.interval) * schedule.interval;
}

bool reached(const Schedule& schedule, double now, double slack) {
  return now <= schedule.end + slack && schedule.start - slack <= now;
}

}  // namespace

void take_schedule(RecordReader& records, Schedule& schedule, const ScheduleLabels& labels) {
  std::int32_t unit = 0;
  records.read(std::array<Item, 4>{&schedule.start, &schedule.interval, &schedule.end, &unit});
  schedule.by_time = unit >= 1;
  std::array<double, 3> shown{schedule.start, schedule.end, schedule.interval};
  if (!schedule.by_time) {
    for (double& value : shown) value = std::round(value);
  }
  records.tell(
      std::array<Echo, 2>{{{labels.iterations, {}, [&] { return !schedule.by_time; }, labels.time},
                           {labels.values, {std::span<double>(shown)}}}});
}

bool is_due(Schedule& schedule, std::int32_t iter, double time, double dt, bool stop) {
  if (schedule.none()) return false;
  const double now = schedule.by_time ? time : iter;
  if (!schedule.met) {
    schedule.met = true;
    schedule.interval = std::max(schedule.interval, schedule.by_time ? 0.0 : 1.0);
    jump_to(schedule, now);
  }
  const double slack = schedule.by_time ? 0.1 * dt : 0.0;
  if (!stop && !reached(schedule, now, slack)) return false;
  schedule.start += schedule.interval;
  return true;
}

}  // namespace flow
