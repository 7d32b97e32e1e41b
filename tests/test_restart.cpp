// The restart file: whole states only, bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

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
  tsrf_io_restart::State state() { return {kPatches, kNodes, tlyr, JRl, JRs, Tr, Tm, {}, {}}; }
  bool operator==(const Owner&) const = default;
  Reals tlyr, JRl, JRs, Tr, Tm;
};

class Restart : public testing::Test {
 protected:
  void save() { tsrf_io_restart::save(messages.log, file, 864, 259200.0, saved.state()); }
  tsrf_io_restart::Start restore(std::int64_t iteration) {
    return tsrf_io_restart::restore(messages.log, file, iteration, settings, present.state());
  }
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

  TempFolder folder;
  RecordedLog messages;
  frame::RecordFile file{folder.path("restart")};
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
  const double beyond = present.tlyr[6];
  EXPECT_EQ(restore(864).next_iteration, 865);
  EXPECT_EQ(present.tlyr[6], beyond) << "the last node is not part of the file";
  std::copy_n(saved.tlyr.begin() + 6, 3, present.tlyr.begin() + 6);
  EXPECT_TRUE(present == saved);
  EXPECT_TRUE(std::signbit(present.JRs[0]));
  settings.TIMES = -7200.0;
  EXPECT_EQ(restore(864).time, -7200.0);
  settings.TIMES = 1.62e308;
  EXPECT_EQ(restore(864).time, 259200.0);
}

TEST_F(Restart, BytesOfTheFile) {
  save();
  std::string expected;
  const auto put = [&](auto... values) {
    (expected.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  };
  put(20, 864, 259200.0, kPatches, kNodes, 20, 48);
  for (std::size_t n = 0; n < 6; ++n) put(saved.tlyr[n]);
  put(48, 24, saved.JRl[0], saved.JRl[1], saved.JRl[2], 24);
  put(24, saved.JRs[0], saved.JRs[1], saved.JRs[2], 24);
  put(32, saved.Tr[0], saved.Tr[1], saved.Tm[0], saved.Tm[1], 32);
  EXPECT_EQ(folder.content("restart"), expected);
}

TEST_F(Restart, ColdStarts) {
  const Owner untouched = present;
  settings.TIMES = 3600.0;
  for (const std::int64_t requested : {0, -1}) {
    const auto start = restore(requested);
    EXPECT_EQ(start.next_iteration, 1);
    EXPECT_EQ(start.time, 0.0);
    folder.write("restart", "not looked at");
  }
  EXPECT_TRUE(present == untouched);
  EXPECT_EQ(messages.screen.str(), "");
}

TEST_F(Restart, CutAtAnyByte) {
  save();
  const std::string whole = folder.content("restart");
  for (std::size_t size = 1; size < whole.size(); ++size) {
    folder.write("restart", whole.substr(0, size));
    const std::string lines = refused(present.state());
    EXPECT_EQ(lines.substr(0, heading.size()), heading) << size;
    EXPECT_EQ(lines.substr(lines.size() - tag.size()), tag) << size;
  }
}

TEST_F(Restart, OtherStates) {
  save();
  using State = tsrf_io_restart::State;
  const auto refused_by = [&](auto&& change, std::int64_t iteration = 864) {
    State other = present.state();
    change(other);
    return refused(other, iteration);
  };
  const std::string size = heading + "size not consistent\n";
  EXPECT_EQ(refused_by([](State& s) { s.mpatch = 2; }),
            size + "mpatch,mzg(restart file)= 3 2\nmpatch,mzg(specified)   = 2 2\n" + tag);
  EXPECT_EQ(refused_by([](State& s) { s.mzg = 3; }),
            size + "mpatch,mzg(restart file)= 3 2\nmpatch,mzg(specified)   = 3 3\n" + tag);
  EXPECT_EQ(refused_by([](State&) {}, 0),
            heading + "specified iteration counts not found\niteration (restart file)= 864\n" +
                "iteration (specified)   = 0\n" + tag);
  EXPECT_EQ(refused_by([](State& s) { s.Tr = s.Tm = {}; }),
            size + "records(restart file)= 5\nrecords(specified)   = 4\n" + tag);
  EXPECT_EQ(
      refused_by([](State& s) { s.Tr = s.Tr.first(1); }),
      size + "bytes of record 5(restart file)= 32\nbytes of record 5(specified)   = 24\n" + tag);
}

TEST_F(Restart, AStateThatIsNotFiniteLeavesTheFileAsItWas) {
  save();
  const std::string whole = folder.content("restart");
  const std::vector<std::int32_t> PID{11, 12, 13};
  const std::vector<std::int32_t> BldID{21, 22};
  const auto saving = [&](double& value) {
    const double before = std::exchange(value, std::nan(""));
    tsrf_io_restart::State state = saved.state();
    state.PID = PID;
    state.BldID = BldID;
    const std::string lines =
        messages.lines_of([&] { tsrf_io_restart::save(messages.log, file, 865, 1.0, state); });
    value = before;
    EXPECT_EQ(folder.content("restart"), whole);
    return lines;
  };
  const auto lines = [&](const std::string& owner, const std::string& term) {
    return "### error : result not finite in the restart file\niter = 865\n" + owner +
           "\nterm = " + term + "\n" + tag;
  };
  EXPECT_EQ(saving(saved.tlyr[4]), lines("PID = 12", "temperature of the column"));
  EXPECT_EQ(saving(saved.JRs[2]), lines("PID = 13", "short-wave radiosity"));
  EXPECT_EQ(saving(saved.Tm[1]), lines("BldID = 22", "slab temperature"));
}

TEST_F(Restart, DamagedRecords) {
  const auto not_finite = [&](const std::string& place) {
    return heading + "value not finite\nrecord no.,value no. = " + place + "\n" + tag;
  };
  save();
  const std::string whole = folder.content("restart");
  const auto damaged = [&](std::size_t place, double value) {
    std::string bytes = whole;
    std::memcpy(&bytes[place], &value, sizeof value);
    folder.write("restart", bytes);
    return refused(present.state());
  };
  EXPECT_EQ(damaged(136, std::nan("")), not_finite("4 3"));
  EXPECT_EQ(damaged(32, -std::numeric_limits<double>::infinity()), not_finite("2 1"));
  tsrf_io_restart::save(messages.log, file, 864, std::nan(""), present.state());
  EXPECT_EQ(refused(present.state()), not_finite("1 2"));
  folder.write("restart", std::string(8, '\0'));
  EXPECT_EQ(refused(present.state()),
            heading + "size not consistent\nbytes of record 1(restart file)= 0\n" +
                "bytes of record 1(specified)   = 20\n" + tag);
}

}  // namespace
