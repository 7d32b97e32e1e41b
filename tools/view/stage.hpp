// Outputs that appear all together, or not at all.
//
// Each is written under another name beside its own and takes its own when everything is done, so
// that a fault leaves what stood there as it was. What stands there is replaced only where an
// earlier call of this program made it, or with --force; a file of the run never is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace townskin_view {

/// Stands in the first bytes of every text that this program writes.
inline constexpr std::string_view kMark = "townskin_view";

class Stage {
 public:
  /// `protected_files` are those of the run.
  Stage(bool force, std::vector<std::string> protected_files)
      : force_(force), protected_(std::move(protected_files)) {}
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  /// The name under which `path` is to be written now; its folder is made where it is not there.
  /// `mark` is what an earlier output of the same kind has near its start; `known` tells that what
  /// stands there is one, where that is known by other means.
  [[nodiscard]] std::string file(const std::string& path, std::string_view mark = kMark,
                                 bool known = false);
  /// Gives all outputs their names.
  void commit();

 private:
  void make_folder(const std::string& path);
  void check(const std::string& path, std::string_view mark, bool known) const;

  struct Output {
    std::string temporary, path;
  };
  bool force_;
  std::vector<std::string> protected_;
  std::vector<Output> outputs_;
  std::vector<std::string> made_folders_;
};

}  // namespace townskin_view
