#ifndef RT305_4_FUZZ_REQUIRE_H
#define RT305_4_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the program with a message when an invariant does not hold; the fuzzer then keeps the input.
inline void require(bool holds, const char* invariant, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (!holds) {
        std::fprintf(stderr, "%s:%d: violated: %s\n", file, line, invariant);
        std::abort();
    }
}

}  // namespace fuzz

#endif
