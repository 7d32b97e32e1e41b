// The frame below the modules: numbers as text, the log, files, stopwatches, codes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>
#include <thread>

#include "frame/accounts.hpp"
#include "frame/array_list.hpp"
#include "frame/code_index.hpp"
#include "frame/plain_column.hpp"
#include "frame/unit_table.hpp"
#include "recorded_log.hpp"
#include "temp_folder.hpp"

namespace {

using frame::items;

template <class Real>
void expect_round_trip(Real value) {
  Real back = 0;
  if (!std::isfinite(value)) return;
  ASSERT_TRUE(frame::parse_number(items(value), back));
  ASSERT_EQ(std::memcmp(&back, &value, sizeof back), 0) << value;
}

TEST(Numbers, RoundTripInTheShortestForm) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100000; ++i) {
    expect_round_trip(std::bit_cast<double>(random()));
    expect_round_trip(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
  }
  EXPECT_EQ(items("mx(=", -3, ") <", 0.1, 0.1F, 300.0, -0.0, 1e22, 5.6704e-8, INT32_MIN),
            "mx(= -3 ) < 0.1 0.1 300 0 1e+22 5.6704e-08 -2147483648");
}

/// The fast and the plain way to read `text` must agree to the bit; returns whether the fast one
/// took it.
template <class Real>
bool fast_agrees(const std::string& text) {
  Real fast = -7;
  Real plain = -7;
  EXPECT_TRUE(frame::parse_number(text, plain)) << text;
  const char* behind = frame::scan_plain(text.data(), text.data() + text.size(), fast);
  if (behind == nullptr) return false;
  EXPECT_EQ(behind, text.data() + text.size()) << text;
  EXPECT_EQ(std::memcmp(&fast, &plain, sizeof fast), 0) << text;
  return true;
}

TEST(Numbers, ReadInColumnsAreThoseOfTheirFields) {
  std::mt19937_64 random(4);
  frame::PlainColumn column;
  int taken = 0;
  for (int i = 0; i < 100000; ++i) {
    const int digits = static_cast<int>(random() % 3) + (i / 100) % 9;  // of most neighbours alike
    std::string text(random() % 8 == 0 ? 1 : 0, ' ');
    if (random() % 16 == 0) text += '-';
    for (int d = 0; d < digits; ++d) text += static_cast<char>('0' + random() % 10);
    if (!text.empty() && random() % 16 == 0)
      text[random() % text.size()] = static_cast<char>(random());
    text += random() % 32 == 0 ? "\n" : " ";
    text += std::string_view("12345678").substr(0, random() % 9);
    const char* const last = text.data() + text.size();
    std::int32_t plain = -7, fast = -7;
    const char* const end = frame::scan_plain_field(text.data(), last, plain);
    const char* const behind = column.read(text.data(), last, fast);
    const bool in_line = end != nullptr && (*end == ' ' || *end == '\t');
    ASSERT_EQ(behind, in_line ? end + 1 : nullptr) << text;
    ASSERT_TRUE(!in_line || fast == plain) << text;
    taken += static_cast<int>(in_line);
  }
  EXPECT_GT(taken, 50000);
}

TEST(Numbers, ReadFastHaveTheBitsOfThePlainWay) {
  std::mt19937_64 random(3);
  int taken = 0;
  for (int i = 0; i < 100000; ++i) {
    char text[64];
    const auto digits = static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 64));
    const int decimals = static_cast<int>(random() % 20);
    std::snprintf(text, sizeof text, i % 2 == 0 ? "%.*f" : "%.*e", decimals, digits / 1e9);
    taken += fast_agrees<double>(text) && fast_agrees<float>(text);
    // Beside the middle between two single-precision values, nearer than a double can tell.
    std::snprintf(text, sizeof text, "%.15f", 4.0 + (2.0 * i + 1.0) * 0x1p-22);
    fast_agrees<float>(text);
  }
  EXPECT_GT(taken, 20000);
  for (const char* text :
       {"16777217", "16777219", "1e23", "9e22", "0.1e-22", "16777217.0000001", "16777216.9999999",
        "-0", "33554434e22", "9007199254740992", "9007199254740993", "0.1e-21"}) {
    fast_agrees<double>(text);
    fast_agrees<float>(text);
  }
}

TEST(Numbers, InColumnsAreThoseOfTheCLibrary) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    const auto value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    std::string text;
    frame::append_e13(text, value, 4 + i % 2);
    char expected[64];
    std::snprintf(expected, sizeof expected, "%13.*E", 4 + i % 2, value);
    ASSERT_EQ(text, expected);
  }
  std::string text;
  frame::append_e13(text, -0.0);
  frame::append_int(text, -42, 8);
  frame::append_int(text, 123456789, 4);
  EXPECT_EQ(text, "  0.00000E+00     -42123456789");
}

TEST(Log, TracesAFailureLevelByLevelButNotAStop) {
  RecordedLog recorded;
  frame::Log& log = recorded.log;
  const auto run = [&](auto&& innermost) {
    return recorded.lines_of([&] {
      const frame::Tag outer(log, "(outer)");
      { const frame::Tag done(log, "(done)"); }
      const frame::Tag inner(log, "(module)\n(routine)");
      innermost();
    });
  };
  EXPECT_EQ(run([&] { log.program_error("### program error -1- (x)"); }),
            "### program error -1- (x)\n");
  EXPECT_EQ(run([&] { log.data_error(items("a =", 0), "it must be > 0"); }),
            "### error : data error\na = 0\nit must be > 0\n(module)\n(routine)\n(outer)\n");
  const std::string failed =
      "### error : allocation failed\narray,bytes = dzl 24\n(module)\n(routine)\n(outer)\n";
  EXPECT_EQ(run([&] {
              frame::allocating(log, "dzl", frame::bytes_of<double>(3),
                                [] { throw std::bad_alloc(); });
            }),
            failed);
  EXPECT_EQ(run([&] { frame::allocating(log, "dzl", 24, [] { std::string().resize(SIZE_MAX); }); }),
            failed);
}

TEST(Log, FilesOfTwoRunsKeepApartAndReportAFullDisk) {
  const TempFolder folder;
  RecordedLog a;
  RecordedLog b;
  folder.write("a", "an earlier, longer log\n");
  a.log.open(folder.path("a"));
  b.log.open(folder.path("b"));
  a.log.line("iter=", 1);
  b.log.line(1, "of b");
  a.log.line("iter=", 2);
  a.log.error_and_log("### bad");
  b.log.use_screen();
  b.log.line("on the screen");
  EXPECT_EQ(folder.content("a"), "iter= 1\niter= 2\n### bad\n");
  EXPECT_EQ(folder.content("b"), "1 of b\n");
  EXPECT_EQ(a.errors.str(), "### bad\n");
  EXPECT_EQ(a.screen.str() + b.screen.str(), "on the screen\n");

  a.log.open("/dev/full");
  a.log.line("lost");
  EXPECT_THROW(a.log.flush(), frame::Stop);
  EXPECT_THROW(b.log.open(folder.path("none/log")), frame::Stop);
  EXPECT_EQ(a.errors.str(), "### bad\n### cannot write /dev/full : No space left on device\n");
}

TEST(TextOutput, LeavesEarlierResultsAloneUntilTheFirstWrite) {
  const TempFolder folder;
  RecordedLog recorded;
  folder.write("out", "earlier results");
  {
    frame::UnitTable units;
    auto& out = units.open_output(recorded.log, 21, folder.path("out"));
    out.rewind(recorded.log);
    units.flush_outputs(recorded.log);
    EXPECT_EQ(folder.content("out"), "earlier results");
    out.line(recorded.log, "day 1");
    out.flush(recorded.log);
    EXPECT_EQ(folder.content("out"), "day 1\n");
    out.line(recorded.log, "lost with the rewind");
    out.rewind(recorded.log);
    EXPECT_EQ(folder.content("out"), "");
    out.line(recorded.log, "day 2");
  }
  EXPECT_EQ(folder.content("out"), "day 2\n") << "what was gathered is written at the end";

  frame::TextOutput full("/dev/full");
  full.line(recorded.log, "x");
  EXPECT_EQ(recorded.lines_of([&] { full.flush(recorded.log); }),
            "### error : write error\nfile = /dev/full\nNo space left on device\n");
}

std::vector<std::span<const std::byte>> as_records(const std::vector<std::string>& texts) {
  std::vector<std::span<const std::byte>> records;
  for (const std::string& text : texts) records.push_back(std::as_bytes(std::span(text)));
  return records;
}

TEST(RecordFile, IsReplacedWholeAndRefusedWhenCutAnywhere) {
  const TempFolder folder;
  RecordedLog recorded;
  frame::RecordFile file(folder.path("state"));
  EXPECT_TRUE(file.load() && file.records().empty());
  ASSERT_TRUE(file.check_access());
  const std::vector<std::string> texts = {"abcdefgh", "", std::string(50, 'x')};
  file.replace(recorded.log, as_records(texts));
  const std::string whole = folder.content("state");
  EXPECT_EQ(whole.substr(0, 16), std::string("\x08\0\0\0abcdefgh\x08\0\0\0", 16));
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    folder.write("state", whole.substr(0, size));
    const bool at_border = size == 0 || size == 16 || size == 24 || size == whole.size();
    ASSERT_EQ(file.load(), at_border) << size;
  }
  ASSERT_EQ(file.records().size(), texts.size());
  EXPECT_EQ(std::memcmp(file.records()[2].data(), texts[2].data(), 50), 0);
  folder.write("state", std::string(whole).replace(12, 1, "x"));
  EXPECT_FALSE(file.load());
}

TEST(RecordFile, StandsAsItWasWhenItCannotBeReplaced) {
  const TempFolder folder;
  RecordedLog recorded;
  folder.write("data/state", "old");
  std::filesystem::create_symlink("data/state", folder.path("link"));
  frame::RecordFile file(folder.path("link"));
  const std::string large(100000, 'x');
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{50000, before.rlim_max};
  ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  const std::string lines =
      recorded.lines_of([&] { file.replace(recorded.log, as_records({large})); });
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(lines, "### error : write error\nfile = " + folder.path("link") + "\nFile too large\n");
  EXPECT_EQ(folder.content("data/state"), "old");
  EXPECT_FALSE(std::filesystem::exists(folder.path("data/state.new")));
  // What has the names of the file in the making stays, be it of a killed run or the user's own.
  const std::vector<std::string> taken = {"data/state.new", "data/state.new1", "data/state.new3"};
  for (const std::string& name : taken) folder.write(name, name);
  std::filesystem::create_symlink("nowhere", folder.path("data/state.new2"));
  file.replace(recorded.log, as_records({large}));
  const int input = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);  // the next file may get its number
  file.replace(recorded.log, as_records({large}));
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  for (const std::string& name : taken) EXPECT_EQ(folder.content(name), name);
  EXPECT_FALSE(std::filesystem::exists(folder.path("data/nowhere")));
  EXPECT_FALSE(std::filesystem::exists(folder.path("data/state.new4")));
  EXPECT_EQ(folder.content("data/state").size(), large.size() + 8);
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
}

TEST(RecordFile, GoesThroughAPipeInPiecesWhateverInterrupts) {
  const TempFolder folder;
  RecordedLog recorded;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
  std::string large(20 << 20, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i % 251);
  const int both_ends = ::open(pipe.c_str(), O_RDWR);  // so that nobody waits for the other to open
  std::string got;
  std::thread reader([&] { got = frame::TextInput(pipe).content(); });
  struct sigaction interrupt {};
  struct sigaction before {};
  interrupt.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &interrupt, &before);
  const itimerval often{{0, 200}, {0, 200}};
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  frame::RecordFile(pipe).replace(recorded.log, as_records({large}));
  ::close(both_ends);
  reader.join();
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
  ASSERT_EQ(got.size(), large.size() + 8);
  EXPECT_TRUE(std::equal(large.begin(), large.end(), got.begin() + 4));
  EXPECT_TRUE(std::filesystem::is_fifo(pipe)) << "what is no plain file is never replaced";
}

TEST(Accounts, AddUpAndStopOnMisuse) {
  RecordedLog recorded;
  frame::Log& log = recorded.log;
  frame::CpuTimes now;
  frame::Accounts accounts([&] { return now; });
  EXPECT_EQ(recorded.lines_of([&] { accounts.print(log); }), "");
  accounts.start(log, "total");
  for (int i = 0; i < 2; ++i) {
    accounts.start(log, "solid1d");
    now.total += 1.5;
    now.user += 1.0;
    accounts.end(log, "solid1d");
  }
  now.total += 1.0;
  accounts.end(log, "total");
  accounts.start(log, "still running");
  const std::string rule = std::string(105, '-') + "\n";
  EXPECT_EQ(
      recorded.lines_of([&] { accounts.print(log); }),
      R"(

          ***** Accouunting table of the CPU-time *****

)" + rule +
          R"(        Process                        Total time        User time         System time
)" + rule +
          R"(   <  1> total                     :      4.00(100.0)       2.00(100.0)       2.00(100.0)
   <  2> solid1d                   :      3.00( 75.0)       2.00(100.0)       1.00( 50.0)
   <  3> still running             :      0.00(  0.0)       0.00(  0.0)       0.00(  0.0)
)" + rule);
  const auto refused = [&](const std::string& process,
                           void (frame::Accounts::*call)(frame::Log&, std::string_view)) {
    EXPECT_EQ(recorded.lines_of([&] { (accounts.*call)(log, process); }),
              "### program error (acpuct)\n### process name = (" + process + ")\n");
  };
  refused("still running", &frame::Accounts::start);
  refused("total", &frame::Accounts::end);
  refused("unknown", &frame::Accounts::end);
  for (int i = 4; i <= 50; ++i) accounts.start(log, std::to_string(i));
  refused("p51", &frame::Accounts::start);
}

TEST(ArrayList, TellsTheLargeArrays) {
  RecordedLog recorded;
  frame::ArrayList list;
  list.add("small", std::vector<char>(9'000));
  list.add("columns", frame::PatchTable<double>(1000, 25), std::vector<std::int32_t>(25'000));
  list.add("empty", std::vector<double>{});
  list.add("table", std::size_t{700'000});
  EXPECT_EQ(list.total(), 1'009'000U);
  const std::string lines = recorded.lines_of([&] { frame::report_memory(recorded.log, list); });
  EXPECT_EQ(lines.substr(0, lines.find("most")), "%%% memory: at ");
  EXPECT_EQ(lines.substr(lines.find(',')),
            ", arrays 1.0 MB\n%%%   table 0.7 MB\n%%%   columns 0.3 MB\n");
}

TEST(Accounts, CountTheTimeOfTheProcess) {
  RecordedLog recorded;
  frame::Accounts accounts;
  std::clock_t spent = 0;
  double work = 1.0;
  for (int part = 0; part < 3; ++part) {  // each over other fractions of a second
    const std::clock_t begun = std::clock();
    accounts.start(recorded.log, "work");
    while (std::clock() - begun < CLOCKS_PER_SEC / 7) {
      for (int i = 0; i < 10000; ++i) work += std::sin(work);
    }
    accounts.end(recorded.log, "work");
    spent += std::clock() - begun;
  }
  const std::string table = recorded.lines_of([&] { accounts.print(recorded.log); });
  std::istringstream row(table.substr(table.find(": ") + 2));
  double total = 0.0;
  double user = 0.0;
  row >> total;
  row.ignore(99, ')') >> user;
  EXPECT_NEAR(total, static_cast<double>(spent) / CLOCKS_PER_SEC, 0.05);
  EXPECT_TRUE(user >= 0.0 && user <= total && work > 0.0) << user;  // their shares are sampled
}

TEST(CodeIndex, FindsEveryCodeInNarrowAndWideRanges) {
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  const std::vector<std::vector<std::int32_t>> lists = {{},
                                                        {5},
                                                        {3, 1, 2},
                                                        {1, 2000000000},
                                                        {kMin, 0, kMax},
                                                        {-4, 7, -4, 7},
                                                        {kMax, 9, kMin, 9, kMax}};
  for (const auto& codes : lists) {
    const frame::CodeIndex index(codes);
    for (const std::int32_t code : {kMin, -4, 0, 1, 2, 3, 5, 7, 9, 1999999999, 2000000000, kMax}) {
      const auto found = std::find(codes.begin(), codes.end(), code);
      const auto expected = found == codes.end() ? -1 : found - codes.begin();
      EXPECT_EQ(index.find(code), expected) << code << " of " << codes.size();
    }
    const auto repeat = index.repeat().value_or(frame::CodeIndex::Repeat{-1, -1});
    EXPECT_EQ(repeat.first, codes.size() == 4 ? 0 : codes.size() == 5 ? 1 : -1);
    EXPECT_EQ(repeat.second, codes.size() == 4 ? 2 : codes.size() == 5 ? 3 : -1);
  }
}

}  // namespace
