#include "flow/grid_tables.hpp"

#include <algorithm>
#include <string>

#include "flow/input/record.hpp"

namespace flow {

namespace {

constexpr std::array<char, 3> kNames{'x', 'y', 'z'};
/// More cells than any machine can hold; below it no product of sizes overflows.
constexpr double kMostCells = 1e15;

void check_increase(RecordReader& records, char axis, const std::vector<double>& nodes) {
  const auto at =
      std::adjacent_find(nodes.begin(), nodes.end(), [](double a, double b) { return !(a < b); });
  if (at == nodes.end()) return;
  const std::string x(1, axis);
  records.fail(
      x + "(i) <= " + x + "(i-1)",
      frame::items("i," + x + "(i)," + x + "(i-1) =", at - nodes.begin() + 2, *(at + 1), *at));
}

std::vector<double> read_nodes(frame::Log& log, frame::TextInput& file, RecordReader& records,
                               char axis, std::int32_t cells) {
  std::int32_t count = 0;
  records.read(std::array<Item, 1>{&count});
  const std::int64_t wanted = std::int64_t{cells} + 1;
  if (count != wanted) {
    const std::string name(1, axis);
    records.fail(frame::items("n" + name + "-1 != m" + name + "(=", cells, ")"));
  }
  // Nodes increase, so no repeat count can stand for several: each takes two characters.
  const auto rest = static_cast<std::int64_t>(file.content().size() - file.tell());
  if (2 * wanted - 1 > rest) {
    file.mark_fault();
    records.fail_read();
  }
  std::vector<double> nodes;
  frame::allocating(log, "nodes", frame::bytes_of<double>(static_cast<std::size_t>(wanted)),
                    [&] { nodes.resize(static_cast<std::size_t>(wanted)); });
  if (records.read_list(nodes)) records.attempt([&] { check_increase(records, axis, nodes); });
  return nodes;
}

}  // namespace

AxisTable make_axis(const std::vector<double>& nodes, bool periodic) {
  AxisTable table;
  const std::size_t n = nodes.size();
  table.cells = static_cast<std::int32_t>(n) - 1;
  table.node.resize(n + 4);
  std::copy(nodes.begin(), nodes.end(), table.node.begin() + 2);
  const auto x = [&](std::size_t i) -> double& { return table.node[i + 1]; };  // -1 .. n+2
  const auto below = [&](std::size_t i) -> double& { return table.node[1 - i]; };
  // The nearer node of each end first: with one cell the further one is mirrored at it.
  if (periodic) {
    below(0) = x(n - 1) - x(n) + x(1);
    x(n + 1) = x(2) - x(1) + x(n);
    below(1) = x(n - 2) - x(n) + x(1);
    x(n + 2) = x(3) - x(1) + x(n);
  } else {
    below(0) = 2.0 * x(1) - x(2);
    x(n + 1) = 2.0 * x(n) - x(n - 1);
    below(1) = 2.0 * x(1) - x(3);
    x(n + 2) = 2.0 * x(n) - x(n - 2);
  }
  table.centre.resize(n + 3);
  table.width.resize(n + 3);
  for (std::size_t i = 0; i < n + 3; ++i) {
    table.centre[i] = 0.5 * (table.node[i] + table.node[i + 1]);
    table.width[i] = table.node[i + 1] - table.node[i];
  }
  return table;
}

GridTables flw_read_grid(frame::Log& log, frame::TextInput& file, const Triple& cells,
                         bool periodic_y) {
  const frame::Tag tag(log, "(flw_read_grid)");
  RecordReader records(log, file, "(flw_read_grid)", "Grid data");
  GridTables grid;
  double total = 1.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const auto nodes = read_nodes(log, file, records, kNames[a], cells[a]);
    frame::allocating(log, "axis", frame::bytes_of<double>(nodes.size(), 3),
                      [&] { grid.axis[a] = make_axis(nodes, a == 1 && periodic_y); });
    total *= cells[a];
  }
  if (total > kMostCells) log.fail("### error : allocation failed", frame::items("cells =", total));
  grid.box.n = cells;
  return grid;
}

}  // namespace flow
