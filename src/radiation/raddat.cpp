#include "radiation/raddat.hpp"

#include <algorithm>
#include <string>

#include "frame/findings.hpp"
#include "frame/namelist.hpp"

namespace tsrf_module_raddat {

namespace {

constexpr double kFirstLongwave = 405.0;  // a black body at some 290 K [W/m2]

/// The fields of the PatchIndex file that count, line by line.
struct IndexLines {
  std::vector<std::int32_t> PID;
  std::vector<std::int32_t> PgID;
};

IndexLines read_index_lines(frame::Log& log, frame::TextInput& file, std::int32_t mpatch) {
  file.pass_title(log, 3);
  const std::size_t count = file.count_records(3);
  if (count != static_cast<std::size_t>(mpatch)) {
    frame::attempt(log, [&] {
      log.data_error(frame::items("no. of PIDs in PatchIndex data =", count),
                     "it must be = no. of PIDs in Patch data");
    });
    if (count == 0) log.fail();
  }
  IndexLines lines{std::vector<std::int32_t>(count), std::vector<std::int32_t>(count)};
  std::string rank;
  for (std::size_t n = 0; n < count; ++n) {
    if (file.read(rank, lines.PID[n], lines.PgID[n]) != frame::ReadStatus::ok) {
      log.lost_record(file, "### read error : PatchIndex data");
      lines.PID[n] = lines.PgID[n] = log.findings().stand_in();
    }
  }
  return lines;
}

/// Gives each line's group its number, in the order of first sight.
std::vector<std::int32_t> number_groups(const std::vector<std::int32_t>& ids, Data& data) {
  const frame::CodeIndex first_line(ids);
  std::vector<std::int32_t> group(ids.size());
  data.PgID.clear();
  for (std::size_t n = 0; n < ids.size(); ++n) {
    const auto first = static_cast<std::size_t>(first_line.find(ids[n]));
    if (first == n) {
      group[n] = static_cast<std::int32_t>(data.PgID.size());
      data.PgID.push_back(ids[n]);
    } else {
      group[n] = group[first];
    }
  }
  data.NPGID = static_cast<std::int32_t>(data.PgID.size());
  data.pgmap = frame::CodeIndex(data.PgID);
  return group;
}

/// Finds the line of each patch, from 0.
std::vector<std::int32_t> lines_of_patches(frame::Log& log, const tsrf_module_patch::Data& patch,
                                           const IndexLines& lines) {
  std::vector<std::int32_t> line_of(patch.PID.size(), -1);
  for (std::size_t n = 0; n < lines.PID.size(); ++n) {
    if (lines.PgID[n] == 0) {
      frame::attempt(log,
                     [&] { log.data_error("PgID in PatchIndex data = 0", "it must be != 0"); });
    }
    const std::int32_t i = patch.by_pid.find(lines.PID[n]);
    if (i < 0) continue;
    std::int32_t& line = line_of[static_cast<std::size_t>(i)];
    if (line >= 0) {
      frame::attempt(log, [&] {
        log.data_error(frame::items("PID in PatchIndex data =", lines.PID[n]),
                       "it is specified redundantly in line no. n1 & n2",
                       frame::items("n1,n2 =", line + 1, n + 1));
      });
      continue;
    }
    line = static_cast<std::int32_t>(n);
  }
  for (std::size_t i = 0; i < line_of.size(); ++i) {
    if (line_of[i] >= 0) continue;
    frame::attempt(log, [&] {
      log.data_error(frame::items("PID in Patch data =", patch.PID[i]),
                     "it is not defined in PatchIndex data");
    });
    line_of[i] = 0;
  }
  return line_of;
}

/// Sums over groups that the correction and its check share.
struct GroupPowers {
  std::vector<double> area;  // A
  std::vector<double> sky;   // B: area x sky view factor
  std::vector<double> seen;  // Z: what the group receives from the areas of the others
};

std::vector<double> sky_areas(const tsrf_module_patch::Data& patch, const Data& data,
                              const std::vector<double>& skyvf0) {
  std::vector<double> parts(patch.area);
  for (std::size_t i = 0; i < parts.size(); ++i) parts[i] *= skyvf0[i];
  return group_sums(data, parts);
}

std::vector<double> seen_areas(ViewFactors& table, const std::vector<double>& area) {
  std::vector<double> seen(area.size());
  table.each([&](std::size_t g, std::size_t source, float factor) {
    seen[g] += static_cast<double>(factor) * area[source];
  });
  return seen;
}

/// Corrections of all groups; -1 for a group that nothing sees.
void correct(frame::Log& log, const GroupPowers& powers, std::vector<double>& c) {
  double least = 1e20;
  double greatest = -1e20;
  c.assign(powers.area.size(), -1.0);
  for (std::size_t g = 0; g < c.size(); ++g) {
    if (powers.seen[g] <= 0.0) continue;
    c[g] = std::max(0.0, powers.area[g] - powers.sky[g]) / powers.seen[g];
    if (c[g] <= 0.0) continue;
    least = std::min(least, c[g]);
    greatest = std::max(greatest, c[g]);
  }
  log.line("%%% correction factor for view area =", least, greatest);
}

/// Reports how near to 1 the share is that sky and groups together give each group.
void set_rdat(frame::Log& log, const GroupPowers& powers, const std::vector<double>& c) {
  const auto share = [&](std::size_t g) {
    return (c[g] * powers.seen[g] + powers.sky[g]) / powers.area[g];
  };
  std::size_t least = 0;
  std::size_t greatest = 0;
  for (std::size_t g = 1; g < c.size(); ++g) {
    if (share(g) < share(least)) least = g;
    if (share(g) > share(greatest)) greatest = g;
  }
  if (c.empty()) return;
  log.line("%%% sum of area (set_rdat)", share(least), share(greatest), least + 1, greatest + 1);
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_raddat)(inputdata)");
  Settings& s = data.settings;
  frame::Group group("TSRF_RADDAT", {{"LCRADL", s.LCRADL},
                                     {"LCRADS", s.LCRADS},
                                     {"LOPREF", s.LOPREF, frame::positive("lopref =", s.LOPREF)},
                                     {"LVFSKY", s.LVFSKY},
                                     {"LVFSWP", s.LVFSWP}});
  group.read(log, control);
  data.settings_place = group.place();
}

void read_lf2fr(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data) {
  const frame::Tag tag(log, "(tsrf_module_raddat)(read_lf2fr)");
  frame::allocating(log, "PID,PgID of PatchIndex",
                    frame::bytes_of<std::int32_t>(static_cast<std::size_t>(patch.mpatch), 4), [&] {
                      const IndexLines lines = read_index_lines(log, file, patch.mpatch);
                      const std::vector<std::int32_t> line_of = lines_of_patches(log, patch, lines);
                      const std::vector<std::int32_t> group = number_groups(lines.PgID, data);
                      data.pgx.resize(line_of.size());
                      std::transform(
                          line_of.begin(), line_of.end(), data.pgx.begin(),
                          [&](std::int32_t line) { return group[static_cast<std::size_t>(line)]; });
                    });
}

void read_pgidprd(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_raddat)(read_pgidprd)");
  const auto known = [&](std::int32_t id) {
    const std::int32_t group = data.pgmap.find(id);
    if (group < 0) {
      log.data_error(frame::items("PgID in PgidPrd data =", id),
                     "it is not defined in PatchIndex data");
    }
    return group;
  };
  data.prd.clear();
  file.pass_title(log, 2);
  std::int32_t p = 0;
  std::int32_t q = 0;
  frame::ReadStatus status = frame::ReadStatus::end;
  while ((status = file.read(p, q)) != frame::ReadStatus::end) {
    if (status == frame::ReadStatus::error) {
      log.lost_record(file, "### read error : PgidPrd data");
      continue;
    }
    frame::attempt(log, &file, [&] {
      const std::int32_t first = known(p);
      data.prd.emplace_back(first, known(q));
    });
  }
}

void allocdata01(frame::Log& log, std::int32_t mpatch, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_raddat)(allocdata01)");
  frame::allocating(log, "c,JRl,JRs", frame::bytes_of<double>(static_cast<std::size_t>(mpatch), 3),
                    [&] {
                      data.c.assign(static_cast<std::size_t>(data.NPGID), 1.0);
                      data.JRl.assign(static_cast<std::size_t>(mpatch), kFirstLongwave);
                      data.JRs.assign(static_cast<std::size_t>(mpatch), 0.0);
                    });
}

void tsrf_set_rdata(frame::Log& log, const tsrf_module_patch::Data& patch, Data& data,
                    std::vector<double>& skyvf0) {
  const frame::Tag tag(log, "(tsrf_set_rdata)");
  frame::allocating(
      log, "powers of groups", frame::bytes_of<double>(static_cast<std::size_t>(data.NPGID), 3),
      [&] {
        GroupPowers powers{group_sums(data, patch.area), sky_areas(patch, data, skyvf0), {}};
        powers.seen = seen_areas(data.view_factors, powers.area);
        correct(log, powers, data.c);
        for (std::size_t i = 0; i < skyvf0.size(); ++i) {
          double& c = data.c[static_cast<std::size_t>(data.pgx[i])];
          if (c <= 0.0) skyvf0[i] = 1.0;
        }
        for (double& c : data.c) c = std::max(0.0, c);
        powers.sky = sky_areas(patch, data, skyvf0);
        set_rdat(log, powers, data.c);
      });
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("view factors", data.view_factors.bytes());
  list.add("patch groups", data.pgx, data.PgID, data.prd);
  list.add("c,JRl,JRs", data.c, data.JRl, data.JRs);
}

}  // namespace tsrf_module_raddat
