#include "rt305_4/rt305_4.h"

#include <array>
#include <cassert>
#include <optional>
#include <string>

#include "calc/calc_modul_K9_web.h"
#include "plugin/floating_point.h"
#include "plugin/memory.h"
#include "plugin/request.h"
#include "results/distortion_tables.h"
#include "results/parameter_tables.h"
#include "results/signal_tables.h"
#include "results/spectrum_tables.h"
#include "toolkit/non_finite.h"  // so that the compiler checks the exported constants against their public declarations

namespace {

using calc_modul_K9_web_ns::Measurement;
using calc_modul_K9_web_ns::ResultRecords;
using calc_modul_K9_web_ns::SetRecords;

// Module state: the message of the last failure and the seven result texts. A text is valid until a later call replaces
// it.
std::string ErrorString;
std::string ParamDataStr;
std::string TimeSignalDataUStr;
std::string TimeSignalDataIStr;
std::string SpectrumParamUStr;
std::string SpectrumParamIStr;
std::string ParamData_thdUStr;
std::string ParamData_thdIStr;

/// Runs when the library is loaded, and when it is unloaded: then the lazy initialisation of the computation is undone.
struct Lifetime {
    Lifetime() { prepareToThrow(); }
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;
    ~Lifetime() {
        if (calc_modul_K9_web_ns::isInitialized_calc_modul_K9_web()) {
            calc_modul_K9_web_ns::calc_modul_K9_web_terminate();
        }
    }
} lifetime;

/// The texts of one call. They replace those of the module only when all are complete, so an exception changes none.
class NewTexts {
public:
    template <class Table, class Record>
    void add(std::string& place, std::optional<Record>& record) {
        Table table;
        table.init(*record);
        record.reset();  // the table has its own copy: long records are not kept twice
        assert(count_ < made_.size());
        made_[count_++] = {&place, table.toJsonText()};
    }

    void publish() noexcept {
        for (std::size_t i = 0; i < count_; ++i) {
            made_[i].place->swap(made_[i].text);
        }
    }

private:
    struct Text {
        std::string* place = nullptr;
        std::string text;
    };
    std::array<Text, 3> made_;
    std::size_t count_ = 0;
};

/// The records of one channel set. Only the one that the operation returns is made and computed.
struct SetResults {
    std::optional<calc_modul_K9_web_ns::coder::b_table> signals;
    std::optional<calc_modul_K9_web_ns::coder::f_table> spectrum;
    std::optional<calc_modul_K9_web_ns::coder::c_table> distortion;

    SetRecords shownBy(std::uint32_t operation) {
        return {operation == RT305_4_OPERATION_SIGNALS ? &signals.emplace() : nullptr,
                operation == RT305_4_OPERATION_SPECTRUM ? &spectrum.emplace() : nullptr,
                operation == RT305_4_OPERATION_DISTORTION ? &distortion.emplace() : nullptr};
    }
};

template <class SignalTable, class SpectrumTable, class DistortionTable>
void addTexts(NewTexts& texts, SetResults& results, std::string& signals, std::string& spectrum,
              std::string& distortion) {
    if (results.signals) {
        texts.add<SignalTable>(signals, results.signals);
    }
    if (results.spectrum) {
        texts.add<SpectrumTable>(spectrum, results.spectrum);
    }
    if (results.distortion) {
        texts.add<DistortionTable>(distortion, results.distortion);
    }
}

void computeTexts(const Measurement& measurement, std::uint32_t inputType) {
    const bool both = inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    std::optional<calc_modul_K9_web_ns::coder::d_table> parameters(std::in_place);
    SetResults voltages;
    SetResults currents;
    ResultRecords results;
    results.parameters = &*parameters;
    if (both || inputType == RT305_4_INPUT_VOLTAGES) {
        results.voltages = voltages.shownBy(measurement.processingMode);
    }
    if (both || inputType == RT305_4_INPUT_CURRENTS) {
        results.currents = currents.shownBy(measurement.processingMode);
    }
    calc_modul_K9_web_ns::calc_modul_K9_web(measurement, results);

    NewTexts texts;
    texts.add<RT305_4_ParamTable>(ParamDataStr, parameters);
    addTexts<RT305_4_USignalTable, RT305_4_USpectrumTable, RT305_4_UDistortionTable>(
        texts, voltages, TimeSignalDataUStr, SpectrumParamUStr, ParamData_thdUStr);
    addTexts<RT305_4_ISignalTable, RT305_4_ISpectrumTable, RT305_4_IDistortionTable>(
        texts, currents, TimeSignalDataIStr, SpectrumParamIStr, ParamData_thdIStr);
    texts.publish();
}

void storeTexts(const DataProcessRequest& request) {
    *request.paramData = ParamDataStr.c_str();
    *request.timeSignalDataU = TimeSignalDataUStr.c_str();
    *request.timeSignalDataI = TimeSignalDataIStr.c_str();
    *request.spectrumParamU = SpectrumParamUStr.c_str();
    *request.spectrumParamI = SpectrumParamIStr.c_str();
    *request.paramDataThdU = ParamData_thdUStr.c_str();
    *request.paramDataThdI = ParamData_thdIStr.c_str();
}

std::int32_t fail(const DataProcessRequest& request, const char* message) {
    ErrorString = message;
    if (request.errorString != nullptr) {
        *request.errorString = ErrorString.c_str();
    }
    return 0;
}

}  // namespace

const char* getVersion() {
    return RT305_4_VERSION;
}

void getSupportedInputTypes(const std::int32_t** out) {
    if (out != nullptr) {
        *out = supportedSub1Types.data();
    }
}

std::int32_t dataProccess(DataProcessRequest request) {
    const FloatingPointGuard guard;
    prepareToThrow();
    ErrorString.clear();
    if (!hasAllOutputs(request)) {
        return fail(request, "One or more output parameters are set incorrectly");
    }
    Measurement measurement = measurementOf(request);
    if (const char* const message = firstError(request, measurement)) {
        return fail(request, message);
    }
    fillMissingChannels(measurement, request.inputType);
    keepMemoryMapped(request.samplesNumber);
    computeTexts(measurement, request.inputType);
    storeTexts(request);
    return 1;
}
