// The table of view factors as a sweep of the exchange takes it.
//
// The table is the largest structure of a run and passes the processor in each sweep, so what
// counts is its bytes, and that the radiosities which it points at stay near the processor. Both
// come from panels: the factors whose sources are among 65,535 groups in a row, told by 16 bits,
// whose radiosities are 1 MB. Behind these stands an empty place, of radiosity 0. A panel holds
// slices of eight destinations, and a slice holds octets: one factor of each of its destinations,
// so that eight sums grow side by side and none waits for its last addition. Destinations of a
// slice have about as many factors each, and what is missing is filled up with factors of 0 from
// the empty place. A destination gets its factors in the order of the file, panel after panel;
// where a file has them in an order that panels would change, one panel holds all, and 32 bits tell
// the source. Made by ViewFactorGatherer, owned by tsrf_module_raddat, read by the exchange.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tsrf_module_raddat {

inline constexpr std::size_t kAbreast = 8;  ///< destinations of a slice
inline constexpr std::uint32_t kPanelPlaces = 1U << 16;
inline constexpr std::uint32_t kPanelSources = kPanelPlaces - 1;  ///< the last place is empty

/// Where the sweeps keep the radiosity of group g: an empty place stands behind each panel's, and
/// one behind the last group's.
constexpr std::size_t place_of(std::size_t g) { return g + g / kPanelSources; }
constexpr std::size_t group_at(std::size_t place) { return place - place / kPanelPlaces; }
/// Places of so many groups, with the empty ones.
constexpr std::size_t places_of(std::size_t groups) {
  return groups == 0 ? 1 : place_of(groups - 1) + 2;
}

/// The next factor of each destination of a slice; a factor of 0 where there is none.
template <class Index>
struct Octet {
  std::array<Index, kAbreast> source;  ///< place, counted from the first of the panel
  std::array<float, kAbreast> factor;
};

template <class Index>
struct Panel {
  std::size_t first_place = 0;
  std::vector<std::uint32_t> destination;  ///< eight a slice; the number of groups for nobody
  std::vector<std::uint32_t> first;        ///< octets first[s] .. first[s + 1] - 1 are of slice s
  std::vector<Octet<Index>> octets;

  [[nodiscard]] std::size_t slices() const { return destination.size() / kAbreast; }
  [[nodiscard]] std::span<const std::uint32_t, kAbreast> destinations(std::size_t slice) const {
    return std::span(destination).subspan(slice * kAbreast).template first<kAbreast>();
  }
  [[nodiscard]] std::span<const Octet<Index>> of(std::size_t slice) const {
    return std::span(octets).subspan(first[slice], first[slice + 1] - first[slice]);
  }
};

/// View factors by destination; panels of one kind alone.
struct ViewFactors {
  std::vector<Panel<std::uint16_t>> narrow;
  std::vector<Panel<std::uint32_t>> wide;

  /// Hands each factor above 0 to `take(destination, source, factor)`, those of a destination in
  /// the order of the file. `take` may change the factor.
  template <class Take>
  void each(Take&& take) {
    for (auto& panel : narrow) each_of(panel, take);
    for (auto& panel : wide) each_of(panel, take);
  }

  /// The same of a table that is only looked at.
  template <class Take>
  void each(Take&& take) const {
    for (const auto& panel : narrow) each_of(panel, take);
    for (const auto& panel : wide) each_of(panel, take);
  }

  /// True before it is read.
  [[nodiscard]] bool empty() const { return narrow.empty() && wide.empty(); }
  /// Bytes of the table.
  [[nodiscard]] std::size_t bytes() const {
    std::size_t sum = 0;
    for (const auto& panel : narrow) sum += bytes_of(panel);
    for (const auto& panel : wide) sum += bytes_of(panel);
    return sum;
  }

 private:
  template <class OnePanel, class Take>
  static void each_of(OnePanel& panel, Take& take) {
    for (std::size_t s = 0; s < panel.slices(); ++s) {
      const auto destinations = panel.destinations(s);
      for (std::size_t k = panel.first[s]; k < panel.first[s + 1]; ++k) {
        auto& octet = panel.octets[k];
        for (std::size_t lane = 0; lane < kAbreast; ++lane) {
          if (octet.factor[lane] == 0.0F) continue;
          take(std::size_t{destinations[lane]}, group_at(panel.first_place + octet.source[lane]),
               octet.factor[lane]);
        }
      }
    }
  }
  template <class Index>
  static std::size_t bytes_of(const Panel<Index>& panel) {
    return panel.octets.size() * sizeof(Octet<Index>) +
           (panel.destination.size() + panel.first.size()) * sizeof(std::uint32_t);
  }
};

}  // namespace tsrf_module_raddat
