#include "calc/spectrum.h"

#include <algorithm>
#include <cmath>

#include "toolkit/level.h"
#include "toolkit/peaks.h"
#include "toolkit/reductions.h"
#include "toolkit/scalar.h"
#include "toolkit/windows.h"
#include "toolkit/zoom_spectrum.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::column;
using coder::row;
using coder::samples;

/// Where the sample rate comes from and how far a spectrum is kept, both in Hz.
struct Form {
    double rate;
    double limit;
};
constexpr Form form500{500.0, 250.0};
constexpr Form form10000{10000.0, 1000.0};
Form formAt(double rate) {
    return {rate, rate == 500.0 ? 250.0 : 1000.0};
}

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

/// "fft_mode_1" pads far and cuts the row at the form's limit.
bool isCut(const SpectrumOptions& options) {
    return options.transform == option::transformMode1;
}

int paddingOf(const ChannelKind& kind, const SpectrumOptions& options) {
    return isCut(options) ? kind.longPadding : 2;
}

/// The first bins of the spectra of one record length, as rows of amplitudes or levels.
class SpectrumRows {
public:
    SpectrumRows(int n, const Form& form, const ChannelKind& kind, const SpectrumRequest& request)
        : N_(request.N),
          logarithmic_(request.options.scale == option::scaleLevel),
          zoom_(n, paddingOf(kind, request.options), windowOf(request.options.window, n)),
          kept_(zoom_.bins()) {
        const int factor = paddingOf(kind, request.options);
        if (isCut(request.options)) {
            const double last = std::floor(form.limit * factor * request.N / form.rate);
            kept_ = last >= 0.0 ? static_cast<int>(std::min(last, kept_ - 1.0)) + 1 : 1;
        }
        coder::eml_float_colon(0.0, form.rate / (static_cast<double>(n) * factor), form.rate / 2.0, frequencies_,
                               kept_);
    }

    const row& frequencies() const { return frequencies_; }

    row rowOf(samples x) {
        zoom_.load(x);
        // Levels need a second bin: the first one takes its value.
        const int computed = std::min(std::max(kept_, 2), zoom_.bins());
        row result;
        result.set_size(1, computed);
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
        result.set_size(1, kept_);
        return result;
    }

private:
    double N_;
    bool logarithmic_;
    coder::ZoomSpectrum zoom_;
    int kept_;
    row frequencies_;
};

void fillMaxima(const row& spectrum, const row& frequencies, const SpectrumRequest& request, coder::e_table& out) {
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
        out.frequencies[i] = peak.position <= frequencies.numel() ? frequencies[peak.position - 1] : rtNaN;
        out.magnitudes[i] = peak.value;
    }
}

void fillSpectrum(const ChannelSet& set, const ChannelKind& kind, const Form& form, const SpectrumRequest& request,
                  coder::f_table& out) {
    out.prefill(kind);
    out.verticalAxis.assignAll(request.options.scale == option::scaleLevel ? "L,dB" : kind.spectrumAxisLabel);
    const int n = set[0].numel();
    const bool regular = n > 0 && std::all_of(set.begin(), set.end(), [&](const row& x) {
                             return x.numel() == n && static_cast<double>(n) == request.N;
                         });
    if (!regular) {
        return;
    }
    SpectrumRows rows(n, form, kind, request);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        out.spectra[phase] = rows.rowOf(set[phase]);
        out.frequencies[phase] = rows.frequencies();
        fillMaxima(out.spectra[phase], rows.frequencies(), request, out.maxima[phase]);
    }
}

}  // namespace

void SpectrumParam_fn_mo_305_4(const ChannelSet& set, double fs, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, voltage, formAt(fs), request, out);
}

void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, double fs, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, current, formAt(fs), request, out);
}

void SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, voltage, form500, request, out);
}

void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, current, form500, request, out);
}

void b_SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, voltage, form10000, request, out);
}

void b_SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    fillSpectrum(set, current, form10000, request, out);
}

}  // namespace calc_modul_K9_web_ns
