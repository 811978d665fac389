#include "rt305_4/rt305_4.h"

#include <optional>
#include <string>

#include "adapter/nlohmann/json.h"
#include "calc/calc_modul_K9_web.h"
#include "plugin/request.h"
#include "results/rt305_4_i_signal_table.h"
#include "results/rt305_4_param_table.h"
#include "results/rt305_4_u_signal_table.h"
#include "toolkit/non_finite.h"  // the compiler holds the exported constants against their public declarations

namespace {

using calc_modul_K9_web_ns::Measurement;
using calc_modul_K9_web_ns::ResultRecords;
using calc_modul_K9_web_ns::SetRecords;

// Module state: the message of the last failure and the seven result texts, which live until a later call replaces
// them.
std::string ErrorString;
std::string ParamDataStr;
std::string TimeSignalDataUStr;
std::string TimeSignalDataIStr;
std::string SpectrumParamUStr;
std::string SpectrumParamIStr;
std::string ParamData_thdUStr;
std::string ParamData_thdIStr;

/// Undoes the computation's lazy initialisation when the library is unloaded.
struct TerminateAtUnload {
    ~TerminateAtUnload() {
        if (calc_modul_K9_web_ns::isInitialized_calc_modul_K9_web()) {
            calc_modul_K9_web_ns::calc_modul_K9_web_terminate();
        }
    }
} terminateAtUnload;

/// The texts of one call. They replace the module's only when all of them are made, so that an exception changes none.
class NewTexts {
public:
    template <class Table, class Record>
    void add(std::string& place, const Record& record) {
        Table table;
        table.init(record);
        made_[count_++] = {&place, compactText(table.toJson())};
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

void computeTexts(const Measurement& measurement, std::uint32_t inputType) {
    namespace records = calc_modul_K9_web_ns::coder;
    const bool voltages = inputType == RT305_4_INPUT_VOLTAGES || inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    const bool currents = inputType == RT305_4_INPUT_CURRENTS || inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    const bool signals = measurement.processingMode == RT305_4_OPERATION_SIGNALS;

    records::d_table parameters;
    records::b_table signalsU;
    records::b_table signalsI;
    ResultRecords results;
    results.parameters = &parameters;
    results.voltages.signals = voltages && signals ? &signalsU : nullptr;
    results.currents.signals = currents && signals ? &signalsI : nullptr;
    calc_modul_K9_web_ns::calc_modul_K9_web(measurement, results);

    NewTexts texts;
    texts.add<RT305_4_ParamTable>(ParamDataStr, parameters);
    if (results.voltages.signals != nullptr) {
        texts.add<RT305_4_USignalTable>(TimeSignalDataUStr, signalsU);
    }
    if (results.currents.signals != nullptr) {
        texts.add<RT305_4_ISignalTable>(TimeSignalDataIStr, signalsI);
    }
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
    ErrorString.clear();
    if (!hasAllOutputs(request)) {
        return fail(request, "One or more output parameters are set incorrectly");
    }
    Measurement measurement = measurementOf(request);
    if (const char* const message = firstError(request, measurement)) {
        return fail(request, message);
    }
    fillMissingChannels(measurement, request.inputType);
    computeTexts(measurement, request.inputType);
    storeTexts(request);
    return 1;
}
