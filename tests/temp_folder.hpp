// A folder of its own for one test, removed at its end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "townskin_XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  [[nodiscard]] std::string path(const std::string& name = "") const {
    return (path_ / name).string();
  }
  /// Writes a file, with the folders that its name asks for.
  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path(name), std::ios::binary) << text;
  }
  [[nodiscard]] std::string content(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path path_;
};
