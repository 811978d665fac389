#ifndef RT305_HOST_BASE_TIME_STAMP_H
#define RT305_HOST_BASE_TIME_STAMP_H

#include <cstdint>
#include <optional>
#include <string>
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

/// A time stamp with a date, in ns since 1970, by ISO 8601: "2020-02-24T18:15:21.499998208", without zeros at the end
/// of its decimals. Empty without a date.
std::string isoTime(std::int64_t stamp);

/// A date and time of a COMTRADE record by ISO 8601, with the decimals of the file: "02/12/11,9:41:11.081315" is
/// "2011-02-12T09:41:11.081315". With a year of two digits (1991) the month comes first, with one of four (since 1999)
/// the day, unless only the other order gives a valid date. Years below 70 are of this century. A date of zeros is
/// not known and gives an empty text. Another text is
/// unchanged.
std::string isoTimeOfComtrade(std::string_view text);

}  // namespace rt305

#endif
