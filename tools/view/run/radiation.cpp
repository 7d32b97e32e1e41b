#include "run/radiation.hpp"

#include <algorithm>
#include <numeric>

#include "radiation/shade.hpp"

namespace townskin_view {

namespace {

constexpr std::size_t kKept = 5;  // partners of a group
constexpr double kHour = 3600.0;

/// Of each group its largest patch, and its area.
struct GroupSizes {
  std::vector<std::int32_t> largest;
  std::vector<double> area;
};

GroupSizes sizes_of(const RunModel& run, std::size_t groups) {
  GroupSizes sizes{std::vector<std::int32_t>(groups, -1), std::vector<double>(groups, 0.0)};
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    const auto g = static_cast<std::size_t>(run.patches.group[p]);
    sizes.area[g] += run.patches.area[p];
    std::int32_t& largest = sizes.largest[g];
    if (largest < 0 || run.patches.area[p] > run.patches.area[static_cast<std::size_t>(largest)]) {
      largest = static_cast<std::int32_t>(p);
    }
  }
  return sizes;
}

/// Takes a partner among at most `most`, the greatest view factor first, equal ones as they come.
void keep(const Partner& partner, std::size_t most, std::vector<Partner>& partners) {
  const auto place = std::ranges::upper_bound(partners, partner.view_factor, std::ranges::greater{},
                                              &Partner::view_factor);
  if (place == partners.end() && partners.size() == most) return;
  partners.insert(place, partner);
  if (partners.size() > most) partners.pop_back();
}

void take_partners(tsrf_module_raddat::Data& raddat, const Wanted& wanted, RunModel& run) {
  const auto groups = static_cast<std::size_t>(raddat.NPGID);
  const GroupSizes sizes = sizes_of(run, groups);
  std::size_t asked = groups;  // nobody
  if (wanted.all_partners_of) {
    const std::int64_t p = run.find_patch(*wanted.all_partners_of);
    if (p < 0) return;
    asked = static_cast<std::size_t>(run.patches.group[static_cast<std::size_t>(p)]);
  }
  std::vector<std::vector<Partner>> kept(wanted.partners ? groups : 0);
  raddat.view_factors.each([&](std::size_t g, std::size_t source, float factor) {
    const Partner partner{sizes.largest[source], raddat.c[g] * static_cast<double>(factor) *
                                                     sizes.area[source] / sizes.area[g]};
    if (g == asked) keep(partner, SIZE_MAX, run.all_partners);
    if (wanted.partners) keep(partner, kKept, kept[g]);
  });
  if (!wanted.partners) return;
  run.first_partner.push_back(0);
  for (const std::vector<Partner>& partners : kept) {
    run.partners.insert(run.partners.end(), partners.begin(), partners.end());
    run.first_partner.push_back(static_cast<std::uint32_t>(run.partners.size()));
  }
}

}  // namespace

namespace {

/// Lists the patches of each group.
void list_members(RunModel& run) {
  const std::vector<std::int32_t>& group = run.patches.group;
  const std::size_t groups =
      group.empty() ? 0 : static_cast<std::size_t>(*std::ranges::max_element(group)) + 1;
  run.first_member.assign(groups + 1, 0);
  for (const std::int32_t g : group) ++run.first_member[static_cast<std::size_t>(g) + 1];
  std::partial_sum(run.first_member.begin(), run.first_member.end(), run.first_member.begin());
  run.members.resize(group.size());
  std::vector<std::uint32_t> next(run.first_member.begin(), run.first_member.end());
  for (std::size_t p = 0; p < group.size(); ++p) {
    run.members[next[static_cast<std::size_t>(group[p])]++] = static_cast<std::int32_t>(p);
  }
}

}  // namespace

void read_groups(const RunFiles& files, QuietLog& quiet, const CoreInputs& core,
                 tsrf_module_raddat::Data& raddat, RunModel& run) {
  const auto control = files.open(frame::kUnitControl);
  const auto index = files.open(frame::kUnitPatchIndex);
  const std::string fault = quiet.fault_of([&] {
    tsrf_module_raddat::inputdata(quiet.log, *control, raddat);
    tsrf_module_raddat::read_lf2fr(quiet.log, *index, core.patch, raddat);
  });
  if (fault.empty()) {
    run.patches.group = raddat.pgx;
    return list_members(run);
  }
  list_members(run);
  raddat.NPGID = 0;
  note(run, "Groups of patches and the exchange of radiation among them are not known", fault);
}

void read_exchange(const RunFiles& files, QuietLog& quiet, const CoreInputs& core,
                   const Wanted& wanted, tsrf_module_raddat::Data& raddat, RunModel& run) {
  if (raddat.NPGID == 0) return;
  std::vector<double> sky(run.patches.size(), 0.0);
  const auto factors = files.open(frame::kUnitFormFactor);
  const std::string fault = quiet.fault_of([&] {
    frame::Crew crew(frame::hands_wanted(quiet.log));
    tsrf_module_raddat::read_viewfactor(quiet.log, crew, *factors, core.patch, raddat, sky);
    tsrf_module_raddat::allocdata01(quiet.log, 0, raddat);
    tsrf_module_raddat::tsrf_set_rdata(quiet.log, core.patch, raddat, sky);
  });
  if (!fault.empty()) {
    return note(run, "View factors are not known", fault);
  }
  Field field{.quantity = &quantity("sky_view_factor"), .size = sky.size(), .hours = 1};
  field.exact = std::move(sky);
  run.fields.push_back(std::move(field));
  take_partners(raddat, wanted, run);
  raddat.view_factors = {};
}

void read_sunlit(const RunFiles& files, QuietLog& quiet, const CoreInputs& core, RunModel& run) {
  if (run.hours.empty()) return;
  if (run.dated) {
    return note(run, "Sunlit fractions of the days of a dated run are not shown", "");
  }
  const auto control = files.open(frame::kUnitControl);
  const auto sun = files.open(frame::kUnitSun);
  const std::size_t n = run.patches.size();
  Field field{.quantity = &quantity("sunlit_fraction"), .size = n, .hours = run.hours.size()};
  const std::string fault = quiet.fault_of([&] {
    tsrf_module_shade::Data shade;
    tsrf_module_calendar::Data calendar;
    tsrf_module_shade::inputdata(quiet.log, *control, false, shade);
    field.values.reserve(n * run.hours.size());
    std::vector<double> fractions(n);
    frame::Crew crew;
    for (const Hour& hour : run.hours) {
      const std::size_t day = 24 * n;
      if (field.values.size() >= day) {  // the same day again
        const std::size_t at = field.values.size();
        field.values.resize(at + n);
        std::copy_n(field.values.begin() + static_cast<std::ptrdiff_t>(at - day), n,
                    field.values.begin() + static_cast<std::ptrdiff_t>(at));
        continue;
      }
      tsrf_module_shade::set_shade(quiet.log, crew, sun.get(), hour.hour * kHour - run.step,
                                   core.patch, calendar, shade, fractions);
      field.values.insert(field.values.end(), fractions.begin(), fractions.end());
    }
  });
  if (!fault.empty()) return note(run, "Sunlit fractions are not known", fault);
  run.fields.push_back(std::move(field));
}

}  // namespace townskin_view
