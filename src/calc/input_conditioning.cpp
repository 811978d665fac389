#include "calc/input_conditioning.h"

#include <algorithm>

#include "calc/options.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::row;
using coder::samples;

double countDropouts(samples x) {
    constexpr int window = 32;
    int zerosInARow = 0;
    double count = 0.0;
    for (std::size_t i = 1; i < x.size(); ++i) {
        zerosInARow = x[i] == 0.0 ? zerosInARow + 1 : 0;
        count += zerosInARow >= window ? 1.0 : 0.0;
    }
    return count;
}

/// The samples with the zeros among the first `examined` replaced by the mean of the others.
class Repaired {
public:
    Repaired(samples x, double N) : x_(x) {
        const auto limit = static_cast<std::size_t>(std::max(coder::truncatedToInt(N), 0));
        examined_ = std::min(limit, x.size());
        zeros_ = static_cast<double>(std::count(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(examined_), 0.0));
        const double total = coder::combineVectorElements(x);
        gapMean_ = N != zeros_ ? total / (N - zeros_) : 0.0;
        const double repairedTotal =
            zeros_ == 0.0 ? total : coder::blockedSum(x.size(), [this](std::size_t i) { return (*this)[i]; });
        offset_ = repairedTotal / static_cast<double>(x.size());
    }

    double operator[](std::size_t i) const { return i < examined_ && x_[i] == 0.0 ? gapMean_ : x_[i]; }
    double zeros() const { return zeros_; }
    double offset() const { return offset_; }

private:
    samples x_;
    std::size_t examined_ = 0;
    double zeros_ = 0.0;
    double gapMean_ = 0.0;
    double offset_ = 0.0;
};

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

void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned,
                ConditioningDiagnostics* diagnostics) {
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const RawChannel& channel = raw[phase];
        const Repaired repaired(channel.samples, N);
        const double scale = hardwareScale(source, channel.inputResistance, channel.gain);
        const double offset = repaired.offset();
        row& out = conditioned[phase];
        const std::size_t n = channel.samples.size();
        out.set_size(1, static_cast<int>(n));
        double* const y = out.data();
        for (std::size_t i = 0; i < n; ++i) {
            y[i] = (repaired[i] - offset) * scale * channel.coefficient;
        }
        if (diagnostics != nullptr) {
            diagnostics->zeroCount[phase] = repaired.zeros();
            diagnostics->dropoutCount[phase] = countDropouts(channel.samples);
        }
    }
}

}  // namespace calc_modul_K9_web_ns
