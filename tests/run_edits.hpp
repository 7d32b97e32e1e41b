// Edits of a run's files, as the tables of faulty runs write them (tests/fault_runs/README.md).
#pragma once

#include "run_case.hpp"

namespace run_case {

/// The text with its "\n", "\t" and "\r" as characters.
inline std::string unescaped(std::string text) {
  for (const auto& [code, sign] :
       {std::pair{"\\n", "\n"}, std::pair{"\\t", "\t"}, std::pair{"\\r", "\r"}}) {
    for (std::size_t at = 0; (at = text.find(code, at)) != std::string::npos;) {
      text.replace(at, 2, sign);
    }
  }
  return text;
}

/// Makes one edit; false when the file is not as the edit takes it to be.
inline bool edited(const RunCase& run, const std::string& edit) {
  const std::size_t blank = edit.find(' ');
  const std::string file = edit.substr(0, blank);
  const std::string how = unescaped(edit.substr(std::min(blank + 1, edit.size())));
  const std::string text = how.size() > 2 ? how.substr(2) : "";
  const std::size_t arrow = how.find(" => ");
  switch (how.empty() ? ' ' : how[0]) {
    case '=':
      run.write(file, text);
      return true;
    case '+':
      run.write(file, run.content(file) + text + "\n");
      return true;
    case '@': {
      const std::size_t end = how.find(' ');
      return run.set_line(file, std::stoul(how.substr(1, end)),
                          end == std::string::npos ? "" : how.substr(end + 1));
    }
    case '/': {
      Lines kept = lines_of(run.path(file));
      kept.resize(std::min<std::size_t>(kept.size(), std::stoul(text)));
      std::string all;
      for (const std::string& line : kept) all += line + "\n";
      run.write(file, all);
      return true;
    }
    case '-':
      return std::filesystem::remove_all(run.path(file)) > 0;
    case 'd':
      return std::filesystem::remove(run.path(file)) &&
             std::filesystem::create_directory(run.path(file));
    default:
      return arrow != std::string::npos &&
             run.replace(file, how.substr(0, arrow), how.substr(arrow + 4));
  }
}

}  // namespace run_case
