#include <algorithm>
#include <optional>
#include <span>

#include "radiation/raddat.hpp"
#include "radiation/view_factor_rows.hpp"
#include "radiation/view_factor_table.hpp"

namespace tsrf_module_raddat {

namespace {

constexpr double kGreatestSum = 1.01;
constexpr std::int32_t kSky = 0;  // stands for the sky as second group

/// One line of the file.
struct Row {
  std::int32_t first_rank = 0;
  std::int32_t SrcPgID = 0;
  std::int32_t second_rank = 0;
  std::int32_t DstPgID = 0;
  double FormFct = 0.0;
};

/// What the lines say of each group beside the table.
struct Groups {
  explicit Groups(std::size_t n) : sky(n), sum(n), sky_line(n) {}
  std::vector<double> sky;             // its sky factor
  std::vector<double> sum;             // of the view factors whose first group it is
  std::vector<std::int64_t> sky_line;  // line of its sky row, from 1; 0 for none
};

std::int32_t group_of(frame::Log& log, const Data& data, std::int32_t id, const char* words) {
  const std::int32_t group = data.pgmap.find(id);
  if (group < 0) {
    log.data_error(frame::items(words, id), "it is not defined in PatchIndex data");
  }
  return group;
}

void take_sky(frame::Log& log, const Row& row, std::int64_t line, std::size_t group,
              Groups& groups) {
  std::int64_t& earlier = groups.sky_line[group];
  if (earlier != 0) {
    log.data_error(frame::items("SrcPgID of FormFactor data =", row.SrcPgID),
                   "it is specified redundantly in line no. n1 & n2",
                   frame::items("n1,n2 =", earlier, line));
  }
  earlier = line;
  groups.sky[group] = row.FormFct;
}

void take_pair(const Data& data, std::int32_t first, std::int32_t second, double factor,
               Groups& groups, ViewFactorGatherer& table) {
  if (data.settings.LVFSWP > 0) {
    table.add(second, first, static_cast<float>(factor));
  } else {
    table.add(first, second, static_cast<float>(factor));
  }
  groups.sum[static_cast<std::size_t>(first)] += factor;
}

void take_row(frame::Log& log, const Data& data, Row row, std::int64_t line, Groups& groups,
              ViewFactorGatherer& table) {
  if (row.FormFct < 0.0 || row.FormFct > kGreatestFactor) {
    log.data_error(frame::items("FormFct =", row.FormFct), "it must be >= 0 and <= 1");
  }
  row.FormFct = std::min(row.FormFct, 1.0);
  const std::int32_t first = group_of(log, data, row.SrcPgID, "SrcPgID of FormFactor data =");
  const auto g = static_cast<std::size_t>(first);
  if (row.DstPgID == kSky) {
    take_sky(log, row, line, g, groups);
    return;
  }
  const std::int32_t second = group_of(log, data, row.DstPgID, "DstPgID of FormFactor data =");
  take_pair(data, first, second, row.FormFct, groups, table);
}

/// What the lines that need no further look bring; their number.
std::int64_t take_plain(frame::Crew& crew, frame::TextInput& file, const Data& data, Groups& groups,
                        ViewFactorGatherer& table) {
  std::int64_t line = 0;
  take_plain_rows(crew, file, data, [&](const PlainRow& row) {
    const auto g = static_cast<std::size_t>(row.first);
    if (row.second != kSkyGroup) {
      take_pair(data, row.first, row.second, row.factor, groups, table);
    } else if (groups.sky_line[g] != 0) {
      return false;
    } else {
      groups.sky_line[g] = line + 1;
      groups.sky[g] = row.factor;
    }
    ++line;
    return true;
  });
  return line;
}

void take_rows(frame::Log& log, frame::Crew& crew, frame::TextInput& file, const Data& data,
               Groups& groups, ViewFactorGatherer& table) {
  file.pass_title(log, 5);
  Row row;
  const auto read = [&] {
    return file.read(row.first_rank, row.SrcPgID, row.second_rank, row.DstPgID, row.FormFct);
  };
  std::int64_t line = take_plain(crew, file, data, groups, table);
  if (line > 0 && file.tell() < file.content().size()) {
    // A field that is left out keeps the value of the line before.
    file.seek(file.content().rfind('\n', file.tell() - 2) + 1);
    read();
  }
  for (;;) {
    const auto status = read();
    if (status == frame::ReadStatus::end) break;
    if (status == frame::ReadStatus::error) {
      log.lost_record(file, "### read error : FormFactor data");
      ++line;
      continue;
    }
    ++line;
    frame::attempt(log, &file, [&] { take_row(log, data, row, line, groups, table); });
  }
  if (line == 0) log.data_error("lack of FormFactor data");
}

void check_given_sky(frame::Log& log, const Data& data, const Groups& groups) {
  for (std::size_t g = 0; g < groups.sky.size(); ++g) {
    const std::string id = frame::items("SrcPgID of FormFactor data =", data.PgID[g]);
    if (groups.sky_line[g] == 0) {
      log.warning("%%% warning : data error", id, "it does not have view factor of sky");
    }
    const double sum = groups.sky[g] + groups.sum[g];
    if (sum > kGreatestSum) {
      frame::attempt(log, [&] {
        log.data_error(id, frame::items("sum of view factor =", sum), "it must be < 1.01");
      });
    }
  }
}

/// The sky is what the other groups leave.
void find_sky(frame::Log& log, const Data& data, Groups& groups) {
  for (std::size_t g = 0; g < groups.sky.size(); ++g) {
    if (groups.sky_line[g] != 0) {
      frame::attempt(log, [&] {
        log.data_error(frame::items("SrcPgID of FormFactor data =", data.PgID[g]),
                       "it has view factor of sky");
      });
    }
    groups.sky[g] = std::clamp(1.0 - groups.sum[g], 0.0, 1.0);
  }
}

/// Reciprocity: factors measured from the destination become shares of the source's power.
void turn_round(const std::vector<double>& area, ViewFactors& table) {
  table.each([&](std::size_t g, std::size_t source, float& factor) {
    factor = static_cast<float>(static_cast<double>(factor) * area[g] / area[source]);
  });
}

}  // namespace

std::vector<double> group_sums(const Data& data, std::span<const double> values) {
  std::vector<double> sums(static_cast<std::size_t>(data.NPGID));
  for (std::size_t i = 0; i < values.size(); ++i) {
    sums[static_cast<std::size_t>(data.pgx[i])] += values[i];
  }
  return sums;
}

void read_viewfactor(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                     const tsrf_module_patch::Data& patch, Data& data,
                     std::vector<double>& skyvf0) {
  const frame::Tag tag(log, "(tsrf_module_raddat)(read_viewfactor)");
  frame::allocating(log, "view factors", frame::bytes_of<char>(file.content().size()), [&] {
    Groups groups(static_cast<std::size_t>(data.NPGID));
    {
      ViewFactorGatherer table(data.NPGID);
      data.view_factors = {};
      take_rows(log, crew, file, data, groups, table);
      data.view_factors = table.take_table(crew);
    }
    if (data.settings.LVFSKY > 0) {
      check_given_sky(log, data, groups);
    } else {
      find_sky(log, data, groups);
    }
    if (data.settings.LVFSWP > 0) turn_round(group_sums(data, patch.area), data.view_factors);
    for (std::size_t i = 0; i < data.pgx.size(); ++i) {
      skyvf0[i] = groups.sky[static_cast<std::size_t>(data.pgx[i])];
    }
  });
  data.pgmap = {};
}

}  // namespace tsrf_module_raddat
