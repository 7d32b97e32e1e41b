// townskin_case: from the data of a city to a run directory. Status 0: done; 2: a fault, told on
// standard error, and nothing is written.
#include <unistd.h>

#include <exception>
#include <iostream>

#include "make_case.hpp"
#include "scene/cut.hpp"
#include "townskin_version.hpp"

namespace {

constexpr int kFault = 2;
constexpr std::size_t kNamed = 5;  // of a kind; case.log names all

void tell(const townskin_case::Report& report) {
  for (const std::string& line : report.lines(kNamed)) std::cerr << line << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  using namespace townskin_case;
  try {
    const Options options = read_options(argc, argv, townskin_version::line("townskin_case"));
    if (!options.to_print.empty()) {
      std::cout << options.to_print;
      return 0;
    }
    Report report(options.strict);
    try {
      make_case(options, cut_city, report,
                {std::cout, ::isatty(STDERR_FILENO) != 0 ? &std::cerr : nullptr});
    } catch (const Fault&) {
      tell(report);
      throw;
    }
    tell(report);
    return 0;
  } catch (const std::bad_alloc&) {
    std::cerr << "### memory is not to be had\n";
  } catch (const std::exception& fault) {
    std::cerr << "### " << fault.what() << '\n';
  }
  return kFault;
}
