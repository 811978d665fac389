#ifndef RT305_HOST_BASE_TIME_STAMP_H
#define RT305_HOST_BASE_TIME_STAMP_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace rt305 {

/// "2020-02-24 18:15:21.499998208" in ns since 1970; without a date, since midnight. Up to nine decimals; the date's
/// parts are separated by "-", "/" or ".", the year first or last (then the day before the month where both can be).
/// Whole numbers, because a double of seconds since 1970 resolves 0.2 us only; in 64 bits of them go the years 1900 to
/// 2099 and any difference between them.
std::optional<std::int64_t> parseTimeStamp(std::string_view text);

}  // namespace rt305

#endif
