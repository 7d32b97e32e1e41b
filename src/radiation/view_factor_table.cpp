#include "radiation/view_factor_table.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace tsrf_module_raddat {

namespace {

/// More panels would take more memory for counts than they save.
constexpr std::uint32_t kMostPanels = 16;
/// Entries of a destination in a panel, in the mean, from which on panels pay: the sums of each
/// destination are taken up and put down once a panel.
constexpr std::uint64_t kFewEntries = 8;
/// Destinations among which those of a slice are chosen: enough to find some with about as many
/// entries, few enough that the sources near to them stay in the nearest cache from slice to slice.
constexpr std::size_t kWindow = 64;

constexpr std::uint32_t divided_up(std::uint32_t count, std::uint32_t by) {
  return (count + by - 1) / by;
}

/// A span's share of the groups, in whole slices.
std::uint32_t span_width(std::uint32_t groups, std::uint32_t spans, std::uint32_t widest) {
  constexpr std::uint32_t kSlice = kAbreast;
  return std::clamp(divided_up(divided_up(groups, spans), kSlice) * kSlice, kSlice, widest);
}

/// Factors of 0 from the empty place behind the sources of the panel.
template <class Index>
Octet<Index> empty_octet(std::size_t groups, const Panel<Index>& panel) {
  const std::size_t last = places_of(groups) - 1 - panel.first_place;
  Octet<Index> octet{};
  octet.source.fill(
      static_cast<Index>(std::min<std::size_t>(last, std::numeric_limits<Index>::max())));
  return octet;
}

}  // namespace

ViewFactorGatherer::ViewFactorGatherer(std::int32_t groups)
    : groups_(static_cast<std::uint32_t>(groups)),
      width_(span_width(groups_, kSpans, kWidest)),
      panels_(std::max(divided_up(groups_, kPanelSources), 1U)) {
  if (panels_ > kMostPanels) panels_ = 1;
  spans_.resize(divided_up(groups_, width_));
  counts_.resize(std::size_t{groups_} * panels_);
  reached_.resize(groups_);
}

void ViewFactorGatherer::open_page(Span& span) {
  span.pages.push_back(frame::make_on_pages<EntryPage>());
  span.filled = 0;
}

bool ViewFactorGatherer::worth_panels() const {
  const auto entries = std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
  return in_order_ && entries >= kFewEntries * counts_.size();
}

/// One panel holds what several have counted.
void ViewFactorGatherer::join_counts() {
  for (std::size_t g = 0; g < groups_; ++g) {
    const auto* const of_group = counts_.data() + g * panels_;
    counts_[g] = std::accumulate(of_group, of_group + panels_, 0U);
  }
  counts_.resize(groups_);
  panels_ = 1;
}

std::uint32_t ViewFactorGatherer::count(std::uint32_t destination, std::size_t panel) const {
  return destination < groups_ ? counts_[std::size_t{destination} * panels_ + panel] : 0;
}

ViewFactors ViewFactorGatherer::take_table(frame::Crew& crew) {
  ViewFactors table;
  if (panels_ > 1 && !worth_panels()) join_counts();
  if (groups_ <= kPanelSources || panels_ > 1) {
    table.narrow = panels<std::uint16_t>(crew);
  } else {
    table.wide = panels<std::uint32_t>(crew);
  }
  counts_.clear();
  return table;
}

/// Destinations begin .. end-1, those with about as many entries side by side.
std::vector<std::uint32_t> ViewFactorGatherer::ranked(std::size_t begin, std::size_t end,
                                                      std::size_t panel) const {
  std::vector<std::uint32_t> destinations(end - begin);
  std::iota(destinations.begin(), destinations.end(), static_cast<std::uint32_t>(begin));
  for (std::size_t n = 0; n < destinations.size(); n += kWindow) {
    const auto first = destinations.begin() + static_cast<std::ptrdiff_t>(n);
    const auto last = first + static_cast<std::ptrdiff_t>(std::min(kWindow, end - begin - n));
    std::stable_sort(first, last, [&](std::uint32_t a, std::uint32_t b) {
      return count(a, panel) > count(b, panel);
    });
  }
  return destinations;
}

/// Settles the slices of a panel and how many octets each has.
template <class Index>
void ViewFactorGatherer::lay_out(frame::Crew& crew, std::size_t index, Panel<Index>& panel) const {
  const std::size_t slices = divided_up(groups_, kAbreast);
  panel.first_place = index * kPanelPlaces;
  panel.destination.resize(slices * kAbreast);
  panel.first.resize(slices + 1);
  crew.each(spans_.size(), 1, [&](std::size_t n) {
    const std::size_t begin = n * width_;
    const std::size_t end = std::min(begin + width_, panel.destination.size());
    const std::vector<std::uint32_t> destinations = ranked(begin, end, index);
    for (std::size_t k = 0; k < destinations.size(); ++k) {
      panel.destination[begin + k] = std::min(destinations[k], groups_);
      auto& octets = panel.first[(begin + k) / kAbreast + 1];
      octets = std::max(octets, count(destinations[k], index));
    }
  });
  std::inclusive_scan(panel.first.begin(), panel.first.end(), panel.first.begin());
  panel.octets.reserve(panel.first.back());
}

template <class Index>
std::vector<Panel<Index>> ViewFactorGatherer::panels(frame::Crew& crew) {
  std::vector<Panel<Index>> panels(panels_);
  for (std::size_t n = 0; n < panels.size(); ++n) lay_out(crew, n, panels[n]);
  const std::size_t slices = width_ / kAbreast;
  for (std::size_t first = 0; first < spans_.size(); first += crew.hands()) {
    const std::size_t last = std::min(first + crew.hands(), spans_.size());
    // The table grows span by span, within the memory reserved, so that its pages are taken only
    // as those of the pages are given back.
    for (Panel<Index>& panel : panels) {
      panel.octets.resize(panel.first[std::min(last * slices, panel.slices())],
                          empty_octet(groups_, panel));
    }
    crew.each(last - first, 1, [&](std::size_t n) { sort_span(first + n, panels); });
  }
  return panels;
}

template <class Index>
void ViewFactorGatherer::sort_span(std::size_t index, std::vector<Panel<Index>>& panels) {
  const std::size_t begin = index * width_;
  const std::size_t end = std::min<std::size_t>(begin + width_, groups_);
  // The octet that the next entry of each destination goes to, in each panel, and its lane.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> next((end - begin) * panels_);
  for (std::size_t p = 0; p < panels.size(); ++p) {
    for (std::size_t k = begin; k < std::min(begin + width_, panels[p].destination.size()); ++k) {
      const std::uint32_t g = panels[p].destination[k];
      if (g == groups_) continue;
      next[(g - begin) * panels_ + p] = {panels[p].first[k / kAbreast], k % kAbreast};
    }
  }
  Span& span = spans_[index];
  for (auto& page : span.pages) {
    const std::size_t count = page == span.pages.back() ? span.filled : kPageEntries;
    for (std::size_t k = 0; k < count; ++k) {
      const std::uint32_t source = page->source[k];
      const std::size_t p = panel_of(source);
      auto& [at, lane] = next[std::size_t{page->place[k]} * panels_ + p];
      Octet<Index>& octet = panels[p].octets[at++];
      octet.source[lane] = static_cast<Index>(place_of(source) - panels[p].first_place);
      octet.factor[lane] = page->factor[k];
    }
    page.reset();
  }
  span = {};
}

}  // namespace tsrf_module_raddat
