#include "account/exchange.hpp"

#include <algorithm>

namespace tsrf_module_account {

void prepare_exchange(frame::Log& log, const tsrf_module_raddat::Data& raddat,
                      std::span<const double> skyvf0, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_account)(prepare_exchange)");
  const auto groups = static_cast<std::size_t>(raddat.NPGID);
  frame::allocating(log, "account", frame::bytes_of<double>(groups, 2), [&] {
    data.group_sky.assign(groups, 0.0);
    data.group_sent.assign(groups, 0.0);
    data.exchange.resize((groups + kBlock - 1) / kBlock);
  });
  for (std::size_t p = 0; p < skyvf0.size(); ++p) {
    data.group_sky[static_cast<std::size_t>(raddat.pgx[p])] = skyvf0[p];
  }
  raddat.view_factors.each([&](std::size_t destination, std::size_t source, float factor) {
    data.group_sent[source] += raddat.c[destination] * static_cast<double>(factor);
  });
}

void note_exchange(const tsrf_module_raddat::Data& raddat, Data& data) {
  for (std::size_t n = 0; n < data.leaf_patches.size(); ++n) {
    data.JRl[n] = raddat.JRl[data.leaf_patches[n]];
    data.JRs[n] = raddat.JRs[data.leaf_patches[n]];
  }
}

void add_exchange(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  const tsrf_module_raddat::Data& raddat, const tsrf_module_radref::Work& exchange,
                  double dt, Data& data) {
  crew.each(data.exchange.size(), 1, [&](std::size_t block) {
    std::array<Exchange, 2> sums{};
    const std::size_t last = std::min((block + 1) * kBlock, data.group_sent.size());
    for (std::size_t g = block * kBlock; g < last; ++g) {
      const double sky = data.group_sky[g];
      const double sent = data.group_sent[g];
      const double nowhere = (1.0 - sky) - sent;
      const auto& J = exchange.two.now(g);
      const auto& before = exchange.two.before(g);
      for (std::size_t band = 0; band < sums.size(); ++band) {
        sums[band].to_sky += sky * J[band];
        sums[band].table += nowhere * J[band];
        sums[band].sweeps += sent * (J[band] - before[band]);
      }
    }
    for (std::size_t band = 0; band < sums.size(); ++band) {
      data.exchange[block][band].to_sky += sums[band].to_sky * dt;
      data.exchange[block][band].table += sums[band].table * dt;
      data.exchange[block][band].sweeps += sums[band].sweeps * dt;
    }
  });
  Flows& leaves = data.flows[kLeaves];
  for (std::size_t n = 0; n < data.leaf_patches.size(); ++n) {
    const std::size_t p = data.leaf_patches[n];
    leaves[kSource] += patch.area[p] * data.JRl[n] * dt;
    leaves[kSourceLight] += patch.area[p] * data.JRs[n] * dt;
    leaves[kNextSource] += patch.area[p] * raddat.JRl[p] * dt;
    leaves[kNextSourceLight] += patch.area[p] * raddat.JRs[p] * dt;
  }
}

}  // namespace tsrf_module_account
