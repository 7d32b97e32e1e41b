#include "flow/domains/list_cmmbnd.hpp"

#include "flow/domains/dc1.hpp"
#include "flow/input/record.hpp"

namespace flow {

namespace {

constexpr std::string_view kRoutine = "(flw_list_cmmbnd)";

SubDomains read_domains(frame::Log& log, std::int32_t nprocs, frame::TextInput& file,
                        const Triple& cells) {
  RecordReader records(log, file, kRoutine, "domain data");
  const auto place = [&] { return file.line_text(file.line_at(records.place())); };
  std::int32_t count = 0;
  records.take({.items = {&count}, .echo = {{"no. of domains =", {&count}}}});
  flw_module_dc1::check_count(log, place(), count, nprocs);
  std::vector<flw_module_dc1::Record> domains;
  {
    const frame::Tag tag(log, "(flw_module_dc1)(mklist)");
    const auto size = static_cast<std::size_t>(count);
    frame::allocating(
        log, "domains", frame::bytes_of<flw_module_dc1::Record>(size),
        [&] { domains.resize(size); }, "### error : allocation failed -1-");
  }
  for (flw_module_dc1::Record& domain : domains) {
    std::array<std::int32_t, 7> values{};
    records.take(
        {.items = {std::span(values)}, .echo = {{"rank,is,ie,js,je,ks,ke=", {std::span(values)}}}});
    domain = {
        values[0], {values[1], values[3], values[5]}, {values[2], values[4], values[6]}, place()};
  }
  return flw_module_dc1::make_table(log, cells, domains);
}

void tell_ends(frame::Log& log, frame::TextInput& boundary) {
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

}  // namespace

SubDomains flw_list_cmmbnd(frame::Log& log, const frame::ProcessLayer& layer,
                           frame::TextInput* file, frame::TextInput& boundary,
                           const Triple& cells) {
  const frame::Tag tag(log, kRoutine);
  const std::int32_t nprocs = frame::flw_m_size(layer);
  if (file == nullptr) {
    flw_module_dc1::check_count(log, "", 1, nprocs);
    return {cells, {{{1, 1, 1}, cells}}};
  }
  log.line("read domain data to make up communication boundary");
  SubDomains domains = read_domains(log, nprocs, *file, cells);
  tell_ends(log, boundary);
  return domains;
}

}  // namespace flow
