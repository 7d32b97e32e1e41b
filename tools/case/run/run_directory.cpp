#include "run/run_directory.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

namespace townskin_case {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGrowing = ".unfinished_";
constexpr const char* kReplaced = ".replaced_";
constexpr const char* kMark = ".grows";  // in a directory that grows: whose lock is free is dead

fs::path without_slash(const std::string& name) {
  const fs::path path(name);
  return path.has_filename() ? path : path.parent_path();
}

std::string made_beside(const fs::path& target, const std::string& ending) {
  std::string name = target.string() + ending + "XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    throw Fault("cannot make a directory beside " + target.string() + ": " + std::strerror(errno));
  }
  return name;
}

/// Directories beside `target` whose names are its own and an ending that was made for it.
std::vector<fs::path> beside(const fs::path& target, const std::string& ending) {
  constexpr std::size_t kRandom = 6;  // letters of mkdtemp
  const std::string name = target.filename().string() + ending;
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::vector<fs::path> found;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder, none)) {
    const std::string other = entry.path().filename().string();
    if (!other.starts_with(name) || other.size() != name.size() + kRandom) continue;
    if (fs::is_directory(entry.symlink_status(none))) found.push_back(entry.path());
  }
  return found;
}

/// Whether a directory is marked as growing and nobody lets it grow.
bool is_dead(const fs::path& directory) {
  const int mark = ::open((directory / kMark).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (mark < 0) return false;
  const bool dead = ::flock(mark, LOCK_EX | LOCK_NB) == 0;
  ::close(mark);
  return dead;
}

}  // namespace

void RunDirectory::tidy(const std::string& target, Report& report) {
  const fs::path path = without_slash(target);
  for (const fs::path& left : beside(path, kGrowing)) {
    std::error_code error;
    if (!is_dead(left)) continue;
    fs::remove_all(left, error);
    if (!error) report.warning(left.string() + ", left by a run that was cut short, is removed");
  }
  for (const fs::path& left : beside(path, kReplaced)) {
    report.warning(left.string() + " is an older run that was being replaced when the tool was " +
                   "cut short; it is left as it is");
  }
}

void RunDirectory::check_target(const std::string& target, bool force) {
  if (target.empty()) throw Fault("no name for the run directory (-o)");
  const fs::path path = without_slash(target);
  std::error_code none;
  if (!fs::exists(fs::symlink_status(path, none))) return;
  if (!force) throw Fault(path.string() + " is there already; --force replaces a run");
  const bool is_run = fs::is_directory(path, none) && fs::exists(path / "file_name", none);
  if (!is_run) throw Fault(path.string() + " is no run, so --force does not replace it");
}

RunDirectory::RunDirectory(const std::string& target, bool force)
    : target_(without_slash(target).string()) {
  check_target(target, force);
  std::error_code ignored;
  fs::create_directories(fs::path(target_).parent_path(), ignored);
  growing_ = made_beside(target_, kGrowing);
  mark_ = ::open((growing_ + "/" + kMark).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (mark_ >= 0) ::flock(mark_, LOCK_EX | LOCK_NB);
}

RunDirectory::~RunDirectory() {
  std::error_code ignored;
  if (!growing_.empty()) fs::remove_all(growing_, ignored);
  if (mark_ >= 0) ::close(mark_);
}

void RunDirectory::finish() {
  std::error_code error;
  fs::permissions(growing_, fs::perms(0755), error);
  fs::remove(fs::path(growing_) / kMark, error);
  std::string old;
  if (fs::exists(target_)) {
    old = made_beside(target_, kReplaced);
    fs::rename(target_, old, error);  // takes the place of the empty directory
    if (error) throw Fault("cannot replace " + target_ + ": " + error.message());
  }
  fs::rename(growing_, target_, error);
  if (error) {
    if (!old.empty()) fs::rename(old, target_, error);
    throw Fault("cannot name the run " + target_ + ": " + error.message());
  }
  growing_.clear();
  if (!old.empty()) fs::remove_all(old, error);
}

}  // namespace townskin_case
