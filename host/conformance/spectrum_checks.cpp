/// Checks of spectra, their largest lines and harmonics.

#include <algorithm>
#include <cmath>

#include "conformance/check.h"

namespace rt305 {

namespace {

constexpr std::size_t harmonicTotal = 40;  // with all six channels
constexpr std::size_t harmonicTotalOfOneKind = 5;

/// Sines of 50 Hz with a third harmonic of 5 %, in whole cycles at each of the rates.
const GeneratorSettings atCombinedRate{.voltageHarmonics = {{3, 5.0, 0.0}}, .currentHarmonics = {{3, 5.0, 0.0}}};
const GeneratorSettings atSingleKindRate{
    .rateHz = 500.0, .durationSeconds = 2.0, .voltageHarmonics = {{3, 5.0, 0.0}}, .currentHarmonics = {{3, 5.0, 0.0}}};

Measurement spectral(const GeneratorSettings& generator, std::uint32_t inputType, std::uint32_t spectrumFlags,
                     int peaks = 10) {
    Measurement measurement = generated(generator, inputType);
    measurement.settings.spectrumFlags = spectrumFlags;
    measurement.settings.peaks = static_cast<std::int16_t>(peaks);
    return measurement;
}

std::vector<Spectrum> spectraOf(const Library& library, const Measurement& measurement, bool currents = false) {
    const ResultTexts texts = library.measure(measurement, RT305_4_OPERATION_SPECTRUM);
    return readSpectra(currents ? texts.currents : texts.voltages);
}

/// The line next to a frequency.
double at(const Spectrum& spectrum, double frequency) {
    const double spacing = spectrum.frequencies.at(1);
    return spectrum.lines.at(static_cast<std::size_t>(std::lround(frequency / spacing)));
}

/// The number of lines in a spectrum, and where the fundamental is.
struct LineCase {
    const char* name;
    const GeneratorSettings& generator;
    std::uint32_t inputType;
    std::uint32_t flags;
    bool currents;
    std::size_t lines;
    double lastHz;
    double fundamentalHz;
    double gain;  // of the window: the mean of its weights
};

constexpr std::uint32_t mode2 = RT305_4_SPECTRUM_MODE_2;

const LineCase lineCases[] = {
    {"lines of all channels, mode 1, voltages", atCombinedRate, allChannels, 0, false, 4001, 1000.0, 50.0, 1.0},
    {"lines of all channels, mode 1, currents", atCombinedRate, allChannels, 0, true, 16001, 1000.0, 50.0, 1.0},
    {"lines of all channels, mode 2, voltages", atCombinedRate, allChannels, mode2, false, 10001, 5000.0, 50.0, 1.0},
    {"lines of all channels, mode 2, currents", atCombinedRate, allChannels, mode2, true, 10001, 5000.0, 50.0, 1.0},
    {"lines of voltages only, mode 1", atSingleKindRate, voltagesOnly, 0, false, 2001, 250.0, 50.0, 1.0},
    {"lines of currents only, mode 1", atSingleKindRate, currentsOnly, 0, true, 8001, 250.0, 50.0, 1.0},
    {"lines of currents only, mode 2", atSingleKindRate, currentsOnly, mode2, true, 1001, 250.0, 50.0, 1.0},
    {"voltages only are assumed to be at 500 Hz", atCombinedRate, voltagesOnly, 0, false, 20001, 250.0, 2.5, 1.0},
    // sum of w / N: (N + 1) / 2N, (0.54 N - 0.46) / N and the mean of I0(0.5 sqrt(1 - t^2)) / I0(0.5) over -1 < t < 1
    {"Hann window", atCombinedRate, allChannels, RT305_4_SPECTRUM_WINDOW_HANN, false, 4001, 1000.0, 50.0, 0.50005},
    {"Hamming window", atCombinedRate, allChannels, RT305_4_SPECTRUM_WINDOW_HAMMING, false, 4001, 1000.0, 50.0,
     0.539954},
    {"Kaiser window", atCombinedRate, allChannels, RT305_4_SPECTRUM_WINDOW_KAISER, false, 4001, 1000.0, 50.0, 0.979974},
    {"spectrum mode flag value 2 is mode 1", atCombinedRate, allChannels, flagValue(RT305_4_SPECTRUM_MODE_MASK, 2),
     false, 4001, 1000.0, 50.0, 1.0},
    {"spectrum mode flag value 3 is mode 1", atCombinedRate, allChannels, flagValue(RT305_4_SPECTRUM_MODE_MASK, 3),
     false, 4001, 1000.0, 50.0, 1.0},
    {"level flag value 3 is linear", atCombinedRate, allChannels, flagValue(RT305_4_SPECTRUM_LEVEL_MASK, 3), false,
     4001, 1000.0, 50.0, 1.0},
};

void lines(const Library& library, const LineCase& c) {
    const auto spectra = spectraOf(library, spectral(c.generator, c.inputType, c.flags), c.currents);
    const double amplitude = std::sqrt(2.0) * (c.currents ? 5.0 : 230.0) * c.gain;
    expectCount("channels", spectra.size(), phaseTotal);
    for (const Spectrum& spectrum : spectra) {
        expectCount("lines", spectrum.lines.size(), c.lines);
        expectCount("frequencies", spectrum.frequencies.size(), c.lines);
        expectNumber("last frequency", spectrum.frequencies.back(), c.lastHz, 1e-9);
        // windows do not suppress the leakage from other frequencies completely
        expectNumber("fundamental", at(spectrum, c.fundamentalHz), amplitude, 2e-4 * amplitude);
        expectNumber("third harmonic", at(spectrum, 3.0 * c.fundamentalHz), 0.05 * amplitude, 2e-4 * amplitude);
    }
}

/// The largest line is at 0 dB; the line at 0 Hz has the level of its neighbour.
void levels(const Library& library) {
    for (const bool currents : {false, true}) {
        for (const Spectrum& s :
             spectraOf(library, spectral(atCombinedRate, allChannels, RT305_4_SPECTRUM_LEVEL_DB), currents)) {
            expectNumber("largest level", *std::max_element(s.lines.begin(), s.lines.end()), 0.0, 0.0);
            expectNumber("level of the fundamental", at(s, 50.0), 0.0, 0.0);
            expectNumber("level of the third harmonic", at(s, 150.0), 20.0 * std::log10(0.05), 1e-6);
            expectNumber("level at 0 Hz", s.lines.at(0), s.lines.at(1), 0.0);
        }
    }
}

/// All lines are 0, and have no level in dB. Level flag values other than 1 are linear.
void deadChannel(const Library& library) {
    const GeneratorSettings dead{.factors = {0.0, 1.0, 1.0, 1.0, 1.0, 1.0}};
    for (const std::uint32_t value : {0U, 1U, 2U, 3U}) {
        const std::uint32_t level = flagValue(RT305_4_SPECTRUM_LEVEL_MASK, value);
        const Spectrum spectrum = spectraOf(library, spectral(dead, allChannels, level)).at(0);
        expectNumber("line", at(spectrum, 50.0), level == RT305_4_SPECTRUM_LEVEL_DB ? std::nan("") : 0.0, 0.0);
        expectCount("maxima", spectrum.peaks.size(), 0);
    }
}

struct MaximaCase {
    const char* name;
    int wanted;
    bool byCriterion;
    std::size_t found;
};

constexpr MaximaCase maximaCases[] = {
    {"3 wanted by count", 3, false, 3}, {"25 wanted by count", 25, false, 20}, {"25 wanted by criterion", 25, true, 25},
    {"0 wanted by count", 0, false, 0}, {"-1 wanted by count", -1, false, 0},  {"-1 wanted by criterion", -1, true, 0},
};

/// By count there are at most 20, the largest first; by criterion as many as wanted, the lowest frequency first. Each
/// has the value of a line.
void maxima(const Library& library, const MaximaCase& c) {
    const std::uint32_t flags = c.byCriterion ? RT305_4_SPECTRUM_CRITERION : 0;
    for (const Spectrum& s : spectraOf(library, spectral(atCombinedRate, allChannels, flags, c.wanted))) {
        expectCount("maxima", s.peaks.size(), c.found);
        for (std::size_t i = 0; i < s.peaks.size(); ++i) {
            const auto [frequency, value] = s.peaks[i];
            expectNumber("value of a maximum", value, at(s, frequency), 0.0);
            if (i > 0) {
                const auto& before = s.peaks[i - 1];
                expect(c.byCriterion ? before.first < frequency : before.second >= value,
                       "maximum " + std::to_string(i + 1) + " is out of order");
            }
        }
    }
}

struct HarmonicCase {
    const char* name;
    const GeneratorSettings& generator;
    std::uint32_t inputType;
    bool currents;
    std::size_t entries;
};

const HarmonicCase harmonicCases[] = {
    {"5 harmonics of voltages only", atSingleKindRate, voltagesOnly, false, harmonicTotalOfOneKind},
    {"5 harmonics of currents only", atSingleKindRate, currentsOnly, true, harmonicTotalOfOneKind},
    {"40 harmonics of voltages", atCombinedRate, allChannels, false, harmonicTotal},
    {"40 harmonics of currents", atCombinedRate, allChannels, true, harmonicTotal},
};

std::vector<Harmonics> harmonicsOf(const Library& library, const Measurement& measurement, bool currents) {
    const ResultTexts texts = library.measure(measurement, RT305_4_OPERATION_DISTORTION);
    return readHarmonics(currents ? texts.currents : texts.voltages);
}

void harmonics(const Library& library, const HarmonicCase& c) {
    const double rms = c.currents ? 5.0 : 230.0;
    for (const Harmonics& channel : harmonicsOf(library, generated(c.generator, c.inputType), c.currents)) {
        expectCount("frequencies", channel.frequencies.size(), c.entries);
        expectCount("levels", channel.levels.size(), c.entries);
        for (const auto& [order, amplitude] : {std::pair{1, 1.0}, {3, 0.05}}) {
            const auto i = static_cast<std::size_t>(order - 1);
            expectNumber("frequency", channel.frequencies[i], 50.0 * order, 1e-3);
            expectNumber("level", channel.levels[i], 20.0 * std::log10(amplitude * rms), 1e-3);
        }
    }
}

/// At 10000 Hz the harmonics of 200 Hz from order 26 on are above half the rate, and are not aliased.
void bandEdge(const Library& library) {
    constexpr std::size_t orderAtEdge = 25;  // 5000 Hz, where the rounding of the frequency decides
    for (const Harmonics& channel : harmonicsOf(library, generated({.frequencyHz = 200.0}, allChannels), false)) {
        for (std::size_t order = 1; order <= harmonicTotal; ++order) {
            if (order != orderAtEdge) {
                expect(std::isnan(channel.levels.at(order - 1)) == (order > orderAtEdge),
                       "harmonic " + std::to_string(order));
            }
        }
    }
}

}  // namespace

std::vector<Check> spectrumChecks() {
    std::vector<Check> checks;
    addRows(checks, "", lineCases, lines);
    checks.push_back({"levels in dB", levels});
    checks.push_back({"the spectrum of a dead channel", deadChannel});
    addRows(checks, "maxima: ", maximaCases, maxima);
    return checks;
}

std::vector<Check> distortionChecks() {
    std::vector<Check> checks;
    addRows(checks, "", harmonicCases, harmonics);
    checks.push_back({"no harmonics above half the rate", bandEdge});
    return checks;
}

}  // namespace rt305
