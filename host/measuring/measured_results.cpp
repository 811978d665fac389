#include "measuring/measured_results.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "signal/spectral_lines.h"
#include "signal/statistics.h"

namespace rt305 {

namespace {

bool beginsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

/// Frequencies and THD are those of voltages; of currents alone the stand-ins have the same frequencies.
bool isMeasured(std::string_view parameter, const Measurement& measurement) {
    if (beginsWith(parameter, "Ud") || beginsWith(parameter, "THD_V")) {
        return measurement.hasVoltages();
    }
    if (beginsWith(parameter, "Id") || beginsWith(parameter, "THD_I")) {
        return measurement.hasCurrents();
    }
    return beginsWith(parameter, "F") || measurement.isCombined();
}

constexpr std::string_view parametersOfPhaseA[] = {"Uda", "Ida", "Fa", "THD_Va", "THD_Ia", "Pa", "Qa", "Sa", "Pfa"};
constexpr std::string_view totals[] = {"P", "Q", "S", "Pf"};

template <class List>
bool isIn(const List& list, std::string_view name) {
    return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

Parameters ofOnePhase(const Parameters& parameters) {
    Parameters kept;
    for (const NamedValue& parameter : parameters) {
        if (isIn(totals, parameter.name)) {
            kept.push_back({parameter.name, parameterNamed(parameters, parameter.name + "a").value, parameter.unit});
        } else if (isIn(parametersOfPhaseA, parameter.name)) {
            kept.push_back(parameter);
        }
    }
    return kept;
}

/// The measured channels of one kind from its text; `read` gives all three.
template <class Channel>
KindResults<Channel> kindResults(bool areCurrents, std::string text, const Measurement& measurement,
                                 std::vector<Channel> (*read)(const std::string&)) {
    auto channels = read(text);
    channels.erase(channels.begin() + (measurement.isThreePhase() ? phaseTotal : 1), channels.end());
    for (std::size_t phase = 0; phase < channels.size(); ++phase) {
        channels[phase].channel = measurement.nameOf(phase + (areCurrents ? phaseTotal : 0));
    }
    return {areCurrents, std::move(text), std::move(channels)};
}

/// Those of the kinds that are measured and have a text.
template <class Channel>
std::vector<KindResults<Channel>> measuredKinds(ResultTexts texts, const Measurement& measurement,
                                                std::vector<Channel> (*read)(const std::string&)) {
    std::vector<KindResults<Channel>> kinds;
    if (!texts.voltages.empty() && measurement.hasVoltages()) {
        kinds.push_back(kindResults(false, std::move(texts.voltages), measurement, read));
    }
    if (!texts.currents.empty() && measurement.hasCurrents()) {
        kinds.push_back(kindResults(true, std::move(texts.currents), measurement, read));
    }
    return kinds;
}

/// With the names that the library's text has.
SignalStatistics labelledStatistics(std::size_t channel, const Measurement& measurement) {
    const char* const unit = isCurrent(channel) ? "A" : "V";
    const auto [mean, rms, crestFactor, range] =
        statisticsOf(measurement.handedOver(channel), measurement.settings.coefficients[measurement.standIns[channel]]);
    return {std::string(measurement.nameOf(channel)),
            {{"mean", mean, unit}, {"rms", rms, unit}, {"peak2rms", crestFactor, unit}, {"peak2peak", range, unit}}};
}

void scale(std::vector<double>& values, double factor) {
    std::transform(values.begin(), values.end(), values.begin(), [factor](double x) { return x * factor; });
}

WindowShape shapeOf(std::uint32_t spectrumFlags) {
    switch (spectrumFlags & RT305_4_SPECTRUM_WINDOW_MASK) {
        case RT305_4_SPECTRUM_WINDOW_HANN:
            return WindowShape::hann;
        case RT305_4_SPECTRUM_WINDOW_HAMMING:
            return WindowShape::hamming;
        case RT305_4_SPECTRUM_WINDOW_KAISER:
            return WindowShape::kaiser;
        default:
            return WindowShape::rectangular;
    }
}

double amplitudeOf(double levelDb) {
    return std::pow(10.0, levelDb / 20.0);
}

/// The lines that the settings ask for, in place of the library's peaks.
void listLines(Spectrum& spectrum, const Measurement& measurement, const MeasurementSettings& settings) {
    const bool isLevel = (settings.spectrumFlags & RT305_4_SPECTRUM_LEVEL_MASK) == RT305_4_SPECTRUM_LEVEL_DB;
    const bool byCriterion = (settings.spectrumFlags & RT305_4_SPECTRUM_CRITERION) != 0;
    spectrum.peaks.clear();
    if (spectrum.frequencies.size() < 2) {
        return;
    }
    std::vector<double> amplitudes = spectrum.lines;
    if (isLevel) {
        std::transform(amplitudes.begin(), amplitudes.end(), amplitudes.begin(), amplitudeOf);
    }
    const double spacing = spectrum.frequencies[1] - spectrum.frequencies[0];
    const double binsPerLine = spacing * measurement.durationSeconds();
    const double least = !byCriterion ? 0.0 : isLevel ? amplitudeOf(settings.peakCriterion) : settings.peakCriterion;
    auto lines = findLines(amplitudes, {shapeOf(settings.spectrumFlags), measurement.length}, binsPerLine,
                           {byCriterion ? std::optional(least) : std::nullopt,
                            static_cast<std::size_t>(std::max<std::int16_t>(0, settings.peaks))});
    const double largest = lines.empty() ? 1.0 : lines[0].amplitude;
    if (byCriterion) {
        std::sort(lines.begin(), lines.end(),
                  [](const SpectralLine& one, const SpectralLine& other) { return one.place < other.place; });
    }
    for (const SpectralLine& line : lines) {
        spectrum.peaks.emplace_back(spectrum.frequencies[0] + line.place * spacing,
                                    isLevel ? 20.0 * std::log10(line.amplitude / largest) : line.amplitude);
    }
}

}  // namespace

Parameters measuredParameters(const std::string& text, const Measurement& measurement) {
    Parameters parameters = readParameters(text);
    std::erase_if(parameters, [&](const NamedValue& parameter) { return !isMeasured(parameter.name, measurement); });
    for (NamedValue& parameter : parameters) {
        parameter.value *= parameter.unit == "Hz" ? measurement.frequencyScale() : 1.0;
        parameter.unit = parameter.unit == "VAR" ? "var" : parameter.unit;
    }
    return measurement.isThreePhase() ? parameters : ofOnePhase(parameters);
}

std::vector<KindResults<SignalStatistics>> measuredSignals(const Measurement& measurement, const Library& library,
                                                           SignalTexts texts) {
    const bool isInVoltAndAmpere = (measurement.settings.flags & RT305_4_SIMULATED_SOURCE_MASK) != 0;
    if (texts == SignalTexts::wanted || !isInVoltAndAmpere || measurement.has(RT305_4_TWO_CURRENTS)) {
        return measuredKinds(library.measure(measurement, RT305_4_OPERATION_SIGNALS), measurement, readSignals);
    }
    std::vector<KindResults<SignalStatistics>> kinds;
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (measurement.measures(first)) {
            auto& kind = kinds.emplace_back(KindResults<SignalStatistics>{isCurrent(first), {}, {}});
            for (std::size_t channel = first; channel < first + (measurement.isThreePhase() ? phaseTotal : 1);
                 ++channel) {
                kind.channels.push_back(labelledStatistics(channel, measurement));
            }
        }
    }
    return kinds;
}

std::vector<KindResults<Spectrum>> measuredSpectra(ResultTexts texts, const Measurement& measurement,
                                                   const MeasurementSettings& settings) {
    auto kinds = measuredKinds(std::move(texts), measurement, readSpectra);
    const WindowShape shape = shapeOf(settings.spectrumFlags);
    for (auto& kind : kinds) {
        for (Spectrum& spectrum : kind.channels) {
            scale(spectrum.frequencies, measurement.frequencyScale());
            if (spectrum.unit != "dB") {
                scale(spectrum.lines, 1.0 / gainOf({shape, measurement.length}));
            }
            listLines(spectrum, measurement, settings);
        }
    }
    return kinds;
}

std::vector<KindResults<Harmonics>> measuredHarmonics(ResultTexts texts, const Measurement& measurement) {
    auto kinds = measuredKinds(std::move(texts), measurement, readHarmonics);
    const double highestHz = measurement.highestHz();
    for (auto& kind : kinds) {
        for (Harmonics& channel : kind.channels) {
            auto& frequencies = channel.frequencies;
            scale(frequencies, measurement.frequencyScale());
            const auto above = std::find_if(frequencies.begin(), frequencies.end(),
                                            [highestHz](double frequency) { return frequency > highestHz; });
            removeFrom(channel, static_cast<std::size_t>(above - frequencies.begin()));
        }
    }
    return kinds;
}

}  // namespace rt305
