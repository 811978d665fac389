#include "plugin/memory.h"

#include <algorithm>
#include <cstdlib>
#include <exception>

void prepareToThrow() {
    [[maybe_unused]] const volatile int uncaught = std::uncaught_exceptions();
}

void keepMemoryMapped(std::uint64_t samplesNumber) {
    constexpr std::uint64_t bytesPerSample = 512;         // the C library keeps twice as much: the old and new texts
    constexpr std::uint64_t largestCounted = 32U << 20U;  // the C library ignores larger blocks
    constexpr std::uint64_t longestKept = 1U << 18U;      // samples; longer records use memory for the call only
    if (samplesNumber <= longestKept) {
        const std::uint64_t size = std::min(samplesNumber * bytesPerSample, largestCounted);
        void* volatile const block = std::malloc(size);  // volatile: so that the compiler keeps the pair
        std::free(block);
    }
}
