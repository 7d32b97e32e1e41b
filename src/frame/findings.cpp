#include "frame/findings.hpp"

#include <algorithm>
#include <utility>

#include "frame/numbers.hpp"

namespace frame {

namespace {

constexpr std::int64_t kEnough = 1000;
constexpr std::string_view kPlace = "%%% file ";

/// Takes ", line N" (or ", lines N and M") off the end of `text`: N; 0 where it does not stand.
std::int64_t take_line(std::string_view& text) {
  for (const std::string_view mark : {", lines ", ", line "}) {
    const std::size_t at = text.rfind(mark);
    if (at == std::string_view::npos) continue;
    std::string_view number = text.substr(at + mark.size());
    number = number.substr(0, number.find_first_not_of("0123456789"));
    std::int32_t line = 0;
    if (!parse_number(number, line)) continue;
    text = text.substr(0, at);
    return line;
  }
  return 0;
}

/// Moves the place that the words tell to where it belongs.
void take_place(Finding& finding) {
  for (std::size_t n = 0; n < finding.lines.size(); ++n) {
    std::string_view text = finding.lines[n];
    const bool whole = text.starts_with(kPlace);
    const std::size_t at = whole ? kPlace.size() : text.rfind(" file ");
    if (at == std::string_view::npos || !(whole || text.starts_with("%%% warning"))) continue;
    text.remove_prefix(whole ? at : at + std::string_view(" file ").size());
    const std::int64_t line = take_line(text);
    finding.line = line > 0 ? line : 1;
    finding.file = text;
    if (whole) finding.lines.erase(finding.lines.begin() + static_cast<std::ptrdiff_t>(n));
    return;
  }
}

std::string key_of(const Finding& finding) {
  std::string key =
      finding.file + '\n' + std::to_string(finding.line) + (finding.fault ? "f" : "d");
  for (const std::string& line : finding.lines) key += '\n' + line;
  return key;
}

/// The file and the words before a value.
std::string kind_of(const Finding& finding) {
  std::string kind = finding.file;
  for (const std::string& line : finding.lines) kind += '\n' + line.substr(0, line.find('='));
  return kind;
}

template <class Take>
void each_word(std::string_view text, Take&& take) {
  constexpr std::string_view kBetween = " \t,\r\n";
  for (;;) {
    const std::size_t begin = text.find_first_not_of(kBetween);
    if (begin == std::string_view::npos) return;
    text.remove_prefix(begin);
    const std::size_t end = std::min(text.find_first_of(kBetween), text.size());
    take(text.substr(0, end));
    text.remove_prefix(end);
  }
}

}  // namespace

void Findings::add(Finding finding) {
  merge();
  std::erase(finding.lines, std::string());
  if (finding.lines.empty()) return;
  take_place(finding);
  findings_.push_back(std::move(finding));
}

void Findings::place(std::string_view file, std::int64_t line) {
  if (findings_.size() == merged_ || !findings_.back().file.empty()) return;
  findings_.back().file = file;
  findings_.back().line = line;
}

/// The last finding has its place; one that says what another did is counted there.
void Findings::merge() {
  if (findings_.size() == merged_) return;
  const Finding& last = findings_.back();
  if (last.fault) ++faults_[last.file];
  if (++kinds_[kind_of(last)] > kEnough) {
    findings_.pop_back();
    return;
  }
  const auto [at, is_new] = known_.try_emplace(key_of(last), merged_);
  if (is_new) {
    ++merged_;
    return;
  }
  ++findings_[at->second].count;
  findings_.pop_back();
}

void Findings::lose(std::string_view file, std::string_view text) {
  auto& words = lost_[std::string(file)];
  if (text.empty()) lost_files_.emplace(file);
  each_word(text, [&](std::string_view word) { words.emplace(word); });
}

bool Findings::lost_file(std::string_view file) const { return lost_files_.contains(file); }
bool Findings::lost_any(std::string_view file) const { return lost_.contains(file); }

bool Findings::lost_word(std::string_view file, std::string_view word) const {
  const auto found = lost_.find(file);
  return found != lost_.end() && (lost_file(file) || found->second.contains(word));
}

bool Findings::enough_of(std::string_view file) const {
  const auto found = faults_.find(file);
  return found != faults_.end() && found->second >= kEnough;
}

}  // namespace frame
