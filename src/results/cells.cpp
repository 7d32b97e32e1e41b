#include "results/cells.hpp"

#include <algorithm>
#include <array>

namespace tsrf_module_io {

CellList list_cells(const tsrf_module_patch::Data& patch, tsrf_module_patch::Types types,
                    CellOrder order) {
  const auto key = [&](std::size_t p) {
    return order == CellOrder::i_fastest ? std::array{patch.sk[p], patch.sj[p], patch.si[p]}
                                         : std::array{patch.sk[p], patch.si[p], patch.sj[p]};
  };
  std::vector<std::size_t> marked;
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (types.contains(patch.type[p])) marked.push_back(p);
  }
  std::sort(marked.begin(), marked.end(),
            [&](std::size_t a, std::size_t b) { return key(a) < key(b); });
  CellList cells;
  cells.of_patch.assign(patch.type.size(), CellList::kNone);
  double largest = 0.0;
  for (std::size_t n = 0; n < marked.size(); ++n) {
    const std::size_t p = marked[n];
    if (n == 0 || key(marked[n - 1]) != key(p)) {
      largest = 0.0;
      cells.PID.push_back(patch.PID[p]);
      cells.i.push_back(patch.si[p]);
      cells.j.push_back(patch.sj[p]);
      cells.k.push_back(patch.sk[p]);
    }
    if (patch.area[p] > largest) {
      largest = patch.area[p];
      cells.PID.back() = patch.PID[p];
    }
    cells.of_patch[p] = static_cast<std::int32_t>(cells.size()) - 1;
  }
  return cells;
}

}  // namespace tsrf_module_io
