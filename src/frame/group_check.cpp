// Groups of settings as a check of all files reads them: to the end, whatever stands there.
#include <utility>

#include "frame/findings.hpp"
#include "frame/group_parser.hpp"
#include "frame/names.hpp"
#include "frame/nearest_name.hpp"

namespace frame {

namespace {

/// The value of a member, kept.
using Kept = std::variant<std::int32_t, double, bool, std::string, std::vector<std::int32_t>,
                          std::vector<double>>;

template <class Value>
Kept copy_of(Value* value) {
  return *value;
}
template <class Value>
Kept copy_of(std::span<Value> values) {
  return std::vector<Value>(values.begin(), values.end());
}
Kept kept(const Target& target) {
  return std::visit([](auto value) { return copy_of(value); }, target);
}

template <class Value>
void put_back(Value* value, const Kept& from) {
  *value = std::get<Value>(from);
}
template <class Value>
void put_back(std::span<Value> values, const Kept& from) {
  std::ranges::copy(std::get<std::vector<Value>>(from), values.begin());
}

std::string did_you_mean(std::string_view word, const std::vector<Member>& members) {
  std::vector<std::string> names;
  names.reserve(members.size());
  for (const Member& member : members) names.emplace_back(member.name);
  const std::string name = nearest_name(names::upper_case(word), names);
  return name.empty() ? "" : "did you mean " + name + "?";
}

}  // namespace

void Group::note_asked(Log& log, const TextInput& file, std::size_t place) {
  log.findings().groups.emplace(name_);
  file_ = file.name();
  const bool found = place != std::string_view::npos;
  lines_.assign(members_.size(), found ? file.line_at(place - name_.size()) : 1);
}

void Group::read_on(Log& log, TextInput& file, std::size_t place) {
  Findings& findings = log.findings();
  const std::int64_t opens = lines_.empty() ? 1 : lines_.front();
  std::vector<Kept> defaults;
  for (const Member& member : members_) defaults.push_back(kept(member.target));
  GroupParser parser(file.content(), place, members_);
  const std::string head = "namelist = " + names::lower_case(name_);
  for (int status = 0; (status = parser.parse()) != 0; parser.pass_fault()) {
    const bool open = status == GroupParser::kEndOfFile;
    Finding finding{.lines = {open ? "### error : end of file" : "### error : read error", head},
                    .file = file.name(),
                    .line = open ? opens : file.line_at(parser.place())};
    const std::string unknown(parser.unknown());
    if (open) {
      finding.hint = "a slash closes a group";
    } else if (!unknown.empty()) {
      finding.lines.push_back("it has no member " + unknown);
      finding.hint = did_you_mean(unknown, members_);
    }
    findings.add(std::move(finding));
    if (open) break;
  }
  for (std::size_t n = 0; n < members_.size(); ++n) {
    if (parser.given()[n] == GroupParser::kNotGiven) continue;
    lines_[n] = file.line_at(parser.given()[n]);
    findings.settings.push_back({std::string(name_), std::string(members_[n].name), file_,
                                 lines_[n], kept(members_[n].target) != defaults[n]});
  }
  // Rules may look at several members, so that all are checked before one gets its default back.
  std::vector<bool> broken;
  for (const Member& member : members_) broken.push_back(member.check && !member.check().empty());
  check(log);
  for (std::size_t n = 0; n < members_.size(); ++n) {
    if (!broken[n]) continue;
    for (Setting& setting : findings.settings) {
      if (setting.group == name_ && setting.member == members_[n].name) setting.changed = false;
    }
    std::visit([&](auto target) { put_back(target, defaults[n]); }, members_[n].target);
  }
}

void Group::note_fault(Log& log, const Member& member, std::vector<std::string> lines) const {
  const auto n = static_cast<std::size_t>(&member - members_.data());
  log.findings().add({.lines = std::move(lines), .file = file_, .line = lines_[n]});
}

}  // namespace frame
