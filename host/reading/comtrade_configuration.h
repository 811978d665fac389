#ifndef RT305_HOST_READING_COMTRADE_CONFIGURATION_H
#define RT305_HOST_READING_COMTRADE_CONFIGURATION_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// How the samples of a COMTRADE record are written.
enum class SampleForm { ascii, binary, binary32, float32 };

/// The form by its name in any case; nothing for other words.
std::optional<SampleForm> findSampleForm(std::string_view name);
std::string_view nameOf(SampleForm form);

struct AnalogChannel {
    Column column;  // without samples
    double multiplier = 1.0;
    double offset = 0.0;
};

/// A rate and the number of the last sample that was taken with it, counted from the record's first.
struct RateLine {
    double rateHz;
    std::size_t lastSample;
};

/// What the configuration of a COMTRADE record says (IEEE C37.111 of 1991, 1999 or 2013).
struct ComtradeConfiguration {
    std::vector<AnalogChannel> analog;
    std::size_t statusTotal = 0;
    std::vector<RateLine> rates;      // without those of rate 0
    std::size_t announcedLength = 0;  // the last sample by the rate lines
    std::optional<SampleForm> form;
    double secondsPerStamp = 1e-6;
    std::vector<std::pair<std::string, std::string>> facts;
};

/// Reads a configuration in UTF-8. The shape of its lines decides what they mean, whatever year it names; dates are
/// kept as text. Fails, with file and line, on what makes the samples unreadable: channel counts, factors and rates.
ComtradeConfiguration parseComtradeConfiguration(std::string_view text, const std::string& source);

/// Whether a text begins as a configuration does.
bool isComtradeConfiguration(std::string_view text);

}  // namespace rt305

#endif
