// The sets of instructions for which kernels are compiled.
//
// All give the same bits: products and sums are rounded one by one and collected in the same
// lanes. A kernel takes the widest set of the processor when it is set up.
#pragma once

#include <array>

namespace frame {

enum class InstructionSet { common, avx2, avx512 };
inline constexpr std::array kInstructionSets{InstructionSet::common, InstructionSet::avx2,
                                             InstructionSet::avx512};

/// True where this processor has the set.
inline bool has(InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::avx2) return __builtin_cpu_supports("avx2") != 0;
  if (set == InstructionSet::avx512) return __builtin_cpu_supports("avx512f") != 0;
#endif
  return set == InstructionSet::common;
}

inline InstructionSet widest_set() {
  if (has(InstructionSet::avx512)) return InstructionSet::avx512;
  return has(InstructionSet::avx2) ? InstructionSet::avx2 : InstructionSet::common;
}

}  // namespace frame
