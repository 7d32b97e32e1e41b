#include <algorithm>

#include "flow/input/control.hpp"
#include "flow/input/record.hpp"

namespace flow {

namespace {

/// What is not 1 is 2.
void one_or_two(std::int32_t& value) { value = value == 1 ? 1 : 2; }

/// Puts what was read into the range that it has.
void settle(ShortRecords& r) {
  r.iamg = std::max(r.iamg, 0);
  r.dumpp = std::max(r.dumpp, 0.0);
  r.veldmp = std::max(r.veldmp, 1e-20);
  r.ndv = std::max(r.ndv, 1);
  r.ipr2 = std::max(r.ipr2, 1);
  r.jpr2 = r.jpr2 < 2 ? 1 : r.jpr2;
  one_or_two(r.idrdp);
  one_or_two(r.itmpt);
  r.ifcro = std::clamp(r.ifcro, 0, 1);
}

}  // namespace

ShortRecords read_short_records(frame::Log& log, frame::TextInput& file) {
  RecordReader records(log, file, "(flw_main01)", "control data");
  ShortRecords r;
  const std::array<Echo, 4> rows{{{"iamg,dumpp,veldmp=", {&r.iamg, &r.dumpp, &r.veldmp}},
                                  {"ndv,ipr2,jpr2=", {&r.ndv, &r.ipr2, &r.jpr2}},
                                  {"idrdp,itmpt,ifcro=", {&r.idrdp, &r.itmpt, &r.ifcro}},
                                  {"clim,xlim=", {&r.clim, &r.xlim}}}};
  bool there = true;
  for (const Echo& row : rows) {
    there = there && records.read_if_there(row.values);
    settle(r);
    records.tell({&row, 1});
  }
  return r;
}

}  // namespace flow
