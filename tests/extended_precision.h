#ifndef RT305_4_TESTS_EXTENDED_PRECISION_H
#define RT305_4_TESTS_EXTENDED_PRECISION_H

#include <gtest/gtest.h>

#include <limits>

/// Skips a test whose reference needs long doubles of full precision: valgrind computes them as doubles.
#define REQUIRE_EXTENDED_PRECISION()                                                                        \
    if (const volatile long double one = 1.0L; one + std::numeric_limits<long double>::epsilon() == one) {  \
        GTEST_SKIP() << "the reference needs long doubles of full precision, which valgrind does not have"; \
    }                                                                                                       \
    static_assert(true)

#endif
