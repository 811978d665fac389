#ifndef RT305_4_TOOLKIT_VECTOR_CODE_H
#define RT305_4_TOOLKIT_VECTOR_CODE_H

#include <cstring>
#include <type_traits>
#include <utility>

// Vector code that is written once for any width and compiled for several instruction sets. All give the same bits:
// lanes run along independent elements, and no multiply-add is fused.

#define ALWAYS_INLINE __attribute__((always_inline))

namespace coder {

template <int width>
struct Lanes {
    using type [[gnu::vector_size(width * sizeof(double))]] = double;
};
template <>
struct Lanes<1> {
    using type = double;
};

/// Calls f(0) ... f(count-1) with the index as a compile-time constant.
template <int count, class F>
ALWAYS_INLINE inline void unroll(F f) {
    [&]<int... i>(std::integer_sequence<int, i...>) ALWAYS_INLINE {
        (f(std::integral_constant<int, i>{}), ...);
    }
    (std::make_integer_sequence<int, count>{});
}

/// The instruction sets. A kernel is compiled for one by being inlined into its run(); it gets a copy of its work, so
/// that no store of a sample can change it.
struct Avx512 {
    static bool supported() { return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"); }
    template <class Kernel, class Work>
    __attribute__((target("avx512f,avx512dq"))) static void run(const Work& work) {
        Kernel::template run<8>(Work(work));
    }
};

struct Avx2 {
    static bool supported() { return __builtin_cpu_supports("avx2"); }
    template <class Kernel, class Work>
    __attribute__((target("avx2"))) static void run(const Work& work) {
        Kernel::template run<4>(Work(work));
    }
};

struct Baseline {
    static bool supported() { return true; }
    template <class Kernel, class Work>
    static void run(const Work& work) {
        Kernel::template run<2>(Work(work));
    }
};

/// Runs a kernel on the widest vectors that the machine has.
template <class Kernel, class Work>
void runWidest(const Work& work) {
    if (Avx512::supported()) {
        Avx512::run<Kernel>(work);
    } else if (Avx2::supported()) {
        Avx2::run<Kernel>(work);
    } else {
        Baseline::run<Kernel>(work);
    }
}

}  // namespace coder

#endif
