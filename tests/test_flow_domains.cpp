// Sub-domains: exchange lists of many ranks, formed and carried across in one process.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "../bench/sample_surfaces.hpp"
#include "flow/domains/dsr_dc2.hpp"
#include "recorded_log.hpp"

namespace {

using flow::End;
using flow::Ends;
using flow::Field;
using flow::Mail;
using flow::SubDomain;
using flow::SubDomains;
using flow::Triple;
using flow::flw_module_dc1::Record;
using flow::flw_module_indcmm::mkindex;
using flow::flw_module_indcmm::Pattern;
using Messages = std::vector<frame::Message>;

/// A grid in boxes between the given last cells along each axis, with rank 0 at the far end; `cuts`
/// of z may differ from column to column, so that corners stand on sides.
SubDomains split(const Triple& cells, const std::vector<std::int32_t>& x,
                 const std::vector<std::int32_t>& y,
                 const std::vector<std::vector<std::int32_t>>& z) {
  SubDomains domains{cells, {}};
  std::size_t column = 0;
  Triple first{1, 1, 1};
  for (const std::int32_t i : x) {
    first[1] = 1;
    for (const std::int32_t j : y) {
      first[2] = 1;
      for (const std::int32_t k : z[column++ % z.size()]) {
        domains.of.insert(domains.of.begin(), SubDomain{first, {i, j, k}});
        first[2] = k + 1;
      }
      first[1] = j + 1;
    }
    first[0] = i + 1;
  }
  return domains;
}

constexpr std::array<End, 2> kOpen{End::open, End::open};
constexpr std::array<End, 2> kRound{End::periodic, End::periodic};
constexpr std::array<End, 2> kMirrors{End::symmetric, End::symmetric};
constexpr std::array<End, 2> kMixed{End::symmetric, End::open};

struct Case {
  std::string name;
  SubDomains domains;
  Ends ends;
};

std::vector<Case> cases() {
  return {
      {"one", split({4, 5, 3}, {4}, {5}, {{3}}), {kMirrors, kRound, kMixed}},
      {"two along y", split({4, 5, 3}, {4}, {2, 5}, {{3}}), {kMixed, kRound, kOpen}},
      {"two of one cell", split({2, 2, 2}, {1, 2}, {2}, {{2}}), {kMirrors, kRound, kMirrors}},
      {"four", split({6, 7, 4}, {4, 6}, {3, 7}, {{4}}), {kOpen, kMirrors, kMirrors}},
      {"four, a layer", split({6, 7, 1}, {1, 6}, {6, 7}, {{1}}), {kMixed, kRound, kOpen}},
      {"four in a row", split({1, 6, 4}, {1}, {1, 2, 3, 6}, {{4}}), {kOpen, kRound, kMirrors}},
      {"twelve", split({5, 7, 9}, {2, 5}, {3, 7}, {{3, 6, 9}}), {kMirrors, kRound, kMixed}},
      {"twelve, broken up",
       split({5, 7, 6}, {1, 5}, {1, 3, 7}, {{2, 6}, {5, 6}, {1, 6}}),
       {kMixed, kRound, kMirrors}},
      {"twelve, thin at the mirrors",
       split({4, 3, 6}, {1, 2, 4}, {2, 3}, {{5, 6}, {1, 6}}),
       {kMirrors, kMirrors, kMirrors}},
  };
}

/// Calls `work(rank, place, cell)` for all entries of all boxes, halos of computed axes included;
/// `cell` is in the numbers of the grid.
template <class Work>
void each_entry(const SubDomains& domains, Work&& work) {
  for (std::size_t rank = 0; rank < domains.of.size(); ++rank) {
    const SubDomain& self = domains.of[rank];
    const std::array<int, 3> wide{domains.computed(0) * 2, domains.computed(1) * 2,
                                  domains.computed(2) * 2};
    Triple g;
    for (g[2] = self.first[2] - wide[2]; g[2] <= self.last[2] + wide[2]; ++g[2]) {
      for (g[1] = self.first[1] - wide[1]; g[1] <= self.last[1] + wide[1]; ++g[1]) {
        for (g[0] = self.first[0] - wide[0]; g[0] <= self.last[0] + wide[0]; ++g[0]) {
          const Triple& f = self.first;
          work(rank, self.box().at(g[0] - f[0] + 1, g[1] - f[1] + 1, g[2] - f[2] + 1), g);
        }
      }
    }
  }
}

bool is_own(const SubDomain& self, const Triple& g, int faces = -1) {
  for (int a = 0; a < 3; ++a) {
    const auto axis = static_cast<std::size_t>(a);
    const std::int32_t first = a == faces && self.first[axis] == 1 ? 0 : self.first[axis];
    if (g[axis] < first || g[axis] > self.last[axis]) return false;
  }
  return true;
}

/// Carries the messages of all ranks by hand: first all are written, then all are handed over.
template <class Transfer>
void carry_across(std::size_t ranks, Transfer&& transfer) {
  std::vector<Messages> written(ranks);
  std::vector<Mail> mail(ranks);
  for (const bool deliver : {false, true}) {
    for (std::size_t rank = 0; rank < ranks; ++rank) {
      transfer(
          rank,
          [&](std::span<const frame::Message> sent, std::span<frame::Message> received) {
            if (!deliver) written[rank].assign(sent.begin(), sent.end());
            for (frame::Message& message : received) {
              for (const frame::Message& from : written[static_cast<std::size_t>(message.rank)]) {
                if (deliver && from.rank == static_cast<std::int32_t>(rank))
                  message = {message.rank, from.values};
              }
            }
          },
          mail[rank]);
    }
  }
}

Field drawn(const Triple& cells) {
  sample::Draws draw(7);
  Field field(flow::Box{cells});
  for (double& value : field.all()) value = draw(-1.0, 1.0);
  return field;
}

/// The fields of all ranks: the grid's values in the entries that a rank keeps, else none.
std::vector<Field> shares(const SubDomains& domains, const Field& whole, int faces = -1) {
  std::vector<Field> fields;
  for (const SubDomain& self : domains.of) fields.emplace_back(self.box(), std::nan(""));
  each_entry(domains, [&](std::size_t rank, std::size_t place, const Triple& g) {
    if (is_own(domains.of[rank], g, faces)) fields[rank][place] = whole(g[0], g[1], g[2]);
  });
  return fields;
}

TEST(SubDomains, FillCellHalosAsOneDomainDoes) {
  RecordedLog out;
  for (const Case& c : cases()) {
    const SubDomains& domains = c.domains;
    for (int odd_axis = -1; odd_axis < 3; ++odd_axis) {
      for (const Pattern pattern : {Pattern::wide, Pattern::nearest}) {
        Field whole = drawn(domains.cells);
        std::vector<Field> fields = shares(domains, whole);
        flow::fill_halos(whole, c.ends, odd_axis);
        carry_across(fields.size(), [&](std::size_t rank, flow::Carry carry, Mail& mail) {
          const auto lists = mkindex(out.log, domains, c.ends, static_cast<std::int32_t>(rank),
                                     flow::flw_module_dc1::kCells, pattern);
          flow::flw_dsr_dc2(out.log, lists, fields[rank], carry, mail, odd_axis);
        });
        std::size_t wrong = 0, beyond = 0;
        each_entry(domains, [&](std::size_t rank, std::size_t place, const Triple& g) {
          int depth = 0;
          for (std::size_t a = 0; a < 3; ++a) {
            depth +=
                std::max({domains.of[rank].first[a] - g[a], g[a] - domains.of[rank].last[a], 0});
          }
          if (pattern == Pattern::nearest && depth > 1) {
            beyond += std::isnan(fields[rank][place]) ? 0 : 1;
          } else {
            wrong += fields[rank][place] == whole(g[0], g[1], g[2]) ? 0 : 1;
          }
        });
        EXPECT_EQ(wrong, 0) << c.name << ", odd axis " << odd_axis;
        EXPECT_EQ(beyond, 0) << c.name;
      }
    }
  }
}

TEST(SubDomains, FillFaceHalosAsOneDomainDoes) {
  RecordedLog out;
  for (const Case& c : cases()) {
    const SubDomains& domains = c.domains;
    std::array<Field, 3> whole;
    std::vector<std::array<Field, 3>> fields(domains.of.size());
    for (std::size_t a = 0; a < 3; ++a) {
      const int axis = static_cast<int>(a);
      whole[a] = drawn(domains.cells);
      std::vector<Field> own = shares(domains, whole[a], axis);
      for (std::size_t rank = 0; rank < own.size(); ++rank) fields[rank][a] = own[rank];
      flow::fill_face_halos(whole[a], axis, c.ends);
    }
    carry_across(fields.size(), [&](std::size_t rank, flow::Carry carry, Mail& mail) {
      const auto lists = flow::flw_module_indcmm::mkindex_faces(out.log, domains, c.ends,
                                                                static_cast<std::int32_t>(rank));
      flow::flw_dsr_dc2(out.log, lists, fields[rank], carry, mail);
    });
    for (std::size_t a = 0; a < 3; ++a) {
      if (!domains.computed(static_cast<int>(a))) continue;
      std::size_t wrong = 0;
      each_entry(domains, [&](std::size_t rank, std::size_t place, const Triple& g) {
        wrong += fields[rank][a][place] == whole[a](g[0], g[1], g[2]) ? 0 : 1;
      });
      EXPECT_EQ(wrong, 0) << c.name << ", axis " << a;
    }
  }
}

/// What a stop with status 231 tells; else its status.
template <class Work>
std::string stop_of(Work&& work) {
  RecordedLog out;
  int status = 0;
  const std::string lines = out.lines_of([&] {
    try {
      work(out.log);
    } catch (const frame::Stop& stop) {
      status = stop.status;
      throw;
    }
  });
  return status == frame::kStatusAbnormal ? lines : "status " + std::to_string(status);
}

/// The table of records as they stand in a file.
SubDomains table_of(frame::Log& log, const Triple& cells, const std::vector<Record>& records) {
  return flow::flw_module_dc1::make_table(log, cells, records);
}

TEST(SubDomains, ATableThatDoesNotSplitTheGridStops) {
  for (const Case& c : cases()) {
    const SubDomains& domains = c.domains;
    std::vector<Record> records;
    for (std::size_t rank = domains.of.size(); rank-- > 0;) {
      records.push_back(
          {static_cast<std::int32_t>(rank), domains.of[rank].first, domains.of[rank].last, ""});
    }
    RecordedLog out;
    const SubDomains table = table_of(out.log, domains.cells, records);
    for (std::size_t rank = 0; rank < records.size(); ++rank) {
      EXPECT_EQ(table.of[rank].first, domains.of[rank].first) << c.name;
    }
  }

  const Triple cells{4, 3, 2};
  const std::vector<Record> good{{0, {1, 1, 1}, {2, 3, 2}, ""}, {1, {3, 1, 1}, {4, 3, 2}, "here"}};
  using Change = std::function<void(std::vector<Record>&)>;
  std::vector<std::pair<int, Change>> rows{
      {1, [](auto& r) { r[1].rank = 0; }},
      {1, [](auto& r) { r[1].rank = -1; }},
      {1, [](auto& r) { r[1].rank = 2; }},
      {3, [](auto& r) { r[1].first[0] = 2; }},
      {3, [](auto& r) { r[1].last[2] = 1; }},
      {3,  // one cell twice for each that is left over
       [](auto& r) {
         r[0].last[0] = r[1].last[0] = 3;
         r.push_back({2, {4, 1, 1}, {4, 3, 1}, "here"});
       }},
  };
  for (std::size_t a = 0; a < 3; ++a) {
    rows.emplace_back(2, [a](auto& r) { r[1].first[a] = 0; });
    rows.emplace_back(2, [a](auto& r) { r[1].last[a] = r[1].first[a] - 1; });
    rows.emplace_back(2, [a, &cells](auto& r) { r[1].last[a] = cells[a] + 1; });
  }
  for (std::size_t row = 0; row < rows.size(); ++row) {
    std::vector<Record> records = good;
    rows[row].second(records);
    EXPECT_EQ(stop_of([&](frame::Log& log) { table_of(log, cells, records); }),
              "here\n### program error -" + std::to_string(rows[row].first) +
                  "-\n(flw_module_dc1)(mklist)\n")
        << row;
  }
  for (const auto& [count, nprocs] : {std::pair{0, 0}, {2, 1}, {1, 2}, {-1, -1}}) {
    EXPECT_EQ(stop_of([&, count = count, nprocs = nprocs](frame::Log& log) {
                flow::flw_module_dc1::check_count(log, "", count, nprocs);
              }),
              "### program error -0-\n(flw_module_dc1)(mklist)\n");
  }
}

TEST(SubDomains, WrongRanksTablesAndMessagesStop) {
  const SubDomains domains = split({4, 3, 2}, {2, 4}, {3}, {{2}});
  SubDomains torn = domains;
  torn.of[0].first[0] += 1;
  const Ends ends{kOpen, kOpen, kOpen};
  const auto index_stop = [&](const SubDomains& table, std::int32_t rank) {
    return stop_of([&](frame::Log& log) { mkindex(log, table, ends, rank); });
  };
  const std::string tag = "\n(flw_module_indcmm)(mkindex)\n";
  EXPECT_EQ(index_stop(domains, -1), "### program error -0-" + tag);
  EXPECT_EQ(index_stop(domains, 2), "### program error -0-" + tag);
  EXPECT_EQ(index_stop(torn, 1), "### program error -1-" + tag);
  EXPECT_EQ(index_stop(domains, 1), "status 0");

  using Spoil = void (*)(frame::Message&);
  for (const auto& [number, spoil] :
       {std::pair<int, Spoil>{0, [](frame::Message&) {}},
        {1, [](frame::Message& message) { message.rank = 0; }},
        {2, [](frame::Message& message) { message.values.pop_back(); }},
        {2, [](frame::Message& message) { message.values.push_back(0.0); }}}) {
    const std::string lines = stop_of([&, spoil = spoil](frame::Log& log) {
      Field field(domains.of[0].box());
      Mail mail;
      flow::flw_dsr_dc2(
          log, mkindex(log, domains, ends, 0), field,
          [&](std::span<const frame::Message>, std::span<frame::Message> received) {
            spoil(received[0]);
          },
          mail, -1);
    });
    EXPECT_EQ(lines, number == 0
                         ? "status 0"
                         : "### program error -" + std::to_string(number) + "- (flw_dsr_dc2)\n");
  }
}

}  // namespace
