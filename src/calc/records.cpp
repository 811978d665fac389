#include "calc/records.h"

#include "calc/channel_kind.h"

namespace calc_modul_K9_web_ns::coder {
namespace {

constexpr std::array<std::string_view, parameterCount> parameterNames{
    "S",   "Sa",     "Sb",     "Sc",     "P",      "Pa",     "Pb",     "Pc",  "Q",   "Qa",  "Qb", "Qc",
    "Uda", "Udb",    "Udc",    "Udab",   "Udbc",   "Udca",   "Ud0",    "Ida", "Idb", "Idc", "Fa", "Fb",
    "Fc",  "THD_Va", "THD_Vb", "THD_Vc", "THD_Ia", "THD_Ib", "THD_Ic", "Pf",  "Pfa", "Pfb", "Pfc"};

constexpr std::array<std::string_view, parameterCount> parameterUnits{
    "VA", "VA", "VA", "VA", "W",  "W",  "W",  "W", "VAR", "VAR", "VAR", "VAR", "V", "V", "V", "V", "V", "V",
    "V",  "A",  "A",  "A",  "Hz", "Hz", "Hz", "%", "%",   "%",   "%",   "%",   "%", "-", "-", "-", "-"};

constexpr d_table::Names packedNames(parameterNames);
constexpr d_table::Units packedUnits(parameterUnits);

constexpr std::string_view frequencyAxis = "Frequency, Hz";

}  // namespace

void d_table::prefill() {
    names = packedNames;
    units = packedUnits;
    values.fill(rtNaN);
}

void b_table::prefill(const ChannelKind& kind) {
    variables.labels.assign(kind.labels);
    variables.signals.fill(std::make_shared<const std::vector<double>>(1, rtNaN));
    variables.verticalAxis.assignAll(kind.axisLabel);
    variables.horizontalAxis.assignAll("Sample");
    for (table& statistics : variables.statistics) {
        statistics.units.assignAll(kind.unit);
        statistics.values.fill(rtNaN);
    }
}

void c_table::prefill(const ChannelKind& kind) {
    labels.assign(kind.labels);
    verticalAxis.assignAll("Amp, dB");
    horizontalAxis.assignAll(frequencyAxis);
}

void f_table::prefill(const ChannelKind& kind) {
    labels.assign(kind.labels);
    horizontalAxis.assignAll(frequencyAxis);
}

}  // namespace calc_modul_K9_web_ns::coder
