#include "recording/recording.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>

#include "base/failure.h"
#include "base/sum.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"

namespace rt305 {

namespace {

constexpr double sameRateShare = 0.99;    // rates of at least this share of the highest count as the highest
constexpr std::size_t fewestClipped = 3;  // equal samples in a row at an extreme
constexpr double sharpStep = 2.0;         // of the smallest step in the column

constexpr double samePeriod = 1e-9;      // relative
constexpr std::size_t fewestStamps = 5;  // that repeat, for a line through their middles

struct Point {
    double row;
    double seconds;
};

template <class PointAt>
EvenTimes lineThrough(std::size_t total, PointAt pointAt) {
    Point mean{0.0, 0.0};
    for (std::size_t i = 0; i < total; ++i) {
        mean.row += pointAt(i).row / static_cast<double>(total);
        mean.seconds += pointAt(i).seconds / static_cast<double>(total);
    }
    double product = 0.0;
    double square = 0.0;
    for (std::size_t i = 0; i < total; ++i) {
        const double row = pointAt(i).row - mean.row;
        product += row * (pointAt(i).seconds - mean.seconds);
        square += row * row;
    }
    const Point last = pointAt(total - 1);
    const double meanPeriod = (last.seconds - pointAt(0).seconds) / (last.row - pointAt(0).row);
    double period = product / square;
    if (std::fabs(period - meanPeriod) <= samePeriod * meanPeriod) {
        period = meanPeriod;  // without the rounding errors of the sums
    }
    return {mean.seconds - period * mean.row, period};
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

std::string Recording::fact(std::string_view label) const {
    const auto found = std::find_if(facts.begin(), facts.end(), [label](const auto& f) { return f.first == label; });
    return found == facts.end() ? "" : found->second;
}

void Recording::setRate(double rateHz, std::string origin) {
    seconds.resize(length);
    for (std::size_t k = 0; k < length; ++k) {
        seconds[k] = static_cast<double>(k) / rateHz;
    }
    segments = {{0, length, rateHz}};
    rateOrigin = std::move(origin);
}

std::string baseNameOf(const std::string& path) {
    return path == "-" ? "stdin" : std::filesystem::path(path).filename().string();
}

std::string withoutFolders(std::string message, const Recording& recording) {
    for (const auto& [file, checksum] : recording.files) {
        if (const std::size_t at = message.find(file); at != std::string::npos) {
            message.replace(at, file.size(), baseNameOf(file));
        }
    }
    return message;
}

EvenTimes evenTimesOf(const std::vector<double>& seconds, std::size_t first, std::size_t count) {
    assert(count >= 2);
    const auto isLastOfStamp = [&](std::size_t k) {
        return k + 1 == count || seconds[first + k + 1] != seconds[first + k];
    };
    std::size_t stamps = 0;
    for (std::size_t k = 0; k < count; ++k) {
        stamps += isLastOfStamp(k) ? 1 : 0;
    }
    if (stamps < fewestStamps || stamps > count / 2) {
        return lineThrough(count, [&](std::size_t k) { return Point{static_cast<double>(k), seconds[first + k]}; });
    }
    std::vector<Point> middles;
    for (std::size_t k = 0, start = 0; k < count; ++k) {
        if (isLastOfStamp(k)) {
            middles.push_back({static_cast<double>(start + k) / 2.0, seconds[first + k]});
            start = k + 1;
        }
    }
    return lineThrough(stamps - 2, [&](std::size_t i) { return middles[i + 1]; });
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

std::optional<std::int64_t> clockOf(const Recording& recording, std::optional<std::size_t> segment) {
    const auto start = parseTimeStamp(recording.fact("Start"));
    if (!start || recording.segments.empty() || recording.seconds.empty()) {
        return start;
    }
    const std::size_t first = recording.segments.at(segment ? *segment - 1 : mainSegment(recording)).first;
    return *start + std::llround((recording.seconds[first] - recording.seconds[0]) * 1e9);
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
        const double period = evenTimesOf(recording.seconds, part.first, part.count).period;
        part.rateHz = period > 0.0 ? 1.0 / period : segment.rateHz;
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

std::size_t countMissing(std::span<const double> samples) {
    return static_cast<std::size_t>(
        std::count_if(samples.begin(), samples.end(), [](double x) { return std::isnan(x); }));
}

double meanOf(const std::vector<double>& samples) {
    const double sum = sumOf(samples.size(), [&](std::size_t k) { return std::isnan(samples[k]) ? 0.0 : samples[k]; });
    return sum / static_cast<double>(samples.size() - countMissing(samples));
}

double largestMagnitude(const std::vector<double>& samples) {
    double largest = 0.0;
    for (const double x : samples) {
        largest = std::fmax(largest, std::fabs(x));
    }
    return largest;
}

void convertToBaseUnit(std::vector<double>& samples, const std::string& unit) {
    if (const double factor = unitOf(unit).factor; factor != 1.0) {
        std::transform(samples.begin(), samples.end(), samples.begin(), [factor](double x) { return x * factor; });
    }
}

void keepPart(std::vector<double>& samples, std::size_t first, std::size_t count) {
    assert(first + count <= samples.size());
    samples.erase(samples.begin() + static_cast<std::ptrdiff_t>(first + count), samples.end());
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(first));
}

}  // namespace rt305
