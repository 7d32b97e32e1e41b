#include "flow/linear/bcgstb_passes.hpp"

namespace flow {

#define PASS_SET bcgstb_common
#define PASS_WIDTH 2
#define PASS_TARGET
#include "flow/linear/bcgstb_passes.inc"
#undef PASS_SET
#undef PASS_WIDTH
#undef PASS_TARGET

#if defined(__x86_64__)
#define PASS_SET bcgstb_avx2
#define PASS_WIDTH 4
#define PASS_TARGET [[gnu::target("avx2")]]
#include "flow/linear/bcgstb_passes.inc"
#undef PASS_SET
#undef PASS_WIDTH
#undef PASS_TARGET

#define PASS_SET bcgstb_avx512
#define PASS_WIDTH 8
#define PASS_TARGET [[gnu::target("avx512f")]]
#include "flow/linear/bcgstb_passes.inc"
#undef PASS_SET
#undef PASS_WIDTH
#undef PASS_TARGET
#endif

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
