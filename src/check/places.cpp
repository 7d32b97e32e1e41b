#include "check/places.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <span>
#include <string_view>

#include "frame/numbers.hpp"
#include "frame/text_input.hpp"

namespace check {

namespace {

using frame::Finding;

/// Words that a code stands behind, and the columns of the file that have it.
struct Phrase {
  std::string_view words;
  int unit;
  std::array<int, 3> columns;  ///< from 0; -1 for none
};
constexpr std::array<Phrase, 22> kPhrases{{
    {"BndC in TreePatch data =", frame::kUnitTreePatch, {9, -1, -1}},
    {"PID in Patch data =", frame::kUnitPatch, {0, -1, -1}},
    {"SurfID in Patch data =", frame::kUnitPatch, {9, -1, -1}},
    {"BldID in BldSurf data =", frame::kUnitPatch, {10, -1, -1}},
    {"%%% the most : PID =", frame::kUnitPatch, {0, -1, -1}},
    {"SurfCD in SurfProp data =", frame::kUnitSurfProp, {0, -1, -1}},
    {"SurfID in MatEleProp data =", frame::kUnitMatEleProp, {0, -1, -1}},
    {"surfid in MatEleProp data =", frame::kUnitMatEleProp, {0, -1, -1}},
    {"surfid =", frame::kUnitMatEleProp, {0, -1, -1}},
    {"surfid,i,thick(i) in MatEleProp data =", frame::kUnitMatEleProp, {0, -1, -1}},
    {"SurfCD in MatEleProp data =", frame::kUnitMatEleProp, {7, -1, -1}},
    {"BldCD,Strct in Building data =", frame::kUnitBuilding, {1, 2, -1}},
    {"BldID in Building data =", frame::kUnitBuilding, {0, -1, -1}},
    {"PgID in PatchIndex data =", frame::kUnitPatchIndex, {2, -1, -1}},
    {"PID in PatchIndex data =", frame::kUnitPatchIndex, {1, -1, -1}},
    {"SrcPgID,DstPgID of FormFactor data =", frame::kUnitFormFactor, {1, 3, -1}},
    {"SrcPgID of FormFactor data =", frame::kUnitFormFactor, {1, -1, -1}},
    {"TreeID in Tree data =", frame::kUnitLadSimple, {0, -1, -1}},
    {"TreeID in TreeMesh data =", frame::kUnitLad, {3, -1, -1}},
    {"i,j,k of LAD data=", frame::kUnitLad, {0, 1, 2}},
    {"BCD in RmHeat data =", frame::kUnitRmHeat, {1, 2, -1}},
    {"PID in WaterTemp data =", frame::kUnitWaterTemp, {1, -1, -1}},
}};

/// The first record of a file with certain codes, or the one of a number.
struct Query {
  std::size_t finding;
  std::array<int, 3> columns;
  std::array<std::int64_t, 3> codes;
  int which = 1;            ///< the second, where one is repeated
  std::int64_t record = 0;  ///< from 1; 0: by codes
};

std::vector<std::int64_t> numbers_behind(std::string_view line, std::string_view words) {
  std::vector<std::int64_t> numbers;
  line.remove_prefix(line.find(words) + words.size());
  while (true) {
    line.remove_prefix(std::min(line.find_first_not_of(" ,"), line.size()));
    const std::size_t end = std::min(line.find_first_of(" ,"), line.size());
    std::int32_t number = 0;
    if (!frame::parse_number(line.substr(0, end), number)) return numbers;
    numbers.push_back(number);
    line.remove_prefix(end);
  }
}

bool has(const Finding& finding, std::string_view words) {
  return std::ranges::any_of(finding.lines, [&](const std::string& line) {
    return line.find(words) != std::string::npos;
  });
}

/// Answers the queries of one file.
class Search {
 public:
  Search(const std::string& name, std::vector<Query>& queries, frame::Findings& findings)
      : file_(name), queries_(queries), findings_(findings) {}

  /// Records are counted on from `before`; their number up to the end.
  std::int64_t run(std::int64_t before) {
    std::int64_t record = before;
    if (!file_.good()) return record;
    file_.skip_line();
    std::string_view line;
    for (std::size_t place = file_.tell(); file_.next_line(line); place = file_.tell()) {
      if (line.find_first_not_of(" \t,") == std::string_view::npos) continue;
      ++record;
      take(line);
      std::erase_if(queries_, [&](Query& query) { return answered(query, record, place); });
      if (queries_.empty()) return record;
    }
    return record;
  }

 private:
  static constexpr std::size_t kColumns = 12;

  void take(std::string_view line) {
    values_.fill(INT64_MIN);
    for (std::size_t column = 0; column < kColumns; ++column) {
      line.remove_prefix(std::min(line.find_first_not_of(" \t,"), line.size()));
      if (line.empty()) return;
      const std::size_t end = std::min(line.find_first_of(" \t,"), line.size());
      std::int32_t number = 0;
      if (frame::parse_number(line.substr(0, end), number)) values_[column] = number;
      line.remove_prefix(end);
    }
  }

  bool answered(Query& query, std::int64_t record, std::size_t place) {
    if (query.record > 0) {
      if (query.record != record) return false;
    } else {
      for (std::size_t n = 0; n < query.columns.size(); ++n) {
        if (query.columns[n] < 0) continue;
        if (values_.at(static_cast<std::size_t>(query.columns[n])) != query.codes[n]) return false;
      }
      if (--query.which > 0) return false;
    }
    findings_.all()[query.finding].file = file_.name();
    findings_.all()[query.finding].line = file_.line_at(place);
    return true;
  }

  frame::TextInput file_;
  std::vector<Query>& queries_;
  frame::Findings& findings_;
  std::array<std::int64_t, kColumns> values_{};
};

/// Lines of the block of a material that another repeats.
int layers_of_first(std::span<const std::int64_t> codes, const tsrf_main01::Run& run) {
  const auto& materials = run.inputs.matprp.materials;
  const auto first = std::ranges::find_if(
      materials, [&](const auto& m) { return !codes.empty() && m.surfid == codes[0]; });
  return first == materials.end() ? 1 : first->nolyr();
}

/// The query that the words of a finding make; nothing when they point to no record.
std::optional<std::pair<int, Query>> query_of(const Finding& finding, std::size_t n,
                                              const tsrf_main01::Run& run) {
  for (const Phrase& phrase : kPhrases) {
    for (const std::string& line : finding.lines) {
      if (!line.starts_with(phrase.words)) continue;
      const std::vector<std::int64_t> codes = numbers_behind(line, phrase.words);
      Query query{n, phrase.columns, {}};
      for (std::size_t c = 0; c < std::min(codes.size(), query.codes.size()); ++c) {
        query.codes[c] = codes[c];
      }
      if (has(finding, "redundantly") || has(finding, "duplicated")) query.which = 2;
      if (has(finding, "redundantly in mat. no.")) query.which = 1 + layers_of_first(codes, run);
      if (has(finding, "two TreeID")) query.which = 2;
      if (has(finding, "it has view factor of sky")) query.columns[1] = 3;
      return std::pair(phrase.unit, query);
    }
  }
  for (const std::string& line : finding.lines) {
    if (!line.starts_with("m,type(m) in Patch data =")) continue;
    Query query{n, {-1, -1, -1}, {}};
    query.record = numbers_behind(line, "=").at(0);
    return std::pair(int{frame::kUnitPatch}, query);
  }
  return std::nullopt;
}

/// The record of a patch that the canopy tells by its cell.
std::optional<Query> query_of_tree_patch(const Finding& finding, std::size_t n,
                                         const tsrf_main01::Run& run) {
  if (!has(finding, "TreePatch data is")) return std::nullopt;
  const tsrf_module_patch::Data& patch = run.inputs.patch;
  const auto cell = numbers_behind(finding.lines.back(), "=");
  if (cell.size() < 4) return std::nullopt;
  for (auto p = static_cast<std::size_t>(patch.patch_lines); p < patch.PID.size(); ++p) {
    if (patch.si[p] != cell[0] || patch.sj[p] != cell[1] || patch.sk[p] != cell[2]) continue;
    if (patch.SurfID[p] != cell[3]) continue;
    Query query{n, {-1, -1, -1}, {}};
    query.record = static_cast<std::int64_t>(p) + 1;
    return query;
  }
  return std::nullopt;
}

/// Findings of a file as a whole, of a line of file_name or of a line of the control data.
void place_by_words(Finding& finding, const Parts& parts, const frame::UnitTable& units,
                    const frame::Findings& findings) {
  const auto of_control = [&](std::int64_t line) {
    finding.file = parts.names.at(frame::kUnitControl);
    finding.line = line;
  };
  const auto of_table = [&](std::size_t line) {
    finding.file = units.path_of("file_name");
    finding.line = static_cast<std::int64_t>(line);
  };
  for (std::size_t row = 0; row < frame::kFiles; ++row) {
    const frame::FileRow& file = frame::kFileTable[row];
    const std::string title = frame::title(file);                // "Sun data (in)"
    const std::string data = title.substr(0, title.find(" ("));  // "Sun data"
    const bool listed = has(finding, "### cannot open " + parts.files[row] + " : ") ||
                        has(finding, ": line " + std::to_string(row + 1) + " of file_name") ||
                        has(finding, title + " = " + parts.files[row]);
    const bool of_month =
        has(finding, "cannot open ") && has(finding, "/" + parts.files[row] + " : ");
    if ((listed || of_month) && !parts.files[row].empty()) return of_table(row + 1);
    if (has(finding, "line " + std::to_string(row + 1) + " of file_name")) return of_table(row + 1);
    // The first words that name a file's data count: the rule may name another's.
    const auto line = std::ranges::find_if(finding.lines, [](const std::string& l) {
      return !l.starts_with("### error : data error") && l.find(" data") != std::string::npos;
    });
    const bool named =
        line != finding.lines.end() && (line->find("in " + data) != std::string::npos ||
                                        line->find("lack of " + data) != std::string::npos);
    const auto name = parts.names.find(file.unit);
    if (finding.file.empty() && named && name != parts.names.end()) finding.file = name->second;
  }
  if (has(finding, "of file_name") || has(finding, "file_name :")) return of_table(0);
  if (!finding.file.empty() || parts.names.empty()) return;
  if (has(finding, "dzg,zlg =")) {
    for (const frame::Setting& setting : findings.settings) {
      if (setting.member == "DZG") return of_control(setting.line);
    }
  }
  if (has(finding, "dtmax =")) return of_control(5);
  if (has(finding, "restart file")) {
    finding.file = parts.names.at(frame::kUnitRestart);
  } else if (has(finding, "outer faces of tree cells")) {
    finding.file = parts.names.at(frame::kUnitTreePatch);
  } else if (has(finding, "unitgs =") || has(finding, "mdlvpd =")) {
    for (const frame::Setting& setting : findings.settings) {
      const bool named = has(finding, setting.member == "UNITGS" ? "unitgs =" : "mdlvpd =");
      if ((setting.member == "UNITGS" || setting.member == "MDLVPD") && named) {
        return of_control(setting.line);
      }
    }
  } else {
    of_control(0);
  }
}

}  // namespace

void find_places(const Parts& parts, const tsrf_main01::Run& run, frame::Findings& findings) {
  std::map<int, std::vector<Query>> queries;
  for (std::size_t n = 0; n < findings.all().size(); ++n) {
    Finding& finding = findings.all()[n];
    if (!finding.file.empty() || parts.names.empty()) continue;
    if (has(finding, "%%% warning") && has(finding, "dtmax =")) continue;
    if (auto tree = query_of_tree_patch(finding, n, run)) {
      queries[frame::kUnitPatch].push_back(*tree);
    } else if (auto query = query_of(finding, n, run)) {
      queries[query->first].push_back(query->second);
    }
  }
  for (auto& [unit, of_file] : queries) {
    const std::int64_t records = Search(parts.names.at(unit), of_file, findings).run(0);
    if (unit != frame::kUnitPatch || of_file.empty()) continue;
    Search(parts.names.at(frame::kUnitTreePatch), of_file, findings).run(records);
  }
  for (Finding& finding : findings.all()) {
    if (finding.file.empty()) place_by_words(finding, parts, run.desk.units, findings);
  }
}

}  // namespace check
