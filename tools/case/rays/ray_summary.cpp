// The words of the RaySummary.
#include <array>
#include <cinttypes>
#include <cstdio>

#include "rays/view_factors.hpp"

namespace townskin_case {

namespace {

template <class... Values>
std::string text(const char* format, Values... values) {
  std::array<char, 256> line{};
  std::snprintf(line.data(), line.size(), format, values...);
  return line.data();
}

/// A share of all rays, with their number.
std::string of_rays(std::uint64_t some, const RaySummary& summary, const char* what) {
  const double percent = 100.0 * static_cast<double>(some) / static_cast<double>(summary.rays);
  return text("%" PRIu64 " rays (%.3g %%) %s", some, percent, what);
}

}  // namespace

std::vector<std::string> lines_of(const RaySummary& s) {
  std::vector<std::string> lines{text("%" PRIu64 " rays for the view factors", s.rays)};
  if (s.below > 0) lines.push_back(of_rays(s.below, s, "left the area below the horizon"));
  if (s.inside > 0) {
    lines.push_back(of_rays(s.inside, s, "started inside a wall or below the ground"));
    lines.push_back(text("groups with half of their rays or more there: %zu", s.groups_inside));
  }
  if (s.in_crown > 0) lines.push_back(of_rays(s.in_crown, s, "started inside a crown"));
  if (s.bare > 0) lines.push_back(text("groups that see nothing but themselves: %zu", s.bare));
  lines.push_back(text("standard error of the sky's share: %.2g in the mean, at most %.2g",
                       s.sky_error, s.largest_sky_error));
  if (s.cut > 0.0) {
    lines.push_back(
        text("smallest pairs cut: %.2g %% of what groups exchange, of one group at most %.2g %%",
             100.0 * s.cut, 100.0 * s.largest_cut));
  }
  lines.push_back(text("rows are balanced from a gap of at most %.2g to %.2g in %d sweeps",
                       s.unbalanced, s.closure, s.sweeps));
  if (s.on_itself > 0.0) {
    lines.push_back(text(
        "what could not be balanced is left to the group itself: at most %.2g of it", s.on_itself));
  }
  return lines;
}

}  // namespace townskin_case
