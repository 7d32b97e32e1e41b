// Free-form records: what is accepted, what is refused, and on which line a fault is told.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fault_table.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "temp_folder.hpp"

namespace {

using frame::ReadStatus;
using frame::TextInput;

/// Reads records of an integer, a real and a text until none is left. Each gives its values
/// (a null leaves -1, -1, ?) and "; ", the last one what ended the reading.
std::string records_of(TextInput& file) {
  std::string text;
  for (;;) {
    std::int32_t i = -1;
    double x = -1;
    std::string word = "?";
    const ReadStatus status = file.read(i, x, word);
    if (status == ReadStatus::end) return text + "end";
    if (status == ReadStatus::error) return text + "error " + std::to_string(file.fault_line());
    frame::append_number(text, std::int64_t{i});
    text += ' ';
    frame::append_number(text, x);
    text += ' ' + word + "; ";
  }
}

TEST(Records, AreReadInEveryFormThatFilesHave) {
  for (const FaultCase& c :
       fault_table("record_forms", {{'~', "\r"}, {'^', "\t"}, {'@', "\xEF\xBB\xBF"}})) {
    TextInput file("in", c.input);
    EXPECT_EQ(records_of(file), c.lines) << c.input;
  }
}

/// What a scanner makes of up to 20 fields of one kind.
template <class Field>
std::string fields_of(const char* first, const char* last) {
  frame::RecordScanner scan(first, last);
  std::ostringstream fields;
  for (int n = 0; n < 20; ++n) {
    Field value{};
    const bool good = scan.field(value);
    fields << value << (good ? ";" : "!;");
    if (!good) break;
  }
  fields << scan.at_end() << scan.place() - first << ' ' << scan.end_of_record() - first;
  return fields.str();
}

TEST(Records, NothingBehindTheEndIsLookedAt) {
  const std::string text =
      "  7 ,, 25 'a''b' +2.5d3\n,-1.5E+10, \"c\"\"\" 12*4, 3* , 2*'x' 1.e-5 *+8 /\n 9";
  for (std::size_t first = 0; first < text.size(); ++first) {
    for (std::size_t last = first; last <= text.size(); ++last) {
      const std::string alone = text.substr(first, last - first);
      const auto same = [&](auto fields) {
        EXPECT_EQ(fields(text.data() + first, text.data() + last),
                  fields(alone.data(), alone.data() + alone.size()))
            << alone;
      };
      same(fields_of<std::int32_t>);
      same(fields_of<double>);
      same(fields_of<float>);
      same(fields_of<std::string>);
    }
  }
}

TEST(Records, RefuseWhatIsNoNumberAndTellItsLine) {
  const auto expect_refused = [](const std::string& before, const std::string& tokens) {
    std::istringstream words(tokens);
    for (std::string token; words >> token;) {
      TextInput file("in", "1 2 a\n\n" + before + token + " 2 a\n4 5 b\n");
      EXPECT_EQ(records_of(file), "1 2 a; error 3") << token;
    }
  };
  expect_refused("",
                 "1.0 1e3 a 1a 2147483648 -2147483649 99999999999*1 0*1 -1*1 --1 '1' 1*'1' + - "
                 "2**1 2*3*1 +-1 0x1 1; 2*1.5 1-1 \xEF\xBB\xBF 9999999999 -");
  expect_refused("1 ",
                 "1e400 -1e400 1e99999999999999999999 0.333150+9223372036854775807 nan NaN inf "
                 "-inf Infinity 1e 1.5e+ 1e+-3 1e-+3 . -. "
                 "1.2.3 0x1p3 1e5. \"2\" 1d0d0 1__0 e5 1.. 123456789012345678901e300 " +
                     std::string(400, '7') + " 0" + std::string(400, '7') + ".5e-9");
  for (const std::string& text : {std::string("1 2\0 a\n", 7), std::string("1 2\r\n \r\n")}) {
    TextInput file("in", text);
    EXPECT_EQ(records_of(file), "error 1") << text;
  }
}

TEST(Records, ThatAreCutShortAreNeverDropped) {
  const std::string whole = "1 2.5 'a b'\r\n3\n4 c\r\n \r\n";
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    TextInput file("in", whole.substr(0, size));
    std::string expected = "end";
    if (size >= 1) expected = "error 1";
    if (size >= 11) expected = "1 2.5 a b; end";
    if (size >= 14) expected = "1 2.5 a b; error 2";
    if (size >= 16) expected = "1 2.5 a b; error 3";
    if (size >= 18) expected = "1 2.5 a b; 3 4 c; end";
    EXPECT_EQ(records_of(file), expected) << size;
  }
}

TEST(Records, OfSinglePrecisionAreRoundedOnceFromTheText) {
  // Rounded to double first, this one would end on the tie and go to the even neighbour.
  TextInput file("in", "1.00000005960464477539062500000001 3.4028236e38");
  float value = 0;
  ASSERT_EQ(file.read(value), ReadStatus::ok);
  EXPECT_EQ(value, 1.00000012F);
  file.rewind();
  EXPECT_EQ(file.read(value, value), ReadStatus::error);
}

TEST(Records, FillSpansAndAreCountedAsTheyAreRead) {
  TextInput file("in", "title 1\n3*1. 2.\n 5 tail\n\n1 2 3 4 5\n6 7 8 9 /\n1 2\n");
  ASSERT_TRUE(file.skip_line());
  EXPECT_EQ(file.count_records(5), 4U);  // the one that is cut short counts
  EXPECT_EQ(TextInput("in", "1 2\n3 4\n5 6\n7 8\n").count_records(3), 2U);
  std::vector<double> values(5);
  for (const char* expected : {"1 1 1 2 5", "1 2 3 4 5", "6 7 8 9 5"}) {
    ASSERT_EQ(file.read(std::span(values)), ReadStatus::ok);
    EXPECT_EQ(frame::items(values[0], values[1], values[2], values[3], values[4]), expected);
  }
  EXPECT_EQ(file.read(std::span(values)), ReadStatus::error);
  EXPECT_EQ(file.fault_line(), 7);
}

TEST(Records, ACountThatTheFileCannotHoldIsFoundAtOnce) {
  // A value takes a character at least, one may end the text; repeat counts stand for more.
  const std::map<std::string, std::int64_t> most = {{"1 2 3", 6},
                                                    {",,,,", 5},
                                                    {"see *** here", 13},
                                                    {"2000000000*1.0", 2000000015},
                                                    {"1000*1.0 x 500*2", 1517}};
  for (const auto& [text, count] : most) {
    EXPECT_TRUE(TextInput("in", text).can_hold(count)) << text;
    EXPECT_FALSE(TextInput("in", text).can_hold(count + 1)) << text;
  }
}

TEST(Records, FieldsOfALineAreCountedWithQuotesKeptWhole) {
  const std::map<std::string, int> cases = {
      {"", 0},          {" 1, 2\t3\r", 3},       {"'a b' \"c, d\" e", 3},
      {"1,,2", 2},      {"x'a b'y", 1},          {"'a b", 1},
      {"3*0 1 2*,", 6}, {"2*'a b' 0*1 -2*1", 4}, {"a*b 9999999999*1 5*", 7}};
  for (const auto& [line, count] : cases) EXPECT_EQ(frame::count_fields(line), count) << line;
}

TEST(Records, ThatTakeMoreThanOneLineAreKnownByTheirFirst) {
  TextInput file("in", "\n 1 2 x\n\n3,\n4 x\n5 6 / \n\n7\n\n8");
  std::string lines;
  for (std::int32_t i = 0, j = 0; file.read(i, j) == ReadStatus::ok;) {
    lines += std::to_string(file.record_line()) + (file.ran_on() ? "+ " : " ");
  }
  EXPECT_EQ(lines, "2 4+ 6 8+ ");
}

TEST(Records, LinesAndPlacesAreKeptAsTheyStand) {
  TextInput file("in", "first\r\n\nthird");
  std::string_view line;
  ASSERT_TRUE(file.next_line(line) && line == "first");
  const std::size_t second = file.tell();
  file.mark_fault();
  EXPECT_EQ(file.fault_line(), 2);
  ASSERT_TRUE(file.next_line(line) && line.empty());
  ASSERT_TRUE(file.next_line(line) && line == "third");
  EXPECT_FALSE(file.next_line(line));
  file.seek(second);
  EXPECT_TRUE(file.skip_line() && file.tell() == second + 1);
}

TEST(Records, OfALargeFileReadTheSameMappedAndInMemory) {
  const TempFolder folder;
  std::string text;
  while (text.size() < (20U << 20)) text += "12 0.25 word\n";
  const std::size_t count = text.size() / 13;
  folder.write("large", "\xEF\xBB\xBF" + text);
  TextInput file(folder.path("large"));
  ASSERT_TRUE(file.good());
  EXPECT_EQ(file.content(), text);
  for (int pass = 0; pass < 2; ++pass) {
    file.rewind();
    EXPECT_EQ(file.count_records(3), count);
    std::int32_t i = 0;
    double x = 0;
    std::string word;
    std::size_t good = 0;
    while (file.read(i, x, word) == ReadStatus::ok) good += i == 12 && x == 0.25 && word == "word";
    EXPECT_EQ(good, count);
  }
}

TEST(Records, FilesThatCannotBeReadSayWhy) {
  const TempFolder folder;
  EXPECT_EQ(TextInput(folder.path("")).reason(), "Is a directory");
  EXPECT_EQ(TextInput(folder.path("none")).reason(), "No such file or directory");
  EXPECT_TRUE(TextInput("/dev/null").good());
}

}  // namespace
