/// What the interface promises of spectra, their maxima and harmonics.

#include <algorithm>
#include <cmath>

#include "conformance/check.h"
#include "measuring/result_texts.h"

namespace rt305 {

namespace {

constexpr std::uint32_t all = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
constexpr std::uint32_t voltagesAlone = RT305_4_INPUT_VOLTAGES;
constexpr std::uint32_t currentsAlone = RT305_4_INPUT_CURRENTS;

/// Sines of 50 Hz with 5 % of the third harmonic, in whole cycles of every rate that is used here.
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

double at(const Spectrum& spectrum, double frequency) {
    const double spacing = spectrum.frequencies.at(1);
    return spectrum.lines.at(static_cast<std::size_t>(std::lround(frequency / spacing)));
}

/// The lines of a spectrum, and what a sine of amplitude 1 and its third harmonic show.
struct LineCase {
    const char* name;
    const GeneratorSettings& generator;
    std::uint32_t inputType;
    std::uint32_t flags;
    bool currents;
    std::size_t lines;
    double lastHz;
    double fundamentalHz;
    double gain;  // mean of the window
};

constexpr std::uint32_t mode2 = RT305_4_SPECTRUM_MODE_2;

const LineCase lineCases[] = {
    {"lines of all channels, mode 1, voltages", atCombinedRate, all, 0, false, 4001, 1000.0, 50.0, 1.0},
    {"lines of all channels, mode 1, currents", atCombinedRate, all, 0, true, 16001, 1000.0, 50.0, 1.0},
    {"lines of all channels, mode 2, voltages", atCombinedRate, all, mode2, false, 10001, 5000.0, 50.0, 1.0},
    {"lines of all channels, mode 2, currents", atCombinedRate, all, mode2, true, 10001, 5000.0, 50.0, 1.0},
    {"lines of voltages alone, mode 1", atSingleKindRate, voltagesAlone, 0, false, 2001, 250.0, 50.0, 1.0},
    {"lines of currents alone, mode 1", atSingleKindRate, currentsAlone, 0, true, 8001, 250.0, 50.0, 1.0},
    {"lines of currents alone, mode 2", atSingleKindRate, currentsAlone, mode2, true, 1001, 250.0, 50.0, 1.0},
    {"voltages alone are taken at 500 Hz", atCombinedRate, voltagesAlone, 0, false, 20001, 250.0, 2.5, 1.0},
    // sum of w / N: (N + 1) / 2N, (0.54 N - 0.46) / N and the mean of I0(0.5 sqrt(1 - t^2)) / I0(0.5) over -1 < t < 1
    {"Hann window", atCombinedRate, all, RT305_4_SPECTRUM_WINDOW_HANN, false, 4001, 1000.0, 50.0, 0.50005},
    {"Hamming window", atCombinedRate, all, RT305_4_SPECTRUM_WINDOW_HAMMING, false, 4001, 1000.0, 50.0, 0.539954},
    {"Kaiser window", atCombinedRate, all, RT305_4_SPECTRUM_WINDOW_KAISER, false, 4001, 1000.0, 50.0, 0.979974},
    {"spectrum mode flag value 2 is mode 1", atCombinedRate, all, 0x20000000, false, 4001, 1000.0, 50.0, 1.0},
    {"spectrum mode flag value 3 is mode 1", atCombinedRate, all, 0x30000000, false, 4001, 1000.0, 50.0, 1.0},
    {"level flag values 2 and 3 are linear", atCombinedRate, all, 0x6, false, 4001, 1000.0, 50.0, 1.0},
};

void lines(const Library& library, const LineCase& c) {
    const auto spectra = spectraOf(library, spectral(c.generator, c.inputType, c.flags), c.currents);
    const double amplitude = std::sqrt(2.0) * (c.currents ? 5.0 : 230.0) * c.gain;
    expectCount("channels", spectra.size(), phaseTotal);
    for (const Spectrum& spectrum : spectra) {
        expectCount("lines", spectrum.lines.size(), c.lines);
        expectCount("frequencies", spectrum.frequencies.size(), c.lines);
        expectNumber("last frequency", spectrum.frequencies.back(), c.lastHz, 1e-9);
        // the lines of other frequencies that a window does not quite suppress
        expectNumber("fundamental", at(spectrum, c.fundamentalHz), amplitude, 2e-4 * amplitude);
        expectNumber("third harmonic", at(spectrum, 3.0 * c.fundamentalHz), 0.05 * amplitude, 2e-4 * amplitude);
    }
}

/// 0 dB at the largest line; the line at 0 Hz takes the level of its neighbour.
void levels(const Library& library) {
    for (const bool currents : {false, true}) {
        for (const Spectrum& s :
             spectraOf(library, spectral(atCombinedRate, all, RT305_4_SPECTRUM_LEVEL_DB), currents)) {
            expectNumber("largest level", *std::max_element(s.lines.begin(), s.lines.end()), 0.0, 0.0);
            expectNumber("level of the fundamental", at(s, 50.0), 0.0, 0.0);
            expectNumber("level of the third harmonic", at(s, 150.0), 20.0 * std::log10(0.05), 1e-6);
            expectNumber("level at 0 Hz", s.lines.at(0), s.lines.at(1), 0.0);
        }
    }
}

void deadChannel(const Library& library) {
    const GeneratorSettings dead{.factors = {0.0, 1.0, 1.0, 1.0, 1.0, 1.0}};
    for (const std::uint32_t level : {RT305_4_SPECTRUM_LEVEL_LINEAR, RT305_4_SPECTRUM_LEVEL_DB}) {
        const Spectrum spectrum = spectraOf(library, spectral(dead, all, level)).at(0);
        expectNumber("line", spectrum.lines.at(200), level == RT305_4_SPECTRUM_LEVEL_DB ? std::nan("") : 0.0, 0.0);
        expectCount("maxima", spectrum.peaks.size(), 0);
    }
}

struct MaximaCase {
    int wanted;
    bool byCriterion;
    std::size_t found;
};

/// By count there are at most 20, largest first; by criterion as many as wanted, by frequency. Each is a line.
void maxima(const Library& library, const MaximaCase& c) {
    const std::uint32_t flags = c.byCriterion ? RT305_4_SPECTRUM_CRITERION : 0;
    for (const Spectrum& s : spectraOf(library, spectral(atCombinedRate, all, flags, c.wanted))) {
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
    {"5 harmonics of voltages alone", atSingleKindRate, voltagesAlone, false, 5},
    {"5 harmonics of currents alone", atSingleKindRate, currentsAlone, true, 5},
    {"40 harmonics of voltages", atCombinedRate, all, false, 40},
    {"40 harmonics of currents", atCombinedRate, all, true, 40},
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

/// Harmonics of 200 Hz from the 26th on lie above half of 10000 Hz; they are not folded back.
void bandEdge(const Library& library) {
    const auto found = harmonicsOf(library, generated({.frequencyHz = 200.0}, all), false);
    for (const Harmonics& channel : found) {
        for (std::size_t i = 0; i < 40; ++i) {
            if (i != 24) {  // at the edge itself rounding decides
                expect(std::isnan(channel.levels.at(i)) == (i > 24), "harmonic " + std::to_string(i + 1));
            }
        }
    }
}

}  // namespace

std::vector<Check> spectrumChecks() {
    std::vector<Check> checks;
    for (const LineCase& c : lineCases) {
        checks.push_back({c.name, [&c](const Library& library) { lines(library, c); }});
    }
    checks.push_back({"levels in dB", levels});
    checks.push_back({"the spectrum of a dead channel", deadChannel});
    for (const MaximaCase c :
         {MaximaCase{3, false, 3}, {25, false, 20}, {25, true, 25}, {0, false, 0}, {-1, false, 0}, {-1, true, 0}}) {
        checks.push_back({std::string("maxima by ") + (c.byCriterion ? "criterion" : "count") + ", " +
                              std::to_string(c.wanted) + " wanted",
                          [c](const Library& library) { maxima(library, c); }});
    }
    return checks;
}

std::vector<Check> distortionChecks() {
    std::vector<Check> checks;
    for (const HarmonicCase& c : harmonicCases) {
        checks.push_back({c.name, [&c](const Library& library) { harmonics(library, c); }});
    }
    checks.push_back({"no harmonics above half the rate", bandEdge});
    return checks;
}

}  // namespace rt305
