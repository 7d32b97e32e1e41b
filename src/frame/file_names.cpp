#include "frame/file_names.hpp"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace frame {

std::string title_of(std::string_view label) {
  return std::string(label.substr(0, label.find_last_not_of(" :") + 1));
}

std::string link_target(const std::string& name) {
  char* path = ::realpath(name.c_str(), nullptr);
  if (path == nullptr) return name;
  std::string result = path;
  std::free(path);
  return result;
}

bool is_device(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

std::string identity(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) {
    if (!S_ISREG(info.st_mode)) return {};
    return std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino);
  }
  std::error_code ignored;
  return std::filesystem::weakly_canonical(path, ignored).string();
}

bool same_file(const std::string& a, const std::string& b) {
  const std::string file = identity(a);
  return !file.empty() && file == identity(b);
}

void check_outputs(Log& log, const UnitTable& units, const std::string& table,
                   std::span<const NamedFile> files) {
  std::vector<NamedFile> all(files.begin(), files.end());
  all.push_back({"log", "log0000", units.path_of("log0000")});
  all.push_back({table, table, units.path_of(table)});
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!all[i].output) continue;
    for (std::size_t other = 0; other < all.size(); ++other) {
      if (other == i || !same_file(all[i].path, all[other].path)) continue;
      log.data_error(items(all[i].title, "=", all[i].name),
                     items("it must not be the name of another file :", all[other].title));
    }
  }
}

}  // namespace frame
