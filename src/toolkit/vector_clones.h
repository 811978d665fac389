#ifndef RT305_4_TOOLKIT_VECTOR_CLONES_H
#define RT305_4_TOOLKIT_VECTOR_CLONES_H

/// Compiles a function for AVX-512, for AVX2 and for any x86-64; the loader takes the widest that the machine has. No
/// multiply-add is fused in any of them, so all give the same bits. Clang 14 has no such dispatch for C++ functions and
/// compiles the last form alone.
#ifdef __clang__
#define RT305_4_VECTOR_CLONES
#else
#define RT305_4_VECTOR_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#endif

#endif
