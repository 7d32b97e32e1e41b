#include "radiation/view_factor_table.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tsrf_module_raddat {

ViewFactorGatherer::ViewFactorGatherer(std::int32_t groups)
    : width_(std::clamp((static_cast<std::uint32_t>(groups) + kSpans - 1) / kSpans, 1U, kWidest)),
      spans_((static_cast<std::uint32_t>(groups) + width_ - 1) / width_),
      counts_(static_cast<std::size_t>(groups)) {}

void ViewFactorGatherer::open_page(Span& span) {
  span.pages.push_back(frame::make_on_pages<EntryPage>());
  span.filled = 0;
}

ViewFactors ViewFactorGatherer::take_table(frame::Crew& crew) {
  ViewFactors table;
  table.first.resize(counts_.size() + 1);
  std::inclusive_scan(counts_.begin(), counts_.end(), table.first.begin() + 1);
  table.entries.reserve(static_cast<std::size_t>(table.first.back()));
  for (std::size_t first = 0; first < spans_.size(); first += crew.hands()) {
    const std::size_t last = std::min(first + crew.hands(), spans_.size());
    // The table grows span by span, within the memory reserved, so that its pages are taken only
    // as those of the pages are given back.
    const std::size_t end = std::min(last * width_, counts_.size());
    table.entries.resize(static_cast<std::size_t>(table.first[end]));
    crew.each(last - first, 1, [&](std::size_t n) { sort_span(first + n, table); });
  }
  counts_.clear();
  return table;
}

void ViewFactorGatherer::sort_span(std::size_t index, ViewFactors& table) {
  const std::size_t begin = index * width_;
  const std::size_t end = std::min(begin + width_, counts_.size());
  std::vector<std::int64_t> next(table.first.begin() + static_cast<std::ptrdiff_t>(begin),
                                 table.first.begin() + static_cast<std::ptrdiff_t>(end));
  Span& span = spans_[index];
  for (auto& page : span.pages) {
    const std::size_t count = page == span.pages.back() ? span.filled : kPageEntries;
    for (std::size_t k = 0; k < count; ++k) {
      const auto to = static_cast<std::size_t>(next[page->place[k]]++);
      table.entries[to] = {page->source[k], page->factor[k]};
    }
    page.reset();
  }
  span = {};
}

}  // namespace tsrf_module_raddat
