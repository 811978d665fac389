#include "measuring/measure_all.h"

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
    return readKinds(library.measure(full.asRecorded, RT305_4_OPERATION_SIGNALS), readSignals);
}

}  // namespace

FullResults measureAll(const FullMeasurement& full, const Library& library) {
    const Measurement& measurement = full.measurement;
    FullResults results{.libraryVersion = library.version()};
    if (measurement.isCombined()) {
        for (const PowerMethod& method : powerMethods) {
            const Measurement prepared = withPowerMethod(measurement, method);
            results.parameterTexts.push_back(library.measure(prepared, RT305_4_OPERATION_PARAMETERS).parameters);
            results.parameters.push_back(readParameters(results.parameterTexts.back()));
        }
    } else {
        results.signals = signalsOf(full, library);
    }
    results.harmonics = readKinds(library.measure(measurement, RT305_4_OPERATION_DISTORTION), readHarmonics);
    results.fundamentals = fundamentalsOf(measurement, results.harmonics);
    results.derived =
        derivedFigures(measurement, results.fundamentals,
                       results.parameters.empty() ? Parameters{} : results.parameters[plainThreeWattmeter]);
    results.wiring = judgeWiring(full, results.fundamentals, results.derived);
    return results;
}

void addSpectraAndStatistics(FullResults& results, const FullMeasurement& full, const Library& library) {
    if (results.signals.empty()) {
        results.signals = signalsOf(full, library);
    }
    Measurement withSpectra = full.measurement;
    withSpectra.settings.spectrumFlags = fullSpectrumFlags;
    results.spectra = readKinds(library.measure(withSpectra, RT305_4_OPERATION_SPECTRUM), readSpectra);
}

}  // namespace rt305
