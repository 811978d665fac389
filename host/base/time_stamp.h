#ifndef RT305_HOST_BASE_TIME_STAMP_H
#define RT305_HOST_BASE_TIME_STAMP_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace rt305 {

/// Parses a time stamp such as "2020-02-24 18:15:21.499998208" into ns since 1970, or since midnight when it has no
/// date. At most nine decimals. The parts of the date are separated by "-", "/" or "."; the year comes first or last,
/// and in the second case the day comes before the month unless only the other order gives a valid date. Years: 1900 to
/// 2099. The time may end with an offset from UTC ("Z", "+01:00", "-0530"), which is subtracted, or with "AM" or "PM";
/// then the month comes before the day where both orders are possible.
///
/// Integers, because seconds since 1970 in a double have a resolution of only 0.2 us.
std::optional<std::int64_t> parseTimeStamp(std::string_view text);

}  // namespace rt305

#endif
