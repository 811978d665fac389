#ifndef RT305_4_TOOLKIT_SIMD_H
#define RT305_4_TOOLKIT_SIMD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

// The one dispatcher for vector code. A kernel is written once and compiled for every instruction set below;
// vectorized() calls the variant for the set in use. All variants give the same bits: vector lanes hold independent
// elements, and the whole project is compiled without fused multiply-add.

#define ALWAYS_INLINE __attribute__((always_inline))

namespace coder {

/// The instruction sets that this build has code for. Another architecture adds its own here and in `simd` below.
enum class InstructionSet : std::uint8_t {
    baseline,  // what every processor of the architecture has
#ifdef __x86_64__
    avx2,
    avx512,
#endif
    count
};
inline constexpr auto instructionSets = static_cast<std::size_t>(InstructionSet::count);

/// Whether this machine can run the code for a set.
bool isSupported(InstructionSet set);

/// The set in use: the widest that the machine supports, unless a test forces another one.
InstructionSet instructionSet();

/// Makes vectorized() use one supported set for the lifetime of the object. For tests: no other thread may compute
/// meanwhile.
class ForcedInstructionSet {
public:
    explicit ForcedInstructionSet(InstructionSet set);
    ForcedInstructionSet(const ForcedInstructionSet&) = delete;
    ForcedInstructionSet& operator=(const ForcedInstructionSet&) = delete;
    ~ForcedInstructionSet();

private:
    InstructionSet previous_;
};

/// A vector of `width` numbers; for width 1 a plain number.
template <int width, class Number = double>
struct Lanes {
    using type [[gnu::vector_size(width * sizeof(Number))]] = Number;
};
template <class Number>
struct Lanes<1, Number> {
    using type = Number;
};

/// Calls f(0) ... f(count-1) with the index as a compile-time constant.
template <int count, class F>
ALWAYS_INLINE inline void unroll(F f) {
    [&]<int... i>(std::integer_sequence<int, i...>) ALWAYS_INLINE {
        (f(std::integral_constant<int, i>{}), ...);
    }
    (std::make_integer_sequence<int, count>{});
}

namespace simd {

// One function per instruction set. A kernel is compiled for the set because it is inlined here. Arguments are copies,
// so the compiler knows that no stored sample changes them.

template <class Result, class Kernel, class... Arguments>
Result runBaseline(Arguments... arguments) {
    return Kernel::template run<2>(arguments...);
}

#ifdef __x86_64__
template <class Result, class Kernel, class... Arguments>
__attribute__((target("avx2"))) Result runAvx2(Arguments... arguments) {
    return Kernel::template run<4>(arguments...);
}

template <class Result, class Kernel, class... Arguments>
__attribute__((target("avx512f,avx512dq,avx512bw"))) Result runAvx512(Arguments... arguments) {
    return Kernel::template run<8>(arguments...);
}
#endif

/// The variants of a kernel in the order of InstructionSet.
template <class Result, class Kernel, class... Arguments>
inline constexpr std::array<Result (*)(Arguments...), instructionSets> variants{
    runBaseline<Result, Kernel, Arguments...>,
#ifdef __x86_64__
    runAvx2<Result, Kernel, Arguments...>,
    runAvx512<Result, Kernel, Arguments...>,
#endif
};

/// A plain loop as a kernel: the compiler chooses the vectors.
template <auto loop>
struct Loop {
    template <int width, class... Arguments>
    ALWAYS_INLINE static auto run(Arguments... arguments) {
        return loop(arguments...);
    }
};

}  // namespace simd

/// Runs a kernel that is written for any vector width: a class with
///     template <int width> ALWAYS_INLINE static Result run(Arguments...).
template <class Kernel, class... Arguments>
auto vectorized(Arguments... arguments) {
    using Result = decltype(Kernel::template run<1>(arguments...));
    return simd::variants<Result, Kernel, Arguments...>[static_cast<std::size_t>(instructionSet())](arguments...);
}

/// Runs a plain loop, an ALWAYS_INLINE function, compiled for the set in use.
template <auto loop, class... Arguments>
auto vectorized(Arguments... arguments) {
    return vectorized<simd::Loop<loop>>(arguments...);
}

}  // namespace coder

#endif
