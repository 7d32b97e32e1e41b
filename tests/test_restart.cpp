// The restart file: whole states only, bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "recorded_log.hpp"
#include "results/restart.hpp"
#include "temp_folder.hpp"

namespace {

using Reals = std::vector<double>;

constexpr std::int32_t kPatches = 3;
constexpr std::int32_t kNodes = 2;

/// A state with its own memory: three patches of two saved nodes (and one beyond), two buildings.
struct Owner {
  explicit Owner(double first) : tlyr(9), JRl(3), JRs(3), Tr(2), Tm(2) {
    for (Reals* values : {&tlyr, &JRl, &JRs, &Tr, &Tm}) {
      for (double& value : *values) value = (first += 1.0 / 3.0);
    }
  }
  tsrf_io_restart::State state() { return {kPatches, kNodes, tlyr, JRl, JRs, Tr, Tm}; }
  bool operator==(const Owner&) const = default;
  Reals tlyr, JRl, JRs, Tr, Tm;
};

class Restart : public testing::Test {
 protected:
  Restart() : file(folder.path("restart")) {}
  void save() { tsrf_io_restart::save(messages.log, file, 864, 259200.0, saved.state()); }
  /// Lines of a refused restore; the state and the file must be as before.
  std::string refused(const tsrf_io_restart::State& state, std::int64_t iteration = 864) {
    const std::string before = folder.content("restart");
    const Owner untouched = present;
    const std::string lines = messages.lines_of([&] {
      tsrf_io_restart::restore(messages.log, file, iteration, settings, state);
      ADD_FAILURE() << "not refused";
    });
    EXPECT_EQ(folder.content("restart"), before);
    EXPECT_TRUE(present == untouched);
    return lines;
  }
  std::string refused() { return refused(present.state()); }

  TempFolder folder;
  RecordedLog messages;
  frame::RecordFile file;
  tsrf_module_io::Settings settings;
  Owner saved{280.0};
  Owner present{300.0};
  const std::string heading = "### error : restart file (surface temp.)\n";
  const std::string tag = "(tsrf_io_restart)\n";
};

TEST_F(Restart, RoundTrip) {
  saved.tlyr[1] = 5e-324;
  saved.JRs = {-0.0, std::numeric_limits<double>::max(), 1.0 / 3.0};
  save();
  const double beyond = present.tlyr[kPatches * kNodes];
  const auto start = tsrf_io_restart::restore(messages.log, file, 864, settings, present.state());
  EXPECT_EQ(start.next_iteration, 865);
  EXPECT_EQ(start.time, 259200.0);
  EXPECT_EQ(present.tlyr[kPatches * kNodes], beyond) << "the last node is not part of the file";
  std::copy_n(saved.tlyr.begin() + kPatches * kNodes, kPatches,
              present.tlyr.begin() + kPatches * kNodes);
  EXPECT_TRUE(present == saved);
  EXPECT_TRUE(std::signbit(present.JRs[0]));
  settings.TIMES = -7200.0;
  EXPECT_EQ(tsrf_io_restart::restore(messages.log, file, 864, settings, present.state()).time,
            -7200.0);
  settings.TIMES = 1.62e308;
  EXPECT_EQ(tsrf_io_restart::restore(messages.log, file, 864, settings, present.state()).time,
            259200.0);
}

TEST_F(Restart, BytesOfTheFile) {
  save();
  const auto mark = [](std::uint32_t size) {
    return std::string(reinterpret_cast<const char*>(&size), sizeof size);
  };
  const auto record = [&](const std::string& bytes) {
    const std::string frame = mark(static_cast<std::uint32_t>(bytes.size()));
    return frame + bytes + frame;
  };
  const auto bytes = [](const auto* values, std::size_t count) {
    return std::string(reinterpret_cast<const char*>(values), count * sizeof *values);
  };
  const std::int32_t iteration = 864;
  const double time = 259200.0;
  const std::int32_t sizes[] = {kPatches, kNodes};
  EXPECT_EQ(folder.content("restart"),
            record(bytes(&iteration, 1) + bytes(&time, 1) + bytes(sizes, 2)) +
                record(bytes(saved.tlyr.data(), 6)) + record(bytes(saved.JRl.data(), 3)) +
                record(bytes(saved.JRs.data(), 3)) +
                record(bytes(saved.Tr.data(), 2) + bytes(saved.Tm.data(), 2)));
}

TEST_F(Restart, ColdStarts) {
  const Owner untouched = present;
  for (const std::string content : {"", "not looked at"}) {
    folder.write("restart", content);
    settings.TIMES = 3600.0;
    const auto start = tsrf_io_restart::restore(messages.log, file, content.empty() ? 0 : -1,
                                                settings, present.state());
    EXPECT_EQ(start.next_iteration, 1);
    EXPECT_EQ(start.time, 0.0);
  }
  EXPECT_TRUE(present == untouched);
  EXPECT_EQ(messages.screen.str(), "");
}

TEST_F(Restart, CutAtAnyByte) {
  save();
  const std::string whole = folder.content("restart");
  for (std::size_t size = 1; size < whole.size(); ++size) {
    folder.write("restart", whole.substr(0, size));
    const std::string lines = refused();
    EXPECT_EQ(lines.substr(0, heading.size()), heading) << size;
    EXPECT_EQ(lines.substr(lines.size() - tag.size()), tag) << size;
  }
}

TEST_F(Restart, OtherModels) {
  save();
  const auto state = [this](auto&& change) {
    tsrf_io_restart::State other = present.state();
    change(other);
    return other;
  };
  using State = tsrf_io_restart::State;
  const std::string size = heading + "size not consistent\n";
  EXPECT_EQ(refused(state([](State& s) { s.mpatch = 2; })),
            size + "mpatch,mzg(restart file)= 3 2\nmpatch,mzg(specified)   = 2 2\n" + tag);
  EXPECT_EQ(refused(state([](State& s) { s.mzg = 3; })),
            size + "mpatch,mzg(restart file)= 3 2\nmpatch,mzg(specified)   = 3 3\n" + tag);
  EXPECT_EQ(refused(present.state(), 0),
            heading +
                "specified iteration counts not found\niteration (restart file)= 864\n"
                "iteration (specified)   = 0\n" +
                tag);
  EXPECT_EQ(refused(state([](State& s) { s.Tr = s.Tm = {}; })),
            size + "records(restart file)= 5\nrecords(specified)   = 4\n" + tag);
  EXPECT_EQ(
      refused(state([](State& s) { s.Tr = s.Tr.first(1); })),
      size + "bytes of record 5(restart file)= 32\nbytes of record 5(specified)   = 24\n" + tag);
}

TEST_F(Restart, DamagedRecords) {
  saved.JRs[2] = std::nan("");
  save();
  EXPECT_EQ(refused(), heading + "value not finite\nrecord no.,value no. = 4 3\n" + tag);
  saved.JRs[2] = 0.0;
  saved.tlyr[0] = -std::numeric_limits<double>::infinity();
  save();
  EXPECT_EQ(refused(), heading + "value not finite\nrecord no.,value no. = 2 1\n" + tag);
  tsrf_io_restart::save(messages.log, file, 864, std::nan(""), present.state());
  EXPECT_EQ(refused(), heading + "value not finite\nrecord no.,value no. = 1 2\n" + tag);
  folder.write("restart", std::string(16, '\0'));
  EXPECT_EQ(refused(), heading +
                           "size not consistent\nbytes of record 1(restart file)= 0\n"
                           "bytes of record 1(specified)   = 20\n" +
                           tag);
}

TEST_F(Restart, FailedSaveLeavesTheOldState) {
  save();
  const std::string before = folder.content("restart");
  std::filesystem::create_directory(folder.path("restart.new"));  // in the way of the new file
  const std::string lines = messages.lines_of(
      [this] { tsrf_io_restart::save(messages.log, file, 865, 0.0, present.state()); });
  EXPECT_EQ(lines, "### error : write error\nfile = " + file.name() + "\nIs a directory\n" + tag);
  EXPECT_EQ(folder.content("restart"), before);
}

}  // namespace
