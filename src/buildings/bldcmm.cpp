#include "buildings/bldcmm.hpp"

#include <algorithm>
#include <numeric>

namespace tsrf_module_bldcmm {

namespace {

using Ids = std::vector<std::int32_t>;

/// The partner of a rank in the list, entered when it is not there yet.
frame::Partner& partner(std::vector<frame::Partner>& list, std::int32_t rank) {
  const auto at = std::ranges::lower_bound(list, rank, {}, &frame::Partner::rank);
  if (at != list.end() && at->rank == rank) return *at;
  return *list.insert(at, {rank, {}});
}

/// The BldIDs of all processes; every process gives its own.
std::vector<Ids> gather_ids(const frame::ProcessLayer& layer, const Ids& own) {
  const auto ranks = static_cast<std::size_t>(frame::flw_m_size(layer));
  Ids counts(ranks);
  const Ids count{static_cast<std::int32_t>(own.size())};
  frame::flw_m_gather<std::int32_t>(layer, count, counts);
  Ids all(static_cast<std::size_t>(std::accumulate(counts.begin(), counts.end(), 0)));
  frame::flw_m_gather<std::int32_t>(layer, own, all);
  std::vector<Ids> by_rank;
  auto first = all.begin();
  for (const std::int32_t n : counts) {
    by_rank.emplace_back(first, first + n);
    first += n;
  }
  return by_rank;
}

}  // namespace

std::vector<std::int32_t> renum_id(std::span<const std::int32_t> ids) {
  Ids compact(ids.begin(), ids.end());
  std::ranges::sort(compact);
  compact.erase(std::unique(compact.begin(), compact.end()), compact.end());
  return compact;
}

frame::ShareLists lists_of(std::int32_t rank, std::span<const std::vector<std::int32_t>> BldIDs) {
  const auto own = static_cast<std::size_t>(rank);
  const Ids ids = renum_id(BldIDs[own]);
  std::vector<frame::CodeIndex> places(BldIDs.size());
  for (std::size_t r = 0; r < BldIDs.size(); ++r) places[r] = frame::CodeIndex(BldIDs[r]);
  frame::ShareLists lists;
  for (const std::int32_t id : ids) {
    const std::int32_t place = places[own].find(id);
    const auto has = [id](const frame::CodeIndex& index) { return index.find(id) >= 0; };
    const auto keeper =
        static_cast<std::int32_t>(std::ranges::find_if(places, has) - places.begin());
    if (keeper != rank) {
      partner(lists.keepers, keeper).items.push_back(place);
      continue;
    }
    for (std::size_t r = own + 1; r < places.size(); ++r) {
      if (!has(places[r])) continue;
      partner(lists.sharers, static_cast<std::int32_t>(r)).items.push_back(place);
    }
  }
  return lists;
}

void bldcmm_set_list(frame::Log& log, const frame::ProcessLayer& layer,
                     const tsrf_module_bldng::Data& bldng, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_bldcmm)(bldcmm_set_list)");
  frame::allocating(
      log, "lists of buildings", frame::bytes_of<std::int32_t>(bldng.BldID.size(), 2), [&] {
        const std::int32_t rank = frame::flw_m_rank(layer);
        const std::vector<Ids> BldIDs = gather_ids(layer, bldng.BldID);
        if (BldIDs[static_cast<std::size_t>(rank)] != bldng.BldID) {
          log.program_error("### program error -1- (tsrf_module_bldcmm)", "(bldcmm_set_list)");
        }
        data.lists = lists_of(rank, BldIDs);
      });
}

void sumbldat01(frame::Log& log, const frame::ProcessLayer& layer, const Data& data,
                std::size_t count, std::span<double> sums) {
  const frame::Tag tag(log, "(sumbldat01)");
  frame::tsrf_comm_sumdat(layer, data.lists, count, sums);
}

}  // namespace tsrf_module_bldcmm
