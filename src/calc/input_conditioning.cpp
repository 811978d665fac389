#include "calc/input_conditioning.h"

#include <algorithm>
#include <cassert>

#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace calc_modul_K9_web_ns {
namespace {

ALWAYS_INLINE inline double countZeros(const double* x, std::size_t n) {
    std::size_t zeros = 0;
    for (std::size_t i = 0; i < n; ++i) {
        zeros += x[i] == 0.0 ? 1 : 0;
    }
    return static_cast<double>(zeros);
}

/// out = (x - offset) scale coefficient
ALWAYS_INLINE inline void calibrate(const double* x, std::size_t n, double offset, double scale, double coefficient,
                                    double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = (x[i] - offset) * scale * coefficient;
    }
}

/// The same for x with its zeros replaced.
ALWAYS_INLINE inline void repairAndCalibrate(const double* x, std::size_t n, double replacement, double offset,
                                             double scale, double coefficient, double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = ((x[i] == 0.0 ? replacement : x[i]) - offset) * scale * coefficient;
    }
}

}  // namespace

double hardwareScale(std::string_view source, double inputResistance, double gain) {
    if (source != option::sourceReal) {
        return 1.0;
    }
    const double attenuation = 1.0 + (19.53125 * gain + 35.0) / 1000.0;
    if (inputResistance == 0.0) {
        return 0.0049417429956896556 / attenuation;
    }
    if (inputResistance == 24.9 || inputResistance == 127.0) {
        return 1.0 / inputResistance * 0.000732421875 * 6.74712643678161 / attenuation;
    }
    return 1.0;
}

ConditionedChannel::ConditionedChannel(const RawChannel& raw, double total, double N, std::string_view source)
    : x_(raw.samples), scale_(hardwareScale(source, raw.inputResistance, raw.gain)), coefficient_(raw.coefficient) {
    const std::size_t examined = std::min(x_.size(), static_cast<std::size_t>(std::max(coder::truncatedToInt(N), 0)));
    const double zeros = coder::vectorized<countZeros>(x_.data(), examined);
    if (zeros > 0.0) {
        examined_ = examined;
        replacement_ = N != zeros ? total / (N - zeros) : 0.0;
        total = coder::blockedSum(
            x_.size(), [&, x = x_.data()](std::size_t i) { return x[i] == 0.0 && i < examined ? replacement_ : x[i]; });
    }
    offset_ = total / static_cast<double>(x_.size());
}

void ConditionedChannel::write(std::size_t from, std::size_t count, double* out) const {
    if (x_.size() == 1 && from + count > 1) {
        double only = 0.0;
        write(0, 1, &only);
        std::fill_n(out, count, only);
        return;
    }
    assert(from + count <= x_.size());
    const std::size_t repaired = std::clamp(examined_, from, from + count) - from;
    const double* const x = x_.data() + from;
    if (repaired > 0) {
        coder::vectorized<repairAndCalibrate>(x, repaired, replacement_, offset_, scale_, coefficient_, out);
    }
    coder::vectorized<calibrate>(x + repaired, count - repaired, offset_, scale_, coefficient_, out + repaired);
}

ConditionedSet::ConditionedSet(const ChannelSet& set)
    : channels_{ConditionedChannel(set[0]), ConditionedChannel(set[1]), ConditionedChannel(set[2])} {}

ConditionedSet::ConditionedSet(const RawChannelSet& raw, double N, std::string_view source) {
    const std::array<double, coder::phases> totals =
        coder::combineVectorElements<coder::phases>({raw[0].samples, raw[1].samples, raw[2].samples});
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        channels_[phase] = ConditionedChannel(raw[phase], totals[phase], N, source);
    }
}

std::size_t ConditionedSet::length(std::size_t phase) const {
    const auto lengthOf = [&](std::size_t other) { return static_cast<int>(channels_[other].size()); };
    return static_cast<std::size_t>(rebuilt_ && rebuilt_->phase == phase
                                        ? coder::expandedLength(lengthOf(rebuilt_->first), lengthOf(rebuilt_->second))
                                        : lengthOf(phase));
}

void ConditionedSet::write(std::size_t phase, std::size_t from, std::size_t count, double* out) const {
    if (rebuilt_ && rebuilt_->phase == phase) {
        return writeCombined(rebuilt_->first, rebuilt_->second, from, count, out,
                             [](double a, double b) { return -(a + b); });
    }
    channels_[phase].write(from, count, out);
}

coder::row ConditionedSet::row(std::size_t phase) const {
    coder::row y;
    y.set_size(1, static_cast<int>(length(phase)));
    write(phase, y.data());
    return y;
}

void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned) {
    conditioned = ConditionedSet(raw, N, source).rows();
}

}  // namespace calc_modul_K9_web_ns
