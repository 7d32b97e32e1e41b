// Gathers view factors that come in any order into a table by destination group.
//
// A file of view factors has tens of millions of lines and is read once. Its entries are held in
// pages, a chain of pages for each span of destinations; when all are there the spans are sorted
// into the table, one a hand, and their pages given back at once. So the largest memory held
// is 1.25 times the table and a span more for each hand, and the entries of a destination keep the
// order of the file. Used by read_viewfactor.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame/crew.hpp"
#include "frame/page_memory.hpp"
#include "radiation/raddat.hpp"

namespace tsrf_module_raddat {

class ViewFactorGatherer {
 public:
  explicit ViewFactorGatherer(std::int32_t groups);

  void add(std::int32_t source, std::int32_t destination, float factor) {
    const auto d = static_cast<std::uint32_t>(destination);
    Span& span = spans_[d / width_];
    if (span.filled == kPageEntries) open_page(span);
    EntryPage& page = *span.pages.back();
    page.source[span.filled] = source;
    page.factor[span.filled] = factor;
    page.place[span.filled++] = static_cast<std::uint16_t>(d % width_);
    ++counts_[d];
  }
  /// The table of all entries; the gatherer is empty afterwards.
  ViewFactors take_table(frame::Crew& crew);

 private:
  static constexpr std::size_t kPageEntries = 1 << 14;
  static constexpr std::uint32_t kSpans = 32;
  static constexpr std::uint32_t kWidest = 1 << 16;  // what the place in a span can hold

  struct EntryPage {
    std::array<std::int32_t, kPageEntries> source;
    std::array<float, kPageEntries> factor;
    std::array<std::uint16_t, kPageEntries> place;  // destination within the span
  };
  struct Span {
    std::vector<frame::PagePtr<EntryPage>> pages;
    std::size_t filled = kPageEntries;  // of the last page
  };
  static void open_page(Span& span);
  void sort_span(std::size_t index, ViewFactors& table);

  std::uint32_t width_;
  std::vector<Span> spans_;
  std::vector<std::int64_t> counts_;  // entries of each destination
};

}  // namespace tsrf_module_raddat
