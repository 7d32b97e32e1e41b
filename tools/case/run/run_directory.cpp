#include "run/run_directory.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "report.hpp"

namespace townskin_case {
namespace {

namespace fs = std::filesystem;

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

}  // namespace

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
  growing_ = made_beside(target_, ".unfinished_");
}

RunDirectory::~RunDirectory() {
  std::error_code ignored;
  if (!growing_.empty()) fs::remove_all(growing_, ignored);
}

void RunDirectory::finish() {
  std::error_code error;
  fs::permissions(growing_, fs::perms(0755), error);
  std::string old;
  if (fs::exists(target_)) {
    old = made_beside(target_, ".replaced_");
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
