#include "toolkit/simd.h"

#include <cassert>

namespace coder {
namespace {

InstructionSet widestSupported() {
    auto set = InstructionSet::count;
    do {
        set = static_cast<InstructionSet>(static_cast<int>(set) - 1);
    } while (!isSupported(set));
    return set;
}

// Written when the library is loaded and by tests only, so calls on several threads read a constant.
InstructionSet inUse = widestSupported();

}  // namespace

bool isSupported(InstructionSet set) {
#ifdef __x86_64__
    __builtin_cpu_init();
    if (set == InstructionSet::avx2) {
        return __builtin_cpu_supports("avx2") != 0;
    }
    if (set == InstructionSet::avx512) {
        return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
               __builtin_cpu_supports("avx512bw") != 0;
    }
#endif
    return set == InstructionSet::baseline;
}

InstructionSet instructionSet() {
    return inUse;
}

ForcedInstructionSet::ForcedInstructionSet(InstructionSet set) : previous_(inUse) {
    assert(isSupported(set));
    inUse = set;
}

ForcedInstructionSet::~ForcedInstructionSet() {
    inUse = previous_;
}

}  // namespace coder
