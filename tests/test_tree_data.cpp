// The data of the trees: settings, lists of leaf cells and kinds, simple trees, and what their
// faults say.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "recorded_log.hpp"
#include "trees/htrans.hpp"
#include "trees/jmk_data.hpp"
#include "trees/jumoku_settings.hpp"
#include "trees/radiat.hpp"

namespace {

using frame::TextInput;

const std::string kDataError = "### error : data error\n";

/// The last lines of the log when all settings of the tree model are read from `group`.
std::string fault_of(const std::string& group) {
  RecordedLog recorded;
  TextInput control("control", "1 2 3\n" + group + "\n");
  const std::string lines = recorded.lines_of([&] {
    tsrf_module_jumoku::Settings jumoku;
    jmk_module_data::Data cells;
    jmk_module_htrans::Data htrans;
    jmk_module_radiat::Data radiat;
    tsrf_module_jumoku::inputdata(recorded.log, control, jumoku);
    jmk_module_data::inputdata(recorded.log, control, cells);
    jmk_module_htrans::inputdata(recorded.log, control, htrans);
    jmk_module_radiat::inputdata(recorded.log, control, radiat);
  });
  const std::size_t place = lines.find("###");
  return place == std::string::npos ? "" : lines.substr(place);
}

TEST(TreeSettings, BrokenRulesAreToldByName) {
  const std::string jumoku = "(tsrf_module_jumoku)(inputdata)\n";
  const std::string htrans = "(jmk_module_htrans)(inputdata)\n";
  const std::string radiat = "(jmk_module_radiat)(inputdata)\n";
  const std::string over_zero = "\nit must be > 0\n";
  const struct {
    std::string group, fault;
  } cases[] = {
      {"&TSRF_JUMOKU NDIV = 0 /", "ndiv = 0" + over_zero + jumoku},
      {"&TSRF_JUMOKU NDIV = 2, NSKIP_SUNDIR = -1 /", "nskip_sundir = -1" + over_zero + jumoku},
      {"&JMK_HTRANS UNITH = 4 /", "unith = 4\n" + htrans},
      {"&JMK_HTRANS HTRA0 = -1 /", "htra0 = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS HTRA1 = -1 /", "htra1 = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS HTRAC = -1 /", "htrac = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS LOPHBL = 0 /", "lophbl = 0" + over_zero + htrans},
      {"&JMK_HTRANS AEPSHB = 0 /", "aepshb = 0" + over_zero + htrans},
      {"&JMK_HTRANS REPSHB = 0 /", "repshb = 0" + over_zero + htrans},
      {"&JMK_STOMATAL GSMAX = 0 /", "gsmax = 0" + over_zero + htrans},
      {"&JMK_STOMATAL APAR = 0 /", "apar = 0" + over_zero + htrans},
      {"&JMK_STOMATAL TL = 0 /", "tl = 0" + over_zero + htrans},
      {"&JMK_STOMATAL TO = 284.7 /", "to = 284.7\nit must be > tl\n" + htrans},
      {"&JMK_STOMATAL TH = 300 /", "th = 300\nit must be > to\n" + htrans},
      {"&JMK_STOMATAL B1 = 0 /", "b1 = 0" + over_zero + htrans},
      {"&JMK_STOMATAL B2 = 0 /", "b2 = 0" + over_zero + htrans},
      {"&JMK_STOMATAL LE = 0 /", "le = 0" + over_zero + htrans},
      {"&JMK_RADIAT SUN0 = 0 /", "sun0 = 0" + over_zero + radiat},
      {"&JMK_RADIAT LOPRAD = 0 /", "loprad = 0" + over_zero + radiat},
      {"&JMK_RADIAT AEPSRD = 0 /", "aepsrd = 0" + over_zero + radiat},
      {"&JMK_RADIAT REPSRD = 0 /", "repsrd = 0" + over_zero + radiat},
  };
  for (const auto& [group, fault] : cases) {
    EXPECT_EQ(fault_of(group), kDataError + fault) << group;
  }
  EXPECT_EQ(fault_of("&JMK_DATA CALJMK = .maybe. /"),
            "### error : read error\nnamelist = jmk_data\niostat = 1\n(jmk_nml_errmsg0)\n"
            "(jmk_module_data)(inputdata)\n");
  EXPECT_EQ(fault_of("no group at all"), "");
}

}  // namespace
