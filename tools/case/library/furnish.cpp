#include "library/furnish.hpp"

#include <algorithm>
#include <cmath>
#include <set>

#include "frame/numbers.hpp"

namespace townskin_case {
namespace {

/// All entries that a choice can come to must be there.
template <class Entry>
void check_names(const Choice& choice, const std::map<std::string, Entry>& library,
                 const std::string& what) {
  const auto check = [&](const std::string& name) {
    if (!library.contains(name)) throw Fault("the library has no " + what + " " + name);
  };
  check(choice.fallback);
  for (const auto& [text, name] : choice.table) check(name);
  for (const auto& [limit, name] : choice.up_to) check(name);
}

/// Numbers the build-ups as they are needed.
class Materials {
 public:
  explicit Materials(const Library& library) : library_(library) {}

  std::int32_t ground(const std::string& build_up) {
    return number("ground " + build_up, build_up, Position::wall, 1);
  }
  std::int32_t of_building(const Profile& profile, const std::string& build_up, Position position) {
    const std::string key = std::to_string(profile.number) + " " + build_up + " " +
                            std::to_string(static_cast<int>(position));
    return number(key, build_up, position, profile.number);
  }

  std::vector<Material> all;

 private:
  std::int32_t number(const std::string& key, const std::string& build_up, Position position,
                      std::int32_t construction) {
    constexpr std::int32_t kFirst = 101;
    const auto next = kFirst + static_cast<std::int32_t>(all.size());
    const auto [known, is_new] = numbers_.try_emplace(key, next);
    if (is_new) all.push_back({next, position, construction, library_.build_ups.at(build_up)});
    return known->second;
  }

  const Library& library_;
  std::map<std::string, std::int32_t> numbers_;
};

/// Finds the profile of each building.
class Profiles {
 public:
  Profiles(const Library& library, const Site& site, Stock& stock)
      : library_(library), site_(site), stock_(stock) {
    check_names(site.construction, library.buildings, "building");
    check_names(site.use, library.uses, "use");
  }
  void add(const Building& building) {
    const std::string construction = pick(site_.construction, building, by_default_[0]);
    const std::string use = pick(site_.use, building, by_default_[1]);
    const auto known = std::ranges::find_if(stock_.profiles, [&](const Profile& profile) {
      return profile.construction == construction && profile.use == use;
    });
    stock_.profile.push_back(static_cast<std::int32_t>(known - stock_.profiles.begin()));
    if (known != stock_.profiles.end()) return;
    stock_.profiles.push_back({construction, use,
                               static_cast<std::int32_t>(stock_.profiles.size()) + 1,
                               library_.buildings.at(construction), library_.uses.at(use)});
  }
  void warn(Report& report) const {
    for (const auto& [count, choice] :
         {std::pair{by_default_[0], &site_.construction}, std::pair{by_default_[1], &site_.use}}) {
      if (count == 0 || choice->attribute.empty()) continue;
      report.warning(std::to_string(count) + " buildings take " + choice->fallback +
                     ": their attribute " + choice->attribute + " is missing or has no entry");
    }
  }

 private:
  static std::string pick(const Choice& choice, const Building& building, std::size_t& count) {
    bool by_default = false;
    std::string name = choose(choice, building.attributes, by_default);
    if (by_default) ++count;
    return name;
  }

  const Library& library_;
  const Site& site_;
  Stock& stock_;
  std::array<std::size_t, 2> by_default_{};
};

/// The build-up of a kind of ground, or "water".
class Ground {
 public:
  Ground(const Library& library, const Site& site) : library_(library), site_(site) {
    if (find(site.ground.fallback).empty()) {
      throw Fault("the library has no kind of ground " + site.ground.fallback);
    }
  }
  std::string of(const std::string& kind) {
    std::string build_up = kind.empty() ? "" : find(kind);
    if (!build_up.empty()) return build_up;
    if (!kind.empty()) unknown_.insert(kind);
    return find(site_.ground.fallback);
  }
  void warn(Report& report) const {
    if (unknown_.empty()) return;
    std::string kinds;
    for (const std::string& kind : unknown_) kinds += (kinds.empty() ? "" : ", ") + kind;
    report.warning("kinds of ground without an entry, taken as " + site_.ground.fallback + ": " +
                   kinds);
  }

 private:
  std::string find(const std::string& kind) const {
    const auto renamed = site_.ground.kinds.find(kind);
    const auto entry =
        library_.ground.find(renamed == site_.ground.kinds.end() ? kind : renamed->second);
    return entry == library_.ground.end() ? "" : entry->second;
  }

  const Library& library_;
  const Site& site_;
  std::set<std::string> unknown_;
};

/// Makes the patches of the groups.
class Furnisher {
 public:
  Furnisher(const City& city, const Library& library, const Site& site, Scene& scene, Stock& stock)
      : city_(city), scene_(scene), stock_(stock), materials_(library), ground_(library, site) {
    roofed_.assign(city.buildings.size(), 0);
    for (const Group& group : scene.groups) {
      if (group.kind != PatchKind::building || group.face != FaceKind::roof) continue;
      roofed_[static_cast<std::size_t>(group.building)] = 1;
    }
  }

  void add(std::int32_t g) {
    Group& group = scene_.groups[static_cast<std::size_t>(g)];
    switch (group.kind) {
      case PatchKind::building:
        add_building(g, group);
        break;
      case PatchKind::land:
      case PatchKind::water:
        add_ground(g, group);
        break;
      case PatchKind::tree:
      case PatchKind::far:
        scene_.patches.push_back({g, group.area, group.kind == PatchKind::tree ? face(group) : 0});
        break;
    }
  }
  void finish(Report& report) {
    stock_.materials = std::move(materials_.all);
    ground_.warn(report);
    for (const std::int32_t b : without_roof_) {
      report.repair("no roof left within the district: walls store the heat of the rooms",
                    city_.buildings[static_cast<std::size_t>(b)].origin);
    }
  }

 private:
  void add_building(std::int32_t g, const Group& group) {
    const auto b = static_cast<std::size_t>(group.building);
    const Profile& profile = stock_.profiles[static_cast<std::size_t>(stock_.profile[b])];
    if (group.face == FaceKind::roof) {
      const auto roof = materials_.of_building(profile, profile.kind.roof, Position::roof);
      scene_.patches.push_back({g, group.area, roof});
      return;
    }
    const bool stores = roofed_[b] == 0;
    if (stores) without_roof_.insert(group.building);
    const auto wall = materials_.of_building(profile, profile.kind.wall,
                                             stores ? Position::roof : Position::wall);
    const double glass = group.area * profile.kind.window_share;
    scene_.patches.push_back({g, group.area - glass, wall});
    if (glass <= 0.0) return;
    const auto window = materials_.of_building(profile, profile.kind.window, Position::window);
    scene_.patches.push_back({g, glass, window});
  }
  void add_ground(std::int32_t g, Group& group) {
    const std::string build_up = ground_.of(group.cover);
    if (group.kind == PatchKind::water || build_up == "water") {
      group.kind = PatchKind::water;
      scene_.patches.push_back({g, group.area, 0});
    } else {
      scene_.patches.push_back({g, group.area, materials_.ground(build_up)});
    }
  }
  /// 1 and 2 look along x, 3 and 4 along y, 5 and 6 along z, the even ones to the positive side.
  static std::int32_t face(const Group& group) {
    const std::array<double, 3> normal{group.normal.x, group.normal.y, group.normal.z};
    std::int32_t number = 0;
    for (std::int32_t axis = 0; axis < 3; ++axis) {
      const double part = normal[static_cast<std::size_t>(axis)];
      if (std::abs(part) > 0.5) number = 2 * axis + (part > 0.0 ? 2 : 1);
    }
    return number;
  }

  const City& city_;
  Scene& scene_;
  Stock& stock_;
  Materials materials_;
  Ground ground_;
  std::vector<char> roofed_;  ///< by building
  std::set<std::int32_t> without_roof_;
};

}  // namespace

std::string choose(const Choice& choice, const std::map<std::string, std::string>& attributes,
                   bool& by_default) {
  by_default = true;
  const auto attribute = attributes.find(choice.attribute);
  if (choice.attribute.empty() || attribute == attributes.end()) return choice.fallback;
  by_default = false;
  if (const auto entry = choice.table.find(attribute->second); entry != choice.table.end()) {
    return entry->second;
  }
  double number = 0.0;
  if (frame::parse_number(attribute->second, number)) {
    for (const auto& [limit, name] : choice.up_to) {
      if (number <= limit) return name;
    }
  }
  by_default = true;
  return choice.fallback;
}

Stock furnish(const City& city, const Library& library, const Site& site, Scene& scene,
              Report& report) {
  Stock stock;
  Profiles profiles(library, site, stock);
  for (const Building& building : city.buildings) profiles.add(building);
  profiles.warn(report);
  scene.patches.clear();
  Furnisher furnisher(city, library, site, scene, stock);
  // Faces of trees stand in a file of their own, behind all others.
  for (const bool trees : {false, true}) {
    for (std::size_t g = 0; g < scene.groups.size(); ++g) {
      const bool is_tree = scene.groups[g].kind == PatchKind::tree;
      if (is_tree == trees) furnisher.add(static_cast<std::int32_t>(g));
    }
  }
  furnisher.finish(report);
  return stock;
}

}  // namespace townskin_case
