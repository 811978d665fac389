#ifndef RT305_HOST_BASE_LIMITS_H
#define RT305_HOST_BASE_LIMITS_H

#include <cstddef>

namespace rt305 {

/// Limits on recordings. With them, time and memory depend on the bytes of a file and not on the numbers in it.

inline constexpr std::size_t largestFile = std::size_t{1} << 31;    // bytes
inline constexpr std::size_t largestStream = std::size_t{1} << 30;  // bytes of stdin or a pipe, which may be endless
inline constexpr std::size_t mostColumns = 10000;
inline constexpr std::size_t longestName = 1000;  // bytes of a name, unit or fact; the rest is cut off
inline constexpr std::size_t longestNumberText = 1000;
inline constexpr double lowestRateHz = 1.0;
inline constexpr double highestRateHz = 1e9;
inline constexpr double rateTolerance = 1e-6;  // relative, of these two: rounded times

/// The most samples, in all channels together, that compressed content of this size may expand to.
constexpr std::size_t mostSamplesIn(std::size_t bytes) {
    return 1'000'000 + 32 * bytes;
}

}  // namespace rt305

#endif
