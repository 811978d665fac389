#ifndef RT305_HOST_READING_COMTRADE_CONFIGURATION_H
#define RT305_HOST_READING_COMTRADE_CONFIGURATION_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// The data formats of COMTRADE.
enum class SampleForm { ascii, binary, binary32, float32 };

/// Finds a form by its name, in any case.
std::optional<SampleForm> findSampleForm(std::string_view name);
std::string_view nameOf(SampleForm form);

struct AnalogChannel {
    Column column;  // without samples
    double multiplier = 1.0;
    double offset = 0.0;
};

/// A sampling rate and the number, from 1, of the last sample taken at it.
struct RateLine {
    double rateHz;
    std::size_t lastSample;
};

/// The configuration of a COMTRADE record (IEEE C37.111 of 1991, 1999 or 2013).
struct ComtradeConfiguration {
    std::vector<AnalogChannel> analog;
    std::size_t statusTotal = 0;
    std::vector<RateLine> rates;      // empty when the time stamps give the rate
    std::size_t announcedLength = 0;  // last sample in the rate lines
    std::optional<SampleForm> form;
    double secondsPerStamp = 1e-6;
    double nominalHz = 0.0;  // of the grid; 0: not stated
    std::vector<std::pair<std::string, std::string>> facts;
    std::vector<Remark> warnings;
};

/// Reads a configuration in UTF-8. The number of fields in a line decides how it is read, not the revision year. Dates
/// become those of ISO 8601. Fails, with file and line, on errors that make the samples unreadable: channel counts,
/// factors, rates.
ComtradeConfiguration parseComtradeConfiguration(std::string_view text, const std::string& source);

/// Whether a text begins like a configuration.
bool isComtradeConfiguration(std::string_view text);

}  // namespace rt305

#endif
