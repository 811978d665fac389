#include "calc/calc_modul_K9_web.h"

#include <omp.h>

#include <optional>

#include "calc/distortion.h"
#include "calc/spectrum.h"
#include "calc/time_signal.h"
#include "rt305_4/rt305_4.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

omp_nest_lock_t calc_modul_K9_web_nestLockGlobal;
bool initialized = false;

constexpr int typeVoltages = RT305_4_INPUT_VOLTAGES;
constexpr int typeCurrents = RT305_4_INPUT_CURRENTS;
constexpr int typeVoltagesAndCurrents = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;

bool any(const SetRecords& records) {
    return records.signals != nullptr || records.spectrum != nullptr || records.distortion != nullptr;
}

/// The sum of three currents without a neutral is zero: a phase that was not measured is minus the sum of the others.
void rebuildCurrent(ChannelSet& currents, const MeasurementOptions& options) {
    if (options.currents == option::threeCurrents || options.rebuiltCurrent == PhaseChoice::none) {
        return;
    }
    const PhaseWithOthers missing = withOthers(options.rebuiltCurrent);
    coder::binary_expand_op(currents[missing.phase], currents[missing.first], currents[missing.second],
                            [](double a, double b) { return -(a + b); });
}

/// The stages of one kind.
struct Stages {
    const ChannelKind& kind;
    int type;  // the input type that runs them alone
    void (*timeSignals)(ChannelSet&&, coder::b_table&);
    void (*spectrumAt)(const ChannelSet&, double, const SpectrumRequest&, coder::f_table&);
    void (*spectrum500)(const ChannelSet&, const SpectrumRequest&, coder::f_table&);
    void (*spectrum10000)(const ChannelSet&, const SpectrumRequest&, coder::f_table&);
    void (*distortion)(const ChannelSet&, coder::c_table&);
};
constexpr Stages voltageStages{voltage,
                               typeVoltages,
                               TimeSignalData_mo_305_4,
                               SpectrumParam_fn_mo_305_4,
                               SpectrumParam_fn_mo_305_4,
                               b_SpectrumParam_fn_mo_305_4,
                               paramData_thd_mo_305_4};
constexpr Stages currentStages{current,
                               typeCurrents,
                               TimeSignalData_mo_305_4I,
                               SpectrumParam_fn_mo_305_4I,
                               SpectrumParam_fn_mo_305_4I,
                               b_SpectrumParam_fn_mo_305_4I,
                               paramData_thd_mo_305_4I};

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

/// The default spectrum, at the record's own rate, is made only where no other spectrum replaces it.
void runSpectrum(const Stages& stages, const Measurement& measurement, int type, const ChannelSet& set,
                 coder::f_table& record) {
    const SpectrumRequest request{measurement.samplesNumber, measurement.auxValue, measurement.auxMode,
                                  SpectrumOptions(measurement.spectrumFlags)};
    const bool wanted = measurement.processingMode == RT305_4_OPERATION_SPECTRUM;
    if (wanted && type == typeVoltagesAndCurrents) {
        stages.spectrum10000(set, request, record);
    } else if (wanted && type == stages.type) {
        stages.spectrum500(set, request, record);
    } else {
        stages.spectrumAt(set, measurement.sampleRate, request, record);
    }
}

/// Fills the records of one channel set. harmonics: those of the set, where they were measured with the parameters.
void runStages(const Stages& stages, const Measurement& measurement, int type, const SetHarmonics* harmonics,
               ChannelSet&& set, const SetRecords& records) {
    if (records.spectrum != nullptr) {
        runSpectrum(stages, measurement, type, set, *records.spectrum);
    }
    if (type != stages.type && type != typeVoltagesAndCurrents) {
        return;
    }
    if (measurement.processingMode == RT305_4_OPERATION_DISTORTION && records.distortion != nullptr) {
        if (harmonics != nullptr) {
            assembleDistortion(*harmonics, stages.kind, *records.distortion);
        } else {
            stages.distortion(set, *records.distortion);
        }
    }
    if (measurement.processingMode == RT305_4_OPERATION_SIGNALS && records.signals != nullptr) {
        stages.timeSignals(std::move(set), *records.signals);
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
    const int type = coder::truncatedToInt(measurement.inputType);
    const bool both = type == typeVoltagesAndCurrents;

    if (results.parameters != nullptr) {
        results.parameters->prefill();
    }
    prefill(results.voltages, voltage);
    prefill(results.currents, current);

    const bool parameters =
        both && (results.parameters != nullptr ||
                 (measurement.processingMode == RT305_4_OPERATION_DISTORTION &&
                  (results.voltages.distortion != nullptr || results.currents.distortion != nullptr)));
    ChannelSet voltages;
    ChannelSet currents;
    if (parameters || any(results.voltages)) {
        data_305_4(measurement.voltages, measurement.samplesNumber, options.source, voltages);
    }
    if (parameters || any(results.currents)) {
        data_305_4(measurement.currents, measurement.samplesNumber, options.source, currents);
        rebuildCurrent(currents, options);
    }
    std::optional<Harmonics> harmonics;
    if (parameters) {
        harmonics = measureHarmonics(voltages, currents);
        if (results.parameters != nullptr) {
            ParamData_mo_305_4(voltages, currents, measurement.samplesNumber, options, *harmonics, *results.parameters);
        }
    }
    runStages(voltageStages, measurement, type, harmonics ? &harmonics->voltages : nullptr, std::move(voltages),
              results.voltages);
    runStages(currentStages, measurement, type, harmonics ? &harmonics->currents : nullptr, std::move(currents),
              results.currents);
}

}  // namespace calc_modul_K9_web_ns
