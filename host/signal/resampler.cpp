#include "signal/resampler.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "signal/gap_filling.h"
#include "signal/linear_prediction.h"

namespace rt305 {

namespace {

constexpr double filterReach = 256.0;  // samples at the lower rate on which the filter depends, on either side
constexpr std::size_t leadsTried = 1000;
constexpr double sameOffset = 1e-9;           // of a new period; the shorter of two equally good leads is taken
constexpr std::size_t longestLead = 16;       // times the resampled samples, where these are few
constexpr std::size_t blockLength = 4096;     // samples given to the converter at once
constexpr std::size_t converterMemory = 4e6;  // bytes; it takes up to 1.1 MB for blocks of this length

/// `count` samples from `first` on, with `lead` more on either side: those of x, and predicted ones beyond its ends.
std::vector<double> withSurroundings(const std::vector<double>& x, std::size_t first, std::size_t count,
                                     std::size_t lead) {
    const std::size_t before = lead - std::min(lead, first);
    const std::size_t left = x.size() - first - count;
    const std::size_t after = lead - std::min(lead, left);
    std::vector<double> y;
    if (before > 0) {
        y = predicted({x.rbegin(), x.rend()}, before);
        std::reverse(y.begin(), y.end());
    }
    const auto at = [&x](std::size_t k) { return x.begin() + static_cast<std::ptrdiff_t>(k); };
    y.insert(y.end(), at(first + before - lead), at(first + count + lead - after));
    const auto tail = after > 0 ? predicted(x, after) : std::vector<double>{};
    y.insert(y.end(), tail.begin(), tail.end());
    return y;
}

/// Sets the samples between the positions `from` and `to`, and at least the nearest one, to NaN.
void markGap(std::vector<double>& y, double from, double to) {
    const double last = static_cast<double>(y.size()) - 1.0;
    const double nearest = std::round((from + to) / 2.0);
    const double begin = std::clamp(std::min(std::ceil(from), nearest), 0.0, last);
    const double end = std::clamp(std::max(std::floor(to), nearest), 0.0, last);
    std::fill(y.begin() + static_cast<std::ptrdiff_t>(begin), y.begin() + static_cast<std::ptrdiff_t>(end) + 1,
              std::numeric_limits<double>::quiet_NaN());
}

/// The number of samples to put in front of `count` samples so that the first new sample is as close as possible to the
/// first old one.
std::size_t leadFor(double ratio, std::size_t count) {
    const double most = std::max(filterReach, static_cast<double>(longestLead * count));
    const auto least = static_cast<std::size_t>(std::ceil(std::min(filterReach * std::max(1.0, 1.0 / ratio), most)));
    std::size_t best = least;
    double smallest = 1.0;
    for (std::size_t lead = least; lead < least + leadsTried; ++lead) {
        const double place = static_cast<double>(lead) * ratio;
        if (const double off = std::fabs(place - std::round(place)); off < smallest - sameOffset) {
            smallest = off;
            best = lead;
        }
    }
    return best;
}

using Converter = std::unique_ptr<std::remove_pointer_t<soxr_t>, decltype(&soxr_delete)>;

/// The converter does not check its allocations, so its memory is allocated and freed once before.
Converter openConverter(double fromHz, double toHz) {
    ::operator delete(::operator new(converterMemory));
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT64_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_32_BITQ, SOXR_HI_PREC_CLOCK);
    soxr_error_t error = nullptr;
    Converter converter(soxr_create(fromHz, toHz, 1, &error, &io, &quality, nullptr), soxr_delete);
    if (!converter) {
        throw std::bad_alloc();
    }
    return converter;
}

std::vector<double> converted(const std::vector<double>& x, double fromHz, double toHz) {
    const auto outTotal = static_cast<std::size_t>(static_cast<double>(x.size()) * toHz / fromHz) + 1;
    std::vector<double> y(outTotal);
    const Converter converter = openConverter(fromHz, toHz);
    std::size_t used = 0;
    std::size_t made = 0;
    for (bool isAtEnd = false; !isAtEnd && made < y.size();) {
        const std::size_t left = std::min(x.size() - used, blockLength);
        const std::size_t room = std::min(y.size() - made, blockLength);
        std::size_t taken = 0;
        std::size_t given = 0;
        // without input it gives the samples that are still in its filters
        if (soxr_process(converter.get(), left > 0 ? x.data() + used : nullptr, left, &taken, y.data() + made, room,
                         &given) != nullptr) {
            throw std::bad_alloc();  // the arguments are valid, so memory is the only possible reason
        }
        used += taken;
        made += given;
        isAtEnd = left == 0 && given == 0;
    }
    y.resize(made);
    return y;
}

}  // namespace

std::vector<double> resampled(const std::vector<double>& samples, std::size_t first, std::size_t count, double fromHz,
                              double toHz) {
    const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(first);
    if (fromHz == toHz) {
        return {begin, begin + static_cast<std::ptrdiff_t>(count)};
    }
    const double ratio = toHz / fromHz;
    const std::size_t lead = leadFor(ratio, count);
    const auto x = withSurroundings(bridged(samples), first, count, lead);
    std::vector<double> y = converted(x, fromHz, toHz);
    const auto skipped = static_cast<std::ptrdiff_t>(std::llround(static_cast<double>(lead) * ratio));
    const auto wanted = static_cast<std::size_t>(std::llround(static_cast<double>(count) * ratio));
    y.erase(y.begin(), y.begin() + skipped);
    y.resize(wanted);
    if (y.empty()) {
        return y;
    }
    for (std::size_t k = 0; k < count; ++k) {
        if (std::isnan(samples[first + k])) {
            markGap(y, (static_cast<double>(k) - 0.5) * ratio, (static_cast<double>(k) + 0.5) * ratio);
        }
    }
    return y;
}

}  // namespace rt305
