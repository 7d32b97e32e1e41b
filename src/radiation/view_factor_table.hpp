// Gathers view factors that come in any order into the panels of the table.
//
// A file of view factors has tens of millions of lines and is read once. Its entries are held in
// pages, a chain of pages for each span of destinations; when all are there the spans are sorted
// into the table, one a hand, and their pages given back at once. So the largest memory held is the
// pages, 10 bytes an entry where the table has 6 or 8, and a span more for each hand, and the
// entries of a destination keep the order of the file. Used by read_viewfactor.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame/crew.hpp"
#include "frame/page_memory.hpp"
#include "radiation/view_factor_panels.hpp"

namespace tsrf_module_raddat {

class ViewFactorGatherer {
 public:
  explicit ViewFactorGatherer(std::int32_t groups);

  void add(std::int32_t source, std::int32_t destination, float factor) {
    const auto d = static_cast<std::uint32_t>(destination);
    Span& span = spans_[d / width_];
    if (span.filled == kPageEntries) open_page(span);
    EntryPage& page = *span.pages.back();
    page.source[span.filled] = static_cast<std::uint32_t>(source);
    page.factor[span.filled] = factor;
    page.place[span.filled++] = static_cast<std::uint16_t>(d % width_);
    const auto panel = static_cast<std::uint8_t>(panel_of(static_cast<std::uint32_t>(source)));
    in_order_ = in_order_ && panel >= reached_[d];
    reached_[d] = panel;
    ++counts_[std::size_t{d} * panels_ + panel];
  }
  /// The table of all entries; the gatherer is empty afterwards.
  ViewFactors take_table(frame::Crew& crew);

 private:
  static constexpr std::size_t kPageEntries = 1 << 14;
  static constexpr std::uint32_t kSpans = 32;
  static constexpr std::uint32_t kWidest = 1 << 16;  // what the place in a span can hold

  struct EntryPage {
    std::array<std::uint32_t, kPageEntries> source;
    std::array<float, kPageEntries> factor;
    std::array<std::uint16_t, kPageEntries> place;  // destination within the span
  };
  struct Span {
    std::vector<frame::PagePtr<EntryPage>> pages;
    std::size_t filled = kPageEntries;  // of the last page
  };
  static void open_page(Span& span);
  [[nodiscard]] std::uint32_t panel_of(std::uint32_t source) const {
    return panels_ == 1 ? 0 : source / kPanelSources;
  }
  [[nodiscard]] bool worth_panels() const;
  void join_counts();
  [[nodiscard]] std::vector<std::uint32_t> ranked(std::size_t begin, std::size_t end,
                                                  std::size_t panel) const;
  [[nodiscard]] std::uint32_t count(std::uint32_t destination, std::size_t panel) const;
  template <class Index>
  void lay_out(frame::Crew& crew, std::size_t index, Panel<Index>& panel) const;
  template <class Index>
  std::vector<Panel<Index>> panels(frame::Crew& crew);
  template <class Index>
  void sort_span(std::size_t index, std::vector<Panel<Index>>& panels);

  std::uint32_t groups_;
  std::uint32_t width_;   // destinations of a span, whole slices
  std::uint32_t panels_;  // 1: one panel for all sources
  bool in_order_ = true;  // each destination has come panel by panel
  std::vector<Span> spans_;
  std::vector<std::uint32_t> counts_;  // entries of each destination, panel by panel
  std::vector<std::uint8_t> reached_;  // the panel of the last entry of each destination
};

}  // namespace tsrf_module_raddat
