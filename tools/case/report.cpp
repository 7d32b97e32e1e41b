#include "report.hpp"

namespace townskin_case {
namespace {

void add(std::vector<std::string>& lines, const std::string& verb,
         const std::map<std::string, std::vector<Origin>>& kinds, std::size_t named_at_most) {
  for (const auto& [what, where] : kinds) {
    lines.push_back(verb + what + ": " + std::to_string(where.size()));
    std::map<std::string, std::string> by_file;
    std::size_t named = 0;
    for (const Origin& origin : where) {
      if (named++ == named_at_most) break;
      std::string& list = by_file[origin.file];
      list += (list.empty() ? " " : ", ") + origin.feature;
    }
    for (const auto& [file, list] : by_file) lines.push_back("    " + file + ":" + list);
    if (where.size() > named_at_most) {
      lines.push_back("    and " + std::to_string(where.size() - named_at_most) + " more");
    }
  }
}

}  // namespace

void Report::repair(const std::string& what, const Origin& origin) {
  repairs_[what].push_back(origin);
}

void Report::leave_out(const std::string& why, const Origin& origin) {
  if (strict_) fault(why, origin);
  left_out_[why].push_back(origin);
}

void Report::warning(const std::string& text) { warnings_.push_back(text); }

void Report::fault(const std::string& text, const Origin& origin) {
  std::string where = origin.file;
  if (!origin.feature.empty()) where += (where.empty() ? "" : ", ") + origin.feature;
  throw Fault(where.empty() ? text : where + ": " + text);
}

std::size_t Report::count(const std::string& what) const {
  std::size_t sum = 0;
  for (const auto* kinds : {&repairs_, &left_out_}) {
    if (const auto found = kinds->find(what); found != kinds->end()) sum += found->second.size();
  }
  return sum;
}

std::vector<std::string> Report::lines(std::size_t named_at_most) const {
  std::vector<std::string> lines;
  add(lines, "repaired: ", repairs_, named_at_most);
  add(lines, "left out: ", left_out_, named_at_most);
  for (const std::string& text : warnings_) lines.push_back("%%% " + text);
  return lines;
}

}  // namespace townskin_case
