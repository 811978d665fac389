#ifndef RT305_HOST_OUTPUT_RESULT_TABLES_H
#define RT305_HOST_OUTPUT_RESULT_TABLES_H

#include <array>
#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"
#include "output/document.h"

namespace rt305 {

/// "voltages and currents" and the like.
std::string contentOf(const Measurement& measurement);

/// "four-wire" and the like.
std::string describeWiring(const Measurement& measurement, bool fromLineVoltages);

/// How the parameters were measured, in a few words.
std::string describeMethods(const Measurement& measurement);

/// A document about a measurement, without results yet.
ResultDocument documentOf(const Recording& recording, const Measurement& measurement,
                          const std::string& libraryVersion);

/// One quantity of the parameter table: a row of total and phases.
struct QuantityRow {
    const char* key;
    const char* label;
    std::array<const char*, 1 + phaseTotal> names;  // total, a, b, c; empty where not defined
    int mostDecimals = 6;                           // fewer where the library resolves less
};

inline constexpr QuantityRow electricalRows[] = {
    {"phase_voltage", "Phase voltage", {"", "Uda", "Udb", "Udc"}},
    {"line_voltage", "Line voltage ab, bc, ca", {"", "Udab", "Udbc", "Udca"}},
    {"zero_sequence_voltage", "Zero-sequence voltage", {"Ud0", "", "", ""}},
    {"current", "Current", {"", "Ida", "Idb", "Idc"}},
    {"frequency", "Frequency", {"", "Fa", "Fb", "Fc"}, 1},
    {"thd_voltage", "THD of voltage", {"", "THD_Va", "THD_Vb", "THD_Vc"}, 3},
    {"thd_current", "THD of current", {"", "THD_Ia", "THD_Ib", "THD_Ic"}, 3},
};
inline constexpr QuantityRow powerRows[] = {
    {"active_power", "Active power P", {"P", "Pa", "Pb", "Pc"}},
    {"reactive_power", "Reactive power Q", {"Q", "Qa", "Qb", "Qc"}},
    {"apparent_power", "Apparent power S", {"S", "Sa", "Sb", "Sc"}},
};
inline constexpr QuantityRow powerFactorRow{"power_factor", "Power factor", {"Pf", "Pfa", "Pfb", "Pfc"}};

/// Removes the columns of phases and totals that no row has.
void removeEmptyColumns(ResultTable& table);

/// A table without rows whose columns are total, a, b and c.
ResultTable phaseTable(const std::string& name, const std::string& title = "");

/// The electrical quantities, and all parameters; only those that are in `parameters`.
ResultTable electricalTable(const Parameters& parameters);
ResultTable parameterTable(const Parameters& parameters);

/// THD alone.
ResultTable distortionTable(const Parameters& parameters);

/// The statistics, the largest spectral lines and the harmonics of one kind of channels, side by side; the last two are
/// lists. Empty without channels.
ResultTable signalTable(const std::string& name, const std::vector<SignalStatistics>& signals);
ResultTable spectrumTable(const std::string& name, const std::vector<Spectrum>& spectra);
ResultTable harmonicTable(const std::string& name, const std::vector<Harmonics>& harmonics);

}  // namespace rt305

#endif
