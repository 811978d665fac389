#include "calc/calc_modul_K9_web.h"

#include <omp.h>

#include "calc/electrical_parameters.h"
#include "calc/time_signal.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

omp_nest_lock_t calc_modul_K9_web_nestLockGlobal;
bool initialized = false;

constexpr int typeVoltages = 4;
constexpr int typeCurrents = 8;
constexpr int typeVoltagesAndCurrents = 21;

bool any(const SetRecords& records) {
    return records.signals != nullptr || records.spectrum != nullptr || records.distortion != nullptr;
}

/// The sum of three currents without a neutral is zero: a phase that was not measured is minus the sum of the others.
void rebuildCurrent(ChannelSet& currents, const MeasurementOptions& options) {
    if (options.currents == option::threeCurrents || options.rebuiltCurrent == PhaseChoice::none) {
        return;
    }
    const std::size_t missing = static_cast<std::size_t>(options.rebuiltCurrent) - 1;
    const std::size_t first = missing == 0 ? 1 : 0;
    const std::size_t second = missing == 2 ? 1 : 2;
    coder::binary_expand_op(currents[missing], currents[first], currents[second],
                            [](double a, double b) { return -(a + b); });
}

void prefill(const SetRecords& records, const Quantity& quantity) {
    if (records.signals != nullptr) {
        records.signals->prefill(quantity);
    }
    if (records.spectrum != nullptr) {
        records.spectrum->prefill(quantity);
    }
    if (records.distortion != nullptr) {
        records.distortion->prefill(quantity);
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
    const MeasurementOptions options(measurement.options.measurementFlags);
    const int type = coder::truncatedToInt(measurement.inputType);
    const bool both = type == typeVoltagesAndCurrents;

    if (results.parameters != nullptr) {
        results.parameters->prefill();
    }
    prefill(results.voltages, voltage);
    prefill(results.currents, current);

    ChannelSet voltages;
    ChannelSet currents;
    const bool parameters = both && results.parameters != nullptr;
    if (parameters || any(results.voltages)) {
        data_305_4(measurement.voltages, measurement.samplesNumber, options.source, voltages);
    }
    if (parameters || any(results.currents)) {
        data_305_4(measurement.currents, measurement.samplesNumber, options.source, currents);
        rebuildCurrent(currents, options);
    }
    if (parameters) {
        const Harmonics harmonics = measureHarmonics(voltages, currents);
        ParamData_mo_305_4(voltages, currents, measurement.samplesNumber, options, harmonics, *results.parameters);
    }
    if (measurement.processingMode == 1) {
        if ((type == typeVoltages || both) && results.voltages.signals != nullptr) {
            TimeSignalData_mo_305_4(std::move(voltages), *results.voltages.signals);
        }
        if ((type == typeCurrents || both) && results.currents.signals != nullptr) {
            TimeSignalData_mo_305_4I(std::move(currents), *results.currents.signals);
        }
    }
}

}  // namespace calc_modul_K9_web_ns
