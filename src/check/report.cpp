#include "check/report.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <ostream>
#include <tuple>

#include "frame/text_input.hpp"

namespace check {

namespace {

using frame::Finding;

constexpr std::size_t kNamed = 20;   // of a kind
constexpr std::size_t kShown = 160;  // bytes of a line

/// What a finding says, in its parts.
struct Words {
  std::string found;     ///< what stands there
  std::string expected;  ///< the rule
  std::string context;   ///< what else the log tells of it
};

bool is_heading(const std::string& line) {
  static constexpr std::array<std::string_view, 3> kHeadings{
      "### error : data error", "%%% warning : data error", "%%% warning : invalid data"};
  return std::ranges::find(kHeadings, line) != kHeadings.end() ||
         line.starts_with("### error : data error in") || line.starts_with("### data error (") ||
         (line.starts_with("(") && line.ends_with(")"));
}

bool is_rule(const std::string& line) {
  static constexpr std::array<std::string_view, 12> kRules{"it ",
                                                           "they ",
                                                           "their ",
                                                           "must ",
                                                           "out of range",
                                                           "value is ",
                                                           "lack of data",
                                                           "duplicated",
                                                           "usual are",
                                                           "no program",
                                                           "invalid expression",
                                                           "hour, minute"};
  return std::ranges::any_of(kRules, [&](std::string_view rule) { return line.starts_with(rule); });
}

/// Without the signs that tell severity on the log.
std::string plain(std::string line) {
  for (const std::string_view sign : {"### error : ", "%%% warning : ", "%%% ", "### "}) {
    if (line.starts_with(sign)) return line.substr(sign.size());
  }
  return line;
}

Words words_of(const Finding& finding) {
  Words words;
  for (const std::string& line : finding.lines) {
    if (is_heading(line) && finding.lines.size() > 1) continue;
    std::string& part = words.found.empty() ? words.found
                        : is_rule(line)     ? words.expected
                                            : words.context;
    if (!part.empty()) part += "; ";
    part += plain(line);
  }
  return words;
}

struct Hint {
  std::string_view words;
  std::string_view hint;
};
constexpr std::array<Hint, 16> kHints{{
    {"it is not defined in MatEleProp data",
     "add the material, or give the patch one that is there"},
    {"it is not defined in SurfProp data",
     "add the properties, or give the layer a code that is there"},
    {"it is not defined in PatchIndex data", "each patch needs a line, each group a patch"},
    {"it is not defined in Building data",
     "add the building, or give its patches type and BldID anew"},
    {"it is not defined in RmHeat", "each pair of BldCD and Strct needs its lines of schedule"},
    {"it is not defined in TreeData", "add the TreeID to LAD_simple"},
    {"redundantly", "each stands once"},
    {"read error", "numbers are separated by blanks or commas; text is no number"},
    {"a record takes more than one line", "a line that lacks a field takes it from the next one"},
    {"they are out of range", "cells count from 1 along x and y, from 0 upwards, within the grid"},
    {"the title line reads as a record", "the first line of a data file is a title, never data"},
    {"cannot open", "names in file_name are relative to its directory"},
    {"columns of", "shorter steps or thicker first cells make them explicit"},
    {"it has no roof", "patches of type 1 that look upwards"},
    {"no. of lines of a date", "a line is missing, or one too many"},
    {"it must not be the name of another file", "results would replace it"},
}};

std::string hint_of(const Finding& finding) {
  if (!finding.hint.empty()) return finding.hint;
  for (const Hint& hint : kHints) {
    for (const std::string& line : finding.lines) {
      if (line.find(hint.words) != std::string::npos) return std::string(hint.hint);
    }
  }
  return {};
}

std::string_view severity(const Finding& finding) { return finding.fault ? "fault" : "doubt"; }

/// The lines that the findings lie in, by file and line.
class Texts {
 public:
  explicit Texts(const frame::Findings& findings) {
    std::map<std::string, std::vector<std::int64_t>> wanted;
    for (const Finding& finding : findings.all()) {
      if (!finding.file.empty() && finding.line > 0) wanted[finding.file].push_back(finding.line);
    }
    for (auto& [name, lines] : wanted) look_up(name, lines);
  }
  [[nodiscard]] std::string of(const Finding& finding) const {
    const auto found = texts_.find({finding.file, finding.line});
    return found == texts_.end() ? "" : found->second;
  }

 private:
  void look_up(const std::string& name, std::vector<std::int64_t>& lines) {
    std::ranges::sort(lines);
    frame::TextInput file(name);
    if (!file.good()) return;
    std::int64_t number = 0;
    std::string_view text;
    for (const std::int64_t line : lines) {
      while (number < line && file.next_line(text)) ++number;
      if (number != line) return;
      std::string shown(text.substr(0, kShown));
      for (char& c : shown) {
        if (c != '\t' && (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)) c = '?';
      }
      texts_[{name, line}] = shown + (text.size() > kShown ? " ..." : "");
    }
  }

  std::map<std::pair<std::string, std::int64_t>, std::string> texts_;
};

/// The words without their numbers: what findings of one kind share.
std::string kind_of(const Finding& finding) {
  std::string kind = finding.file;
  for (const std::string& line : finding.lines) {
    for (const char c : line) {
      if ((c < '0' || c > '9') && c != '-' && c != '.' && c != 'e') kind += c;
    }
  }
  return kind;
}

/// The length of the UTF-8 character at `at`, 0 where there is none.
std::size_t utf8_length(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t n) { return static_cast<unsigned char>(text[n]); };
  const unsigned char c = byte(at);
  const std::size_t length = c < 0x80                ? 1
                             : c >= 0xC2 && c < 0xE0 ? 2
                             : c >= 0xE0 && c < 0xF0 ? 3
                             : c >= 0xF0 && c < 0xF5 ? 4
                                                     : 0;
  if (length == 0 || at + length > text.size()) return 0;
  for (std::size_t n = 1; n < length; ++n) {
    if ((byte(at + n) & 0xC0U) != 0x80U) return 0;
  }
  const bool bad = (c == 0xE0 && byte(at + 1) < 0xA0) || (c == 0xED && byte(at + 1) > 0x9F) ||
                   (c == 0xF0 && byte(at + 1) < 0x90) || (c == 0xF4 && byte(at + 1) > 0x8F);
  return bad ? 0 : length;
}

std::string quoted(std::string_view text) {
  static constexpr std::string_view kHex = "0123456789abcdef";
  std::string result = "\"";
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = utf8_length(text, at);
    const auto c = static_cast<unsigned char>(text[at]);
    if (length == 0) {
      result += "\\ufffd";
    } else if (c == '"' || c == '\\') {
      result += '\\';
      result += text[at];
    } else if (c < 0x20) {
      result += "\\u00";
      result += kHex[c >> 4U];
      result += kHex[c & 15U];
    } else {
      result += text.substr(at, length);
    }
    at += std::max<std::size_t>(length, 1);
  }
  return result + '"';
}

}  // namespace

void put_in_order(frame::Findings& findings) {
  std::vector<Finding>& all = findings.all();
  std::ranges::stable_sort(all, {}, [](const Finding& f) { return std::tuple(f.file, f.line); });
  std::map<std::string, std::pair<std::size_t, std::int64_t>> kinds;  // last kept, how many more
  std::vector<Finding> kept;
  std::map<std::string, std::size_t> number;
  for (Finding& finding : all) {
    const std::string kind = kind_of(finding);
    if (++number[kind] > kNamed) {
      ++kinds[kind].second;
      continue;
    }
    kinds[kind].first = kept.size();
    kept.push_back(std::move(finding));
  }
  for (const auto& [kind, more] : kinds) {
    if (more.second == 0) continue;
    std::string& hint = kept[more.first].hint;
    hint += (hint.empty() ? "and " : "; and ") + std::to_string(more.second) + " more of this kind";
  }
  all = std::move(kept);
}

void print_text(const frame::Findings& findings, std::ostream& out) {
  const Texts texts(findings);
  for (const Finding& finding : findings.all()) {
    const Words words = words_of(finding);
    if (!finding.file.empty()) out << finding.file << ':';
    if (finding.line > 0) out << finding.line << ':';
    if (!finding.file.empty()) out << ' ';
    out << severity(finding) << ": " << words.found;
    if (!words.expected.empty()) out << "; " << words.expected;
    if (!words.context.empty()) out << " (" << words.context << ')';
    if (finding.count > 1) out << " (" << finding.count << " times)";
    out << '\n';
    const std::string text = texts.of(finding);
    if (!text.empty()) out << "    | " << text << '\n';
    const std::string hint = hint_of(finding);
    if (!hint.empty()) out << "    hint: " << hint << '\n';
  }
}

void print_json(const frame::Findings& findings, std::ostream& out) {
  const Texts texts(findings);
  for (const Finding& finding : findings.all()) {
    const Words words = words_of(finding);
    out << "{\"severity\":\"" << severity(finding) << "\",\"file\":" << quoted(finding.file)
        << ",\"line\":" << finding.line << ",\"found\":" << quoted(words.found)
        << ",\"expected\":" << quoted(words.expected) << ",\"context\":" << quoted(words.context)
        << ",\"text\":" << quoted(texts.of(finding)) << ",\"hint\":" << quoted(hint_of(finding))
        << ",\"count\":" << finding.count << "}\n";
  }
}

int status_of(const frame::Findings& findings) {
  if (std::ranges::any_of(findings.all(), &Finding::fault)) return 2;
  return findings.all().empty() ? 0 : 1;
}

}  // namespace check
