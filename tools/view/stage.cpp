#include "stage.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "fault.hpp"
#include "frame/file_names.hpp"

namespace townskin_view {

namespace {

namespace fs = std::filesystem;

/// A text of this program has its mark near its start.
bool is_ours(const std::string& path, std::string_view mark) {
  constexpr std::size_t kHead = 1 << 16;
  std::ifstream file(path, std::ios::binary);
  std::string head(kHead, '\0');
  file.read(head.data(), static_cast<std::streamsize>(kHead));
  head.resize(static_cast<std::size_t>(file.gcount()));
  return head.find(mark) != std::string::npos;
}

}  // namespace

Stage::~Stage() {
  std::error_code ignored;
  for (const Output& output : outputs_) fs::remove(output.temporary, ignored);
  for (const std::string& folder : made_folders_) fs::remove(folder, ignored);  // if it is empty
}

void Stage::check(const std::string& path, std::string_view mark, bool known) const {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) return;
  if (!fs::is_regular_file(status)) throw Fault(path + " is no plain file");
  if (known || is_ours(path, mark)) return;
  if (std::ranges::any_of(protected_,
                          [&](const std::string& file) { return frame::same_file(file, path); })) {
    throw Fault(path + " is a file of the run");
  }
  if (force_) return;
  throw Fault(path + " is there already and not one of townskin_view; --force replaces it");
}

/// Makes the folder of a file, and remembers what was made, the innermost first.
void Stage::make_folder(const std::string& path) {
  fs::path folder = fs::path(path).parent_path();
  std::vector<fs::path> missing;
  std::error_code error;
  while (!folder.empty() && !fs::exists(folder, error)) {
    missing.push_back(folder);
    folder = folder.parent_path();
  }
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    if (!fs::create_directory(*it, error)) {
      throw Fault("cannot make " + it->string() + ": " + error.message());
    }
    made_folders_.insert(made_folders_.begin(), it->string());
  }
}

std::string Stage::file(const std::string& path, std::string_view mark, bool known) {
  if (std::ranges::find(outputs_, path, &Output::path) != outputs_.end()) {
    throw Fault(path + " would be written twice");
  }
  check(path, mark, known);
  make_folder(path);
  std::string temporary = path + ".unfinished";
  std::error_code error;
  for (int n = 1; fs::exists(temporary, error); ++n) {
    temporary = path + ".unfinished" + std::to_string(n);
  }
  outputs_.push_back({temporary, path});
  return temporary;
}

void Stage::commit() {
  for (const Output& output : outputs_) {
    std::error_code error;
    fs::rename(output.temporary, output.path, error);
    if (error) throw Fault("cannot write " + output.path + ": " + error.message());
  }
  outputs_.clear();
  made_folders_.clear();
}

}  // namespace townskin_view
