#include "flow/domains/indcmm.hpp"

#include <algorithm>
#include <string>

namespace flow::flw_module_indcmm {

namespace {

using flw_module_dc1::FaceAxis;
using flw_module_dc1::Link;
using flw_module_dc1::Partner;
using Links = std::array<const Link*, 3>;

[[noreturn]] void stop(frame::Log& log, int number) {
  log.stop_with(frame::kStatusAbnormal, "### program error -" + std::to_string(number) + "-",
                "(flw_module_indcmm)(mkindex)");
}

std::int32_t count_of(const SubDomains& domains) {
  return static_cast<std::int32_t>(domains.of.size());
}

/// Calls `work` for the links of each entry that a partner gives, x fastest.
template <class Work>
void each_entry(const Partner& partner, Pattern pattern, Work&& work) {
  for (const Link& z : partner.along[2]) {
    for (const Link& y : partner.along[1]) {
      for (const Link& x : partner.along[0]) {
        if (pattern == Pattern::nearest && x.depth + y.depth + z.depth > 1) continue;
        work(Links{&x, &y, &z});
      }
    }
  }
}

std::size_t place(const SubDomain& domain, const Links& links, std::int32_t Link::*number) {
  Triple at{};
  for (std::size_t a = 0; a < 3; ++a) at[a] = links[a]->*number - domain.first[a] + 1;
  return domain.box().at(at[0], at[1], at[2]);
}

bool is_kept(const Links& links) {
  return links[0]->entry == links[0]->source && links[1]->entry == links[1]->source &&
         links[2]->entry == links[2]->source;
}

void note_turns(const Links& links, std::size_t to, Exchange& exchange) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (links[a]->turned) exchange.turned[a].push_back(to);
  }
}

void list_received(const SubDomains& domains, std::int32_t rank, const Partner& partner,
                   Pattern pattern, Exchange& exchange) {
  const SubDomain& self = domains.of[static_cast<std::size_t>(rank)];
  Places places{partner.rank, {}};
  each_entry(partner, pattern, [&](const Links& links) {
    if (partner.rank == rank && is_kept(links)) return;
    const std::size_t to = place(self, links, &Link::entry);
    note_turns(links, to, exchange);
    if (partner.rank == rank) {
      exchange.own.push_back({to, place(self, links, &Link::source)});
    } else {
      places.at.push_back(to);
    }
  });
  if (!places.at.empty()) exchange.receive.push_back(std::move(places));
}

void list_sent(const SubDomains& domains, std::int32_t rank, const Partner& to, Pattern pattern,
               Exchange& exchange) {
  const SubDomain& self = domains.of[static_cast<std::size_t>(rank)];
  Places places{to.rank, {}};
  each_entry(to, pattern,
             [&](const Links& links) { places.at.push_back(place(self, links, &Link::source)); });
  if (!places.at.empty()) exchange.send.push_back(std::move(places));
}

/// The faces that this process keeps at the symmetric ends of their axis.
void list_closed(const SubDomains& domains, const Ends& ends, std::int32_t rank, FaceAxis faces,
                 Exchange& exchange) {
  const SubDomain& self = domains.of[static_cast<std::size_t>(rank)];
  const auto across = static_cast<std::size_t>(faces);
  const Box box = self.box();
  for (const std::int32_t face : {0, domains.cells[across]}) {
    const bool there = face == 0 ? self.first[across] == 1 : self.last[across] == face;
    if (!there || ends[across][face == 0 ? 0 : 1] != End::symmetric) continue;
    Triple last = box.n, at{1, 1, 1};
    last[across] = at[across] = face - self.first[across] + 1;
    for (std::int32_t k = at[2]; k <= last[2]; ++k) {
      for (std::int32_t j = at[1]; j <= last[1]; ++j) {
        for (std::int32_t i = at[0]; i <= last[0]; ++i) exchange.closed.push_back(box.at(i, j, k));
      }
    }
  }
}

/// Number of entries of a process's array, halos of computed axes included.
std::int64_t entries(const SubDomains& domains, std::int32_t rank) {
  const Box box = domains.of[static_cast<std::size_t>(rank)].box();
  std::int64_t count = 1;
  for (int axis = 0; axis < 3; ++axis) {
    const std::int32_t n = box.n[static_cast<std::size_t>(axis)];
    count *= domains.computed(axis) ? n + 2 * kHalo : n;
  }
  return count;
}

Exchange all_lists(frame::Log& log, const SubDomains& domains, const Ends& ends, std::int32_t rank,
                   FaceAxis faces, Pattern pattern) {
  Exchange exchange;
  std::int64_t missing = entries(domains, rank);
  for (const Partner& partner : flw_module_dc1::mklist(domains, ends, rank, faces)) {
    missing -= partner.count();
    list_received(domains, rank, partner, pattern, exchange);
  }
  if (missing != 0) stop(log, 1);
  for (std::int32_t other = 0; other < count_of(domains); ++other) {
    if (other == rank) continue;
    Partner to = flw_module_dc1::given(domains, ends, other, rank, faces);
    to.rank = other;
    list_sent(domains, rank, to, pattern, exchange);
  }
  if (faces >= 0) list_closed(domains, ends, rank, faces, exchange);
  return exchange;
}

}  // namespace

Exchange mkindex(frame::Log& log, const SubDomains& domains, const Ends& ends, std::int32_t rank,
                 FaceAxis faces, Pattern pattern) {
  const frame::Tag tag(log, "(flw_module_indcmm)(mkindex)");
  if (rank < 0 || rank >= count_of(domains)) stop(log, 0);
  Exchange exchange;
  if (faces >= 0 && !domains.computed(faces)) return exchange;
  const std::int64_t halo =
      entries(domains, rank) - domains.of[static_cast<std::size_t>(rank)].box().cells();
  frame::allocating(
      log, "index lists",
      frame::bytes_of<std::size_t>(static_cast<std::size_t>(std::max<std::int64_t>(halo, 0)), 2),
      [&] { exchange = all_lists(log, domains, ends, rank, faces, pattern); },
      "### error : allocation failed -1-");
  return exchange;
}

FaceExchange mkindex_faces(frame::Log& log, const SubDomains& domains, const Ends& ends,
                           std::int32_t rank) {
  return {mkindex(log, domains, ends, rank, 0), mkindex(log, domains, ends, rank, 1),
          mkindex(log, domains, ends, rank, 2)};
}

}  // namespace flow::flw_module_indcmm
