// Feeds a corpus to a fuzz target without a fuzzer: every file of the given folders and every
// beginning of it. A finding aborts, as it does under the fuzzer; no file at all is a fault.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace {

void feed_beginnings(const std::string& content) {
  for (std::size_t size = 0; size <= content.size(); ++size) {
    // A copy of the very size, so that a read behind it is seen.
    const std::vector<unsigned char> bytes(content.begin(),
                                           content.begin() + static_cast<std::ptrdiff_t>(size));
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t files = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::cout << entry.path().string() << std::endl;  // the last one named is the one that fails
      std::ifstream file(entry.path(), std::ios::binary);
      feed_beginnings({std::istreambuf_iterator<char>(file), {}});
      ++files;
    }
  }
  return files > 0 ? 0 : 1;
}
