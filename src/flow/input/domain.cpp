#include "flow/input/domain.hpp"

#include "flow/input/record.hpp"

namespace flow {

namespace {

constexpr std::string_view kRoutine = "(flw_list_cmmbnd)";

void read_domains(frame::Log& log, frame::TextInput& file, const Triple& cells) {
  RecordReader records(log, file, kRoutine, "domain data");
  std::int32_t count = 0;
  records.take({.items = {&count},
                .echo = {{"no. of domains =", {&count}}},
                .rules = {{frame::items("no. of domains != no. of processes(=", 1, ")"),
                           [&] { return count == 1; }}}});
  std::array<std::int32_t, 6> ends{};
  const std::array<std::int32_t, 6> whole{1, cells[0], 1, cells[1], 1, cells[2]};
  records.take({.items = {std::span(ends)},
                .echo = {{"is,ie,js,je,ks,ke=", {std::span(ends)}}},
                .rules = {{"domain is not the whole grid", [&] { return ends == whole; }}}});
}

}  // namespace

void flw_list_cmmbnd(frame::Log& log, frame::TextInput* file, frame::TextInput& boundary,
                     const Triple& cells) {
  const frame::Tag tag(log, kRoutine);
  if (file == nullptr) return;
  log.line("read domain data to make up communication boundary");
  read_domains(log, *file, cells);
  log.line("read boundary condition data to");
  log.line("make up communication boundary");
  std::array<std::int32_t, 6> bc{};
  boundary.rewind();
  RecordReader(log, boundary, kRoutine, "boundary data")
      .take({.items = {std::span(bc)},
             .echo = {{"  iminbc,imaxbc =", {&bc[0], &bc[1]}},
                      {"  jminbc,jmaxbc =", {&bc[2], &bc[3]}},
                      {"  kminbc,kmaxbc =", {&bc[4], &bc[5]}}}});
}

}  // namespace flow
