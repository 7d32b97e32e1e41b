// Namelist groups: how users write them, what is refused, and what the log says of it.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fault_table.hpp"
#include "frame/namelist.hpp"
#include "recorded_log.hpp"

namespace {

struct Settings {
  std::int32_t n = 1;
  double x = 0.5;
  bool flag = false;
  std::string text = "old";
  std::array<std::int32_t, 3> list{7, 8, 9};
  std::array<double, 2> pair{0, 0};

  frame::Group group() {
    return {"GROUP_A",
            {{"N", n, frame::positive("n =", n)},
             {"X", x, frame::not_negative("x =", x)},
             {"FLAG", flag},
             {"TEXT", text},
             {"LIST", std::span(list)},
             {"PAIR", std::span(pair)}}};
  }
};

struct Outcome {
  std::string log;
  std::string values;  // "absent" when no group was found
};

Outcome read(const std::string& text) {
  RecordedLog recorded;
  Settings s;
  frame::Group group = s.group();
  frame::TextInput file("control", text);
  file.skip_line();
  bool found = false;
  Outcome outcome;
  outcome.log = recorded.lines_of([&] { found = group.read(recorded.log, file); });
  outcome.values = found ? frame::items(s.n, s.x, s.flag, s.text, s.list[0], s.list[1], s.list[2],
                                        s.pair[0], s.pair[1])
                         : "absent";
  return outcome;
}

TEST(Namelist, IsReadInEveryFormThatUsersWrite) {
  for (const FaultCase& c : fault_table("namelist_forms", {{'~', "\r"}, {'^', "\t"}})) {
    EXPECT_EQ(read(c.input).values, c.lines) << c.input;
  }
}

/// Expects that the group is echoed and then refused in the given words.
void expect_fault(const std::string& text, int line, const std::string& words) {
  const std::string log = read(text).log;
  const std::string fault = frame::items("%%% file control, line", line) +
                            "\n### error : " + words + "\n(flw_nml_errmsg0)\n";
  EXPECT_EQ(log.substr(log.size() - std::min(log.size(), fault.size())), fault) << text;
  EXPECT_EQ(log.rfind("&GROUP_A", 0), 0U) << text;
}

TEST(Namelist, ThatCannotBeReadIsToldWithItsLine) {
  const std::vector<std::pair<std::string, int>> open = {{"&group_a", 1},
                                                         {"&group_a\n n = 2\n\n\n", 2},
                                                         {"&group_a\n n = 2 &other x=1 /", 2},
                                                         {"&group_a n\n = 2\n&group_a n = 2 /", 3},
                                                         {"&group_a fl", 1},
                                                         {"&group_a list(2", 1},
                                                         {"&group_a\n\n text = 'open / \n", 3}};
  for (const auto& [text, line] : open) {
    expect_fault(text, line, "end of file\nnamelist = group_a\niostat = -1");
  }
  std::istringstream faults(
      std::string(
          "m = 3;3;= 3;n 3;n = 3 4;list = 1,2,3,4;list = 4*1;list = 2000000000*1;list = "
          "99999999999*1;"
          "list = 0*1;list(0) = 1;list(4) = 1;list(3:2) = 1;list(1:2) = 1 2 3;list() = 1;list(1) 1;"
          "n(1) = 1;n (1) = 1;n(1:1) = 1;x(1) = 1;flag(1) = T;text(1) = 'a';n( = 1;"
          "n = 1.5;n = 2147483648;n = '1';n == 1;x = nan;x = 1e999;text = bare;flag = yes;flag = "
          ".;") +
      std::string("n = 1\0", 6));
  for (std::string fault; std::getline(faults, fault, ';');) {
    expect_fault("&group_a\n x = 1,\n" + fault + " /\n", 3,
                 "read error\nnamelist = group_a\niostat = 1");
  }
}

TEST(Namelist, EchoIsAGroupThatReadsBackAndChecksFollowTheTable) {
  const std::string text =
      "&group_a n=2 x=1e-300 flag=t text='it''s /' list=3*-1 pair=0.1,12345678.9 /";
  const Outcome first = read(text);
  const Outcome again = read(first.log);
  EXPECT_EQ(first.values, "2 1e-300 1 it's / -1 -1 -1 0.1 12345678.9");
  EXPECT_EQ(again.values, first.values);
  EXPECT_EQ(again.log, first.log);

  const auto tail = [](const Outcome& outcome) {
    return outcome.log.substr(outcome.log.find("\n/\n") + 3);
  };
  EXPECT_EQ(tail(first), "");
  EXPECT_EQ(tail(read("&group_a x=-1 n=0 /")), "### error : data error\nn = 0\nit must be > 0\n");
  EXPECT_EQ(tail(read("&group_a x=-1 /")), "### error : data error\nx = -1\nit must be >= 0\n");
  EXPECT_EQ(read("no group").log, "");
}

TEST(Namelist, HostileTextIsReadInOnePass) {
  for (const char* piece :
       {"&group_a", "=", "='", "='\"", "&", "1(", "1 (", "n (", "n=1 ", " ", ",", "!"}) {
    std::string body;
    while (body.size() < 2'000'000) body += piece;
    for (const char* head : {"", "&group_a ", "&group_a list = ", "&group_a n("}) {
      EXPECT_EQ(read(head + body).values, "absent") << head << piece;
    }
  }
}

}  // namespace
