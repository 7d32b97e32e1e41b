#include "buildings/bldng.hpp"

#include "frame/namelist.hpp"

namespace tsrf_module_bldng {

namespace {

frame::Group group_of(Settings& s) {
  using frame::positive;
  const auto fraction = [](std::string_view words, const double& value) {
    return frame::holds<double>(
        words, value, [](double v) { return v >= 0.0 && v <= 1.0; }, "it must be >= 0 and <= 1");
  };
  return {"TSRF_BLDNG",
          {{"LCBLD", s.LCBLD},
           {"BETA", s.BETA, positive("beta =", s.BETA)},
           {"HTRNS", s.HTRNS, positive("htrns =", s.HTRNS)},
           {"HEIGHT", s.HEIGHT, positive("height =", s.HEIGHT)},
           {"BHRED", s.BHRED, fraction("bhred =", s.BHRED)},
           {"DHRED", s.DHRED, fraction("dhred =", s.DHRED)}}};
}

}  // namespace

void read_nmlst_bldng(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_bldng)(read_nmlst_bldng)");
  group_of(data.settings).read(log, control);
}

}  // namespace tsrf_module_bldng
