#include "surface/surface_state.hpp"

#include <string_view>
#include <type_traits>

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

/// Takes tables of rows of all patches.
struct TableTaker {
  frame::Log& log;
  std::int32_t mpatch;

  void operator()(std::string_view name, std::int32_t rows, frame::PatchTable<double>& table,
                  double value = 0.0) const {
    const std::int64_t bytes =
        frame::bytes_of<double>(static_cast<std::size_t>(mpatch), static_cast<std::size_t>(rows));
    frame::allocating(log, name, bytes,
                      [&] { table = frame::PatchTable<double>(mpatch, rows, value); });
  }
};

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(inputdata)");
  frame::Group group = group_of(data.settings);
  group.read(log, control);
  data.settings_place = group.place();
}

void allocdata01(frame::Log& log, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(allocdata01)");
  const auto n = static_cast<std::size_t>(data.mpatch);
  const auto take = [&](std::string_view name, auto& list) {
    using List = std::remove_reference_t<decltype(list)>;
    frame::allocating(log, name, frame::bytes_of<typename List::value_type>(n),
                      [&] { list.assign(n, {}); });
  };
  const TableTaker take_table{log, data.mpatch};
  take("lcal", data.lcal);
  take("isrf", data.isrf);
  take_table("airst", 4, data.airst);
  take("skyvf0", data.skyvf0);
  take_table("qsurf", 6, data.qsurf);
  take("hc", data.hc);
  take("hm", data.hm);
  take("hin", data.hin);
  take_table("treeax", 3, data.treeax);
  take("treemk", data.treemk);
}

void allocdata02(frame::Log& log, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(allocdata02)");
  constexpr double kColdStart = 300.0;  // K; a restart file replaces it
  const std::int32_t cells = data.mzg;
  const std::int32_t nodes = data.mzg + 1;
  const auto n = static_cast<std::size_t>(data.mpatch);
  frame::allocating(log, "nlyr", frame::bytes_of<std::int32_t>(n), [&] { data.nlyr.assign(n, 0); });
  const TableTaker take_table{log, data.mpatch};
  take_table("dzl", cells, data.dzl);
  take_table("tlyr", nodes, data.tlyr, kColdStart);
  take_table("tprev", nodes, data.tprev);
  take_table("gcond", nodes, data.gcond);
  take_table("cond", cells, data.cond);
  take_table("capa", cells, data.capa);
  take_table("extc", cells, data.extc);
  take_table("uval", 2, data.uval);
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("lcal,isrf,treemk,nlyr", data.lcal, data.isrf, data.treemk, data.nlyr);
  list.add("skyvf0,hc,hm,hin", data.skyvf0, data.hc, data.hm, data.hin);
  list.add("airst", data.airst);
  list.add("qsurf", data.qsurf);
  list.add("treeax", data.treeax);
  list.add("uval", data.uval);
  list.add("dzl", data.dzl);
  list.add("tlyr", data.tlyr);
  list.add("tprev", data.tprev);
  list.add("gcond", data.gcond);
  list.add("cond", data.cond);
  list.add("capa", data.capa);
  list.add("extc", data.extc);
}

}  // namespace tsrf_module_data
