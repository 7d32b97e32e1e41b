// The files of the surfaces: Grid, Patch, TreePatch, PatchIndex, PgidPrd, BldSurf and Porous.
#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

void write_patch(const RunData& run, std::size_t p, TextFile& out) {
  const Patch& patch = run.scene.patches[p];
  const Group& group = run.scene.groups[static_cast<std::size_t>(patch.group)];
  // A far boundary is as large as the exchange with the district asks.
  const double area = group.kind == PatchKind::far
                          ? run.factors.area[static_cast<std::size_t>(patch.group)]
                          : patch.area;
  // Of the cell of air, and of leaves, k counts from 0.
  out.line(p + 1, group.cell[0], group.cell[1], group.cell[2] - 1, area, group.normal.x,
           group.normal.y, group.normal.z, static_cast<std::int32_t>(group.kind), patch.surface,
           group.building + 1);
}

PatchKind kind_of(const RunData& run, const Patch& patch) {
  return run.scene.groups[static_cast<std::size_t>(patch.group)].kind;
}

void write_porous(const FlowSetup& flow, const std::vector<PorousCell>& cells,
                  const std::string& path) {
  TextFile out(path);
  for (const PorousCell& cell : cells) {
    for (std::size_t a = 0; a < 3; ++a) {
      const std::int32_t before = a < 2 ? flow.before[a] : 0;
      out.put(std::int64_t{cell.cell[a] + before}).put(" ");
    }
    out.share(cell.volume, 6);
    for (const double face : cell.faces) out.put(" ").share(face, 6);
    out.end_line();
  }
  out.close();
}

}  // namespace

void write_grid(const RunData& run, const RunFolder& folder) {
  constexpr std::size_t kOnALine = 10;
  TextFile out(folder.path(file::kGrid));
  for (const std::vector<double>& nodes : run.flow.nodes) {
    out.line(nodes.size());
    for (std::size_t n = 0; n < nodes.size(); ++n) {
      if (n > 0) n % kOnALine == 0 ? out.end_line() : static_cast<void>(out.put(" "));
      out.put(nodes[n]);
    }
    out.end_line();
  }
  out.close();
  write_porous(run.flow, run.scene.porous, folder.path(file::kPorous));
  write_porous(run.flow, run.scene.air, folder.path(file::kFlowPorous));
}

void write_patches(const RunData& run, const RunFolder& folder) {
  TextFile patches(folder.path(file::kPatch));
  TextFile trees(folder.path(file::kTreePatch));
  TextFile index(folder.path(file::kPatchIndex));
  TextFile walls(folder.path(file::kBldSurf));
  patches.line("# PID i j k area nx ny nz type SurfID BldID");
  trees.line("# PID i j k area nx ny nz type BndC BldID");
  index.line("# PE PID PgID PE");
  walls.line("# PID SurfID BldID");
  for (std::size_t p = 0; p < run.scene.patches.size(); ++p) {
    const Patch& patch = run.scene.patches[p];
    const PatchKind kind = kind_of(run, patch);
    write_patch(run, p, kind == PatchKind::tree ? trees : patches);
    index.line(0, p + 1, patch.group + 1, 0);
    if (kind != PatchKind::building) continue;
    const auto g = static_cast<std::size_t>(patch.group);
    walls.line(p + 1, patch.surface, run.scene.groups[g].building + 1);
  }
  for (TextFile* out : {&patches, &trees, &index, &walls}) out->close();

  TextFile periodic(folder.path(file::kPgidPrd));
  periodic.line("# PgID PgID");
  for (const auto& pair : run.scene.periodic) periodic.line(pair[0] + 1, pair[1] + 1);
  periodic.close();
}

void write_factors(const RunData& run, const RunFolder& folder) {
  constexpr int kDigits = 9;
  TextFile out(folder.path(file::kFormFactor));
  out.line("# PE SrcPgID PE DstPgID FormFct");
  const ViewFactors& factors = run.factors;
  std::string head;
  for (std::size_t g = 0; g < run.scene.groups.size(); ++g) {
    head = "0 " + std::to_string(g + 1) + " 0 ";
    out.put(head).put("0 ").share(factors.sky[g], kDigits);
    out.end_line();
    for (std::size_t n = factors.start[g]; n < factors.start[g + 1]; ++n) {
      out.put(head).put(std::int64_t{factors.to[n]} + 1).put(" ").share(factors.factor[n], kDigits);
      out.end_line();
    }
  }
  out.close();
}

void write_geometry(const RunData& run, const RunFolder& folder) {
  TextFile out(folder.path(file::kGeometry));
  out.line("# PID, piece, ring (0: the outer one), points, then x y z of each [m, east north up]");
  const auto ring = [&](std::size_t p, std::size_t piece, std::size_t number, const Ring3& points) {
    out.put(static_cast<std::int64_t>(p) + 1).put(" ").put(static_cast<std::int64_t>(piece) + 1);
    out.put(" ").put(static_cast<std::int64_t>(number)).put(" ");
    out.put(static_cast<std::int64_t>(points.size()));
    for (const Vector3& point : points) {
      out.put(" ").put(point.x).put(" ").put(point.y).put(" ").put(point.z);
    }
    out.end_line();
  };
  for (std::size_t p = 0; p < run.scene.patches.size(); ++p) {
    const auto g = static_cast<std::size_t>(run.scene.patches[p].group);
    const std::vector<Polygon3>& shapes = run.scene.groups[g].shapes;
    for (std::size_t piece = 0; piece < shapes.size(); ++piece) {
      ring(p, piece, 0, shapes[piece].outer);
      for (std::size_t h = 0; h < shapes[piece].holes.size(); ++h) {
        ring(p, piece, h + 1, shapes[piece].holes[h]);
      }
    }
  }
  out.close();
}

}  // namespace townskin_case
