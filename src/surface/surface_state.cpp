#include "surface/surface_state.hpp"

#include "frame/namelist.hpp"

namespace tsrf_module_data {

namespace {

frame::Group group_of(Settings& s) {
  using frame::positive;
  return {"TSRF_DATA",
          {{"LCNVRG", s.LCNVRG},
           {"DZG", s.DZG, positive("dzg =", s.DZG)},
           {"ZLG", s.ZLG, positive("zlg =", s.ZLG)},
           {"DZW", s.DZW, positive("dzw =", s.DZW)},
           {"WSKY0", s.WSKY0,
            frame::holds<double>(
                "wsky0 =", s.WSKY0, [](double v) { return v >= 0.0 && v <= 1.0; },
                "it must be >= 0 & <=1")},
           {"HTRNS", s.HTRNS, frame::not_negative("htrns =", s.HTRNS)},
           {"LTRSMPL", s.LTRSMPL},
           {"LOUTSTR", s.LOUTSTR}}};
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(inputdata)");
  group_of(data.settings).read(log, control);
}

void allocdata01(frame::Log& log, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(allocdata01)");
  frame::allocating(log, [&data] {
    const auto n = static_cast<std::size_t>(data.mpatch);
    data.lcal.assign(n, 0);
    data.isrf.assign(n, 0);
    data.airst = frame::PatchTable<double>(data.mpatch, 4);
    data.skyvf0.assign(n, 0.0);
    data.qsurf = frame::PatchTable<double>(data.mpatch, 6);
    data.hc.assign(n, 0.0);
    data.hm.assign(n, 0.0);
    data.hin.assign(n, 0.0);
    data.treeax = frame::PatchTable<double>(data.mpatch, 3);
    data.treemk.assign(n, 0);
  });
}

void allocdata02(frame::Log& log, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(allocdata02)");
  constexpr double kColdStart = 300.0;  // K; a restart file replaces it
  frame::allocating(log, [&data] {
    const std::int32_t patches = data.mpatch;
    const std::int32_t cells = data.mzg;
    const std::int32_t nodes = data.mzg + 1;
    data.nlyr.assign(static_cast<std::size_t>(patches), 0);
    data.dzl = frame::PatchTable<double>(patches, cells);
    data.tlyr = frame::PatchTable<double>(patches, nodes, kColdStart);
    data.tprev = frame::PatchTable<double>(patches, nodes);
    data.gcond = frame::PatchTable<double>(patches, nodes);
    data.cond = frame::PatchTable<double>(patches, cells);
    data.capa = frame::PatchTable<double>(patches, cells);
    data.extc = frame::PatchTable<double>(patches, cells);
    data.uval = frame::PatchTable<double>(patches, 2);
  });
}

}  // namespace tsrf_module_data
