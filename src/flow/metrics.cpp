#include "flow/metrics.hpp"

#include <algorithm>

namespace flow {

namespace {

AxisMetric metric_of(const AxisTable& table) {
  const std::int32_t last = table.cells + kHalo;
  const auto size = static_cast<std::size_t>(table.cells) + 2 * static_cast<std::size_t>(kHalo);
  AxisMetric metric;
  for (auto* row : {&metric.inv_width, &metric.inv_gap, &metric.inv_span, &metric.narrow,
                    &metric.lower, &metric.upper}) {
    row->assign(size, 0.0);
  }
  for (std::int32_t i = -1; i <= last; ++i) {
    const auto place = static_cast<std::size_t>(std::ptrdiff_t{i} + 1);
    metric.inv_width[place] = 1.0 / table.dx(i);
    if (i == last) continue;
    const double both = table.dx(i) + table.dx(i + 1);
    metric.inv_gap[place] = 1.0 / table.dxc(i);
    metric.lower[place] = table.dx(i + 1) / both;
    metric.upper[place] = table.dx(i) / both;
    if (i == -1) continue;
    metric.inv_span[place] = 1.0 / (table.xc(i + 1) - table.xc(i - 1));
    metric.narrow[place] = std::min({table.dx(i - 1), table.dx(i), table.dx(i + 1)});
  }
  return metric;
}

}  // namespace

Metrics make_metrics(const GridTables& grid) {
  return {metric_of(grid.axis[0]), metric_of(grid.axis[1]), metric_of(grid.axis[2])};
}

}  // namespace flow
