#include "measuring/measure_all.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "measuring/measured_results.h"
#include "measuring/power_methods.h"
#include "measuring/thd_gate.h"
#include "measuring/wiring.h"

namespace rt305 {

namespace {

/// Asks with the settings and the voltages that a power method requires. Powers by line voltages are those of ab and
/// bc. The third, of which only the text tells, is a sixth of the samples of a recording; if the text is not shown, bc
/// stands in for it.
ResultTexts ask(const Measurement& measurement, const PowerMethod& method, std::uint32_t operation, Shown shown,
                const Library& library) {
    MeasurementSettings settings = measurement.settings;
    settings.flags |= method.flag;
    if (method.requiresPhaseVoltages) {
        Call call(measurement, settings, operation);
        return library.measure(call);
    }
    settings.flags &= ~RT305_4_FOUR_WIRE;
    if (method.flag == RT305_4_POWER_TWO_WATTMETER) {
        invertForTwoWattmeters(settings);
    }
    PerPhase<std::vector<double>> lines{lineVoltage(measurement, 0), lineVoltage(measurement, 1), {}};
    if (shown == Shown::texts) {
        lines[2] = lineVoltage(measurement, 2);
    }
    Call call(measurement, settings, operation);
    for (ChannelData& channel : call.channels) {
        if (channel.signalKind == RT305_4_KIND_VOLTAGE) {
            const auto& line = lines[channel.phase];
            channel.samples = (line.empty() ? lines[1] : line).data();
        }
    }
    return library.measure(call);
}

/// Whether to ask by this method. One kind of channels has no power, so one method gives its parameters; one phase has
/// no line voltages.
bool isAsked(const PowerMethod& method, const Measurement& measurement) {
    return &method == &powerMethods[complexThreeWattmeter] ||
           (measurement.isCombined() && (measurement.isThreePhase() || method.givesPhases));
}

/// Why no harmonics are those of a steady fundamental; empty when they can be.
std::string doubtOnAll(const FullMeasurement& full) {
    constexpr double fewestCycles = 5.0;  // of which a pure sine reads 13 %
    if (!full.isSteady()) {
        return "the signal is not steady";
    }
    return full.cyclesThere() < fewestCycles - 0.05 ? formatFixed(full.cyclesThere(), 1) + " cycles are too few" : "";
}

/// Why the harmonics of a channel rest on something else than its fundamental; empty when they do not.
std::string doubtOn(std::size_t channel, double libraryHz, const Fundamentals& fundamentals) {
    constexpr double agreement = 0.01;
    const double frequencyHz = fundamentals.frequencyHz;
    if (!fundamentals.hasSignal[channel]) {
        return fundamentals.hasGaps(channel) ? "samples are missing" : "there is hardly a steady fundamental";
    }
    if (libraryHz > 0.0 && !(std::fabs(libraryHz - frequencyHz) <= agreement * frequencyHz)) {
        return "the library found a fundamental of " + formatFixed(libraryHz, 2) + " Hz, but it is at " +
               formatFixed(frequencyHz, 2) + " Hz";
    }
    return {};
}

/// The harmonics that the library gives, from what lies at their frequencies alone, of the channels without doubts.
PerChannel<std::vector<double>> plainHarmonicsOf(const FullMeasurement& full, const DistortionDoubts& doubts) {
    constexpr std::size_t orders = 50;
    const Measurement& recorded = full.asRecorded();
    std::vector<std::size_t> channels;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (recorded.measures(channel) && doubts[channel].empty()) {
            channels.push_back(channel);
        }
    }
    auto levels = harmonicLevels(spansOf(recorded, channels), recorded.rateHz, full.frequencyHz, orders);
    PerChannel<std::vector<double>> harmonics{};
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const double fundamental = levels[i][0];
        std::vector<double>& percents = harmonics[channels[i]] = std::move(levels[i]);
        for (double& percent : percents) {
            percent *= 100.0 / fundamental;
        }
    }
    return harmonics;
}

void removeParameter(std::string_view name, Parameters& parameters) {
    for (NamedValue& parameter : parameters) {
        if (parameter.name == name) {
            parameter.value = std::numeric_limits<double>::quiet_NaN();
        }
    }
}

}  // namespace

DistortionDoubts removeDoubtful(std::vector<KindResults<Harmonics>>& kinds, const Fundamentals& fundamentals,
                                const std::string& onAll) {
    DistortionDoubts doubts{};
    for (auto& kind : kinds) {
        for (std::size_t phase = 0; phase < kind.channels.size(); ++phase) {
            Harmonics& harmonics = kind.channels[phase];
            const std::size_t channel = phase + (kind.areCurrents ? phaseTotal : 0);
            const double libraryHz = harmonics.frequencies.empty() ? 0.0 : harmonics.frequencies[0];
            doubts[channel] = onAll.empty() ? doubtOn(channel, libraryHz, fundamentals) : onAll;
            if (!doubts[channel].empty()) {
                removeFrom(harmonics, 0);
            }
        }
    }
    return doubts;
}

Parameters withoutDoubtful(Parameters parameters, const DistortionDoubts& doubts, bool hasVoltages) {
    static constexpr std::string_view frequencies[] = {"Fa", "Fb", "Fc"};
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (doubts[channel].empty()) {
            continue;
        }
        const std::size_t phase = channel % phaseTotal;
        removeParameter(thdSets[channel / phaseTotal].parameters[phase], parameters);
        if (isCurrent(channel) != hasVoltages) {
            removeParameter(frequencies[phase], parameters);
        }
    }
    return parameters;
}

FullResults measureAll(const FullMeasurement& full, const Library& library, Shown shown) {
    const Measurement& measurement = full.measurement;
    FullResults results{.libraryVersion = library.version()};
    for (const PowerMethod& method : powerMethods) {
        if (isAsked(method, measurement)) {
            // any call gives the parameters, so the first one gives the harmonics too
            const bool isFirst = results.parameters.empty();
            ResultTexts texts =
                ask(measurement, method, isFirst ? RT305_4_OPERATION_DISTORTION : RT305_4_OPERATION_PARAMETERS, shown,
                    library);
            results.parameters.push_back(measuredParameters(texts.parameters, measurement));
            results.parameterTexts.push_back(std::move(texts.parameters));
            if (isFirst) {
                results.harmonics = measuredHarmonics(std::move(texts), measurement);
            }
        }
    }
    if (!measurement.isCombined()) {
        results.signals = measuredSignals(full.asRecorded(), library,
                                          shown == Shown::texts ? SignalTexts::wanted : SignalTexts::notWanted);
    }
    results.fundamentals = fundamentalsOf(full.asRecorded(), full.frequencyHz, full.frequencySource.empty());
    results.distortionDoubts = removeDoubtful(results.harmonics, results.fundamentals, doubtOnAll(full));
    results.derived = derivedFigures(full, results.fundamentals);
    if (shown == Shown::everything) {
        results.plainHarmonics = plainHarmonicsOf(full, results.distortionDoubts);
        results.wiring = judgeWiring(full, results.fundamentals, results.derived);
    }
    return results;
}

void addSpectraAndStatistics(FullResults& results, const FullMeasurement& full, const Library& library) {
    if (results.signals.empty()) {
        results.signals = measuredSignals(full.asRecorded(), library, SignalTexts::notWanted);
    }
    // the library writes every line into a text, which takes 1 kB a sample
    constexpr double longest = 1.0;
    const bool isPart = full.asRecorded().durationSeconds() > longest;
    const std::optional<FullMeasurement> part = isPart ? std::optional(windowOf(full, 0.0, longest)) : std::nullopt;
    const Measurement& measurement = isPart ? part->measurement : full.measurement;
    MeasurementSettings settings = measurement.settings;
    settings.spectrumFlags = fullSpectrumFlags;
    Call call(measurement, settings, RT305_4_OPERATION_SPECTRUM);
    results.spectra = measuredSpectra(library.measure(call), measurement, settings);
    results.spectraStart = settings.startSeconds;
    results.spectraSeconds = measurement.durationSeconds();
}

}  // namespace rt305
