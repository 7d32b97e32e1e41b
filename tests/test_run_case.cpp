// The helper that judges whole runs must itself be able to find a difference.
#include <gtest/gtest.h>

#include "run_case.hpp"

namespace {

TEST(RunCase, Differences) {
  using Pairs = std::vector<std::pair<std::string, std::string>>;
  const Pairs same{{"# a  b", "# a b "},           {" 1 2.50000E+01", "  1   2.50000E+01"},
                   {"1.00000E+02", "1.00002E+02"}, {"9.99999E+01", "1.00001E+02"},
                   {"1.0E+00", "1.2E+00"},         {"1.79316E-224", "-0.00000E+00"}};
  const Pairs other{{"# a b", "# a c"},     {"1.00000E+02", "1.00003E+02"},
                    {"1.0E+00", "1.3E+00"}, {"12", "13"},
                    {"1 2", "1 2 3"},       {"1.0 2", "nan 2"},
                    {"abc 1", "abd 1"}};
  for (const auto& [a, b] : same) EXPECT_EQ(run_case::differences({a}, {b}), "");
  for (const auto& [a, b] : other) EXPECT_NE(run_case::differences({a}, {b}), "") << a;
  EXPECT_NE(run_case::differences({"1", "2"}, {"1"}), "");
}

}  // namespace
