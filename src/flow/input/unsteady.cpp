#include "flow/input/unsteady.hpp"

#include <cmath>
#include <cstdint>
#include <string>

#include "frame/namelist.hpp"

namespace flow {

namespace {

constexpr double kNear = 1e-6;  // of the interval: numbers of a text are rounded

struct Unsteady {
  std::int32_t LUNSTDY = 0;
  bool CHECK_DATA = false;
  std::int32_t NSIMPL = 0;
  double DELTT_TS = 0.0;
  std::string DIR_INPUT;
};

Unsteady inputdata(frame::Log& log, frame::TextInput& control) {
  Unsteady data;
  frame::Group group("UNSTEADY", {{"LUNSTDY", data.LUNSTDY},
                                  {"CHECK_DATA", data.CHECK_DATA},
                                  {"NSIMPL", data.NSIMPL},
                                  {"DELTT_TS", data.DELTT_TS},
                                  {"DIR_INPUT", data.DIR_INPUT}});
  const std::size_t place = control.tell();
  group.read(log, control);
  control.seek(place);
  return data;
}

bool is_multiple(double value, double of) {
  const double count = std::round(value / of);
  return of > 0.0 && count >= 1.0 && std::abs(value - count * of) <= kNear * of;
}

}  // namespace

void unst_chk_deltt(frame::Log& log, frame::TextInput& control, double dtmax1, double dtmax2) {
  const frame::Tag tag(log, "(ubx_module_unstdy)(unst_chk_deltt)");
  const Unsteady data = inputdata(log, control);
  if (data.LUNSTDY < 0) {
    log.stop_with(frame::kStatusAbnormal, "### program error -1- (ubx_module_unstdy)",
                  "(unst_chk_deltt)");
  }
  if (data.LUNSTDY == 0) return;
  if (dtmax2 != dtmax1) {
    log.data_error(frame::items("dtmax1,dtmax2=", dtmax1, dtmax2), "dtmax2 must be = dtmax1");
  }
  if (!is_multiple(dtmax1, data.DELTT_TS)) {
    log.data_error(frame::items("dtmax1,deltt_ts =", dtmax1, data.DELTT_TS),
                   "dtmax1 must be = n*deltt_ts (n=1,2,...)");
  }
}

}  // namespace flow
