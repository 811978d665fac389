#include "measuring/measure_all.h"

#include "measuring/measured_results.h"
#include "measuring/power_methods.h"
#include "measuring/wiring.h"

namespace rt305 {

namespace {

/// The samples and settings that a power method requires, from phase voltages.
Measurement withPowerMethod(const Measurement& measurement, const PowerMethod& method) {
    Measurement prepared = method.requiresPhaseVoltages ? measurement : withLineVoltages(measurement);
    prepared.settings.flags |= method.flag;
    if (method.flag == RT305_4_POWER_TWO_WATTMETER) {
        invertForTwoWattmeters(prepared.settings);
    }
    return prepared;
}

std::vector<KindResults<SignalStatistics>> signalsOf(const FullMeasurement& full, const Library& library) {
    return measuredSignals(library.measure(full.asRecorded, RT305_4_OPERATION_SIGNALS), full.asRecorded);
}

/// Whether to ask by this method. One kind of channels has no power, so one method gives its parameters; one phase has
/// no line voltages.
bool isAsked(const PowerMethod& method, const Measurement& measurement) {
    return &method == &powerMethods[complexThreeWattmeter] ||
           (measurement.isCombined() && (measurement.isThreePhase() || method.givesPhases));
}

}  // namespace

FullResults measureAll(const FullMeasurement& full, const Library& library) {
    const Measurement& measurement = full.measurement;
    FullResults results{.libraryVersion = library.version()};
    for (const PowerMethod& method : powerMethods) {
        if (isAsked(method, measurement)) {
            const Measurement prepared = withPowerMethod(measurement, method);
            results.parameterTexts.push_back(library.measure(prepared, RT305_4_OPERATION_PARAMETERS).parameters);
            results.parameters.push_back(measuredParameters(results.parameterTexts.back(), prepared));
        }
    }
    if (!measurement.isCombined()) {
        results.signals = signalsOf(full, library);
    }
    results.harmonics = measuredHarmonics(library.measure(measurement, RT305_4_OPERATION_DISTORTION), measurement);
    results.fundamentals = fundamentalsOf(measurement, results.harmonics);
    results.derived = derivedFigures(measurement, results.fundamentals,
                                     measurement.isCombined() ? results.parameters[plainThreeWattmeter] : Parameters{});
    results.wiring = judgeWiring(full, results.fundamentals, results.derived);
    return results;
}

void addSpectraAndStatistics(FullResults& results, const FullMeasurement& full, const Library& library) {
    if (results.signals.empty()) {
        results.signals = signalsOf(full, library);
    }
    Measurement withSpectra = full.measurement;
    withSpectra.settings.spectrumFlags = fullSpectrumFlags;
    results.spectra = measuredSpectra(library.measure(withSpectra, RT305_4_OPERATION_SPECTRUM), withSpectra);
}

}  // namespace rt305
