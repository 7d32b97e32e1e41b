#include "buildings/bldng.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "frame/findings.hpp"
#include "frame/namelist.hpp"

namespace tsrf_module_bldng {

namespace {

using frame::items;
using frame::ReadStatus;

constexpr std::int32_t kUses = 8;  // building uses BldCD 1..8

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

/// A line of the Building file.
struct Line {
  std::int32_t BldID = 0, BldCD = 0, Strct = 0, floor = 0;
  double area = 0.0, acflr = 0.0, shf = 0.0, cop = 0.0;
  std::int32_t no_release = 0;
};
constexpr std::size_t kFields = 9;

constexpr std::string_view kReadError = "### read error : Building data";

/// True when some line is of a building that a patch names.
bool has_building(frame::Log& log, frame::TextInput& file, const frame::CodeIndex& named) {
  std::array<std::string, 8> rest;
  bool found = false;
  file.pass_title(log, kFields);
  for (;;) {
    std::int32_t BldID = 0;
    const ReadStatus status = file.read(BldID, std::span<std::string>(rest));
    if (status == ReadStatus::end) return found;
    if (status == ReadStatus::error) {
      log.lost_record(file, kReadError);
      continue;
    }
    found = found || named.find(BldID) >= 0;
  }
}

/// A share that exceeds 1 by a rounding of the data is taken as 1.
bool is_share(double value) { return value >= 0.0 && value <= 1.001; }

/// Checks building `i` (from 1), whose line was read last.
void check_line(frame::Log& log, const frame::TextInput& file, std::int32_t i, Line& line) {
  const auto require = [&](bool good, std::string_view field, auto& value, std::string_view rule) {
    if (good) return;
    frame::attempt(log, &file, [&] {
      log.data_error(items("i," + std::string(field) + "(i) in Building data =", i, value), rule);
    });
    value = 1;
  };
  constexpr std::string_view kPositive = "it must be > 0";
  constexpr std::string_view kShare = "it must be >= 0 and <= 1";
  require(line.floor > 0, "floor", line.floor, kPositive);
  require(line.area > 0.0, "area", line.area, kPositive);
  require(is_share(line.acflr), "acflr", line.acflr, kShare);
  require(is_share(line.shf), "shf", line.shf, kShare);
  require(line.cop > 0.0, "cop", line.cop, kPositive);
  if (line.BldCD < 1 || line.BldCD > kUses) {
    frame::attempt(log, &file, [&] {
      log.data_error(items("BldCD in Building data =", line.BldCD),
                     items("it must be >= 1 and <=", kUses), items("bldid =", line.BldID));
    });
    line.BldCD = log.findings().stand_in();
  }
}

void enter(const Line& line, Data& data) {
  data.BldID.push_back(line.BldID);
  data.BldCD.push_back(line.BldCD);
  data.Strct.push_back(line.Strct);
  data.floor.push_back(line.floor);
  data.area.push_back(line.area);
  data.acflr.push_back(std::min(line.acflr, 1.0));
  data.shf.push_back(std::min(line.shf, 1.0));
  data.cop.push_back(line.cop);
  data.no_release.push_back(line.no_release);
  ++data.nbld;
}

/// Reads the lines of the buildings that patches name.
void read_lines(frame::Log& log, frame::TextInput& file, const frame::CodeIndex& named,
                Data& data) {
  file.pass_title(log, kFields);
  for (;;) {
    Line line;
    const ReadStatus status = file.read(line.BldID, line.BldCD, line.Strct, line.floor, line.area,
                                        line.acflr, line.shf, line.cop, line.no_release);
    if (status == ReadStatus::end) return;
    if (status == ReadStatus::error) {
      log.lost_record(file, kReadError);
      continue;
    }
    if (named.find(line.BldID) < 0) continue;
    check_line(log, file, data.nbld + 1, line);
    frame::allocating(log, "buildings", frame::bytes_grown(data.area), [&] { enter(line, data); });
  }
}

void index_buildings(frame::Log& log, Data& data) {
  frame::allocating(log, "BldID", frame::bytes_of<std::int32_t>(data.BldID.size(), 2),
                    [&] { data.by_bldid = frame::CodeIndex(data.BldID); });
  const auto report = [&](std::size_t first, std::size_t second) {
    log.data_error(items("BldID in Building data =", data.BldID[second]),
                   "it is specified redundantly in line no. n1 & n2",
                   items("n1,n2 =", first + 1, second + 1));
  };
  frame::report_repeats(log, data.by_bldid, data.BldID, report);
}

}  // namespace

void read_nmlst_bldng(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_bldng)(read_nmlst_bldng)");
  group_of(data.settings).read(log, control);
}

void read_bldng(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data) {
  const frame::Tag tag(log, "(tsrf_module_bldng)(read_bldng)");
  frame::CodeIndex named;
  frame::allocating(log, "BldID of patches", frame::bytes_of<std::int32_t>(patch.BldID.size(), 2),
                    [&] { named = frame::CodeIndex(patch.BldID); });
  if (!has_building(log, file, named)) log.fail("### error : lack of Building data");
  Data read;
  read_lines(log, file, named, read);
  index_buildings(log, read);
  const bool is_reread = data.nbld > 0;
  if (is_reread) {
    if (read.BldID != data.BldID || read.BldCD != data.BldCD || read.Strct != data.Strct) {
      log.fail("### error : invalid multi-day data");
    }
    read.Tr = std::move(data.Tr);
    read.Tm = std::move(data.Tm);
  } else {
    frame::allocating(log, "Tr,Tm", frame::bytes_of<double>(static_cast<std::size_t>(read.nbld), 2),
                      [&] {
                        read.Tr.assign(static_cast<std::size_t>(read.nbld), 0.0);
                        read.Tm = read.Tr;
                      });
  }
  read.settings = data.settings;
  data = std::move(read);
}

void check_bldcd(frame::Log& log, std::string_view name, const Data& data,
                 const tsrf_module_rmheat::Data& rmheat) {
  const frame::Tag tag(log, "(tsrf_module_bldng)(check_bldcd)");
  for (std::size_t b = 0; b < data.BldID.size(); ++b) {
    if (rmheat.pairs.find(data.BldCD[b], data.Strct[b]) >= 0) continue;
    frame::attempt(log, [&] {
      log.data_error(items("BldCD,Strct in Building data =", data.BldCD[b], data.Strct[b]),
                     items("it is not defined in", name));
    });
  }
}

void bldng_alloc_tmpdata(frame::Log& log, std::int32_t mpatch, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_bldng)(bldng_alloc_tmpdata)");
  frame::allocating(
      log, "qtrans,qroom,sensible,latent",
      frame::bytes_of<double>(static_cast<std::size_t>(mpatch), 4), [&] {
        for (auto* array : {&data.qtrans, &data.qroom, &data.sensible, &data.latent}) {
          array->assign(static_cast<std::size_t>(mpatch), 0.0);
        }
        data.bldat.assign(static_cast<std::size_t>(data.nbld), Budget{});
      });
}

void set_hin(const tsrf_module_patch::Data& patch, const Data& data, std::span<double> hin) {
  for (std::size_t p = 0; p < hin.size(); ++p) {
    if (patch.type[p] == tsrf_module_patch::kBuilding) hin[p] = data.settings.HTRNS;
  }
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("buildings", data.BldID, data.BldCD, data.Strct, data.floor, data.area, data.acflr,
           data.shf, data.cop, data.no_release, data.Tr, data.Tm, data.bldat);
  list.add("qtrans,qroom,sensible,latent", data.qtrans, data.qroom, data.sensible, data.latent);
}

}  // namespace tsrf_module_bldng
