#include "flow/linear/bcgstb_passes.hpp"

namespace flow {

#define PASS_PREFIX bcgstb
#define PASS_FILE "flow/linear/bcgstb_passes.inc"
#include "frame/pass_sets.inc"

#define PASSES(set) \
  BcgstbPasses { set::direct, set::reduce, set::backward, set::product, set::advance }

BcgstbPasses bcgstb_passes(InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::avx512) return PASSES(bcgstb_avx512);
  if (set == InstructionSet::avx2) return PASSES(bcgstb_avx2);
#endif
  return PASSES(bcgstb_common);
}

#undef PASSES

}  // namespace flow
