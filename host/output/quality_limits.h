#ifndef RT305_HOST_OUTPUT_QUALITY_LIMITS_H
#define RT305_HOST_OUTPUT_QUALITY_LIMITS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quality/results.h"

namespace rt305 {

/// One row of a table of limits: so many percent of the intervals must have the quantity inside the limits.
struct Limit {
    std::string quantity;
    double percent;
    std::optional<double> lower, upper;  // in the unit of limitQuantities()
};

struct LimitSet {
    std::string name;
    double days = 0.0;  // that a verdict needs; 0: any recording will do
    std::vector<Limit> limits{};
};

/// The quantities that a limit can name, with units, for messages and pages.
std::string limitQuantities();

/// Reads a table of limits: "name,TEXT" and "days,NUMBER", then rows of quantity, percent, lower, upper; a limit may be
/// empty. Lines that are empty or begin with # are skipped. Fails with the line on anything else.
LimitSet parseLimits(std::string_view text, const std::string& source);

/// The content of a file, and the table in it.
struct LimitFile {
    std::string text;
    LimitSet limits;
};
LimitFile readLimits(const std::string& file);

/// How a recording keeps a limit, in its worst channel.
struct Verdict {
    Limit limit;
    std::string channel;        // the key of the quantity that has most values outside
    std::size_t intervals = 0;  // with a value, and not flagged
    std::size_t flagged = 0;    // with a value
    double insidePercent = 0.0;
    bool isKept() const { return intervals > 0 && insidePercent >= limit.percent; }
};

/// One verdict for each limit. Limits of frequency judge the 10 s values, the others those of 10 minutes; flagged
/// intervals are left out.
std::vector<Verdict> judge(const LimitSet& set, const QualityResults& results);

}  // namespace rt305

#endif
