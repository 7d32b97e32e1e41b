#include <algorithm>
#include <numeric>
#include <string>

#include "flow/boundary.hpp"
#include "flow/input/record.hpp"

namespace flow {

namespace {

constexpr std::string_view kRoutine = "(flw_read_bndcnd)";
constexpr std::size_t kMostGroups = 65000;  // mbnd
constexpr std::array<char, 3> kAxes{'i', 'j', 'k'};
constexpr std::array<char, 3> kDirections{'x', 'y', 'z'};

/// Upper limits of ip, iv, it, iy, ik.
constexpr std::array<std::int32_t, 5> kLimits{3, 5, 4, 2, 4};
enum Kind : std::size_t { kIp, kIv, kIt, kIy, kIk };

/// The numbers of a group as they stand in the file.
struct Numbers {
  std::array<std::int32_t, 7> box{};  ///< is, ie, js, je, ks, ke, idir
  std::array<std::int32_t, 5> kinds{};
  std::array<double, 5> values{};  ///< u, v, w, t, pb
  std::array<double, 2> turbulence{};
};

class Reader {
 public:
  Reader(frame::Log& log, frame::TextInput& file, const Triple& cells, const Species& species,
         const Ambient& ambient)
      : log_(log),
        records_(log, file, kRoutine, "boundary data"),
        cells_(cells),
        species_(species),
        ambient_(ambient) {}

  Boundary read() {
    read_ends();
    read_groups();
    return boundary_;
  }

 private:
  void read_ends();
  void tell_ends();
  void read_groups();
  void read_group();
  void check_group(const Numbers& n, const std::array<std::size_t, 5>& place, Group group);
  bool take_place(const Numbers& n, Group& group);
  void check_range(const Numbers& n);
  void check_kinds(const Numbers& n);
  void check_pair(const Numbers& n);
  void check_inflow(const Numbers& n, const Group& group);
  void check_fractions(const std::vector<double>& ys);

  frame::Log& log_;
  RecordReader records_;
  Triple cells_;
  const Species& species_;
  const Ambient& ambient_;
  Boundary boundary_;
};

void Reader::read_ends() {
  std::array<std::int32_t, 6> bc{};
  const bool read = records_.take({.items = {std::span(bc)},
                                   .echo = {{"B.C. at bound of computational domain"},
                                            {"  iminbc,imaxbc = ", {&bc[0], &bc[1]}},
                                            {"  jminbc,jmaxbc = ", {&bc[2], &bc[3]}},
                                            {"  kminbc,kmaxbc = ", {&bc[4], &bc[5]}}}});
  const bool periodic = bc[2] == 1 && bc[3] == 1;
  for (std::size_t side = 0; side < 6 && read; ++side) {
    if (bc[side] == 0 || bc[side] == 2 || (periodic && side / 2 == 1)) continue;
    records_.attempt([&] {
      records_.fail(std::string(1, kAxes[side / 2]) + (side % 2 == 0 ? "min" : "max") +
                    "bc != 0 nor != 2");
    });
  }
  for (std::size_t side = 0; side < 6; ++side) {
    const std::size_t axis = side / 2;
    if (cells_[axis] > 1) boundary_.ends[axis][side % 2] = static_cast<End>(bc[side]);
  }
  tell_ends();
}

void Reader::tell_ends() {
  if (boundary_.periodic_y()) log_.line("  bound of y-direction is periodic boundary");
  for (std::size_t side = 0; side < 6; ++side) {
    if (boundary_.ends[side / 2][side % 2] != End::symmetric) continue;
    log_.line(std::string(side % 2 == 0 ? "  left" : "  right") + " bound of " +
              kDirections[side / 2] + "-direction is symmetric boundary");
  }
}

void Reader::read_groups() {
  const auto ns = static_cast<std::int32_t>(species_.count());
  std::int32_t nsx = 0;
  std::int32_t nbdc = 0;
  records_.take({.items = {&nsx},
                 .echo = {{"no. of species : nsx = ", {&nsx}}},
                 .rules = {{frame::items("nsx != ns(=", ns, ")"), [&] { return nsx == ns; }}}});
  records_.take({.items = {&nbdc},
                 .echo = {{"no. of boundary condition : nbdc = ", {&nbdc}}},
                 .rules = {{"nbdc <= 0 ", [&] { return nbdc > 0; }}}});
  if (nsx != ns) return;  // told; the groups would not be read as they are meant
  bool ended = false;
  for (std::int32_t n = 0; n < nbdc && !ended; ++n) {
    ended = records_.at_end();  // told by what is read there
    read_group();
  }
}

/// Reads the five records of a group.
void Reader::read_group() {
  Numbers n;
  Group group;
  group.ys.resize(species_.count());
  std::array<std::size_t, 5> place{};
  const std::array<Item, 5> items{std::span<std::int32_t>(n.box), std::span<std::int32_t>(n.kinds),
                                  std::span<double>(n.values), std::span<double>(group.ys),
                                  std::span<double>(n.turbulence)};
  bool whole = true;
  for (std::size_t record = 0; record < items.size(); ++record) {
    whole = records_.read({&items[record], 1}) && whole;
    place[record] = records_.place();
  }
  if (!whole) return;
  records_.attempt([&] { check_group(n, place, std::move(group)); });
}

/// Takes a group that keeps the rules; one of no direction is to be skipped.
void Reader::check_group(const Numbers& n, const std::array<std::size_t, 5>& place, Group group) {
  records_.blame(place[0]);
  if (!take_place(n, group)) return;
  check_range(n);
  records_.blame(place[1]);
  check_kinds(n);
  check_pair(n);
  std::copy_n(n.values.begin(), 3, group.velocity.begin());
  group.t = n.values[3];
  group.pb = n.values[4];
  group.ip = static_cast<PressureAt>(n.kinds[kIp]);
  group.iv = static_cast<VelocityAt>(n.kinds[kIv]);
  group.it = static_cast<TemperatureAt>(n.kinds[kIt]);
  group.iy = static_cast<SpeciesAt>(n.kinds[kIy]);
  group.ik = static_cast<TurbulenceAt>(n.kinds[kIk]);
  check_inflow(n, group);
  records_.blame(place[2]);
  if (group.it != TemperatureAt::flux && !(group.t > 0.0)) records_.fail("t <= 0");
  records_.blame(place[3]);
  check_fractions(group.ys);
  settle_mixture(group, species_);
  group.k = std::max(n.turbulence[0], ambient_.aklw);
  group.eps = std::max(n.turbulence[1], ambient_.aelw);
  if (boundary_.groups.size() == kMostGroups) {
    log_.program_error("### program error -1- (flw_read_bndcnd)", "nbnd > mbnd",
                       frame::items("mbnd =", kMostGroups));
  }
  boundary_.groups.push_back(std::move(group));
}

/// Box, axis and side of the fluid; false when the group is to be skipped. At the ends of the
/// domain the fluid's side is known, and a block has none.
bool Reader::take_place(const Numbers& n, Group& group) {
  std::int32_t pairs = 0;
  group.idir = n.box[6];
  for (std::size_t axis = 0; axis < 3; ++axis) {
    group.first[axis] = n.box[2 * axis];
    group.last[axis] = n.box[2 * axis + 1];
    if (group.first[axis] != group.last[axis]) continue;
    ++pairs;
    group.axis = static_cast<int>(axis);
  }
  if (pairs == 0) {
    group.idir = 0;
  } else if (pairs == 1) {
    const auto axis = static_cast<std::size_t>(group.axis);
    if (group.first[axis] == 0) {
      group.idir = 1;
    } else if (group.first[axis] == cells_[axis]) {
      group.idir = -1;
    }
  }
  if (group.idir < -1 || group.idir > 1) return false;
  if (pairs > 1) records_.fail();
  return true;
}

void Reader::check_range(const Numbers& n) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const std::int32_t first = n.box[2 * axis];
    const std::int32_t last = n.box[2 * axis + 1];
    if (first < 0 || last > cells_[axis] || first > last) records_.fail();
  }
}

void Reader::check_kinds(const Numbers& n) {
  for (std::size_t kind = 0; kind < kLimits.size(); ++kind) {
    if (n.kinds[kind] >= 1 && n.kinds[kind] <= kLimits[kind]) continue;
    records_.fail(frame::items("value is < 1 or >", kLimits[kind]));
  }
}

/// A given pressure leaves the velocity free; where none is given the velocity must tell the flow.
void Reader::check_pair(const Numbers& n) {
  const std::int32_t ip = n.kinds[kIp];
  const std::int32_t iv = n.kinds[kIv];
  const bool free = static_cast<VelocityAt>(iv) == VelocityAt::free;
  const bool held = static_cast<PressureAt>(ip) != PressureAt::free;
  if (held == free) return;
  if (ip == 1 && static_cast<VelocityAt>(iv) != VelocityAt::slip) {
    records_.fail(frame::items("can not accept ip=1, iv=", iv));
  }
  records_.fail(frame::items("can not accept ip=", ip, ", iv=", iv));
}

/// What flows in brings temperature and species along, so both must be given.
void Reader::check_inflow(const Numbers& n, const Group& group) {
  bool through = false;
  for (int axis = 0; axis < 3; ++axis) {
    const bool normal = group.axis < 0 || group.axis == axis;
    through = through || (normal && group.velocity[static_cast<std::size_t>(axis)] != 0.0);
  }
  if (!group.gives_velocity() || group.holds_pressure() || !through) return;
  if (n.kinds[kIy] != 1) records_.fail("if iv=1, must be iy=1");
  if (n.kinds[kIt] != 1) records_.fail("if iv=1, must be it=1");
}

void Reader::check_fractions(const std::vector<double>& ys) {
  if (std::ranges::any_of(ys, [](double y) { return y < 0.0; })) records_.fail("ys < 0");
  if (std::accumulate(ys.begin(), ys.end(), 0.0) <= 0.0) records_.fail("summation of ys <= 0");
}

}  // namespace

void settle_mixture(Group& group, const Species& species) {
  const double sum = std::accumulate(group.ys.begin(), group.ys.end(), 0.0);
  double moles = 0.0;
  for (std::size_t i = 0; i < group.ys.size(); ++i) {
    group.ys[i] /= sum;
    moles += group.ys[i] / species.wm[i];
  }
  group.gas = kGasConstant * moles;
  group.xs.resize(group.ys.size());
  for (std::size_t i = 0; i < group.ys.size(); ++i) {
    group.xs[i] = group.ys[i] / species.wm[i] / moles;
  }
}

Boundary flw_read_bndcnd(frame::Log& log, frame::TextInput& file, const Triple& cells,
                         const Species& species, const Ambient& ambient) {
  const frame::Tag tag(log, kRoutine);
  return Reader(log, file, cells, species, ambient).read();
}

}  // namespace flow
