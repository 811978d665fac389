#include "calc/input_conditioning.h"

#include <algorithm>

#include "calc/options.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"
#include "toolkit/sums.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::row;
using coder::samples;

ALWAYS_INLINE inline double countZeros(const double* x, std::size_t n) {
    std::size_t zeros = 0;
    for (std::size_t i = 0; i < n; ++i) {
        zeros += x[i] == 0.0 ? 1 : 0;
    }
    return static_cast<double>(zeros);
}

/// out = x with its zeros replaced.
ALWAYS_INLINE inline void replaceZeros(const double* x, std::size_t n, double replacement, double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = x[i] == 0.0 ? replacement : x[i];
    }
}

/// out = (x - offset) scale coefficient; out may be x.
ALWAYS_INLINE inline void calibrate(const double* x, std::size_t n, double offset, double scale, double coefficient,
                                    double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = (x[i] - offset) * scale * coefficient;
    }
}

/// total: the sum of the samples.
void condition(const RawChannel& channel, double total, double N, std::string_view source, row& out) {
    samples x = channel.samples;
    const std::size_t n = x.size();
    out.set_size(1, static_cast<int>(n));
    const std::size_t examined = std::min(n, static_cast<std::size_t>(std::max(coder::truncatedToInt(N), 0)));
    const auto unexamined = x.begin() + static_cast<std::ptrdiff_t>(examined);
    const double zeros = coder::vectorized<countZeros>(x.data(), examined);
    if (zeros > 0.0) {
        const double gapMean = N != zeros ? total / (N - zeros) : 0.0;
        coder::vectorized<replaceZeros>(x.data(), examined, gapMean, out.data());
        std::copy(unexamined, x.end(), out.data() + examined);
        x = out;
        total = coder::combineVectorElements(x);
    }
    const double scale = hardwareScale(source, channel.inputResistance, channel.gain);
    coder::vectorized<calibrate>(x.data(), n, total / static_cast<double>(n), scale, channel.coefficient, out.data());
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

void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned) {
    const std::array<double, coder::phases> totals =
        coder::combineVectorElements<coder::phases>({raw[0].samples, raw[1].samples, raw[2].samples});
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        condition(raw[phase], totals[phase], N, source, conditioned[phase]);
    }
}

}  // namespace calc_modul_K9_web_ns
