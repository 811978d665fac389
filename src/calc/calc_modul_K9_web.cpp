#include "calc/calc_modul_K9_web.h"

#include <omp.h>

#include <optional>

#include "calc/distortion.h"
#include "calc/electrical_parameters.h"
#include "calc/spectrum.h"
#include "calc/time_signal.h"
#include "rt305_4/rt305_4.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

omp_nest_lock_t calc_modul_K9_web_nestLockGlobal;
bool initialized = false;

bool any(const SetRecords& records) {
    return records.signals != nullptr || records.spectrum != nullptr || records.distortion != nullptr;
}

/// Without a neutral the three currents sum to zero, so a current that was not measured is minus the sum of the others.
ConditionedSet conditionedCurrents(const Measurement& measurement, const MeasurementOptions& options) {
    ConditionedSet currents(measurement.currents, measurement.samplesNumber, options.source);
    if (options.currents != option::threeCurrents && options.rebuiltCurrent != PhaseChoice::none) {
        currents.rebuild(withOthers(options.rebuiltCurrent));
    }
    return currents;
}

void prefill(const SetRecords& records, const ChannelKind& kind) {
    if (records.signals != nullptr) {
        records.signals->prefill(kind);
    }
    if (records.spectrum != nullptr) {
        records.spectrum->prefill(kind);
    }
    if (records.distortion != nullptr) {
        records.distortion->prefill(kind);
    }
}

/// The settings of a call that select its stages.
struct Selection {
    explicit Selection(const Measurement& measurement)
        : operation(measurement.processingMode), type(coder::truncatedToInt(measurement.inputType)) {}

    bool both() const { return type == RT305_4_INPUT_VOLTAGES_AND_CURRENTS; }
    bool includes(const ChannelKind& kind) const { return both() || type == kind.inputType; }

    std::uint32_t operation;
    int type;
};

/// A requested spectrum has the band of its input type; any other spectrum that of the record's own rate.
SpectrumBand bandOf(const Selection& selection, const ChannelKind& kind, double sampleRate) {
    if (selection.operation != RT305_4_OPERATION_SPECTRUM || !selection.includes(kind)) {
        return bandAt(sampleRate);
    }
    return selection.both() ? band10000 : band500;
}

/// Fills the records of one channel set. harmonics: those of the set at 10 kHz, if they were measured.
void runStages(const Selection& selection, const Measurement& measurement, const ChannelKind& kind,
               SetHarmonics* harmonics, const ConditionedSet& set, const SetRecords& records) {
    if (records.spectrum != nullptr) {
        const SpectrumRequest request{measurement.samplesNumber, measurement.auxValue, measurement.auxMode,
                                      SpectrumOptions(measurement.spectrumFlags)};
        measureSpectrum(set, kind, bandOf(selection, kind, measurement.sampleRate), request, *records.spectrum);
    }
    if (!selection.includes(kind)) {
        return;
    }
    if (records.distortion != nullptr && selection.operation == RT305_4_OPERATION_DISTORTION) {
        assembleDistortion(harmonics != nullptr ? std::move(*harmonics) : measureHarmonics(set, coder::thdSettings),
                           kind, *records.distortion);
    }
    if (records.signals != nullptr && selection.operation == RT305_4_OPERATION_SIGNALS) {
        measureTimeSignals(set, kind, *records.signals);
    }
}

}  // namespace

void calc_modul_K9_web_initialize() {
    omp_init_nest_lock(&calc_modul_K9_web_nestLockGlobal);
    initialized = true;
}

void calc_modul_K9_web_terminate() {
    omp_destroy_nest_lock(&calc_modul_K9_web_nestLockGlobal);
    initialized = false;
}

bool isInitialized_calc_modul_K9_web() {
    return initialized;
}

void calc_modul_K9_web(const Measurement& measurement, const ResultRecords& results) {
    if (!isInitialized_calc_modul_K9_web()) {
        calc_modul_K9_web_initialize();
    }
    const MeasurementOptions options(measurement.measurementFlags);
    const Selection selection(measurement);
    if (results.parameters != nullptr) {
        results.parameters->prefill();
    }
    prefill(results.voltages, voltage);
    prefill(results.currents, current);

    // The harmonics of both sets serve the parameters and the distortion records.
    const bool distortion = selection.operation == RT305_4_OPERATION_DISTORTION &&
                            (results.voltages.distortion != nullptr || results.currents.distortion != nullptr);
    const bool harmonicsOfBoth = selection.both() && (results.parameters != nullptr || distortion);

    ConditionedSet voltages;
    ConditionedSet currents;
    if (harmonicsOfBoth || any(results.voltages)) {
        voltages = ConditionedSet(measurement.voltages, measurement.samplesNumber, options.source);
    }
    if (harmonicsOfBoth || any(results.currents)) {
        currents = conditionedCurrents(measurement, options);
    }
    std::optional<HarmonicsOfBoth> harmonics;
    if (harmonicsOfBoth) {
        const SumsOfBoth sums(voltages, currents);
        harmonics = measureHarmonics(voltages, currents, sums);
        if (results.parameters != nullptr) {
            ParamData_mo_305_4(voltages, currents, sums, measurement.samplesNumber, options, *harmonics,
                               *results.parameters);
        }
    }
    runStages(selection, measurement, voltage, harmonics ? &harmonics->voltages : nullptr, voltages, results.voltages);
    runStages(selection, measurement, current, harmonics ? &harmonics->currents : nullptr, currents, results.currents);
}

}  // namespace calc_modul_K9_web_ns
