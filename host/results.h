#ifndef RT305_HOST_RESULTS_H
#define RT305_HOST_RESULTS_H

#include <string>
#include <vector>

namespace rt305 {

/// One named value of a result text; NaN where the text has null.
struct NamedValue {
    std::string name;
    double value;
    std::string unit;
};

/// The statistics of one channel's signal.
struct SignalStatistics {
    std::string channel;
    std::vector<NamedValue> statistics;
};

/// Read the library's texts. Fail when a text is not of the documented shape.
std::vector<NamedValue> readParameters(const std::string& text);
std::vector<SignalStatistics> readSignals(const std::string& text);

}  // namespace rt305

#endif
