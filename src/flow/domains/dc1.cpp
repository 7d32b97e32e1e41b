#include "flow/domains/dc1.hpp"

#include <algorithm>

namespace flow::flw_module_dc1 {

namespace {

[[noreturn]] void stop(frame::Log& log, const std::string& place, int number) {
  log.stop_with(frame::kStatusAbnormal, place, "### program error -" + std::to_string(number) + "-",
                "(flw_module_dc1)(mklist)");
}

bool is_within(const Record& record, const Triple& cells) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (record.first[a] < 1 || record.last[a] < record.first[a]) return false;
    if (record.last[a] > cells[a]) return false;
  }
  return true;
}

bool meet(const Record& one, const Record& other) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (one.last[a] < other.first[a] || other.last[a] < one.first[a]) return false;
  }
  return true;
}

/// One direction of the grid, as an array of cells or of faces has it.
struct Direction {
  std::int32_t cells;
  std::array<End, 2> ends;
  bool faces;  ///< the array is one of faces across this direction: 0 .. cells

  /// What entry `g` takes. A face at a symmetric end is kept, and 0 (indcmm).
  [[nodiscard]] Link link(std::int32_t g) const {
    const std::int32_t first = faces ? 0 : 1;
    const End end = ends[g > cells ? 1 : 0];
    if (end == End::periodic && g > cells) return {g, g - cells, false};
    if (end == End::periodic && g < 1) return {g, g + cells, false};
    if (end == End::symmetric && g > cells) return {g, 2 * cells + first - g, true};
    if (end == End::symmetric && g < first) return {g, first - g, true};
    return {g, std::clamp(g, first, cells), false};
  }
  /// First entry that the domain with these first cells keeps.
  [[nodiscard]] std::int32_t first_kept(std::int32_t first) const {
    return faces && first == 1 && ends[0] != End::periodic ? 0 : first;
  }
};

Direction direction(const SubDomains& domains, const Ends& ends, std::size_t axis, FaceAxis faces) {
  return {domains.cells[axis], ends[axis], static_cast<int>(axis) == faces};
}

std::vector<Link> links(const Direction& across, const std::array<std::int32_t, 2>& receiver,
                        const std::array<std::int32_t, 2>& giver) {
  const std::int32_t beyond = across.cells > 1 ? kHalo : 0;
  std::vector<Link> found;
  for (std::int32_t g = receiver[0] - beyond; g <= receiver[1] + beyond; ++g) {
    Link link = across.link(g);
    if (link.source < across.first_kept(giver[0]) || link.source > giver[1]) continue;
    link.depth = std::max({across.first_kept(receiver[0]) - g, g - receiver[1], 0});
    found.push_back(link);
  }
  return found;
}

}  // namespace

void check_count(frame::Log& log, const std::string& place, std::int32_t count,
                 std::int32_t nprocs) {
  if (count < 1 || count != nprocs) stop(log, place, 0);
}

SubDomains make_table(frame::Log& log, const Triple& cells, const std::vector<Record>& records) {
  SubDomains domains{cells, std::vector<SubDomain>(records.size())};
  std::vector<bool> there(records.size());
  for (const Record& record : records) {
    const auto rank = static_cast<std::size_t>(record.rank);
    if (record.rank < 0 || rank >= records.size() || there[rank]) stop(log, record.place, 1);
    there[rank] = true;
    domains.of[rank] = {record.first, record.last};
  }
  for (const Record& record : records) {
    if (!is_within(record, cells)) stop(log, record.place, 2);
  }
  std::int64_t left = Box{cells}.cells();
  for (auto record = records.begin(); record != records.end(); ++record) {
    left -= SubDomain{record->first, record->last}.box().cells();
    const auto meets = [&](const Record& before) { return meet(*record, before); };
    if (std::any_of(records.begin(), record, meets)) stop(log, record->place, 3);
  }
  if (left != 0) stop(log, records.back().place, 3);
  return domains;
}

std::int64_t Partner::count() const {
  const auto size = [this](std::size_t a) { return static_cast<std::int64_t>(along[a].size()); };
  return size(0) * size(1) * size(2);
}

Partner given(const SubDomains& domains, const Ends& ends, std::int32_t receiver,
              std::int32_t giver, FaceAxis faces) {
  const SubDomain& to = domains.of[static_cast<std::size_t>(receiver)];
  const SubDomain& from = domains.of[static_cast<std::size_t>(giver)];
  Partner partner{giver, {}};
  for (std::size_t a = 0; a < 3; ++a) {
    partner.along[a] = links(direction(domains, ends, a, faces), {to.first[a], to.last[a]},
                             {from.first[a], from.last[a]});
    if (partner.along[a].empty()) return {giver, {}};
  }
  return partner;
}

std::vector<Partner> mklist(const SubDomains& domains, const Ends& ends, std::int32_t receiver,
                            FaceAxis faces) {
  std::vector<Partner> partners;
  for (std::int32_t giver = 0; giver < static_cast<std::int32_t>(domains.of.size()); ++giver) {
    Partner partner = given(domains, ends, receiver, giver, faces);
    if (partner.count() > 0) partners.push_back(std::move(partner));
  }
  return partners;
}

}  // namespace flow::flw_module_dc1
