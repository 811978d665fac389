#include "calc/spectrum.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "toolkit/level.h"
#include "toolkit/peaks.h"
#include "toolkit/ranges.h"
#include "toolkit/windows.h"
#include "toolkit/zoom_spectrum.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::column;
using coder::samples;

column windowOf(std::string_view name, int n) {
    column window;
    if (name == option::windowHann) {
        coder::hanning(n, window);
    } else if (name == option::windowHamming) {
        coder::hamming(n, window);
    } else if (name == option::windowKaiser) {
        coder::kaiser(n, window);
    } else {
        window.set_size(n);
        std::fill(window.begin(), window.end(), 1.0);
    }
    return window;
}

/// "fft_mode_1" pads by a large factor and cuts the row at the limit of the band.
bool isCut(const SpectrumOptions& options) {
    return options.transform == option::transformMode1;
}

int paddingOf(const ChannelKind& kind, const SpectrumOptions& options) {
    return isCut(options) ? kind.longPadding : 2;
}

/// Computes the wanted bins of the spectra of signals of n samples, as rows of amplitudes or levels.
class SpectrumRows {
public:
    SpectrumRows(int n, const SpectrumBand& band, const ChannelKind& kind, const SpectrumRequest& request)
        : N_(request.N),
          logarithmic_(request.options.scale == option::scaleLevel),
          zoom_(n, paddingOf(kind, request.options), windowOf(request.options.window, n)),
          kept_(zoom_.bins()) {
        const int factor = paddingOf(kind, request.options);
        if (isCut(request.options)) {
            const double last = std::floor(band.limit * factor * request.N / band.rate);
            kept_ = last >= 0.0 ? static_cast<int>(std::min(last, kept_ - 1.0)) + 1 : 1;
        }
        std::vector<double> axis;
        coder::eml_float_colon(0.0, band.rate / (static_cast<double>(n) * factor), band.rate / 2.0, axis, kept_);
        frequencies_ = std::make_shared<const std::vector<double>>(std::move(axis));
    }

    /// The frequencies of the bins in Hz.
    const coder::SharedRow& frequencies() const { return frequencies_; }

    coder::SharedRow rowOf(samples x) {
        assert(kept_ >= 1 && kept_ <= zoom_.bins());
        zoom_.load(x);
        // Levels need a second bin: bin 0 takes its value.
        const int computed = std::min(std::max(kept_, 2), zoom_.bins());
        std::vector<double> result(static_cast<std::size_t>(computed));
        zoom_.magnitudes(computed, result.data());
        if (logarithmic_) {
            coder::toLevels(result, zoom_.largest(result));
            if (computed > 1) {
                result[0] = result[1];
            }
        } else {
            std::transform(result.begin(), result.end(), result.begin(),
                           [N = N_](double magnitude) { return 2.0 * magnitude / N; });
        }
        result.resize(static_cast<std::size_t>(kept_));
        return std::make_shared<const std::vector<double>>(std::move(result));
    }

private:
    double N_;
    bool logarithmic_;
    coder::ZoomSpectrum zoom_;
    int kept_;
    coder::SharedRow frequencies_;
};

void fillMaxima(samples spectrum, samples frequencies, const SpectrumRequest& request, coder::e_table& out) {
    constexpr int mostByCount = 20;
    const std::vector<coder::Peak> peaks = request.options.peaksByCriterion
                                               ? coder::peaksByCriterion(spectrum, request.criterion, request.peaks)
                                               : coder::highestPeaks(spectrum, std::min(request.peaks, mostByCount));
    const int count = static_cast<int>(peaks.size());
    out.rows = count;
    out.frequencies.set_size(count);
    out.magnitudes.set_size(count);
    for (int i = 0; i < count; ++i) {
        const coder::Peak& peak = peaks[static_cast<std::size_t>(i)];
        const std::size_t bin = static_cast<std::size_t>(peak.position) - 1;
        out.frequencies[i] = bin < frequencies.size() ? frequencies[bin] : rtNaN;
        out.magnitudes[i] = peak.value;
    }
}

}  // namespace

void measureSpectrum(const ConditionedSet& set, const ChannelKind& kind, const SpectrumBand& band,
                     const SpectrumRequest& request, coder::f_table& out) {
    out.prefill(kind);
    out.verticalAxis.assignAll(request.options.scale == option::scaleLevel ? "L,dB" : kind.spectrumAxisLabel);
    const std::size_t n = set.length(0);
    if (n == 0 || !set.haveOneLength() || static_cast<double>(n) != request.N) {
        return;
    }
    SpectrumRows rows(static_cast<int>(n), band, kind, request);
    out.frequencies = rows.frequencies();
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        out.spectra[phase] = rows.rowOf(set.row(phase));
        fillMaxima(*out.spectra[phase], *out.frequencies, request, out.maxima[phase]);
    }
}

}  // namespace calc_modul_K9_web_ns
