// The control file of the surface model: the fixed lines and all groups.
#include <algorithm>

#include "frame/numbers.hpp"
#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

/// A group, member by member.
class MemberGroup {
 public:
  MemberGroup(TextFile& out, const char* name) : out_(out) { out_.line(std::string("&") + name); }
  ~MemberGroup() { out_.line("/"); }
  MemberGroup(const MemberGroup&) = delete;
  MemberGroup& operator=(const MemberGroup&) = delete;

  template <class... Values>
  MemberGroup& set(const char* member, const Values&... values) {
    std::string text = std::string(" ") + member + " = ";
    ((append(text, values), text += ", "), ...);
    text.pop_back();
    out_.line(text);
    return *this;
  }

 private:
  static void append(std::string& text, double value) { frame::append_number(text, value); }
  static void append(std::string& text, int value) { text += std::to_string(value); }
  static void append(std::string& text, std::int64_t value) { text += std::to_string(value); }
  static void append(std::string& text, bool value) { text += value ? ".true." : ".false."; }

  TextFile& out_;
};

bool has(const RunData& run, PatchKind kind) {
  return std::ranges::any_of(run.scene.groups,
                             [&](const Group& group) { return group.kind == kind; });
}

/// The lines up to the groups; the surface model skips most. The flow has a file of its own.
void write_lines(const RunData& run, std::int64_t steps, TextFile& out) {
  const auto cells = [&](std::size_t axis) { return run.flow.nodes[axis].size() - 1; };
  const double step = run.site.run.step;
  out.line(cells(0), cells(1), cells(2));
  out.line(2);
  out.line(-1, steps, step * static_cast<double>(steps));
  out.line("-999. 1. -999. 0");
  out.line("0.9", step, "-999. -999.");
  out.put(
      "1 1\n"
      "1 1 1\n"
      "1 1 0\n"
      "1. 1. 1. 1.\n"
      "200 1.0e-8 0.0\n"
      "200 1.0e-8\n"
      "2\n"
      "0.99 0.01\n"
      "300. 101325.\n"
      "0. 0. 0.\n"
      "0.01 0.001\n"
      "2\n"
      "0.99 0.01\n"
      "300.\n"
      "0. 0. -9.8\n"
      "0.9 0.9\n"
      "0\n"
      "1.8e-5 300. 110.\n"
      "0.71 0.71\n"
      "2\n"
      "0.028964 1005. 0. 0. 0. 0.\n"
      "0.018015 1900. 0. 0. 0. 0.\n"
      "0\n"
      "0 0. 1.e-20\n"
      "1 1 1\n"
      "2 2 0\n"
      "0. 0.\n");
}

void write_place(const RunData& run, TextFile& out) {
  const EpwHour& noon = run.days.hours[11];
  MemberGroup(out, "DATE_AND_PLACE")
      .set("DATE", noon.year, noon.month, noon.day, 0)
      .set("LAT", run.sun.LAT)
      .set("LNG", run.sun.LNG)
      .set("RANGLE", 0.0)
      .set("SDECL", run.sun.SDECL)
      .set("SHANGLE", run.sun.SHANGLE);
  // Of no weight where the weather tells direct and scattered light.
  MemberGroup(out, "JMK_RADSKY").set("PPA", 0.7);
}

void write_surface_groups(const RunData& run, TextFile& out) {
  MemberGroup(out, "TSRF_DATA")
      .set("LCNVRG", run.days.dated ? 0 : 1)
      .set("DZG", 0.04)
      .set("ZLG", 0.5)  // three to five lengths of the daily wave
      .set("DZW", 0.04)
      .set("WSKY0", 1.0)
      .set("HTRNS", run.site.run.convection)
      .set("LTRSMPL", false)
      .set("LOUTSTR", 0);
  MemberGroup(out, "DUMMYGRID")
      .set("NXF", run.flow.before[0])
      .set("NYF", run.flow.before[1])
      .set("NXB", run.flow.behind[0])
      .set("NYB", run.flow.behind[1]);
  write_place(run, out);
  MemberGroup(out, "TSRF_BLDNG")
      .set("LCBLD", has(run, PatchKind::building) ? 1 : 0)
      .set("BETA", 1.0)
      .set("HTRNS", 8.0)
      .set("HEIGHT", run.site.city.storey_height);
  MemberGroup(out, "TSRF_RADDAT")
      .set("LCRADL", 1)
      .set("LCRADS", 1)
      .set("LOPREF", 10)
      .set("LVFSKY", 1)
      .set("LVFSWP", 0);
  MemberGroup(out, "TSRF_FIXTMP").set("AA_PV", 51.0).set("BB_PV", 0.37);
  MemberGroup(out, "TSRF_IO").set("REWIND_OUTFILE", 1);
}

void write_series_groups(const RunData& run, TextFile& out) {
  const Days& days = run.days;
  if (days.dated) {
    MemberGroup(out, "TSRF_MONTHLY")
        .set("MONTHS", days.first.month, days.last.month)
        .set("DATE0", days.hours.front().year, days.first.month, days.first.day, 0, 0, 0);
  }
  {
    MemberGroup shade(out, "TSRF_SHADE");
    shade.set("NSTRDT", 2).set("LDATE", 4, 4).set("NCYCL", 100);
    if (days.dated) {
      const SunDays of_month = sun_days(days);
      shade.set("NITEM", 2)
          .set("NBIT", 8)
          .set("MONTHS", days.first.month, days.last.month)
          .set("DAYS", of_month.first, of_month.last);
    }
  }
  // Lines of the weather stand at half hours too.
  MemberGroup(out, "TSRF_WEATHER")
      .set("NSTRDT", 24)
      .set("LDATE", days.dated ? 2 : 4, 5)
      .set("NCYCL", 100);
  MemberGroup(out, "TSRF_RMHEAT").set("NSTRDT", 24).set("LDATE", 4, 4).set("NCYCL", 100);
  MemberGroup(out, "TSRF_WTRTMP")
      .set("NSTRDT", 24)
      .set("LDATE", 4, 4)
      .set("NCYCL", 100)
      .set("NITEM", 1)
      .set("LWTRTMP", has(run, PatchKind::water) ? 1 : 0);
}

void write_tree_groups(const RunData& run, TextFile& out) {
  MemberGroup(out, "JMK_DATA").set("CALJMK", !run.scene.leaves.empty());
  MemberGroup(out, "TSRF_JUMOKU").set("NDIV", run.scene.tree_division).set("NSKIP_SUNDIR", 2);
  // The linear coefficient does not vanish in the calm hours that weather files have.
  MemberGroup(out, "JMK_HTRANS").set("UNITH", 1);
  MemberGroup(out, "JMK_STOMATAL").set("UNITGS", 2).set("MDLVPD", 4);
  MemberGroup(out, "JMK_RADIAT").set("LOPRAD", 100).set("MDLSCT", 1);
}

}  // namespace

void write_control(const RunData& run, const RunFolder& folder, std::int64_t steps) {
  TextFile out(folder.path(file::kControl));
  write_lines(run, steps, out);
  write_surface_groups(run, out);
  write_series_groups(run, out);
  write_tree_groups(run, out);
  out.close();
}

}  // namespace townskin_case
