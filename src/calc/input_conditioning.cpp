#include "calc/input_conditioning.h"

#include <algorithm>

#include "calc/options.h"
#include "toolkit/scalar.h"
#include "toolkit/vector_clones.h"

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

RT305_4_VECTOR_CLONES double countZeros(const double* x, std::size_t n) {
    std::size_t zeros = 0;
    for (std::size_t i = 0; i < n; ++i) {
        zeros += x[i] == 0.0 ? 1 : 0;
    }
    return static_cast<double>(zeros);
}

/// out = x with its zeros replaced
RT305_4_VECTOR_CLONES void replaceZeros(const double* x, std::size_t n, double replacement, double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = x[i] == 0.0 ? replacement : x[i];
    }
}

/// out = (x - offset) scale coefficient; out may be x.
RT305_4_VECTOR_CLONES void calibrate(const double* x, std::size_t n, double offset, double scale, double coefficient,
                                     double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = (x[i] - offset) * scale * coefficient;
    }
}

/// Conditions one channel and returns how many zeros it had among the first N samples.
double condition(const RawChannel& channel, double N, std::string_view source, row& out) {
    samples x = channel.samples;
    const std::size_t n = x.size();
    out.set_size(1, static_cast<int>(n));
    const std::size_t examined = std::min(n, static_cast<std::size_t>(std::max(coder::truncatedToInt(N), 0)));
    const auto unexamined = x.begin() + static_cast<std::ptrdiff_t>(examined);
    const double zeros = countZeros(x.data(), examined);
    double total = coder::combineVectorElements(x);
    if (zeros > 0.0) {
        const double gapMean = N != zeros ? total / (N - zeros) : 0.0;
        replaceZeros(x.data(), examined, gapMean, out.data());
        std::copy(unexamined, x.end(), out.data() + examined);
        x = out;
        total = coder::combineVectorElements(x);
    }
    calibrate(x.data(), n, total / static_cast<double>(n), hardwareScale(source, channel.inputResistance, channel.gain),
              channel.coefficient, out.data());
    return zeros;
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

void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned,
                ConditioningDiagnostics* diagnostics) {
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const double zeros = condition(raw[phase], N, source, conditioned[phase]);
        if (diagnostics != nullptr) {
            diagnostics->zeroCount[phase] = zeros;
            diagnostics->dropoutCount[phase] = countDropouts(raw[phase].samples);
        }
    }
}

}  // namespace calc_modul_K9_web_ns
