// The terms of a patch's balance, each formed for itself, add up to what the model holds at 0.
#include <gtest/gtest.h>

#include "view_case.hpp"
#include "why/why.hpp"

namespace {

using namespace townskin_view;
using view_case::FinishedRun;

/// What the sum of all terms may be off: digits of the files, leaves one step late, means of
/// months.
struct Case {
  const char* run;
  double most;
};

TEST(Why, AddsUp) {
  for (const auto& [name, most] :
       {Case{"canyon", 0.05}, Case{"mixed", 0.05}, Case{"street_trees", 0.5}}) {
    const FinishedRun run(name);
    const RunModel patches = read_run(run.directory(), {.results = false, .radiation = false});
    for (std::size_t p = 0; p < patches.patches.size(); p += patches.patches.size() / 8 + 1) {
      const std::int32_t PID = patches.patches.PID[p];
      const RunModel model = read_run(run.directory(), {.all_partners_of = PID});
      for (const std::int32_t hour : {3, 9, 14, 17}) {
        const Why why = explain(model, {PID, 0, hour});
        if (!why.balanced) continue;
        ASSERT_EQ(why.terms.size(), 9U);
        double sum = 0.0;
        for (const Term& term : why.terms) {
          sum += term.flux;
          EXPECT_EQ(term.flux, std::round(term.flux * 100.0) / 100.0) << term.name;
        }
        EXPECT_NEAR(sum, why.sum, 1e-9);
        EXPECT_NEAR(why.sum, 0.0, most) << name << ' ' << PID << '@' << hour;
        EXPECT_LE(why.givers.size(), 5U);
        double all = why.all_gifts.longwave + why.all_gifts.shortwave;
        for (const Giver& giver : why.givers) all -= giver.gift.longwave + giver.gift.shortwave;
        EXPECT_GE(all, -1e-9) << "five give more than all";
      }
    }
  }
}

/// The terms of the page are those of --why, taken from the balance in place of the view factors.
TEST(Why, AgreesWithTheFields) {
  const FinishedRun run("canyon");
  const RunModel patches = read_run(run.directory(), {.results = false, .radiation = false});
  const std::int32_t PID = patches.patches.PID[patches.patches.size() / 2];
  const RunModel model = read_run(run.directory(), {.all_partners_of = PID});
  const Why why = explain(model, {PID, 0, 12});
  constexpr std::array<std::string_view, 7> kFields{
      "absorbed_beam",         "absorbed_sky_light",          "absorbed_reflected_light",
      "absorbed_sky_longwave", "absorbed_neighbour_longwave", "emitted_longwave",
      "convected_heat"};
  for (std::size_t n = 0; n < kFields.size(); ++n) {
    const Field* field = model.field(kFields[n]);
    ASSERT_NE(field, nullptr) << kFields[n];
    std::vector<float> values(field->size);
    field->take(model, why.hour, values);
    EXPECT_NEAR(why.terms[n].flux, static_cast<double>(values[why.patch]), 0.05) << kFields[n];
  }
}

TEST(Why, RefusesWhatItCannotAnswer) {
  const FinishedRun run("canyon");
  for (const char* question :
       {"1", "@", "1@", "x@3", "1@25", "1@0", "1@3x", "99999999999@3", "-7@3", "1@5:3", "1@:3"}) {
    const view_case::Said said = view_case::view(run.directory() + " --why " + question);
    EXPECT_EQ(said.status, 2) << question << '\n' << said.text;
    EXPECT_TRUE(said.text.starts_with("### ")) << said.text;
  }
  EXPECT_EQ(view_case::view(run.directory() + " --why 1@3").status, 0);
}

}  // namespace
