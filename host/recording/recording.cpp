#include "recording/recording.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "base/failure.h"
#include "base/text.h"
#include "base/units.h"

namespace rt305 {

namespace {

constexpr double sameRateShare = 0.99;    // rates of at least this share of the highest count as the highest
constexpr std::size_t fewestClipped = 3;  // equal samples in a row at an extreme
constexpr double sharpStep = 2.0;         // of the smallest step in the column

double rateBetween(const Recording& recording, std::size_t first, std::size_t count) {
    return static_cast<double>(count - 1) / (recording.seconds[first + count - 1] - recording.seconds[first]);
}

/// The smallest and the largest sample; NaN is ignored.
std::pair<double, double> rangeOf(const std::vector<double>& samples) {
    double smallest = std::numeric_limits<double>::infinity();
    double largest = -smallest;
    for (const double x : samples) {
        smallest = std::fmin(smallest, x);
        largest = std::fmax(largest, x);
    }
    return {smallest, largest};
}

/// The smallest nonzero difference between neighbouring samples; infinity when there is none.
double smallestStepIn(const std::vector<double>& samples) {
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 1; k < samples.size(); ++k) {
        if (const double step = std::fabs(samples[k] - samples[k - 1]); step > 0.0) {
            smallest = std::min(smallest, step);
        }
    }
    return smallest;
}

}  // namespace

void Recording::setRate(double rateHz, std::string origin) {
    seconds.resize(length);
    for (std::size_t k = 0; k < length; ++k) {
        seconds[k] = static_cast<double>(k) / rateHz;
    }
    segments = {{0, length, rateHz}};
    rateOrigin = std::move(origin);
}

std::size_t mainSegment(const Recording& recording) {
    const auto& segments = recording.segments;
    const double highest = std::max_element(segments.begin(), segments.end(), [](const Segment& a, const Segment& b) {
                               return a.rateHz < b.rateHz;
                           })->rateHz;
    const auto countAtHighest = [highest](const Segment& s) {
        return s.rateHz >= sameRateShare * highest ? s.count : 0;
    };
    const auto longest = std::max_element(segments.begin(), segments.end(), [&](const Segment& a, const Segment& b) {
        return countAtHighest(a) < countAtHighest(b);
    });
    return static_cast<std::size_t>(longest - segments.begin());
}

Segment partOf(const Recording& recording, const Segment& segment, double startSeconds, double durationSeconds) {
    const double skipped = std::round(startSeconds * segment.rateHz);
    const auto left = static_cast<double>(segment.count) - skipped;
    const double wanted = durationSeconds == 0.0 ? left : std::round(durationSeconds * segment.rateHz);
    if (!(skipped >= 0.0 && left >= 1.0 && wanted >= 1.0 && wanted <= left)) {
        failInput(recording.source + ": the part from " + formatNumber(startSeconds) + " s on" +
                  (durationSeconds == 0.0 ? "" : ", " + formatNumber(durationSeconds) + " s long,") +
                  " is not inside the segment, which lasts " +
                  formatNumber(static_cast<double>(segment.count) / segment.rateHz) + " s");
    }
    Segment part{segment.first + static_cast<std::size_t>(skipped), static_cast<std::size_t>(wanted), segment.rateHz};
    if (part.count < segment.count && part.count > 1) {
        part.rateHz = rateBetween(recording, part.first, part.count);
    }
    return part;
}

std::size_t countClipped(const std::vector<double>& samples) {
    const auto [smallest, largest] = rangeOf(samples);
    const double sharp = sharpStep * smallestStepIn(samples);
    const auto isSharp = [&](std::size_t k) { return std::fabs(samples[k] - samples[k - 1]) > sharp; };
    std::size_t clipped = 0;
    for (std::size_t first = 0, end = 0; first < samples.size(); first = std::max(end, first + 1)) {
        for (end = first; end < samples.size() && samples[end] == samples[first];) {
            ++end;
        }
        const bool isExtreme = samples[first] == smallest || samples[first] == largest;
        const bool isInside = first > 0 && end < samples.size();
        if (isExtreme && isInside && end - first >= fewestClipped && (isSharp(first) || isSharp(end))) {
            clipped += end - first;
        }
    }
    return clipped;
}

std::size_t countMissing(const std::vector<double>& samples) {
    return static_cast<std::size_t>(
        std::count_if(samples.begin(), samples.end(), [](double x) { return std::isnan(x); }));
}

double largestMagnitude(const std::vector<double>& samples) {
    double largest = 0.0;
    for (const double x : samples) {
        largest = std::fmax(largest, std::fabs(x));
    }
    return largest;
}

std::vector<double> samplesInBaseUnit(const Column& column) {
    std::vector<double> samples = column.samples;
    if (const double factor = unitOf(column.unit).factor; factor != 1.0) {
        std::transform(samples.begin(), samples.end(), samples.begin(), [factor](double x) { return x * factor; });
    }
    return samples;
}

}  // namespace rt305
